#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Collects the licences of everything that the Windows programs link, from the
# packages of this machine whose sources they are built from.
#
#   setup/licences.sh FOLDER

. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

[ $# -eq 1 ] || usage_error "expected one folder"
folder=$1

# The name that a reader knows, and the package that carries the text.
linked=(
  cli11=libcli11-dev
  eigen=libeigen3-dev
  gcc-runtime=g++-mingw-w64-x86-64-posix
  libjpeg-turbo=libjpeg62-turbo-dev
  libpng=libpng-dev
  libtiff=libtiff-dev
  mingw-w64-runtime=mingw-w64-x86-64-dev
  nlohmann-json=nlohmann-json3-dev
  onetbb=libtbb-dev
  opencv=libopencv-core-dev
  zlib=libz-mingw-w64-dev
)

mkdir -p -- "$folder"
rm -f -- "$folder"/*.txt
for entry in "${linked[@]}"; do
  text=/usr/share/doc/${entry#*=}/copyright
  [ -s "$text" ] || fail "no licence of ${entry%%=*}: $text is missing"
  cp -L -- "$text" "$folder/${entry%%=*}.txt"
  chmod 644 "$folder/${entry%%=*}.txt"
done
