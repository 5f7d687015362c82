#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Photographs to work on, from Debian packages that are downloaded and unpacked
# into the user's cache: nothing is installed and nothing enters the tree.
#
#   setup/sample_images.sh [PACKAGE...]     python3-skimage if none is given
#
# Prints one folder per package; the images lie in it as in the package.

. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
. "$setup_root/setup/debian_sources.sh"

[ $# -gt 0 ] || set -- python3-skimage

# unpack_images PACKAGE FOLDER: the package's image files, nothing else.
unpack_images() {
  local package=$1 folder=$2 work=$2.files
  if [ ! -d "$scratch/apt" ]; then
    prepare_debian_sources "$scratch/apt"
  fi
  mkdir -p -- "$work" "$folder"
  (cd -- "$work" && private_apt download "$package") >>"$log" 2>&1 ||
    fail "cannot download the package $package (log: $log)"
  dpkg-deb --fsys-tarfile "$work"/*.deb |
    tar -x -C "$folder" --wildcards --no-anchored \
      '*.png' '*.jpg' '*.jpeg' '*.bmp' '*.tif' '*.tiff' '*.pgm' \
      2>>"$log" || true
  [ -n "$(find "$folder" -type f -print -quit)" ] ||
    fail "the package $package holds no images"
  rm -rf -- "$work"
}

for package in "$@"; do
  case $package in
    *[!a-z0-9.+-]* | -*) usage_error "not a package name: '$package'" ;;
  esac
done

for package in "$@"; do
  entry=$setup_cache/images-$package
  if [ ! -d "$entry" ]; then
    lock_cache_entry images
  fi
  if [ ! -d "$entry" ]; then
    say "Fetching photographs (package $package, unpacked to the cache)"
    scratch=${scratch:-$(mktemp -d -- "$setup_cache/images.XXXXXX")}
    trap 'rm -rf -- "$scratch"' EXIT
    log=$setup_cache/images.log
    unpack_images "$package" "$scratch/$package"
    mv -T -- "$scratch/$package" "$entry"
  fi
  printf '%s\n' "$entry"
done
