// SPDX-License-Identifier: MIT
//
// How long an operator waits at the real program, from a click to the repainted
// view, on photographs of 20 megapixels.
#ifndef RENDAL_TESTS_WINDOWS_RESPONSIVENESS_H_
#define RENDAL_TESTS_WINDOWS_RESPONSIVENESS_H_

namespace rendal_test {

// Starts the program, times what it does and prints two tables in Markdown.
void MeasureResponsiveness();

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_RESPONSIVENESS_H_
