// SPDX-License-Identifier: MIT
#include "region/internal/parallel.h"

#include <thread>

#if __has_include(<ppl.h>)
#include <ppl.h>
namespace runtime = concurrency;
#else
#include <tbb/parallel_for.h>
namespace runtime = tbb;
#endif

namespace vexo::internal {
namespace {

std::atomic<int> g_thread_limit{0};

// Waking a thread that sleeps, its cold caches and joining what it wrote: two
// threads gain from about 0.4 ms on (bench_morphology).
constexpr double kHandOverCost = 200e3;
std::atomic<double> g_hand_over_cost{kHandOverCost};

std::atomic<dispatch_function> g_dispatch{nullptr};

int hardware_threads() {
  static const int threads =
      std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  return threads;
}

}  // namespace

int thread_count() {
  const int limit = g_thread_limit.load(std::memory_order_relaxed);
  return limit > 0 ? limit : hardware_threads();
}

void set_thread_limit(int threads) {
  g_thread_limit.store(threads, std::memory_order_relaxed);
}

size_t piece_count(size_t count, size_t grain) {
  const bool is_free = g_hand_over_cost.load(std::memory_order_relaxed) == 0;
  const size_t least = is_free ? 1 : std::max<size_t>(grain, 1);
  return std::clamp<size_t>(count / least, 1,
                            static_cast<size_t>(thread_count()));
}

size_t pieces_worth(double nanoseconds) {
  const double least = g_hand_over_cost.load(std::memory_order_relaxed);
  const auto most = static_cast<double>(thread_count());
  return static_cast<size_t>(
      std::clamp(nanoseconds / std::max(least, 1e-3), 1.0, most));
}

void set_hand_over_cost(double nanoseconds) {
  g_hand_over_cost.store(nanoseconds < 0 ? kHandOverCost : nanoseconds,
                         std::memory_order_relaxed);
}

void set_dispatch(dispatch_function instead) {
  g_dispatch.store(instead, std::memory_order_relaxed);
}

void dispatch(size_t count, task_function run, void* context) {
  const auto instead = g_dispatch.load(std::memory_order_relaxed);
  if (instead != nullptr) return instead(count, run, context);
  runtime::parallel_for(size_t{0}, count, [=](size_t i) { run(context, i); });
}

row_bands::row_bands(int height, size_t worth)
    : height_(std::max(height, 0)),
      count_(std::clamp(height_ / 8, 1, thread_count())) {
  if (worth < static_cast<size_t>(count_)) {
    count_ = std::max(1, static_cast<int>(worth));
  }
}

}  // namespace vexo::internal
