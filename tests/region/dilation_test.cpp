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

region rectangle(int width, int height) {
  region result;
  vexo::gen_se_rectangle(width, height, &result);
  return result;
}

const Runs kPlusAtFive = {{4, 5, 5}, {5, 4, 6}, {6, 5, 5}};

TEST(Dilation2, SinglePixelByRadiusOneCircleGivesFivePixelPlus) {
  region output;
  vexo::dilation2(region_of(Runs{{5, 5, 5}}), circle(1), &output, -1, -1);
  EXPECT_EQ(runs_of(output), kPlusAtFive);
}

TEST(Dilation1, SinglePixelByRadiusOneCircleGivesFivePixelPlus) {
  region source = region_of(Runs{{5, 5, 5}});
  region element = circle(1);
  region output;
  vexo::dilation1(source, element, &output);
  EXPECT_EQ(chords_of(output), kPlusAtFive);
}

TEST(Dilation1, ClipsToTheImage) {
  region source = region_of(Runs{{0, 0, 1}, {1, 9, 9}});
  source.width = 10;
  source.height = 2;
  region element = circle(1);
  region output;
  vexo::dilation1(source, element, &output);
  EXPECT_EQ(chords_of(output),
            (Runs{{0, 0, 2}, {0, 9, 9}, {1, 0, 1}, {1, 8, 9}}));
}

TEST(Dilation1, DoesNotClipWithoutAnImageSize) {
  region source = region_of(Runs{{0, 0, 0}});
  region element = circle(1);
  region output;
  vexo::dilation1(source, element, &output);
  EXPECT_EQ(chords_of(output), (Runs{{-1, 0, 0}, {0, -1, 1}, {1, 0, 0}}));
}

TEST(Dilation2, KeepsRunsOutsideTheImage) {
  region source = region_of(Runs{{0, 0, 1}, {1, 9, 9}});
  source.width = 10;
  source.height = 2;
  region output;
  vexo::dilation2(source, rectangle(3, 3), &output, -1, -1);
  EXPECT_EQ(runs_of(output), (Runs{{-1, -1, 2},
                                   {0, -1, 2},
                                   {0, 8, 10},
                                   {1, -1, 2},
                                   {1, 8, 10},
                                   {2, 8, 10}}));
}

TEST(Dilation2, RunsWithAOnePixelGapBecomeOne) {
  region output;
  vexo::dilation2(region_of(Runs{{0, 0, 3}, {0, 5, 9}}),
                  region_of(Runs{{0, 0, 1}}), &output, 0, 0);
  EXPECT_EQ(runs_of(output), (Runs{{0, 0, 10}}));
}

TEST(Dilation2, IsNotReflected) {
  region output;
  vexo::dilation2(region_of(Runs{{0, 0, 0}}), region_of(Runs{{0, 0, 3}}),
                  &output, 0, 0);
  EXPECT_EQ(runs_of(output), (Runs{{0, 0, 3}}));
}

TEST(Dilation1, IsReflectedThroughTheReferencePoint) {
  // An L: its reference point is (0, 0) of its own coordinates.
  region source = region_of(Runs{{5, 5, 5}});
  region element = region_of(Runs{{0, 0, 1}, {1, 0, 0}});
  region output;
  vexo::dilation1(source, element, &output);
  EXPECT_EQ(chords_of(output), (Runs{{4, 5, 5}, {5, 4, 5}}));
}

TEST(Dilation2, EitherReferenceCoordinateMinusOneMeansTheMiddle) {
  const region source = region_of(Runs{{0, 0, 4}, {2, 7, 7}});
  const region element = rectangle(4, 3);
  region automatic;
  vexo::dilation2(source, element, &automatic, -1, -1);
  for (const auto& [col, row] : {std::pair{-1, 5}, std::pair{5, -1}}) {
    region output;
    vexo::dilation2(source, element, &output, col, row);
    EXPECT_EQ(runs_of(output), runs_of(automatic));
  }
  region explicit_middle;
  vexo::dilation2(source, element, &explicit_middle, 2, 1);
  EXPECT_EQ(runs_of(explicit_middle), runs_of(automatic));
}

