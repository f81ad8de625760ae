#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# Writes interface.abi anew, which the test abi.interface compares the library with. To be run at a major release, and
# never before: until then a record stays as it is, and a function too.
#   update_interface.sh LIBRARY     LIBRARY: tests/abi/libQVRUncompressed.so in a build folder
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
abidw --exported-interfaces-only --headers-dir "$here/../../include" --drop-private-types --no-elf-needed \
    --no-show-locs --no-corpus-path --no-comp-dir-path --type-id-style hash "$1" |
    sed "s| path='[^']*'||" >"$here/interface.abi"
