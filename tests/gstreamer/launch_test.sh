#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# gst-launch-1.0 and gst-inspect-1.0 as a user calls them: each format into a file and back, the README's pipelines, and
# the pages of the elements.
# Usage: launch_test.sh PLUGIN_FOLDER README
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
readme=$(realpath "$2")
plugins=$(realpath "$1")
export GST_PLUGIN_PATH=$plugins GST_REGISTRY=$folder/registry.bin
unset DISPLAY WAYLAND_DISPLAY
cd "$folder"

# At this width no format pads its rows, so that files can be compared. All formats run side by side in one process.
formats=(YUY2 Y210 Y212_LE UYVY v216 v210 ARGB BGRA RGBA ABGR ARGB64 ARGB64_LE BGRA64_LE RGBA64_LE ABGR64_LE RGB BGR I420
    A420 GRAY8 GRAY16_LE IYU2 v308)
caps() { echo "video/x-raw,format=$1,width=96,height=34,framerate=30/1"; }
choice() { case $1 in IYU2) echo packed-444=uyv ;; v308) echo packed-444=yuv ;; *) echo packed-444=off ;; esac; }

write=() read=()
for format in "${formats[@]}"; do
    write+=(videotestsrc num-buffers=3 pattern=ball ! "$(caps "$format")" ! tee "name=$format"
        "$format." ! queue ! filesink "location=$format.raw"
        "$format." ! queue ! qvrenc alpha-rle=true "$(choice "$format")" ! filesink "location=$format.qvr")
    read+=(filesrc "location=$format.qvr" ! qvrparse ! qvrdec "$(choice "$format")" ! "$(caps "$format" | sed 's/30.1$/25\/1/')"
        ! filesink "location=$format.back")
done
gst-launch-1.0 -q "${write[@]}"
gst-launch-1.0 -q "${read[@]}"
for format in "${formats[@]}"; do
    [ -s "$format.raw" ] || { echo "$format: nothing was written"; exit 1; }
    cmp "$format.raw" "$format.back"
done

# The pipelines of the README, with the number of frames cut down.
mapfile -t shown < <(grep -E '^gst-launch-1.0 ' "$readme" | sed 's/ *# .*//')
[ "${#shown[@]}" -ge 2 ] || { echo "the README shows fewer than two pipelines"; exit 1; }
for pipeline in "${shown[@]}"; do
    bash -c "${pipeline/num-buffers=250/num-buffers=5}" >launch.log 2>&1 || { echo "$pipeline"; cat launch.log; exit 1; }
done

for element in qvrenc qvrdec qvrparse; do
    gst-inspect-1.0 "$element" >page.txt
    for part in 'Long-name .*QVRUncompressed video' 'Klass .*Codec/.*/Video' 'Author .*The QVRUncompressed authors' "SINK template: 'sink'" \
        "SRC template: 'src'" 'video/x-qvr-uncompressed'; do
        grep -q "$part" page.txt || { echo "the page of $element lacks: $part"; exit 1; }
    done
done

# A web page, or none.
gst-inspect-1.0 qvr >page.txt
grep -qE 'Origin URL +(https?://|Unknown package origin)' page.txt || { echo "the origin is no web page"; exit 1; }
