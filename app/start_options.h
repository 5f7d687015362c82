// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_START_OPTIONS_H_
#define RENDAL_APP_START_OPTIONS_H_

#include <cstdint>
#include <filesystem>
#include <span>

#include "tools/workbench.h"

namespace rendal {

// What the command line asks for.
struct StartOptions {
  std::filesystem::path image;  // empty: none
  int32_t language = kChinese;
};

// "--english" anywhere; the first other argument is the image, what follows it
// is ignored. `arguments` are those after the program's name.
StartOptions ParseStartOptions(std::span<wchar_t* const> arguments);

// The same from this process's command line.
StartOptions ReadStartOptions();

}  // namespace rendal

#endif  // RENDAL_APP_START_OPTIONS_H_
