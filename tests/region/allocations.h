// SPDX-License-Identifier: MIT
//
// Counts the blocks of the C heap and lets chosen requests fail. Linked into a
// test program, the definitions in allocations.cpp replace malloc and its kin.
#ifndef VEXO_TESTS_REGION_ALLOCATIONS_H_
#define VEXO_TESTS_REGION_ALLOCATIONS_H_

namespace vexo_test {

// Blocks that this thread has taken and not given back, whoever frees them.
long live_blocks();

// Lets the n-th request (from 1) of this thread from now on fail, once; 0
// never. Returns how many requests there were since the last call.
long fail_request(long n);

}  // namespace vexo_test

#endif  // VEXO_TESTS_REGION_ALLOCATIONS_H_
