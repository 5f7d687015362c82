# SPDX-License-Identifier: MIT
#
# The folder that the ZIP and the installer hold: the programs, and the licence
# texts of what is linked into them. Arguments: BUILD_DIR.
set(folder ${BUILD_DIR}/program-folder-test)
file(REMOVE_RECURSE ${folder})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR}
                        --component program --prefix ${folder}
                OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
foreach(file Rendal.exe rendal-cli.exe vexolab.dll LICENSE README.md
        licences/cli11.txt licences/eigen.txt licences/gcc-runtime.txt
        licences/libjpeg-turbo.txt licences/libpng.txt licences/libtiff.txt
        licences/mingw-w64-runtime.txt licences/nlohmann-json.txt
        licences/onetbb.txt licences/opencv.txt licences/zlib.txt
        licences/Apache-2.0.txt licences/GPL-3.txt samples/count_coins.json)
  if(NOT EXISTS ${folder}/${file})
    message(FATAL_ERROR "no ${file}")
  endif()
  file(SIZE ${folder}/${file} size)
  if(size LESS 100)
    message(FATAL_ERROR "${file} has ${size} bytes")
  endif()
endforeach()
file(REMOVE_RECURSE ${folder})
