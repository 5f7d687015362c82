// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_RECENT_FILES_H_
#define RENDAL_APP_RECENT_FILES_H_

#include <filesystem>
#include <string>
#include <vector>

namespace rendal {

// The images opened last, newest first, kept in the user's settings. Settings
// that cannot be read or written count as empty: nothing depends on them.
class RecentFiles {
 public:
  static constexpr size_t kMost = 8;

  // `key`: below HKEY_CURRENT_USER.
  explicit RecentFiles(std::wstring key);

  const std::vector<std::wstring>& Paths() const { return m_paths; }

  // Puts a file in front; one that is there already, in any case of letters,
  // moves. The oldest of more than kMost goes.
  void Add(const std::filesystem::path& path);
  void Remove(size_t index);

 private:
  void Save() const;

  std::wstring m_key;
  std::vector<std::wstring> m_paths;
};

// A path for a menu: shortened in the middle, no letter underlined.
std::wstring MenuTextOf(const std::wstring& path);

}  // namespace rendal

#endif  // RENDAL_APP_RECENT_FILES_H_
