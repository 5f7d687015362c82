// SPDX-License-Identifier: MIT
//
// What is drawn at the borders of the picture and beyond them, up to the
// largest zoom.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <opencv2/imgproc.hpp>
#include <random>

#include "app/view/result_painter.h"
#include "app/view/roi_painter.h"

namespace rendal {
namespace {

constexpr int kMargin = 40;
const cv::Size kPicture(300, 200);
const cv::Scalar kPaper(7, 7, 7);
const cv::Scalar kGreen(0, 255, 0);
const cv::Scalar kBlue(255, 0, 0);

// A picture that is a part of a larger one: whatever is drawn outside shows.
class PictureBorder : public testing::Test {
 protected:
  PictureBorder() {
    m_view.viewWidth = kPicture.width;
    m_view.viewHeight = kPicture.height;
  }
  // An image point in the view's middle.
  void LookAt(float zoom, double x, double y) {
    m_view.zoom = zoom;
    m_view.offsetX = static_cast<float>(std::round(150 - x * zoom));
    m_view.offsetY = static_cast<float>(std::round(100 - y * zoom));
  }
  void Clear() { m_sheet.setTo(kPaper); }
  cv::Mat Mask(const cv::Scalar& color) const {
    cv::Mat mask;
    cv::inRange(m_picture, color, color, mask);
    return mask;
  }
  bool SurroundingsAreUntouched() const {
    cv::Mat sheet = m_sheet.clone();
    sheet(m_place).setTo(kPaper);
    cv::Mat changed;
    cv::inRange(sheet, kPaper, kPaper, changed);
    return cv::countNonZero(changed) == static_cast<int>(sheet.total());
  }
  // A length in view pixels, in image pixels.
  float FromView(double length) const {
    return static_cast<float>(length / m_view.zoom);
  }

