// SPDX-License-Identifier: MIT
#include "tools/console_text.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace rendal {

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
    std::fwrite(text.data(), 1, length, stdout);
    std::fflush(stdout);
  }
  va_end(again);
}

}  // namespace rendal
