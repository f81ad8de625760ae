#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# Installs each component on its own and compares what is there with a list; then installs everything and moves it:
#   install_and_list.sh CMAKE BUILD LIBDIR VERSION LIST FOLDER COMPONENT...
# The list has the files of all components; those that were not built are not asked for. The installed files are then in
# FOLDER/moved.
set -euo pipefail

cmake=$1 build=$2 libdir=$3 version=$4 list=$5 folder=$6
shift 6

rm -rf "$folder"
mkdir -p "$folder"
for component in "$@"; do
    "$cmake" --install "$build" --component $component --prefix "$folder/$component" >/dev/null
    (cd "$folder/$component" && find . ! -type d -printf "$component %P\n")
done | sed "s| lib/python3[.0-9]*/| PYTHON/|; s| $libdir/| LIBDIR/|; s|$version|VERSION|; s|_core\.[^ ]*\.so|_core.so|
    s|Targets-[a-z]*\.cmake|Targets-CONFIG.cmake|; s|zsh/[a-z-]*/|zsh/FOLDER/|" |
    grep -v /html/ |
    LC_ALL=C sort >"$folder/files"
grep -E "^($(IFS='|'; echo "$*")) " "$list" >"$folder/wanted"
diff "$folder/wanted" "$folder/files" || { echo "left: $list, right: what gets installed" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$folder/first" >/dev/null
mv "$folder/first" "$folder/moved"
if grep -rIl -e "$folder/first" -e "$build" "$folder/moved"; then
    echo 'these files would break when the folder is moved' >&2
    exit 1
fi
echo "$(wc -l <"$folder/wanted") files, as listed"
