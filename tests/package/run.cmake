# SPDX-License-Identifier: MIT
#
# Installs the libraries into an empty root inside the build tree, on Linux from
# the Debian packages, builds the consumer against what was installed, by
# find_package and by pkg-config, and runs it.
# Arguments: BUILD_DIR, SOURCE_DIR, VERSION, CPACK, CONFIG_ARGS (a list), CXX,
# EMULATOR (may be empty).
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    string(REPLACE ";" " " line "${ARGN}")
    message(FATAL_ERROR "failed (${result}): ${line}")
  endif()
endfunction()

# answer(VARIABLE COMMAND...): what it prints.
function(answer variable)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()

set(root ${BUILD_DIR}/package-test)
set(installed ${root}/installed)
file(REMOVE_RECURSE ${root})
if(EMULATOR)
  run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${installed}/usr
      --component libraries)
else()
  include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
  make_packages()
  expect_package(libvexolab1 libc6 libstdc++6)
  expect_package(librendal-dev "libvexolab1 (= ${VERSION})" libtbb-dev)
  expect_package(rendal-cli "libvexolab1 (= ${VERSION})" libtbb12
                 libopencv-core libopencv-imgcodecs libopencv-imgproc)
  expect_licences(libvexolab1 eigen)
  expect_licences(librendal-dev onetbb)
  expect_licences(rendal-cli cli11 eigen nlohmann-json onetbb opencv)
  install_packages()
endif()

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${root}/consumer
    -G Ninja -DCMAKE_BUILD_TYPE=Release ${CONFIG_ARGS})
run(${CMAKE_COMMAND} --build ${root}/consumer)

# A program of another folder finds the shared library beside itself.
file(GLOB_RECURSE shared ${installed}/*.dll)
foreach(library ${shared})
  file(COPY ${library} DESTINATION ${root}/consumer)
endforeach()
file(GLOB programs ${root}/consumer/count_parts* ${root}/consumer/measure_edge*)
foreach(program ${programs})
  if(NOT IS_DIRECTORY ${program})
    run(${EMULATOR} ${program})
  endif()
endforeach()

if(NOT EMULATOR)
  set(ENV{PKG_CONFIG_PATH} ${installed}/usr/lib/pkgconfig)
  answer(flags pkg-config --cflags --libs vexo)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(${CXX} -std=c++20 ${CMAKE_CURRENT_LIST_DIR}/consumer/count_parts.cpp
      -o ${root}/count_parts_pc ${flags})
  run(${root}/count_parts_pc)
  expect_command_line_works()
  remove_packages()
endif()
