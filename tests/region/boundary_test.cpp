// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>

#include "region/internal/parallel.h"
#include "region/internal/row_scan.h"
#include "region/operations.h"
#include "region_cases.h"

namespace vexo_test {
namespace {

using vexo::region;
using vexo::internal::vector_level;

Runs boundary_of(const region& source, const char* type) {
  region output;
  vexo::boundary(source, &output, type);
  return runs_of(output);
}

TEST(Boundary, InnerOfAThreeByThreeSquareIsItsRing) {
  EXPECT_EQ(boundary_of(picture({"###", "###", "###"}), "inner"),
            runs_in({"###", "#.#", "###"}));
}

TEST(Boundary, OuterOfAThreeByThreeSquareIsTwelvePixels) {
  EXPECT_EQ(boundary_of(picture({"###", "###", "###"}), "outer"),
            (Runs{{-1, 0, 2},
                  {0, -1, -1},
                  {0, 3, 3},
                  {1, -1, -1},
                  {1, 3, 3},
                  {2, -1, -1},
                  {2, 3, 3},
                  {3, 0, 2}}));
}

TEST(Boundary, InnerFilledLeavesOutHoles) {
  const region ring = picture({"#####", "#####", "##.##", "#####", "#####"});
  EXPECT_EQ(boundary_of(ring, "inner_filled"),
            runs_in({"#####", "#...#", "#...#", "#...#", "#####"}));
  EXPECT_EQ(boundary_of(ring, "inner"),
            runs_in({"#####", "#.#.#", "##.##", "#.#.#", "#####"}));
}

TEST(Boundary, RunsBehindOneThatEndsAtTheLastColumnAreSortedIn) {
  constexpr int kLast = 2147483647;
  EXPECT_EQ(boundary_of(region_of({{0, kLast - 9, kLast}, {0, 5, 7}}), "inner"),
            (Runs{{0, 5, 7}, {0, kLast - 9, kLast}}));
  EXPECT_EQ(boundary_of(
                region_of({{0, kLast - 9, kLast}, {0, kLast - 20, kLast - 11}}),
                "inner"),
            (Runs{{0, kLast - 20, kLast - 11}, {0, kLast - 9, kLast}}));
  EXPECT_EQ(
      boundary_of(region_of({{0, kLast - 9, kLast}, {0, kLast - 5, kLast - 3}}),
                  "inner"),
      (Runs{{0, kLast - 9, kLast}}));
}

TEST(Boundary, InnerFilledOfAPixelOrALineIsItself) {
  EXPECT_EQ(boundary_of(region_of({{5, 7, 7}}), "inner_filled"),
            (Runs{{5, 7, 7}}));
  EXPECT_EQ(boundary_of(region_of({{5, 7, 11}}), "inner_filled"),
            (Runs{{5, 7, 11}}));
}

TEST(Boundary, InnerFilledSeesComponentsInsideHoles) {
  const Picture nested = {"#######", "#.....#", "#.###.#", "#.###.#",
                          "#.###.#", "#.....#", "#######"};
  EXPECT_EQ(boundary_of(picture(nested), "inner_filled"),
            runs_in({"#######", "#.....#", "#.###.#", "#.#.#.#", "#.###.#",
                     "#.....#", "#######"}));
}

TEST(Boundary, OuterInTheCornerReachesRowAndColumnMinusOne) {
  EXPECT_EQ(boundary_of(picture({"#.", ".."}), "outer"),
            (Runs{{-1, 0, 0}, {0, -1, -1}, {0, 1, 1}, {1, 0, 0}}));
}

TEST(Boundary, OtherTypesLeaveTheOutputAsItWas) {
  region output = region_of({{1, 2, 3}}, 7, 8);
  for (const char* type : {"Inner", "", "inner ", "outer_filled", "OUTER"}) {
    vexo::boundary(picture({"##", "##"}), &output, type);
    EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}})) << type;
    EXPECT_EQ(output.width, 7);
  }
}

TEST(Boundary, SourceWithChildrenOrWithoutRunsLeavesTheOutputAsItWas) {
  region parent = picture({"##", "##"});
  parent.child_count = 1;
  const region empty;
  region output = region_of({{1, 2, 3}}, 7, 8);
  for (const char* type : {"inner", "inner_filled", "outer"}) {
    vexo::boundary(parent, &output, type);
    vexo::boundary(empty, &output, type);
    EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}})) << type;
    EXPECT_EQ(output.width, 7);
  }
  parent.child_count = 0;
}

TEST(Boundary, InnerFilledAppendsToWhatTheOutputHolds) {
  region output = region_of({{9, 2, 3}});
  vexo::boundary(picture({"##", "##"}), &output, "inner_filled");
  EXPECT_EQ(runs_of(output), (Runs{{9, 2, 3}, {0, 0, 1}, {1, 0, 1}}));
}

