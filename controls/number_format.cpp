// SPDX-License-Identifier: MIT
#include "controls/number_format.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cwchar>

namespace {

std::string Print(const char* format, int digits, double value) {
  const int length = std::snprintf(nullptr, 0, format, digits, value);
  std::string text(length + 1, '\0');
  std::snprintf(text.data(), text.size(), format, digits, value);
  text.pop_back();  // the terminator
  return text;
}

// Trims the part before an exponent, if there is one.
void TrimZeros(std::string* text, char separator) {
  if (text->find(separator) == std::string::npos) return;
  const size_t end = std::min(text->find('e'), text->size());
  size_t kept = end;
  while (kept > 0 && (*text)[kept - 1] == '0') --kept;
  if (kept > 0 && (*text)[kept - 1] == separator) --kept;
  text->erase(kept, end - kept);
}

// How far beyond an end rounding may carry a value that should be on it.
double Tolerance(double value) {
  return std::max(1e-9, std::abs(value) * 1e-9);
}

}  // namespace

char NumberFormat::DecimalSeparator() {
  return *std::localeconv()->decimal_point;
}

std::wstring FormatNumber(double value, const NumberFormat& format) {
  constexpr int kDefaultDigits = 6;  // what plain "%g" means
  std::string text = Print("%.*g", kDefaultDigits, value);
  if (format.m_decimals >= 0) {
    const bool has_exponent = text.find('e') != std::string::npos;
    text = Print(has_exponent ? "%.*e" : "%.*f", format.m_decimals, value);
  }
  if (format.m_trimZeros) TrimZeros(&text, format.m_separator);
  return std::wstring(text.begin(), text.end());
}

double ParseNumber(const wchar_t* text) { return std::wcstod(text, nullptr); }

int NativePositions(const NumberRange& range) {
  const double steps =
      std::abs((range.m_maximum - range.m_minimum) / range.m_step);
  // In this order, not a number (an endless range) gives the limit.
  return static_cast<int>(
      std::min(static_cast<double>(kMostNativePositions), steps));
}

std::optional<int> NativePosition(double value, const NumberRange& range,
                                  int positions) {
  const double extent = range.m_maximum - range.m_minimum;
  if (extent == 0 || std::isnan(value)) return std::nullopt;
  if (value < range.m_minimum) return 0;
  if (value > range.m_maximum) return positions;
  return static_cast<int>(positions * (value - range.m_minimum) / extent + 0.5);
}

double StepNumber(double value, int delta, const NumberRange& range,
                  bool wrap) {
  const double minimum = range.m_minimum, maximum = range.m_maximum;
  if (!std::isfinite(value)) return value > 0 ? maximum : minimum;
  const double stepped = value + delta * range.m_step;
  if (delta < 0) {
    const double tolerance = Tolerance(std::max(stepped, minimum));
    if (minimum - stepped > tolerance) return wrap ? maximum : minimum;
    if (value - maximum > Tolerance(maximum)) return maximum;
    return std::max(stepped, minimum);
  }
  if (delta > 0) {
    const double tolerance = Tolerance(std::max(stepped, maximum));
    if (stepped - maximum > tolerance) return wrap ? minimum : maximum;
    if (minimum - value > Tolerance(minimum)) return minimum;
    return std::min(stepped, maximum);
  }
  return value;
}
