// SPDX-License-Identifier: MIT
#include "controls/shell_open.h"

#include <shellapi.h>

#include <utility>

static void ShellOpen(LPCTSTR target) {
  ::ShellExecuteW(nullptr, L"open", target, nullptr, nullptr, SW_SHOWNORMAL);
}

static ShellOpener g_opener = ShellOpen;

void OpenWithShell(LPCTSTR target) {
  // The shell would take "" for the current folder and show it.
  if (target[0] != 0) g_opener(target);
}

ShellOpener SetShellOpener(ShellOpener opener) {
  return std::exchange(g_opener, opener != nullptr ? opener : ShellOpen);
}
