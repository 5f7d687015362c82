# SPDX-License-Identifier: MIT
#
# cmake -DNM=... -DLIBRARY=... -P exports.cmake
# The shared library exports the nine functions and nothing else.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
                OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[A-Za-z] [A-Za-z_][^\n]*" exported "${symbols}")
list(TRANSFORM exported REPLACE "^[A-Za-z] " "")
list(SORT exported)
set(promised
  clear_mems do_fit do_measure gen_measure_circle gen_measure_ellipse
  gen_measure_line measure_pos_d ppw_to_rr vexolab_error_text)
if(NOT exported STREQUAL promised)
  message(FATAL_ERROR "exported: ${exported}")
endif()
