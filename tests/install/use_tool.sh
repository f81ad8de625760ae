#!/usr/bin/env bash
# SPDX-License-Identifier: BSD-3-Clause
#
# A picture goes through an installed qvr, there, back, and there again: use_tool.sh QVR PICTURE FOLDER
set -euo pipefail

qvr=$1 picture=$2 folder=$3
rm -rf "$folder"
mkdir -p "$folder"
"$qvr" --version
"$qvr" encode "$picture" "$folder/one.qvr" --alpha-rle
"$qvr" decode "$folder/one.qvr" "$folder/one.png"
"$qvr" encode "$folder/one.png" "$folder/two.qvr" --alpha-rle
"$qvr" info "$folder/two.qvr"
cmp "$folder/one.qvr" "$folder/two.qvr"
