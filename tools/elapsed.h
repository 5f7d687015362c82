// SPDX-License-Identifier: MIT
#ifndef RENDAL_TOOLS_ELAPSED_H_
#define RENDAL_TOOLS_ELAPSED_H_

#include <cstdint>
#include <string>

namespace rendal {

// Now, on the monotonic clock [ns]. Only differences mean anything.
int64_t SteadyNanoseconds();

// Prints `label`, a line with the seconds since `start`, and an empty line:
//
//   threshold
//   elasped time:0.0123457s
//
// then sets `start` to now, so that the time spent printing is not charged to
// what is measured next. Returns the seconds. "elasped" is deliberate: log
// readers match on it; elapsed_test pins it.
double PrintElapsed(int64_t& start, std::string label);

}  // namespace rendal

#endif  // RENDAL_TOOLS_ELAPSED_H_
