// SPDX-License-Identifier: MIT
#include "region/region.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "region/internal/child_block.h"
#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/internal/storage.h"

namespace vexo {
namespace {

using internal::block_of;
using internal::child_block;
using internal::free_array;
using internal::share_count;

constexpr int32_t kDefaultCapacity = 2000;
// Runs below which copying between the two forms is not worth two threads.
constexpr size_t kCopyGrain = 1 << 15;

int32_t* new_share_count() {
  share_count* count = internal::allocate<share_count>(1);
  *count = {1, nullptr};
  return &count->count;
}

void free_run_arrays(region* r) {
  free_array(*r, r->rows);
  free_array(*r, r->col_begins);
  free_array(*r, r->col_ends);
}

// Everything that lies in no block, but the count.
void free_own_arrays(region* r) {
  free_run_arrays(r);
  free_array(*r, r->chords);
  if (r->children == nullptr) return;
  internal::destroy_children(r->children, r->child_count);
  std::free(r->children);
}

// Frees what the last owner of `r` owns.
void free_all(region* r) {
  child_block* block = block_of(*r);
  free_own_arrays(r);
  if (block == nullptr) {
    std::free(r->ref_count);
  } else {
    block->leave(1);
  }
}

// What assignment frees: no chords, no child regions. A block that holds the
// chords keeps this tenant, so that they stay as readable as any others.
void free_run_storage(region* r) {
  child_block* block = block_of(*r);
  free_run_arrays(r);
  if (r->child_count > 0) std::free(r->children);
  if (block == nullptr) {
    std::free(r->ref_count);
  } else if (!block->contains(r->chords)) {
    block->leave(1);
  }
}

}  // namespace

region::region() : region(kDefaultCapacity) {}

region::region(int32_t n) : region(new_share_count()) {
  if (n <= 0) return;
  rows = internal::allocate<int32_t>(n);
  col_begins = internal::allocate<int32_t>(n);
  col_ends = internal::allocate<int32_t>(n);
  capacity = static_cast<size_t>(n);
}

// Field by field, so that no field can be forgotten when one is added.
region::region(const region& other) : region(other.ref_count) {
  ++*ref_count;
  std::memcpy(static_cast<void*>(this), &other, sizeof(region));
}

region& region::operator=(const region& other) {
  ++*other.ref_count;
  if (--*ref_count == 0) free_run_storage(this);
  if (this != &other) {
    std::memcpy(static_cast<void*>(this), &other, sizeof(region));
  }
  return *this;
}

region::~region() {
  if (--*ref_count == 0) free_all(this);
}

void region::operator delete(region* r, std::destroying_delete_t) {
  child_block* home = child_block::home_of(r);
  r->~region();
  if (home != nullptr) {
    home->leave(1);
  } else {
    ::operator delete(r);
  }
}

void region::operator delete(void* memory) noexcept {
  ::operator delete(memory);
}

void* region::operator new(size_t bytes) { return ::operator new(bytes); }

void* region::operator new(size_t bytes, const std::nothrow_t& tag) noexcept {
  return ::operator new(bytes, tag);
}

void region::reserve(size_t n) {
  if (n <= capacity) return;
  rows = internal::regrow(*this, rows, capacity, n);
  col_begins = internal::regrow(*this, col_begins, capacity, n);
  col_ends = internal::regrow(*this, col_ends, capacity, n);
  capacity = n;
}

void region::to_3() {
  if (run_count == 0) return;
  const size_t labelled = chords == nullptr ? 0 : chord_count;
  internal::resize_chords(this, run_count);
  internal::parallel_ranges(
      run_count, kCopyGrain, [&](size_t first, size_t last) {
        const size_t kept = std::clamp(labelled, first, last);
        for (size_t i = first; i < kept; ++i) {
          chords[i] = {col_begins[i], col_ends[i], rows[i], chords[i].label};
        }
        for (size_t i = kept; i < last; ++i) {
          chords[i] = {col_begins[i], col_ends[i], rows[i], 0};
        }
      });
}

void region::from_3() {
  if (chord_count <= 0) return;
  const auto n = static_cast<size_t>(chord_count);
  reserve(n);
  internal::parallel_ranges(n, kCopyGrain, [&](size_t first, size_t last) {
    for (size_t i = first; i < last; ++i) {
      rows[i] = chords[i].row;
      col_begins[i] = chords[i].col_begin;
      col_ends[i] = chords[i].col_end;
    }
  });
  run_count = n;
}

namespace internal {

// Children that live in one block leave it together.
void destroy_children(region** children, int32_t count) {
  child_block* block = nullptr;
  size_t leaving = 0;
  for (int32_t i = 0; i < count; ++i) {
    region* child = children[i];
    if (child == nullptr) continue;
    child_block* home = block_of(*child);
    if (home == nullptr || !home->contains(child)) {
      delete child;
      continue;
    }
    if (home != block) {
      if (leaving > 0) block->leave(leaving);
      block = home;
      leaving = 0;
    }
    leaving += 1;  // the object
    if (--*child->ref_count == 0) {
      free_own_arrays(child);
      leaving += 1;  // its storage
    }
  }
  if (leaving > 0) block->leave(leaving);
}

}  // namespace internal
}  // namespace vexo
