# SPDX-License-Identifier: MIT
#
# Configures and builds a preset, for run.sh and test.sh. Sourced after
# common.sh, with the tree's root as the current folder.

# configured_for_this_place PRESET: whether what CMake remembers still holds;
# a tree may have been moved, and the Windows libraries built anew.
configured_for_this_place() {
  local cache=build/$1/CMakeCache.txt
  grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$setup_root" "$cache" || return 1
  [ "$1" != windows ] ||
    grep -qxF "RENDAL_WINDOWS_PREFIX:PATH=$RENDAL_WINDOWS_PREFIX" "$cache"
}

# build_preset PRESET [TARGET...]: everything if no target is named.
build_preset() {
  local preset=$1 log=build/$1.log
  shift
  mkdir -p build
  if [ -e "build/$preset/CMakeCache.txt" ] &&
    ! configured_for_this_place "$preset"; then
    rm -rf -- "build/$preset"
  fi
  : >"$log"
  logged "$log" cmake --preset "$preset"
  local build=(cmake --build --preset "$preset")
  [ $# -eq 0 ] || build+=(--target "$@")
  if [ -t 2 ]; then
    "${build[@]}" >&2 || fail "the build of $preset failed"
  else
    logged "$log" "${build[@]}"
  fi
}
