// SPDX-License-Identifier: MIT
#include "tools/blob_tool.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <opencv2/imgproc.hpp>

namespace rendal {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

constexpr int kParallel = 1;
constexpr int kSequential = 0;
constexpr GrayBand kBright{128, 255};

// An image of zeros with bright and half-bright rectangles.
cv::Mat Parts() {
  cv::Mat image(80, 120, CV_8U, cv::Scalar(0));
  cv::rectangle(image, cv::Rect(10, 10, 30, 20), cv::Scalar(200), -1);
  cv::rectangle(image, cv::Rect(60, 15, 25, 40), cv::Scalar(255), -1);
  cv::rectangle(image, cv::Rect(65, 20, 10, 10), cv::Scalar(100), -1);
  cv::circle(image, cv::Point(30, 60), 9, cv::Scalar(150), -1);
  return image;
}

// What a tool leaves to be seen.
cv::Mat Painted(const RegionOverlay& overlay, cv::Size size) {
  cv::Mat picture(size, CV_8UC3, cv::Scalar::all(0));
  for (const OverlayItem& item : overlay) {
    for (const vexo::chord& c : item.chords) {
      if (c.row < 0 || c.row >= size.height) continue;
      for (int x = std::max(c.col_begin, 0);
           x <= std::min(c.col_end, size.width - 1); ++x) {
        picture.at<cv::Vec3b>(c.row, x) =
            cv::Vec3b(static_cast<unsigned char>(item.color[0]),
                      static_cast<unsigned char>(item.color[1]),
                      static_cast<unsigned char>(item.color[2]));
      }
    }
  }
  return picture;
}

bool SamePicture(const cv::Mat& a, const cv::Mat& b) {
  return cv::norm(a, b, cv::NORM_INF) == 0;
}

// Red where the mask is set.
cv::Mat RedWhere(const cv::Mat& mask) {
  cv::Mat picture(mask.size(), CV_8UC3, cv::Scalar::all(0));
  picture.setTo(cv::Scalar(0, 0, 255), mask);
  return picture;
}

// Every case runs in both processing modes.
class BlobTool : public testing::TestWithParam<int> {
 protected:
  BlobTool() {
    m_bench.m_parallelMode = GetParam();
    m_bench.m_srcImage = Parts();
    CaptureStdout();
  }
  // What a failed check printed meanwhile is not lost.
  ~BlobTool() override {
    const std::string text = GetCapturedStdout();
    if (HasFailure()) std::printf("%s", text.c_str());
  }

  std::string TakeConsole() {
    std::string text = GetCapturedStdout();
    CaptureStdout();
    return text;
  }
  void ExpectStatus(const Status& status, Tone tone, const std::string& text) {
    EXPECT_EQ(status.tone, tone);
    EXPECT_EQ(status.text, text);
  }
  cv::Mat Shown() const {
    return Painted(m_bench.m_regionOverlay, m_bench.m_srcImage.size());
  }
  cv::Mat Mask(GrayBand band) const {
    cv::Mat mask;
    cv::inRange(m_bench.m_srcImage, band.min, band.max, mask);
    return mask;
  }

