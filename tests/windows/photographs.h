// SPDX-License-Identifier: MIT
//
// Photographs of real parts, and a way to measure a round one that has nothing
// in common with the measurement library.
#ifndef RENDAL_TESTS_WINDOWS_PHOTOGRAPHS_H_
#define RENDAL_TESTS_WINDOWS_PHOTOGRAPHS_H_

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>

namespace rendal_test {

// The file of that name below the folder in RENDAL_PHOTOGRAPHS, which
// setup/environment.sh sets. Throws if there is none.
std::filesystem::path Photograph(const std::wstring& name);

// Its pixels in grey.
cv::Mat GreyPhotograph(const std::wstring& name);

// A part with a long upright edge, cut narrow as the line finder wants it.
cv::Mat UprightRocket();

// In image coordinates [px].
struct Circle {
  double x, y, radius;
};

// A coin of coins.png, roughly.
inline constexpr Circle kCoin = {270.6, 118.8, 24.7};

// The circle through the steepest descents of grey along 360 rays: bicubic
// samples within `reach` of the starting circle, smoothed, their derivative's
// extremum by a parabola; least squares.
Circle CircleBySlopes(const cv::Mat& image, Circle start, double reach);

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_PHOTOGRAPHS_H_
