#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
#
# usage: check_kernel_objects.sh NM OBJECT... - objects with code for one instruction set must not hold a function that the
# linker may take from any object: it would run on processors without these instructions.
set -eu

nm=$1
shift
found=0
for object in "$@"; do
    case $object in
        *_ssse3.cpp.o | *_avx2.cpp.o | *_avx512.cpp.o)
            found=$((found + 1))
            if "$nm" -C "$object" | grep ' W '; then
                echo "$object shares functions with others"
                exit 1
            fi
            ;;
    esac
done
[ "$found" -ge 5 ] || { echo "only $found such objects were given"; exit 1; }
echo "$found objects share nothing"
