#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# On a bare Debian 12: installs the packages in the folder above tests, looks at what came, uses it, and removes it.
set -euo pipefail

cd "$(dirname "$0")/../.."
export DEBIAN_FRONTEND=noninteractive

install() { apt-get install -y -qq --no-install-recommends -o APT::Sandbox::User=root "$@" >log 2>&1 || { cat log; return 1; }; }

installed_files() {
    local component package file
    while read -r component package; do
        dpkg -L "$package" | while read -r file; do
            [ -d "$file" ] || echo "$component ${file#/usr/}"
        done
    done <<<"runtime libqvruncompressed2
development libqvruncompressed-dev
tools qvruncompressed-tools" | sed 's| lib/[^/]*-linux-gnu/| LIBDIR/|; s|\.so\.[0-9]*\.[0-9]*\.[0-9]*$|.so.VERSION|; s|-release\.cmake|-CONFIG.cmake|; s|zsh/[a-z-]*/|zsh/FOLDER/|' |
        grep -v /html/ |
        LC_ALL=C sort
}

# The tool alone brings whatever it needs.
install ./libqvruncompressed2_*.deb ./qvruncompressed-tools_*.deb
tests/install/use_tool.sh /usr/bin/qvr tests/data/flower_small.png tool
install ./libqvruncompressed-dev_*.deb
# No package holds plug-in and Python package.
installed_files | diff <(grep -vE '^(gstreamer|python) ' tests/install/files.txt) - ||
    { echo 'left: files.txt, right: what is installed'; exit 1; }

# The documentation, and the manual's page. What a container leaves out of packages (dpkg's path-exclude) is no fault of theirs.
grep -q '<title>QVRUncompressed' /usr/share/doc/libqvruncompressed-dev/html/index.html
zgrep -q 'qvr' /usr/share/man/man1/qvr.1*

install g++ cmake make pkgconf
tests/install/use_packages.sh /usr

apt-get purge -y -qq libqvruncompressed2 >log 2>&1
! find /usr /etc /var/lib -iname '*qvr*' | grep . || { echo 'these files are left behind'; exit 1; }
