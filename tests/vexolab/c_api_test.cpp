// SPDX-License-Identifier: MIT
//
// The C interface as its callers meet it: codes, outputs on failure, memory.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/vexolab/library_calls.h"
#include "vexolab/vexolab.h"

extern "C" int call_from_c(float* rectangle);

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A bright half plane right of x = 50.3.
synthetic::grey_image Edge() {
  synthetic::random r(1);
  synthetic::coverage c(100, 80);
  synthetic::add_half_plane(50.3, 0, 0, 0.7, 1, &c);
  return synthetic::expose(c, {}, &r);
}

const library::rectangle kAcross = {50, 40, 0, 10, 5};

// Out arguments that hold something else before the call.
template <typename T>
struct Outputs {
  static inline T stale = 5;
  T* data = &stale;
  int count = 7;

  bool Emptied() const { return data == nullptr && count == 0; }
  bool Untouched() const { return data == &stale && count == 7; }
};

TEST(CInterface, CompilesAndRunsFromC) {
  float r[5];
  EXPECT_EQ(call_from_c(r), 20);
  EXPECT_EQ(r[3], 5.0f);
  EXPECT_EQ(r[4], 2.0f);
}

TEST(CInterface, EveryCodeHasItsOwnText) {
  std::set<std::string> texts;
  for (int code = -6; code <= 0; ++code) {
    ASSERT_NE(vexolab_error_text(code), nullptr);
    texts.insert(vexolab_error_text(code));
  }
  EXPECT_EQ(texts.size(), 7u);
  EXPECT_STREQ(vexolab_error_text(17), "ok");
  EXPECT_STREQ(vexolab_error_text(-7), "unknown error");
  EXPECT_STREQ(vexolab_error_text(std::numeric_limits<int>::min()),
               "unknown error");
}

TEST(Generators, EmptyTheirOutputsOnFailure) {
  Outputs<float> o;
  EXPECT_EQ(gen_measure_line(1, 1, 1, 1, 10, 5, 1, 0, &o.data, &o.count), -4);
  EXPECT_TRUE(o.Emptied());
  o = {};
  EXPECT_EQ(gen_measure_circle(1, 1, 9, 10, 5, 3, 0, &o.data, &o.count), -1);
  EXPECT_TRUE(o.Emptied());
  o = {};
  EXPECT_EQ(
      gen_measure_ellipse(1, 1, kNaN, 9, 8, 10, 5, 1, 0, &o.data, &o.count),
      -2);
  EXPECT_TRUE(o.Emptied());
}

TEST(Generators, WriteNothingWhenAnOutPointerIsNull) {
  Outputs<float> o;
  EXPECT_EQ(gen_measure_line(0, 0, 9, 9, 10, 5, 1, 0, nullptr, &o.count), -1);
  EXPECT_EQ(gen_measure_line(0, 0, 9, 9, 10, 5, 1, 0, &o.data, nullptr), -1);
  EXPECT_EQ(gen_measure_circle(0, 0, 9, 10, 5, 1, 0, nullptr, &o.count), -1);
  EXPECT_EQ(gen_measure_ellipse(0, 0, 0, 9, 8, 10, 5, 1, 0, &o.data, nullptr),
            -1);
  EXPECT_TRUE(o.Untouched());
}

TEST(Generators, RefuseNumbersThatAreNotFiniteOrTooLarge) {
  for (const double bad : {kNaN, kInfinity, -kInfinity, 1.1e7}) {
    EXPECT_EQ(library::on_line(bad, 0, 9, 9, 10, 5).code, VEXOLAB_E_NUMBER);
    EXPECT_EQ(library::on_line(0, 0, 9, 9, bad, 5).code, VEXOLAB_E_NUMBER);
    EXPECT_EQ(library::on_circle(0, 0, bad, 10, 5).code, VEXOLAB_E_NUMBER);
    EXPECT_EQ(library::on_ellipse(0, 0, 0, 9, bad, 10, 5).code,
              VEXOLAB_E_NUMBER);
  }
}

TEST(PpwToRr, LeavesARectangleOfZerosForNumbersThatAreNone) {
  float r[6] = {9, 9, 9, 9, 9, 9};
  ppw_to_rr(0, kNaN, 1, 1, 1, r);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(r[i], 0.0f);
  EXPECT_EQ(r[5], 9.0f);
}

TEST(DoMeasure, EmptiesItsOutputsOnFailure) {
  const auto g = Edge();
  Outputs<double> o;
  EXPECT_EQ(do_measure(nullptr, 100, 80, 1, 20, "first", kAcross.data(), 1,
                       &o.data, &o.count),
            VEXOLAB_E_ARGUMENT);
  EXPECT_TRUE(o.Emptied());
  o = {};
  EXPECT_EQ(do_measure(g.data(), 100, 80, 1, 20, "first", nullptr, 1, &o.data,
                       &o.count),
            VEXOLAB_E_ARGUMENT);
  EXPECT_TRUE(o.Emptied());
  o = {};
  EXPECT_EQ(do_measure(g.data(), 100, 80, 1, 20, "first", kAcross.data(), -1,
                       &o.data, &o.count),
            VEXOLAB_E_ARGUMENT);
  EXPECT_TRUE(o.Emptied());
  o = {};
  EXPECT_EQ(do_measure(g.data(), 100, 80, 1, 20, "first", kAcross.data(), 1,
                       nullptr, &o.count),
            VEXOLAB_E_ARGUMENT);
  EXPECT_TRUE(o.Untouched());
}

