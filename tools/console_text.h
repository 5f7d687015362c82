// SPDX-License-Identifier: MIT
#ifndef RENDAL_TOOLS_CONSOLE_TEXT_H_
#define RENDAL_TOOLS_CONSOLE_TEXT_H_

namespace rendal {

// Formats to standard output, adding nothing of its own. The text goes out in
// one write and at once, so that a multi-byte character is never cut in two on
// its way to an unbuffered console. Text is UTF-8.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void ConsolePrintf(const char* format, ...);

}  // namespace rendal

#endif  // RENDAL_TOOLS_CONSOLE_TEXT_H_
