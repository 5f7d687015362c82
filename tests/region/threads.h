// SPDX-License-Identifier: MIT
//
// Parallel loops on more threads than the machine may have, truly side by side.
#ifndef TESTS_REGION_THREADS_H_
#define TESTS_REGION_THREADS_H_

#include <functional>

namespace vexo_test {

// Runs body() where the library's loops are split for that many threads, up to
// 64, and find as many waiting. Small tasks would all be done before a second
// thread is awake: so a thread that takes its first task of a loop waits a
// little for the others. Removes the limit of threads afterwards.
void on_threads(int threads, const std::function<void()>& body);

// How many loops of the last on_threads() had tasks on several threads, of how
// many.
struct loop_counts {
  long shared;
  long all;
};
loop_counts loops_run();

}  // namespace vexo_test

#endif  // TESTS_REGION_THREADS_H_
