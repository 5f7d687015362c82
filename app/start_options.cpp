// SPDX-License-Identifier: MIT
#include "app/start_options.h"

#include <afxwin.h>

#include <string_view>

namespace rendal {

StartOptions ParseStartOptions(std::span<wchar_t* const> arguments) {
  StartOptions options;
  for (const std::wstring_view argument : arguments) {
    if (argument == L"--english") {
      options.language = kEnglish;
    } else if (options.image.empty()) {
      options.image = argument;
    }
  }
  return options;
}

StartOptions ReadStartOptions() {
  int count = 0;
  wchar_t** arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (arguments == nullptr) return {};
  StartOptions options;
  if (count > 1) {
    options =
        ParseStartOptions({arguments + 1, static_cast<size_t>(count - 1)});
  }
  ::LocalFree(arguments);
  return options;
}

}  // namespace rendal
