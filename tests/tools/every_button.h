// SPDX-License-Identifier: MIT
//
// One press of every button of the blob group on a small image.
#ifndef RENDAL_TESTS_TOOLS_EVERY_BUTTON_H_
#define RENDAL_TESTS_TOOLS_EVERY_BUTTON_H_

#include <gtest/gtest.h>

#include "tools/blob_tool.h"

namespace rendal::every_button {

inline cv::Mat Squares() {
  cv::Mat image(60, 90, CV_8U, cv::Scalar(0));
  for (int i = 0; i < 12; ++i) {
    image(cv::Rect(8 + 14 * (i % 6), 10 + 25 * (i / 6), 9, 12)).setTo(200);
  }
  image(cv::Rect(10, 13, 3, 3)).setTo(0);
  return image;
}

inline constexpr RegionOperation kOperations[] = {
    RegionOperation::kFillUp,     RegionOperation::kUnion,
    RegionOperation::kDifference, RegionOperation::kIntersection,
    RegionOperation::kDilation,   RegionOperation::kErosion,
    RegionOperation::kOpening,    RegionOperation::kClosing,
    RegionOperation::kTopHat,     RegionOperation::kBottomHat,
    RegionOperation::kBoundary};

inline void PressEveryButton(Workbench& bench) {
  testing::internal::CaptureStdout();
  Threshold(bench, {100, 255});
  Threshold(bench, {0, 150});
  Threshold(bench, {100, 255});
  Connection(bench);
  for (const RegionOperation operation : kOperations) {
    ApplyRegionOperation(bench, operation, {{kCircle, 2, 2}, "inner"});
  }
  for (const char* type : {"inner_filled", "outer"}) {
    ApplyRegionOperation(bench, RegionOperation::kBoundary, {{}, type});
  }
  testing::internal::GetCapturedStdout();
}

}  // namespace rendal::every_button

#endif  // RENDAL_TESTS_TOOLS_EVERY_BUTTON_H_
