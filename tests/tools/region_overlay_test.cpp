// SPDX-License-Identifier: MIT
#include "tools/region_overlay.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <utility>

namespace rendal {
namespace {

using Chords = std::vector<vexo::chord>;

OverlayItem Item(Chords chords) {
  return OverlayItem{{0, 0, 255, 0}, {}, std::move(chords)};
}

// Components without pixels and features, owned as any region's children are.
ComponentSet WithChildren(size_t count) {
  auto parent = std::make_shared<vexo::region>();
  parent->children = static_cast<vexo::region**>(
      std::malloc(sizeof(vexo::region*) * std::max<size_t>(count, 1)));
  parent->child_count = static_cast<int32_t>(count);
  for (size_t i = 0; i < count; ++i) {
    parent->children[i] = new vexo::region(1);
  }
  return ComponentSet(std::move(parent));
}

// (begin, end, item) of every chord of a row.
std::vector<std::array<int, 3>> RowOf(const RegionOverlay& overlay, int row) {
  std::vector<std::array<int, 3>> result;
  for (const vexo::chord& c : overlay.Row(row)) {
    EXPECT_EQ(c.row, row);
    result.push_back({c.col_begin, c.col_end, c.label});
  }
  return result;
}

TEST(RegionOverlay, RowsHoldTheirChordsInPaintingOrder) {
  RegionOverlay overlay;
  overlay.Replace({Item({{9, 12, 5, 0}, {1, 2, 7, 0}}),
                   Item({{0, 3, -4, 0}, {2, 3, 5, 0}, {5, 6, 5, 0}})});
  using Row = std::vector<std::array<int, 3>>;
  EXPECT_EQ(RowOf(overlay, 5), (Row{{9, 12, 0}, {2, 3, 1}, {5, 6, 1}}));
  EXPECT_EQ(RowOf(overlay, 7), (Row{{1, 2, 0}}));
  EXPECT_EQ(RowOf(overlay, -4), (Row{{0, 3, 1}}));
  EXPECT_EQ(RowOf(overlay, 6), Row());
  EXPECT_EQ(RowOf(overlay, INT32_MAX), Row());
}

TEST(RegionOverlay, ItemsInOrderOfTheirRowsAreLabelledAllTheSame) {
  RegionOverlay overlay;
  overlay.Replace({Item({{1, 2, 3, 7}, {4, 5, 3, 7}, {0, 9, 4, 7}}), Item({}),
                   Item({{0, 1, 4, 7}, {0, 1, 6, 7}})});
  using Row = std::vector<std::array<int, 3>>;
  EXPECT_EQ(RowOf(overlay, 3), (Row{{1, 2, 0}, {4, 5, 0}}));
  EXPECT_EQ(RowOf(overlay, 4), (Row{{0, 9, 0}, {0, 1, 2}}));
  EXPECT_EQ(RowOf(overlay, 6), (Row{{0, 1, 2}}));
}

TEST(RegionOverlay, ItemsKeepTheirChordsAsTheyWere) {
  RegionOverlay overlay;
  overlay.Replace({Item({{9, 12, 5, 3}, {1, 2, 1, 4}})});
  ASSERT_EQ(overlay.size(), 1u);
  EXPECT_EQ(overlay[0].chords[0].row, 5);
  EXPECT_EQ(overlay[0].chords[0].label, 3);
  EXPECT_EQ(overlay[0].chords[1].col_begin, 1);
}

TEST(RegionOverlay, RowsBeyond65536AreInOrder) {
  RegionOverlay overlay;
  overlay.Replace({Item({{1, 2, 65537, 0}, {1, 2, 65535, 0}}),
                   Item({{3, 4, 2, 0}, {3, 4, 0, 0}})});
  using Row = std::vector<std::array<int, 3>>;
  for (const int row : {65535, 65537}) {
    EXPECT_EQ(RowOf(overlay, row), (Row{{1, 2, 0}})) << row;
  }
  for (const int row : {0, 2}) {
    EXPECT_EQ(RowOf(overlay, row), (Row{{3, 4, 1}})) << row;
  }
}

TEST(RegionOverlay, RowsFarApartCostNoTable) {
  RegionOverlay overlay;
  overlay.Replace({Item({{0, 1, INT32_MAX, 0}, {2, 3, INT32_MIN, 0}}),
                   Item({{4, 5, INT32_MAX, 0}, {6, 7, 0, 0}})});
  EXPECT_EQ(RowOf(overlay, INT32_MAX).size(), 2u);
  EXPECT_EQ(RowOf(overlay, INT32_MIN).size(), 1u);
  EXPECT_EQ(RowOf(overlay, 0).size(), 1u);
  EXPECT_EQ(RowOf(overlay, INT32_MAX)[1][2], 1);
}

TEST(RegionOverlay, IndexAgreesWithASearchThroughAllItems) {
  std::mt19937 random(7);
  for (int round = 0; round < 50; ++round) {
    const int rows = 1 + static_cast<int>(random() % 5000);
    std::vector<OverlayItem> items;
    for (int i = 0; i < 30; ++i) {
      items.push_back(Item({}));
      for (int k = 0; k < 40; ++k) {
        const int begin = static_cast<int>(random() % 100);
        items.back().chords.push_back(
            {begin, begin + 3, static_cast<int>(random() % rows) - 50, 0});
      }
    }
    RegionOverlay overlay;
    overlay.Replace(items);
    for (int row = -52; row < rows; row += 1 + rows / 50) {
      std::vector<std::array<int, 3>> expected;
      for (size_t i = 0; i < items.size(); ++i) {
        for (const vexo::chord& c : items[i].chords) {
          if (c.row == row) {
            expected.push_back({c.col_begin, c.col_end, static_cast<int>(i)});
          }
        }
      }
      ASSERT_EQ(RowOf(overlay, row), expected) << row;
    }
  }
}

TEST(RegionOverlay, ReplacingAndClearingForgetTheOldItems) {
  RegionOverlay overlay;
  overlay.Replace({Item({{1, 2, 3, 0}})});
  overlay.Replace({Item({{4, 5, 6, 0}})});
  EXPECT_TRUE(overlay.Row(3).empty());
  EXPECT_EQ(overlay.size(), 1u);
  overlay.clear();
  EXPECT_TRUE(overlay.empty());
  EXPECT_TRUE(overlay.Row(6).empty());
  overlay.Replace({});
  EXPECT_TRUE(overlay.Row(0).empty());
}

TEST(RegionOverlay, PaletteHasTheSixteenColours) {
  const int expected[16][3] = {
      {255, 0, 0},     {255, 0, 255},  {0, 191, 255},   {255, 140, 0},
      {202, 255, 112}, {139, 28, 98},  {250, 128, 114}, {0, 250, 154},
      {50, 205, 50},   {148, 0, 211},  {139, 35, 35},   {0, 0, 255},
      {255, 105, 180}, {139, 105, 20}, {0, 134, 139},   {208, 32, 144}};
  for (int i = 0; i < 16; ++i) {
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(PaletteColor(i)[k], expected[i][k]) << i << " " << k;
    }
  }
}

TEST(RegionOverlay, SeventeenthComponentReusesTheFirstColour) {
  const ComponentSet components = WithChildren(17);
  const std::vector<OverlayItem> items = ComponentItems(components);
  ASSERT_EQ(items.size(), 17u);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(items[16].color[k], items[0].color[k]);
  }
  // Entry 3 is red 255, green 140, blue 0; items count blue first.
  EXPECT_EQ(items[3].color[0], 0);
  EXPECT_EQ(items[3].color[1], 140);
  EXPECT_EQ(items[3].color[2], 255);
  EXPECT_EQ(items[3].color[3], 0);
}

