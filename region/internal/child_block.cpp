// SPDX-License-Identifier: MIT
#include "region/internal/child_block.h"

#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>

#include "region/internal/memory.h"

namespace vexo::internal {
namespace {

constexpr size_t kLine = 64;  // bytes of a cache line

constexpr size_t to_lines(size_t bytes) {
  return (bytes + kLine - 1) / kLine * kLine;
}

// All blocks there are: few, and asked for only when a child has been assigned
// over or a region of another origin is deleted.
std::mutex g_mutex;
child_block* g_first = nullptr;
std::atomic<size_t> g_blocks{0};

}  // namespace

void child_block::link() {
  const std::lock_guard lock(g_mutex);
  previous_ = nullptr;
  next_ = g_first;
  if (g_first != nullptr) g_first->previous_ = this;
  g_first = this;
  g_blocks.fetch_add(1, std::memory_order_relaxed);
}

void child_block::unlink() {
  const std::lock_guard lock(g_mutex);
  (previous_ == nullptr ? g_first : previous_->next_) = next_;
  if (next_ != nullptr) next_->previous_ = previous_;
  g_blocks.fetch_sub(1, std::memory_order_relaxed);
}

child_block* child_block::home_of(const region* object) {
  child_block* block = block_of(*object);
  if (block != nullptr && block->contains(object)) return block;
  if (g_blocks.load(std::memory_order_relaxed) == 0) return nullptr;
  const std::lock_guard lock(g_mutex);
  block = g_first;
  while (block != nullptr && !block->contains(object)) block = block->next_;
  return block;
}

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
  char* const bytes_of_block = static_cast<char*>(start);
  block->children_ =
      reinterpret_cast<region*>(bytes_of_block + to_lines(sizeof(child_block)));
  block->counts_ = reinterpret_cast<share_count*>(bytes_of_block + counts);
  block->payload_ = bytes_of_block + arrays;
  block->end_ = block->payload_ + payload;
  block->memory_ = memory;
  block->link();
  return block;
}

void child_block::leave(size_t n) {
  if (tenants_.fetch_sub(n, std::memory_order_acq_rel) == n) discard();
}

void child_block::discard() {
  unlink();
  std::free(memory_);
}

}  // namespace vexo::internal
