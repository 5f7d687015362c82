// SPDX-License-Identifier: MIT
//
// A loop over several threads that leaves none behind.
#ifndef VEXOLAB_PARALLEL_H_
#define VEXOLAB_PARALLEL_H_

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace vexolab {

// Threads are started for a call and joined before it returns: the library can
// be unloaded at any time, and starting one costs as much as measuring a few
// rectangles. So each is given at least this many.
constexpr int kIndicesPerThread = 48;

// For tests: loops take exactly so many threads, the machine and the work being
// what they are; 0: as many as they are worth.
inline std::atomic<int> forced_threads{0};

inline int thread_count(int n) {
  if (forced_threads > 0) return forced_threads;
  const int cores = static_cast<int>(std::thread::hardware_concurrency());
  return std::min(cores, n / kIndicesPerThread);
}

// Calls body(worker, begin, end) for pieces that cover [0, n), from several
// threads when there is enough to do. make_worker() is called once by each
// thread. The first exception of any piece is thrown again here.
template <typename MakeWorker, typename Body>
void parallel_for(int n, MakeWorker make_worker, Body body) {
  constexpr int kPiece = 8;
  std::atomic<int> next{0};
  std::mutex mutex;
  std::exception_ptr failure;
  const auto work = [&]() noexcept {
    try {
      auto worker = make_worker();
      for (int begin = next.fetch_add(kPiece); begin < n;
           begin = next.fetch_add(kPiece)) {
        body(worker, begin, std::min(begin + kPiece, n));
      }
    } catch (...) {
      const std::lock_guard<std::mutex> lock(mutex);
      if (!failure) failure = std::current_exception();
      next = n;
    }
  };
  const int helpers = thread_count(n) - 1;
  std::vector<std::thread> threads;
  if (helpers > 0) threads.reserve(static_cast<size_t>(helpers));
  for (int i = 0; i < helpers; ++i) {
    try {
      threads.emplace_back(work);
    } catch (const std::exception&) {
      break;  // No more threads, or no memory for one: fewer do as well.
    }
  }
  work();
  for (std::thread& thread : threads) thread.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace vexolab

#endif  // VEXOLAB_PARALLEL_H_