TEST(Dilation, EvenRectanglesExtendBothFormsByHalfToTheLeft) {
  region source = region_of(Runs{{9, 9, 9}});
  region element = rectangle(4, 4);
  region fast;
  region reference;
  vexo::dilation2(source, element, &fast, -1, -1);
  vexo::dilation1(source, element, &reference);
  const Runs expected{{7, 7, 10}, {8, 7, 10}, {9, 7, 10}, {10, 7, 10}};
  EXPECT_EQ(runs_of(fast), expected);
  EXPECT_EQ(chords_of(reference), expected);
}

TEST(Dilation, EvenCrossesDifferByOnePixelInTheirStem) {
  region source = region_of(Runs{{9, 9, 9}});
  region element;
  vexo::gen_se_cross(4, 4, &element);
  region fast;
  region reference;
  vexo::dilation2(source, element, &fast, -1, -1);
  vexo::dilation1(source, element, &reference);
  EXPECT_EQ(runs_of(fast),
            (Runs{{7, 9, 9}, {8, 9, 9}, {9, 7, 10}, {10, 9, 9}}));
  EXPECT_EQ(chords_of(reference),
            (Runs{{7, 8, 8}, {8, 7, 10}, {9, 8, 8}, {10, 8, 8}}));
}

TEST(Dilation2, OutputMayBeTheSource) {
  region source = region_of(Runs{{0, 0, 4}, {3, -7, 7}});
  region expected;
  vexo::dilation2(source, circle(3), &expected, -1, -1);
  vexo::dilation2(source, circle(3), &source, -1, -1);
  EXPECT_EQ(runs_of(source), runs_of(expected));
}

TEST(Dilation, CopiesTheImageSize) {
  region source = region_of(Runs{{0, 0, 4}});
  source.width = 30;
  source.height = 20;
  region element = circle(1);
  region fast;
  region reference;
  vexo::dilation2(source, element, &fast, -1, -1);
  vexo::dilation1(source, element, &reference);
  EXPECT_EQ(fast.width, 30);
  EXPECT_EQ(fast.height, 20);
  EXPECT_EQ(reference.width, 30);
  EXPECT_EQ(reference.height, 20);
}

TEST(Dilation, SourceWithoutRunsLeavesOutputAsItWas) {
  region empty;
  empty.width = 5;
  region element = circle(1);
  region output = region_of(Runs{{1, 2, 3}});
  vexo::dilation2(empty, element, &output, -1, -1);
  vexo::dilation1(empty, element, &output);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(output.width, -1);
}

TEST(Dilation, SourceWithChildrenLeavesOutputAsItWas) {
  region source = region_of(Runs{{0, 0, 4}});
  source.child_count = 1;
  region element = circle(1);
  region output = region_of(Runs{{1, 2, 3}});
  vexo::dilation2(source, element, &output, -1, -1);
  vexo::dilation1(source, element, &output);
  source.child_count = 0;
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
}

TEST(Dilation, EachFormReadsAndWritesItsOwnStorageOnly) {
  region runs_only = region_of(Runs{{0, 0, 4}});
  runs_only.chord_count = 0;
  region chords_only = region_of(Runs{{0, 0, 4}});
  chords_only.run_count = 0;
  region element = circle(1);
  region output = region_of(Runs{{1, 2, 3}});
  vexo::dilation1(runs_only, element, &output);
  vexo::dilation2(chords_only, element, &output, -1, -1);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
  vexo::dilation1(chords_only, element, &output);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  vexo::dilation2(runs_only, element, &output, -1, -1);
  EXPECT_EQ(runs_of(output), chords_of(output));
}

TEST(Dilation, ElementWithChildrenIsUsedUnshiftedByTheReferenceForm) {
  region source = region_of(Runs{{0, 0, 0}});
  region element = region_of(Runs{{3, 2, 2}});
  element.child_count = 1;
  region output;
  vexo::dilation1(source, element, &output);
  element.child_count = 0;
  EXPECT_EQ(chords_of(output), (Runs{{-3, -2, -2}}));
}

