// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "region/internal/parallel.h"
#include "region/internal/row_scan.h"
#include "region/operations.h"
#include "region_cases.h"

namespace vexo_test {
namespace {

using vexo::region;

using Operation = void (*)(region&, region&, region*);

struct Pair {
  const char* name;
  Operation chords;
  Operation arrays;
  PixelSet (*oracle)(const PixelSet&, const PixelSet&);
};

const Pair kPairs[] = {
    {"union", vexo::union2, vexo::union2_y, oracle_union},
    {"difference", vexo::difference, vexo::difference_y, oracle_difference},
    {"intersection", vexo::intersection, vexo::intersection_y,
     oracle_intersection},
};

// Both forms of an operation; they have to agree.
Runs combined(Operation chords, Operation arrays, const Runs& a,
              const Runs& b) {
  region first = region_of(a);
  region second = region_of(b);
  region by_chords;
  region by_arrays;
  chords(first, second, &by_chords);
  arrays(first, second, &by_arrays);
  EXPECT_EQ(chords_of(by_chords), runs_of(by_arrays));
  EXPECT_EQ(by_chords.run_count, 0u);
  EXPECT_EQ(by_arrays.chord_count, 0);
  return runs_of(by_arrays);
}

Runs unite(const Runs& a, const Runs& b) {
  return combined(vexo::union2, vexo::union2_y, a, b);
}
Runs subtract(const Runs& a, const Runs& b) {
  return combined(vexo::difference, vexo::difference_y, a, b);
}
Runs intersect(const Runs& a, const Runs& b) {
  return combined(vexo::intersection, vexo::intersection_y, a, b);
}

const Runs kSome{{-3, -9, -2}, {-3, 0, 4}, {0, 1, 1}, {7, 2, 9}};

TEST(Union, OfARegionWithItselfIsTheRegion) {
  EXPECT_EQ(unite(kSome, kSome), kSome);
}

TEST(Union, AdjacentRunsCoalesce) {
  EXPECT_EQ(unite({{0, 0, 4}}, {{0, 5, 9}}), (Runs{{0, 0, 9}}));
  EXPECT_EQ(unite({{0, 5, 9}}, {{0, 0, 4}}), (Runs{{0, 0, 9}}));
  EXPECT_EQ(unite({{0, 0, 4}}, {{0, 6, 9}}), (Runs{{0, 0, 4}, {0, 6, 9}}));
  EXPECT_EQ(unite({{0, 0, 4}}, {{1, 5, 9}}), (Runs{{0, 0, 4}, {1, 5, 9}}));
}

TEST(Union, WithAnEmptyRegionIsTheOther) {
  EXPECT_EQ(unite(kSome, {}), kSome);
  EXPECT_EQ(unite({}, kSome), kSome);
  EXPECT_EQ(unite({}, {}), Runs{});
}

TEST(Union, OneRunMayBridgeMany) {
  EXPECT_EQ(unite({{0, 0, 2}, {0, 5, 6}, {0, 9, 9}}, {{0, 1, 8}}),
            (Runs{{0, 0, 9}}));
}

TEST(Union, TwoEmptyRegionsEmptyTheResult) {
  region empty;
  region result = region_of({{1, 2, 3}});
  vexo::union2(empty, empty, &result);
  vexo::union2_y(empty, empty, &result);
  EXPECT_EQ(result.run_count, 0u);
  EXPECT_EQ(result.chord_count, 0);
}

TEST(Union, ChordFormCarriesFourthWords) {
  region first = region_of({{0, 0, 4}, {1, 0, 0}});
  region second = region_of({{0, 5, 9}, {2, 0, 0}});
  first.chords[0].label = 7;
  first.chords[1].label = 8;
  second.chords[0].label = 9;
  second.chords[1].label = 10;
  region result;
  vexo::union2(first, second, &result);
  ASSERT_EQ(result.chord_count, 3);
  EXPECT_EQ(result.chords[0].label, 7);
  EXPECT_EQ(result.chords[1].label, 8);
  EXPECT_EQ(result.chords[2].label, 10);
}

TEST(Intersection, OnDisjointRowsIsEmpty) {
  EXPECT_EQ(intersect({{0, 0, 9}, {2, 0, 9}}, {{1, 0, 9}, {3, 0, 9}}), Runs{});
}

TEST(Intersection, KeepsWhatBothHold) {
  EXPECT_EQ(intersect({{0, 0, 9}, {0, 12, 20}}, {{0, 8, 13}, {0, 15, 15}}),
            (Runs{{0, 8, 9}, {0, 12, 13}, {0, 15, 15}}));
  EXPECT_EQ(intersect(kSome, {}), Runs{});
  EXPECT_EQ(intersect(kSome, kSome), kSome);
}

TEST(Intersection, ChordFormWritesFourthWordsOfZero) {
  region first = region_of({{0, 0, 4}});
  first.chords[0].label = 7;
  region result;
  vexo::intersection(first, first, &result);
  ASSERT_EQ(result.chord_count, 1);
  EXPECT_EQ(result.chords[0].label, 0);
}

TEST(Difference, FromAnEmptyRegionOrLessAnEmptyRegion) {
  EXPECT_EQ(subtract(kSome, {}), kSome);
  EXPECT_EQ(subtract({}, kSome), Runs{});
  EXPECT_EQ(subtract(kSome, kSome), Runs{});
}

TEST(Difference, HolesCutARunIntoPieces) {
  EXPECT_EQ(subtract({{0, 0, 9}}, {{0, 2, 3}, {0, 6, 7}}),
            (Runs{{0, 0, 1}, {0, 4, 5}, {0, 8, 9}}));
}

TEST(Difference, OneHoleMayReachIntoSeveralRuns) {
  EXPECT_EQ(subtract({{0, 0, 4}, {0, 6, 9}, {0, 11, 20}}, {{0, 3, 12}}),
            (Runs{{0, 0, 2}, {0, 13, 20}}));
}

TEST(Difference, TouchingSubtrahendRunsLeaveNoEmptyPiece) {
  EXPECT_EQ(subtract({{0, 0, 9}}, {{0, 2, 3}, {0, 4, 5}}),
            (Runs{{0, 0, 1}, {0, 6, 9}}));
}

TEST(Difference, ChordFormKeepsFourthWordsOfWholeChordsOnly) {
  region first = region_of({{0, 0, 4}, {1, 0, 4}});
  first.chords[0].label = 7;
  first.chords[1].label = 8;
  region second = region_of({{1, 0, 0}});
  region result;
  vexo::difference(first, second, &result);
  ASSERT_EQ(result.chord_count, 2);
  EXPECT_EQ(result.chords[0].label, 7);
  EXPECT_EQ(result.chords[1].label, 0);
}

TEST(SetOperations, TouchingInputRunsComeOutAsOneRun) {
  region first = region_of({{0, 0, 4}, {0, 5, 9}, {0, 20, 21}});
  region second = region_of({{0, 30, 31}});
  region all = region_of({{0, 0, 50}});
  region result;
  vexo::union2_y(first, second, &result);
  EXPECT_EQ(runs_of(result), (Runs{{0, 0, 9}, {0, 20, 21}, {0, 30, 31}}));
  vexo::difference_y(first, second, &result);
  EXPECT_EQ(runs_of(result), (Runs{{0, 0, 9}, {0, 20, 21}}));
  vexo::intersection_y(first, all, &result);
  EXPECT_EQ(runs_of(result), (Runs{{0, 0, 9}, {0, 20, 21}}));
}

TEST(SetOperations, InputsWithChildrenLeaveTheResultAsItWas) {
  region plain = region_of(kSome);
  region parent = region_of(kSome);
  parent.child_count = 1;
  region result = region_of({{1, 2, 3}});
  for (const Pair& p : kPairs) {
    for (const Operation operation : {p.chords, p.arrays}) {
      operation(plain, parent, &result);
      operation(parent, plain, &result);
    }
  }
  parent.child_count = 0;
  EXPECT_EQ(runs_of(result), (Runs{{1, 2, 3}}));
  EXPECT_EQ(chords_of(result), (Runs{{1, 2, 3}}));
}

TEST(SetOperations, LeaveImageSizeAndChildCountOfTheResultAlone) {
  region plain = region_of(kSome, 100, 200);
  region result = region_of({{1, 2, 3}}, 5, 6);
  for (const Pair& p : kPairs) {
    for (const Operation operation : {p.chords, p.arrays}) {
      operation(plain, plain, &result);
      EXPECT_EQ(result.width, 5);
      EXPECT_EQ(result.height, 6);
      EXPECT_EQ(result.child_count, 0);
    }
  }
}

TEST(SetOperations, ResultMayBeEitherInput) {
  const Runs other{{-3, -4, 1}, {7, 0, 3}, {9, 0, 0}};
  for (const Pair& p : kPairs) {
    SCOPED_TRACE(p.name);
    const Runs expected = combined(p.chords, p.arrays, kSome, other);
    for (const bool into_first : {true, false}) {
      region first = region_of(kSome);
      region second = region_of(other);
      region* result = into_first ? &first : &second;
      p.arrays(first, second, result);
      EXPECT_EQ(runs_of(*result), expected);
      p.chords(first, second, result);
      EXPECT_EQ(chords_of(*result), expected);
    }
  }
}

TEST(SetOperations, ReachBothEndsOfTheColumns) {
  constexpr int kLow = INT32_MIN;
  constexpr int kHigh = INT32_MAX;
  EXPECT_EQ(unite({{0, kLow, -1}}, {{0, 0, kHigh}}), (Runs{{0, kLow, kHigh}}));
  EXPECT_EQ(subtract({{kLow, kLow, kHigh}}, {{kLow, -5, 5}}),
            (Runs{{kLow, kLow, -6}, {kLow, 6, kHigh}}));
  EXPECT_EQ(subtract({{0, kLow, kHigh}}, {{0, kLow, 0}}),
            (Runs{{0, 1, kHigh}}));
  EXPECT_EQ(subtract({{0, kLow, kHigh}}, {{0, 0, kHigh}}),
            (Runs{{0, kLow, -1}}));
  EXPECT_EQ(intersect({{kHigh, kLow, kHigh}}, {{kHigh, kHigh, kHigh}}),
            (Runs{{kHigh, kHigh, kHigh}}));
  EXPECT_EQ(unite({{kLow, kHigh, kHigh}}, {{kHigh, kLow, kLow}}),
            (Runs{{kLow, kHigh, kHigh}, {kHigh, kLow, kLow}}));
}

TEST(SetOperations, AgreeWithThePixelOracle) {
  for (uint64_t seed = 0; seed < vexo_test::cases(3000); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const PixelSet a = random_pixels(random);
    const PixelSet b = random_pixels(random);
    for (const Pair& p : kPairs) {
      SCOPED_TRACE(p.name);
      const Runs result = combined(p.chords, p.arrays, a.runs(), b.runs());
      ASSERT_EQ(result, p.oracle(a, b).runs());
      ASSERT_TRUE(is_canonical(result));
    }
  }
}

// Many rows of many runs, few in some of them.
region large_region(Random& random) {
  Runs runs;
  for (int row = -500; row < 700; ++row) {
    const int most = row < 0 ? 6 : random.chance(2) ? 3 : 700;
    for (int column = random.between(-9, 300); column < 2500;) {
      const int end = column + random.between(0, most);
      runs.push_back({row, column, end});
      column = end + 2 + random.between(0, most);
    }
  }
  return region_of(runs);
}

TEST(SetOperations, FormsThreadsAndVectorWidthsAgreeOnLargeRegions) {
  using vexo::internal::vector_level;
  for (uint64_t seed = 0; seed < vexo_test::cases(6); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    region a = large_region(random);
    region b = large_region(random);
    for (const Pair& p : kPairs) {
      SCOPED_TRACE(p.name);
      region expected;
      p.chords(a, b, &expected);
      for (const int threads : {1, 2, 8}) {
        for (const vector_level level :
             {vector_level::kPlain, vector_level::kAvx2,
              vector_level::kAvx512}) {
          vexo::internal::set_thread_limit(threads);
          vexo::internal::set_vector_limit(level);
          region result;
          p.arrays(a, b, &result);
          vexo::internal::set_thread_limit(0);
          vexo::internal::set_vector_limit(vector_level::kAvx512);
          ASSERT_TRUE(runs_of(result) == chords_of(expected))
              << threads << " " << static_cast<int>(level);
        }
      }
    }
  }
}

// Stretch after stretch of rows that are far apart, or far to one side, or as
// wide as columns go, or have runs that touch.
Runs stretches_of_every_kind(Random& random) {
  Runs runs;
  int64_t row = INT32_MIN;
  for (int stretch = 0; stretch < 40; ++stretch) {
    const int kind = random.between(0, 5);
    const int64_t left = kind == 0   ? INT32_MIN
                         : kind == 1 ? INT32_MAX - int64_t{40000}
                                     : random.between(-100000, 100000);
    const int step = kind == 2 ? 1000000 : 1;
    const int reach = kind == 3 ? 100000000 : random.between(1, 40);
    const int gap = kind == 4 ? 1 : 2;
    for (int n = random.between(1, 120); n > 0; --n, row += step) {
      int64_t column = left + random.between(0, reach);
      for (int k = random.between(0, 20); k > 0; --k) {
        const int64_t end = column + random.between(0, reach);
        if (end > INT32_MAX) break;
        runs.push_back({static_cast<int>(row), static_cast<int>(column),
                        static_cast<int>(end)});
        column = end + gap + random.between(0, reach);
        if (column > INT32_MAX) break;
      }
    }
    row += random.chance(50) ? 0 : random.between(0, 10000000);
  }
  return runs;
}

Runs joined(const Runs& runs) {
  Runs result;
  for (const Run& run : runs) {
    if (!result.empty() && result.back().row == run.row &&
        result.back().end + int64_t{1} >= run.begin)
      result.back().end = run.end;
    else
      result.push_back(run);
  }
  return result;
}

TEST(SetOperations, FormsAndVectorWidthsAgreeHoweverFarRunsLieApart) {
  using vexo::internal::vector_level;
  for (uint64_t seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const Runs runs = stretches_of_every_kind(random);
    Runs other = random.chance(50) ? stretches_of_every_kind(random) : runs;
    for (auto& run : other)
      if (run.end > run.begin) run.end -= random.between(0, 1);
    region a = region_of(runs);
    region b = region_of(other);
    for (const Pair& p : kPairs) {
      SCOPED_TRACE(p.name);
      region expected;
      p.chords(a, b, &expected);
      for (const vector_level level :
           {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
        vexo::internal::set_vector_limit(level);
        region result;
        p.arrays(a, b, &result);
        vexo::internal::set_vector_limit(vector_level::kAvx512);
        ASSERT_TRUE(runs_of(result) == joined(chords_of(expected)))
            << static_cast<int>(level);
      }
    }
  }
}

TEST(SetOperations, DeMorganInsideAFrame) {
  Runs frame;
  for (int row = -40; row <= 60; ++row) frame.push_back({row, -50, 150});
  for (uint64_t seed = 0; seed < vexo_test::cases(1000); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const Runs a = random_pixels(random).runs();
    const Runs b = random_pixels(random).runs();
    const Runs not_a = subtract(frame, a);
    const Runs not_b = subtract(frame, b);
    ASSERT_EQ(subtract(frame, unite(a, b)), intersect(not_a, not_b));
    ASSERT_EQ(subtract(frame, intersect(a, b)), unite(not_a, not_b));
    ASSERT_EQ(subtract(a, b), intersect(a, not_b));
  }
}

TEST(SetOperations, AreDistributiveAndCommutative) {
  for (uint64_t seed = 0; seed < vexo_test::cases(1000); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const Runs a = random_pixels(random).runs();
    const Runs b = random_pixels(random).runs();
    const Runs c = random_pixels(random).runs();
    ASSERT_EQ(intersect(a, unite(b, c)),
              unite(intersect(a, b), intersect(a, c)));
    ASSERT_EQ(unite(a, intersect(b, c)), intersect(unite(a, b), unite(a, c)));
    ASSERT_EQ(unite(a, b), unite(b, a));
    ASSERT_EQ(intersect(a, b), intersect(b, a));
  }
}

}  // namespace
}  // namespace vexo_test
