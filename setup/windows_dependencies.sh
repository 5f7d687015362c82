#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Builds the libraries that the Windows program links, once, from the
# distribution's own source packages: zlib (packaged), libpng, libjpeg-turbo,
# libtiff, oneTBB and OpenCV's four modules, all static. The header-only
# libraries are copied beside them, so that one prefix is all a cross build
# searches. The result lies in the user's cache, keyed by package versions and
# the options below; its path is printed.

. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
. "$setup_root/setup/debian_sources.sh"

# Libraries are built in the versions that the native build of this machine
# links, so that both platforms decode and draw alike.
source_version() { dpkg-query -W -f '${source:Version}' "$1"; }

versions=$(
  dpkg-query -W -f '${Package}=${Version}\n' \
    libopencv-core-dev libtiff-dev libpng-dev libjpeg62-turbo-dev libtbb-dev \
    libz-mingw-w64-dev libeigen3-dev libcli11-dev nlohmann-json3-dev \
    g++-mingw-w64-x86-64-posix
) || fail "packages are missing: run setup/packages.sh first"

# What a change of these options needs is another build, so they are part of
# the key.
common_options=(
  -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF
  -DCMAKE_POLICY_DEFAULT_CMP0077=NEW
)
png_options=(-DPNG_SHARED=OFF -DPNG_TESTS=OFF)
jpeg_options=(
  -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF -DWITH_JAVA=OFF -DREQUIRE_SIMD=ON
)
tiff_options=(
  -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF
  -Dtiff-opengl=OFF -Dcxx=OFF -Dlzma=OFF -Dzstd=OFF -Dwebp=OFF -Djbig=OFF
  -Dlerc=OFF -Dlibdeflate=OFF
)
tbb_options=(
  -DTBB_STRICT=OFF -DTBB_TEST=OFF -DTBBMALLOC_BUILD=OFF
  -DTBB_DISABLE_HWLOC_AUTOMATIC_SEARCH=ON
)
opencv_off=(
  BUILD_TESTS BUILD_PERF_TESTS BUILD_EXAMPLES BUILD_opencv_apps BUILD_JAVA
  BUILD_ZLIB BUILD_PNG BUILD_JPEG BUILD_TIFF
  WITH_1394 WITH_ADE WITH_DIRECTX WITH_DSHOW WITH_EIGEN WITH_FFMPEG
  WITH_GSTREAMER WITH_IPP WITH_ITT WITH_JASPER WITH_LAPACK WITH_MSMF
  WITH_OPENCL WITH_OPENEXR WITH_OPENJPEG WITH_PROTOBUF WITH_QUIRC WITH_VTK
  WITH_WEBP
)
opencv_off=("${opencv_off[@]/#/-D}")
# It would take 40 % longer without precompiled headers and with a second set of
# vector code for processors older than AVX2.
opencv_options=(
  "${opencv_off[@]/%/=OFF}" -DBUILD_LIST=core,imgproc,imgcodecs,highgui
  -DWITH_WIN32UI=ON -DWITH_PTHREADS_PF=ON -DHAVE_PTHREAD=1
  -DENABLE_PRECOMPILED_HEADERS=ON -DCPU_DISPATCH=AVX2
  # As the distribution compiles it; the vector code is written out anyway.
  "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG"
)

entry=windows-$(key_of "$versions" "${common_options[@]}" "${png_options[@]}" \
  "${jpeg_options[@]}" "${tiff_options[@]}" "${tbb_options[@]}" \
  "${opencv_options[@]}")
prefix=$setup_cache/$entry

answer_if_complete() {
  [ -e "$prefix/complete" ] || return 0
  printf '%s\n' "$prefix"
  exit 0
}

answer_if_complete
lock_cache_entry windows-dependencies
answer_if_complete

work=$(mktemp -d -- "$setup_cache/$entry.XXXXXX")
trap 'rm -rf -- "$work"' EXIT
stage=$work/prefix
mkdir -p -- "$stage/include" "$stage/lib" "$stage/share"
# Kept when the work folder goes, so that a failure can be read.
log=$setup_cache/$entry.log
: >"$log"
export RENDAL_WINDOWS_PREFIX=$stage
started=$SECONDS
jobs=${RENDAL_JOBS:-$(nproc)}

