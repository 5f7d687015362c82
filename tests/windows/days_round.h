// SPDX-License-Identifier: MIT
//
// A whole day's work at the real program, on photographs: every blob button,
// every caliper, the line finder, the view, a second start, the end. After each
// step it is checked what an operator would see come true: status, list,
// console and pixels of the screen.
#ifndef RENDAL_TESTS_WINDOWS_DAYS_ROUND_H_
#define RENDAL_TESTS_WINDOWS_DAYS_ROUND_H_

#include <filesystem>

namespace rendal_test {

// Starts the program, works it and closes it. Throws at the first step that
// does not come true. Unless `pictures` is empty, a screenshot of every state
// is left there, numbered, and what the console said.
void WorkDaysRound(const std::filesystem::path& pictures);

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_DAYS_ROUND_H_
