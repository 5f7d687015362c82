// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>

#include "region/operations.h"
#include "region_cases.h"

namespace vexo_test {
namespace {

using vexo::region;

region circle(int radius) {
  region result;
  vexo::gen_se_circle(radius, &result);
  return result;
}

region square(int size) {
  Runs rows;
  for (int r = 0; r < size; ++r) rows.push_back({r, 0, size - 1});
  return region_of(rows);
}

TEST(Erosion, ThreeByThreeSquareByRadiusOneCircleGivesItsCentre) {
  region source = square(3);
  region element = circle(1);
  region fast;
  region reference;
  vexo::erosion2(source, element, &fast, -1, -1);
  vexo::erosion1(source, element, &reference);
  EXPECT_EQ(runs_of(fast), (Runs{{1, 1, 1}}));
  EXPECT_EQ(chords_of(reference), (Runs{{1, 1, 1}}));
}

TEST(Erosion, ElementLargerThanTheRegionGivesAnEmptyOutput) {
  region source = square(3);
  region element = circle(9);
  region fast = region_of(Runs{{1, 2, 3}});
  region reference = region_of(Runs{{1, 2, 3}});
  vexo::erosion2(source, element, &fast, -1, -1);
  vexo::erosion1(source, element, &reference);
  EXPECT_EQ(fast.run_count, 0u);
  EXPECT_EQ(reference.chord_count, 0);
}

TEST(Erosion, EvenElementsSitOnePixelApartInTheTwoForms) {
  region source = square(4);
  region element;
  vexo::gen_se_rectangle(4, 4, &element);
  region fast;
  region reference;
  vexo::erosion2(source, element, &fast, -1, -1);
  vexo::erosion1(source, element, &reference);
  EXPECT_EQ(runs_of(fast), (Runs{{2, 2, 2}}));
  EXPECT_EQ(chords_of(reference), (Runs{{1, 1, 1}}));
}

TEST(Erosion2, EitherReferenceCoordinateMinusOneMeansTheMiddle) {
  for (const auto& [col, row] : {std::pair{-1, 5}, std::pair{5, -1}}) {
    region output;
    vexo::erosion2(square(3), circle(1), &output, col, row);
    EXPECT_EQ(runs_of(output), (Runs{{1, 1, 1}}));
  }
}

TEST(Erosion2, OutputMayBeTheSource) {
  region source = square(9);
  vexo::erosion2(source, circle(3), &source, -1, -1);
  EXPECT_EQ(runs_of(source), (Runs{{3, 3, 5}, {4, 3, 5}, {5, 3, 5}}));
}

TEST(Erosion1, OutputMayBeTheSource) {
  region source = square(9);
  region element = circle(3);
  vexo::erosion1(source, element, &source);
  EXPECT_EQ(chords_of(source), (Runs{{3, 3, 5}, {4, 3, 5}, {5, 3, 5}}));
}

TEST(Erosion, CopiesTheImageSizeEvenToAnEmptyOutput) {
  region source = square(3);
  source.width = 30;
  source.height = 20;
  region element = circle(9);
  region fast;
  region reference;
  vexo::erosion2(source, element, &fast, -1, -1);
  vexo::erosion1(source, element, &reference);
  EXPECT_EQ(fast.width, 30);
  EXPECT_EQ(fast.height, 20);
  EXPECT_EQ(reference.width, 30);
  EXPECT_EQ(reference.height, 20);
}

TEST(Erosion, SourceWithoutRunsOrWithChildrenLeavesOutputAsItWas) {
  region empty;
  region parent = square(5);
  parent.child_count = 1;
  region element = circle(1);
  region output = region_of(Runs{{1, 2, 3}});
  for (region* source : {&empty, &parent}) {
    source->width = 5;
    vexo::erosion2(*source, element, &output, -1, -1);
    vexo::erosion1(*source, element, &output);
    EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
    EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
    EXPECT_EQ(output.width, -1);
  }
  parent.child_count = 0;
}

TEST(Erosion, EachFormReadsAndWritesItsOwnStorageOnly) {
  region runs_only = square(3);
  runs_only.chord_count = 0;
  region chords_only = square(3);
  chords_only.run_count = 0;
  region element = circle(1);
  region output = region_of(Runs{{1, 2, 3}});
  vexo::erosion1(runs_only, element, &output);
  vexo::erosion2(chords_only, element, &output, -1, -1);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
  vexo::erosion1(chords_only, element, &output);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(output), (Runs{{1, 1, 1}}));
  vexo::erosion2(runs_only, element, &output, -1, -1);
  EXPECT_EQ(runs_of(output), (Runs{{1, 1, 1}}));
}

TEST(Erosion1, ElementWithChildrenIsUsedUnshifted) {
  region source = square(3);
  region element = region_of(Runs{{3, 2, 3}});
  element.child_count = 1;
  region output;
  vexo::erosion1(source, element, &output);
  element.child_count = 0;
  EXPECT_EQ(chords_of(output),
            (Runs{{-3, -2, -1}, {-2, -2, -1}, {-1, -2, -1}}));
}

TEST(Erosion2, ResultIsRightWhereIntermediateSumsLeave32Bits) {
  constexpr int kLow = INT32_MIN;
  constexpr int kHigh = INT32_MAX;
  region output;
  vexo::erosion2(region_of({{kLow, kLow, kHigh}, {kHigh, kLow, kHigh}}),
                 region_of({{0, -5, 5}}), &output, 0, 0);
  EXPECT_EQ(runs_of(output),
            (Runs{{kLow, kLow + 5, kHigh - 5}, {kHigh, kLow + 5, kHigh - 5}}));
  vexo::erosion2(region_of({{0, kHigh - 10, kHigh}}), region_of({{0, -9, -5}}),
                 &output, -9, 0);
  EXPECT_EQ(runs_of(output), (Runs{{0, kHigh - 10, kHigh - 4}}));
}

TEST(Erosion2, CoordinatesBeyond32BitsThrowAndLeaveTheOutputAsItWas) {
  const region source = region_of({{0, INT32_MAX - 3, INT32_MAX}}, 7, 8);
  const region element = region_of({{0, -9, -8}});
  region output = region_of({{1, 2, 3}});
  try {
    vexo::erosion2(source, element, &output, 0, 0);
    ADD_FAILURE() << "no error";
  } catch (const std::runtime_error& e) {
    EXPECT_STREQ(e.what(), "realloc failed");
  }
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(output.width, -1);
}

TEST(Erosion, ElementWithoutRunsLeavesOutputAsItWas) {
  region source = region_of({{0, 0, 4}}, 7, 8);
  region element;
  region output = region_of({{1, 2, 3}});
  vexo::erosion2(source, element, &output, -1, -1);
  vexo::erosion1(source, element, &output);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(output.width, -1);
}

TEST(Erosion2, AgreesWithPixelOracle) {
  for (uint64_t seed = 0; seed < 3000; ++seed) {
    SCOPED_TRACE(seed);
    Random d(seed);
    const PixelSet element = random_element(d);
    // Every other source is made so that something is left.
    PixelSet source = random_pixels(d);
    if (d.chance(50)) source = oracle_dilate(source, element);
    region output;
    vexo::erosion2(region_of(source), region_of(element), &output, -1, -1);
    const PixelSet steps = centred(element, upper_middle);
    ASSERT_EQ(runs_of(output), oracle_erode(source, steps).runs());
  }
}

TEST(Erosion2, AgreesWithPixelOracleAroundAnyReferencePoint) {
  for (uint64_t seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    Random d(seed);
    const PixelSet element = random_element(d);
    const PixelSet source = oracle_dilate(random_pixels(d), element);
    const int col = d.between(0, 60);
    const int row = d.between(-60, -2);
    region output;
    vexo::erosion2(region_of(source), region_of(element), &output, col, row);
    ASSERT_EQ(runs_of(output),
              oracle_erode(source, seen_from(element, row, col)).runs());
  }
}

TEST(Erosion1, AgreesWithPixelOracle) {
  for (uint64_t seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE(seed);
    Random d(seed);
    const PixelSet shape = random_element(d);
    PixelSet pixels = random_pixels(d);
    if (d.chance(50)) pixels = oracle_dilate(pixels, shape);
    region source = region_of(pixels);
    region element = region_of(shape);
    region output;
    vexo::erosion1(source, element, &output);
    ASSERT_EQ(chords_of(output),
              oracle_erode(pixels, centred(shape, lower_middle)).runs());
  }
}

}  // namespace
}  // namespace vexo_test