step=0
steps=6
progress() {
  step=$((step + 1))
  say "windows libraries [$step/$steps, $((SECONDS - started)) s]: $*"
}

# compiled FOLDER: builds and installs; a terminal sees how far it has come.
compiled() {
  cmake --build "$1" -j "$jobs" --target install >>"$log" 2>&1 </dev/null &
  local build=$!
  while [ -t 2 ] && kill -0 "$build" 2>/dev/null; do
    printf '\r  %s ' "$(tail -n 3 -- "$log" |
      grep -o '^\[[0-9]*/[0-9]*\]' | tail -n 1)" >&2
    sleep 1
  done
  [ ! -t 2 ] || printf '\r%20s\r' '' >&2
  if ! wait "$build"; then
    tail -n 25 -- "$log" >&2
    fail "build failed (log: $log)"
  fi
}

# build NAME [CMAKE OPTION...]: configures, builds and installs work/NAME.
build() {
  local name=$1
  shift
  logged "$log" cmake -S "$work/$name" -B "$work/$name.build" -G Ninja \
    --toolchain "$setup_root/cmake/mingw-w64.cmake" \
    -DCMAKE_INSTALL_PREFIX="$stage" \
    -DCMAKE_INSTALL_LIBDIR=lib \
    -DZLIB_LIBRARY="$stage/lib/libz.a" \
    -DZLIB_INCLUDE_DIR="$stage/include" \
    "${common_options[@]}" "$@"
  compiled "$work/$name.build"
  rm -rf -- "${work:?}/$name" "${work:?}/$name.build"
}

# fetch SOURCE PACKAGE: SOURCE in the version of the installed PACKAGE.
fetch() {
  local got
  got=$(fetch_source "$1" "$(source_version "$2")" "$work")
  printf '%s\n' "$1 $got" >>"$stage/versions.txt"
  progress "$1 $got"
}

say "Building the Windows libraries once (some minutes; log: $log)"
prepare_debian_sources "$work/apt"

progress "headers of Eigen, CLI11, nlohmann-json; zlib"
cp -R /usr/include/eigen3 "$stage/include/"
cp -R /usr/include/CLI "$stage/include/"
cp -R /usr/include/nlohmann "$stage/include/"
cp -R /usr/share/eigen3 "$stage/share/"
mkdir -p -- "$stage/share/cmake"
cp -R /usr/share/cmake/CLI11 /usr/share/cmake/nlohmann_json \
  "$stage/share/cmake/"
# Only the static archive: beside an import library it would lose.
cp /usr/x86_64-w64-mingw32/lib/libz.a "$stage/lib/"
cp /usr/x86_64-w64-mingw32/include/z{lib,conf}.h "$stage/include/"

fetch libpng1.6 libpng-dev
build libpng1.6 "${png_options[@]}"

fetch libjpeg-turbo libjpeg62-turbo-dev
# Its own install rules take a relative library folder from where cmake runs.
build libjpeg-turbo -DCMAKE_INSTALL_LIBDIR="$stage/lib" "${jpeg_options[@]}"

fetch tiff libtiff-dev
build tiff "${tiff_options[@]}"

fetch onetbb libtbb-dev
build onetbb "${tbb_options[@]}"

fetch opencv libopencv-core-dev
build opencv "${opencv_options[@]}"

for library in libopencv_core460.a libopencv_imgproc460.a \
  libopencv_imgcodecs460.a libopencv_highgui460.a libtbb12.a libpng.a \
  libjpeg.a libtiff.a libz.a; do
  [ -n "$(find "$stage" -name "$library" -print -quit)" ] ||
    fail "the build left no $library (log: $log)"
done

# Some package files name the folder that the build installed to.
grep -rIlF -- "$stage" "$stage" | while IFS= read -r file; do
  sed -i "s|$stage|$prefix|g" "$file"
done
: >"$stage/complete"
rm -rf -- "$prefix"
mv -- "$stage" "$prefix"
say "Windows libraries ready after $((SECONDS - started)) s"
printf '%s\n' "$prefix"
