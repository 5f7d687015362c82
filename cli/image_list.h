// SPDX-License-Identifier: MIT
#ifndef RENDAL_CLI_IMAGE_LIST_H_
#define RENDAL_CLI_IMAGE_LIST_H_

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace rendal {

// The images that arguments name, in their order:
//
//   a folder         its files bmp, jpg, jpeg, png, tif and tiff, by name
//   a pattern        with * and ? in its last part (for shells that leave
//                    patterns alone), by name; on Windows whatever the case
//                    of ASCII letters
//   anything else    the file of that name, there or not
//
// Throws std::invalid_argument for a folder without images or that cannot be
// read, and for a pattern that nothing matches.
std::vector<std::filesystem::path> ListImages(
    const std::vector<std::string>& arguments);

// Whether a file name matches a pattern of * and ?, in UTF-8.
bool MatchesPattern(std::string_view name, std::string_view pattern);

// What stands for {name} in the names of pictures: for each image the part
// of its file name before the extension. Where that is taken (letters differ
// only by case count as the same) with the extension, as in "coins_png", then
// with a number.
std::vector<std::string> PictureNames(
    const std::vector<std::filesystem::path>& images);

}  // namespace rendal

#endif  // RENDAL_CLI_IMAGE_LIST_H_
