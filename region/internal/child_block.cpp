// SPDX-License-Identifier: MIT
#include "region/internal/child_block.h"

#include <cstdlib>
#include <memory>
#include <new>

#include "region/internal/memory.h"

namespace vexo::internal {
namespace {

constexpr size_t kLine = 64;  // bytes of a cache line

constexpr size_t to_lines(size_t bytes) {
  return (bytes + kLine - 1) / kLine * kLine;
}

}  // namespace

child_block* child_block::create(size_t children, size_t payload) {
  if (children == 0) return nullptr;
  const size_t counts =
      to_lines(sizeof(child_block)) + to_lines(children * sizeof(region));
  const size_t arrays = counts + to_lines(children * sizeof(share_count));
  size_t bytes = arrays + payload + kLine;
  void* memory = allocate<char>(bytes);
  void* start = memory;
  std::align(kLine, arrays, start, bytes);
  auto* block = new (start) child_block;
  block->tenants_.store(2 * children, std::memory_order_relaxed);
  block->children_ = children;
  block->payload_ = static_cast<char*>(start) + arrays;
  block->end_ = block->payload_ + payload;
  block->memory_ = memory;
  return block;
}

region* child_block::first_child() {
  return reinterpret_cast<region*>(reinterpret_cast<char*>(this) +
                                   to_lines(sizeof(child_block)));
}

share_count* child_block::first_count() {
  return reinterpret_cast<share_count*>(reinterpret_cast<char*>(first_child()) +
                                        to_lines(children_ * sizeof(region)));
}

void child_block::construct(size_t i) {
  share_count* count = first_count() + i;
  *count = {1, this};
  new (first_child() + i) region(&count->count);
}

void child_block::leave(size_t n) {
  if (tenants_.fetch_sub(n, std::memory_order_acq_rel) == n) discard();
}

void child_block::discard() { std::free(memory_); }

}  // namespace vexo::internal
