# SPDX-License-Identifier: MIT
#
# What every target of ours shares: warnings, sanitizers, the include root, and
# one line per test program.

find_package(Threads REQUIRED)

add_library(rendal_options INTERFACE)
target_compile_options(rendal_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wcast-align -Wimplicit-fallthrough -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
if(RENDAL_SANITIZE)
  target_compile_options(rendal_options INTERFACE
    -fsanitize=${RENDAL_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer -g1)
  target_link_options(rendal_options INTERFACE -fsanitize=${RENDAL_SANITIZE})
  # GCC takes its own instrumentation of the standard library for a mistake.
  target_compile_options(rendal_options INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(MINGW)
  target_compile_definitions(rendal_options INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00)
  target_link_options(rendal_options INTERFACE -static
    LINKER:--dynamicbase,--high-entropy-va,--nxcompat
    # Two links of the same objects give the same bytes.
    LINKER:--no-insert-timestamp)
endif()

# rendal_options(target): house warnings and includes from the project's root
# ("region/region.h"). Nothing of this reaches an installed target's users.
function(rendal_target target)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:rendal_options>)
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
endfunction()

# rendal_version_resource(target FILE_NAME type "description"): what Windows tells
# of a file. Types: VFT_APP, VFT_DLL. Elsewhere nothing.
function(rendal_version_resource target FILE_NAME FILE_TYPE FILE_DESCRIPTION)
  if(WIN32)
    set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
    configure_file(${PROJECT_SOURCE_DIR}/res/version.rc.in ${resource} @ONLY)
    target_sources(${target} PRIVATE ${resource})
  endif()
endfunction()

# How sources are compiled that take longer to compile than to run. Half of a
# suite's time was spent on optimizing its tests, and instrumented code takes
# twice as long again.
set(rendal_fast_compilation -O1)
if(RENDAL_SANITIZE)
  set(rendal_fast_compilation -Og)
endif()

# rendal_compile_fast(target): all of a target is such sources.
function(rendal_compile_fast target)
  target_compile_options(${target} PRIVATE ${rendal_fast_compilation})
endfunction()

# Starting a program costs more than most cases take where it is instrumented or
# runs under Wine. There a program without windows is one CTest test, and leaves
# its cases in cases/NAME.xml; otherwise each case is one, in a process of its own.
set(rendal_cases_share_process OFF)
if(RENDAL_SANITIZE OR WIN32)
  set(rendal_cases_share_process ON)
endif()

# rendal_test(name SOURCES file... LIBRARIES target... [LABELS label...])
# One GoogleTest program. Labels that mean something to the runner: "window"
# (needs the display, one such test at a time).
function(rendal_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  rendal_target(${name})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gtest_main)
  rendal_compile_fast(${name})
  if(RENDAL_TEST_HEADERS)
    target_precompile_headers(${name} REUSE_FROM ${RENDAL_TEST_HEADERS})
    if(MINGW)
      # Read from there, the system's headers are no longer known as such.
      target_compile_options(${name} PRIVATE
        -Wno-array-bounds -Wno-stringop-overread)
    endif()
  endif()
  if(rendal_cases_share_process AND NOT "window" IN_LIST ARG_LABELS)
    add_test(NAME ${name}
      COMMAND ${name} --gtest_brief=1 --gtest_output=xml:cases/${name}.xml)
    set_tests_properties(${name} PROPERTIES TIMEOUT 900 LABELS "${ARG_LABELS}")
    return()
  endif()
  set(properties TIMEOUT 300 LABELS "${ARG_LABELS}")
  if("window" IN_LIST ARG_LABELS)
    # First of all, so that the others run beside this one queue.
    list(APPEND properties RESOURCE_LOCK display COST 1000)
  endif()
  gtest_discover_tests(${name}
    NO_PRETTY_VALUES
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    PROPERTIES ${properties})
endfunction()
