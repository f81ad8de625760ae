#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
#
# usage: check_exports.sh NM LIBRARY LIST - the names that a shared or static library shows must be exactly those of the list.
set -eu
export LC_ALL=C

case $2 in
    *.a) which=-g ;;
    *) which=-D ;;
esac
# A version script shows up as one absolute name for each version node and as a suffix on each name.
names=$("$1" $which --defined-only "$2" | awk 'NF == 3 && $2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort)

if [ "$names" != "$(sort "$3")" ]; then
    echo "exported names differ from $3 (left: the library, right: the list):"
    scratch=$(mktemp)
    trap 'rm -f "$scratch"' EXIT
    printf '%s\n' "$names" > "$scratch"
    sort "$3" | diff "$scratch" - || true
    exit 1
fi

# A unique name would keep the library from ever being unloaded.
if "$1" $which --defined-only "$2" | awk '$2 == "u" { found = 1 } END { exit !found }'; then
    echo "the library holds unique names"
    exit 1
fi
echo "$(printf '%s\n' "$names" | wc -l) names, as listed"
