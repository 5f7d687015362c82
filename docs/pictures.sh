#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Takes the pictures of the README anew: a day's round at the real program, and
# four of its screenshots in few colours.

set -euo pipefail
cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."
./run.sh --round

# picture NAME SCREENSHOT [CONVERT OPTION...]
picture() {
  local name=$1 screenshot=$2
  shift 2
  convert out/round/[0-9][0-9]_"$screenshot".png "$@" \
    +repage -strip +dither -colors 96 "PNG8:docs/$name.png"
}
view=(-crop 1026x817+3+22)
picture window connection
picture circle circle "${view[@]}"
picture ellipse ellipse "${view[@]}"
picture line_finder line_finder_2 "${view[@]}"
