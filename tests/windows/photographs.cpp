// SPDX-License-Identifier: MIT
#include "tests/windows/photographs.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <numbers>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

#include "tests/windows/operator.h"

namespace rendal_test {

namespace fs = std::filesystem;

fs::path Photograph(const std::wstring& name) {
  const wchar_t* const folder = ::_wgetenv(L"RENDAL_PHOTOGRAPHS");
  if (folder == nullptr) throw std::runtime_error("no RENDAL_PHOTOGRAPHS");
  for (const auto& entry :
       fs::recursive_directory_iterator(L"Z:" + std::wstring(folder))) {
    if (entry.path().filename() != name) continue;
    // The file-open dialog takes nothing but its own kind of slashes.
    return fs::path(entry.path()).make_preferred();
  }
  throw std::runtime_error("no photograph " + Utf8(name));
}

cv::Mat GreyPhotograph(const std::wstring& name) {
  std::ifstream file(Photograph(name), std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  const cv::Mat image = cv::imdecode(bytes, cv::IMREAD_GRAYSCALE);
  if (image.empty()) throw std::runtime_error("cannot read " + Utf8(name));
  return image;
}

cv::Mat UprightRocket() {
  return GreyPhotograph(L"rocket.jpg")(cv::Rect(290, 120, 64, 290)).clone();
}

Circle CircleBySlopes(const cv::Mat& image, Circle start, double reach) {
  constexpr double kStep = 0.1;
  const int samples = static_cast<int>(2 * reach / kStep) + 1;
  cv::Mat grey;
  image.convertTo(grey, CV_32F);
  cv::Mat equations(360, 3, CV_64F), right(360, 1, CV_64F);
  for (int ray = 0; ray < 360; ++ray) {
    const double c = std::cos(ray * std::numbers::pi / 180);
    const double s = std::sin(ray * std::numbers::pi / 180);
    const auto radius = [&](double k) {
      return start.radius - reach + k * kStep;
    };
    cv::Mat x(1, samples, CV_32F), y(1, samples, CV_32F), profile;
    for (int k = 0; k < samples; ++k) {
      x.at<float>(k) = static_cast<float>(start.x + radius(k) * c);
      y.at<float>(k) = static_cast<float>(start.y + radius(k) * s);
    }
    cv::remap(grey, profile, x, y, cv::INTER_CUBIC);
    cv::GaussianBlur(profile, profile, cv::Size(), 1 / kStep, 1e-6,
                     cv::BORDER_REPLICATE);
    const auto descent = [&](int k) {
      return profile.at<float>(k - 1) - profile.at<float>(k + 1);
    };
    int best = 2;
    for (int k = 2; k < samples - 2; ++k) {
      if (descent(k) > descent(best)) best = k;
    }
    const double before = descent(best - 1), at = descent(best),
                 after = descent(best + 1);
    const double r =
        radius(best + 0.5 * (before - after) / (before - 2 * at + after));
    // x^2 + y^2 = 2 a x + 2 b y + d about the starting centre.
    equations.at<double>(ray, 0) = 2 * r * c;
    equations.at<double>(ray, 1) = 2 * r * s;
    equations.at<double>(ray, 2) = 1;
    right.at<double>(ray) = r * r;
  }
  cv::Mat solution;
  cv::solve(equations, right, solution, cv::DECOMP_SVD);
  const double a = solution.at<double>(0), b = solution.at<double>(1);
  return {start.x + a, start.y + b,
          std::sqrt(solution.at<double>(2) + a * a + b * b)};
}

}  // namespace rendal_test