TEST(DoMeasure, RefusesSigmaThatIsNotPositive) {
  const auto g = Edge();
  EXPECT_EQ(library::measured(g, 0, 20, "first", {kAcross}).code,
            VEXOLAB_E_ARGUMENT);
  EXPECT_EQ(library::measured(g, kInfinity, 20, "first", {kAcross}).code,
            VEXOLAB_E_NUMBER);
  EXPECT_EQ(library::measured(g, 1, kNaN, "first", {kAcross}).code,
            VEXOLAB_E_NUMBER);
}

TEST(DoMeasure, NoRectanglesIsASuccessWithoutPoints) {
  const auto none = library::measured(Edge(), 1, 20, "first", {});
  EXPECT_GE(none.code, 1);
  EXPECT_EQ(none.n, 0);
}

TEST(DoMeasure, RectanglesWithoutAnEdgeContributeNothing) {
  const library::rectangle away = {20, 40, 0, 10, 5};
  const auto found =
      library::measured(Edge(), 1, 20, "first", {kAcross, away, kAcross});
  ASSERT_EQ(found.n, 2);
  EXPECT_NEAR(found.x(0), 50.3, 0.01);
  EXPECT_EQ(found.x(0), found.x(1));
  EXPECT_NEAR(found.y(0), 40, 1e-9);
}

TEST(DoMeasure, LineFindersPathFindsTheEdge) {
  // Falling downward, as the line finder asks with direction +1 and "first-".
  synthetic::random r(2);
  synthetic::coverage c(200, 100);
  synthetic::add_half_plane(0, 52.4, 90, 0.7, 1, &c);
  const auto g = synthetic::expose(c, {50, 150, 3, nullptr}, &r);
  const auto rects = library::on_line(10, 52, 190, 52, 10, 5);
  const auto found = library::measured(g, 1, 50, "first-", rects.list);
  ASSERT_EQ(found.n, 36);
  double line[4];
  ASSERT_EQ(do_fit(found.values.data(), found.n, 0, 7, 2.0f, 20, 2, line), 0);
  EXPECT_NEAR(line[0], 1, 1e-4);
  EXPECT_NEAR(line[3], 52.4, 0.01);
  for (const auto& rect : rects.list) {
    const auto all = library::edges_in(g, rect, 1.5, 30);
    ASSERT_EQ(all.list.size(), 1u);
    EXPECT_NEAR(all.list[0].y, 52.4, 0.1);
    EXPECT_LT(all.list[0].amplitude, -100);
  }
}

TEST(DoMeasure, SamplesAreMeasuredUpToTheLimitAndNotAbove) {
  const synthetic::grey_image plain = {1000, 800,
                                       std::vector<unsigned char>(800000, 90)};
  // 1000 x (998 + 1 + sigma) samples.
  const library::rectangle million = {500, 400, 30, 499.5f, 499};
  std::vector<library::rectangle> rects(VEXOLAB_MAX_SAMPLES / 1000000, million);
  EXPECT_GE(library::measured(plain, 1, 20, "first", rects).code, 1);
  // Rectangles that are not measured do not count.
  rects.push_back({500, 400, 30, 499.5f, 20001});
  EXPECT_GE(library::measured(plain, 1, 20, "first", rects).code, 1);
  rects.push_back({500, 400, 30, 0.5f, 0});
  const auto above = library::measured(plain, 1, 20, "first", rects);
  EXPECT_EQ(above.code, VEXOLAB_E_LIMIT);
  EXPECT_EQ(above.n, 0);
}

TEST(DoMeasure, WhatLiesBeyondTheImageIsNoSample) {
  const std::vector<library::rectangle> huge(500, {50, 40, 0, 20000, 20000});
  EXPECT_GE(library::measured(Edge(), 1, 20, "first", huge).code, 1);
}

// Down to the bit, although the edges between may have been sampled anew along
// arcs of their own.
TEST(MeasurePosD, PlacesEveryEdgeAsIfItWereTheOnlyOne) {
  synthetic::random r(4);
  int edges = 0;
  for (int trial = 0; trial < 60; ++trial) {
    synthetic::grey_image g = {120, 100, {}};
    const double bend = r.uniform(-0.03, 0.03), period = r.uniform(6, 14);
    for (int y = 0; y < g.height; ++y) {
      for (int x = 0; x < g.width; ++x) {
        const double t = (x - bend * (y - 50) * (y - 50)) / period;
        g.pixels.push_back(static_cast<unsigned char>(128 + 60 * std::sin(t) +
                                                      r.uniform(-30, 30)));
      }
    }
    const library::rectangle rect = {60, 50, 0, 30, 12};
    const auto all = library::edges_in(g, rect, 1, 20);
    const auto last = library::measured(g, 1, 20, "last", {rect});
    ASSERT_EQ(last.n, all.list.empty() ? 0 : 1);
    if (last.n == 0) continue;
    edges += static_cast<int>(all.list.size());
    EXPECT_EQ(all.list.back().x, last.x(0)) << trial;
    EXPECT_EQ(all.list.back().y, last.y(0)) << trial;
  }
  EXPECT_GT(edges, 100);
}

