// SPDX-License-Identifier: MIT
#include <algorithm>

#include "region/internal/child_block.h"
#include "region/internal/features.h"
#include "region/internal/labelling.h"
#include "region/internal/memory.h"
#include "region/internal/parallel.h"
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

// Constructs every child, lets fill(k, first, child) give it its runs and
// return them, and computes its features. first is how many runs the children
// before it have.
template <class Fill>
void build_children(child_list* children, const region& input,
                    const buffer<size_t>& firsts, Fill fill) {
  internal::parallel_ranges(
      children->count(), kChildGrain, [&](size_t first, size_t last) {
        internal::hull_memory memory;
        for (size_t k = first; k < last; ++k) {
          region* child = children->construct(k, input);
          internal::compute_features(fill(k, firsts[k], child), &memory, child);
        }
      });
}

// Where the runs of each component begin when runs are ordered by component.
buffer<size_t> running_sum(const buffer<size_t>& counts) {
  buffer<size_t> firsts(counts.size());
  size_t sum = 0;
  for (size_t k = 0; k < counts.size(); ++k) {
    firsts[k] = sum;
    sum += counts[k];
  }
  return firsts;
}

run_buffer runs_from(const chord_view& chords) {
  run_buffer runs(chords.count);
  for (size_t i = 0; i < chords.count; ++i) {
    runs.rows()[i] = chords.row(i);
    runs.begins()[i] = chords.begin(i);
    runs.ends()[i] = chords.end(i);
  }
  runs.set_size(chords.count);
  return runs;
}

labelling label_chords(const chord_view& chords, int neighbourhood) {
  const run_buffer runs = runs_from(chords);
  return internal::label_runs(
      {runs.rows(), runs.begins(), runs.ends(), runs.size()}, neighbourhood);
}

// Stable order by component, each chord labelled with its component from 1.
internal::chord_buffer sort_by_component(const chord_view& chords,
                                         const labelling& components,
                                         const buffer<size_t>& firsts) {
  buffer<size_t> next(firsts.size());
  std::copy(firsts.begin(), firsts.end(), next.begin());
  internal::chord_buffer sorted(chords.count);
  for (size_t i = 0; i < chords.count; ++i) {
    const int32_t k = components.labels[i];
    const chord& c = chords.chords[i];
    sorted.data()[next[k]++] = {c.col_begin, c.col_end, c.row, k + 1};
  }
  sorted.set_size(chords.count);
  return sorted;
}

// Child k's runs stand together: its rows, its begins, its ends.
void scatter(const run_view& runs, const labelling& components,
             const buffer<size_t>& firsts, int32_t* to) {
  struct place {
    int32_t* next;
    size_t count;
  };
  buffer<place> places(firsts.size());
  for (size_t k = 0; k < firsts.size(); ++k) {
    places[k] = {to + 3 * firsts[k], components.counts[k]};
  }
  for (size_t i = 0; i < runs.count; ++i) {
    place& p = places[components.labels[i]];
    int32_t* const out = p.next++;
    out[0] = runs.rows[i];
    out[p.count] = runs.begins[i];
    out[2 * p.count] = runs.ends[i];
  }
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
  const labelling components = label_chords(chords, neighbourhood);
  const buffer<size_t> firsts = running_sum(components.counts);
  internal::chord_buffer sorted = sort_by_component(chords, components, firsts);
  child_list children(components.components, chords.count * sizeof(chord));
  auto* const own = children.payload<chord>();
  build_children(&children, input, firsts,
                 [&](size_t k, size_t first, region* child) {
                   const size_t count = components.counts[k];
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
  const buffer<size_t> firsts = running_sum(components.counts);
  child_list children(components.components, 3 * runs.count * sizeof(int32_t));
  auto* const own = children.payload<int32_t>();
  scatter(runs, components, firsts, own);
  build_children(&children, input, firsts,
                 [&](size_t k, size_t first, region* child) {
                   const size_t count = components.counts[k];
                   child->rows = own + 3 * first;
                   child->col_begins = child->rows + count;
                   child->col_ends = child->col_begins + count;
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
