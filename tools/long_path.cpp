// SPDX-License-Identifier: MIT
#include "tools/long_path.h"

#include <system_error>
#include <type_traits>

namespace rendal {

namespace fs = std::filesystem;

fs::path WithoutLengthLimit(const fs::path& path) {
  if constexpr (std::is_same_v<fs::path::value_type, wchar_t>) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error).make_preferred();
    const auto& text = absolute.native();
    // Device paths ("\\?\...") and shares ("\\server\...") stay.
    if (error || text.size() < 2 || text[1] != ':') return path;
    return fs::path("\\\\?\\") += absolute;
  } else {
    return path;
  }
}

}  // namespace rendal
