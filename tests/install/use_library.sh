#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# Builds a program against an installed library, shared and static, and runs it:
#   use_library.sh cmake|pkg-config C|CXX PREFIX FOLDER
# PREFIX is where the library is installed; what is made goes into FOLDER. CC and CXX name the compilers.
set -euo pipefail

how=$1 language=$2 prefix=$3 folder=$4
here=$(cd "$(dirname "$0")" && pwd)
case $language in
    C) program=$here/../abi/c_program.c compiler=${CC:-cc} ;;
    CXX) program=$here/../../examples/wrap_frame.cpp compiler=${CXX:-c++} ;;
esac
PKG_CONFIG_PATH=$(find "$prefix"/lib* -name qvruncompressed.pc -printf %h -quit)
export PKG_CONFIG_PATH
library_dir=$(realpath "$(pkg-config --variable=libdir qvruncompressed)")

fail() { echo "$1" >&2; exit 1; }

run() {  # program, then shared or static
    local needed=shared
    readelf -d "$1" | grep -q 'NEEDED.*\[libQVRUncompressed\.so\.2\]' || needed=static
    [ $needed = "$2" ] || fail "$1 is linked to the $needed library"
    # Names with a version are copies of variables of the C library.
    ! nm -D --defined-only "$1" 2>/dev/null | grep -v @ || fail "$1 exports names"
    echo "$how, $language, ${1##*/}:"
    LD_LIBRARY_PATH=$library_dir "$1"
}

through_cmake() {
    cmake -S "$here/consumer" -B "$folder" -DLANGUAGE="$language" -DPROGRAM="$program" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_PREFIX_PATH="$prefix" "-DCMAKE_${language}_COMPILER=$compiler" >"$folder/log" || { cat "$folder/log"; return 1; }
    cmake --build "$folder" >"$folder/log" || { cat "$folder/log"; return 1; }
    run "$folder/shared" shared
    run "$folder/static" static
}

flags() { pkg-config "$@" qvruncompressed; }

# The flags are words to be split.
# shellcheck disable=SC2046
through_pkg_config() {
    pkg-config --exists 'qvruncompressed >= 2.7 qvruncompressed < 3' || fail 'pkg-config finds no version 2.7'
    "$compiler" $(flags --cflags) -c "$program" -o "$folder/program.o"
    "$compiler" "$folder/program.o" $(flags --libs) -o "$folder/shared"
    run "$folder/shared" shared
    "$compiler" -static "$folder/program.o" $(flags --static --libs) -o "$folder/all_static"
    run "$folder/all_static" static
    "$compiler" "$folder/program.o" $(flags --static --libs | sed 's/-lQVRUncompressed/-l:libQVRUncompressed.a/') \
        -o "$folder/static_by_name"
    run "$folder/static_by_name" static
    # A library of which there is no other gets taken.
    mkdir "$folder/lib"
    cp -r "$library_dir/libQVRUncompressed.a" "$PKG_CONFIG_PATH" "$folder/lib"
    PKG_CONFIG_PATH=$folder/lib/pkgconfig
    "$compiler" "$folder/program.o" -L"$folder/lib" $(pkg-config --static --libs --define-variable=libdir="$folder/lib" \
        qvruncompressed) -o "$folder/static_alone"
    run "$folder/static_alone" static
}

rm -rf "$folder"
mkdir -p "$folder"
case $how in
    cmake) through_cmake ;;
    pkg-config) through_pkg_config ;;
esac
