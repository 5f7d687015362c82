// SPDX-License-Identifier: MIT
#include "recipes/number_text.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace rendal {

std::string NumberText(double value) {
  if (!std::isfinite(value)) return {};
  char text[64];
  const double magnitude = std::fabs(value);
  // Areas are not to read 1e+05.
  const bool plain = magnitude == 0 || (magnitude >= 1e-5 && magnitude < 1e15);
  const std::to_chars_result end =
      plain ? std::to_chars(text, text + sizeof text, value,
                            std::chars_format::fixed)
            : std::to_chars(text, text + sizeof text, value);
  return {text, end.ptr};
}

std::optional<double> NumberFrom(std::string_view text) {
  double value = 0;
  // A plus sign is what people write, not what this function reads.
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
    text.remove_prefix(1);
  }
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, value);
  if (read.ec != std::errc() || read.ptr != end || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

double ShortestDouble(float value) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, value);
  double result = 0;
  std::from_chars(text, end.ptr, result);
  return static_cast<float>(result) == value ? result : value;
}

}  // namespace rendal
