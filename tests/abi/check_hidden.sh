#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
#
# usage: check_hidden.sh CXX NM ARCHIVE - a shared library that holds the whole static library exports none of it.
set -eu

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$1" -shared -o "$folder/plugin.so" -Wl,--whole-archive "$3" -Wl,--no-whole-archive -pthread
if "$2" -D --defined-only "$folder/plugin.so" | grep 'QVRUncompressed_'; then
    echo 'these are exported'
    exit 1
fi
"$2" "$folder/plugin.so" | grep -q ' t QVRUncompressed_EncodeFrame$' || { echo 'the library is not in it'; exit 1; }
echo 'nothing of it is exported'