  Workbench m_bench;
};

INSTANTIATE_TEST_SUITE_P(BothModes, BlobTool,
                         testing::Values(kParallel, kSequential));

TEST_P(BlobTool, ThresholdShowsTheBandInRed) {
  ExpectStatus(Threshold(m_bench, kBright), Tone::kSuccess, "threshold done");
  EXPECT_TRUE(SamePicture(Shown(), RedWhere(Mask(kBright))));
  EXPECT_EQ(m_bench.m_regionOverlay.size(), 1u);
  EXPECT_EQ(m_bench.m_regionHistory.size(), 1u);
  EXPECT_EQ(m_bench.m_redraw, 1);
}

TEST_P(BlobTool, ThresholdPrintsItsElapsedTime) {
  Threshold(m_bench, kBright);
  const std::string text = TakeConsole();
  EXPECT_EQ(text.substr(0, 23), "threshold\nelasped time:") << text;
  EXPECT_EQ(text.substr(text.size() - 3), "s\n\n");
}

TEST_P(BlobTool, ThresholdWithoutAnImageIsSilent) {
  m_bench.m_srcImage.release();
  ExpectStatus(Threshold(m_bench, {200, 100}), Tone::kSilent, "");
  m_bench.m_srcImage = cv::Mat(4, 4, CV_8UC2, cv::Scalar(200, 200));
  ExpectStatus(Threshold(m_bench, kBright), Tone::kSilent, "");
  EXPECT_EQ(TakeConsole(), "");
  EXPECT_EQ(m_bench.m_redraw, 0);
  EXPECT_TRUE(m_bench.m_regionHistory.empty());
}

TEST_P(BlobTool, ReversedBandNamesBothEndsAndLeavesTheOverlay) {
  Threshold(m_bench, kBright);
  m_bench.m_redraw = -1;
  ExpectStatus(Threshold(m_bench, {200, 100}), Tone::kError,
               "MinGray = 200 > MaxGray = 100");
  EXPECT_TRUE(SamePicture(Shown(), RedWhere(Mask(kBright))));
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_P(BlobTool, BandWithoutPixelsDoesNotEnterTheHistory) {
  Threshold(m_bench, {255, 255});
  Threshold(m_bench, kBright);
  m_bench.m_redraw = -1;
  ExpectStatus(Threshold(m_bench, {30, 40}), Tone::kError, "region is empty");
  EXPECT_EQ(m_bench.m_regionHistory.size(), 2u);
  EXPECT_TRUE(SamePicture(Shown(), RedWhere(Mask(kBright))));
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_P(BlobTool, ThirdThresholdDropsTheOldest) {
  Threshold(m_bench, {255, 255});
  Threshold(m_bench, {100, 100});
  Threshold(m_bench, {150, 150});
  ASSERT_EQ(m_bench.m_regionHistory.size(), 2u);
  EXPECT_TRUE(SamePicture(
      Painted(
          [&] {
            RegionOverlay overlay;
            overlay.Replace(SingleRegionItems(m_bench.m_regionHistory[0]));
            return overlay;
          }(),
          m_bench.m_srcImage.size()),
      RedWhere(Mask({100, 100}))));
  EXPECT_TRUE(SamePicture(Shown(), RedWhere(Mask({150, 150}))));
}

TEST_P(BlobTool, HistoryEntriesCarryRunsAndChords) {
  Threshold(m_bench, kBright);
  const vexo::region& entry = m_bench.m_regionHistory.back();
  EXPECT_GT(entry.run_count, 0u);
  EXPECT_EQ(static_cast<size_t>(entry.chord_count), entry.run_count);
  EXPECT_EQ(entry.width, 120);
  EXPECT_EQ(entry.height, 80);
}

TEST_P(BlobTool, ThresholdTakesAnImageWithPaddedRows) {
  cv::Mat wide(80, 200, CV_8U, cv::Scalar(255));
  Parts().copyTo(wide(cv::Rect(40, 0, 120, 80)));
  m_bench.m_srcImage = wide(cv::Rect(40, 0, 120, 80));
  Threshold(m_bench, kBright);
  EXPECT_TRUE(SamePicture(Shown(), RedWhere(Mask(kBright))));
}

TEST_P(BlobTool, ConnectionBeforeAnyThresholdSaysSo) {
  const ConnectionReport report = Connection(m_bench);
  ExpectStatus(report.status, Tone::kError, "no binarization yet, 0");
  EXPECT_FALSE(report.rows.has_value());
  EXPECT_EQ(m_bench.m_redraw, 0);
  EXPECT_EQ(TakeConsole(), "");
}

TEST_P(BlobTool, ConnectionColoursAndListsTheComponents) {
  Threshold(m_bench, kBright);
  TakeConsole();
  m_bench.m_redraw = -1;
  const ConnectionReport report = Connection(m_bench);
  ExpectStatus(report.status, Tone::kSuccess,
               "connection done, connected components =3");
  const std::string console = TakeConsole();
  EXPECT_EQ(console.substr(0, 24), "connection\nelasped time:") << console;
  EXPECT_NE(console.find("s\n\nconnected components = 3\n"), std::string::npos)
      << console;
  ASSERT_TRUE(report.rows.has_value());
  ASSERT_EQ(report.rows->size(), 3u);
  EXPECT_EQ((*report.rows)[0][1], "600");  // 30 x 20
  EXPECT_EQ((*report.rows)[1][1], "900");  // 25 x 40 - 10 x 10
  EXPECT_EQ((*report.rows)[2][0], "3");
  EXPECT_EQ(m_bench.m_regionOverlay.size(), 3u);
  EXPECT_EQ(m_bench.m_redraw, 1);
  const cv::Mat shown = Shown();
  EXPECT_EQ(shown.at<cv::Vec3b>(12, 12), cv::Vec3b(0, 0, 255));
  EXPECT_EQ(shown.at<cv::Vec3b>(16, 62), cv::Vec3b(255, 0, 255));
  EXPECT_EQ(shown.at<cv::Vec3b>(60, 30), cv::Vec3b(255, 191, 0));
}

TEST_P(BlobTool, ConnectionDoesNotEnterTheHistory) {
  Threshold(m_bench, kBright);
  Connection(m_bench);
  EXPECT_EQ(m_bench.m_regionHistory.size(), 1u);
  EXPECT_EQ(m_bench.m_regionHistory.back().child_count, 0);
  ExpectStatus(Connection(m_bench).status, Tone::kSuccess,
               "connection done, connected components =3");
}

TEST_P(BlobTool, HundredAndFiftyComponentsFillAHundredRows) {
  m_bench.m_srcImage = cv::Mat(30, 40, CV_8U, cv::Scalar(0));
  for (int i = 0; i < 150; ++i) {
    m_bench.m_srcImage.at<unsigned char>(2 * (i / 15), 2 * (i % 15)) = 255;
  }
  Threshold(m_bench, kBright);
  const ConnectionReport report = Connection(m_bench);
  EXPECT_EQ(report.status.text, "connection done, connected components =150");
  ASSERT_TRUE(report.rows.has_value());
  EXPECT_EQ(report.rows->size(), 100u);
  ASSERT_EQ(m_bench.m_regionOverlay.size(), 150u);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(m_bench.m_regionOverlay[16].color[k],
              m_bench.m_regionOverlay[0].color[k]);
  }
}

TEST_P(BlobTool, PixelsThatTouchByACornerAreOneComponent) {
  m_bench.m_srcImage = cv::Mat(2, 2, CV_8U, cv::Scalar(0));
  m_bench.m_srcImage.at<unsigned char>(0, 0) = 255;
  m_bench.m_srcImage.at<unsigned char>(1, 1) = 255;
  Threshold(m_bench, kBright);
  EXPECT_EQ(Connection(m_bench).status.text,
            "connection done, connected components =1");
}

TEST_P(BlobTool, LanguageOtherThanTheTwoLeavesTheTextEmpty) {
  m_bench.m_language = 2;
  ExpectStatus(Threshold(m_bench, kBright), Tone::kSuccess, "");
  ExpectStatus(Connection(m_bench).status, Tone::kSuccess, "");
}

TEST_P(BlobTool, ModeCanChangeBetweenPresses) {
  Threshold(m_bench, kBright);
  m_bench.m_parallelMode = 1 - m_bench.m_parallelMode;
  EXPECT_EQ(Connection(m_bench).status.text,
            "connection done, connected components =3");
}

TEST(BlobToolModes, OtherModesRunNoOperation) {
  Workbench bench;
  bench.m_srcImage = Parts();
  CaptureStdout();
  Threshold(bench, kBright);
  bench.m_parallelMode = 2;
  EXPECT_EQ(Threshold(bench, kBright).text, "region is empty");
  const ConnectionReport report = Connection(bench);
  GetCapturedStdout();
  EXPECT_EQ(report.status.text, "connection done, connected components =0");
  EXPECT_TRUE(bench.m_regionOverlay.empty());
}

TEST(BlobToolModes, ConnectionListsTheSameRowsInBoth) {
  CaptureStdout();
  std::vector<FeatureRow> rows[2];
  for (const int mode : {0, 1}) {
    Workbench bench;
    bench.m_parallelMode = mode;
    bench.m_srcImage = Parts();
    Threshold(bench, {1, 255});
    rows[mode] = *Connection(bench).rows;
  }
  GetCapturedStdout();
  EXPECT_EQ(rows[0], rows[1]);
  EXPECT_EQ(rows[0].size(), 3u);
}

// Hundreds of components, with holes and of every shape.
TEST(BlobToolModes, ConnectionShowsTheSamePictureRowsAndMessageInBoth) {
  CaptureStdout();
  cv::Mat image(150, 200, CV_8U);
  cv::theRNG().state = 11;
  cv::randu(image, 0, 256);
  cv::blur(image, image, cv::Size(3, 3));
  ConnectionReport reports[2];
  cv::Mat pictures[2];
  for (const int mode : {0, 1}) {
    Workbench bench;
    bench.m_parallelMode = mode;
    bench.m_srcImage = image;
    Threshold(bench, {140, 255});
    reports[mode] = Connection(bench);
    pictures[mode] = Painted(bench.m_regionOverlay, image.size());
  }
  GetCapturedStdout();
  EXPECT_EQ(reports[0].status.text, reports[1].status.text);
  EXPECT_EQ(reports[0].rows, reports[1].rows);
  EXPECT_EQ(reports[0].rows->size(), 100u);
  EXPECT_TRUE(SamePicture(pictures[0], pictures[1]));
}

// What every button must show, from the image library's own morphology.
struct ButtonCase {
  RegionOperation operation;
  const char* label;
  const char* message;
  cv::Mat (*expected)(const cv::Mat& older, const cv::Mat& last,
                      const cv::Mat& kernel);
};

template <int operation>
cv::Mat Morphology(const cv::Mat&, const cv::Mat& last, const cv::Mat& kernel) {
  cv::Mat result;
  cv::morphologyEx(last, result, operation, kernel);
  return result;
}

cv::Mat Holes(const cv::Mat& mask) {
  cv::Mat outside = mask.clone();
  cv::floodFill(outside, cv::Point(0, 0), cv::Scalar(255));
  return ~outside;
}

// Pixels whose four neighbours are not all set.
cv::Mat InnerBoundary(const cv::Mat&, const cv::Mat& last, const cv::Mat&) {
  cv::Mat inside;
  cv::erode(last, inside,
            cv::getStructuringElement(cv::MORPH_CROSS, cv::Size(3, 3)));
  return last - inside;
}

const ButtonCase kButtons[] = {
    {RegionOperation::kFillUp, "fill up", "fill_up done",
     [](const cv::Mat&, const cv::Mat& last, const cv::Mat&) -> cv::Mat {
       return last | Holes(last);
     }},
    {RegionOperation::kUnion, "union2", "union2 done",
     [](const cv::Mat& older, const cv::Mat& last, const cv::Mat&) -> cv::Mat {
       return older | last;
     }},
    {RegionOperation::kDifference, "difference", "difference done",
     [](const cv::Mat& older, const cv::Mat& last, const cv::Mat&) -> cv::Mat {
       return older & ~last;
     }},
    {RegionOperation::kIntersection, "intersection", "intersection done",
     [](const cv::Mat& older, const cv::Mat& last, const cv::Mat&) -> cv::Mat {
       return older & last;
     }},
    {RegionOperation::kDilation, "dilation1", "dilation1 done",
     Morphology<cv::MORPH_DILATE>},
    {RegionOperation::kErosion, "erosion1", "erosion1 done",
     Morphology<cv::MORPH_ERODE>},
    {RegionOperation::kOpening, "opening", "opening done",
     Morphology<cv::MORPH_OPEN>},
    {RegionOperation::kClosing, "closing", "closing done",
     Morphology<cv::MORPH_CLOSE>},
    {RegionOperation::kTopHat, "top_hat", "top_hat done",
     Morphology<cv::MORPH_TOPHAT>},
    {RegionOperation::kBottomHat, "bottom_hat", "bottom_hat done",
     Morphology<cv::MORPH_BLACKHAT>},
    {RegionOperation::kBoundary, "boundary", "boundary done", InnerBoundary},
};

TEST_P(BlobTool, EveryButtonShowsItsResultInRed) {
  Threshold(m_bench, {200, 255});
  Threshold(m_bench, {1, 220});
  const cv::Mat older = Mask({200, 255});
  const cv::Mat last = Mask({1, 220});
  const cv::Mat kernel =
      cv::getStructuringElement(cv::MORPH_RECT, cv::Size(5, 3));
  for (const ButtonCase& button : kButtons) {
    SCOPED_TRACE(button.message);
    TakeConsole();
    m_bench.m_redraw = -1;
    const Status status = ApplyRegionOperation(m_bench, button.operation,
                                               {{kRectangle, 5, 3}, "inner"});
    ExpectStatus(status, Tone::kSuccess, button.message);
    EXPECT_TRUE(
        SamePicture(Shown(), RedWhere(button.expected(older, last, kernel))));
    EXPECT_EQ(m_bench.m_regionOverlay.size(), 1u);
    EXPECT_EQ(m_bench.m_redraw, 1);
    EXPECT_EQ(m_bench.m_regionHistory.size(), 2u);
    const std::string head = std::string(button.label) + "\nelasped time:";
    EXPECT_EQ(TakeConsole().substr(0, head.size()), head);
  }
}

TEST_P(BlobTool, ButtonsWithAnEmptyHistorySaySo) {
  for (const ButtonCase& button : kButtons) {
    SCOPED_TRACE(button.message);
    const bool set_operation =
        button.operation == RegionOperation::kUnion ||
        button.operation == RegionOperation::kDifference ||
        button.operation == RegionOperation::kIntersection;
    ExpectStatus(ApplyRegionOperation(m_bench, button.operation, {}),
                 Tone::kError,
                 set_operation ? "The number of regions is less than 2, 0"
                               : "no binarization yet, 0");
    EXPECT_EQ(m_bench.m_redraw, 0);
  }
  EXPECT_EQ(TakeConsole(), "");
}

TEST_P(BlobTool, UnionAfterOneThresholdNamesTheCount) {
  Threshold(m_bench, kBright);
  m_bench.m_redraw = -1;
  ExpectStatus(ApplyRegionOperation(m_bench, RegionOperation::kUnion, {}),
               Tone::kError, "The number of regions is less than 2, 1");
  EXPECT_EQ(m_bench.m_redraw, -1);
  EXPECT_TRUE(SamePicture(Shown(), RedWhere(Mask(kBright))));
}

TEST_P(BlobTool, UnionAfterAnEmptyBandTakesTheTwoEarlierBinarisations) {
  Threshold(m_bench, {255, 255});
  Threshold(m_bench, {100, 100});
  Threshold(m_bench, {30, 40});
  ApplyRegionOperation(m_bench, RegionOperation::kUnion, {});
  EXPECT_TRUE(
      SamePicture(Shown(), RedWhere(Mask({255, 255}) | Mask({100, 100}))));
}

TEST_P(BlobTool, DifferenceAfterThreeThresholdsIsTheSecondMinusTheThird) {
  Threshold(m_bench, {255, 255});
  Threshold(m_bench, {1, 255});
  Threshold(m_bench, {200, 255});
  ApplyRegionOperation(m_bench, RegionOperation::kDifference, {});
  EXPECT_TRUE(SamePicture(Shown(), RedWhere(Mask({1, 199}))));
}

TEST_P(BlobTool, ErosionAfterDilationStartsFromTheBinarisation) {
  Threshold(m_bench, kBright);
  const OperationParameters parameters{{kRectangle, 3, 3}, "inner"};
  ApplyRegionOperation(m_bench, RegionOperation::kDilation, parameters);
  ApplyRegionOperation(m_bench, RegionOperation::kErosion, parameters);
  cv::Mat expected;
  cv::erode(Mask(kBright), expected,
            cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3)));
  EXPECT_TRUE(SamePicture(Shown(), RedWhere(expected)));
}