  const cv::Rect m_place{{kMargin, kMargin}, kPicture};
  cv::Mat m_sheet{kPicture + cv::Size(2 * kMargin, 2 * kMargin), CV_8UC3,
                  kPaper};
  cv::Mat m_picture = m_sheet(m_place);
  ViewState m_view;
};

// Distance of a point from the line through `on` with a unit direction.
double DistanceFrom(cv::Point2d on, cv::Point2d direction, cv::Point2d point) {
  return std::abs((point - on).cross(direction));
}

TEST_F(PictureBorder, FittedLineReachesEveryBorderAndStaysOnItself) {
  for (const cv::Point2d on : {cv::Point2d(150.3, 99.7), cv::Point2d(1.2, 1.4),
                               cv::Point2d(298, 197.6), cv::Point2d(-90, 40),
                               cv::Point2d(9000.4, -7000)}) {
    for (int degrees = 0; degrees < 360; degrees += 7) {
      const double a = degrees * std::numbers::pi / 180;
      const cv::Point2d along(std::cos(a), std::sin(a));
      Clear();
      LookAt(1, 150, 100);
      const std::array<float, 4> v = {
          static_cast<float>(along.x), static_cast<float>(along.y),
          static_cast<float>(on.x), static_cast<float>(on.y)};
      DrawShape({kFittedLine, {v[0], v[1], v[2], v[3], 0}}, m_view, m_picture);
      ASSERT_TRUE(SurroundingsAreUntouched());
      const cv::Mat mask = Mask(kBlue);
      std::vector<cv::Point> drawn;
      cv::findNonZero(mask, drawn);
      for (const cv::Point& pixel : drawn) {
        ASSERT_LE(DistanceFrom(on, along, pixel),
                  0.5 * (std::abs(along.x) + std::abs(along.y)) + 0.02)
            << pixel << on << degrees;
      }
      // A pixel in every column that the line crosses inside, or in every row.
      const bool flat = std::abs(along.x) >= std::abs(along.y);
      const int steps = flat ? kPicture.width : kPicture.height;
      for (int i = 0; i < steps; ++i) {
        const double other = flat ? on.y + (i - on.x) * along.y / along.x
                                  : on.x + (i - on.y) * along.x / along.y;
        if (other < 0 || other > (flat ? kPicture.height : kPicture.width) - 1)
          continue;
        const cv::Mat across = flat ? mask.col(i) : mask.row(i);
        ASSERT_GT(cv::countNonZero(across), 0) << i << on << degrees;
      }
    }
  }
}

// Upright rectangles are right to the pixel, wherever the border cuts them and
// however far they go beyond it.
TEST_F(PictureBorder, MeasureRectangleIsRightAtEveryBorderAtTheLargestZoom) {
  LookAt(kMaxZoom, 19'000, 14'000);
  for (const int x : {0, 1, 150, 298, 299}) {
    for (const int y : {0, 1, 100, 198, 199}) {
      for (const int half : {8, 64, 100, 149, 4096, 1 << 20}) {
        Clear();
        const cv::Point2f at =
            m_view.ToImage(static_cast<float>(x), static_cast<float>(y));
        DrawMeasureRectangle({at.x, at.y, 0, FromView(half), FromView(24)},
                             m_view, m_picture);
        ASSERT_TRUE(SurroundingsAreUntouched());
        cv::Mat expected = cv::Mat::zeros(kPicture, CV_8U);
        const cv::Rect inside({}, kPicture);
        const int width = 2 * half + 1;
        for (const cv::Rect& side : {cv::Rect(x - half, y - 24, width, 1),
                                     cv::Rect(x - half, y + 24, width, 1),
                                     cv::Rect(x - half, y - 24, 1, 49),
                                     cv::Rect(x + half, y - 24, 1, 49)}) {
          expected(side & inside).setTo(255);
        }
        ASSERT_EQ(cv::norm(Mask(kGreen), expected, cv::NORM_INF), 0)
            << x << ", " << y << ", " << half;
      }
    }
  }
}

// Turned ones: their corners are whole pixels, so a side may be off by what
// that and the pixel itself take.
TEST_F(PictureBorder, TurnedRectangleFollowsItsSidesAtTheLargestZoom) {
  LookAt(kMaxZoom, 19'000, 14'000);
  for (int degrees = 5; degrees < 180; degrees += 20) {
    for (const double half : {60.0, 3000.0, 200'000.0}) {
      Clear();
      const cv::Point2f at = m_view.ToImage(150, 100);
      DrawMeasureRectangle({at.x, at.y, static_cast<float>(degrees),
                            FromView(half), FromView(30)},
                           m_view, m_picture);
      ASSERT_TRUE(SurroundingsAreUntouched());
      const double a = degrees * std::numbers::pi / 180;
      const cv::Point2d along(std::cos(a), -std::sin(a));
      const cv::Point2d across(-along.y, along.x);
      const cv::Point2d middle(150, 100);
      std::vector<cv::Point> drawn;
      cv::findNonZero(Mask(kGreen), drawn);
      ASSERT_GT(drawn.size(), 100u);
      for (const cv::Point& pixel : drawn) {
        const double nearest =
            std::min({DistanceFrom(middle + 30 * across, along, pixel),
                      DistanceFrom(middle - 30 * across, along, pixel),
                      DistanceFrom(middle + half * along, across, pixel),
                      DistanceFrom(middle - half * along, across, pixel)});
        ASSERT_LE(nearest, 1.4) << pixel << degrees << ", " << half;
      }
    }
  }
}

TEST_F(PictureBorder, NothingIsDrawnOutsideThePictureAtAnyZoom) {
  std::mt19937 random(5);
  const auto value = [&random](double low, double high) {
    return static_cast<float>(
        std::uniform_real_distribution<double>(low, high)(random));
  };
  for (const float zoom : {0.01f, 0.25f, 1.0f, 9.3f, 60.0f, kMaxZoom}) {
    for (int i = 0; i < 60; ++i) {
      LookAt(zoom, 3000, 2000);
      // Around the picture, mostly beyond its borders.
      const cv::Point2f p = m_view.ToImage(value(-200, 500), value(-200, 400));
      const cv::Point2f q = m_view.ToImage(value(-200, 500), value(-200, 400));
      const float size = FromView(value(0, 500));
      const float angle = value(-180, 180);
      for (uint8_t kind = 0; kind < 4; ++kind) {
        DrawRoi({kind, {p.x, p.y, kind == 1 ? size : q.x, q.y, size}}, size,
                m_view, m_picture);
      }
      DrawRoi({kToolEllipse, {p.x, p.y, angle, size, size / 2}}, 0, m_view,
              m_picture);
      DrawMeasureRectangle({p.x, p.y, angle, size, size / 3}, m_view,
                           m_picture);
      for (int style = 0; style < 4; ++style) {
        DrawMarker(p, style, m_view, m_picture);
      }
      DrawShape({kFittedLine, {q.x - p.x, q.y - p.y, p.x, p.y, 0}}, m_view,
                m_picture);
      DrawShape({kFittedCircle, {p.x, p.y, size, 0, 0}}, m_view, m_picture);
      DrawShape({kFittedEllipse, {p.x, p.y, angle, size, size / 2}}, m_view,
                m_picture);
      DrawShape({kSegment, {p.x, p.y, q.x, q.y, 0}}, m_view, m_picture);
      DrawShape({kNumber, {12.5f, p.x, p.y, q.x, q.y}}, m_view, m_picture);
    }
    EXPECT_TRUE(SurroundingsAreUntouched()) << zoom;
  }
}

// What a larger picture of the same place shows, at every border.
TEST_F(PictureBorder, WhatIsCutLiesOnThePixelsOfWhatIsNot) {
  // More than any of the shapes reaches beyond the picture.
  constexpr int kAround = 360;
  ViewState larger = m_view;
  std::mt19937 random(23);
  // In eighths, so that moving the view rounds nothing; odd ones, so that
  // nothing lies half way between pixels.
  const auto value = [&random](int low, int high) {
    return static_cast<float>(low) + 0.125f +
           static_cast<float>(random() % (4 * (high - low))) / 4;
  };
  for (int i = 0; i < 200; ++i) {
    const cv::Point2f p(value(-150, 450), value(-150, 350));
    const cv::Point2f q(value(-150, 450), value(-150, 350));
    const float size = value(1, 200);
    const float angle = value(-180, 180);
    const auto compare = [&](const char* name, const auto& draw) {
      cv::Mat part(kPicture, CV_8UC3, kPaper);
      cv::Mat whole(kPicture + cv::Size(2 * kAround, 2 * kAround), CV_8UC3,
                    kPaper);
      larger.offsetX = larger.offsetY = kAround;
      draw(m_view, part);
      draw(larger, whole);
      const cv::Rect there({kAround, kAround}, kPicture);
      ASSERT_EQ(cv::norm(whole(there), part, cv::NORM_L1), 0)
          << name << p << q << size << ", " << angle;
    };
    compare("rectangle", [&](const ViewState& view, cv::Mat& picture) {
      DrawMeasureRectangle({p.x, p.y, angle, size, size / 4}, view, picture);
    });
    for (int style = 1; style < 4; ++style) {
      compare("marker", [&](const ViewState& view, cv::Mat& picture) {
        DrawMarker(p, style, view, picture);
      });
    }
    compare("line", [&](const ViewState& view, cv::Mat& picture) {
      DrawShape({kFittedLine, {q.x - p.x, q.y - p.y, p.x, p.y, 0}}, view,
                picture);
    });
    compare("circle", [&](const ViewState& view, cv::Mat& picture) {
      DrawShape({kFittedCircle, {p.x, p.y, size, 0, 0}}, view, picture);
    });
    compare("segment", [&](const ViewState& view, cv::Mat& picture) {
      DrawShape({kSegment, {p.x, p.y, q.x, q.y, 0}}, view, picture);
    });
    compare("ellipse", [&](const ViewState& view, cv::Mat& picture) {
      DrawShape({kFittedEllipse, {p.x, p.y, angle, size, size / 2}}, view,
                picture);
    });
    for (const uint8_t kind : {kToolLine, kToolCircle, kToolBand}) {
      compare("region of interest",
              [&](const ViewState& view, cv::Mat& picture) {
                DrawRoi({kind, {p.x, p.y, kind == 1 ? size : q.x, q.y, 0}},
                        size, view, picture);
              });
    }
    compare("ellipse of interest",
            [&](const ViewState& view, cv::Mat& picture) {
              DrawRoi({kToolEllipse, {p.x, p.y, angle, size, size / 2}}, 0,
                      view, picture);
            });
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace rendal
