// SPDX-License-Identifier: MIT
#include "app/view/view_painter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include "app/view/roi_painter.h"

namespace rendal {
namespace {

using Pixel = cv::Vec3b;

const Pixel kBlack(0, 0, 0);
const Pixel kRed(0, 0, 255);
const Pixel kYellow(0, 255, 255);
const Pixel kCyan(255, 255, 0);

ViewState View(int width, int height, float zoom, float x, float y) {
  ViewState view;
  view.viewWidth = width;
  view.viewHeight = height;
  view.zoom = zoom;
  view.offsetX = x;
  view.offsetY = y;
  return view;
}

Pixel Grey(int value) {
  const auto v = static_cast<unsigned char>(value);
  return {v, v, v};
}

// Grey values 1, 2, 3, ... row by row.
cv::Mat Counting(int width, int height) {
  cv::Mat image(height, width, CV_8U);
  for (int i = 0; i < width * height; ++i) {
    image.data[i] = static_cast<unsigned char>(i + 1);
  }
  return image;
}

int CountOf(const cv::Mat& picture, Pixel color) {
  return static_cast<int>(
      std::count(picture.begin<Pixel>(), picture.end<Pixel>(), color));
}

OverlayItem Item(std::array<int, 3> bgr, std::vector<vexo::chord> chords) {
  return OverlayItem{
      {1.0 * bgr[0], 1.0 * bgr[1], 1.0 * bgr[2], 0}, {}, std::move(chords)};
}

// What the picture must be, one view pixel at a time.
cv::Mat SlowPicture(const Workbench& bench, const ViewState& view) {
  cv::Mat picture(view.viewHeight, view.viewWidth, CV_8UC3, cv::Scalar::all(0));
  for (int v = 0; v < view.viewHeight; ++v) {
    for (int u = 0; u < view.viewWidth; ++u) {
      const int r = static_cast<int>(
          std::round((static_cast<float>(v) - view.offsetY) / view.zoom));
      const int c = static_cast<int>(
          std::round((static_cast<float>(u) - view.offsetX) / view.zoom));
      Pixel& pixel = picture.at<Pixel>(v, u);
      const cv::Mat& image = bench.m_srcImage;
      if (r >= 0 && r < image.rows && c >= 0 && c < image.cols) {
        pixel = Grey(image.at<unsigned char>(r, c));
      }
      for (const OverlayItem& item : bench.m_regionOverlay) {
        for (const vexo::chord& chord : item.chords) {
          if (chord.row == r && chord.col_begin <= c && c <= chord.col_end) {
            for (int k = 0; k < 3; ++k) {
              pixel[k] = static_cast<unsigned char>(item.color[k]);
            }
          }
        }
      }
    }
  }
  return picture;
}

bool SamePicture(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() && a.type() == b.type() &&
         cv::norm(a, b, cv::NORM_INF) == 0;
}

class RefreshViewTest : public testing::Test {
 protected:
  RefreshViewTest() {
    m_bench.m_srcImage = Counting(3, 2);
    m_bench.m_redraw = 1;
  }

  std::optional<ReadOut> Refresh(const ViewState& view) {
    return RefreshView(m_bench, view, &m_picture);
  }
  Pixel At(int u, int v) const { return m_picture.at<Pixel>(v, u); }

