// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "chord_rules.h"
#include "region/internal/parallel.h"
#include "region/internal/row_scan.h"
#include "region/operations.h"
#include "region_cases.h"

namespace vexo_test {
namespace {

using vexo::region;

using vexo::internal::vector_level;

using Operation = void (*)(region&, region&, region*);

// What a test sets is undone when it ends.
class SetOperationForms : public testing::Test {
 protected:
  ~SetOperationForms() override {
    vexo::internal::set_vector_limit(vector_level::kAvx512);
    vexo::internal::set_thread_limit(0);
    vexo::internal::set_hand_over_cost(-1);
  }
};

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

// All at every number of threads and every vector width: check(what it is).
template <typename Check>
void at_every_width(const Check& check) {
  for (const int threads : {1, 2, 8}) {
    for (const vector_level level :
         {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
      vexo::internal::set_thread_limit(threads);
      vexo::internal::set_vector_limit(level);
      SCOPED_TRACE(std::to_string(threads) + " threads, vectors " +
                   std::to_string(static_cast<int>(level)));
      check();
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

Chords all_of(const region& r) { return {r.chords, r.chords + r.chord_count}; }

bool same_words(const Chords& a, const Chords& b) {
  return a.size() == b.size() &&
         (a.empty() ||
          std::memcmp(a.data(), b.data(), a.size() * sizeof(a[0])) == 0);
}

// Chords of rows `step` apart. Of the careless kinds one chord is no better
// than it should be.
enum Kind { kCareful, kLabelled, kTouching, kInverted, kWrongRow, kKinds };
region chords_of_kind(Random& random, Kind kind, int count, int step) {
  region r;
  r.reserve(static_cast<size_t>(count));
  int row = random.between(-50, 50), column = 0;
  const int most = random.between(1, 40);
  for (r.run_count = 0; r.run_count < static_cast<size_t>(count);) {
    column += 2 + random.between(0, most);
    if (column > 900) row += step, column = random.between(-40, 40);
    const size_t i = r.run_count++;
    r.rows[i] = row;
    r.col_begins[i] = column;
    r.col_ends[i] = column += random.between(0, most);
  }
  r.to_3();
  vexo::chord& c = r.chords[random.between(1, count - 1)];
  const vexo::chord before = *(&c - 1);
  if (kind == kLabelled) c.label = 7;
  if (kind == kTouching && before.row == c.row)
    c.col_begin = before.col_end + 1;
  if (kind == kInverted) c.col_end = c.col_begin - 3;
  if (kind == kWrongRow) c.row = random.between(-60, row);
  return r;
}

constexpr struct {
  Operation operation;
  Chords (*rule)(const Chords&, const Chords&);
} kRules[] = {{vexo::union2, by_rule_union},
              {vexo::difference, by_rule_difference},
              {vexo::intersection, by_rule_intersection}};

TEST_F(SetOperationForms, ChordsFollowTheRulesToTheFourthWord) {
  for (int seed = 0; seed < 8 * kKinds; ++seed) {
    SCOPED_TRACE(seed);
    Random random(static_cast<uint64_t>(seed));
    // From a few chords over some stretches to pieces for two threads.
    const int count = seed % 8 == 7 ? 40000 : random.between(2, 3000);
    const int step = seed % 8 == 6 ? 3000000 : 1;
    const Kind kind = static_cast<Kind>(seed / 8);
    region a = chords_of_kind(random, kind, count, step);
    region b = chords_of_kind(random, random.chance(50) ? kind : kCareful,
                              std::max(2, count - 9), step);
    for (const auto& [operation, rule] : kRules) {
      const Chords expected = rule(all_of(a), all_of(b));
      at_every_width([&, f = operation] {
        region result;
        f(a, b, &result);
        ASSERT_TRUE(same_words(all_of(result), expected));
      });
    }
  }
}

// As many chords in a row as go to pieces, and rows enough for eight of them.
region dense_chords(Random& random) {
  Runs runs;
  for (int row = 0; row < 24; ++row) {
    if (random.chance(20)) continue;
    int column = random.between(0, 4);
    for (int i = 0; i < 14; ++i, column += random.between(2, 9)) {
      runs.push_back({row, column, column + random.between(0, 5)});
      column = runs.back().end;
    }
  }
  return region_of(runs);
}

void spoil(Random& random, region* r) {
  const int i = random.between(1, r->chord_count - 1);
  if (random.chance(50)) {
    r->chords[i].row += random.between(-4, 4);
  } else {
    std::swap(r->chords[i], r->chords[i - 1]);
  }
}

// Lists that are careless just where they are cut into pieces.
TEST_F(SetOperationForms, ChordsFollowTheRulesAtTheSeamsOfPieces) {
  vexo::internal::set_hand_over_cost(0);
  for (uint64_t seed = 0; seed < vexo_test::cases(4000); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    region a = dense_chords(random), b = dense_chords(random);
    for (int i = random.between(1, 3); i > 0; --i) {
      spoil(random, random.chance(50) ? &a : &b);
    }
    vexo::internal::set_thread_limit(random.between(2, 8));
    for (const auto& [operation, rule] : kRules) {
      region result;
      operation(a, b, &result);
      ASSERT_TRUE(same_words(all_of(result), rule(all_of(a), all_of(b))));
    }
  }
}

TEST_F(SetOperationForms, AChordOutOfOrderBehindAStretchIsTakenInItsTurn) {
  // Row 600 is the last of a stretch; behind it a chord of row 3 comes before
  // the second list's last chord of row 600.
  Chords a, b;
  for (int row = 537; row <= 600; ++row) {
    for (int column = 0; column < 160; column += 20) {
      a.push_back({column, column + 3, row, 0});
      b.push_back({column + 10, column + 13, row, 0});
    }
  }
  a.push_back({0, 1, 3, 0});
  region first = region_of(kSome), second = region_of(kSome);
  const auto fill = [](const Chords& chords, region* r) {
    free(r->chords);
    r->chords = static_cast<vexo::chord*>(malloc(chords.size() * sizeof(a[0])));
    std::copy(chords.begin(), chords.end(), r->chords);
    r->chord_count = static_cast<int>(chords.size());
  };
  fill(a, &first);
  fill(b, &second);
  const Chords expected = by_rule_union(a, b);
  region result;
  vexo::union2(first, second, &result);
  EXPECT_TRUE(same_words(all_of(result), expected));
}

TEST_F(SetOperationForms, RunsInNoOrderAreNeverReadBeyondTheirEnds) {
  Random random(3);
  region a = chords_of_kind(random, kCareful, 60000, 1);
  region b = chords_of_kind(random, kCareful, 50000, 1);
  std::reverse(a.rows, a.rows + a.run_count);
  std::reverse(b.rows, b.rows + b.run_count / 2);
  for (const Pair& p : kPairs) {
    at_every_width([&] {
      region result;
      p.arrays(a, b, &result);
      ASSERT_LE(result.run_count, 2 * (a.run_count + b.run_count));
    });
  }
}

TEST_F(SetOperationForms, ThreadsAndVectorWidthsAgreeOnLargeRegions) {
  for (uint64_t seed = 0; seed < vexo_test::large_cases(6); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    region a = large_region(random);
    region b = large_region(random);
    for (const Pair& p : kPairs) {
      SCOPED_TRACE(p.name);
      region expected;
      p.chords(a, b, &expected);
      at_every_width([&] {
        region by_arrays, by_chords;
        p.arrays(a, b, &by_arrays);
        p.chords(a, b, &by_chords);
        ASSERT_TRUE(runs_of(by_arrays) == chords_of(expected));
        ASSERT_TRUE(chords_of(by_chords) == chords_of(expected));
      });
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

TEST_F(SetOperationForms, AgreeAtEveryVectorWidthHoweverFarRunsLieApart) {
  for (uint64_t seed = 0; seed < vexo_test::large_cases(60); ++seed) {
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
        region by_arrays, by_chords;
        p.arrays(a, b, &by_arrays);
        p.chords(a, b, &by_chords);
        ASSERT_TRUE(runs_of(by_arrays) == joined(chords_of(expected)))
            << static_cast<int>(level);
        ASSERT_TRUE(chords_of(by_chords) == chords_of(expected))
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
