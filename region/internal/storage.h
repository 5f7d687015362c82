// SPDX-License-Identifier: MIT
//
// Who owns an array of a region: the region (and its copies), or the block that
// it shares with the other children of a labelling.
#ifndef VEXO_REGION_INTERNAL_STORAGE_H_
#define VEXO_REGION_INTERNAL_STORAGE_H_

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "region/internal/child_block.h"
#include "region/internal/memory.h"
#include "region/region.h"

namespace vexo::internal {

inline bool in_block(const region& r, const void* array) {
  const child_block* block = block_of(r);
  return block != nullptr && block->contains(array);
}

// Frees an array of `r`, unless it is part of the block.
inline void free_array(const region& r, void* array) {
  if (array != nullptr && !in_block(r, array)) std::free(array);
}

// The same for an array that is to be replaced, while copies of `r` may live.
inline void free_unshared(const region& r, void* array) {
  if (*r.ref_count == 1) free_array(r, array);
}

// reallocate() for an array of `r`, which leaves copies of `r` and the block of
// its siblings intact.
template <class T>
T* regrow(const region& r, T* old, size_t old_n, size_t n) {
  if (*r.ref_count == 1 && !in_block(r, old)) return reallocate(old, n);
  if (n == 0) return nullptr;
  if (!fits_in_memory<T>(n)) throw_realloc_failed();
  T* fresh = static_cast<T*>(std::malloc(n * sizeof(T)));
  if (fresh == nullptr) throw_realloc_failed();
  if (old != nullptr) std::memcpy(fresh, old, std::min(old_n, n) * sizeof(T));
  return fresh;
}

// Destroys the children that are not null, not the array itself.
void destroy_children(region** children, int32_t count);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_STORAGE_H_