// A single pixel dilated shows the element.
TEST_P(BlobTool, ElementIsTheOneChosen) {
  m_bench.m_srcImage = cv::Mat(41, 41, CV_8U, cv::Scalar(0));
  m_bench.m_srcImage.at<unsigned char>(20, 20) = 255;
  Threshold(m_bench, kBright);
  const auto painted = [&](ElementChoice choice) {
    ApplyRegionOperation(m_bench, RegionOperation::kDilation, {choice, ""});
    cv::Mat mask;
    cv::inRange(Shown(), cv::Scalar(0, 0, 255), cv::Scalar(0, 0, 255), mask);
    return cv::boundingRect(mask);
  };
  EXPECT_EQ(painted({kRectangle, 7, 3}), cv::Rect(17, 19, 7, 3));
  EXPECT_EQ(painted({kCross, 9, 5}), cv::Rect(16, 18, 9, 5));
  EXPECT_EQ(painted({kCircle, 4, 100}), cv::Rect(16, 16, 9, 9));
  EXPECT_EQ(painted({-1, 4, 1}), cv::Rect(16, 16, 9, 9));
}

TEST_P(BlobTool, BoundaryTypesDiffer) {
  Threshold(m_bench, {255, 255});  // 25 x 40 at (60, 15) with a hole of 10 x 10
  const auto pixels = [&](const char* type) {
    ApplyRegionOperation(m_bench, RegionOperation::kBoundary, {{}, type});
    cv::Mat mask;
    cv::inRange(Shown(), cv::Scalar(0, 0, 255), cv::Scalar(0, 0, 255), mask);
    return cv::countNonZero(mask);
  };
  const int rim = 2 * 25 + 2 * 38;
  const int hole = 4 * 10;
  EXPECT_EQ(pixels("inner"), rim + hole);
  EXPECT_EQ(pixels("inner_filled"), rim);
  EXPECT_EQ(pixels("outer"), 2 * 25 + 2 * 40 + 4 * 9);
}

