// SPDX-License-Identifier: MIT
#include "cli/system.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "recipes/output_file.h"

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace rendal {

#if defined(_WIN32)

void PrepareStreams() {
  static const UINT before = GetConsoleOutputCP();
  SetConsoleOutputCP(CP_UTF8);
  std::atexit([] { SetConsoleOutputCP(before); });
}

bool IsErrorTerminal() { return _isatty(2) != 0; }

std::wstring WithoutCase(std::wstring path) {
  const int length = static_cast<int>(path.size());
  LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_LOWERCASE, path.data(), length,
                path.data(), length, nullptr, nullptr, 0);
  return path;
}

std::string Utf8OfArgument(const std::wstring& argument) {
  // No 16-bit unit takes more than three bytes.
  std::string text(3 * argument.size(), '\0');
  const int length = WideCharToMultiByte(
      CP_UTF8, 0, argument.data(), static_cast<int>(argument.size()),
      text.data(), static_cast<int>(text.size()), nullptr, nullptr);
  text.resize(static_cast<size_t>(length));
  return text;
}

#else

void PrepareStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  // The first file that is opened gets the lowest number that is free. What
  // takes it here refuses what the stream is for.
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) != -1) continue;
    if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) {
      return;
    }
  }
}

bool IsErrorTerminal() { return isatty(STDERR_FILENO) != 0; }

std::string WithoutCase(std::string path) { return path; }

#endif

void FlushStandardOutput() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    throw OutputError("cannot write to the standard output");
  }
}

}  // namespace rendal
