// SPDX-License-Identifier: MIT
//
// Who frees what, exactly once, and what happens when memory runs out. Objects
// made by new are not counted: the sanitizers watch them.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "allocations.h"
#include "pictures.h"
#include "region/internal/parallel.h"
#include "region/operations.h"

namespace {

using vexo::region;
using vexo_test::fail_request;
using vexo_test::live_blocks;
using vexo_test::Runs;

class Memory : public testing::Test {
 protected:
  // Some runtimes allocate at the first lock and at the first exception.
  static void SetUpTestSuite() {
    region input = vexo_test::picture({"#.#"});
    region result;
    vexo::connection(input, &result, 0);
    EXPECT_THROW(result.reserve(SIZE_MAX), std::runtime_error);
  }

  Memory() { vexo::internal::set_thread_limit(1); }
  ~Memory() override {
    fail_request(0);
    vexo::internal::set_thread_limit(0);
    EXPECT_EQ(live_blocks(), before_);
  }
  const long before_ = live_blocks();
};

// Fails every request of `action` in turn until it comes through. Returns the
// texts of what was thrown.
std::vector<std::string> fail_each(const std::function<void()>& action) {
  std::vector<std::string> texts;
  for (long n = 1;; ++n) {
    const long before = live_blocks();
    fail_request(n);
    try {
      action();
      fail_request(0);
      return texts;
    } catch (const std::runtime_error& error) {
      texts.push_back(error.what());
    }
    fail_request(0);
    EXPECT_EQ(live_blocks(), before) << "leak at request " << n;
    if (n > 1000) throw std::logic_error("never comes through");
  }
}

std::vector<std::string> texts(size_t mallocs, size_t reallocs) {
  std::vector<std::string> all(mallocs, "malloc failed");
  all.insert(all.end(), reallocs, "realloc failed");
  return all;
}

// A chord count is 32 bits: more is refused before any memory is asked for, one
// less is not. Where the C++ runtime is linked statically, what it asks for
// when it throws is counted, too.
#ifndef _WIN32
TEST_F(Memory, MoreThan2147483647ChordsAreRefusedBeforeTheResultIsTouched) {
  region r = vexo_test::picture({"#.#", ".#."});
  r.to_3();
  const auto chords = vexo_test::chords_of(r);
  const size_t runs = r.run_count;
  for (const size_t beyond : {size_t{1}, size_t{0}}) {
    r.run_count = size_t{INT32_MAX} + beyond;
    fail_request(1);
    EXPECT_THROW(r.to_3(), std::runtime_error);
    EXPECT_EQ(fail_request(0), beyond == 1 ? 0 : 1);
    EXPECT_EQ(vexo_test::chords_of(r), chords);
  }
  r.run_count = runs;
}
#endif

TEST_F(Memory, ConstructionTakesFourBlocksAndTheLastCopyFreesThem) {
  {
    region a;
    EXPECT_EQ(live_blocks() - before_, 4);
    region b(a), c;
    EXPECT_EQ(live_blocks() - before_, 8);
    c = b;  // frees the storage of c
    EXPECT_EQ(live_blocks() - before_, 4);
    EXPECT_EQ(*a.ref_count, 3);
  }
  EXPECT_EQ(live_blocks(), before_);
}

TEST_F(Memory, CapacityOfZeroTakesOnlyTheCount) {
  region r(0);
  EXPECT_EQ(live_blocks() - before_, 1);
}

TEST_F(Memory, AssignmentLeavesChordsAndChildRegionsToNobody) {
  region other;
  auto* chords = static_cast<vexo::chord*>(nullptr);
  region* child = new region(0);
  const long start = live_blocks();
  {
    region r = vexo_test::region_of({{1, 2, 3}});
    chords = r.chords;
    r.children = static_cast<region**>(malloc(sizeof(region*)));
    r.children[0] = child;
    r.child_count = 1;
    r = other;
  }
  EXPECT_EQ(live_blocks() - start, 1);  // the chord array
  EXPECT_EQ(chords[0].col_begin, 2);
  EXPECT_EQ(*child->ref_count, 1);
  free(chords);
  delete child;
}

TEST_F(Memory, AssignmentWithoutChildCountKeepsTheArrayOfChildren) {
  region other;
  const long start = live_blocks();
  auto* children = static_cast<region**>(malloc(sizeof(region*)));
  {
    region r;
    r.children = children;
    r = other;
  }
  EXPECT_EQ(live_blocks() - start, 1);
  free(children);
}

TEST_F(Memory, DestructorFreesChordsChildrenAndTheirArray) {
  region r = vexo_test::region_of({{1, 2, 3}});
  r.children = static_cast<region**>(malloc(3 * sizeof(region*)));
  r.children[0] = new region;
  r.children[1] = nullptr;
  r.children[2] = new region(vexo_test::region_of({{1, 2, 3}}));
  r.child_count = 3;
}

TEST_F(Memory, ChildrenOfAnEmptyCountLeaveOnlyTheirArray) {
  region r;
  r.children = static_cast<region**>(malloc(sizeof(region*)));
}

TEST_F(Memory, FailedConstructionSaysMallocFailed) {
  EXPECT_EQ(fail_each([] { region r; }), texts(4, 0));
  EXPECT_EQ(fail_each([] { region r(7); }), texts(4, 0));
  EXPECT_EQ(fail_each([] { region r(0); }), texts(1, 0));
}

TEST_F(Memory, FailedReserveSaysReallocFailedAndKeepsTheRuns) {
  for (long n = 1; n <= 3; ++n) {
    region r = vexo_test::region_of({{1, 2, 3}});
    fail_request(n);
    EXPECT_THROW(
        try { r.reserve(100000); } catch (const std::runtime_error& e) {
          EXPECT_STREQ(e.what(), "realloc failed");
          throw;
        },
        std::runtime_error);
    fail_request(0);
    EXPECT_EQ(r.capacity, 1u);
    EXPECT_EQ(vexo_test::runs_of(r), (Runs{{1, 2, 3}}));
  }
}

TEST_F(Memory, ImpossibleSizesFailBeforeAnythingIsTouched) {
  region r = vexo_test::region_of({{1, 2, 3}});
  EXPECT_THROW(r.reserve(SIZE_MAX), std::runtime_error);
  EXPECT_THROW(r.reserve(SIZE_MAX / 4 + 1), std::runtime_error);
  r.run_count = size_t{1} << 31;
  EXPECT_THROW(r.to_3(), std::runtime_error);
  EXPECT_EQ(r.chord_count, 1);
  r.run_count = 1;
  EXPECT_EQ(r.capacity, 1u);
}

TEST_F(Memory, FailedChordBuildNamesWhatFailed) {
  region fresh = vexo_test::region_of({{1, 2, 3}});
  free(fresh.chords);
  fresh.chords = nullptr;
  fresh.chord_count = 0;
  fail_request(1);
  EXPECT_THROW(
      try { fresh.to_3(); } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "malloc failed");
        throw;
      },
      std::runtime_error);
  fresh.to_3();
  fail_request(1);
  EXPECT_THROW(
      try { fresh.to_3(); } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "realloc failed");
        throw;
      },
      std::runtime_error);
  fail_request(0);
  EXPECT_EQ(vexo_test::chords_of(fresh), (Runs{{1, 2, 3}}));
}

