// SPDX-License-Identifier: MIT
#include "region/internal/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "pictures.h"
#include "random_regions.h"
#include "region/operations.h"

namespace {

using vexo::chord;
using vexo_test::Random;
using vexo_test::Run;
using vexo_test::Runs;
namespace internal = vexo::internal;

class Parallel : public testing::Test {
 protected:
  ~Parallel() override { internal::set_thread_limit(0); }
};

TEST_F(Parallel, LoopRunsEveryIterationOnce) {
  for (int threads : {1, 2, 7}) {
    internal::set_thread_limit(threads);
    for (size_t count : {0, 1, 2, 3, 100, 5000}) {
      std::vector<int> hits(count, 0);
      internal::parallel_for(count, [&](size_t i) { ++hits[i]; });
      EXPECT_EQ(hits, std::vector<int>(count, 1));
    }
  }
}

TEST_F(Parallel, OneIterationStaysOnTheCallingThread) {
  internal::set_thread_limit(4);
  std::thread::id id;
  internal::parallel_for(1, [&](size_t) { id = std::this_thread::get_id(); });
  EXPECT_EQ(id, std::this_thread::get_id());
}

TEST_F(Parallel, ExceptionOfTheLowestIndexReachesTheCaller) {
  for (int threads : {1, 2, 7}) {
    internal::set_thread_limit(threads);
    std::string text;
    try {
      internal::parallel_for(7, [](size_t i) {
        if (i >= 2) throw std::runtime_error(std::to_string(i));
      });
    } catch (const std::runtime_error& error) {
      text = error.what();
    }
    EXPECT_EQ(text, "2");
  }
}

TEST_F(Parallel, RangesCoverEverythingWithoutOverlap) {
  internal::set_thread_limit(3);
  for (size_t count : {0, 1, 9, 10, 11, 29, 30, 31, 1000}) {
    std::vector<int> hits(count, 0);
    internal::parallel_ranges(count, 10, [&](size_t first, size_t last) {
      EXPECT_GE(last - first, std::min<size_t>(count, 10));
      for (size_t i = first; i < last; ++i) ++hits[i];
    });
    EXPECT_EQ(hits, std::vector<int>(count, 1));
  }
}

TEST_F(Parallel, BandsAreAtLeastEightRowsAndTheFirstOnesLarger) {
  internal::set_thread_limit(4);
  EXPECT_EQ(internal::row_bands(0).count(), 1);
  EXPECT_EQ(internal::row_bands(15).count(), 1);
  EXPECT_EQ(internal::row_bands(16).count(), 2);
  EXPECT_EQ(internal::row_bands(31).count(), 3);
  const internal::row_bands bands(4003);
  ASSERT_EQ(bands.count(), 4);
  EXPECT_EQ(bands.begin(0), 0);
  EXPECT_EQ(bands.begin(1), 1001);
  EXPECT_EQ(bands.begin(2), 2002);
  EXPECT_EQ(bands.begin(3), 3003);
  EXPECT_EQ(bands.end(3), 4003);
  EXPECT_EQ(internal::row_bands(4003, 2).count(), 2);
  EXPECT_EQ(internal::row_bands(4003, 0).count(), 1);
}

// Distinct runs in no order, by the seed.
Runs shuffled(int n, uint64_t seed) {
  Random random(seed);
  Runs runs;
  for (int i = 0; i < n; ++i) {
    runs.push_back(
        {i / 7 % 90, i / 3, i / 3 + random.between(0, 5) * 3 + i % 3});
  }
  for (int i = n - 1; i > 0; --i) {
    std::swap(runs[i], runs[random.between(0, i)]);
  }
  return runs;
}

bool in_order(const Run& a, const Run& b) {
  return std::tie(a.row, a.begin, a.end) < std::tie(b.row, b.begin, b.end);
}

TEST_F(Parallel, SortOfRunArraysIsByRowThenBeginThenEnd) {
  for (int threads : {1, 2, 7}) {
    internal::set_thread_limit(threads);
    for (int n : {0, 1, 2, 3, 32, 33, 2048, 2049, 50000}) {
      SCOPED_TRACE(n);
      Runs runs = shuffled(n, static_cast<uint64_t>(n));
      vexo::region r = vexo_test::region_of(runs);
      vexo::sort_y(r.rows, r.col_begins, r.col_ends, n);
      std::sort(runs.begin(), runs.end(), in_order);
      ASSERT_EQ(vexo_test::runs_of(r), runs);
      vexo::sort_y(r.rows, r.col_begins, r.col_ends, n);
      ASSERT_EQ(vexo_test::runs_of(r), runs);
    }
  }
}

TEST_F(Parallel, SortOfChordsIsTheSameBelowAndAboveTheLimit) {
  for (int n : {2048, 2049, 40000}) {
    Runs runs = shuffled(n, 5);
    for (int threads : {1, 2, 7}) {
      internal::set_thread_limit(threads);
      vexo::region r = vexo_test::region_of(runs);
      internal::parallel_sort(r.chords, r.chords + n, std::less<chord>());
      Runs expected = runs;
      std::sort(expected.begin(), expected.end(), in_order);
      ASSERT_EQ(vexo_test::chords_of(r), expected);
    }
  }
}

TEST_F(Parallel, SortByLabelKeepsTheOrderWithinALabel) {
  // A comb: its teeth are one component, the dots between them others.
  vexo::region input = vexo_test::picture(
      {"#.#.#.#.#", "#...#...#", "#.#.#.#.#", "#...#...#", "#########"});
  vexo::region result;
  ASSERT_EQ(vexo::connection(input, &result, 0), 5);
  for (int i = 1; i < result.chord_count; ++i) {
    const chord &a = result.chords[i - 1], &b = result.chords[i];
    EXPECT_TRUE(a.label < b.label ||
                (a.label == b.label && std::less<chord>()(a, b)));
  }
}

TEST_F(Parallel, CallersCanLimitTheThreads) {
  vexo::limit_threads(1);
  const std::thread::id caller = std::this_thread::get_id();
  internal::parallel_for(
      1000, [&](size_t) { EXPECT_EQ(std::this_thread::get_id(), caller); });
  vexo::limit_threads(0);
  EXPECT_EQ(internal::thread_count(),
            std::max(1, static_cast<int>(std::thread::hardware_concurrency())));
}

TEST_F(Parallel, AnyLimitRunsEveryIterationOnce) {
  for (const int limit : {1 << 28, 1 << 29, 2147483647}) {
    vexo::limit_threads(limit);
    std::vector<int> rows = {3, 2, 1}, begins(3), ends(3);
    vexo::sort_y(rows.data(), begins.data(), ends.data(), 3);
    EXPECT_EQ(rows, (std::vector<int>{1, 2, 3})) << limit;
  }
}

}  // namespace