TEST(RegionOverlay, SingleRegionIsOneRedItemWithItsChordsInOrder) {
  vexo::region region(4);
  for (int i = 0; i < 3; ++i) {
    region.rows[i] = i;
    region.col_begins[i] = 10 * i;
    region.col_ends[i] = 10 * i + 2;
  }
  region.run_count = 3;
  region.to_3();
  const std::vector<OverlayItem> items = SingleRegionItems(region);
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].color[0], 0);
  EXPECT_EQ(items[0].color[1], 0);
  EXPECT_EQ(items[0].color[2], 255);
  EXPECT_EQ(items[0].color[3], 0);
  ASSERT_EQ(items[0].chords.size(), 3u);
  EXPECT_EQ(items[0].chords[2].col_begin, 20);
  EXPECT_EQ(items[0].chords[2].row, 2);
}

TEST(RegionOverlay, EmptyRegionIsARedItemWithoutChords) {
  const std::vector<OverlayItem> items = SingleRegionItems(vexo::region());
  ASSERT_EQ(items.size(), 1u);
  EXPECT_TRUE(items[0].chords.empty());
}

TEST(FeatureRows, EachColumnShowsItsFeature) {
  const ComponentSet components = WithChildren(1);
  vexo::region& c = components[0];
  c.area = 1234;
  c.reals[2] = 3.5;  // rectangle half lengths
  c.reals[3] = 2.25;
  c.reals[4] = 10.125;  // ra, rb, phi
  c.reals[5] = 0.00005;
  c.reals[6] = -89.99999;
  c.more_reals[0] = 45;
  c.more_reals[2] = 0.78539816;
  const std::vector<FeatureRow> rows = FeatureRows(components, 100);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0], (FeatureRow{"1", "1234", "10.1250", "0.0001", "-90.0000",
                                 "3.5000", "2.2500", "45.0000", "0.7854"}));
}

TEST(FeatureRows, FeaturesNotComputedShowTheirSentinels) {
  const std::vector<FeatureRow> rows = FeatureRows(WithChildren(1), 100);
  EXPECT_EQ(rows[0], (FeatureRow{"1", "-1", "-1.0000", "-1.0000", "-1.0000",
                                 "-1.0000", "-1.0000", "-1.0000", "-1.0000"}));
}

TEST(FeatureRows, HundredRowsAtMost) {
  const std::vector<FeatureRow> rows = FeatureRows(WithChildren(150), 100);
  ASSERT_EQ(rows.size(), 100u);
  EXPECT_EQ(rows[99][0], "100");
  EXPECT_EQ(FeatureRows(WithChildren(3), 100).size(), 3u);
  EXPECT_TRUE(FeatureRows(WithChildren(0), 100).empty());
}

TEST(FeatureRows, LargestNumbersFit) {
  const ComponentSet components = WithChildren(1);
  components[0].reals[4] = -1.7976931348623157e308;
  EXPECT_EQ(FeatureRows(components, 1)[0][2].size(), 1 + 309 + 5u);
}

TEST(TabSeparated, HasTheColumnNamesAndALineForEachRow) {
  EXPECT_EQ(TabSeparated({}),
            "id\tarea\tra\trb\tphi\trect2_len1\trect2_len2\trect2_phi\t"
            "circularity\r\n");
  const std::vector<FeatureRow> rows = {
      {"1", "25", "2.5", "", "0", "2", "2", "0", "0.6366"},
      {"2", "9", "1.5", "1", "0", "1", "1", "0", "0.5"}};
  EXPECT_EQ(TabSeparated(rows), TabSeparated({}) +
                                    "1\t25\t2.5\t\t0\t2\t2\t0\t0.6366\r\n" +
                                    "2\t9\t1.5\t1\t0\t1\t1\t0\t0.5\r\n");
}

}  // namespace
}  // namespace rendal
