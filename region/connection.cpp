// SPDX-License-Identifier: MIT
#include <algorithm>

#include "region/internal/child_block.h"
#include "region/internal/features.h"
#include "region/internal/labelling.h"
#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/internal/runs.h"
#include "region/internal/views.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::child_block;
using internal::chord_view;
using internal::labelling;
using internal::run_buffer;
using internal::run_view;

// The children of a result until they are complete.
class child_list {
 public:
  child_list(int32_t count, size_t payload)
      : pointers_(static_cast<size_t>(count)),
        block_(child_block::create(static_cast<size_t>(count), payload)) {}
  ~child_list() {
    if (block_ != nullptr) block_->discard();
  }
  child_list(const child_list&) = delete;
  child_list& operator=(const child_list&) = delete;

  template <class T>
  T* payload() const {
    return reinterpret_cast<T*>(block_->payload());
  }
  size_t count() const { return pointers_.size(); }

  region* construct(size_t i, const region& input) {
    region* const child = pointers_[i] = block_->construct(i);
    child->width = input.width;
    child->height = input.height;
    return child;
  }

  void move_to(region* result) {
    internal::drop_children(result);
    result->child_count = static_cast<int32_t>(pointers_.size());
    result->children = pointers_.release();
    block_ = nullptr;
  }

 private:
  buffer<region*> pointers_;
  child_block* block_;
};

// Components a thread should have at least.
constexpr size_t kChildGrain = 64;

// Constructs every child, lets fill(child, first, count) give it its runs, the
// count from number `first` on in the order by component, and return them, and
// computes its features.
template <class Fill>
void build_children(child_list* children, const region& input,
                    const labelling& components, Fill fill) {
  internal::parallel_ranges(
      children->count(), kChildGrain, [&](size_t first, size_t last) {
        internal::hull_memory memory;
        for (size_t k = first; k < last; ++k) {
          region* child = children->construct(k, input);
          internal::compute_features(
              fill(child, components.first(k), components.count(k)), &memory,
              child);
        }
      });
}

labelling label_chords(const region& input, int neighbourhood) {
  const run_buffer runs = internal::to_runs(input.chords, input.chord_count);
  return internal::label_runs(internal::view_of(runs), neighbourhood);
}

void carry_image_size(const region& input, region* result) {
  result->width = input.width;
  result->height = input.height;
}

}  // namespace

int connection(region& input, region* result, int neighbourhood) {
  if (input.child_count > 0) return -1;
  if (input.chord_count < 1) return 0;
  const chord_view chords = internal::chords_of(input);
  const labelling components = label_chords(input, neighbourhood);
  internal::chord_buffer sorted(chords.count);
  internal::place_runs(components, [&](size_t i, size_t to) {
    const chord& c = chords.chords[i];
    sorted.data()[to] = {c.col_begin, c.col_end, c.row,
                         components.labels[i] + 1};
  });
  sorted.set_size(chords.count);
  child_list children(components.components, chords.count * sizeof(chord));
  auto* const own = children.payload<chord>();
  build_children(&children, input, components,
                 [&](region* child, size_t first, size_t count) {
                   child->chords = own + first;
                   child->chord_count = static_cast<int32_t>(count);
                   std::copy_n(sorted.data() + first, count, child->chords);
                   return internal::chords_of(*child);
                 });
  carry_image_size(input, result);
  sorted.move_to(result);
  children.move_to(result);
  return components.components;
}

int connection_y(const region& input, region* result, int neighbourhood) {
  if (input.child_count > 0 || input.run_count == 0) return -1;
  const run_view runs = internal::runs_of(input);
  const labelling components = internal::label_runs(runs, neighbourhood);
  child_list children(components.components, 3 * runs.count * sizeof(int32_t));
  int32_t* const rows = children.payload<int32_t>();
  int32_t* const begins = rows + runs.count;
  int32_t* const ends = begins + runs.count;
  internal::place_runs(components, [&](size_t i, size_t to) {
    rows[to] = runs.rows[i];
    begins[to] = runs.begins[i];
    ends[to] = runs.ends[i];
  });
  build_children(&children, input, components,
                 [&](region* child, size_t first, size_t count) {
                   child->rows = rows + first;
                   child->col_begins = begins + first;
                   child->col_ends = ends + first;
                   child->run_count = child->capacity = count;
                   return internal::runs_of(*child);
                 });
  carry_image_size(input, result);
  children.move_to(result);
  return components.components;
}

int connection2(region& input, region* result, int neighbourhood) {
  return connection(input, result, neighbourhood);
}

}  // namespace vexo
