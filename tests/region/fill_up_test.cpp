// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "pictures.h"
#include "random_regions.h"
#include "region/internal/bit_fill.h"
#include "region/internal/parallel.h"
#include "region/internal/vector_level.h"
#include "region/internal/views.h"
#include "region/operations.h"

namespace {

using vexo::region;
using vexo::internal::vector_level;
using vexo_test::Picture;
using vexo_test::Run;
using vexo_test::Runs;

enum class Form { kChords, kRuns, kRuns2 };

void fill(Form form, region& input, region* result) {
  switch (form) {
    case Form::kChords:
      return vexo::fill_up(input, result);
    case Form::kRuns:
      return vexo::fill_up_y(input, result);
    case Form::kRuns2:
      return vexo::fill_up_y2(input, result);
  }
}

Runs result_runs(Form form, const region& r) {
  return form == Form::kChords ? vexo_test::chords_of(r)
                               : vexo_test::runs_of(r);
}

Picture filled(Form form, const Picture& p) {
  region input = vexo_test::picture(p);
  region result;
  fill(form, input, &result);
  const Runs runs = result_runs(form, result);
  EXPECT_TRUE(vexo_test::is_canonical(runs));
  EXPECT_EQ(vexo_test::runs_of(input), vexo_test::runs_in(p));
  if (!runs.empty()) {
    EXPECT_EQ(result.width, input.width);
    EXPECT_EQ(result.height, input.height);
  }
  const int width = static_cast<int>(p[0].size());
  return vexo_test::to_picture(runs, width, static_cast<int>(p.size()));
}

// Everything that the background cannot reach from beyond the border. Growing
// the reach by whole sweeps is slow and needs no stack.
Picture oracle(const Picture& p) {
  const int height = static_cast<int>(p.size());
  const int width = static_cast<int>(p[0].size());
  Picture reached(height + 2, std::string(width + 2, '.'));
  reached[0].assign(width + 2, '#');
  const auto wall = [&](int r, int c) {
    return r >= 1 && r <= height && c >= 1 && c <= width &&
           p[r - 1][c - 1] == '#';
  };
  for (bool grown = true; grown;) {
    grown = false;
    for (int r = 0; r < height + 2; ++r) {
      for (int c = 0; c < width + 2; ++c) {
        if (reached[r][c] == '#' || wall(r, c)) continue;
        const bool near = (r > 0 && reached[r - 1][c] == '#') ||
                          (r <= height && reached[r + 1][c] == '#') ||
                          (c > 0 && reached[r][c - 1] == '#') ||
                          (c <= width && reached[r][c + 1] == '#');
        if (near) reached[r][c] = '#';
        grown |= near;
      }
    }
  }
  Picture out(height, std::string(width, '.'));
  for (int r = 0; r < height; ++r) {
    for (int c = 0; c < width; ++c) {
      if (reached[r + 1][c + 1] != '#') out[r][c] = '#';
    }
  }
  return out;
}

class FillUp : public testing::TestWithParam<Form> {
 protected:
  ~FillUp() override {
    vexo::internal::set_thread_limit(0);
    vexo::internal::set_vector_limit(vector_level::kAvx512);
  }
};

TEST_P(FillUp, SolidRectangleIsUnchanged) {
  const Picture p{".....", ".###.", ".###.", "....."};
  EXPECT_EQ(filled(GetParam(), p), p);
}

TEST_P(FillUp, RingBecomesTheFullSquare) {
  EXPECT_EQ(filled(GetParam(), {"###", "#.#", "###"}),
            (Picture{"###", "###", "###"}));
}

TEST_P(FillUp, OpeningToTheBoxEdgeKeepsTheInside) {
  const Picture p{"#####", "#....", "#.###", "#...#", "#####"};
  EXPECT_EQ(filled(GetParam(), p), p);
}

TEST_P(FillUp, HolesThatMeetAtACornerAreBothFilled) {
  EXPECT_EQ(filled(GetParam(), {"####", "#.##", "##.#", "####"}),
            (Picture{"####", "####", "####", "####"}));
}

TEST_P(FillUp, CornerIsNoWayOut) {
  EXPECT_EQ(filled(GetParam(), {".###", "#.##", "####"}),
            (Picture{".###", "####", "####"}));
}

TEST_P(FillUp, IslandInAHoleIsSwallowed) {
  EXPECT_EQ(filled(GetParam(), {"#####", "#...#", "#.#.#", "#...#", "#####"}),
            (Picture{"#####", "#####", "#####", "#####", "#####"}));
}

TEST_P(FillUp, HoleThatLeadsOutFartherDownIsNoHole) {
  const Picture p{"#######", "#.....#", "#.###.#",
                  "#.#.#.#", "#.#.#.#", "###.###"};
  const Picture out = filled(GetParam(), p);
  EXPECT_EQ(out[3], "###.###");
  EXPECT_EQ(out, oracle(p));
}

TEST_P(FillUp, RowsWithoutRunsAreOutside) {
  const Picture p{"#.#", "...", "#.#"};
  EXPECT_EQ(filled(GetParam(), p), p);
}

TEST_P(FillUp, TouchingRunsAreJoined) {
  region input = vexo_test::region_of({{0, 0, 4}, {0, 5, 9}});
  region result;
  fill(GetParam(), input, &result);
  EXPECT_EQ(result_runs(GetParam(), result), (Runs{{0, 0, 9}}));
}

TEST_P(FillUp, ResultMayBeTheInput) {
  region r = vexo_test::picture({"###", "#.#", "###"});
  fill(GetParam(), r, &r);
  EXPECT_EQ(result_runs(GetParam(), r),
            (Runs{{0, 0, 2}, {1, 0, 2}, {2, 0, 2}}));
}

TEST_P(FillUp, NothingHappensWithoutRunsOrWithChildren) {
  region with_children = vexo_test::picture({"#.#"});
  ASSERT_EQ(vexo::connection(with_children, &with_children, 0), 2);
  region empty;
  for (region* input : {&with_children, &empty}) {
    region result = vexo_test::region_of({{7, 8, 9}}, 4, 4);
    fill(GetParam(), *input, &result);
    EXPECT_EQ(vexo_test::runs_of(result), (Runs{{7, 8, 9}}));
    EXPECT_EQ(vexo_test::chords_of(result), (Runs{{7, 8, 9}}));
    EXPECT_EQ(result.width, 4);
  }
}

TEST_P(FillUp, FillsOnlyItsOwnForm) {
  region input = vexo_test::picture({"###", "#.#", "###"});
  region result = vexo_test::region_of({{7, 8, 9}});
  fill(GetParam(), input, &result);
  const bool chords = GetParam() == Form::kChords;
  const Runs kept =
      chords ? vexo_test::runs_of(result) : vexo_test::chords_of(result);
  EXPECT_EQ(kept, (Runs{{7, 8, 9}}));
}

TEST_P(FillUp, AgreesWithPixelOracle) {
  for (uint64_t seed = 0; seed < vexo_test::cases(2000); ++seed) {
    SCOPED_TRACE(seed);
    const Picture p = vexo_test::random_picture(seed);
    vexo::internal::set_thread_limit(1 + seed % 5);
    vexo::internal::set_vector_limit(seed % 4 == 0 ? vector_level::kPlain
                                                   : vector_level::kAvx512);
    ASSERT_EQ(filled(GetParam(), p), oracle(p));
  }
}

// Walls in every other column, each open at its top or its bottom in turn, and
// a way in at the left: the flood goes down and up once for every wall.
Picture winding(int walls) {
  const int height = 12, width = 2 * walls + 3;
  Picture p(height, std::string(width, '.'));
  p[0].assign(width, '#');
  p[height - 1].assign(width, '#');
  for (int c = 0; c < width; c += 2) {
    for (int r = 1; r < height - 1; ++r) p[r][c] = '#';
    if (c > 0 && c + 1 < width) p[c % 4 == 0 ? 1 : height - 2][c] = '.';
  }
  p[1][0] = '.';
  return p;
}

TEST_P(FillUp, WindingWayThroughManyRunsLeadsIn) {
  for (int walls : {3, 14, 15, 16, 17, 100}) {
    SCOPED_TRACE(walls);
    const Picture p = winding(walls);
    EXPECT_EQ(filled(GetParam(), p), p);
    Picture closed = p;
    closed[1][0] = '#';
    EXPECT_EQ(filled(GetParam(), closed), oracle(closed));
  }
}

TEST_P(FillUp, DenseNoiseAgreesWithPixelOracle) {
  for (int percent : {35, 60, 80}) {
    SCOPED_TRACE(percent);
    vexo_test::Random random(static_cast<uint64_t>(percent));
    Picture p(150, std::string(520 + percent, '.'));
    vexo_test::random_detail::noise(random, percent, p);
    p[40].assign(p[40].size(), '.');
    ASSERT_EQ(filled(GetParam(), p), oracle(p));
  }
}

std::optional<Runs> filled_in_bits(const region& r) {
  const auto result = vexo::internal::bit_fill_up(vexo::internal::runs_of(r));
  if (!result) return std::nullopt;
  Runs runs;
  for (size_t i = 0; i < result->size(); ++i) {
    runs.push_back({result->rows()[i], result->begins()[i], result->ends()[i]});
  }
  return runs;
}

TEST(BitFill, AgreesWithPixelOracleHoweverFewTheRuns) {
  for (uint64_t seed = 0; seed < vexo_test::cases(2000); ++seed) {
    SCOPED_TRACE(seed);
    const Picture p = vexo_test::random_picture(seed);
    const Runs runs = vexo_test::runs_in(p);
    if (runs.empty()) continue;
    const auto result = filled_in_bits(vexo_test::picture(p));
    ASSERT_TRUE(result.has_value());
    ASSERT_EQ(*result, vexo_test::runs_in(oracle(p)));
  }
}

TEST(BitFill, GivesUpWhereTheWayWinds) {
  EXPECT_TRUE(filled_in_bits(vexo_test::picture(winding(3))));
  EXPECT_FALSE(filled_in_bits(vexo_test::picture(winding(100))));
}

// The gap is 20000 columns wide, far more than a word, and has its way out at
// one of its ends or none.
TEST(BitFill, FloodsLongGapsFromEitherEnd) {
  const Runs hollow{{0, -9, 20000}, {1, -9, -9}, {1, 20000, 20000}};
  for (int way_out : {-8, 0, 54, 55, 56, 10000, 19999}) {
    SCOPED_TRACE(way_out);
    Runs open = hollow;
    open.push_back({2, -9, way_out - 1});
    open.push_back({2, way_out + 1, 20000});
    EXPECT_EQ(filled_in_bits(vexo_test::region_of(open)), open);
  }
  Runs closed = hollow;
  closed.push_back({2, -9, 20000});
  EXPECT_EQ(filled_in_bits(vexo_test::region_of(closed)),
            (Runs{{0, -9, 20000}, {1, -9, 20000}, {2, -9, 20000}}));
}

TEST(BitFill, ColumnsAndRowsMayBeTheOutermost) {
  const int32_t far = INT32_MAX;
  const Runs ring{{far - 2, far - 2, far},
                  {far - 1, far - 2, far - 2},
                  {far - 1, far, far},
                  {far, far - 2, far}};
  EXPECT_EQ(filled_in_bits(vexo_test::region_of(ring)),
            (Runs{{far - 2, far - 2, far},
                  {far - 1, far - 2, far},
                  {far, far - 2, far}}));
}

INSTANTIATE_TEST_SUITE_P(Forms, FillUp,
                         testing::Values(Form::kChords, Form::kRuns,
                                         Form::kRuns2));

// Nothing is promised of them but that memory stays as it is.
TEST_P(FillUp, RunsThatEndBeforeTheyBeginDoNoHarm) {
  for (const vector_level level :
       {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
    vexo::internal::set_vector_limit(level);
    Runs runs;
    for (int row = 0; row < 2; ++row) {
      for (int i = 0; i < 300; ++i) runs.push_back({row, 1000, 0});
    }
    region input = vexo_test::region_of(runs);
    input.to_3();
    region result;
    fill(GetParam(), input, &result);
  }
}

}  // namespace
