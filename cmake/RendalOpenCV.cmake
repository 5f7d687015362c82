# SPDX-License-Identifier: MIT
#
# The image library. tools and app/view get core, imgproc and imgcodecs; only
# the window program links highgui, so a stray include does not link.
find_package(OpenCV REQUIRED COMPONENTS core imgproc imgcodecs)
add_library(rendal_opencv INTERFACE)
target_link_libraries(rendal_opencv INTERFACE
  opencv_core opencv_imgproc opencv_imgcodecs)
