// SPDX-License-Identifier: MIT
//
// A running program and, beside it, a workbench that gets the same events: it
// says where an image point is shown and what a tool must print.
#ifndef RENDAL_TESTS_WINDOWS_TWIN_H_
#define RENDAL_TESTS_WINDOWS_TWIN_H_

#include <filesystem>
#include <opencv2/core.hpp>

#include "app/view/view_state.h"
#include "tests/windows/operator.h"
#include "tools/caliper_tool.h"
#include "tools/workbench.h"

namespace rendal_test {

struct Twin {
  // `program` must outlive this.
  explicit Twin(const Operator& program);

  // The image that the program has just loaded.
  void Loaded(const std::filesystem::path& image);
  // Clicks a tool-mode radio.
  void SetMode(int button, rendal::ToolMode mode);
  void ClearDisplay();
  // Drags with the left button, from one image point to another.
  void Drag(cv::Point2f from, cv::Point2f to);
  // Turns the wheel over an image point, one notch a step: forward for
  // `notches` above 0, else back.
  void Wheel(cv::Point2f at, int notches);
  void ZoomOne();
  void ZoomFit();
  // Enters the parameters of a measurement.
  void Type(const rendal::CaliperParameters& parameters) const;

  cv::Point ViewPixel(cv::Point2f image) const;

  const Operator& window;
  rendal::Workbench bench;
  rendal::ViewState view;
};

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_TWIN_H_
