// SPDX-License-Identifier: MIT
#include "tools/elapsed.h"

#include <chrono>
#include <iostream>
#include <locale>
#include <sstream>

namespace rendal {

int64_t SteadyNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

double PrintElapsed(int64_t& start, std::string label) {
  const double seconds = static_cast<double>(SteadyNanoseconds() - start) / 1e9;
  // Composed first: one write per report, and the stream's own format settings
  // cannot change the number.
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << label << "\nelasped time:" << seconds << "s\n";
  std::cout << text.str() << std::endl;
  start = SteadyNanoseconds();
  return seconds;
}

}  // namespace rendal
