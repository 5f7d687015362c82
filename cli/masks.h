// SPDX-License-Identifier: MIT
//
// Components as masks that other programs read.
#ifndef RENDAL_CLI_MASKS_H_
#define RENDAL_CLI_MASKS_H_

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "tools/components.h"

namespace rendal {

inline constexpr size_t kMostLabels = 65535;

// A 16-bit picture: each pixel of component i (counted from 1) has the value i,
// the background 0. Throws std::runtime_error for more than kMostLabels.
cv::Mat LabelPicture(const ComponentSet& components, int width, int height);

// Run lengths of a mask in column-major order, background first.
std::vector<uint32_t> ColumnRunLengths(const vexo::region& component, int width,
                                       int height);

// Run lengths as the text of COCO's compressed form: differences to the
// last but one, in groups of five bits.
std::string CompressedRunLengths(const std::vector<uint32_t>& lengths);

// One component as COCO has it; an annotation but for its numbers.
struct CocoMask {
  std::string segmentation;  // JSON
  int box[4];                // x, y, width, height
  int32_t area;
};
std::vector<CocoMask> CocoMasks(const ComponentSet& components, int width,
                                int height, bool compressed);

}  // namespace rendal

#endif  // RENDAL_CLI_MASKS_H_
