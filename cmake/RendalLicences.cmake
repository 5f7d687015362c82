# SPDX-License-Identifier: MIT
#
# Licence texts of everything that programs of ours link or compile in. Each
# configuration copies them from the distribution's packages into the build's
# folder `licences`, which is given away, and into a source that rendal-cli
# prints. Texts that are not there are named by a warning, by rendal-cli, and no
# package is made without them.
set(RENDAL_DOCUMENTS /usr/share/doc CACHE PATH
    "Folder of the packages' licence texts, as in opencv-dev/copyright")
set(RENDAL_COMMON_LICENCES /usr/share/common-licenses CACHE PATH
    "Folder of the licences that these texts refer to")

# The name that a reader knows, and the package that carries the text.
set(RENDAL_LINKED
    cli11=libcli11-dev
    eigen=libeigen3-dev
    nlohmann-json=nlohmann-json3-dev
    onetbb=libtbb-dev
    opencv=libopencv-core-dev)
if(WIN32)
  list(APPEND RENDAL_LINKED
       gcc-runtime=g++-mingw-w64-x86-64-posix
       libjpeg-turbo=libjpeg62-turbo-dev
       libpng=libpng-dev
       libtiff=libtiff-dev
       mingw-w64-runtime=mingw-w64-x86-64-dev
       zlib=libz-mingw-w64-dev)
else()
  list(APPEND RENDAL_LINKED gcc-runtime=libstdc++6 glibc=libc6)
endif()
list(SORT RENDAL_LINKED)

# rendal_read_licence(file name TEXT MISSING REFERRED), variables of the caller:
# the text, or nothing and the name among the missing ones. Licences that the
# text refers to by the name of a file are added to a list.
function(rendal_read_licence file name TEXT MISSING REFERRED)
  if(NOT EXISTS ${file})
    set(${TEXT} "" PARENT_SCOPE)
    set(${MISSING} ${${MISSING}} ${name} PARENT_SCOPE)
    return()
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} content)
  set(${TEXT} "${content}" PARENT_SCOPE)
  string(REGEX MATCHALL "/usr/share/common-licenses/[A-Za-z0-9.-]*[A-Za-z0-9]"
         names "${content}")
  list(TRANSFORM names REPLACE ".*/" "")
  set(all ${${REFERRED}} ${names})
  list(REMOVE_DUPLICATES all)
  set(${REFERRED} ${all} PARENT_SCOPE)
endfunction()

# rendal_add_licence(name text DEFINITIONS ENTRIES): appends to two variables of
# the caller. One line is one literal: compilers limit their length.
function(rendal_add_licence name text DEFINITIONS ENTRIES)
  string(REGEX REPLACE "[^a-zA-Z0-9]" "_" identifier "${name}")
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  string(REPLACE "\n" "\",\n\"" text "${text}")
  set(${DEFINITIONS} "${${DEFINITIONS}}const char* const k_${identifier}[] = {
\"${text}\"};
" PARENT_SCOPE)
  set(${ENTRIES} "${${ENTRIES}}{\"${name}\", k_${identifier}},
" PARENT_SCOPE)
endfunction()

function(rendal_write_if_different path content)
  set(old)
  if(EXISTS ${path})
    file(READ ${path} old)
  endif()
  if(NOT old STREQUAL content)
    file(WRITE ${path} "${content}")
  endif()
endfunction()

# One text for the folder and the source; in rendal_collect_licences only, whose
# variables it fills.
macro(rendal_take_licence file name)
  rendal_read_licence(${file} ${name} text missing referred)
  if(text)
    file(WRITE ${folder}/${name}.txt "${text}")
  endif()
  rendal_add_licence(${name} "${text}" definitions entries)
endmacro()

# rendal_collect_licences(folder source MISSING): fills the folder with NAME.txt
# of what is linked and of the licences referred to, writes the source of
# cli/licences.h, and leaves the names of missing texts in a variable.
function(rendal_collect_licences folder source MISSING)
  file(REMOVE_RECURSE ${folder})
  file(MAKE_DIRECTORY ${folder})
  set(definitions)
  set(entries)
  set(missing)
  set(referred)
  foreach(entry ${RENDAL_LINKED})
    string(REGEX MATCH "^[^=]+" name ${entry})
    string(REGEX REPLACE "^[^=]+=" "" package ${entry})
    rendal_take_licence(${RENDAL_DOCUMENTS}/${package}/copyright ${name})
  endforeach()
  list(SORT referred)
  foreach(name ${referred})
    rendal_take_licence(${RENDAL_COMMON_LICENCES}/${name} ${name})
  endforeach()
  file(READ ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../LICENSE text)
  rendal_add_licence(Rendal "${text}" definitions own)
  rendal_write_if_different(${source}
    "#include \"cli/licences.h\"
namespace {
${definitions}const rendal::Licence kEntries[] = {
${own}${entries}};
}
const std::span<const rendal::Licence> rendal::kLicences = kEntries;
")
  set(${MISSING} ${missing} PARENT_SCOPE)
endfunction()
