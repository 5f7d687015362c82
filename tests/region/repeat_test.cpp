// SPDX-License-Identifier: MIT
//
// Every parallel form on eight threads, a thousand times: the same bytes each
// time, and the same as on one thread. Pieces may be of one item each, so small
// regions are split as large ones are, and races have little else to hide in.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "pictures.h"
#include "random_regions.h"
#include "region/internal/morphology.h"
#include "region/internal/parallel.h"
#include "region/operations.h"
#include "threads.h"

namespace {

using vexo::region;
using vexo::internal::morphology_form;
using vexo_test::Random;
using vexo_test::region_of;
using vexo_test::Runs;
namespace internal = vexo::internal;

constexpr int kThreads = 8;
// Sanitizers see a race whether or not it does harm, and the same code runs on
// Windows: there a tenth will do.
#ifdef _WIN32
constexpr int kRepeats = 100;
#else
constexpr int kRepeats = vexo_test::kSanitized ? 100 : 1000;
#endif

// Everything that operations hand out, byte for byte.
class Bytes {
 public:
  void add(const region& r) {
    add(&r.width, 1);
    add(&r.height, 1);
    add(&r.run_count, 1);
    add(r.rows, r.run_count);
    add(r.col_begins, r.run_count);
    add(r.col_ends, r.run_count);
    add(&r.chord_count, 1);
    if (r.chords != nullptr) {
      add(r.chords, static_cast<size_t>(r.chord_count));
    }
    add(r.bbox, 4);
    add(&r.area, 1);
    add(r.reals, 7);
    add(r.more_reals, 3);
    add(&r.child_count, 1);
    for (int i = 0; i < r.child_count; ++i) add(*r.children[i]);
  }
  template <class T>
  void add(const T* items, size_t count) {
    all_.append(reinterpret_cast<const char*>(items), count * sizeof(T));
  }
  const std::string& all() const { return all_; }

 private:
  std::string all_;
};

using Work = std::function<void(Bytes*)>;

class Repeat : public testing::Test {
 protected:
  Repeat() { internal::set_hand_over_cost(0); }
  ~Repeat() override {
    internal::set_hand_over_cost(-1);
    internal::set_morphology_form(morphology_form::cheapest);
    internal::set_thread_limit(0);
  }

  static std::string once(const Work& work) {
    Bytes bytes;
    work(&bytes);
    return bytes.all();
  }

