// SPDX-License-Identifier: MIT
#include "threads.h"

#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <thread>

#include "region/internal/parallel.h"

namespace vexo_test {
namespace {

std::atomic<long> g_shared{0};
std::atomic<long> g_all{0};

// The threads that work at one loop. Only some patience: those of a loop within
// a loop may be busy with the outer one.
class meeting {
 public:
  explicit meeting(int expected) : expected_(expected) {}

  void join() {
    const uint64_t me = uint64_t{1}
                        << tbb::this_task_arena::current_thread_index();
    if (present_.fetch_or(me) & me) return;
    constexpr int kPatience = 200;
    for (int i = 0; i < kPatience && size() < expected_; ++i) {
      std::this_thread::yield();
    }
  }
  int size() const { return std::popcount(present_.load()); }

 private:
  std::atomic<uint64_t> present_{0};
  int expected_;
};

void meet_and_run(size_t count, vexo::internal::task_function run,
                  void* context) {
  // Two are enough to run side by side; all of them take ten times as long.
  const bool all = g_all++ % 64 == 0;
  meeting threads(std::min(static_cast<int>(count),
                           all ? vexo::internal::thread_count() : 2));
  tbb::parallel_for(size_t{0}, count, [&](size_t i) {
    threads.join();
    run(context, i);
  });
  if (threads.size() > 1) ++g_shared;
}

}  // namespace

void on_threads(int threads, const std::function<void()>& body) {
  const tbb::global_control most(tbb::global_control::max_allowed_parallelism,
                                 static_cast<size_t>(threads));
  tbb::task_arena arena(threads);
  g_shared = g_all = 0;
  vexo::internal::set_thread_limit(threads);
  vexo::internal::set_dispatch(meet_and_run);
  arena.execute([&body] { body(); });
  vexo::internal::set_dispatch(nullptr);
  vexo::internal::set_thread_limit(0);
}

loop_counts loops_run() { return {g_shared, g_all}; }

}  // namespace vexo_test
