# SPDX-License-Identifier: MIT
#
# A machine without some licence texts: they are named, and the others are
# there. Arguments: SOURCE_DIR, WORK (a folder for this test alone).
cmake_minimum_required(VERSION 3.25)
include(${SOURCE_DIR}/cmake/RendalLicences.cmake)
set(RENDAL_DOCUMENTS ${WORK}/doc)
set(RENDAL_COMMON_LICENCES ${WORK}/common)
set(RENDAL_LINKED one=one-dev other=other-dev third=third-dev)
file(REMOVE_RECURSE ${WORK})
file(WRITE ${WORK}/doc/one-dev/copyright
     "One; see \"/usr/share/common-licenses/GPL-3\".\n")
file(WRITE ${WORK}/doc/third-dev/copyright
     "Third [\\n];\n/usr/share/common-licenses/BSD and GPL-3\n")
file(WRITE ${WORK}/common/BSD "Berkeley\n")

rendal_collect_licences(${WORK}/texts ${WORK}/licences.cpp missing)

function(expect actual expected)
  if(NOT actual STREQUAL expected)
    message(FATAL_ERROR "not '${expected}': '${actual}'")
  endif()
endfunction()
expect("${missing}" "other;GPL-3")
file(GLOB texts RELATIVE ${WORK}/texts ${WORK}/texts/*)
expect("${texts}" "BSD.txt;one.txt;third.txt")
foreach(name one third)
  file(READ ${WORK}/doc/${name}-dev/copyright original)
  file(READ ${WORK}/texts/${name}.txt copy)
  expect("${copy}" "${original}")
endforeach()
file(READ ${WORK}/licences.cpp source)
foreach(part "k_other[] = {\n\"\"}"
             "k_GPL_3[] = {\n\"\"}"
             "k_BSD[] = {\n\"Berkeley\",\n\"\"}"
             "\"Third [\\\\n];\",\n\"/usr")
  string(FIND "${source}" "${part}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "does not say ${part}: ${source}")
  endif()
endforeach()