  static void expect_equal_bytes(const Work& work) {
    internal::set_thread_limit(1);
    const std::string expected = once(work);
    ASSERT_FALSE(expected.empty());
    vexo_test::on_threads(kThreads, [&] {
      for (int i = 0; i < kRepeats; ++i) {
        ASSERT_TRUE(once(work) == expected) << "in repetition " << i;
      }
    });
    const vexo_test::loop_counts loops = vexo_test::loops_run();
    EXPECT_GE(loops.all, kRepeats);
    EXPECT_GT(loops.shared, 0);
  }
};

// Runs of 1 to `most` columns, gaps as well.
Runs comb(int height, int width, int most, uint64_t seed) {
  Random random(seed);
  Runs runs;
  for (int row = 0; row < height; ++row) {
    int column = random.between(0, most);
    while (column < width) {
      const int end = std::min(width - 1, column + random.between(0, most - 1));
      runs.push_back({row, column, end});
      column = end + 1 + random.between(1, most);
    }
  }
  return runs;
}

region comb_region(int height, int width, int most, uint64_t seed) {
  return region_of(comb(height, width, most, seed), width, height);
}

// All eight wait for each other: fewer threads would never get there.
TEST_F(Repeat, LoopsRunOnEightThreadsAtOnce) {
  std::atomic<int> arrived{0};
  vexo_test::on_threads(kThreads, [&] {
    internal::parallel_for(kThreads, [&](size_t) {
      ++arrived;
      while (arrived < kThreads) std::this_thread::yield();
    });
  });
  EXPECT_EQ(arrived, kThreads);
}

TEST_F(Repeat, LoopsAndSortsGiveEqualBytes) {
  expect_equal_bytes([](Bytes* bytes) {
    std::vector<int> squares(200);
    internal::parallel_for(squares.size(), [&](size_t i) {
      squares[i] = static_cast<int>(i * i);
    });
    int sums[3] = {};
    internal::parallel_ranges(
        squares.size(), 1, [&](size_t first, size_t last) {
          std::reverse(squares.begin() + static_cast<ptrdiff_t>(first),
                       squares.begin() + static_cast<ptrdiff_t>(last));
        });
    internal::parallel_sort(squares.begin(), squares.end(), std::less<int>());
    const auto sum = [&](int from) {
      return std::accumulate(squares.begin() + from, squares.end(), 0);
    };
    internal::parallel_invoke([&] { sums[0] = sum(0); },
                              [&] { sums[1] = sum(1); },
                              [&] { sums[2] = sum(2); });
    bytes->add(squares.data(), squares.size());
    bytes->add(sums, 3);
  });
}

TEST_F(Repeat, ThresholdsGiveEqualBytes) {
  constexpr int kWidth = 96, kHeight = 80;
  std::vector<unsigned char> image(size_t{kWidth} * kHeight);
  Random random(2);
  for (unsigned char& grey : image) {
    grey = static_cast<unsigned char>(random.between(0, 255));
  }
  expect_equal_bytes([&](Bytes* bytes) {
    for (const auto form :
         {vexo::threshold, vexo::threshold_y, vexo::threshold_y3}) {
      region result;
      form(image.data(), kWidth, kHeight, 200, 255, &result);
      bytes->add(result);
    }
  });
}

TEST_F(Repeat, CopiesBetweenTheFormsGiveEqualBytes) {
  const Runs runs = comb(20, 100, 3, 1);
  expect_equal_bytes([&](Bytes* bytes) {
    region result = region_of(runs);  // to_3()
    result.run_count = 0;
    result.from_3();
    bytes->add(result);
  });
}

TEST_F(Repeat, ConnectionsGiveEqualBytes) {
  region source = comb_region(24, 100, 3, 3);
  expect_equal_bytes([&](Bytes* bytes) {
    region chords, runs;
    vexo::connection(source, &chords, 1);
    vexo::connection_y(source, &runs, 0);
    bytes->add(chords);
    bytes->add(runs);
  });
}

TEST_F(Repeat, SetOperationsGiveEqualBytes) {
  region a = comb_region(30, 100, 4, 4);
  region b = comb_region(30, 100, 4, 5);
  expect_equal_bytes([&](Bytes* bytes) {
    for (const auto form :
         {vexo::union2, vexo::difference, vexo::intersection, vexo::union2_y,
          vexo::difference_y, vexo::intersection_y}) {
      region result;
      form(a, b, &result);
      bytes->add(result);
    }
  });
}

TEST_F(Repeat, EveryFormOfMorphologyGivesEqualBytes) {
  const region source = comb_region(40, 120, 12, 6);
  region element;
  vexo::gen_se_circle(2, &element);
  for (const morphology_form form :
       {morphology_form::keys, morphology_form::strips, morphology_form::bits,
        morphology_form::candidates}) {
    SCOPED_TRACE(static_cast<int>(form));
    internal::set_morphology_form(form);
    expect_equal_bytes([&](Bytes* bytes) {
      region dilated, eroded;
      vexo::dilation2(source, element, &dilated, -1, -1);
      vexo::erosion2(dilated, element, &eroded, -1, -1);
      bytes->add(dilated);
      bytes->add(eroded);
    });
  }
}

TEST_F(Repeat, CompositionsGiveEqualBytes) {
  region source = comb_region(40, 120, 12, 7);
  region element;
  vexo::gen_se_circle(2, &element);
  expect_equal_bytes([&](Bytes* bytes) {
    for (const auto form : {vexo::dilation1, vexo::erosion1, vexo::opening1}) {
      region result;
      form(source, element, &result);
      bytes->add(result);
    }
    // An opening and a closing are the first half of them.
    for (const auto form : {vexo::top_hat, vexo::bottom_hat}) {
      region result;
      form(source, element, &result);
      bytes->add(result);
    }
  });
}

TEST_F(Repeat, BoundariesGiveEqualBytes) {
  const region dense = comb_region(40, 60, 4, 8);
  const region sparse = comb_region(40, 200, 90, 9);
  expect_equal_bytes([&](Bytes* bytes) {
    for (const region* source : {&dense, &sparse}) {
      for (const char* type : {"inner", "outer", "inner_filled"}) {
        region result;
        vexo::boundary(*source, &result, type);
        bytes->add(result);
      }
    }
  });
}

// Above the length up to which one thread sorts.
TEST_F(Repeat, SortsOfRunsGiveEqualBytes) {
  Runs runs = comb(50, 220, 4, 10);
  ASSERT_GT(runs.size(), static_cast<size_t>(internal::kSequentialSort));
  Random random(11);
  for (int i = static_cast<int>(runs.size()) - 1; i > 0; --i) {
    std::swap(runs[i], runs[random.between(0, i)]);
  }
  expect_equal_bytes([&](Bytes* bytes) {
    region r = region_of(runs);
    vexo::sort_y(r.rows, r.col_begins, r.col_ends,
                 static_cast<int>(r.run_count));
    vexo::compute_features(&r);
    bytes->add(r);
  });
}

// With the usual cost of a thread, at the size where work is split.
TEST_F(Repeat, LargeRegionsGiveEqualBytes) {
  internal::set_hand_over_cost(-1);
  const Runs runs = comb(550, 1000, 3, 12);
  ASSERT_GT(runs.size(), size_t{kThreads} << 14);
  region a = region_of(runs, 1000, 550);
  region b = comb_region(550, 1000, 4, 13);
  const auto work = [&](Bytes* bytes) {
    region all, some, parts;
    vexo::union2_y(a, b, &all);
    vexo::difference(a, b, &some);
    vexo::connection_y(a, &parts, 1);
    for (const region* r : {&all, &some, &parts}) bytes->add(*r);
  };
  internal::set_thread_limit(1);
  const std::string expected = once(work);
  vexo_test::on_threads(kThreads, [&] {
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(once(work) == expected);
  });
}

}  // namespace
