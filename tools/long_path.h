// SPDX-License-Identifier: MIT
#ifndef RENDAL_TOOLS_LONG_PATH_H_
#define RENDAL_TOOLS_LONG_PATH_H_

#include <filesystem>

namespace rendal {

// The path in a form that the system's limit of 260 characters (Windows) does
// not hold for; elsewhere the path itself.
std::filesystem::path WithoutLengthLimit(const std::filesystem::path& path);

}  // namespace rendal

#endif  // RENDAL_TOOLS_LONG_PATH_H_
