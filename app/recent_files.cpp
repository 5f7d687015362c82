// SPDX-License-Identifier: MIT
#include "app/recent_files.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <system_error>
#include <utility>

namespace rendal {
namespace {

constexpr wchar_t kValue[] = L"RecentFiles";
constexpr size_t kMostMenuLetters = 60;

// The texts of a list as the registry has it: each ended by a zero, and one
// more zero at the end, which may be missing.
std::vector<std::wstring> SplitAtZeros(const std::wstring& list) {
  std::vector<std::wstring> texts;
  for (size_t begin = 0; begin < list.size() && list[begin] != 0;) {
    const size_t end = std::min(list.find(L'\0', begin), list.size());
    texts.push_back(list.substr(begin, end - begin));
    begin = end + 1;
  }
  return texts;
}

std::vector<std::wstring> ReadTexts(const std::wstring& key) {
  DWORD bytes = 0;
  if (::RegGetValueW(HKEY_CURRENT_USER, key.c_str(), kValue,
                     RRF_RT_REG_MULTI_SZ, nullptr, nullptr,
                     &bytes) != ERROR_SUCCESS) {
    return {};
  }
  std::wstring list(bytes / sizeof(wchar_t), L'\0');
  if (::RegGetValueW(HKEY_CURRENT_USER, key.c_str(), kValue,
                     RRF_RT_REG_MULTI_SZ, nullptr, list.data(),
                     &bytes) != ERROR_SUCCESS) {
    return {};
  }
  return SplitAtZeros(list);
}

}  // namespace

RecentFiles::RecentFiles(std::wstring key)
    : m_key(std::move(key)), m_paths(ReadTexts(m_key)) {
  if (m_paths.size() > kMost) m_paths.resize(kMost);
}

void RecentFiles::Add(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(path, error);
  if (error) absolute = path;
  const std::wstring text = absolute.make_preferred().wstring();
  std::erase_if(m_paths, [&text](const std::wstring& other) {
    return ::_wcsicmp(other.c_str(), text.c_str()) == 0;
  });
  m_paths.insert(m_paths.begin(), text);
  if (m_paths.size() > kMost) m_paths.resize(kMost);
  Save();
}

void RecentFiles::Remove(size_t index) {
  m_paths.erase(m_paths.begin() + static_cast<ptrdiff_t>(index));
  Save();
}

void RecentFiles::Save() const {
  std::wstring list;
  for (const std::wstring& path : m_paths) list += path + L'\0';
  list += L'\0';
  ::RegSetKeyValueW(HKEY_CURRENT_USER, m_key.c_str(), kValue, REG_MULTI_SZ,
                    list.data(),
                    static_cast<DWORD>(list.size() * sizeof(wchar_t)));
}

std::wstring MenuTextOf(const std::wstring& path) {
  std::wstring text = path;
  if (text.size() > kMostMenuLetters) {
    constexpr size_t kHead = kMostMenuLetters / 3;
    constexpr size_t kTail = kMostMenuLetters - kHead - 3;
    text = text.substr(0, kHead) + L"..." + text.substr(text.size() - kTail);
  }
  for (size_t at = 0; (at = text.find(L'&', at)) != std::wstring::npos;
       at += 2) {
    text.insert(at, 1, L'&');
  }
  return text;
}

}  // namespace rendal
