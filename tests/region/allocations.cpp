// SPDX-License-Identifier: MIT
#include "allocations.h"

#include <cstddef>
#include <new>

// The linker's --wrap sends the library's calls here.
extern "C" {
void* __real_malloc(size_t n);
void* __real_realloc(void* p, size_t n);
void __real_free(void* p);
void* __wrap_malloc(size_t n);
void* __wrap_realloc(void* p, size_t n);
void __wrap_free(void* p);
}

namespace {

long g_live = 0;
long g_requests = 0;
long g_failing = 0;

bool fails() { return ++g_requests == g_failing; }

}  // namespace

namespace vexo_test {

long live_blocks() { return g_live; }

long fail_request(long n) {
  const long requests = g_requests;
  g_requests = 0;
  g_failing = n;
  return requests;
}

}  // namespace vexo_test

void* __wrap_malloc(size_t n) {
  if (fails()) return nullptr;
  void* p = __real_malloc(n);
  g_live += p != nullptr;
  return p;
}

void* __wrap_realloc(void* p, size_t n) {
  if (fails()) return nullptr;
  void* fresh = __real_realloc(p, n);
  g_live += p == nullptr && fresh != nullptr;
  return fresh;
}

void __wrap_free(void* p) {
  g_live -= p != nullptr;
  __real_free(p);
}

// The test's own objects are not counted, even where the C++ runtime is linked
// statically and its malloc is wrapped as well.
void* operator new(size_t n) {
  void* p = __real_malloc(n > 0 ? n : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void operator delete(void* p) noexcept { __real_free(p); }
void operator delete(void* p, size_t) noexcept { __real_free(p); }
