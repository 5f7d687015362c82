// SPDX-License-Identifier: MIT
#include "tools/measurement_library.h"

#include <algorithm>
#include <new>

namespace rendal {

const MeasurementLibrary& LinkedMeasurementLibrary() {
  static const MeasurementLibrary library = {&::gen_measure_line,
                                             &::gen_measure_circle,
                                             &::gen_measure_ellipse,
                                             &::do_measure,
                                             &::do_fit,
                                             &::ppw_to_rr,
                                             &::measure_pos_d,
                                             &::clear_mems};
  return library;
}

void ThrowIfOutOfMemory(int answer) {
  if (answer == VEXOLAB_E_MEMORY) throw std::bad_alloc();
}

std::vector<MeasureRectangle> CopyRectangles(const float* rectangles,
                                             int count) {
  std::vector<MeasureRectangle> copies;
  if (rectangles == nullptr) return copies;
  copies.resize(static_cast<size_t>(std::max(count, 0)));
  for (MeasureRectangle& copy : copies) {
    std::copy_n(rectangles, copy.size(), copy.begin());
    rectangles += copy.size();
  }
  return copies;
}

std::vector<cv::Point2f> CopyPoints(const double* points, int n) {
  std::vector<cv::Point2f> copies;
  if (points == nullptr) return copies;
  for (int i = 0; i < n; ++i) {
    copies.emplace_back(static_cast<float>(points[i]),
                        static_cast<float>(points[n + i]));
  }
  return copies;
}

}  // namespace rendal
