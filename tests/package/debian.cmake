# SPDX-License-Identifier: MIT
#
# The Debian packages of run.cmake: made, looked into, installed into a root of
# their own and removed from it.
set(dpkg dpkg --root=${installed} --force-not-root --force-bad-path
    --force-script-chrootless --no-triggers)

macro(make_packages)
  run(${CPACK} --config ${BUILD_DIR}/CPackConfig.cmake -B ${root}/packages)
  file(GLOB packages ${root}/packages/*.deb)
  list(LENGTH packages count)
  if(NOT count EQUAL 3)
    message(FATAL_ERROR "not three packages: ${packages}")
  endif()
endmacro()

# expect_package(NAME DEPENDENCY...): the package is there, needs what is named,
# holds its licence and nothing outside /usr.
function(expect_package name)
  file(GLOB package ${root}/packages/${name}_${VERSION}_*.deb)
  answer(depends dpkg-deb --field ${package} Depends)
  foreach(needed ${ARGN})
    string(FIND ", ${depends}" ", ${needed}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "${name} does not need ${needed}: ${depends}")
    endif()
  endforeach()
  answer(content dpkg-deb --contents ${package})
  if(NOT content MATCHES "/usr/share/doc/${name}/copyright")
    message(FATAL_ERROR "${name} carries no licence")
  endif()
  string(REGEX MATCHALL "[^ ]+ root/root [^\n]* \\./[^\n]*" lines "${content}")
  foreach(line ${lines})
    if(NOT line MATCHES " \\./(usr/[^\n]*)?$")
      message(FATAL_ERROR "${name} installs elsewhere: ${line}")
    endif()
  endforeach()
endfunction()

# expect_licences(NAME COMPONENT...): the package holds the licence texts of
# what is compiled into its files.
function(expect_licences name)
  file(GLOB package ${root}/packages/${name}_${VERSION}_*.deb)
  answer(content dpkg-deb --contents ${package})
  foreach(component ${ARGN})
    if(NOT content MATCHES
       " [1-9][0-9]* [^\n]*/usr/share/doc/${name}/licences/${component}.txt")
      message(FATAL_ERROR "${name} has no licence of ${component}: ${content}")
    endif()
  endforeach()
endfunction()

# What the packages need of the distribution is on this machine, not in there.
# Their scripts renew the loader's cache, which that root does not have and this
# machine keeps as it is.
macro(install_packages)
  file(WRITE ${root}/bin/ldconfig "#!/bin/sh\nexit 0\n")
  file(CHMOD ${root}/bin/ldconfig PERMISSIONS OWNER_READ OWNER_EXECUTE)
  set(ENV{PATH} ${root}/bin:$ENV{PATH})
  file(MAKE_DIRECTORY ${installed}/var/lib/dpkg/updates
       ${installed}/var/lib/dpkg/info)
  file(TOUCH ${installed}/var/lib/dpkg/status)
  run(${dpkg} --force-depends --install ${packages})
endmacro()

function(expect_command_line_works)
  set(ENV{LD_LIBRARY_PATH} ${installed}/usr/lib)
  answer(version ${installed}/usr/bin/rendal-cli --version)
  if(NOT version STREQUAL "rendal-cli ${VERSION}")
    message(FATAL_ERROR "it says: ${version}")
  endif()
  answer(count ${installed}/usr/bin/rendal-cli run
         ${SOURCE_DIR}/samples/count_coins.json ${SOURCE_DIR}/samples/coins.png
         --out ${root}/counted)
  if(NOT count MATCHES ": 20 components")
    message(FATAL_ERROR "the coins were not counted: ${count}")
  endif()
endfunction()

macro(remove_packages)
  run(${dpkg} --remove rendal-cli librendal-dev libvexolab1)
  file(GLOB_RECURSE left ${installed}/usr/*)
  if(left)
    message(FATAL_ERROR "left after removal: ${left}")
  endif()
endmacro()
