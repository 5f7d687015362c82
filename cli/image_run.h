// SPDX-License-Identifier: MIT
//
// One image through a recipe, on a workbench of its own.
#ifndef RENDAL_CLI_IMAGE_RUN_H_
#define RENDAL_CLI_IMAGE_RUN_H_

#include <filesystem>
#include <string>
#include <vector>

#include "cli/masks.h"
#include "recipes/recipe.h"
#include "recipes/tables.h"

namespace rendal {

// What is wanted besides numbers.
struct ImageWishes {
  std::filesystem::path labels;   // a PNG file; empty: none
  std::filesystem::path overlay;  // a PNG file; empty: none
  double zoom = 1;
  bool coco = false;
  bool compressed_rle = false;
};

struct ImageResult {
  // Why there are no results at all; else empty.
  std::string error;
  // What went wrong but left results: a fit that failed, with its step; a
  // picture that cannot be written.
  std::vector<std::string> failures;
  std::vector<std::string> notes;  // what an operator should know
  int width = 0;
  int height = 0;
  bool is_labelled = false;  // there was a connection
  std::vector<FeatureValues> components;
  std::vector<Measurement> measurements;
  std::vector<CocoMask> masks;
};

// Never throws: what is thrown becomes the error. A picture that cannot be made
// is a failure that leaves the numbers.
ImageResult RunImage(const std::vector<Step>& steps,
                     const std::filesystem::path& image,
                     const ImageWishes& wishes);

// What "rendal-cli info" says of an image: lines of "name value". Sets *error
// when it is none.
std::string DescribeImage(const std::filesystem::path& image,
                          std::string* error);

}  // namespace rendal

#endif  // RENDAL_CLI_IMAGE_RUN_H_
