// SPDX-License-Identifier: MIT
#include "region/internal/element.h"
#include "region/internal/morphology.h"
#include "region/internal/set_runs.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::centred_by_chords;
using internal::clip_runs;
using internal::copy_image_size;
using internal::dilate;
using internal::element_runs;
using internal::placed_by_request;
using internal::run_buffer;
using internal::runs_of;
using internal::to_chords;
using internal::to_runs;
using internal::with_region_errors;

}  // namespace

void dilation1(region& source, region& element, region* output) {
  if (source.child_count != 0 || source.chord_count <= 0 ||
      element.chord_count <= 0)
    return;
  with_region_errors([&] {
    // { p : element placed at p meets the source }, that is the dilation by
    // the element mirrored through its reference point.
    const element_runs mirrored = reflected(centred_by_chords(element));
    const run_buffer runs = to_runs(source.chords, source.chord_count);
    run_buffer dilated = dilate(view_of(runs), mirrored);
    if (source.width > 0 && source.height > 0)
      dilated = clip_runs(view_of(dilated), source.width, source.height);
    to_chords(view_of(dilated)).move_to(output);
    copy_image_size(source, output);
  });
}

void dilation2(const region& source, const region& element, region* output,
               int ref_col, int ref_row) {
  if (source.child_count != 0 || source.run_count == 0 ||
      element.run_count == 0)
    return;
  with_region_errors([&] {
    const element_runs runs = placed_by_request(element, ref_col, ref_row);
    dilate(runs_of(source), runs).move_to(output);
    copy_image_size(source, output);
  });
}

}  // namespace vexo
