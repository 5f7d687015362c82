// SPDX-License-Identifier: MIT
#include "app/open_dialogs.h"

#include <cwchar>

namespace rendal {
namespace {

bool IsDialog(HWND window) {
  wchar_t name[16] = L"";
  ::GetClassNameW(window, name, 16);
  return std::wcscmp(name, L"#32770") == 0;
}

WPARAM AnswerFor(HWND dialog) {
  for (const int answer : {IDCANCEL, IDNO, IDOK}) {
    if (::GetDlgItem(dialog, answer) != nullptr) {
      return static_cast<WPARAM>(answer);
    }
  }
  return IDCANCEL;
}

BOOL CALLBACK Cancel(HWND window, LPARAM main) {
  const bool isWaiting = window != reinterpret_cast<HWND>(main) &&
                         ::IsWindowVisible(window) &&
                         ::IsWindowEnabled(window) && IsDialog(window);
  if (isWaiting) ::PostMessageW(window, WM_COMMAND, AnswerFor(window), 0);
  return TRUE;
}

}  // namespace

void CancelOpenDialogs(HWND main) {
  ::SendMessageW(main, WM_CANCELMODE, 0, 0);
  ::EndMenu();
  ::EnumThreadWindows(::GetCurrentThreadId(), Cancel,
                      reinterpret_cast<LPARAM>(main));
}

}  // namespace rendal
