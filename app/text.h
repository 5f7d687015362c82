// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_TEXT_H_
#define RENDAL_APP_TEXT_H_

#include <afxwin.h>

#include <string>
#include <string_view>

namespace rendal {

// The tools speak UTF-8, the window speaks UTF-16.
inline CString FromUtf8(std::string_view text) {
  const int bytes = static_cast<int>(text.size());
  const int length =
      ::MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
  CString wide;
  ::MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, wide.GetBuffer(length),
                        length);
  wide.ReleaseBuffer(length);
  return wide;
}

inline std::string ToUtf8(std::wstring_view text) {
  const int length = static_cast<int>(text.size());
  const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length,
                                          nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(bytes), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), bytes,
                        nullptr, nullptr);
  return narrow;
}

}  // namespace rendal

#endif  // RENDAL_APP_TEXT_H_
