// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <vector>

#include "pictures.h"
#include "random_regions.h"
#include "region/internal/parallel.h"
#include "region/internal/vector_level.h"
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

INSTANTIATE_TEST_SUITE_P(Forms, FillUp,
                         testing::Values(Form::kChords, Form::kRuns,
                                         Form::kRuns2));

}  // namespace
