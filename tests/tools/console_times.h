// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace rendal {

// A console text with the seconds of every elapsed time replaced by "T"; where
// no number stands, the text stays. (Compiling a regular expression into each
// test that needs this would take longer than all else in it.)
inline std::string WithoutTimes(std::string text) {
  constexpr std::string_view kLabel = "elasped time:";
  for (size_t at = text.find(kLabel); at != std::string::npos;
       at = text.find(kLabel, at)) {
    at += kLabel.size();
    const size_t end = text.find_first_not_of("0123456789.e+-", at);
    if (end > at && end != std::string::npos) text.replace(at, end - at, "T");
  }
  return text;
}

}  // namespace rendal
