#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
#
# usage: check_dependencies.sh READELF LIBRARY - only the system's runtime libraries may be needed.
set -eu
export LC_ALL=C

needed=$("$1" -d "$2" | sed -n 's/.*(NEEDED).*\[\(.*\)\].*/\1/p')
status=0
for library in $needed; do
    case $library in
        libc.so.* | libm.so.* | libstdc++.so.* | libgcc_s.so.* | libpthread.so.* | ld-linux*) ;;
        *)
            echo "unexpected dependency: $library"
            status=1
            ;;
    esac
done
echo "needed:" $needed
exit $status