TEST_P(BlobTool, EmptyResultShowsNothingButIsDone) {
  Threshold(m_bench, kBright);
  ExpectStatus(ApplyRegionOperation(m_bench, RegionOperation::kErosion,
                                    {{kRectangle, 100, 100}, ""}),
               Tone::kSuccess, "erosion1 done");
  ASSERT_EQ(m_bench.m_regionOverlay.size(), 1u);
  EXPECT_TRUE(m_bench.m_regionOverlay[0].chords.empty());
}

TEST_P(BlobTool, ButtonsInOtherModesShowAnEmptyResult) {
  Threshold(m_bench, kBright);
  Threshold(m_bench, kBright);
  m_bench.m_parallelMode = -1;
  for (const ButtonCase& button : kButtons) {
    ExpectStatus(ApplyRegionOperation(m_bench, button.operation, {}),
                 Tone::kSuccess, button.message);
    EXPECT_TRUE(m_bench.m_regionOverlay[0].chords.empty());
  }
}

TEST(BlobToolModes, EveryButtonShowsTheSameChordsInBoth) {
  CaptureStdout();
  cv::Mat image(200, 300, CV_8U, cv::Scalar(0));
  cv::Mat noise = image(cv::Rect(20, 20, 260, 160));
  cv::randu(noise, 0, 256);
  cv::GaussianBlur(noise, noise, cv::Size(9, 9), 0);
  cv::normalize(noise, noise, 0, 255, cv::NORM_MINMAX);
  Workbench benches[2];
  for (int mode = 0; mode < 2; ++mode) {
    benches[mode].m_parallelMode = mode;
    benches[mode].m_srcImage = image;
    Threshold(benches[mode], {100, 200});
    Threshold(benches[mode], kBright);
  }
  for (const char* type : {"inner", "inner_filled", "outer"}) {
    for (const ElementChoice element :
         {ElementChoice{kCircle, 3, 3}, ElementChoice{kRectangle, 7, 3},
          ElementChoice{kCross, 5, 9}}) {
      for (const ButtonCase& button : kButtons) {
        SCOPED_TRACE(button.message);
        std::vector<std::array<int, 3>> chords[2];
        for (int mode = 0; mode < 2; ++mode) {
          const Status status = ApplyRegionOperation(
              benches[mode], button.operation, {element, type});
          EXPECT_EQ(status.text, button.message);
          for (const vexo::chord& c : benches[mode].m_regionOverlay[0].chords) {
            chords[mode].push_back({c.row, c.col_begin, c.col_end});
          }
        }
        EXPECT_FALSE(chords[0].empty());
        EXPECT_EQ(chords[0], chords[1]);
      }
    }
  }
  GetCapturedStdout();
}

