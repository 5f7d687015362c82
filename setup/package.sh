#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Builds what is given away, into out/packages: a portable ZIP and an installer
# for Windows, Debian packages of the libraries, headers and command line.
#
#   setup/package.sh
#
# The date in the window's title is that of the commit (or SOURCE_DATE_EPOCH), so
# that the same commit gives the same packages.

. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
. "$setup_root/setup/build.sh"

[ $# -eq 0 ] || usage_error "takes no arguments"
cd -- "$setup_root"
setup/packages.sh native windows display installer
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)} ||
  fail "neither a commit nor SOURCE_DATE_EPOCH says when this is from"
export SOURCE_DATE_EPOCH

. setup/environment.sh
build_preset windows rendal rendal-cli vexolab
build_preset native vexo vexolab rendal-cli
packages=$setup_root/out/packages
rm -rf -- "$packages"
mkdir -p -- "$packages"
setup/windows_packages.sh build/windows "$packages"
logged build/native.log cpack --config build/native/CPackConfig.cmake -B "$packages"
rm -rf -- "$packages/_CPack_Packages"
(cd -- "$packages" && sha256sum -- *)
