// SPDX-License-Identifier: MIT
#include "tools/components.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "tools/blob_tool.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

// Two squares that meet at a corner, a bar along the left border, a pixel.
cv::Mat Shapes() {
  cv::Mat image(40, 60, CV_8U, cv::Scalar(0));
  image(cv::Rect(10, 10, 8, 8)).setTo(200);
  image(cv::Rect(18, 18, 8, 8)).setTo(200);
  image(cv::Rect(0, 5, 3, 20)).setTo(200);
  image(cv::Rect(50, 30, 1, 1)).setTo(200);
  return image;
}

class Components : public testing::TestWithParam<int> {
 protected:
  Components() {
    m_bench.m_parallelMode = GetParam();
    m_bench.m_srcImage = Shapes();
    Threshold(m_bench, {100, 255});
  }
  std::vector<double> Areas() const {
    std::vector<double> areas;
    for (size_t i = 0; i < m_bench.m_components.size(); ++i) {
      areas.push_back(m_bench.m_components[i].area);
    }
    return areas;
  }
  const ConsoleCapture m_console;
  Workbench m_bench;
};

using AreaList = std::vector<double>;

INSTANTIATE_TEST_SUITE_P(BothModes, Components, testing::Values(0, 1));

TEST_P(Components, CornersJoinWithEightNeighboursOnly) {
  Connection(m_bench);
  EXPECT_EQ(Areas(), (AreaList{60, 128, 1}));
  Connection(m_bench, {4, RegionSource::kBinarisation});
  EXPECT_EQ(Areas(), (AreaList{60, 64, 64, 1}));
}

TEST_P(Components, SelectionKeepsWhatLiesWithinItsLimits) {
  Connection(m_bench, {4, RegionSource::kBinarisation});
  const ConnectionReport report =
      SelectComponents(m_bench, {{{*FeatureByName("area"), 60, 64}}, false});
  EXPECT_EQ(Areas(), (AreaList{60, 64, 64}));
  EXPECT_EQ(report.rows->size(), 3u);
  EXPECT_EQ(m_bench.m_regionOverlay.size(), 3u);
  SelectComponents(m_bench, {{}, true});
  EXPECT_EQ(Areas(), (AreaList{64, 64}));
}

TEST_P(Components, BorderIsTheImagesFirstAndLastRowsAndColumns) {
  m_bench.m_srcImage.setTo(0);
  // Three pixels on each border, one pixel next to two corners.
  for (const cv::Rect place :
       {cv::Rect(59, 10, 1, 3), cv::Rect(20, 39, 3, 1), cv::Rect(20, 0, 3, 1),
        cv::Rect(0, 10, 1, 3), cv::Rect(1, 1, 1, 1), cv::Rect(58, 38, 1, 1)}) {
    m_bench.m_srcImage(place).setTo(200);
  }
  Threshold(m_bench, {100, 255});
  Connection(m_bench);
  EXPECT_EQ(m_bench.m_components.size(), 6u);
  SelectComponents(m_bench, {{}, true});
  EXPECT_EQ(Areas(), (AreaList{1, 1}));
}

TEST_P(Components, OperationsGoOnFromWhatASelectionKept) {
  Connection(m_bench, {4, RegionSource::kBinarisation});
  SelectComponents(m_bench, {{{*FeatureByName("area"), 1, 1}}, false});
  ApplyRegionOperation(m_bench, RegionOperation::kDilation,
                       {{kCircle, 1, 1}, "inner"}, RegionSource::kPrevious);
  Connection(m_bench, {8, RegionSource::kPrevious});
  EXPECT_EQ(Areas(), (AreaList{5}));
}

TEST_P(Components, OperationsGoOnFromTheResultBefore) {
  const OperationParameters disc{{kCircle, 2, 2}, "inner"};
  ApplyRegionOperation(m_bench, RegionOperation::kErosion, disc,
                       RegionSource::kPrevious);
  ApplyRegionOperation(m_bench, RegionOperation::kErosion, disc,
                       RegionSource::kPrevious);
  EXPECT_EQ(m_bench.m_lastRegion->run_count, 0u);
  ApplyRegionOperation(m_bench, RegionOperation::kErosion, disc);
  Connection(m_bench, {8, RegionSource::kPrevious});
  EXPECT_EQ(Areas(), (AreaList{16, 16}));
}

TEST_P(Components, OfAGrownRegionOnlyWhatLiesInTheImageCounts) {
  ApplyRegionOperation(m_bench, RegionOperation::kDilation,
                       {{kRectangle, 5, 5}, "inner"}, RegionSource::kPrevious);
  Connection(m_bench, {8, RegionSource::kPrevious});
  // The bar: columns 0..4 and rows 3..26.
  EXPECT_EQ(Areas().front(), 5 * 24);
  EXPECT_EQ(m_bench.m_components[0].bbox[1], 0);
}

TEST_P(Components, GrownRegionsEndInTheImagesLastRowAndColumn) {
  m_bench.m_srcImage.setTo(0);
  for (const cv::Point corner : {cv::Point(0, 0), cv::Point(59, 0),
                                 cv::Point(0, 39), cv::Point(59, 39)}) {
    m_bench.m_srcImage.at<unsigned char>(corner) = 200;
  }
  Threshold(m_bench, {100, 255});
  ApplyRegionOperation(m_bench, RegionOperation::kDilation,
                       {{kRectangle, 5, 5}, "inner"}, RegionSource::kPrevious);
  Connection(m_bench, {8, RegionSource::kPrevious});
  EXPECT_EQ(Areas(), (AreaList{9, 9, 9, 9}));
  EXPECT_EQ(m_bench.m_components[3].bbox[2], 39);
  EXPECT_EQ(m_bench.m_components[3].bbox[3], 59);
}

