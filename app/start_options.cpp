// SPDX-License-Identifier: MIT
#include "app/start_options.h"

#include <afxwin.h>

#include <cwchar>
#include <cwctype>
#include <string_view>

namespace rendal {
namespace {

bool AreEqual(const wchar_t* a, const wchar_t* b) {
  return ::_wcsicmp(a, b) == 0;
}

// The name behind the slash or dashes of a switch. Null for other arguments,
// among them paths from the root.
const wchar_t* SwitchName(const wchar_t* argument) {
  if (*argument != L'/' && *argument != L'-') return nullptr;
  const wchar_t* const name =
      argument + (std::wstring_view(argument).starts_with(L"--") ? 2 : 1);
  for (const wchar_t* letter = name; *letter != 0; ++letter) {
    if (!std::iswalpha(*letter)) return nullptr;
  }
  return *name != 0 ? name : nullptr;
}

bool ReadLanguage(const wchar_t* name, int32_t* language) {
  if (AreEqual(name, L"zh")) {
    *language = kChinese;
  } else if (AreEqual(name, L"en")) {
    *language = kEnglish;
  } else {
    return false;
  }
  return true;
}

}  // namespace

StartOptions ParseStartOptions(std::span<wchar_t* const> arguments) {
  StartOptions options;
  for (size_t i = 0; i < arguments.size(); ++i) {
    std::wstring text = arguments[i];
    const wchar_t* const name = SwitchName(arguments[i]);
    if (name == nullptr && options.image.empty()) {
      options.image = text;
      continue;
    }
    if (name != nullptr && AreEqual(name, L"lang") &&
        i + 1 < arguments.size()) {
      const wchar_t* const value = arguments[++i];
      if (ReadLanguage(value, &options.language)) continue;
      text = text + L" " + value;
    }
    options.ignored.push_back(text);
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
