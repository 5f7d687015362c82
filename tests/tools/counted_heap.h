// SPDX-License-Identifier: MIT
//
// Replaces the heap of a test program: counts the blocks in use, and can make
// allocations fail. Include it in one source file of a program that is linked
// with malloc and its relatives wrapped, so that what regions allocate is
// counted too. The image library's pixels are never counted, but fail as well.
#ifndef RENDAL_TESTS_TOOLS_COUNTED_HEAP_H_
#define RENDAL_TESTS_TOOLS_COUNTED_HEAP_H_

#ifndef _WIN32
#include <malloc.h>
#endif

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace rendal::counted_heap {

inline std::atomic<long> live_blocks{0};

// Allocations that still succeed; then all fail, or the next one only.
inline constexpr long kNoLimit = std::numeric_limits<long>::max();
inline std::atomic<long> allocations_left{kNoLimit};
inline std::atomic<bool> only_one_fails{false};

inline bool MayAllocate() {
  const long left = allocations_left.fetch_sub(1, std::memory_order_relaxed);
  return left > 0 || (left < 0 && only_one_fails);
}

}  // namespace rendal::counted_heap

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void __real_free(void* block);

void* __wrap_malloc(size_t size) {
  void* const block =
      rendal::counted_heap::MayAllocate() ? __real_malloc(size) : nullptr;
  if (block != nullptr) ++rendal::counted_heap::live_blocks;
  return block;
}

void* __wrap_calloc(size_t count, size_t size) {
  void* const block = rendal::counted_heap::MayAllocate()
                          ? __real_calloc(count, size)
                          : nullptr;
  if (block != nullptr) ++rendal::counted_heap::live_blocks;
  return block;
}

void* __wrap_realloc(void* block, size_t size) {
  if (!rendal::counted_heap::MayAllocate()) return nullptr;
  void* const moved = __real_realloc(block, size);
  if (block == nullptr && moved != nullptr) ++rendal::counted_heap::live_blocks;
  if (block != nullptr && moved == nullptr && size == 0)
    --rendal::counted_heap::live_blocks;
  return moved;
}

void __wrap_free(void* block) {
  if (block != nullptr) --rendal::counted_heap::live_blocks;
  __real_free(block);
}
}

#ifndef _WIN32
// What the image library, a shared one, takes its pixels from.
extern "C" int posix_memalign(void** block, size_t alignment,
                              size_t size) noexcept {
  void* const taken = rendal::counted_heap::MayAllocate()
                          ? memalign(alignment, size)
                          : nullptr;
  if (taken == nullptr) return ENOMEM;
  *block = taken;
  return 0;
}
#endif

void* operator new(size_t size) {
  void* const block = __wrap_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { __wrap_free(block); }
void operator delete[](void* block) noexcept { __wrap_free(block); }
void operator delete(void* block, size_t) noexcept { __wrap_free(block); }
void operator delete[](void* block, size_t) noexcept { __wrap_free(block); }

#endif  // RENDAL_TESTS_TOOLS_COUNTED_HEAP_H_
