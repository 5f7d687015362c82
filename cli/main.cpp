// SPDX-License-Identifier: MIT
#include "cli/command_line.h"
#include "cli/streams.h"

#if defined(_WIN32)
#include <windows.h>

#include <string>
#include <vector>

namespace {

std::string Utf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  // No character takes more than three bytes for each of its 16-bit units.
  std::string utf8(3 * text.size(), '\0');
  utf8.resize(static_cast<size_t>(
      WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(),
                          static_cast<int>(utf8.size()), nullptr, nullptr)));
  return utf8;
}

// The console shows names of images as they are, and then what it showed
// before.
class Utf8Console {
 public:
  Utf8Console() { SetConsoleOutputCP(CP_UTF8); }
  ~Utf8Console() { SetConsoleOutputCP(m_before); }
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;

 private:
  const UINT m_before = GetConsoleOutputCP();
};

}  // namespace

int wmain(int argc, wchar_t** argv) {
  const Utf8Console console;
  const std::vector<std::wstring> arguments(argv, argv + argc);
  std::vector<std::string> texts;
  for (const std::wstring& argument : arguments) {
    texts.push_back(Utf8(argument));
  }
  std::vector<const char*> pointers;
  for (const std::string& text : texts) pointers.push_back(text.c_str());
  rendal::PrepareStreams();
  return rendal::RunCommandLine(argc, pointers.data());
}

#else

int main(int argc, char** argv) {
  rendal::PrepareStreams();
  return rendal::RunCommandLine(argc, argv);
}

#endif