TEST(MeasurePosD, SamplesAreMeasuredUpToTheLimitAndNotAbove) {
  const synthetic::grey_image plain = {1500, 1500,
                                       std::vector<unsigned char>(2250000, 90)};
  // 1000 x (1998 + 1 + sigma) samples, the limit.
  library::rectangle rect = {700, 800, 30, 499.5f, 999};
  EXPECT_GE(library::edges_in(plain, rect, 1, 20).code, 1);
  rect[4] = 999.01f;
  EXPECT_EQ(library::edges_in(plain, rect, 1, 20).code, VEXOLAB_E_LIMIT);
}

TEST(MeasurePosD, EitherHalfLengthHasTheSameLimit) {
  const auto g = Edge();
  const auto measure = [&g](double l1, double l2) {
    Outputs<double> o;
    const int code = measure_pos_d(50, 40, 0, l1, l2, g.data(), 100, 80, 1, 20,
                                   &o.data, &o.count);
    clear_mems(code);
    return code;
  };
  constexpr double kMost = VEXOLAB_MAX_HALF_LENGTH;
  EXPECT_GE(measure(kMost, 5), 1);
  EXPECT_EQ(measure(kMost + 1, 5), VEXOLAB_E_LIMIT);
  EXPECT_GE(measure(10, kMost), 1);
  EXPECT_EQ(measure(10, kMost + 1), VEXOLAB_E_LIMIT);
}

TEST(MeasurePosD, CountsDoubles) {
  const auto g = Edge();
  double* data = nullptr;
  int count = 0;
  const int id =
      measure_pos_d(50, 40, 0, 10, 5, g.data(), 100, 80, 1, 20, &data, &count);
  ASSERT_GE(id, 1);
  ASSERT_EQ(count, 3);
  EXPECT_NEAR(data[0], 50.3, 0.01);
  EXPECT_NEAR(data[1], 40, 1e-9);
  EXPECT_NEAR(data[2], 130, 25);
  clear_mems(id);
}

TEST(MeasurePosD, EmptiesItsOutputsOnFailure) {
  const auto g = Edge();
  Outputs<double> o;
  EXPECT_EQ(measure_pos_d(50, 40, 0, 0, 5, g.data(), 100, 80, 1, 20, &o.data,
                          &o.count),
            VEXOLAB_E_ARGUMENT);
  EXPECT_TRUE(o.Emptied());
  o = {};
  EXPECT_EQ(measure_pos_d(50, kNaN, 0, 9, 5, g.data(), 100, 80, 1, 20, &o.data,
                          &o.count),
            VEXOLAB_E_NUMBER);
  EXPECT_TRUE(o.Emptied());
  o = {};
  EXPECT_EQ(measure_pos_d(50, 40, 0, 9, 5, g.data(), 100, 80, 1, 20, &o.data,
                          nullptr),
            VEXOLAB_E_ARGUMENT);
  EXPECT_TRUE(o.Untouched());
}

TEST(Memory, ArraysLiveUntilTheirOwnRelease) {
  Outputs<float> first;
  Outputs<float> second;
  const int a =
      gen_measure_circle(50, 50, 20, 10, 5, 1, 4, &first.data, &first.count);
  const int b =
      gen_measure_circle(80, 50, 20, 10, 5, 1, 4, &second.data, &second.count);
  ASSERT_GE(a, 1);
  ASSERT_GE(b, 1);
  EXPECT_NE(a, b);
  clear_mems(b);
  EXPECT_EQ(first.data[0], 70.0f);
  clear_mems(a);
  clear_mems(a);
  clear_mems(0);
  clear_mems(-1);
  clear_mems(std::numeric_limits<int>::max());
  clear_mems(std::numeric_limits<int>::min());
}

TEST(Memory, IdsStayDistinctAcrossThreads) {
  constexpr int kThreads = 4;
  constexpr int kEach = 500;
  std::vector<std::vector<int>> ids(kThreads);
  std::vector<std::thread> threads;
  for (auto& own : ids) {
    threads.emplace_back([&own] {
      for (int i = 0; i < kEach; ++i) {
        float* data = nullptr;
        int n = 0;
        own.push_back(gen_measure_line(0, 0, 9, 0, 5, 1, 1, 2, &data, &n));
      }
    });
  }
  for (auto& t : threads) t.join();
  std::set<int> all;
  for (const auto& own : ids) all.insert(own.begin(), own.end());
  EXPECT_EQ(all.size(), static_cast<size_t>(kThreads * kEach));
  for (const int id : all) clear_mems(id);
}

}  // namespace
