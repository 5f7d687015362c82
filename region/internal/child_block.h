// SPDX-License-Identifier: MIT
//
// The children of one labelling in one allocation: 100,000 components are one
// block, not half a million. Each child still behaves as a region of its own:
// it can be copied, grown, assigned to, taken out of its parent and deleted.
#ifndef VEXO_REGION_INTERNAL_CHILD_BLOCK_H_
#define VEXO_REGION_INTERNAL_CHILD_BLOCK_H_

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "region/region.h"

namespace vexo::internal {

// What region::ref_count points into: the count comes first, behind it stands
// who owns the arrays. block is null for regions that own theirs.
struct share_count {
  int32_t count;
  child_block* block;
};

// Header of the allocation. Behind it stand the child objects, their counts
// and `payload` bytes for their arrays. The block lives until every child
// object and every child's storage is gone, whatever the order.
class child_block {
 public:
  // Children come without runs, with all features unset. Throws "malloc
  // failed". nullptr for no children.
  static child_block* create(size_t children, size_t payload);

  char* payload() { return payload_; }

  bool contains(const void* p) const {
    const char* address = static_cast<const char*>(p);
    return address >= reinterpret_cast<const char*>(this) && address < end_;
  }

  // The block that `object` lives in, or null. A child that was assigned over
  // points to another's storage; only its address tells.
  static child_block* home_of(const region* object);

  // Says that n tenants (objects or storages) are gone; frees the block after
  // the last. Callable from any thread.
  void leave(size_t n);

  // Constructs child i; create() leaves that to the caller, so that it can be
  // done in parallel. Until all are constructed, discard() ends the block.
  region* construct(size_t i) {
    share_count* const count = counts_ + i;
    *count = {1, this};
    return new (child(i)) region(&count->count);
  }
  void discard();

 private:
  void link();
  void unlink();
  region* child(size_t i) { return children_ + i; }

  std::atomic<size_t> tenants_;
  region* children_;
  share_count* counts_;
  char* payload_;
  char* end_;
  void* memory_;
  child_block* previous_;  // in the list of all blocks
  child_block* next_;
};

// The block that holds the storage of `r`, or null.
inline child_block* block_of(const region& r) {
  return reinterpret_cast<const share_count*>(r.ref_count)->block;
}

}  // namespace vexo::internal

// Here, so that blocks of children are constructed without a call for each.
inline vexo::region::region(int32_t* count) noexcept
    : run_count(0),
      rows(nullptr),
      col_begins(nullptr),
      col_ends(nullptr),
      bbox{-1, -1, -1, -1},
      reals{-1, -1, -1, -1, -1, -1, -1, -1},
      chords(nullptr),
      chord_count(0),
      area(-1),
      more_reals{-1, -1, -1},
      width(-1),
      height(-1),
      child_count(0),
      children(nullptr),
      ref_count(count),
      capacity(0) {}

#endif  // VEXO_REGION_INTERNAL_CHILD_BLOCK_H_
