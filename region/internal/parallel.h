// SPDX-License-Identifier: MIT
//
// Parallel loops, sorts and row bands: one place for the rules that decide when
// work is split. Every form gives the same result for every number of threads,
// since each iteration writes only what is its own.
//
// The task runtime (Concurrency Runtime where the compiler has it, else oneTBB)
// is known to parallel.cpp alone.
#ifndef VEXO_REGION_INTERNAL_PARALLEL_H_
#define VEXO_REGION_INTERNAL_PARALLEL_H_

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <limits>
#include <mutex>
#include <utility>

namespace vexo::internal {

// Hardware threads, or the limit when one is set.
int thread_count();

// For tests and benches: how many pieces work is split into at most; 1 keeps
// everything on the calling thread, 0 removes the limit. More than the hardware
// has is allowed. Not to be called while an operation runs.
void set_thread_limit(int threads);

// Calls run(context, i) for i < count on the runtime's threads and returns when
// all have returned. run must not throw.
using task_function = void (*)(void* context, size_t i);
void dispatch(size_t count, task_function run, void* context);

// For tests: a function that dispatch() leaves it to, or null for the runtime.
using dispatch_function = void (*)(size_t, task_function, void*);
void set_dispatch(dispatch_function instead);

// One parallel loop: what its tasks share. The two counters order the caller's
// memory before the tasks' and the tasks' before the caller's return. The
// runtime does so as well, but in a library that the thread sanitizer cannot
// look into.
template <class Body>
class parallel_loop {
 public:
  explicit parallel_loop(Body& body) : body_(body) {}

  void run(size_t count) {
    started_.store(1, std::memory_order_release);
    dispatch(count, &parallel_loop::task, this);
    finished_.load(std::memory_order_acquire);
    if (error_) std::rethrow_exception(error_);
  }

 private:
  static void task(void* context, size_t i) {
    auto* self = static_cast<parallel_loop*>(context);
    self->started_.load(std::memory_order_acquire);
    try {
      self->body_(i);
    } catch (...) {
      self->keep(i, std::current_exception());
    }
    self->finished_.fetch_add(1, std::memory_order_acq_rel);
  }

  // Of several exceptions the caller gets the one of the lowest index.
  void keep(size_t i, std::exception_ptr error) {
    const std::lock_guard lock(mutex_);
    if (i < failed_) {
      failed_ = i;
      error_ = std::move(error);
    }
  }

  Body& body_;
  std::atomic<size_t> started_{0};
  std::atomic<size_t> finished_{0};
  std::mutex mutex_;
  size_t failed_ = std::numeric_limits<size_t>::max();
  std::exception_ptr error_;
};

// How many pieces of at least `grain` items `count` items are worth.
size_t piece_count(size_t count, size_t grain);

// How many pieces work of about so many nanoseconds is worth, one for each
// thread at most.
size_t pieces_worth(double nanoseconds);

// For tests: what a piece must cost to be worth another thread. 0: nothing, and
// pieces may be of one item each. A negative number stands for the usual cost.
void set_hand_over_cost(double nanoseconds);

// First item of piece `i` of `pieces` equal ones.
inline size_t piece_begin(size_t count, size_t pieces, size_t i) {
  return count / pieces * i + std::min(i, count % pieces);
}

// body(i) for every i < count. One iteration runs on the calling thread. An
// exception reaches the caller when all pieces of the loop have ended.
template <class Body>
void parallel_for(size_t count, Body&& body) {
  const size_t pieces = std::min(count, size_t{8} * thread_count());
  auto piece = [&](size_t p) {
    const size_t last = piece_begin(count, pieces, p + 1);
    for (size_t i = piece_begin(count, pieces, p); i < last; ++i) body(i);
  };
  if (count == 1 || thread_count() == 1) {
    for (size_t p = 0; p < pieces; ++p) piece(p);
  } else if (count > 1) {
    parallel_loop loop(piece);
    loop.run(pieces);
  }
}

// body(first, last) for ranges that together are 0..count-1: one per thread,
// none below `grain` items.
template <class Body>
void parallel_ranges(size_t count, size_t grain, Body&& body) {
  if (count == 0) return;
  const size_t pieces = piece_count(count, grain);
  parallel_for(pieces, [&](size_t i) {
    body(piece_begin(count, pieces, i), piece_begin(count, pieces, i + 1));
  });
}

// Calls all of them, side by side where there are threads.
template <class First, class Second>
void parallel_invoke(First&& first, Second&& second) {
  parallel_for(2, [&](size_t i) {
    if (i == 0) {
      first();
    } else {
      second();
    }
  });
}

template <class First, class Second, class Third>
void parallel_invoke(First&& first, Second&& second, Third&& third) {
  parallel_for(3, [&](size_t i) {
    if (i == 0) {
      first();
    } else if (i == 1) {
      second();
    } else {
      third();
    }
  });
}

// Pieces of at most this many elements are never sorted in parallel.
constexpr ptrdiff_t kSequentialSort = 2048;

// Quicksort, the halves side by side; std::sort for small pieces or when there
// is one thread only. Equal elements have no guaranteed order.
template <class Iterator, class Less>
void parallel_sort(Iterator first, Iterator last, Less less) {
  const ptrdiff_t n = last - first;
  if (n <= kSequentialSort || thread_count() == 1) {
    std::sort(first, last, less);
    return;
  }
  const Iterator middle = first + n / 2;
  std::nth_element(first, middle, last, less);
  parallel_invoke([&] { parallel_sort(first, middle, less); },
                  [&] { parallel_sort(middle, last, less); });
}

// How an image's rows are split into bands: at least 8 rows a band on average,
// no more bands than threads or than `worth`, the first ones a row higher when
// it does not come out even.
class row_bands {
 public:
  explicit row_bands(int height,
                     size_t worth = std::numeric_limits<size_t>::max());
  int count() const { return count_; }
  int begin(int band) const {
    return band * (height_ / count_) + std::min(band, height_ % count_);
  }
  int end(int band) const { return begin(band + 1); }

 private:
  int height_;
  int count_;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_PARALLEL_H_
