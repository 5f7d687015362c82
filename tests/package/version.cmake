# SPDX-License-Identifier: MIT
#
# cmake -DROOT=... -DVERSION=1.2.3 -P version.cmake
# The files that repeat the version agree with the project's.
function(expect file text)
  file(READ ${ROOT}/${file} content)
  string(FIND "${content}" "${text}" at)
  if(at EQUAL -1)
    message(SEND_ERROR "${file} does not say: ${text}")
  endif()
endfunction()

string(REGEX MATCH "^[0-9]+[.][0-9]+" short ${VERSION})
expect(vcpkg.json "\"version\": \"${VERSION}\"")
expect(CHANGELOG.md "## ${VERSION} ")
expect(res/rendal.manifest "name=\"Rendal\" version=\"${VERSION}.0\"")
expect(cli/rendal-cli.manifest "name=\"rendal-cli\" version=\"${VERSION}.0\"")
expect(res/rendal.rc " ${short}\", IDC_ABOUT_TEXT")
expect(app/ui_text.h "version ${short}\"")
