// SPDX-License-Identifier: MIT
//
// A monkey at the real program: random clicks, wheel turns, drags, spins, typed
// texts and image loads.
#ifndef RENDAL_TESTS_WINDOWS_MONKEY_H_
#define RENDAL_TESTS_WINDOWS_MONKEY_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/windows/process_counters.h"

namespace rendal_test {

struct MonkeyReport {
  struct Kind {
    int events = 0;
    double seconds = 0;  // of all of them
    double slowest_s = 0;
    std::string slowest;
  };
  std::map<std::string, Kind> kinds;
  std::vector<ProcessCounters> rests;  // at equal states, evenly spread
};

// Starts the program and lets the monkey do `events` things. The same seed does
// the same things. Throws when the program ends, does not answer within 10 s,
// or holds more in the second half of the run than it did in the first; the
// text names the seed and the last events.
MonkeyReport LetMonkeyPlay(uint32_t seed, int events);

// The report as text.
std::string Told(const MonkeyReport& report);

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_MONKEY_H_
