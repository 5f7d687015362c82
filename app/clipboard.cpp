// SPDX-License-Identifier: MIT
#include "app/clipboard.h"

#include <cstring>

namespace rendal {
namespace {

// Programs that watch the clipboard hold it for a moment after each change.
constexpr int kAttempts = 10;
constexpr DWORD kBetweenAttemptsMs = 20;

class OpenedClipboard {
 public:
  explicit OpenedClipboard(HWND owner) {
    for (int i = 0; i < kAttempts && !m_isOpen; ++i) {
      if (i > 0) ::Sleep(kBetweenAttemptsMs);
      m_isOpen = ::OpenClipboard(owner) != FALSE;
    }
  }
  ~OpenedClipboard() {
    if (m_isOpen) ::CloseClipboard();
  }
  OpenedClipboard(const OpenedClipboard&) = delete;
  OpenedClipboard& operator=(const OpenedClipboard&) = delete;

  bool IsOpen() const { return m_isOpen; }

 private:
  bool m_isOpen = false;
};

}  // namespace

bool SetClipboardText(HWND owner, const CString& text) {
  const size_t bytes =
      (static_cast<size_t>(text.GetLength()) + 1) * sizeof(wchar_t);
  const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
  if (memory == nullptr) return false;
  std::memcpy(::GlobalLock(memory), text.GetString(), bytes);
  ::GlobalUnlock(memory);
  const OpenedClipboard clipboard(owner);
  if (clipboard.IsOpen() && ::EmptyClipboard() &&
      ::SetClipboardData(CF_UNICODETEXT, memory) != nullptr) {
    return true;  // the memory is the clipboard's now
  }
  ::GlobalFree(memory);
  return false;
}

}  // namespace rendal
