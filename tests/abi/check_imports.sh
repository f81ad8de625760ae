#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
#
# usage: check_imports.sh NM LIBRARY LIST - a shared or static library may need no names but those of the list.
set -eu
export LC_ALL=C

case $2 in
    *.a) which= ;;
    *) which=-D ;;
esac
unexpected=$("$1" -C $which --undefined-only "$2" | sed -n 's/^ *[UVWvw] //p' | sed 's/@.*//' | sort -u |
    grep -vxF -f "$3" || true)
if [ -n "$unexpected" ]; then
    echo "the library needs names that are not in $3:"
    printf '%s\n' "$unexpected"
    exit 1
fi
echo "it needs nothing that is not listed"
