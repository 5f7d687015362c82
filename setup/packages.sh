#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Installs the Debian packages that building, testing and running need. With
# everything there it says nothing and takes a moment. The machine's package
# lists are refreshed only when something is missing.
#
#   setup/packages.sh [GROUP...]
#
# Groups: native windows display, which are meant if none is named; installer,
# which only setup/package.sh needs; bench, the benchmarks' peers.

. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

# Each group: why, then the packages.
native_why="compilers and libraries of the Linux build"
native=(
  build-essential cmake ninja-build pkg-config git ca-certificates
  libopencv-core-dev libopencv-imgproc-dev libopencv-imgcodecs-dev
  libtbb-dev libeigen3-dev libcli11-dev nlohmann-json3-dev
  googletest
  # The Debian packages' dependencies are found with it.
  file
  # Readers of result files that are not ours: the tests compare with them.
  python3 python3-numpy python3-pil
)
windows_why="cross compiler, and what its libraries are built with"
windows=(
  g++-mingw-w64-x86-64-posix mingw-w64-tools libz-mingw-w64-dev nasm
  dpkg-dev libpng-dev libjpeg62-turbo-dev libtiff-dev
  libopencv-core-dev libtbb-dev libeigen3-dev libcli11-dev nlohmann-json3-dev
)
display_why="Wine runs the Windows program; fonts and a display to see it"
display=(
  wine wine64 fonts-wine fonts-wqy-microhei fonts-dejavu-core
  xvfb openbox x11-utils xdotool imagemagick locales
)
installer_why="packs the Windows installer"
installer=(nsis)
bench_why="what the benchmarks compare with"
bench=(libopencv-dev libopencv-contrib-dev libleptonica-dev)

missing_of() {
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null)" = \
      "ii " ] || printf '%s\n' "$package"
  done
}

[ $# -gt 0 ] || set -- native windows display

wanted=()
for group in "$@"; do
  case $group in
    native | windows | display | installer | bench) ;;
    *) usage_error "unknown group '$group'" ;;
  esac
  declare -n packages=$group why=${group}_why
  mapfile -t missing < <(missing_of "${packages[@]}")
  if [ ${#missing[@]} -gt 0 ]; then
    say "Installing ($why): ${missing[*]}"
    wanted+=("${missing[@]}")
  fi
done
[ ${#wanted[@]} -gt 0 ] || exit 0

command -v apt-get >/dev/null ||
  fail "apt-get is missing: this set-up is for Debian 12"
log=$(mktemp)
trap 'rm -f -- "$log"' EXIT
logged "$log" as_root apt-get -q update
logged "$log" as_root env DEBIAN_FRONTEND=noninteractive \
  apt-get -q install -y --no-install-recommends "${wanted[@]}"
