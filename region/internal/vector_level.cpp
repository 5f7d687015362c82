// SPDX-License-Identifier: MIT
#include "region/internal/vector_level.h"

#include <algorithm>
#include <atomic>

namespace vexo::internal {
namespace {

vector_level find_best_level() {
#ifdef VEXO_X86_VECTORS
  __builtin_cpu_init();
  if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi2")) {
    return vector_level::kPlain;
  }
  if (!__builtin_cpu_supports("avx512bw") ||
      !__builtin_cpu_supports("avx512dq") ||
      !__builtin_cpu_supports("avx512vl") ||
      !__builtin_cpu_supports("avx512vbmi") ||
      !__builtin_cpu_supports("avx512vbmi2") ||
      !__builtin_cpu_supports("avx512vpopcntdq")) {
    return vector_level::kAvx2;
  }
  return vector_level::kAvx512;
#else
  return vector_level::kPlain;
#endif
}

std::atomic<vector_level> g_limit{vector_level::kAvx512};

}  // namespace

vector_level current_vector_level() {
  static const vector_level best = find_best_level();
  return std::min(best, g_limit.load(std::memory_order_relaxed));
}

void set_vector_limit(vector_level level) {
  g_limit.store(level, std::memory_order_relaxed);
}

}  // namespace vexo::internal
