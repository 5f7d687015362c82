#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Installs what is missing, builds the workbench and opens it on an image.
#
#   ./run.sh [IMAGE] [--min G] [--max G] [--out DIR] [--headless]
#   ./run.sh --round | --monkey SEED | --responsiveness   [--out DIR]
#
#   IMAGE        bmp, jpg, tif or png; a photograph of coins if none is given
#   --min G      darkest grey value of the band, 0 to 255
#   --max G      brightest grey value of the band, 0 to 255
#   --out DIR    where --headless leaves its pictures and texts (out/)
#   --headless   nobody looks: in a virtual display the window is worked as an
#                operator does (open the image, "threshold", "connection"), with
#                a screenshot after every step. Also done without a display.
#   --round      the same for a whole day's work: every button, every caliper,
#                the line finder, the view; what must be seen is checked
#   --monkey SEED      20000 random clicks, drags, spins, texts and loads; a seed
#                does the same again. Says what the program held all the while.
#   --responsiveness   from click to repainted view, on 20 megapixels

. "$(dirname -- "${BASH_SOURCE[0]}")/setup/common.sh"
. "$setup_root/setup/build.sh"
. "$setup_root/setup/display.sh"

usage() { sed -n '/^#   \.\//,/^$/ s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"; }

image=
min=
max=
out=$setup_root/out
headless=
drive=()

# grey OPTION VALUE: the value as a plain number.
grey() {
  [[ $2 =~ ^[0-9]{1,3}$ ]] && ((10#$2 <= 255)) ||
    usage_error "$1 takes a grey value from 0 to 255, not '$2'"
  printf '%d' "$((10#$2))"
}

while [ $# -gt 0 ]; do
  case $1 in
    --min | --max | --out)
      [ $# -ge 2 ] || usage_error "$1 needs a value"
      case $1 in
        --min) min=$(grey "$1" "$2") || exit 2 ;;
        --max) max=$(grey "$1" "$2") || exit 2 ;;
        --out)
          [ -n "$2" ] || usage_error "--out needs a folder"
          out=$2
          ;;
      esac
      shift
      ;;
    --headless) headless=yes ;;
    --round | --responsiveness) drive=("${1#--}") ;;
    --monkey)
      [[ ${2:-} =~ ^[0-9]{1,9}$ ]] || usage_error "--monkey needs a seed"
      drive=(monkey "$2" 20000)
      shift
      ;;
    -h | --help)
      usage
      exit 0
      ;;
    -*) usage_error "unknown option '$1' (see ./run.sh --help)" ;;
    *)
      [ -z "$image" ] || usage_error "one image at a time, not also '$1'"
      [ -n "$1" ] || usage_error "the image's name is empty"
      image=$1
      ;;
  esac
  shift
