// SPDX-License-Identifier: MIT
#include "region/internal/memory.h"

#include <stdexcept>

#include "region/internal/storage.h"

namespace vexo::internal {

void throw_malloc_failed() { throw std::runtime_error("malloc failed"); }
void throw_realloc_failed() { throw std::runtime_error("realloc failed"); }

void run_buffer::move_to(region* r) {
  free_unshared(*r, r->rows);
  free_unshared(*r, r->col_begins);
  free_unshared(*r, r->col_ends);
  r->capacity = capacity();
  r->run_count = std::exchange(size_, 0);
  r->rows = rows_.release();
  r->col_begins = begins_.release();
  r->col_ends = ends_.release();
}

void chord_buffer::move_to(region* r) {
  if (size_ > kMaxChords) throw_realloc_failed();
  free_unshared(*r, r->chords);
  r->chord_count = static_cast<int32_t>(std::exchange(size_, 0));
  r->chords = chords_.release();
}

void resize_chords(region* r, size_t n) {
  if (n > kMaxChords) throw_realloc_failed();
  if (r->chords == nullptr) {
    r->chords = allocate<chord>(n);
  } else {
    r->chords = regrow(*r, r->chords, r->chord_count, n);
  }
  r->chord_count = static_cast<int32_t>(n);
}

void drop_children(region* r) {
  if (*r->ref_count == 1) {
    destroy_children(r->children, r->child_count);
    std::free(r->children);
  }
  r->children = nullptr;
  r->child_count = 0;
}

}  // namespace vexo::internal
