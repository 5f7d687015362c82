#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# The ZIP and the installer as a user gets them: unpacked or installed without a
# question, started, closed, removed, with nothing left but what the user put
# there. Needs what setup/package.sh left in out/packages.
#
#   tests/package/windows.sh

. "$(dirname -- "${BASH_SOURCE[0]}")/../../setup/common.sh"
. "$setup_root/setup/build.sh"
. "$setup_root/setup/display.sh"

[ $# -eq 0 ] || usage_error "takes no arguments"
cd -- "$setup_root"
packages=$setup_root/out/packages
zip=$(find "$packages" -name 'rendal-*-windows-x64.zip' 2>/dev/null)
[ -s "$zip" ] || fail "no ZIP in $packages: first setup/package.sh"
setup=${zip%.zip}-setup.exe
[ -s "$setup" ] || fail "no installer in $packages: first setup/package.sh"

# A session and a prefix of its own: what is installed must not be met.
mkdir -p build
rm -rf build/wine-package
export RENDAL_WINEPREFIX=$PWD/build/wine-package
. setup/environment.sh
build_preset windows rendal_operator
operator=$PWD/build/windows/bin/rendal_operator.exe
drive=$WINEPREFIX/drive_c
work=$(mktemp -d)

finish() {
  rendal_wine_stop
  stop_display
  rm -rf -- "$work"
}
trap finish EXIT

wine_runs() {
  timeout 120 "$setup_root/setup/run_under_wine.sh" "$@" </dev/null
}

# works FOLDER: the program starts with an image, shows it, and ends as told; the
# command line counts its coins.
works() {
  local coins=Z:${1//\//\\}\\samples\\coins.png
  wine_runs "$1/Rendal.exe" "$coins" >/dev/null 2>&1 &
  local pid=$!
  wine_runs "$operator" wait || fail "no window: $1"
  wine_runs "$operator" loaded >"$work/loaded.txt" || fail "no image: $1"
  wine_runs "$operator" close || fail "the window did not close: $1"
  wait "$pid" || fail "ended with an error: $1"
  wine_runs "$1/rendal-cli.exe" run "Z:$1/samples/count_coins.json" \
    "$coins" --out "Z:$work/counted" >"$work/count.txt" ||
    fail "the command line failed: $1"
  grep -q ': 20 components' "$work/count.txt" ||
    fail "the coins were not counted: $1"
  wine_runs "$1/rendal-cli.exe" --licences >"$work/licences.txt" ||
    fail "the command line prints no licences: $1"
  grep -q 'Mozilla Public License' "$work/licences.txt" ||
    fail "the licence of a library is not printed: $1"
}

listed() {
  wine_runs reg query \
    'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Rendal' \
    >"$work/listed.txt" 2>&1
}

start_display "$PWD/build/display-package"
rendal_wine_start || fail "Wine did not start"

say "The ZIP"
# Not only ASCII, and a blank.
portable=$work/any\ folder\ $'\xE7\xA1\xAC\xE5\xB8\x81'
mkdir -- "$portable"
(cd -- "$portable" && cmake -E tar xf "$zip")
portable=$portable/$(basename -- "$zip" .zip)
for file in Rendal.exe vexolab.dll rendal-cli.exe LICENSE README.md \
  licences/opencv.txt samples/count_coins.json; do
  [ -s "$portable/$file" ] || fail "the ZIP has no $file"
done
works "$portable"

say "The installer"
find "$drive" -type f | sort >"$work/before"
wine_runs "$setup" /S || fail "the installer ended with an error"
uninstaller=$(find "$drive/users" -path '*/Local/Programs/Rendal/uninstall.exe')
[ -s "$uninstaller" ] || fail "nothing was installed for the user"
installed=$(dirname -- "$uninstaller")
diff -r --exclude=uninstall.exe "$portable" "$installed" ||
  fail "the installer holds other files than the ZIP"
listed || fail "Windows does not list the program"
works "$installed"
# Besides its folder: the entry of the start menu.
strays=$(find "$drive" -type f | sort | comm -13 "$work/before" - |
  grep -vF -e "$installed/" -e /Temp/ -e 'Start Menu/Programs/Rendal.lnk' || true)
[ -z "$strays" ] || fail "files outside its folder: $strays"

say "The uninstaller"
echo mine >"$installed/samples/mine.txt"
wine_runs "$uninstaller" /S || fail "the uninstaller ended with an error"
# It goes on in a copy of itself, which removes the original last.
for ((tries = 0; tries < 200; ++tries)); do
  [ -e "$uninstaller" ] || break
  sleep 0.1
done
left=$(find "$installed" -type f)
[ "$left" = "$installed/samples/mine.txt" ] || fail "left: $left"
[ -z "$(find "$drive" -name Rendal.lnk)" ] ||
  fail "the entry of the start menu is left"
! listed || fail "Windows still lists the program"
printf 'the ZIP and the installer work\n'
