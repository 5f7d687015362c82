// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_START_OPTIONS_H_
#define RENDAL_APP_START_OPTIONS_H_

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "tools/workbench.h"

namespace rendal {

// What the command line asks for.
struct StartOptions {
  std::filesystem::path image;  // empty: none
  int32_t language = kChinese;
  std::vector<std::wstring> ignored;  // what was not understood, in order
};

// "/lang" and a language ("zh", "en") anywhere, in either case of letters; the
// first argument that is no switch is the image. A switch is a slash or dashes
// with nothing but letters behind. Unknown ones, languages that there are not
// and further images are ignored. `arguments` are those after the program's
// name.
StartOptions ParseStartOptions(std::span<wchar_t* const> arguments);

// The same from this process's command line.
StartOptions ReadStartOptions();

}  // namespace rendal

#endif  // RENDAL_APP_START_OPTIONS_H_
