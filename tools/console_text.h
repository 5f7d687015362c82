// SPDX-License-Identifier: MIT
#ifndef RENDAL_TOOLS_CONSOLE_TEXT_H_
#define RENDAL_TOOLS_CONSOLE_TEXT_H_

#include <string>

namespace rendal {

// Formats to standard output, adding nothing of its own. The text goes out in
// one write and at once, so that a multi-byte character is never cut in two on
// its way to an unbuffered console. Text is UTF-8.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void ConsolePrintf(const char* format, ...);

// Takes what its thread prints to the console while it lives; other threads
// print as before. The newest of several on one thread gets the text.
class ConsoleCapture {
 public:
  ConsoleCapture();
  ~ConsoleCapture();
  ConsoleCapture(const ConsoleCapture&) = delete;
  ConsoleCapture& operator=(const ConsoleCapture&) = delete;

  const std::string& Text() const { return m_text; }

 private:
  friend void ConsolePrintf(const char* format, ...);
  std::string m_text;
  ConsoleCapture* m_outer;
};

}  // namespace rendal

#endif  // RENDAL_TOOLS_CONSOLE_TEXT_H_