TEST_F(Memory, EmptyChordResultIntoAUsedRegionNeitherThrowsNorDangles) {
  region r = vexo_test::region_of({{1, 2, 3}});
  unsigned char pixels[4] = {};
  vexo::threshold(pixels, 2, 2, 9, 9, &r);
  EXPECT_EQ(r.chord_count, 0);
  vexo::threshold(pixels, 2, 2, 0, 9, &r);
  EXPECT_EQ(r.chord_count, 2);
}

std::vector<unsigned char> checkerboard(int width, int height) {
  std::vector<unsigned char> pixels;
  for (int i = 0; i < width * height; ++i) {
    pixels.push_back((i % width + i / width) % 2 ? 255 : 0);
  }
  return pixels;
}

TEST_F(Memory, ThresholdLeavesTheResultAloneWhenItFails) {
  auto pixels = checkerboard(100, 100);  // 5000 runs
  using Form = void (*)(unsigned char*, int, int, int, int, region*);
  for (Form form : {vexo::threshold, vexo::threshold_y, vexo::threshold_y3}) {
    const auto thrown = fail_each([&] {
      region r = vexo_test::region_of({{1, 2, 3}}, 4, 4);
      try {
        form(pixels.data(), 100, 100, 255, 255, &r);
      } catch (...) {
        EXPECT_EQ(vexo_test::runs_of(r), (Runs{{1, 2, 3}}));
        EXPECT_EQ(vexo_test::chords_of(r), (Runs{{1, 2, 3}}));
        EXPECT_EQ(r.width, 4);
        throw;
      }
    });
    EXPECT_FALSE(thrown.empty());
    EXPECT_EQ(thrown.back(), "realloc failed");
    for (const auto& text : thrown) {
      EXPECT_TRUE(text == "malloc failed" || text == "realloc failed") << text;
    }
  }
}

