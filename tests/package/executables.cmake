# SPDX-License-Identifier: MIT
#
# Looks into the Windows files that are given away: version and product name,
# addresses that the system may choose, data that cannot be run, no time of the
# build; UTF-8 and long paths in the manifests, an icon.
# Arguments: FILES (a list), VERSION, OBJDUMP, WINDRES.
function(expect file text what)
  if(NOT text MATCHES "${what}")
    message(SEND_ERROR "${file} has not: ${what}")
  endif()
endfunction()

foreach(path ${FILES})
  get_filename_component(file ${path} NAME)
  execute_process(COMMAND ${OBJDUMP} -p ${path}
                  OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
  foreach(flag HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT)
    expect(${file} "${headers}" "\n[ \t]+${flag}\n")
  endforeach()
  if(headers MATCHES "relocations stripped")
    message(SEND_ERROR "${file} cannot be moved")
  endif()
  expect(${file} "${headers}" "Time/Date[ \t]+Thu Jan +1 00:00:00 1970")

  execute_process(COMMAND ${WINDRES} -O rc -i ${path}
                  OUTPUT_VARIABLE resources COMMAND_ERROR_IS_FATAL ANY)
  expect(${file} "${resources}" "\"ProductName\"[, ]+\"Rendal\"")
  expect(${file} "${resources}" "\"OriginalFilename\"[, ]+\"${file}\"")
  foreach(name FileVersion ProductVersion)
    expect(${file} "${resources}" "\"${name}\"[, ]+\"${VERSION}.0\"")
  endforeach()
  if(file MATCHES "exe$")
    expect(${file} "${resources}" "Type: group icon")
    file(STRINGS ${path} manifest REGEX "(activeCodePage|longPathAware)")
    expect(${file} "${manifest}" "activeCodePage[^>]*>UTF-8<")
    expect(${file} "${manifest}" "longPathAware[^>]*>true<")
  endif()
endforeach()
