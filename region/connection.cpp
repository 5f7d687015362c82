// SPDX-License-Identifier: MIT
#include <algorithm>

#include "region/internal/child_block.h"
#include "region/internal/label_sets.h"
#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/internal/views.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::child_block;
using internal::label_sets;

constexpr int32_t kNone = -1;

// Labels the runs cur..cur_end - 1 of a row from those of the row above.
template <class View>
void label_row(const View& runs, size_t prev, size_t prev_end, size_t cur,
               size_t cur_end, int64_t reach, label_sets* sets,
               int32_t* labels) {
  for (size_t i = cur; i < cur_end; ++i) {
    const int64_t begin = runs.begin(i) - reach;
    const int64_t end = runs.end(i) + reach;
    int32_t label = kNone;
    while (prev < prev_end && runs.end(prev) < begin) ++prev;
    while (prev < prev_end && runs.begin(prev) <= end) {
      const int32_t above = labels[prev];
      if (label == kNone) {
        label = above;
      } else if (label != above) {
        label = sets->unite(label, above);
      }
      if (runs.end(prev) > runs.end(i)) break;
      ++prev;
    }
    labels[i] = label == kNone ? sets->make() : label;
  }
}

// labels[i] becomes the component of run i, numbered from 0 in the order in
// which the components are first met. Returns how many there are.
template <class View>
int32_t label_runs(const View& runs, int32_t reach, int32_t* labels) {
  label_sets sets(runs.count);
  size_t prev = 0, prev_end = 0;
  for (size_t cur = 0; cur < runs.count;) {
    const size_t cur_end = internal::row_end(runs, cur);
    const bool follows =
        prev < prev_end && int64_t{runs.row(prev)} + 1 == runs.row(cur);
    label_row(runs, follows ? prev : prev_end, prev_end, cur, cur_end, reach,
              &sets, labels);
    prev = cur;
    prev_end = cur = cur_end;
  }
  const int32_t components = sets.number_sets();
  for (size_t i = 0; i < runs.count; ++i) labels[i] = sets.number(labels[i]);
  return components;
}

// Where the runs of each label begin when runs are ordered by label.
class label_offsets {
 public:
  label_offsets(const int32_t* labels, size_t runs, int32_t components)
      : first_(static_cast<size_t>(components) + 1) {
    std::fill(first_.begin(), first_.end(), size_t{0});
    for (size_t i = 0; i < runs; ++i) ++first_[labels[i] + 1];
    for (int32_t k = 0; k < components; ++k) first_[k + 1] += first_[k];
  }
  size_t operator[](size_t label) const { return first_[label]; }
  size_t count(size_t label) const { return first_[label + 1] - first_[label]; }
  const buffer<size_t>& all() const { return first_; }

 private:
  buffer<size_t> first_;
};

// The children of a result until they are complete.
class child_list {
 public:
  child_list(int32_t count, size_t payload)
      : pointers_(count), block_(child_block::create(count, payload)) {}
  ~child_list() {
    if (block_ != nullptr) block_->discard();
  }

  char* payload() const { return block_->payload(); }
  size_t count() const { return pointers_.size(); }

  region* construct(size_t i, const region& input) {
    block_->construct(i);
    region* child = pointers_[i] = block_->child(i);
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

// Constructs every child, lets fill(k, child) give it its runs, and computes
// its features.
template <class Fill>
void build_children(child_list* children, const region& input, Fill fill) {
  internal::parallel_ranges(children->count(), kChildGrain,
                            [&](size_t first, size_t last) {
                              for (size_t k = first; k < last; ++k) {
                                region* child = children->construct(k, input);
                                fill(k, child);
                                compute_features(child);
                              }
                            });
}

}  // namespace

int connection(region& input, region* result, int neighbourhood) {
  if (input.child_count > 0) return -1;
  if (input.chord_count < 1) return 0;
  const auto runs = internal::chords_of(input);
  buffer<int32_t> labels(runs.count);
  const int32_t n = label_runs(runs, neighbourhood, labels.data());
  const label_offsets offsets(labels.data(), runs.count, n);
  buffer<size_t> next(n);
  std::copy(offsets.all().begin(), offsets.all().begin() + n, next.begin());
  internal::chord_buffer sorted(runs.count);
  for (size_t i = 0; i < runs.count; ++i) {
    const chord& c = runs.chords[i];
    sorted.data()[next[labels[i]]++] = {c.col_begin, c.col_end, c.row,
                                        labels[i] + 1};
  }
  sorted.set_size(runs.count);
  child_list children(n, runs.count * sizeof(chord));
  auto* own = reinterpret_cast<chord*>(children.payload());
  build_children(&children, input, [&](size_t k, region* child) {
    child->chords = own + offsets[k];
    child->chord_count = static_cast<int32_t>(offsets.count(k));
    std::copy_n(sorted.data() + offsets[k], offsets.count(k), child->chords);
  });
  result->width = input.width;
  result->height = input.height;
  sorted.move_to(result);
  children.move_to(result);
  return n;
}

int connection_y(const region& input, region* result, int neighbourhood) {
  if (input.child_count > 0 || input.run_count == 0) return -1;
  const auto runs = internal::runs_of(input);
  if (runs.count > internal::kMaxChords) internal::throw_realloc_failed();
  buffer<int32_t> labels(runs.count);
  const int32_t n = label_runs(runs, neighbourhood, labels.data());
  const label_offsets offsets(labels.data(), runs.count, n);
  child_list children(n, 3 * runs.count * sizeof(int32_t));
  // Child k: its rows, then its begins, then its ends.
  auto* own = reinterpret_cast<int32_t*>(children.payload());
  buffer<size_t> next(n);
  std::fill(next.begin(), next.end(), size_t{0});
  for (size_t i = 0; i < runs.count; ++i) {
    const size_t k = labels[i];
    const size_t count = offsets.count(k);
    int32_t* to = own + 3 * offsets[k] + next[k]++;
    to[0] = runs.row(i);
    to[count] = runs.begin(i);
    to[2 * count] = runs.end(i);
  }
  build_children(&children, input, [&](size_t k, region* child) {
    const size_t count = offsets.count(k);
    child->rows = own + 3 * offsets[k];
    child->col_begins = child->rows + count;
    child->col_ends = child->col_begins + count;
    child->run_count = child->capacity = count;
  });
  result->width = input.width;
  result->height = input.height;
  children.move_to(result);
  return n;
}

int connection2(region& input, region* result, int neighbourhood) {
  return connection(input, result, neighbourhood);
}

}  // namespace vexo