TEST(Boundary, InnerAndOuterReplaceWhatTheOutputHolds) {
  for (const char* type : {"inner", "outer"}) {
    region output = region_of({{9, 2, 3}});
    vexo::boundary(picture({"##", "##"}), &output, type);
    EXPECT_EQ(runs_of(output), boundary_of(picture({"##", "##"}), type));
  }
}

TEST(Boundary, OutputMayBeTheSource) {
  for (const char* type : {"inner", "outer"}) {
    region source = picture({"####", "####", "####", ".###"});
    const Runs expected = boundary_of(source, type);
    vexo::boundary(source, &source, type);
    EXPECT_EQ(runs_of(source), expected) << type;
  }
}

TEST(Boundary, CopiesTheImageSize) {
  for (const char* type : {"inner", "inner_filled", "outer"}) {
    region output;
    vexo::boundary(region_of({{0, 0, 4}}, 30, 20), &output, type);
    EXPECT_EQ(output.width, 30) << type;
    EXPECT_EQ(output.height, 20) << type;
  }
}

TEST(Boundary, InnerFilledFollowsTheRunsNotThePixels) {
  // A walk along this line would take more than an hour.
  const region line = region_of({{-5, INT32_MIN, INT32_MAX}});
  EXPECT_EQ(boundary_of(line, "inner_filled"), runs_of(line));
}

TEST(Boundary, AgreesWithThePixelOracle) {
  for (uint64_t seed = 0; seed < vexo_test::cases(2000); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const PixelSet pixels = random_pixels(random);
    const region source = region_of(pixels);
    ASSERT_EQ(boundary_of(source, "inner"),
              oracle_inner_boundary(pixels).runs());
    ASSERT_EQ(boundary_of(source, "outer"),
              oracle_outer_boundary(pixels).runs());
  }
}

// What a test sets is undone when it ends, however it does.
class BoundaryForms : public testing::Test {
 protected:
  ~BoundaryForms() override {
    vexo::internal::set_vector_limit(vector_level::kAvx512);
    vexo::internal::set_thread_limit(0);
    vexo::internal::set_hand_over_cost(-1);
  }
};

TEST_F(BoundaryForms, DenseAndSparseRowsThreadsAndVectorWidthsAgree) {
  vexo::internal::set_hand_over_cost(0);
  for (uint64_t seed = 0; seed < vexo_test::large_cases(20); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Runs runs;
    for (int row = -90; row < 200; ++row) {
      if (seed % 3 == 0 && row % 50 > 30) continue;
      const int most = seed % 2 == 0 ? 5 : 150;
      for (int column = random.between(-9, 9); column < 900;) {
        const int end = column + random.between(0, most);
        runs.push_back({row, column, end});
        column = end + 2 + random.between(0, most);
      }
    }
    const region source = region_of(runs);
    const PixelSet pixels = pixels_of(runs);
    const Runs inner = oracle_inner_boundary(pixels).runs();
    const Runs outer = oracle_outer_boundary(pixels).runs();
    for (const int threads : {1, 2, 8}) {
      for (const vector_level level :
           {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
        vexo::internal::set_thread_limit(threads);
        vexo::internal::set_vector_limit(level);
        ASSERT_TRUE(boundary_of(source, "inner") == inner &&
                    boundary_of(source, "outer") == outer)
            << threads << " " << static_cast<int>(level);
      }
    }
  }
}

TEST(Boundary, OuterBeyond32BitsThrowsAndLeavesTheOutputAsItWas) {
  Runs runs;
  for (int column = 0; column < 200; column += 2)
    runs.push_back({INT32_MAX, column, column});
  region output = region_of({{1, 2, 3}});
  EXPECT_THROW(vexo::boundary(region_of(runs), &output, "outer"),
               std::runtime_error);
  EXPECT_EQ(runs_of(output), (Runs{{1, 2, 3}}));
  EXPECT_EQ(boundary_of(region_of(runs), "inner"), runs);
}

TEST(Boundary, InnerFilledIsWhatAWalkAroundEachComponentVisits) {
  for (uint64_t seed = 0; seed < vexo_test::cases(1500); ++seed) {
    SCOPED_TRACE(seed);
    const region source = picture(random_picture(seed, 24));
    if (source.run_count == 0) continue;
    const PixelSet pixels = pixels_of(runs_of(source));
    const Runs contours = boundary_of(source, "inner_filled");
    ASSERT_EQ(contours, oracle_contours(pixels, oracle_walked_contour).runs());
    ASSERT_EQ(contours, oracle_contours(pixels, oracle_contour).runs());
  }
}

}  // namespace
}  // namespace vexo_test