  Workbench m_bench;
  cv::Mat m_picture;
};

TEST_F(RefreshViewTest, ImageIsMappedByNearestNeighbourOnBlack) {
  Refresh(View(6, 5, 1, 2, 1));
  const int expected[5][6] = {{0, 0, 0, 0, 0, 0},
                              {0, 0, 1, 2, 3, 0},
                              {0, 0, 4, 5, 6, 0},
                              {0, 0, 0, 0, 0, 0},
                              {0, 0, 0, 0, 0, 0}};
  for (int v = 0; v < 5; ++v) {
    for (int u = 0; u < 6; ++u) EXPECT_EQ(At(u, v), Grey(expected[v][u]));
  }
}

TEST_F(RefreshViewTest, HalvesAreRoundedAwayFromZero) {
  Refresh(View(8, 1, 2, 1, 0));
  // (u - 1) / 2 = -0.5, 0, 0.5, 1, 1.5, 2, 2.5, 3
  const int expected[8] = {0, 1, 2, 2, 3, 3, 0, 0};
  for (int u = 0; u < 8; ++u) EXPECT_EQ(At(u, 0), Grey(expected[u])) << u;
}

TEST_F(RefreshViewTest, RunsOncePerRequest) {
  const ViewState view = View(6, 5, 1, 2, 1);
  EXPECT_TRUE(Refresh(view).has_value());
  EXPECT_EQ(m_bench.m_redraw, -1);
  m_picture.setTo(cv::Scalar(7, 7, 7));
  EXPECT_FALSE(Refresh(view).has_value());
  EXPECT_EQ(CountOf(m_picture, Grey(7)), 30);
  m_bench.RearmRedraw();
  EXPECT_TRUE(Refresh(view).has_value());
}

TEST_F(RefreshViewTest, RequestIsNegatedNotReset) {
  m_bench.m_redraw = 5;
  Refresh(View(6, 5, 1, 0, 0));
  EXPECT_EQ(m_bench.m_redraw, -5);
}

TEST_F(RefreshViewTest, NothingIsDrawnWithoutRequestOrImage) {
  m_picture = cv::Mat(5, 6, CV_8UC3, cv::Scalar(7, 7, 7));
  m_bench.m_redraw = 0;
  EXPECT_FALSE(Refresh(View(6, 5, 1, 0, 0)).has_value());
  m_bench.m_redraw = 1;
  m_bench.m_srcImage.release();
  EXPECT_FALSE(Refresh(View(6, 5, 1, 0, 0)).has_value());
  m_bench.m_srcImage = cv::Mat(2, 2, CV_8UC2, cv::Scalar(1, 1));
  EXPECT_FALSE(Refresh(View(6, 5, 1, 0, 0)).has_value());
  EXPECT_EQ(m_bench.m_redraw, 1);
  EXPECT_EQ(CountOf(m_picture, Grey(7)), 30);
}

TEST_F(RefreshViewTest, ReadOutIsThePixelUnderThePointer) {
  ViewState view = View(60, 50, 10, 5, 5);
  view.hoverX = 24;  // 1.9
  view.hoverY = 15;  // 1.0
  EXPECT_EQ(*Refresh(view), (ReadOut{2, 1, 6}));
  EXPECT_EQ(FormatReadOut({2, 1, 6}), "2, 1, 6");
}

TEST_F(RefreshViewTest, ReadOutOutsideTheImageShowsPositionAndZero) {
  ViewState view = View(60, 50, 1, 20, 20);
  view.hoverX = 5;
  view.hoverY = 49;
  EXPECT_EQ(*Refresh(view), (ReadOut{-15, 29, 0}));
  EXPECT_EQ(FormatReadOut({-15, 29, 0}), "-15, 29, 0");
}

TEST_F(RefreshViewTest, OverlayIsPaintedOverTheImageLaterItemsOverEarlier) {
  m_bench.m_regionOverlay.Replace(
      {Item({0, 0, 255}, {{0, 1, 0, 0}}), Item({0, 255, 0}, {{1, 1, 0, 0}})});
  Refresh(View(3, 2, 1, 0, 0));
  EXPECT_EQ(At(0, 0), kRed);
  EXPECT_EQ(At(1, 0), Pixel(0, 255, 0));
  EXPECT_EQ(At(2, 0), Grey(3));
  EXPECT_EQ(At(0, 1), Grey(4));
}

TEST_F(RefreshViewTest, OverlayPixelsOutsideTheImageArePainted) {
  m_bench.m_regionOverlay.Replace(
      {Item({0, 0, 255}, {{-2, -1, -1, 0}, {5, 6, 1, 0}})});
  Refresh(View(10, 5, 1, 3, 2));
  EXPECT_EQ(CountOf(m_picture, kRed), 4);
  EXPECT_EQ(At(1, 1), kRed);
  EXPECT_EQ(At(9, 3), kRed);
}

TEST_F(RefreshViewTest, ChordsAsWideAsNumbersGoAreClippedToTheView) {
  m_bench.m_regionOverlay.Replace(
      {Item({0, 0, 255}, {{INT32_MIN, INT32_MAX, 0, 0}})});
  Refresh(View(10, 5, 1, 3, 2));
  EXPECT_EQ(CountOf(m_picture, kRed), 10);
}

TEST_F(RefreshViewTest, ModeNoneDrawsOnlyTheImage) {
  const ViewState view = View(200, 150, 0.5f, 10, 10);
  m_bench.m_srcImage = cv::Mat(200, 300, CV_8U, cv::Scalar(100));
  m_bench.m_roiShapes = ShapesForImage(300, 200);
  m_bench.m_hideResults = 1;
  Refresh(view);
  EXPECT_TRUE(SamePicture(m_picture, SlowPicture(m_bench, view)));
}

TEST_F(RefreshViewTest, RegionOfInterestIsDrawnOverTheOverlay) {
  const ViewState view = View(300, 200, 1, 0, 0);
  m_bench.m_srcImage = cv::Mat(200, 300, CV_8U, cv::Scalar(100));
  m_bench.m_roiShapes = ShapesForImage(300, 200);
  m_bench.m_toolMode = kToolLine;
  m_bench.m_hideResults = 1;
  m_bench.m_regionOverlay.Replace({Item({0, 0, 255}, {{0, 299, 100, 0}})});
  Refresh(view);
  EXPECT_EQ(At(150, 100), kYellow);  // on the line
  EXPECT_EQ(At(10, 100), kRed);      // beyond it
  EXPECT_EQ(At(75, 80), kCyan);      // top of the start's handle circle
}

TEST_F(RefreshViewTest, AgreesWithThePixelRuleAtEveryZoom) {
  std::mt19937 random(11);
  const float zooms[] = {0.01f, 0.043f, 0.125f, 0.2f, 0.5f,   0.7f,
                         1.0f,  1.25f,  2.0f,   3.3f, 17.77f, 128.0f};
  for (int round = 0; round < 120; ++round) {
    const float zoom = zooms[random() % std::size(zooms)];
    const int width = 1 + static_cast<int>(random() % 300);
    const int height = 1 + static_cast<int>(random() % 200);
    m_bench.m_srcImage.create(height, width, CV_8U);
    cv::randu(m_bench.m_srcImage, 0, 256);
    std::vector<OverlayItem> items;
    for (int i = 0; i < 4; ++i) {
      const auto byte = [&random] { return static_cast<int>(random() % 256); };
      items.push_back(Item({byte(), byte(), byte()}, {}));
      for (int k = 0; k < 30; ++k) {
        const int row = static_cast<int>(random() % (height + 20)) - 10;
        const int begin = static_cast<int>(random() % (width + 20)) - 10;
        const int length = static_cast<int>(random() % 9);
        items.back().chords.push_back({begin, begin + length, row, 0});
      }
    }
    m_bench.m_regionOverlay.Replace(std::move(items));
    const auto offset = [&](int length) {
      const int span = static_cast<int>(length * zoom) + 120;
      return static_cast<float>(60 - static_cast<int>(random() % span));
    };
    const float x = offset(width);
    const float y = offset(height);
    const ViewState view = View(61, 47, zoom, x, y);
    m_bench.m_redraw = 1;
    Refresh(view);
    ASSERT_TRUE(SamePicture(m_picture, SlowPicture(m_bench, view)))
        << "zoom " << zoom << " offset " << x << ", " << y;
  }
}

TEST_F(RefreshViewTest, FarOffsetsAndTinyZoomsStayDefined) {
  for (const float zoom : {1e-6f, 128.0f}) {
    for (const float offset : {-3e8f, 0.0f, 3e8f}) {
      const ViewState view = View(40, 30, zoom, offset, -offset);
      m_bench.m_redraw = 1;
      m_bench.m_regionOverlay.Replace(
          {Item({0, 0, 255}, {{0, INT32_MAX - 1, 0, 0}})});
      ASSERT_TRUE(Refresh(view).has_value());
      EXPECT_EQ(m_picture.size(), cv::Size(40, 30));
    }
  }
}

// Drawn shapes.

class RoiPainter : public testing::Test {
 protected:
  RoiPainter() : m_picture(400, 600, CV_8UC3, cv::Scalar::all(0)) {}

