#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# Makes a bare Debian 12 out of the package sources of this machine, installs the packages of a folder on it, uses them,
# and throws it away:
#   bare_machine.sh PACKAGES FOLDER
# Where no such machine can be made, the packages are unpacked into FOLDER and used from there.
# shellcheck disable=SC2016
set -euo pipefail

packages=$(realpath "$1")
mkdir -p "$2"
folder=$(realpath "$2")
here=$(cd "$(dirname "$0")" && pwd)
root=$here/../..

unpack_instead() {
    echo "SKIPPED: the packages were not installed on a bare Debian 12: $1"
    echo 'They are unpacked and used from there.'
    rm -rf "$folder/unpacked"
    local package
    for package in "$packages"/*.deb; do
        dpkg-deb -x "$package" "$folder/unpacked"
    done
    LD_LIBRARY_PATH=$(dirname "$(find "$folder/unpacked" -name 'libQVRUncompressed.so.2')") \
        "$here/use_tool.sh" "$folder/unpacked/usr/bin/qvr" "$root/tests/data/flower_small.png" "$folder/tool"
    "$here/use_packages.sh" "$folder/unpacked/usr"
    exit
}

command -v mmdebstrap >/dev/null || unpack_instead 'there is no mmdebstrap'
apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT) # $(ORIGIN) $(CODENAME)' 'Created-By: Packages' |
    sed -n 's/ # Debian bookworm.*//p' | sort -u >"$folder/sources.list"
[ -s "$folder/sources.list" ] || unpack_instead 'apt has no sources of Debian 12 here'
# What this machine needs to reach them, such as a proxy.
apt-config dump | grep -E '^Acquire::(https?|Check-Valid-Until)\b' >"$folder/apt.conf" || true

mapfile -t debs < <(cd "$packages" && printf '%s\n' *.deb)
tar -cf "$folder/test.tar" -C "$root" tests/install tests/abi/c_program.c tests/data/flower_small.png \
    examples/wrap_frame.cpp -C "$packages" "${debs[@]}"
rm -f "$folder/made"
# All that is mounted meanwhile is mounted in a namespace of its own.
if ! TMPDIR=$folder mmdebstrap --quiet --variant=minbase --aptopt="$folder/apt.conf" --format=null \
    --customize-hook="touch '$folder/made'" --customize-hook='mkdir "$1/test"' \
    --customize-hook="tar-in '$folder/test.tar' /test" \
    --customize-hook='chroot "$1" env -i LC_ALL=C PATH=/usr/sbin:/usr/bin:/sbin:/bin ${http_proxy:+"http_proxy=$http_proxy"} \
        /test/tests/install/install_packages.sh' \
    bookworm - - <"$folder/sources.list" 2>"$folder/log"; then
    [ ! -e "$folder/made" ] || { tail -n 60 "$folder/log" >&2; exit 1; }
    unpack_instead "mmdebstrap could not make it: $(tail -n 5 "$folder/log")"
fi
cat "$folder/log"