TEST(RegionOperationNames, EveryOperationIsFoundByItsName) {
  EXPECT_EQ(OperationByName("fill_up"), RegionOperation::kFillUp);
  EXPECT_EQ(OperationByName("union"), RegionOperation::kUnion);
  EXPECT_EQ(OperationByName("bottom_hat"), RegionOperation::kBottomHat);
  EXPECT_EQ(OperationByName("boundary"), RegionOperation::kBoundary);
  EXPECT_EQ(OperationByName("skeleton"), std::nullopt);
  EXPECT_EQ(OperationByName(""), std::nullopt);
}

TEST(GrayBandToggle, GoesToTheBrightHalfThenBackAndForth) {
  GrayBand band = ToggleGrayBand({0, 255});
  EXPECT_EQ(band, (GrayBand{128, 255}));
  band = ToggleGrayBand(band);
  EXPECT_EQ(band, (GrayBand{0, 127}));
  band = ToggleGrayBand(band);
  EXPECT_EQ(band, (GrayBand{128, 255}));
}

TEST(GrayBandToggle, BandInTheMiddleStays) {
  EXPECT_EQ(ToggleGrayBand({50, 200}), (GrayBand{50, 200}));
}

TEST(ElementCombo, OnlyTheCircleHasNoHeight) {
  EXPECT_FALSE(ElementUsesHeight(0));
  EXPECT_TRUE(ElementUsesHeight(1));
  EXPECT_TRUE(ElementUsesHeight(2));
}

}  // namespace
}  // namespace rendal
