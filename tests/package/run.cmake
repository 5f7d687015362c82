# SPDX-License-Identifier: MIT
#
# Installs the libraries into a folder of the build tree, builds the consumer
# against what was installed, by find_package and by pkg-config, and runs it.
# Arguments: BUILD_DIR, CONFIG_ARGS (a list), CXX, EMULATOR (may be empty).
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    string(REPLACE ";" " " line "${ARGN}")
    message(FATAL_ERROR "failed (${result}): ${line}")
  endif()
endfunction()

set(root ${BUILD_DIR}/package-test)
file(REMOVE_RECURSE ${root})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${root}/installed
    --component libraries)
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${root}/consumer
    -G Ninja -DCMAKE_BUILD_TYPE=Release ${CONFIG_ARGS})
run(${CMAKE_COMMAND} --build ${root}/consumer)

# A program of another folder finds the shared library beside itself.
file(GLOB_RECURSE shared ${root}/installed/*.dll)
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
  file(GLOB_RECURSE pc ${root}/installed/*/vexo.pc)
  get_filename_component(pc_dir ${pc} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pc_dir})
  execute_process(
    COMMAND pkg-config --define-variable=prefix=${root}/installed
            --cflags --libs vexo
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(${CXX} -std=c++20 ${CMAKE_CURRENT_LIST_DIR}/consumer/count_parts.cpp
      -o ${root}/count_parts_pc ${flags})
  run(${root}/count_parts_pc)
endif()
