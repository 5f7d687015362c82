// SPDX-License-Identifier: MIT
//
// F: memory ids, repetition, threads.
#include <algorithm>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include "tests/vexolab/acceptance/report.h"
#include "tests/vexolab/library_calls.h"

namespace acceptance {
namespace {

using library::point_list;
using synthetic::grey_image;
using synthetic::random;

grey_image noisy_disc(random* r) {
  synthetic::coverage c(301, 301);
  synthetic::add_ellipse({150.3, 149.6, 0, 100, 100}, 0.7, 1, &c);
  return synthetic::expose(c, {50, 100, 5, nullptr}, r);
}

bool same_bits(const point_list& a, const point_list& b) {
  return a.n == b.n && a.n > 0 &&
         std::memcmp(a.values.data(), b.values.data(),
                     a.values.size() * sizeof(double)) == 0;
}

void memory(report* out, random* r) {
  std::set<int> ids;
  std::vector<float*> arrays;
  bool positive = true;
  for (int i = 0; i < 200; ++i) {
    float* data = nullptr;
    int n = 0;
    const int id =
        gen_measure_circle(100, 100, 20 + i, 20, 10, 1, 16, &data, &n);
    positive = positive && id >= 1 && n == 16;
    ids.insert(id);
    arrays.push_back(data);
  }
  out->holds("F1", "ids are positive and differ",
             positive && ids.size() == 200);
  bool kept = true;
  for (int i = 0; i < 200; ++i) {
    kept = kept && arrays[static_cast<size_t>(i)][0] == 120.0f + i;
  }
  out->holds("F2", "arrays stay as they are while others are made", kept);
  for (const int id : ids) clear_mems(id);
  for (const int id : ids) clear_mems(id);
  clear_mems(0);
  clear_mems(-1);
  clear_mems(2147483647);
  float* data = nullptr;
  int n = 0;
  const int fresh = gen_measure_line(0, 0, 9, 0, 10, 5, 1, 0, &data, &n);
  out->holds("F3", "released twice, unknown ids; no id comes back soon",
             fresh >= 1 && ids.count(fresh) == 0);
  clear_mems(fresh);

  const grey_image g = noisy_disc(r);
  const grey_image before = g;
  library::measured(g, 1, 20, "strongest",
                    library::on_circle(150, 150, 100, 40, 10, 1, 300).list);
  out->holds("F7", "the image is not written to", g.pixels == before.pixels);
}

void repetition(report* out, random* r) {
  const grey_image g = noisy_disc(r);
  // More than enough for several threads, and the same in pieces too few for
  // them. Single rectangles have no neighbours, so they are a line's.
  const auto rects = library::on_circle(150, 150, 100, 40, 10, 1, 600).list;
  const point_list all = library::measured(g, 1, 20, "strongest", rects);
  bool repeated = true;
  for (int i = 0; i < 5; ++i) {
    repeated = repeated &&
               same_bits(all, library::measured(g, 1, 20, "strongest", rects));
  }
  out->holds("F4", "repetition gives the same bits", repeated);

  synthetic::coverage c(301, 301);
  synthetic::add_half_plane(150.3, 150, 5, 0.7, 1, &c);
  const grey_image edge = synthetic::expose(c, {50, 100, 5, nullptr}, r);
  const auto row = library::on_line(150, 40, 150, 260, 40, 4, -1, 400).list;
  const point_list together = library::measured(edge, 1, 20, "strongest", row);
  bool same = together.n == 400;
  for (int i = 0; same && i < 400; ++i) {
    const auto alone = library::measured(edge, 1, 20, "strongest",
                                         {row[static_cast<size_t>(i)]});
    same = alone.n == 1 && alone.x(0) == together.x(i) &&
           alone.y(0) == together.y(i);
  }
  out->holds("F4", "measured by several threads or one: the same bits", same);

  std::vector<std::thread> threads;
  std::vector<int> equal(6, 0);
  for (int t = 0; t < 6; ++t) {
    threads.emplace_back([&, t] {
      bool all_equal = true;
      for (int i = 0; i < 10; ++i) {
        const auto again =
            library::on_circle(150, 150, 100, 40, 10, 1, 600).list;
        all_equal =
            all_equal &&
            same_bits(all, library::measured(g, 1, 20, "strongest", again));
      }
      equal[static_cast<size_t>(t)] = all_equal ? 1 : 0;
    });
  }
  for (std::thread& t : threads) t.join();
  out->holds("F5", "six callers at once get the same bits",
             std::count(equal.begin(), equal.end(), 1) == 6);
}

}  // namespace

void contract(report* out, uint64_t seed) {
  random r(600 + seed);
  memory(out, &r);
  repetition(out, &r);
}

}  // namespace acceptance
