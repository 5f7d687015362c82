// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_TEXT_H_
#define RENDAL_APP_TEXT_H_

#include <afxwin.h>

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

}  // namespace rendal

#endif  // RENDAL_APP_TEXT_H_
