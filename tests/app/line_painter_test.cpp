// SPDX-License-Identifier: MIT
#include "app/view/line_painter.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <random>

namespace rendal {
namespace {

const cv::Scalar kColor(1, 2, 3);
const Pen kPen = {kColor};
const cv::Size kSheet(900, 800);
// A picture in the middle of the sheet.
const cv::Rect kPart(300, 300, 300, 200);

using Draw = std::function<void(cv::Mat& picture, cv::Point2d origin)>;

cv::Mat Drawn(cv::Size size, cv::Point2d origin, const Draw& draw) {
  cv::Mat picture(size, CV_8UC3, cv::Scalar::all(0));
  draw(picture, origin);
  return picture;
}

// Whether a picture shows what a larger one shows there.
testing::AssertionResult IsPartOfTheWhole(const Draw& draw) {
  const cv::Mat whole = Drawn(kSheet, kPart.tl(), draw);
  const cv::Mat part = Drawn(kPart.size(), {0, 0}, draw);
  const double off = cv::norm(whole(kPart), part, cv::NORM_L1);
  if (off == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "differs: " << off;
}

class LinePainter : public testing::Test {
 protected:
  // Around the picture; most lines between such places are cut.
  cv::Point AnyPixel() {
    return {static_cast<int>(m_random() % 800) - 250,
            static_cast<int>(m_random() % 700) - 250};
  }
  cv::Point2d AnyPlace() {
    return cv::Point2d(AnyPixel()) + cv::Point2d(AnyPixel()) * 0.001;
  }

  std::mt19937 m_random{11};
};

TEST_F(LinePainter, BetweenWholePixelsItIsTheLibrarysLine) {
  for (int i = 0; i < 3000; ++i) {
    // Short ones have many halves.
    const int reach = i % 2 == 0 ? 12 : 200;
    const cv::Size sheet(2 * reach, 2 * reach);
    const cv::Point from(reach, reach);
    const cv::Point to =
        from + cv::Point(AnyPixel().x % reach, AnyPixel().y % reach);
    const cv::Mat ours = Drawn(sheet, {}, [&](cv::Mat& picture, cv::Point2d) {
      DrawLine(from, to, kPen, picture);
    });
    const cv::Mat theirs = Drawn(sheet, {}, [&](cv::Mat& picture, cv::Point2d) {
      cv::line(picture, from, to, kColor, 1, 8);
    });
    ASSERT_EQ(cv::norm(ours, theirs, cv::NORM_L1), 0) << from << to;
  }
}

TEST_F(LinePainter, ArrowIsTheLibrarys) {
  for (int i = 0; i < 500; ++i) {
    const cv::Point from = kPart.tl() + cv::Point(100, 100);
    const cv::Point to = from + AnyPixel() / 4;
    const cv::Mat ours = Drawn(kSheet, {}, [&](cv::Mat& picture, cv::Point2d) {
      DrawArrow(from, to, 0.1, kPen, picture);
    });
    const cv::Mat theirs =
        Drawn(kSheet, {}, [&](cv::Mat& picture, cv::Point2d) {
          cv::arrowedLine(picture, from, to, kColor, 1, 8, 0, 0.1);
        });
    ASSERT_EQ(cv::norm(ours, theirs, cv::NORM_L1), 0) << from << to;
  }
}

TEST_F(LinePainter, CutLinesLieOnThePixelsOfWholeOnes) {
  for (int i = 0; i < 500; ++i) {
    const cv::Point from = AnyPixel(), to = AnyPixel();
    ASSERT_TRUE(IsPartOfTheWhole([&](cv::Mat& picture, cv::Point2d origin) {
      DrawLine(cv::Point2d(from) + origin, cv::Point2d(to) + origin, kPen,
               picture);
    })) << from
        << to;
    ASSERT_TRUE(IsPartOfTheWhole([&](cv::Mat& picture, cv::Point2d origin) {
      DrawLine(cv::Point2d(from) + origin, cv::Point2d(to) + origin,
               {kColor, 2}, picture);
    })) << from
        << to;
    ASSERT_TRUE(IsPartOfTheWhole([&](cv::Mat& picture, cv::Point2d origin) {
      DrawArrow(from + cv::Point(origin), to + cv::Point(origin), 0.1, kPen,
                picture);
    })) << from
        << to;
    const cv::Point2d on = AnyPlace(), direction = AnyPlace();
    ASSERT_TRUE(IsPartOfTheWhole([&](cv::Mat& picture, cv::Point2d origin) {
      DrawEndlessLine(on + origin, direction, kPen, picture);
    })) << on
        << direction;
  }
}

TEST_F(LinePainter, ThickLinesReachAPixelToBothSides) {
  for (int i = 0; i < 300; ++i) {
    const cv::Point from = AnyPixel(), to = AnyPixel();
    if (from == to) continue;
    const cv::Mat picture =
        Drawn(kPart.size(), {}, [&](cv::Mat& sheet, cv::Point2d) {
          DrawLine(from, to, {kColor, 2}, sheet);
        });
    const cv::Point2d all = to - from;
    for (int row = 0; row < picture.rows; ++row) {
      for (int column = 0; column < picture.cols; ++column) {
        const cv::Point2d at = cv::Point(column, row) - from;
        const double along = at.dot(all) / all.dot(all);
        const double off = cv::norm(at - std::clamp(along, 0.0, 1.0) * all);
        const bool is_drawn = picture.at<cv::Vec3b>(row, column)[0] != 0;
        ASSERT_TRUE(is_drawn || off >= 0.6) << from << to << at;
        // Apart from the ends, however it slopes.
        const double to_end = std::min(along, 1 - along) * cv::norm(all);
        ASSERT_TRUE(is_drawn || off >= 1.3 || to_end < 2) << from << to << at;
        ASSERT_TRUE(!is_drawn || off <= 1.8) << from << to << at;
      }
    }
  }
}

TEST_F(LinePainter, LongestLinesCostNoMoreThanThePicture) {
  const int far = 1 << 24;
  const cv::Mat picture =
      Drawn(kPart.size(), {}, [&](cv::Mat& sheet, cv::Point2d) {
        for (int i = 0; i < 1000; ++i) {
          DrawLine({-far, 7}, {far, 7}, kPen, sheet);
          DrawLine({9, far}, {9, -far}, kPen, sheet);
        }
      });
  cv::Mat lit;
  cv::inRange(picture, kColor, kColor, lit);
  EXPECT_EQ(cv::countNonZero(lit), 300 + 200 - 1);
}

TEST_F(LinePainter, WhatIsNotFiniteOrHasNoDirectionDrawsNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double endless = std::numeric_limits<double>::infinity();
  const cv::Mat picture =
      Drawn(kPart.size(), {}, [&](cv::Mat& sheet, cv::Point2d) {
        for (const double bad : {nan, endless, -endless}) {
          DrawLine({bad, 5}, {50, 50}, kPen, sheet);
          DrawLine({5, 5}, {50, bad}, kPen, sheet);
          DrawEndlessLine({bad, 5}, {1, 0}, kPen, sheet);
          DrawEndlessLine({5, 5}, {bad, bad}, kPen, sheet);
        }
        DrawEndlessLine({5, 5}, {0, 0}, kPen, sheet);
        DrawLine({1e300, 5}, {2e300, 5}, kPen, sheet);
      });
  EXPECT_EQ(cv::norm(picture, cv::NORM_L1), 0);
}

}  // namespace
}  // namespace rendal
