// SPDX-License-Identifier: MIT
#include "region/internal/element.h"
#include "region/internal/morphology.h"
#include "region/internal/set_runs.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::canonical_runs;
using internal::copy_image_size;
using internal::dilate;
using internal::element_runs;
using internal::erode;
using internal::run_buffer;
using internal::run_view;
using internal::runs_of;
using internal::subtract_runs;
using internal::to_runs;
using internal::with_region_errors;

element_runs at_reference(const run_view& element) {
  const canonical_runs canonical(element);
  return placed(canonical.view(), upper_middle(canonical.view()));
}

run_buffer opened(const run_view& source, const element_runs& element) {
  const run_buffer eroded = erode(source, element);
  return dilate(view_of(eroded), element);
}

run_buffer closed(const run_view& source, const element_runs& element) {
  const element_runs mirrored = reflected(element);
  const run_buffer dilated = dilate(source, mirrored);
  return erode(view_of(dilated), mirrored);
}

// The closing inside the image. A result that has children counts as inside.
run_buffer closed_in_image(const region& source, const run_view& source_runs,
                           const region& element, const region& output) {
  run_buffer runs = closed(source_runs, at_reference(runs_of(element)));
  if (source.width > 0 && source.height > 0 && output.child_count == 0)
    runs = clip_runs(view_of(runs), source.width, source.height);
  return runs;
}

// Sources and elements that leave opening() and closing() without effect.
bool nothing_to_do(const region& source, const region& element) {
  return source.child_count != 0 || source.run_count == 0 ||
         element.run_count == 0;
}

}  // namespace

void opening(const region& source, const region& element, region* output) {
  if (nothing_to_do(source, element)) return;
  with_region_errors([&] {
    opened(runs_of(source), at_reference(runs_of(element))).move_to(output);
    copy_image_size(source, output);
  });
}

void opening1(region& source, region& element, region* output) {
  if (source.child_count != 0 || source.chord_count <= 0 ||
      element.chord_count <= 0)
    return;
  with_region_errors([&] {
    const run_buffer shape = to_runs(element.chords, element.chord_count);
    const run_buffer runs = to_runs(source.chords, source.chord_count);
    const run_buffer result =
        opened(view_of(runs), at_reference(view_of(shape)));
    to_chords(view_of(result)).move_to(output);
    copy_image_size(source, output);
  });
}

void closing(const region& source, const region& element, region* output) {
  if (nothing_to_do(source, element)) return;
  with_region_errors([&] {
    closed_in_image(source, runs_of(source), element, *output).move_to(output);
    copy_image_size(source, output);
  });
}

void top_hat(const region& source, const region& element, region* output) {
  if (source.child_count != 0) return;
  with_region_errors([&] {
    if (nothing_to_do(source, element)) {
      if (output->child_count != 0) return;
      subtract_runs(runs_of(source), runs_of(*output)).move_to(output);
      return;
    }
    const canonical_runs canonical(runs_of(source));
    const run_buffer inside =
        opened(canonical.view(), at_reference(runs_of(element)));
    subtract_runs(canonical.view(), view_of(inside)).move_to(output);
    copy_image_size(source, output);
  });
}

void bottom_hat(const region& source, const region& element, region* output) {
  if (source.child_count != 0) return;
  with_region_errors([&] {
    if (nothing_to_do(source, element)) {
      if (output->child_count != 0) return;
      subtract_runs(runs_of(*output), runs_of(source)).move_to(output);
      return;
    }
    const canonical_runs canonical(runs_of(source));
    const run_buffer outside =
        closed_in_image(source, canonical.view(), element, *output);
    subtract_runs(view_of(outside), canonical.view()).move_to(output);
    copy_image_size(source, output);
  });
}

}  // namespace vexo
