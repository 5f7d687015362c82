// SPDX-License-Identifier: MIT
#include <cstring>

#include "region/internal/bit_boundary.h"
#include "region/internal/contour.h"
#include "region/internal/element.h"
#include "region/internal/morphology.h"
#include "region/internal/set_runs.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::bit_boundary;
using internal::canonical_runs;
using internal::copy_image_size;
using internal::dense_boundary;
using internal::dilate;
using internal::edge;
using internal::element_runs;
using internal::erode;
using internal::outer_contours;
using internal::run_buffer;
using internal::run_view;
using internal::runs_of;
using internal::with_region_errors;

// A pixel and its four edge neighbours.
const element_runs& cross() {
  static const element_runs runs{{-1, 0, 0}, {0, -1, 1}, {1, 0, 0}};
  return runs;
}

run_buffer inner(const run_view& source) {
  if (dense_boundary(source)) return bit_boundary(source, edge::inner);
  const run_buffer core = erode(source, cross());
  return subtract_runs(source, view_of(core));
}

run_buffer outer(const run_view& source) {
  if (dense_boundary(source)) return bit_boundary(source, edge::outer);
  const run_buffer grown = dilate(source, cross());
  return subtract_runs(view_of(grown), source);
}

// The output's own runs, then the contours.
run_buffer with_contours(const run_view& source, const region& output) {
  const run_buffer contours = outer_contours(source);
  run_buffer all(output.run_count + contours.size());
  for (const run_view& part : {runs_of(output), view_of(contours)}) {
    for (size_t i = 0; i < part.count; ++i)
      all.push(part.rows[i], part.begins[i], part.ends[i]);
  }
  return all;
}

}  // namespace

void boundary(const region& source, region* output, const char* type) {
  if (source.child_count != 0 || source.run_count == 0 || type == nullptr)
    return;
  with_region_errors([&] {
    const canonical_runs canonical(runs_of(source));
    const run_view& runs = canonical.view();
    if (std::strcmp(type, "inner") == 0) {
      inner(runs).move_to(output);
    } else if (std::strcmp(type, "inner_filled") == 0) {
      with_contours(runs, *output).move_to(output);
    } else if (std::strcmp(type, "outer") == 0) {
      outer(runs).move_to(output);
    } else {
      return;
    }
    copy_image_size(source, output);
  });
}

}  // namespace vexo
