#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Makes Wine prefixes in which the Windows programs run: fonts that draw
# Chinese, and crashes that end a program instead of starting a debugger that
# waits for ever. A prefix of the user's own is never touched.
#
#   setup/wine_prefix.sh FOLDER
#
# The prefix is prepared once, in the user's cache; FOLDER becomes a copy of
# it, with everything in it linked but the registry. So every build tree has a
# Wine session of its own, whose windows and mutexes no other run can meet.

. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

[ $# -eq 1 ] || usage_error "expected one folder"
copy=$1

version=$(dpkg-query -W -f '${Package}=${Version}\n' wine64 fonts-wine \
  fonts-wqy-microhei) || fail "packages are missing: run setup/packages.sh"
recipe=$(sha256sum <"${BASH_SOURCE[0]}")
entry=wine-$(key_of "$version" "$recipe")
prefix=$setup_cache/$entry

# A copy is renewed when it was made from another prefix.
copy_prefix() {
  if [ "$(cat -- "$copy/made_from" 2>/dev/null)" = "$entry" ]; then
    return
  fi
  if [ -d "$copy" ]; then
    WINEPREFIX=$copy wineserver -k >/dev/null 2>&1 || true
    rm -rf -- "$copy"
  fi
  mkdir -p -- "$(dirname -- "$copy")"
  # Links need one file system; across two, a real copy does as well.
  if ! cp -al -- "$prefix" "$copy" 2>/dev/null; then
    rm -rf -- "$copy"
    cp -a -- "$prefix" "$copy"
  fi
  local file
  for file in "$copy"/*.reg; do
    cp -- "$file" "$file.new"
    mv -f -- "$file.new" "$file"
  done
  printf '%s' "$entry" >"$copy/made_from"
}

if [ -e "$prefix/complete" ]; then
  copy_prefix
  exit 0
fi
lock_cache_entry wine-prefix
if [ -e "$prefix/complete" ]; then
  copy_prefix
  exit 0
fi

# Wine notes no absolute path of its prefix, so it may be renamed.
stage=$(mktemp -d -- "$setup_cache/$entry.XXXXXX")
log=$setup_cache/$entry.log
: >"$log"
export WINEPREFIX=$stage WINEARCH=win64 WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY WAYLAND_DISPLAY
trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf -- "$stage"' EXIT

# One face draws every caption; the console's own face must stay a Latin one
# (a Chinese one doubles every cell), so there the Chinese is linked in.
registry() {
  local face='WenQuanYi Micro Hei' name
  local link='wqy-microhei.ttc,WenQuanYi Micro Hei'
  printf 'Windows Registry Editor Version 5.00\r\n'
  printf '\r\n[HKEY_CURRENT_USER\\Software\\Wine\\Fonts\\Replacements]\r\n'
  for name in 'Microsoft Sans Serif' SimSun $'\u5b8b\u4f53' Arial 'Segoe UI' \
    'Microsoft YaHei'; do
    printf '"%s"="%s"\r\n' "$name" "$face"
  done
  local nt='HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion'
  printf '\r\n[%s\\FontSubstitutes]\r\n' "$nt"
  for name in 'MS Shell Dlg' 'MS Shell Dlg 2'; do
    printf '"%s"="%s"\r\n' "$name" "$face"
  done
  printf '\r\n[%s\\FontLink\\SystemLink]\r\n' "$nt"
  for name in Tahoma 'Tahoma Bold' 'DejaVu Sans Mono'; do
    printf '"%s"=hex(7):%s\r\n' "$name" "$(printf '%s\0\0' "$link" |
      iconv -f UTF-8 -t UTF-16LE | od -An -v -tx1 | tr -d '\n' |
      sed 's/^ //; s/ /,/g')"
  done
  printf '\r\n[HKEY_CURRENT_USER\\Console]\r\n'
  printf '"FaceName"="DejaVu Sans Mono"\r\n"FontSize"=dword:00100008\r\n'
  printf '\r\n[%s\\AeDebug]\r\n"Debugger"="false"\r\n' "$nt"
  printf '\r\n[HKEY_CURRENT_USER\\Software\\Wine\\WineDbg]\r\n'
  printf '"ShowCrashDialog"=dword:00000000\r\n'
}

say "Preparing the Wine prefix once (about 15 s; log: $log)"
logged "$log" timeout 300 wineboot -i
logged "$log" timeout 60 wineserver -w
# This build of Wine does not look into its own font folder.
cp /usr/share/wine/fonts/*.ttf /usr/share/wine/fonts/*.fon \
  "$stage/drive_c/windows/Fonts/"
{
  printf '\xff\xfe'
  LC_ALL=C.UTF-8 registry | iconv -f UTF-8 -t UTF-16LE
} >"$stage/drive_c/rendal.reg"
logged "$log" timeout 120 wine regedit /S 'C:\rendal.reg'
logged "$log" timeout 60 wineserver -w
grep -q 'WenQuanYi' "$stage/user.reg" || fail "the registry took no fonts"
rm -- "$stage/drive_c/rendal.reg"
: >"$stage/complete"
rm -rf -- "$prefix"
mv -- "$stage" "$prefix"
trap - EXIT
copy_prefix
