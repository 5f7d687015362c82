// SPDX-License-Identifier: MIT
//
// Builds two regions and a structuring element from the input's bytes, runs
// every operation of the region library in every form and compares each result
// with the raster of fuzz/grid.h. A difference aborts.
#include "fuzz/grid.h"
#include "fuzz/lists.h"
#include "fuzz/tiles.h"
#include "region/internal/morphology.h"
#include "region/internal/parallel.h"
#include "region/internal/vector_level.h"
#include "region/operations.h"

namespace {

using fuzz::Box;
using fuzz::Bytes;
using fuzz::chords_of;
using fuzz::Grid;
using fuzz::Pixel;
using fuzz::require;
using fuzz::Run;
using fuzz::runs_of;
using vexo::region;

// Rows of up to 24 columns, read bit by bit.
Grid read_grid(Bytes& in, int max_rows, int max_bytes) {
  Grid grid;
  const int top = in.between(-6, 6);
  const int left = in.between(-6, 6);
  const int rows = in.between(0, max_rows);
  const int bytes = in.between(1, max_bytes);
  for (int row = 0; row < rows; ++row)
    for (int byte = 0; byte < bytes; ++byte) {
      const int bits = in.next();
      for (int bit = 0; bit < 8; ++bit)
        if (bits >> bit & 1) grid.set(top + row, left + 8 * byte + bit);
    }
  return grid;
}

void fill(region& r, const Grid& grid, int width, int height) {
  fuzz::fill(r, runs_of(grid));
  r.width = width;
  r.height = height;
}

void expect_runs(const region& r, const Grid& grid, const char* what) {
  require(runs_of(r) == runs_of(grid), what);
}
void expect_chords(const region& r, const Grid& grid, const char* what) {
  require(chords_of(r) == runs_of(grid), what);
}

struct Case {
  Grid first, second, shape;
  region a, b, element;
  int width, height;
};

void read_element(Bytes& in, Case& c) {
  switch (in.between(0, 5)) {
    case 0:
      vexo::gen_se_circle(in.between(0, 6), &c.element);
      break;
    case 1:
      vexo::gen_se_rectangle(in.between(0, 9), in.next() % 14, &c.element);
      break;
    case 2:
      vexo::gen_se_cross(in.between(0, 9), in.next() % 14, &c.element);
      break;
    default:
      c.shape = read_grid(in, 7, 2);
      fill(c.element, c.shape, -1, -1);
      return;
  }
  for (size_t i = 0; i < c.element.run_count; ++i)
    for (int col = c.element.col_begins[i]; col <= c.element.col_ends[i]; ++col)
      c.shape.set(c.element.rows[i], col);
}

void check_set_operations(Case& c) {
  const struct {
    void (*chord_form)(region&, region&, region*);
    void (*run_form)(region&, region&, region*);
    Grid expected;
    const char* name;
  } operations[] = {
      {vexo::union2, vexo::union2_y, c.first | c.second, "union"},
      {vexo::difference, vexo::difference_y, c.first - c.second, "difference"},
      {vexo::intersection, vexo::intersection_y, c.first & c.second,
       "intersection"}};
  for (const auto& operation : operations) {
    region chords, runs;
    operation.chord_form(c.a, c.b, &chords);
    operation.run_form(c.a, c.b, &runs);
    expect_chords(chords, operation.expected, operation.name);
    expect_runs(runs, operation.expected, operation.name);
  }
}

void check_reference_forms(Case& c, const Box& box) {
  // The reference forms centre on (min + max) / 2 and reflect in dilation.
  const int row = (box.min_row + box.max_row) / 2;
  const int col = (box.min_col + box.max_col) / 2;
  const std::vector<Pixel> element = fuzz::offsets(c.shape, row, col);
  std::vector<Pixel> reflected;
  for (const Pixel& p : element) reflected.push_back({-p.row, -p.col});

  region eroded, dilated;
  vexo::erosion1(c.a, c.element, &eroded);
  expect_chords(eroded, fuzz::erode(c.first, element), "erosion1");
  vexo::dilation1(c.a, c.element, &dilated);
  Grid expected = fuzz::dilate(c.first, reflected);
  if (c.width > 0 && c.height > 0)
    expected = fuzz::clip(expected, c.width, c.height);
  expect_chords(dilated, expected, "dilation1");
}

void check_compositions(Case& c, const std::vector<Pixel>& element) {
  std::vector<Pixel> reflected;
  for (const Pixel& p : element) reflected.push_back({-p.row, -p.col});
  const Grid opened = fuzz::dilate(fuzz::erode(c.first, element), element);
  Grid closed = fuzz::erode(fuzz::dilate(c.first, reflected), reflected);
  if (c.width > 0 && c.height > 0)
    closed = fuzz::clip(closed, c.width, c.height);

  region opening, opening1, closing, top_hat, bottom_hat;
  vexo::opening(c.a, c.element, &opening);
  expect_runs(opening, opened, "opening");
  vexo::opening1(c.a, c.element, &opening1);
  expect_chords(opening1, opened, "opening1");
  vexo::closing(c.a, c.element, &closing);
  expect_runs(closing, closed, "closing");
  vexo::top_hat(c.a, c.element, &top_hat);
  expect_runs(top_hat, c.first - opened, "top_hat");
  vexo::bottom_hat(c.a, c.element, &bottom_hat);
  expect_runs(bottom_hat, closed - c.first, "bottom_hat");
}

void check_morphology(Case& c, int ref_row, int ref_col) {
  const Box box = fuzz::box_of(c.shape);
  if (c.shape.any()) check_reference_forms(c, box);

  const int mid_row = box.min_row + (box.max_row - box.min_row + 1) / 2;
  const int mid_col = box.min_col + (box.max_col - box.min_col + 1) / 2;
  const bool automatic = ref_row == -1 || ref_col == -1;
  const std::vector<Pixel> element = fuzz::offsets(
      c.shape, automatic ? mid_row : ref_row, automatic ? mid_col : ref_col);
  if (element.empty()) return;
  region dilated, eroded;
  vexo::dilation2(c.a, c.element, &dilated, ref_col, ref_row);
  expect_runs(dilated, fuzz::dilate(c.first, element), "dilation2");
  vexo::erosion2(c.a, c.element, &eroded, ref_col, ref_row);
  expect_runs(eroded, fuzz::erode(c.first, element), "erosion2");
  check_compositions(c, fuzz::offsets(c.shape, mid_row, mid_col));
}

void check_boundary(Case& c) {
  const std::vector<Pixel> cross = {{0, 0}, {0, 1}, {0, -1}, {1, 0}, {-1, 0}};
  region inner, outer, filled;
  vexo::boundary(c.a, &inner, "inner");
  expect_runs(inner, c.first - fuzz::erode(c.first, cross), "inner");
  vexo::boundary(c.a, &outer, "outer");
  expect_runs(outer, fuzz::dilate(c.first, cross) - c.first, "outer");
  vexo::boundary(c.a, &filled, "inner_filled");
  expect_runs(filled, fuzz::outer_contours(c.first), "inner_filled");
}

void check_holes(Case& c) {
  const Grid expected = fuzz::fill_holes(c.first);
  region chords, runs, runs2;
  vexo::fill_up(c.a, &chords);
  expect_chords(chords, expected, "fill_up");
  vexo::fill_up_y(c.a, &runs);
  expect_runs(runs, expected, "fill_up_y");
  vexo::fill_up_y2(c.a, &runs2);
  expect_runs(runs2, expected, "fill_up_y2");
}

void check_child(const region& child, const Grid& expected, bool chords) {
  if (chords)
    expect_chords(child, expected, "component's chords");
  else
    expect_runs(child, expected, "component's runs");
  const Box box = fuzz::box_of(expected);
  require(child.area == static_cast<int>(expected.count()), "area");
  require(child.bbox[0] == box.min_row && child.bbox[1] == box.min_col &&
              child.bbox[2] == box.max_row && child.bbox[3] == box.max_col,
          "bounding box");
}

void check_components(Case& c) {
  for (int neighbourhood = 0; neighbourhood <= 1; ++neighbourhood) {
    const std::vector<Grid> expected =
        fuzz::components(c.first, neighbourhood == 1);
    region chords, chords2, runs;
    const int n = static_cast<int>(expected.size());
    require(vexo::connection(c.a, &chords, neighbourhood) == n, "connection");
    require(vexo::connection2(c.a, &chords2, neighbourhood) == n,
            "connection2");
    require(vexo::connection_y(c.a, &runs, neighbourhood) == n, "connection_y");
    for (int i = 0; i < n; ++i) {
      check_child(*chords.children[i], expected[i], true);
      check_child(*chords2.children[i], expected[i], true);
      check_child(*runs.children[i], expected[i], false);
    }
  }
}

void check_threshold(const Grid& grid) {
  constexpr int kImageSide = 40;
  unsigned char image[kImageSide * kImageSide];
  Grid expected;
  for (int row = 0; row < kImageSide; ++row)
    for (int col = 0; col < kImageSide; ++col) {
      const bool in = grid.at(row, col);
      image[row * kImageSide + col] = in ? 100 : (row + col) & 1 ? 99 : 131;
      if (in) expected.set(row, col);
    }
  region chords, runs, runs3;
  vexo::threshold(image, kImageSide, kImageSide, 100, 130, &chords);
  expect_chords(chords, expected, "threshold");
  vexo::threshold_y(image, kImageSide, kImageSide, 100, 130, &runs);
  expect_runs(runs, expected, "threshold_y");
  vexo::threshold_y3(image, kImageSide, kImageSide, 100, 130, &runs3);
  expect_runs(runs3, expected, "threshold_y3");
}

// How the work is done, which no result depends on: threads and what a piece
// must cost to be worth one, vectors, the form of the morphology. An input
// without these bytes gets what a program gets.
void read_settings(Bytes& in) {
  using vexo::internal::morphology_form;
  using vexo::internal::vector_level;
  constexpr int kThreads[] = {0, 1, 2, 8};
  constexpr vector_level kLevels[] = {
      vector_level::kAvx512, vector_level::kAvx512, vector_level::kAvx2,
      vector_level::kPlain};
  constexpr morphology_form kForms[] = {
      morphology_form::cheapest, morphology_form::keys,
      morphology_form::strips,   morphology_form::bits,
      morphology_form::plain,    morphology_form::candidates,
      morphology_form::cheapest, morphology_form::cheapest};
  const int b = in.next();
  vexo::internal::set_thread_limit(kThreads[b & 3]);
  vexo::internal::set_vector_limit(kLevels[b >> 2 & 3]);
  vexo::internal::set_hand_over_cost(b & 16 ? 0 : -1);
  vexo::internal::set_morphology_form(kForms[b >> 5]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes in(data, size);
  Case c;
  const bool sized = in.next() & 1;
  c.width = sized ? in.between(0, 30) : -1;
  c.height = sized ? in.between(0, 30) : -1;
  const int ref_row = in.between(-4, 4);
  const int ref_col = in.between(-4, 4);
  read_element(in, c);
  c.first = read_grid(in, 20, 3);
  c.second = read_grid(in, 20, 3);
  fill(c.a, c.first, c.width, c.height);
  fill(c.b, c.second, c.width, c.height);
  read_settings(in);

  check_threshold(c.first);
  check_set_operations(c);
  if (!c.first.any()) return 0;
  fuzz::check_tiles(in, c.first, c.second, c.element);
  check_components(c);
  check_holes(c);
  check_boundary(c);
  check_morphology(c, ref_row, ref_col);
  return 0;
}
