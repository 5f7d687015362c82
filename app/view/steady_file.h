// SPDX-License-Identifier: MIT
//
// Files that another program may be writing.
#ifndef RENDAL_APP_VIEW_STEADY_FILE_H_
#define RENDAL_APP_VIEW_STEADY_FILE_H_

#include <filesystem>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <vector>

namespace rendal {

// The file, open at its beginning; null if it cannot be opened.
using OpenFile = std::function<std::unique_ptr<std::istream>()>;

// All bytes, as two readings in a row find them: a file that was written over
// meanwhile would be a mixture of old and new. Nothing when it differs again
// and again; no bytes when it cannot be read. The second reading compares and
// keeps nothing, so the file is in memory once.
std::optional<std::vector<unsigned char>> ReadSteadyFile(const OpenFile& open);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_STEADY_FILE_H_
