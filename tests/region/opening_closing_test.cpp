// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

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

Runs square(int size) {
  Runs rows;
  for (int r = 0; r < size; ++r) rows.push_back({r, 0, size - 1});
  return rows;
}

using Operation = void (*)(const region&, const region&, region*);

Runs result_of(Operation operation, const region& source,
               const region& element) {
  region output;
  operation(source, element, &output);
  return runs_of(output);
}

TEST(Opening, ThreeByThreeSquareByRadiusOneCircleLosesItsCorners) {
  EXPECT_EQ(result_of(vexo::opening, region_of(square(3)), circle(1)),
            (Runs{{0, 1, 1}, {1, 0, 2}, {2, 1, 1}}));
}

TEST(Opening, ByAnElementThatFitsNowhereIsEmpty) {
  region source = region_of(square(3), 30, 20);
  region element = circle(4);
  region output = region_of({{1, 2, 3}});
  vexo::opening(source, element, &output);
  vexo::opening1(source, element, &output);
  EXPECT_EQ(output.run_count, 0u);
  EXPECT_EQ(output.chord_count, 0);
  EXPECT_EQ(output.width, 30);
  EXPECT_EQ(output.height, 20);
}

TEST(Opening, EvenElementsComeBackToTheirPlace) {
  region source = region_of(square(4));
  region element = rectangle(4, 4);
  region by_chords;
  vexo::opening1(source, element, &by_chords);
  EXPECT_EQ(result_of(vexo::opening, source, element), square(4));
  EXPECT_EQ(chords_of(by_chords), square(4));
}

TEST(Closing, FillsAOnePixelGap) {
  EXPECT_EQ(result_of(vexo::closing, region_of({{5, 0, 3}, {5, 5, 9}}, 20, 20),
                      rectangle(3, 3)),
            (Runs{{5, 0, 9}}));
}

TEST(Closing, LeavesNoRunOutsideTheImage) {
  // Two pixels in corners of the image; closing joins them with the border.
  const region source = region_of({{0, 0, 0}, {2, 0, 0}, {3, 9, 9}}, 10, 4);
  for (const vexo_test::Run& run :
       result_of(vexo::closing, source, circle(3))) {
    EXPECT_GE(run.row, 0);
    EXPECT_LT(run.row, 4);
    EXPECT_GE(run.begin, 0);
    EXPECT_LT(run.end, 10);
  }
}

TEST(Closing, ClipsWhatLayOutsideTheImage) {
  const region source = region_of({{-3, 0, 5}, {1, -4, 12}, {9, 0, 0}}, 10, 4);
  EXPECT_EQ(result_of(vexo::closing, source, circle(1)), (Runs{{1, 0, 9}}));
}

TEST(Closing, DoesNotClipWithoutAnImageSize) {
  for (const auto& [width, height] :
       {std::pair{-1, -1}, std::pair{0, 5}, std::pair{5, 0}}) {
    const Runs runs{{-2, 0, 5}, {9, 0, 0}};
    EXPECT_EQ(
        result_of(vexo::closing, region_of(runs, width, height), circle(1)),
        runs);
  }
}

TEST(Closing, OutputThatHasChildrenCountsAsInside) {
  const Runs runs{{-2, 0, 5}, {9, 0, 0}};
  region output;
  output.child_count = 1;
  vexo::closing(region_of(runs, 5, 5), circle(1), &output);
  EXPECT_EQ(output.child_count, 1);
  output.child_count = 0;
  EXPECT_EQ(runs_of(output), runs);
}

TEST(TopHat, OfARegionThatTheElementFitsEverywhereIsEmpty) {
  EXPECT_EQ(result_of(vexo::top_hat, region_of(square(9)), rectangle(3, 3)),
            Runs{});
}

TEST(TopHat, IsWhatOpeningTakesAway) {
  EXPECT_EQ(result_of(vexo::top_hat, region_of(square(3)), circle(1)),
            (Runs{{0, 0, 0}, {0, 2, 2}, {2, 0, 0}, {2, 2, 2}}));
}

TEST(BottomHat, OfARegionWithoutNarrowGapsIsEmpty) {
  EXPECT_EQ(
      result_of(vexo::bottom_hat, region_of({{0, 0, 5}, {0, 20, 25}}, 30, 1),
                rectangle(3, 3)),
      Runs{});
}

TEST(BottomHat, IsWhatClosingAdds) {
  EXPECT_EQ(
      result_of(vexo::bottom_hat, region_of({{5, 0, 3}, {5, 5, 9}}, 20, 20),
                rectangle(3, 3)),
      (Runs{{5, 4, 4}}));
}

