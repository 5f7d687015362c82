// SPDX-License-Identifier: MIT
#include "region/region.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <vector>

#include "pictures.h"
#include "region/operations.h"

namespace {

using vexo::region;
using vexo_test::chords_of;
using vexo_test::Run;
using vexo_test::Runs;
using vexo_test::runs_of;

TEST(Region, DefaultHasNoRunsAndEveryFeatureUnset) {
  const region r;
  EXPECT_EQ(r.run_count, 0u);
  EXPECT_EQ(r.capacity, 2000u);
  EXPECT_NE(r.rows, nullptr);
  EXPECT_NE(r.col_begins, nullptr);
  EXPECT_NE(r.col_ends, nullptr);
  EXPECT_EQ(r.chords, nullptr);
  EXPECT_EQ(r.chord_count, 0);
  for (int32_t b : r.bbox) EXPECT_EQ(b, -1);
  for (double v : r.reals) EXPECT_EQ(v, -1.0);
  for (double v : r.more_reals) EXPECT_EQ(v, -1.0);
  EXPECT_EQ(r.area, -1);
  EXPECT_EQ(r.width, -1);
  EXPECT_EQ(r.height, -1);
  EXPECT_EQ(r.child_count, 0);
  EXPECT_EQ(r.children, nullptr);
  ASSERT_NE(r.ref_count, nullptr);
  EXPECT_EQ(*r.ref_count, 1);
}

TEST(Region, ZeroOrNegativeCapacityMeansNoRunArrays) {
  for (int capacity : {0, -1, -2000}) {
    region r(capacity);
    EXPECT_EQ(r.capacity, 0u);
    EXPECT_EQ(r.rows, nullptr);
    EXPECT_EQ(r.col_begins, nullptr);
    EXPECT_EQ(r.col_ends, nullptr);
    r.reserve(3);
    EXPECT_EQ(r.capacity, 3u);
    ASSERT_NE(r.rows, nullptr);
    r.rows[2] = r.col_begins[2] = r.col_ends[2] = 7;
  }
}

TEST(Region, ReserveKeepsRunsAndNeverShrinks) {
  region r = vexo_test::region_of({{1, 2, 3}, {4, 5, 6}});
  r.reserve(5000);
  EXPECT_EQ(r.capacity, 5000u);
  EXPECT_EQ(runs_of(r), (Runs{{1, 2, 3}, {4, 5, 6}}));
  const int32_t* rows = r.rows;
  r.reserve(5000);
  r.reserve(1);
  r.reserve(0);
  EXPECT_EQ(r.capacity, 5000u);
  EXPECT_EQ(r.rows, rows);
}

TEST(Region, CopySharesStorageAndCounts) {
  region r = vexo_test::region_of({{1, 2, 3}});
  {
    const region copy = r;
    EXPECT_EQ(*r.ref_count, 2);
    EXPECT_EQ(copy.rows, r.rows);
    EXPECT_EQ(copy.chords, r.chords);
    EXPECT_EQ(copy.ref_count, r.ref_count);
  }
  EXPECT_EQ(*r.ref_count, 1);
  EXPECT_EQ(runs_of(r), (Runs{{1, 2, 3}}));
}

TEST(Region, AssignmentSharesStorage) {
  const region a = vexo_test::region_of({{1, 2, 3}});
  region b;
  b = a;
  EXPECT_EQ(*a.ref_count, 2);
  EXPECT_EQ(b.rows, a.rows);
  b = *&b;
  EXPECT_EQ(*a.ref_count, 2);
}

TEST(Region, BuildingChordsWithoutRunsLeavesThemAlone) {
  region r = vexo_test::region_of({{1, 2, 3}});
  r.run_count = 0;
  const vexo::chord* chords = r.chords;
  r.to_3();
  EXPECT_EQ(r.chords, chords);
  EXPECT_EQ(chords_of(r), (Runs{{1, 2, 3}}));
}

TEST(Region, ChordsEqualRuns) {
  Runs runs;
  for (int i = 0; i < 100000; ++i) runs.push_back({i / 10, i % 10 * 7, i % 5});
  const region r = vexo_test::region_of(runs);
  EXPECT_EQ(chords_of(r), runs);
  for (int i = 0; i < r.chord_count; ++i) ASSERT_EQ(r.chords[i].label, 0);
}

TEST(Region, BuildingChordsKeepsLabels) {
  region r = vexo_test::region_of({{1, 2, 3}});
  r.chords[0].label = 9;
  r.to_3();
  EXPECT_EQ(r.chords[0].label, 9);
}

TEST(Region, RunsFromChords) {
  region r(0);
  r.from_3();
  EXPECT_EQ(r.rows, nullptr);
  r.chords = static_cast<vexo::chord*>(std::malloc(2 * sizeof(vexo::chord)));
  r.chord_count = 2;
  r.chords[0] = {2, 3, 1, 0};
  r.chords[1] = {5, 6, 1, 0};
  r.from_3();
  EXPECT_EQ(runs_of(r), (Runs{{1, 2, 3}, {1, 5, 6}}));
}

TEST(Region, EveryKindOfNewAndDeleteFits) {
  delete new region;
  delete new region(3);
  delete new (std::nothrow) region(0);
  delete[] new region[2];
  const auto owned = std::make_unique<region>(5);
  const auto shared = std::make_shared<region>(*owned);
  EXPECT_EQ(*owned->ref_count, 2);
  std::vector<region> several(3, *owned);
  EXPECT_EQ(*owned->ref_count, 5);
  several.clear();
  alignas(region) char place[sizeof(region)];
  region* placed = new (place) region(*owned);
  EXPECT_EQ(*owned->ref_count, 3);
  placed->~region();
  EXPECT_EQ(*owned->ref_count, 2);
}

TEST(Chord, OrderIsRowThenBeginThenEnd) {
  const std::less<vexo::chord> less;
  EXPECT_TRUE(less({9, 9, 0, 0}, {0, 0, 1, 0}));
  EXPECT_TRUE(less({0, 9, 1, 0}, {1, 1, 1, 0}));
  EXPECT_TRUE(less({0, 1, 1, 5}, {0, 2, 1, 0}));
  EXPECT_FALSE(less({0, 1, 1, 0}, {0, 1, 1, 5}));
}

}  // namespace
