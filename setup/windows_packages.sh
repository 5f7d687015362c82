#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Packs what a Windows build has built: a ZIP and an installer.
#
#   setup/windows_packages.sh BUILD FOLDER

. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

[ $# -eq 2 ] || usage_error "expected the build's folder and where to"
build=$(realpath -- "$1")
folder=$(realpath -- "$2")
log=$build/packages.log
: >"$log"

logged "$log" cpack --config "$build/CPackConfig.cmake" -B "$folder"
rm -rf -- "$folder/_CPack_Packages"

# The installer holds the very files of the ZIP.
zip=$(find "$folder" -maxdepth 1 -name 'rendal-*-windows-x64.zip')
[ -s "$zip" ] || fail "cpack left no ZIP (log: $log)"
name=$(basename -- "$zip" .zip)
stage=$(mktemp -d)
trap 'rm -rf -- "$stage"' EXIT
(cd -- "$stage" && logged "$log" cmake -E tar xf "$zip")
files=$stage/$name
[ -d "$files" ] || fail "the ZIP has no folder $name"
# What the uninstaller takes away: every file, then the emptied folders.
(
  cd -- "$files"
  find . -type f -printf 'Delete "$INSTDIR\\%P"\n' | sort
  find . -mindepth 1 -depth -type d -printf 'RMDir "$INSTDIR\\%P"\n'
) | tr / '\\' >"$stage/list.nsh"
version=${name#rendal-}
logged "$log" makensis -V2 -DVERSION="${version%%-*}" \
  -DSOURCE="$files" -DLIST="$stage/list.nsh" \
  -DICON="$setup_root/res/rendal.ico" \
  -DOUTPUT="$folder/$name-setup.exe" "$setup_root/setup/installer.nsi"
