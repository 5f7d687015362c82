// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "pictures.h"
#include "random_regions.h"
#include "region/internal/parallel.h"
#include "region/internal/vector_level.h"
#include "region/operations.h"

namespace {

using vexo::region;
using vexo::internal::vector_level;
using vexo_test::chords_of;
using vexo_test::Picture;
using vexo_test::Run;
using vexo_test::Runs;
using vexo_test::runs_of;

enum class Form { kChords, kRuns, kBands };

int connect(Form form, region& input, region* result, int neighbourhood) {
  switch (form) {
    case Form::kChords:
      return vexo::connection(input, result, neighbourhood);
    case Form::kRuns:
      return vexo::connection_y(input, result, neighbourhood);
    default:
      return vexo::connection2(input, result, neighbourhood);
  }
}

Runs child_runs(Form form, const region& result, int k) {
  const region& child = *result.children[k];
  return form == Form::kRuns ? runs_of(child) : chords_of(child);
}

std::vector<Runs> components(Form form, const Picture& p, int neighbourhood) {
  region input = vexo_test::picture(p);
  region result;
  const int n = connect(form, input, &result, neighbourhood);
  std::vector<Runs> all;
  if (n > 0) {
    EXPECT_EQ(n, result.child_count);
  }
  for (int k = 0; k < result.child_count; ++k) {
    all.push_back(child_runs(form, result, k));
  }
  return all;
}

// Flood fill, pixel by pixel, from each pixel in row-major order.
void flood(Picture& p, int row, int col, int neighbourhood, Picture& found) {
  std::vector<std::pair<int, int>> open{{row, col}};
  p[row][col] = '.';
  while (!open.empty()) {
    const auto [r, c] = open.back();
    open.pop_back();
    found[r][c] = '#';
    for (int dr = -1; dr <= 1; ++dr) {
      for (int dc = -1; dc <= 1; ++dc) {
        if (neighbourhood == 0 && dr != 0 && dc != 0) continue;
        const int nr = r + dr, nc = c + dc;
        if (nr < 0 || nc < 0 || nr >= static_cast<int>(p.size()) ||
            nc >= static_cast<int>(p[0].size()) || p[nr][nc] != '#') {
          continue;
        }
        p[nr][nc] = '.';
        open.push_back({nr, nc});
      }
    }
  }
}

std::vector<Runs> oracle(Picture p, int neighbourhood) {
  std::vector<Runs> all;
  for (int r = 0; r < static_cast<int>(p.size()); ++r) {
    for (int c = 0; c < static_cast<int>(p[r].size()); ++c) {
      if (p[r][c] != '#') continue;
      Picture found(p.size(), std::string(p[0].size(), '.'));
      flood(p, r, c, neighbourhood, found);
      all.push_back(vexo_test::runs_in(found));
    }
  }
  return all;
}

class Connection : public testing::TestWithParam<Form> {
 protected:
  ~Connection() override {
    vexo::internal::set_thread_limit(0);
    vexo::internal::set_vector_limit(vector_level::kAvx512);
  }
};

TEST_P(Connection, SingleRunIsOneComponent) {
  EXPECT_EQ(components(GetParam(), {".###."}, 0),
            (std::vector<Runs>{{{0, 1, 3}}}));
}

TEST_P(Connection, CornersJoinOnlyWithNeighbourhoodOne) {
  const Picture p{"#####.....", ".....#####"};
  EXPECT_EQ(components(GetParam(), p, 0).size(), 2u);
  EXPECT_EQ(components(GetParam(), p, 1).size(), 1u);
}

TEST_P(Connection, AnEmptyRowSeparates) {
  const Picture p{"###", "...", "###"};
  EXPECT_EQ(components(GetParam(), p, 0).size(), 2u);
  EXPECT_EQ(components(GetParam(), p, 1).size(), 2u);
}

TEST_P(Connection, UShapeIsOneComponent) {
  EXPECT_EQ(components(GetParam(), {"#..#", "#..#", "####"}, 0).size(), 1u);
}

TEST_P(Connection, NumbersByTheFirstRunOfEachComponent) {
  EXPECT_EQ(components(GetParam(), {"..#.#", "#.#.#", "#.###", "....."}, 0),
            (std::vector<Runs>{
                {{0, 2, 2}, {0, 4, 4}, {1, 2, 2}, {1, 4, 4}, {2, 2, 4}},
                {{1, 0, 0}, {2, 0, 0}}}));
}

// Neighbourhoods beyond 1: the last run is within reach of the one above, but
// that ended with the run before.
TEST_P(Connection, OfAWiderReachARunIsDoneWithWhereOneBelowEnds) {
  for (const vector_level level :
       {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
    vexo::internal::set_vector_limit(level);
    EXPECT_EQ(components(GetParam(), {"######....", "..####..##"}, 3).size(),
              2u);
    EXPECT_EQ(components(GetParam(), {"######....", "..###...##"}, 3).size(),
              1u);
  }
}

TEST_P(Connection, InputWithChildrenIsRefused) {
  region input = vexo_test::picture({"#.#"});
  region result;
  ASSERT_EQ(connect(GetParam(), input, &result, 0), 2);
  result.reserve(1);
  region untouched;
  untouched.child_count = 0;
  EXPECT_EQ(connect(GetParam(), result, &untouched, 0), -1);
  EXPECT_EQ(untouched.child_count, 0);
  EXPECT_EQ(untouched.chords, nullptr);
}

TEST_P(Connection, AgreesWithFloodFill) {
  for (uint64_t seed = 0; seed < vexo_test::cases(600); ++seed) {
    SCOPED_TRACE(seed);
    const Picture p = vexo_test::random_picture(seed, 30);
    const int neighbourhood = seed % 2;
    vexo::internal::set_thread_limit(1 + seed % 5);
    vexo::internal::set_vector_limit(seed % 4 == 0 ? vector_level::kPlain
                                                   : vector_level::kAvx512);
    ASSERT_EQ(components(GetParam(), p, neighbourhood),
              oracle(p, neighbourhood));
  }
}

// A component as bytes, so that two can be compared whatever made them.
std::string bytes_of(Form form, const region& component) {
  std::string all;
  const auto append = [&all](const void* data, size_t bytes) {
    if (bytes > 0) all.append(static_cast<const char*>(data), bytes);
  };
  append(component.bbox, sizeof component.bbox);
  append(component.reals, sizeof component.reals);
  append(&component.area, sizeof component.area);
  append(component.more_reals, sizeof component.more_reals);
  if (form == Form::kRuns) {
    append(component.rows, component.run_count * sizeof(int32_t));
    append(component.col_begins, component.run_count * sizeof(int32_t));
    append(component.col_ends, component.run_count * sizeof(int32_t));
  } else {
    append(component.chords,
           size_t(component.chord_count) * sizeof(vexo::chord));
  }
  return all;
}

// Component by component: all bytes of a large image at once would be hundreds
// of megabytes.
bool same_bytes(Form form, const region& a, const region& b) {
  if (a.child_count != b.child_count || a.chord_count != b.chord_count)
    return false;
  for (int k = 0; k < a.child_count; ++k) {
    if (bytes_of(form, *a.children[k]) != bytes_of(form, *b.children[k]))
      return false;
  }
  return a.chord_count == 0 ||
         std::memcmp(a.chords, b.chords,
                     size_t(a.chord_count) * sizeof(vexo::chord)) == 0;
}

// The smaller image still has bands enough for every thread.
constexpr int kWidth = vexo_test::kSanitized ? 1600 : 4000;
constexpr int kHeight = vexo_test::kSanitized ? 1200 : 3000;

// Noise, a comb whose teeth only meet in the last row, frame within frame
// through every band.
std::vector<unsigned char> large_image(int kind) {
  std::vector<unsigned char> pixels(size_t{kWidth} * kHeight);
  vexo_test::Random random(static_cast<uint64_t>(kind));
  for (int r = 0; r < kHeight; ++r) {
    for (int c = 0; c < kWidth; ++c) {
      const int border = std::min({r, c, kHeight - 1 - r, kWidth - 1 - c});
      const bool inside = kind == 0   ? random.chance(40)
                          : kind == 1 ? c % 2 == 0 || r == kHeight - 1
                                      : border % 2 == 0;
      pixels[size_t(r) * kWidth + c] = inside ? 255 : 0;
    }
  }
  return pixels;
}

TEST_P(Connection, LargeImagesAgreeForEveryThreadCountAndVectorWidth) {
  for (int kind = 0; kind < 3; ++kind) {
    SCOPED_TRACE(kind);
    auto pixels = large_image(kind);
    region input;
    vexo::threshold_y(pixels.data(), kWidth, kHeight, 255, 255, &input);
    input.to_3();
    vexo::internal::set_thread_limit(1);
    vexo::internal::set_vector_limit(vector_level::kPlain);
    region plain;
    const int n = connect(GetParam(), input, &plain, 0);
    if (kind == 1) {
      EXPECT_EQ(n, 1);
    }
    if (kind == 2) {
      EXPECT_EQ(n, kHeight / 4);
    }
    for (int threads : {1, 5}) {
      vexo::internal::set_thread_limit(threads);
      vexo::internal::set_vector_limit(vector_level::kAvx512);
      region result;
      EXPECT_EQ(connect(GetParam(), input, &result, 0), n);
      EXPECT_TRUE(same_bytes(GetParam(), result, plain));
    }
  }
}

// Children share memory; each must still be a region of its own.
TEST_P(Connection, ChildrenCanBeCopiedGrownAssignedAndTakenOut) {
  const Picture p{"#.#.#.#.#", "#.#.#.#.#"};
  region kept, assigned;
  region* taken = nullptr;
  const region other = vexo_test::region_of({{5, 6, 7}});
  {
    region input = vexo_test::picture(p);
    region result;
    ASSERT_EQ(connect(GetParam(), input, &result, 0), 5);
    kept = *result.children[0];
    result.children[1]->reserve(100);
    result.children[1]->to_3();
    result.children[1]->from_3();
    *result.children[2] = other;
    taken = result.children[3];
    result.children[3] = nullptr;
    assigned = *result.children[4];
    EXPECT_EQ(runs_of(*result.children[1]), (Runs{{0, 2, 2}, {1, 2, 2}}));
    EXPECT_EQ(chords_of(*result.children[1]), (Runs{{0, 2, 2}, {1, 2, 2}}));
    EXPECT_EQ(*other.ref_count, 2);
  }
  EXPECT_EQ(*other.ref_count, 1);
  const auto any = [&](const region& r) {
    return GetParam() == Form::kRuns ? runs_of(r) : chords_of(r);
  };
  EXPECT_EQ(any(kept), (Runs{{0, 0, 0}, {1, 0, 0}}));
  EXPECT_EQ(any(*taken), (Runs{{0, 6, 6}, {1, 6, 6}}));
  delete taken;
  EXPECT_EQ(any(assigned), (Runs{{0, 8, 8}, {1, 8, 8}}));
  EXPECT_EQ(*assigned.ref_count, 1);
}

INSTANTIATE_TEST_SUITE_P(Forms, Connection,
                         testing::Values(Form::kChords, Form::kRuns,
                                         Form::kBands));

TEST(ConnectionChords, ResultHoldsAllChordsNumberedByComponent) {
  const Picture p{"##..#.", "..#.#.", "#...##"};
  for (const Form form : {Form::kChords, Form::kBands}) {
    region input = vexo_test::picture(p);
    region result;
    ASSERT_EQ(connect(form, input, &result, 1), 3);
    const std::vector<std::vector<int>> expected = {{0, 0, 1, 1}, {1, 2, 2, 1},
                                                    {0, 4, 4, 2}, {1, 4, 4, 2},
                                                    {2, 4, 5, 2}, {2, 0, 0, 3}};
    ASSERT_EQ(result.chord_count, 6);
    for (size_t i = 0; i < expected.size(); ++i) {
      const vexo::chord& c = result.chords[i];
      EXPECT_EQ((std::vector<int>{c.row, c.col_begin, c.col_end, c.label}),
                expected[i]);
    }
  }
}

TEST_P(Connection, ReachesBothEndsOfTheColumns) {
  constexpr int kFirst = -2147483647 - 1, kLast = 2147483647;
  const Runs runs = {{0, kFirst, kFirst + 3},     {0, kLast - 3, kLast},
                     {1, kFirst + 4, kFirst + 4}, {1, kLast - 4, kLast - 4},
                     {2, kFirst, kFirst},         {2, kLast, kLast}};
  for (const vector_level level :
       {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
    vexo::internal::set_vector_limit(level);
    region input = vexo_test::region_of(runs);
    input.to_3();
    region corners, edges;
    EXPECT_EQ(connect(GetParam(), input, &corners, 1), 4);
    EXPECT_EQ(connect(GetParam(), input, &edges, 0), 6);
    EXPECT_EQ(child_runs(GetParam(), corners, 0), (Runs{runs[0], runs[2]}));
    EXPECT_EQ(child_runs(GetParam(), corners, 1), (Runs{runs[1], runs[3]}));
  }
}

// More pairs touch than both rows have runs.
TEST_P(Connection, OverlappingRunsOfARowAreJoined) {
  Runs runs;
  for (int i = 0; i < 1000; ++i) runs.push_back({0, 4 * i, 4 * i + 1});
  for (int i = 0; i < 200; ++i) runs.push_back({1, 0, 4000});
  for (const vector_level level :
       {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
    vexo::internal::set_vector_limit(level);
    region input = vexo_test::region_of(runs);
    input.to_3();
    region result;
    EXPECT_EQ(connect(GetParam(), input, &result, 0), 1);
  }
}

TEST_P(Connection, RowsOutOfOrderGiveNoComponentWithoutRuns) {
  vexo_test::Random d(7);
  Runs runs;
  for (int i = 0; i < 50000; ++i) {
    const int row = d.between(0, 1000000);
    runs.push_back({row, 0, 3});
  }
  vexo::internal::set_hand_over_cost(0);
  for (const int threads : {1, 2, 4, 8}) {
    vexo::limit_threads(threads);
    region input = vexo_test::region_of(runs);
    input.to_3();
    region result;
    const int n = connect(GetParam(), input, &result, 0);
    EXPECT_LE(n, 50000) << threads;
    size_t all = 0;
    for (int k = 0; k < n; ++k) {
      const size_t size = child_runs(GetParam(), result, k).size();
      EXPECT_GT(size, 0u) << threads;
      all += size;
    }
    EXPECT_EQ(all, runs.size()) << threads;
  }
  vexo::limit_threads(0);
  vexo::internal::set_hand_over_cost(-1);
}

TEST(ConnectionChords, EmptyInputGivesNone) {
  region input, result;
  EXPECT_EQ(vexo::connection(input, &result, 0), 0);
  EXPECT_EQ(vexo::connection2(input, &result, 0), 0);
}

TEST(ConnectionRuns, EmptyInputIsRefused) {
  region input, result;
  EXPECT_EQ(vexo::connection_y(input, &result, 0), -1);
}

}  // namespace
