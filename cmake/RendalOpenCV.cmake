# SPDX-License-Identifier: MIT
#
# The image library. tools and app/view get core, imgproc and imgcodecs; only
# the window program links highgui, so a stray include does not link.
#
# Its own configuration names every module there is, and with it a distribution
# installs them all; three and their headers do.
find_package(OpenCV QUIET COMPONENTS core imgproc imgcodecs)
if(NOT OpenCV_FOUND)
  find_path(RENDAL_OPENCV_HEADERS opencv2/core.hpp
    PATH_SUFFIXES opencv4 REQUIRED)
  foreach(module core imgproc imgcodecs)
    find_library(RENDAL_OPENCV_${module} opencv_${module} REQUIRED)
    add_library(opencv_${module} UNKNOWN IMPORTED)
    set_target_properties(opencv_${module} PROPERTIES
      IMPORTED_LOCATION ${RENDAL_OPENCV_${module}}
      INTERFACE_INCLUDE_DIRECTORIES ${RENDAL_OPENCV_HEADERS})
  endforeach()
endif()

add_library(rendal_opencv INTERFACE)
target_link_libraries(rendal_opencv INTERFACE
  opencv_core opencv_imgproc opencv_imgcodecs)