done
# The dialog's own band; every coin stands out of the background in it.
min=${min:-128}
max=${max:-255}
[ "$min" -le "$max" ] || usage_error "--min $min is above --max $max"
if [ -n "$image" ]; then
  [ -f "$image" ] || usage_error "no such file: '$image'"
  [ -r "$image" ] || usage_error "cannot read '$image'"
  image=$(realpath -- "$image")
  # Windows programs reach every path whose names Windows allows.
  case $image in
    *[\\:*?\"\<\>\|]*)
      usage_error "Windows cannot name a file like this: '$image'"
      ;;
  esac
fi
mkdir -p -- "$out" 2>/dev/null && [ -w "$out" ] ||
  usage_error "cannot write to the folder '$out'"
out=$(realpath -- "$out")

cd -- "$setup_root"
"$setup_root/setup/packages.sh" native windows display
if [ -z "$image" ]; then
  image=$(setup/sample_images.sh python3-skimage)
  image=$(find "$image" -name coins.png)
  [ -f "$image" ] || fail "the sample photograph is missing from its package"
fi

if [ -z "$headless" ] && ! xdpyinfo >/dev/null 2>&1; then
  say "No display here: using a virtual one"
  headless=yes
fi

# A session of its own, so that no other run's windows are met.
mkdir -p build
export RENDAL_WINEPREFIX=$PWD/build/wine-run
. setup/environment.sh
build_preset windows rendal rendal_operator

program=$PWD/build/windows/bin/Rendal.exe
operate() { timeout "${patience:-120}" setup/run_under_wine.sh "$operator" "$@" </dev/null; }
operator=$PWD/build/windows/bin/rendal_operator.exe
windows_image=Z:${image//\//\\}
workbench=

# The program must not have a terminal on its streams, or its console would be
# that terminal and not a window.
start_workbench() {
  setup/run_under_wine.sh "$program" "$@" </dev/null >/dev/null 2>&1 &
  workbench=$!
}

finish() {
  [ -z "$workbench" ] || kill "$workbench" 2>/dev/null || true
  rendal_wine_stop
  stop_display
}
trap finish EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# The program is started by the operator itself, and worked without a break.
if [ ${#drive[@]} -gt 0 ]; then
  start_display "$PWD/build/display-run"
  rendal_wine_start || fail "Wine did not start"
  case ${drive[0]} in
    round)
      out=$out/round
      mkdir -p -- "$out"
      rm -f -- "$out"/*.png "$out/console.txt"
      drive+=("Z:${out//\//\\}")
      ;;
  esac
  patience=3600 operate "${drive[@]}" || fail "failed: ${drive[0]}"
  [ "${drive[0]}" != round ] || printf 'pictures and texts: %s\n' "$out"
  exit 0
fi

if [ -z "$headless" ]; then
  rendal_wine_start || fail "Wine did not start"
  say "Opening $image (close the window to end)"
  start_workbench "$windows_image"
  operate wait && operate loaded >/dev/null && operate band "$min" "$max" ||
    say "run.sh: the image or the band could not be set"
  wait "$workbench" || fail "the workbench ended with an error"
  workbench=
  exit 0
fi

picture() {
  # The view shows a change with its next tick, 20 ms later.
  sleep 0.3
  import -window root "$out/$1.png"
  say "  $out/$1.png"
}

# step NAME MESSAGE COMMAND...: one step of the operator; its answer is kept in
# `answer`, a picture and the console's text in the folder.
step() {
  local name=$1 message=$2
  shift 2
  say "$message"
  if ! answer=$(operate "$@"); then
    import -window root "$out/failed.png" 2>/dev/null || true
    fail "failed: $message (picture: $out/failed.png)"
  fi
  [ -z "$answer" ] || say "  $answer"
  picture "$name"
}

# elapsed LABEL: the seconds that the console gives for a tool.
elapsed() {
  awk -v label="$1" '
    found { if (sub(/^elasped time:/, "")) { sub(/s *$/, ""); print; exit } }
    { found = $0 == label }' "$out/console.txt"
}

rm -f -- "$out"/{1_started,2_image,3_band,4_threshold,5_connection,failed}.png \
  "$out"/{console,components}.txt
start_display "$PWD/build/display-run"
rendal_wine_start || fail "Wine did not start"
start_workbench
step 1_started "Starting the workbench" wait
step 2_image "Opening $image" load "$windows_image"
step 3_band "Band $min to $max" band "$min" "$max"
step 4_threshold "Pressing \"threshold\"" threshold
step 5_connection "Pressing \"connection\"" connection
components=${answer##*=}

operate console "connected components = $components" >"$out/console.txt" ||
  fail "the console does not give the window's number of components"
operate rows >"$out/components.txt" || fail "the list could not be read"
say "  $out/console.txt"
say "  $out/components.txt"
threshold_s=$(elapsed threshold)
connection_s=$(elapsed connection)
[ -n "$threshold_s" ] && [ -n "$connection_s" ] ||
  fail "the console gives no elapsed times"

operate close || fail "the workbench did not close"
wait "$workbench" || fail "the workbench ended with an error"
workbench=

printf 'components: %s\n' "$components"
printf 'threshold:  %s s\nconnection: %s s\n' "$threshold_s" "$connection_s"
printf 'pictures and texts: %s\n' "$out"
