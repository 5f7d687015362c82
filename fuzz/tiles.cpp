// SPDX-License-Identifier: MIT
#include "fuzz/tiles.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "region/operations.h"
#include "tests/region/chord_rules.h"

namespace fuzz {
namespace {

using vexo::region;

// Further than what a small region and an element take up together.
constexpr int kPeriod = 48;
constexpr size_t kMostRuns = 40000;

struct Tiling {
  int across = 1;
  int down = 1;
};

std::vector<Run> tiled(const std::vector<Run>& tile, const Tiling& t) {
  std::vector<Run> runs;
  for (int y = 0; y < t.down; ++y)
    for (auto row = tile.begin(); row != tile.end();) {
      const auto next = std::find_if(
          row, tile.end(), [&](const Run& r) { return r.row != row->row; });
      for (int x = 0; x < t.across; ++x)
        for (auto run = row; run != next; ++run)
          runs.push_back({run->row + kPeriod * y, run->begin + kPeriod * x,
                          run->end + kPeriod * x});
      row = next;
    }
  return runs;
}

// Fewer tiles for lists that would become too long.
Tiling read_tiling(Bytes& in, size_t runs) {
  Tiling t;
  const int b = in.next();
  t.across = 1 + (b & 7);
  t.down = 1 << (b >> 3 & 7);
  while (t.down > 1 &&
         runs * static_cast<size_t>(t.across * t.down) > kMostRuns)
    t.down /= 2;
  return t;
}

void check_set_operations(region& a, region& b, const Grid& first,
                          const Grid& second, const Tiling& t) {
  const struct {
    void (*chord_form)(region&, region&, region*);
    void (*run_form)(region&, region&, region*);
    Grid expected;
  } operations[] = {{vexo::union2, vexo::union2_y, first | second},
                    {vexo::difference, vexo::difference_y, first - second},
                    {vexo::intersection, vexo::intersection_y, first & second}};
  for (const auto& operation : operations) {
    const std::vector<Run> expected = tiled(runs_of(operation.expected), t);
    region chords, runs;
    operation.chord_form(a, b, &chords);
    operation.run_form(a, b, &runs);
    require(chords_of(chords) == expected, "tiles: set operation on chords");
    require(runs_of(runs) == expected, "tiles: set operation on runs");
  }
}

// Every operation on one region whose result is made of runs: the result for
// the tiles is the tiles of the result.
template <class Operation>
void check_one(const region& tile, const region& all, const Tiling& t,
               const char* what, Operation operation) {
  region of_tile, of_all;
  operation(tile, &of_tile);
  operation(all, &of_all);
  require(runs_of(of_all) == tiled(runs_of(of_tile), t), what);
}

void check_morphology(const region& tile, const region& all,
                      const region& element, const Tiling& t) {
  check_one(tile, all, t, "tiles: dilation2", [&](const region& r, region* to) {
    vexo::dilation2(r, element, to, -1, -1);
  });
  check_one(tile, all, t, "tiles: erosion2", [&](const region& r, region* to) {
    vexo::erosion2(r, element, to, -1, -1);
  });
  check_one(tile, all, t, "tiles: opening", [&](const region& r, region* to) {
    vexo::opening(r, element, to);
  });
  check_one(tile, all, t, "tiles: closing", [&](const region& r, region* to) {
    vexo::closing(r, element, to);
  });
}

void check_others(const region& tile, const region& all, const Tiling& t) {
  for (const char* kind : {"inner", "outer", "inner_filled"})
    check_one(tile, all, t, kind, [&](const region& r, region* to) {
      vexo::boundary(r, to, kind);
    });
  check_one(tile, all, t, "tiles: fill_up_y",
            [](const region& r, region* to) { vexo::fill_up_y(r, to); });
}

// Makes one chord of a list no better than it should be.
void add_flaw(Bytes& in, region& r) {
  if (r.chord_count < 2) return;
  const int kind = in.between(0, 5);
  const int place = in.next() << 8 | in.next();
  vexo::chord& c = r.chords[1 + place % (r.chord_count - 1)];
  vexo::chord& before = *(&c - 1);
  const int by = in.between(-8, 8);
  if (kind == 0) c.label = by;
  if (kind == 1) std::swap(c, before);
  // An earlier flaw may have put the begin at the least of all columns.
  if (kind == 2) c.col_end = std::max(c.col_begin, INT32_MIN + 8) + by;
  if (kind == 3) c.col_begin = before.col_end + 1;
  if (kind == 4) c.row += by;
  if (kind == 5) c.col_begin = INT32_MIN;
}

vexo_test::Chords all_of(const region& r) {
  return {r.chords, r.chords + r.chord_count};
}

void check_by_rule(region& a, region& b) {
  using vexo_test::Chords;
  const struct {
    void (*operation)(region&, region&, region*);
    Chords (*rule)(const Chords&, const Chords&);
  } operations[] = {{vexo::union2, vexo_test::by_rule_union},
                    {vexo::difference, vexo_test::by_rule_difference},
                    {vexo::intersection, vexo_test::by_rule_intersection}};
  for (const auto& [operation, rule] : operations) {
    const Chords expected = rule(all_of(a), all_of(b));
    region result;
    operation(a, b, &result);
    const Chords got = all_of(result);
    require(got.size() == expected.size() &&
                (got.empty() || std::memcmp(got.data(), expected.data(),
                                            got.size() * sizeof(got[0])) == 0),
            "careless chords");
  }
}

// Lists with flaws: chords follow the rules word by word. Runs follow no rule
// then, but the result has its bounds.
void check_flaws(Bytes& in, int flaws, region& a, region& b) {
  for (int i = 0; i < flaws; ++i) add_flaw(in, i % 2 == 0 ? a : b);
  check_by_rule(a, b);
  a.from_3();
  b.from_3();
  for (const auto operation :
       {vexo::union2_y, vexo::difference_y, vexo::intersection_y}) {
    region result;
    operation(a, b, &result);
    require(result.run_count <= 2 * (a.run_count + b.run_count),
            "careless runs");
  }
}

}  // namespace

void check_tiles(Bytes& in, const Grid& first, const Grid& second,
                 const region& element) {
  const std::vector<Run> runs_a = runs_of(first), runs_b = runs_of(second);
  const Tiling t = read_tiling(in, std::max(runs_a.size(), runs_b.size()));
  const int flaws = in.between(0, 3);
  if (t.across * t.down == 1 && flaws == 0) return;
  region tile, a, b;
  fill(tile, runs_a);
  fill(a, tiled(runs_a, t));
  fill(b, tiled(runs_b, t));
  check_set_operations(a, b, first, second, t);
  check_morphology(tile, a, element, t);
  check_others(tile, a, t);
  if (flaws > 0) check_flaws(in, flaws, a, b);
}

}  // namespace fuzz
