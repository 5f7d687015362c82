#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Fetches the photographs that the benchmarks read: two packages of the
# distribution, unpacked into the cache, never installed. Prints the folder.
# The benchmarks look there by themselves.

. "$(dirname -- "${BASH_SOURCE[0]}")/../setup/common.sh"

packages=(python3-skimage opencv-doc)
folder=$setup_cache/photographs

lock_cache_entry photographs
if [ ! -e "$folder/complete" ]; then
  rm -rf -- "$folder" && mkdir -p -- "$folder"
  (
    cd -- "$folder"
    say "downloading ${packages[*]}"
    logged "$folder/log" apt-get download "${packages[@]}"
    for package in *.deb; do
      logged "$folder/log" dpkg-deb --extract "$package" .
      rm -- "$package"
    done
  )
  touch -- "$folder/complete"
fi
printf '%s\n' "$folder"
