// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_BUILD_DATE_H_
#define RENDAL_APP_BUILD_DATE_H_

#include <string_view>

namespace rendal {

struct BuildDate {
  int year;
  int month;  // 1 to 12
  int day;
  bool operator==(const BuildDate&) const = default;
};

// Reads what the compiler's __DATE__ says: "Mmm dd yyyy", a day below 10 with a
// blank before it.
constexpr BuildDate ParseBuildDate(std::string_view date) {
  constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
  const auto digit = [&](size_t i) {
    return date[i] == ' ' ? 0 : date[i] - '0';
  };
  BuildDate result{};
  result.year = digit(7) * 1000 + digit(8) * 100 + digit(9) * 10 + digit(10);
  result.month = static_cast<int>(kMonths.find(date.substr(0, 3)) / 3) + 1;
  result.day = digit(4) * 10 + digit(5);
  return result;
}

}  // namespace rendal

#endif  // RENDAL_APP_BUILD_DATE_H_
