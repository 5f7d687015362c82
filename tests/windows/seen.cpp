// SPDX-License-Identifier: MIT
#include "tests/windows/seen.h"

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "tests/windows/screen.h"

namespace rendal_test {
namespace {

constexpr double kCircleReachPx = 1;
constexpr double kLeastOutline = 0.6;  // the rest may lie under edge points

// The view pixels that differ from the image with the paint over it.
int Differing(const Twin& twin, const cv::Mat& seen, const cv::Mat& paint,
              int margin) {
  const cv::Mat& image = twin.bench.m_srcImage;
  const cv::Rect inner(margin, margin, image.cols - 2 * margin,
                       image.rows - 2 * margin);
  int differing = 0;
  for (int v = 0; v < seen.rows; ++v) {
    const int row = twin.view.ImageRow(v);
    for (int u = 0; u < seen.cols; ++u) {
      const cv::Point at(twin.view.ImageColumn(u), row);
      cv::Vec3b expected(0, 0, 0);
      if (inner.contains(at)) {
        expected = paint.empty() ? cv::Vec3b(0, 0, 0) : paint.at<cv::Vec3b>(at);
        const unsigned char grey = image.at<unsigned char>(at);
        if (expected == cv::Vec3b(0, 0, 0)) expected = {grey, grey, grey};
      } else if (margin > 0) {
        continue;
      }
      differing += seen.at<cv::Vec3b>(v, u) != expected;
    }
  }
  return differing;
}

// WaitUntil, but saying what is wrong: `wrong` is empty when all is right.
template <typename Wrong>
void WaitUntilRight(const std::string& what, Wrong wrong) {
  std::string seen;
  try {
    WaitUntil(what, [&] {
      seen = wrong();
      return seen.empty();
    });
  } catch (const std::exception& error) {
    throw std::runtime_error(error.what() + (": " + seen));
  }
}

std::string Named(const cv::Vec3b& color) {
  return std::to_string(color[2]) + "/" + std::to_string(color[1]) + "/" +
         std::to_string(color[0]);
}

}  // namespace

void Require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error("not seen: " + what);
}

int CountOf(const cv::Mat& picture, const cv::Vec3b& color) {
  cv::Mat mask;
  cv::inRange(picture, color, color, mask);
  return cv::countNonZero(mask);
}

cv::Mat ViewOf(const Operator& window) { return ScreenOf(window.ViewWindow()); }

void RequirePicture(const Twin& twin, const cv::Mat& paint, int margin,
                    const std::string& what) {
  WaitUntilRight(what, [&]() -> std::string {
    const int differing = Differing(twin, ViewOf(twin.window), paint, margin);
    return differing == 0 ? "" : std::to_string(differing) + " pixels differ";
  });
}

void RequireImage(const Twin& twin, const std::string& what) {
  RequirePicture(twin, {}, 0, what);
}

void RequireMask(const Twin& twin, const cv::Mat& mask, int margin,
                 const std::string& what, const cv::Vec3b& color) {
  cv::Mat paint(mask.size(), CV_8UC3, cv::Scalar::all(0));
  paint.setTo(color, mask);
  RequirePicture(twin, paint, margin, what);
}

void RequireColors(const Twin& twin, const std::vector<cv::Vec3b>& shown,
                   const std::vector<cv::Vec3b>& absent, int least,
                   const std::string& what) {
  WaitUntilRight(what, [&]() -> std::string {
    const cv::Mat view = ViewOf(twin.window);
    for (const cv::Vec3b& color : shown) {
      const int count = CountOf(view, color);
      if (count < least) {
        return std::to_string(count) + " pixels of " + Named(color);
      }
    }
    for (const cv::Vec3b& color : absent) {
      const int count = CountOf(view, color);
      if (count > 0) return std::to_string(count) + " of " + Named(color);
    }
    return "";
  });
}

void RequireCircle(const Twin& twin, const Circle& circle,
                   const std::string& what) {
  const double zoom = twin.view.zoom;
  const double x = circle.x * zoom + twin.view.offsetX;
  const double y = circle.y * zoom + twin.view.offsetY;
  const double radius = circle.radius * zoom;
  WaitUntilRight(what, [&]() -> std::string {
    cv::Mat blue;
    cv::inRange(ViewOf(twin.window), kSeenBlue, kSeenBlue, blue);
    std::vector<cv::Point> pixels;
    cv::findNonZero(blue, pixels);
    for (const cv::Point& p : pixels) {
      const double off = std::hypot(p.x - x, p.y - y) - radius;
      if (std::abs(off) > kCircleReachPx) {
        return "a pixel lies " + std::to_string(off) + " off the circle";
      }
    }
    // A drawn circle has about 8 / sqrt(2) pixels for each of its radius.
    const double outline = radius * 8 / std::sqrt(2.0);
    if (static_cast<double>(pixels.size()) < kLeastOutline * outline) {
      return std::to_string(pixels.size()) + " of " +
             std::to_string(static_cast<int>(outline)) + " pixels";
    }
    return "";
  });
}

}  // namespace rendal_test
