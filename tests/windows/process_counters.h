// SPDX-License-Identifier: MIT
#ifndef RENDAL_TESTS_WINDOWS_PROCESS_COUNTERS_H_
#define RENDAL_TESTS_WINDOWS_PROCESS_COUNTERS_H_

#include <windows.h>

#include <cstddef>

namespace rendal_test {

// What a running process holds.
struct ProcessCounters {
  size_t handles = 0;
  size_t gdi_objects = 0;
  size_t windows = 0;  // all, hidden ones and children included
  size_t private_bytes = 0;
};

// Throws if the process cannot be asked.
ProcessCounters CountersOf(DWORD process_id);

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_PROCESS_COUNTERS_H_