TEST(Dilation2, CoordinatesBeyond32BitsThrowAndLeaveTheOutputAsItWas) {
  constexpr int kLow = INT32_MIN;
  constexpr int kHigh = INT32_MAX;
  for (const Runs& runs :
       {Runs{{0, kHigh - 1, kHigh}}, Runs{{0, kLow, kLow}}, Runs{{kLow, 0, 0}},
        Runs{{3, 0, 0}, {kHigh, 0, 0}}}) {
    const region source = region_of(runs, 7, 8);
    region output = region_of({{1, 2, 3}});
    try {
      vexo::dilation2(source, circle(1), &output, -1, -1);
      ADD_FAILURE() << "no error";
    } catch (const std::runtime_error& e) {
      EXPECT_STREQ(e.what(), "realloc failed");
    }
    EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
    EXPECT_EQ(output.width, -1);
  }
}

TEST(Dilation1, CoordinatesBeyond32BitsThrowAndLeaveTheOutputAsItWas) {
  region source = region_of({{0, INT32_MAX, INT32_MAX}});
  region element = circle(1);
  region output = region_of({{1, 2, 3}});
  EXPECT_THROW(vexo::dilation1(source, element, &output), std::runtime_error);
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
}

TEST(Dilation2, ReachesTheVeryLastCoordinates) {
  constexpr int kLow = INT32_MIN;
  constexpr int kHigh = INT32_MAX;
  region output;
  vexo::dilation2(region_of({{kLow + 1, kLow + 1, kHigh - 1},
                             {kHigh - 1, kHigh - 1, kHigh - 1}}),
                  circle(1), &output, -1, -1);
  EXPECT_EQ(runs_of(output), (Runs{{kLow, kLow + 1, kHigh - 1},
                                   {kLow + 1, kLow, kHigh},
                                   {kLow + 2, kLow + 1, kHigh - 1},
                                   {kHigh - 2, kHigh - 1, kHigh - 1},
                                   {kHigh - 1, kHigh - 2, kHigh},
                                   {kHigh, kHigh - 1, kHigh - 1}}));
}

TEST(Dilation2, ReferencePointMayBeFarFromTheElement) {
  region output;
  vexo::dilation2(region_of({{2, 2147483640, 2147483640}}),
                  region_of({{-3, 0, 1}}), &output, 2147483647, -2147483648);
  EXPECT_EQ(runs_of(output), (Runs{{2147483647, -7, -6}}));
}

TEST(Dilation, ElementWithoutRunsLeavesOutputAsItWas) {
  region source = region_of({{0, 0, 4}}, 7, 8);
  region element;
  region output = region_of({{1, 2, 3}});
  vexo::dilation2(source, element, &output, -1, -1);
  vexo::dilation1(source, element, &output);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(output.width, -1);
}

TEST(Dilation2, AgreesWithPixelOracle) {
  for (uint64_t seed = 0; seed < 3000; ++seed) {
    SCOPED_TRACE(seed);
    Random d(seed);
    const PixelSet source = random_pixels(d);
    const PixelSet element = random_element(d);
    region output;
    vexo::dilation2(region_of(source), region_of(element), &output, -1, -1);
    const PixelSet steps = centred(element, upper_middle);
    ASSERT_EQ(runs_of(output), oracle_dilate(source, steps).runs());
  }
}

TEST(Dilation2, AgreesWithPixelOracleAroundAnyReferencePoint) {
  for (uint64_t seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    Random d(seed);
    const PixelSet source = random_pixels(d);
    const PixelSet element = random_element(d);
    const int col = d.between(0, 60);
    const int row = d.between(-60, -2);
    region output;
    vexo::dilation2(region_of(source), region_of(element), &output, col, row);
    ASSERT_EQ(runs_of(output),
              oracle_dilate(source, seen_from(element, row, col)).runs());
  }
}

TEST(Dilation1, AgreesWithPixelOracle) {
  for (uint64_t seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE(seed);
    Random d(seed);
    const PixelSet pixels = random_pixels(d);
    const PixelSet shape = random_element(d);
    region source = region_of(pixels);
    region element = region_of(shape);
    PixelSet expected =
        oracle_dilate(pixels, oracle_reflect(centred(shape, lower_middle)));
    if (d.chance(50)) {
      source.width = d.between(1, 60);
      source.height = d.between(1, 20);
      expected = oracle_clip(expected, source.width, source.height);
    }
    region output;
    vexo::dilation1(source, element, &output);
    ASSERT_EQ(chords_of(output), expected.runs());
  }
}

}  // namespace
}  // namespace vexo_test
