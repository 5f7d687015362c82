// SPDX-License-Identifier: MIT
#include "tools/console_text.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace rendal {
namespace {

thread_local ConsoleCapture* t_capture = nullptr;

}  // namespace

ConsoleCapture::ConsoleCapture() : m_outer(t_capture) { t_capture = this; }

ConsoleCapture::~ConsoleCapture() { t_capture = m_outer; }

void ConsolePrintf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  if (length > 0) {
    std::string text(length + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, again);
    if (t_capture != nullptr) {
      t_capture->m_text.append(text, 0, length);
    } else {
      std::fwrite(text.data(), 1, length, stdout);
      std::fflush(stdout);
    }
  }
  va_end(again);
}

}  // namespace rendal
