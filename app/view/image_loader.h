// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_VIEW_IMAGE_LOADER_H_
#define RENDAL_APP_VIEW_IMAGE_LOADER_H_

#include <filesystem>
#include <optional>
#include <string>

#include "app/view/image_header.h"
#include "app/view/view_state.h"
#include "tools/status.h"
#include "tools/workbench.h"

namespace rendal {

// What a file held, and what became of it.
struct LoadReport {
  int channels = 0;
  int bits = 0;  // of a sample
  bool is_float = false;
  // What is wrong with the file, after "the file"; none if nothing is known. A
  // JPEG that is cut off in its picture is an image nevertheless.
  std::string trouble;
  // Set when the file was refused for its size.
  std::optional<ClaimedSize> too_large;
  std::string grey_values;  // how the values were scaled; none: as they are
};

// Loads an image file as 8-bit grey, fits it into the view, resets the regions
// of interest and hides old results. Regions of the blob tool stay.
//
//   Paths     Any that the file system can open, whatever the code page.
//   Depths    8 bit as it is; 16 bit divided by 257; all others stretched from
//             their smallest to their largest finite value, which a console
//             line says.
//   Channels  1, 3 (colour) and 4 (colour, alpha ignored). Any other number:
//             the unconverted image is kept in m_srcImage, the status names
//             the number, everything else stays.
//   No image  A file that is missing, empty or not decodable gives an empty
//             m_srcImage, the status with width 0 and height 0, and a console
//             line that names the path. So do damaged files, except that a
//             JPEG that is cut off in its picture opens, grey where it has no
//             data, and the console says so.
//   Formats   PNG, BMP, JPEG, TIFF; portable maps (PBM to PAM, PFM), Radiance
//             (HDR), Sun raster. Others are no images, whatever the image
//             library of this system could decode.
//   Too large A file whose header claims more than
//             Workbench::m_maxImagePixels is refused before memory is taken for
//             its pixels: red status, everything stays. A file of 2 GB or more
//             counts as no image.
//   Written   A file that is being written while it is read is read again, and
//             counts as no image if it does not come to rest.
//   Throws    std::bad_alloc, cv::Exception when memory runs out; the
//             workbench and the view are as before. Except within a decoder:
//             the image library then says no more than that the file is no
//             image.
//   report    May be null.
Status LoadImageFile(const std::filesystem::path& path, Workbench& workbench,
                     ViewState& view, LoadReport* report = nullptr);

// An image of 1, 3 or 4 channels and any depth as 8-bit grey, by the rules
// above. `note` (may be null) receives how the values were scaled, or nothing.
cv::Mat ToGrey8(const cv::Mat& image, std::string* note);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_IMAGE_LOADER_H_
