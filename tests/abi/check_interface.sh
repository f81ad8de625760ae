#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# Compares functions and records of a library that was compiled with -g with those of interface.abi:
#   check_interface.sh LIBRARY
# At a major release, and never before, interface.abi is written anew:
#   check_interface.sh --write build/release/tests/abi/libQVRUncompressed.so
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)

# What is behind the public header, and where things stand in files, is left out.
describe() {
    abidw --exported-interfaces-only --headers-dir "$here/../../include" --drop-private-types --no-elf-needed \
        --no-show-locs --no-corpus-path --no-comp-dir-path --type-id-style hash "$1" | sed "s| path='[^']*'||"
}

if [ "$1" = --write ]; then
    describe "$2" >"$here/interface.abi"
else
    made=$(mktemp --suffix=.abi)
    trap 'rm -f "$made"' EXIT
    describe "$1" >"$made"
    abidiff "$here/interface.abi" "$made"
    echo 'functions and records are as they were'
fi
