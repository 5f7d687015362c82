# SPDX-License-Identifier: MIT
#
# Cross toolchain: Windows x86-64 by mingw-w64 (posix threads), tests run under
# Wine. RENDAL_WINDOWS_PREFIX (environment) names the folder that holds the
# Windows builds of the dependencies.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# Captions are UTF-8.
set(CMAKE_RC_FLAGS_INIT "-c 65001")

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 $ENV{RENDAL_WINDOWS_PREFIX})
set(CMAKE_PREFIX_PATH $ENV{RENDAL_WINDOWS_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(RENDAL_WINE NAMES wine64 wine
             PATHS /usr/lib/wine NO_DEFAULT_PATH)
if(NOT RENDAL_WINE)
  find_program(RENDAL_WINE NAMES wine64 wine)
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR ${RENDAL_WINE})
