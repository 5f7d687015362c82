// SPDX-License-Identifier: MIT
#include "tools/elapsed.h"

#include <chrono>
#include <locale>
#include <sstream>

#include "tools/console_text.h"

namespace rendal {

int64_t SteadyNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

double PrintElapsed(int64_t& start, std::string label) {
  const double seconds = static_cast<double>(SteadyNanoseconds() - start) / 1e9;
  // A stream of its own: no locale changes the number.
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << label << "\nelasped time:" << seconds << "s\n";
  ConsolePrintf("%s\n", text.str().c_str());
  start = SteadyNanoseconds();
  return seconds;
}

}  // namespace rendal
