// SPDX-License-Identifier: MIT
#include "cli/command_line.h"
#include "cli/system.h"

#if defined(_WIN32)

#include <vector>

int wmain(int argc, wchar_t** argv) {
  rendal::PrepareStreams();
  std::vector<std::string> arguments;
  for (int i = 0; i < argc; ++i) {
    arguments.push_back(rendal::Utf8OfArgument(argv[i]));
  }
  std::vector<const char*> pointers;
  for (const std::string& text : arguments) pointers.push_back(text.c_str());
  return rendal::RunCommandLine(argc, pointers.data());
}

#else

int main(int argc, char** argv) {
  rendal::PrepareStreams();
  return rendal::RunCommandLine(argc, argv);
}

#endif