  void Draw(const RoiShape& shape, double band_width = 40) {
    DrawRoi(shape, band_width, m_view, m_picture);
  }
  Pixel At(int u, int v) const { return m_picture.at<Pixel>(v, u); }

  ViewState m_view = View(600, 400, 0.5f, 100, 50);
  cv::Mat m_picture;
};

TEST_F(RoiPainter, LineIsAnArrowWithAHandleAtEachEnd) {
  Draw({kToolLine, {100, 200, 500, 200, 0}});  // view (150,150) to (350,150)
  EXPECT_EQ(At(250, 150), kYellow);
  EXPECT_EQ(At(150, 140), kCyan);  // radius 20 image pixels
  EXPECT_EQ(At(350, 160), kCyan);
  // The tip is a tenth of the arrow's length, at 45 degrees.
  EXPECT_EQ(At(336, 136), kYellow);
  EXPECT_EQ(At(164, 136), kBlack);
}

TEST_F(RoiPainter, CircleHasACrossOfTheHandlesSize) {
  Draw({kToolCircle, {300, 200, 150, 0, 0}});  // view (250,150), radius 75
  EXPECT_EQ(At(325, 150), kYellow);
  EXPECT_EQ(At(250, 75), kYellow);
  EXPECT_EQ(At(259, 150), kYellow);
  EXPECT_EQ(At(250, 141), kYellow);
  EXPECT_EQ(At(263, 150), kBlack);
}

TEST_F(RoiPainter, BandShowsItsRectangleAndTheUprightBoxAroundIt) {
  Draw({kToolBand, {100, 200, 500, 200, 0}}, 80);
  EXPECT_EQ(At(250, 130), kYellow);  // half of 80 image pixels above the line
  EXPECT_EQ(At(250, 170), kYellow);
  m_picture.setTo(cv::Scalar::all(0));
  Draw({kToolBand, {100, 100, 300, 300, 0}}, 0);  // view (150,100)-(250,200)
  EXPECT_EQ(At(200, 100), kYellow);
  EXPECT_EQ(At(150, 150), kYellow);
  EXPECT_EQ(At(250, 150), kYellow);
}

TEST_F(RoiPainter, EllipseTurnsCounterClockwise) {
  Draw({kToolEllipse, {300, 200, 30, 200, 60}});  // view (250,150), 100 x 30
  const cv::Point end(250 + 87, 150 - 50);
  EXPECT_EQ(At(end.x - 1, end.y), kYellow);
  EXPECT_EQ(At(250 + 87, 150 + 50), kBlack);
  EXPECT_EQ(At(end.x + 10, end.y), kCyan);     // handle of 10 view pixels
  EXPECT_EQ(At(242, 150), kYellow);            // centre cross
  EXPECT_EQ(At(250 + 22, 150 - 13), kYellow);  // arrow along the first axis
}

TEST_F(RoiPainter, OtherKindsDrawNothing) {
  Draw({7, {300, 200, 30, 200, 60}});
  EXPECT_EQ(CountOf(m_picture, kBlack), 600 * 400);
}

TEST_F(RoiPainter, ShapesFarOutsideOrWithoutSizeStayDefined) {
  m_view.zoom = 128;
  const float far = 1e7f;
  for (uint8_t kind = 0; kind < 4; ++kind) {
    Draw({kind, {-far, -far, far, far, far}});
    Draw({kind, {far, far, far, far, far}});
    Draw({kind, {0, 0, 0, 0, 0}});
  }
  EXPECT_EQ(m_picture.size(), cv::Size(600, 400));
}

TEST(EllipseOutline, HasAPointPerTwoViewPixelsWithinBounds) {
  EXPECT_EQ(EllipseOutline({0, 0}, 5, 5, 0).size(), 64u);
  EXPECT_NEAR(EllipseOutline({0, 0}, 100, 100, 0).size(), 314, 1);
  EXPECT_EQ(EllipseOutline({0, 0}, 5000, 20, 0).size(), 720u);
}

TEST(EllipseOutline, PointsLieOnTheTurnedEllipse) {
  for (const float angle : {0.0f, 30.0f, -77.0f, 180.0f}) {
    const double t = angle * 0.017453292519943295;
    for (const cv::Point2d& p : EllipseOutline({500, 400}, 300, 100, angle)) {
      const double x = p.x - 500;
      const double y = -(p.y - 400);
      const double along = x * std::cos(t) + y * std::sin(t);
      const double across = -x * std::sin(t) + y * std::cos(t);
      EXPECT_NEAR(std::hypot(along / 300, across / 100), 1, 1e-5);
    }
  }
}

}  // namespace
}  // namespace rendal