TEST_P(Components, ResultsOfSetOperationsKnowTheImagesSize) {
  Threshold(m_bench, {0, 100});
  for (const char* name : {"union", "difference", "intersection"}) {
    ApplyRegionOperation(m_bench, *OperationByName(name), {});
    EXPECT_EQ(m_bench.m_lastRegion->width, 60) << name;
    EXPECT_EQ(m_bench.m_lastRegion->height, 40) << name;
  }
}

TEST_P(Components, NothingGoesThroughAChainAsNothing) {
  m_bench.m_keepsEmptyRegions = true;
  EXPECT_EQ(Threshold(m_bench, {201, 255}).tone, Tone::kSuccess);
  for (const char* name : {"fill_up", "dilation", "erosion", "opening",
                           "closing", "top_hat", "bottom_hat", "boundary"}) {
    ApplyRegionOperation(m_bench, *OperationByName(name), {},
                         RegionSource::kPrevious);
    EXPECT_EQ(m_bench.m_lastRegion->run_count, 0u) << name;
    EXPECT_EQ(m_bench.m_lastRegion->chord_count, 0) << name;
  }
  EXPECT_EQ(Connection(m_bench, {8, RegionSource::kPrevious}).status.text,
            "connection done, connected components =0");
  EXPECT_FALSE(m_bench.m_components.IsNull());
  EXPECT_EQ(m_bench.m_components.size(), 0u);
  // The older binarisation minus nothing.
  ApplyRegionOperation(m_bench, RegionOperation::kDifference, {});
  Connection(m_bench, {8, RegionSource::kPrevious});
  EXPECT_EQ(Areas(), (AreaList{60, 128, 1}));
}

TEST_P(Components, WithoutAnOnlookerNumbersAreTheSame) {
  Connection(m_bench);
  Workbench unseen;
  unseen.m_parallelMode = GetParam();
  unseen.m_isShown = false;
  unseen.m_srcImage = m_bench.m_srcImage;
  Threshold(unseen, {100, 255});
  EXPECT_FALSE(Connection(unseen).rows.has_value());
  EXPECT_TRUE(unseen.m_regionOverlay.empty());
  ASSERT_EQ(unseen.m_components.size(), m_bench.m_components.size());
  for (size_t i = 0; i < unseen.m_components.size(); ++i) {
    for (const Feature& feature : Features()) {
      EXPECT_EQ(feature.value(unseen.m_components[i]),
                feature.value(m_bench.m_components[i]))
          << feature.name;
    }
  }
}

TEST(Features, ASquareHasTheValuesOfASquare) {
  const ConsoleCapture console;
  Workbench bench;
  bench.m_srcImage = cv::Mat(20, 30, CV_8U, cv::Scalar(0));
  bench.m_srcImage(cv::Rect(4, 7, 11, 11)).setTo(255);
  Threshold(bench, {100, 255});
  Connection(bench);
  const double radius = std::sqrt(11.0 * 11 - 1) / std::sqrt(12.0) * 2;
  const std::map<std::string, double> expected = {
      {"area", 121},     {"x", 9},
      {"y", 12},         {"x_min", 4},
      {"y_min", 7},      {"x_max", 14},
      {"y_max", 17},     {"ra", radius},
      {"rb", radius},    {"rect2_len1", 5},
      {"rect2_len2", 5}, {"circularity", 121 / (CV_PI * 50)}};
  for (const auto& [name, value] : expected) {
    EXPECT_NEAR(Features()[*FeatureByName(name)].value(bench.m_components[0]),
                value, 1e-9)
        << name;
  }
  EXPECT_FALSE(FeatureByName("Area"));
}

TEST_P(Components, EveryPixelHasItsComponentAndTheBackgroundNone) {
  Connection(m_bench, {4, RegionSource::kBinarisation});
  const ComponentSet& all = m_bench.m_components;
  ASSERT_EQ(Areas(), (AreaList{60, 64, 64, 1}));
  EXPECT_EQ(all.At(0, 5), 0u);
  EXPECT_EQ(all.At(2, 24), 0u);
  EXPECT_EQ(all.At(17, 17), 1u);
  EXPECT_EQ(all.At(18, 18), 2u);
  EXPECT_EQ(all.At(50, 30), 3u);
  for (const cv::Point at : {cv::Point(3, 5), cv::Point(18, 17),
                             cv::Point(50, 31), cv::Point(-1, 5)}) {
    EXPECT_EQ(all.At(at.x, at.y), std::nullopt) << at;
  }
  EXPECT_EQ(ComponentSet().At(0, 0), std::nullopt);
}

// Within the bounding box of another one.
TEST_P(Components, WhatLiesInAHoleIsFoundThere) {
  m_bench.m_srcImage.setTo(0);
  m_bench.m_srcImage(cv::Rect(5, 5, 20, 20)).setTo(200);
  m_bench.m_srcImage(cv::Rect(10, 10, 10, 10)).setTo(0);
  m_bench.m_srcImage(cv::Rect(14, 14, 2, 2)).setTo(200);
  Threshold(m_bench, {100, 255});
  Connection(m_bench);
  EXPECT_EQ(m_bench.m_components.At(5, 14), 0u);
  EXPECT_EQ(m_bench.m_components.At(12, 14), std::nullopt);
  EXPECT_EQ(m_bench.m_components.At(15, 14), 1u);
}

}  // namespace
}  // namespace rendal