TEST_F(Memory, ChordResultOfThresholdIsMallocWhenFresh) {
  auto pixels = checkerboard(4, 4);
  const auto thrown = fail_each([&] {
    region r(0);
    vexo::threshold(pixels.data(), 4, 4, 255, 255, &r);
  });
  for (const auto& text : thrown) EXPECT_EQ(text, "malloc failed");
}

region input_of(int width, int height) {
  auto pixels = checkerboard(width, height);
  region r;
  vexo::threshold_y(pixels.data(), width, height, 255, 255, &r);
  r.to_3();
  return r;
}

TEST_F(Memory, ConnectionFreesEverythingItsResultOwned) {
  region input = input_of(20, 20);
  const long start = live_blocks();
  {
    region result;
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(vexo::connection(input, &result, 0), 200);
      EXPECT_EQ(vexo::connection2(input, &result, 1), 1);
      EXPECT_EQ(vexo::connection_y(input, &result, 0), 200);
    }
  }
  EXPECT_EQ(live_blocks(), start);
}

TEST_F(Memory, ConnectionLeavesTheResultAloneWhenItFails) {
  region input = input_of(20, 20);
  const std::function<int(region&)> forms[] = {
      [&](region& r) { return vexo::connection(input, &r, 0); },
      [&](region& r) { return vexo::connection_y(input, &r, 0); },
      [&](region& r) { return vexo::connection2(input, &r, 0); }};
  for (const auto& form : forms) {
    const auto thrown = fail_each([&] {
      region r = vexo_test::region_of({{1, 2, 3}});
      try {
        EXPECT_EQ(form(r), 200);
      } catch (...) {
        EXPECT_EQ(vexo_test::chords_of(r), (Runs{{1, 2, 3}}));
        EXPECT_EQ(r.child_count, 0);
        EXPECT_EQ(r.children, nullptr);
        throw;
      }
    });
    EXPECT_GT(thrown.size(), 5u);
    for (const auto& text : thrown) {
      EXPECT_TRUE(text == "malloc failed" || text == "realloc failed") << text;
    }
  }
}

TEST_F(Memory, HundredThousandComponentsAreFewBlocks) {
  region input = input_of(500, 400);
  region result(0);
  fail_request(0);
  ASSERT_EQ(vexo::connection_y(input, &result, 0), 100000);
  EXPECT_LT(fail_request(0), 20);
}

TEST_F(Memory, FillUpLeavesTheResultAloneWhenItFails) {
  region input = vexo_test::picture({"###", "#.#", "###"});
  const std::function<void(region&)> forms[] = {
      [&](region& r) { vexo::fill_up(input, &r); },
      [&](region& r) { vexo::fill_up_y(input, &r); },
      [&](region& r) { vexo::fill_up_y2(input, &r); }};
  for (const auto& form : forms) {
    const auto thrown = fail_each([&] {
      region r = vexo_test::region_of({{1, 2, 3}}, 4, 4);
      try {
        form(r);
      } catch (...) {
        EXPECT_EQ(vexo_test::runs_of(r), (Runs{{1, 2, 3}}));
        EXPECT_EQ(vexo_test::chords_of(r), (Runs{{1, 2, 3}}));
        EXPECT_EQ(r.width, 4);
        throw;
      }
    });
    EXPECT_GT(thrown.size(), 4u);
  }
}

TEST_F(Memory, CopiesSurviveWhatOperationsDoToTheOriginal) {
  region r = vexo_test::region_of({{0, 0, 4}, {2, 0, 4}});
  const region copy = r;
  r.reserve(1000);
  r.to_3();
  EXPECT_EQ(vexo_test::runs_of(copy), (Runs{{0, 0, 4}, {2, 0, 4}}));
  EXPECT_EQ(vexo_test::chords_of(copy), (Runs{{0, 0, 4}, {2, 0, 4}}));
  // What reserve() and to_3() took for the one is its own; the old arrays are
  // the copy's, and whichever goes last frees only what it points to.
  free(r.rows);
  free(r.col_begins);
  free(r.col_ends);
  free(r.chords);
  r.rows = copy.rows;
  r.col_begins = copy.col_begins;
  r.col_ends = copy.col_ends;
  r.chords = copy.chords;
}

}  // namespace
