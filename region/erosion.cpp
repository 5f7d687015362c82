// SPDX-License-Identifier: MIT
#include "region/internal/element.h"
#include "region/internal/morphology.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::centred_by_chords;
using internal::copy_image_size;
using internal::element_runs;
using internal::erode;
using internal::placed_by_request;
using internal::run_buffer;
using internal::runs_of;
using internal::to_chords;
using internal::to_runs;
using internal::with_region_errors;

}  // namespace

void erosion1(region& source, region& element, region* output) {
  if (source.child_count != 0 || source.chord_count <= 0 ||
      element.chord_count <= 0)
    return;
  with_region_errors([&] {
    const element_runs centred = centred_by_chords(element);
    const run_buffer runs = to_runs(source.chords, source.chord_count);
    to_chords(view_of(erode(view_of(runs), centred))).move_to(output);
    copy_image_size(source, output);
  });
}

void erosion2(const region& source, const region& element, region* output,
              int ref_col, int ref_row) {
  if (source.child_count != 0 || source.run_count == 0 ||
      element.run_count == 0)
    return;
  with_region_errors([&] {
    const element_runs runs = placed_by_request(element, ref_col, ref_row);
    erode(runs_of(source), runs).move_to(output);
    copy_image_size(source, output);
  });
}

}  // namespace vexo
