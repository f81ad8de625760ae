#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# Builds programs in every way against the library that packages have put under a prefix: use_packages.sh PREFIX
set -euo pipefail

prefix=$1
here=$(cd "$(dirname "$0")" && pwd)
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT
for how in cmake pkg-config; do
    for language in C CXX; do
        "$here/use_library.sh" $how $language "$prefix" "$made/$how-$language"
    done
done
