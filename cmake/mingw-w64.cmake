# SPDX-License-Identifier: MIT
#
# Cross toolchain: Windows x86-64 by mingw-w64 (posix threads), tests run under
# Wine. The environment (setup/environment.sh) names the folder that holds the
# Windows builds of the dependencies; it is remembered for later runs of CMake.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# Captions are UTF-8.
set(CMAKE_RC_FLAGS_INIT "-c 65001")

if(NOT "$ENV{RENDAL_WINDOWS_PREFIX}" STREQUAL "")
  set(RENDAL_WINDOWS_PREFIX "$ENV{RENDAL_WINDOWS_PREFIX}" CACHE PATH
      "Windows builds of the dependencies" FORCE)
endif()
if(NOT RENDAL_WINDOWS_PREFIX)
  message(FATAL_ERROR
    "RENDAL_WINDOWS_PREFIX is not set; first: . setup/environment.sh")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES RENDAL_WINDOWS_PREFIX)

# Nothing of the build machine is found but programs.
set(CMAKE_FIND_ROOT_PATH ${RENDAL_WINDOWS_PREFIX} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH rendal_root)
set(CMAKE_CROSSCOMPILING_EMULATOR
    ${rendal_root}/setup/run_under_wine.sh)