TEST(OpeningClosing, SourceWithoutRunsLeavesTheOutputAsItWas) {
  const region empty;
  for (const Operation operation : {vexo::opening, vexo::closing}) {
    region output = region_of({{1, 2, 3}}, 7, 8);
    operation(empty, circle(1), &output);
    EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
    EXPECT_EQ(output.width, 7);
  }
  region no_chords;
  region element = circle(1);
  region output = region_of({{1, 2, 3}});
  vexo::opening1(no_chords, element, &output);
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
}

TEST(Hats, SourceWithoutRunsMeetsTheUntouchedOutput) {
  const region empty;
  region output = region_of({{1, 2, 3}}, 7, 8);
  vexo::bottom_hat(empty, circle(1), &output);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  vexo::top_hat(empty, circle(1), &output);
  EXPECT_EQ(output.run_count, 0u);
  EXPECT_EQ(output.width, 7);
  EXPECT_EQ(output.height, 8);
}

TEST(OpeningClosing, SourceWithChildrenLeavesTheOutputAsItWas) {
  region parent = region_of(square(5));
  region element = circle(1);
  region output = region_of({{1, 2, 3}});
  parent.child_count = 1;
  for (const Operation operation :
       {vexo::opening, vexo::closing, vexo::top_hat, vexo::bottom_hat})
    operation(parent, element, &output);
  vexo::opening1(parent, element, &output);
  parent.child_count = 0;
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(output), (Runs{{1, 2, 3}}));
}

TEST(OpeningClosing, OutputMayBeTheSource) {
  for (uint64_t seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const Runs runs = random_pixels(random).runs();
    region element = region_of(random_element(random));
    for (const Operation operation :
         {vexo::opening, vexo::closing, vexo::top_hat, vexo::bottom_hat}) {
      region source = region_of(runs, 40, 12);
      const Runs expected = result_of(operation, source, element);
      operation(source, element, &source);
      ASSERT_EQ(runs_of(source), expected);
    }
    region source = region_of(runs);
    region expected;
    vexo::opening1(source, element, &expected);
    vexo::opening1(source, element, &source);
    ASSERT_EQ(chords_of(source), chords_of(expected));
  }
}

TEST(OpeningClosing, CopyTheImageSize) {
  for (const Operation operation :
       {vexo::opening, vexo::closing, vexo::top_hat, vexo::bottom_hat}) {
    region output;
    operation(region_of(square(5), 30, 20), circle(1), &output);
    EXPECT_EQ(output.width, 30);
    EXPECT_EQ(output.height, 20);
  }
}

TEST(OpeningClosing, AgreeWithThePixelOracle) {
  for (uint64_t seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const PixelSet pixels = random_pixels(random);
    const PixelSet shape = random_element(random);
    const PixelSet steps = centred(shape, upper_middle);
    const int width = random.between(1, 60);
    const int height = random.between(1, 20);
    region source = region_of(pixels.runs(), width, height);
    region element = region_of(shape);

    const PixelSet opened = oracle_dilate(oracle_erode(pixels, steps), steps);
    ASSERT_EQ(result_of(vexo::opening, source, element), opened.runs());
    ASSERT_EQ(result_of(vexo::top_hat, source, element),
              oracle_difference(pixels, opened).runs());
    region by_chords;
    vexo::opening1(source, element, &by_chords);
    ASSERT_EQ(chords_of(by_chords), opened.runs());

    const PixelSet mirrored = oracle_reflect(steps);
    const PixelSet closed = oracle_clip(
        oracle_erode(oracle_dilate(pixels, mirrored), mirrored), width, height);
    ASSERT_EQ(result_of(vexo::closing, source, element), closed.runs());
    ASSERT_EQ(result_of(vexo::bottom_hat, source, element),
              oracle_difference(closed, pixels).runs());
  }
}

TEST(OpeningClosing, AreIdempotent) {
  for (uint64_t seed = 0; seed < 500; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const region source = region_of(random_pixels(random));
    const region element = region_of(random_element(random));
    for (const Operation operation : {vexo::opening, vexo::closing}) {
      const Runs once = result_of(operation, source, element);
      if (once.empty()) continue;
      ASSERT_EQ(result_of(operation, region_of(once), element), once);
    }
  }
}

TEST(TopHat, OfRunsOutOfOrderIsThatOfSortedOnes) {
  const Runs shuffled = {{2, 0, 9}, {1, 0, 9}, {0, 0, 9}, {0, 20, 20}};
  const region source = region_of(shuffled);
  EXPECT_EQ(result_of(vexo::top_hat, source, rectangle(3, 3)),
            (Runs{{0, 20, 20}}));
  EXPECT_EQ(result_of(vexo::bottom_hat, source, rectangle(3, 3)), Runs{});
}

}  // namespace
}  // namespace vexo_test
