// SPDX-License-Identifier: MIT
#include "app/console.h"

#include <afxwin.h>
#include <fcntl.h>
#include <io.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "app/ui_text.h"

namespace rendal::console {

namespace {

constexpr DWORD kTitleSettleMs = 100;
constexpr size_t kBufferBytes = 8192;

// The descriptor that freopen_s leaves is write-only, and programs that
// inherit it (the shell that runs CLS) cannot ask it for the screen's size.
// Binary, because the C runtime takes the bytes of a text-mode console for
// characters of its own locale; the console itself understands line feeds.
void GiveStandardOutputReadAccess() {
  const HANDLE screen = ::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
  if (screen == INVALID_HANDLE_VALUE) return;
  const int descriptor =
      ::_open_osfhandle(reinterpret_cast<intptr_t>(screen), _O_BINARY);
  if (descriptor < 0) {
    ::CloseHandle(screen);
    return;
  }
  ::_dup2(descriptor, ::_fileno(stdout));
  ::_close(descriptor);
}

void RedirectStandardOutput() {
  FILE* reopened = nullptr;
  if (::freopen_s(&reopened, "CONOUT$", "w", stdout) != 0) return;
  GiveStandardOutputReadAccess();
  // An unbuffered console gets every byte on its own, which breaks characters
  // of more than one. Whoever prints flushes.
  std::setvbuf(stdout, nullptr, _IOFBF, kBufferBytes);
  ::SetConsoleOutputCP(CP_UTF8);
}

// The console's window, found by a title that only this process can have set.
HWND FindByTemporaryTitle() {
  char saved[100] = "";
  ::GetConsoleTitleA(saved, sizeof saved);
  char temporary[100];
  std::snprintf(temporary, sizeof temporary, "%d-%d",
                static_cast<int>(::GetTickCount()),
                static_cast<int>(::GetCurrentProcessId()));
  ::SetConsoleTitleA(temporary);
  ::Sleep(kTitleSettleMs);
  const HWND window = ::FindWindowA(nullptr, temporary);
  ::SetConsoleTitleA(saved);
  return window;
}

void RemoveCloseCommand() {
  const HWND window = FindByTemporaryTitle();
  if (window == nullptr) return;
  const HMENU menu = ::GetSystemMenu(window, FALSE);
  if (menu != nullptr) ::RemoveMenu(menu, SC_CLOSE, MF_BYCOMMAND);
}

std::atomic<HWND> g_window;

// Called on a thread of the system's. After the console's end the process goes
// when this returns: so it waits, and goes with the process when the window's
// thread has ended that.
BOOL WINAPI OnConsoleEvent(DWORD event) {
  if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) return TRUE;
  if (event != CTRL_CLOSE_EVENT) return FALSE;
  if (::PostMessageW(g_window, WM_CLOSE, 0, 0)) ::Sleep(INFINITE);
  return TRUE;
}

void HandleEvents(HWND window) {
  g_window = window;
  static const BOOL added = ::SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
  static_cast<void>(added);
}

void MoveToScreenCorner() {
  const HWND window = ::GetConsoleWindow();
  RECT place;
  if (window == nullptr || !::GetWindowRect(window, &place)) return;
  ::MoveWindow(window, 0, 0, place.right - place.left, place.bottom - place.top,
               TRUE);
}

}  // namespace

void Open(HWND window) {
  ::AllocConsole();
  HandleEvents(window);
  ::SetConsoleTitleW(ui_text::kConsoleTitle);
  RedirectStandardOutput();
  RemoveCloseCommand();
  MoveToScreenCorner();
}

void Clear() {
  std::fflush(stdout);
  std::system("CLS");
}

void EndSelection() {
  const HWND window = ::GetConsoleWindow();
  if (window == nullptr) return;
  ::PostMessageW(window, WM_KEYDOWN, VK_ESCAPE, 0);
  ::PostMessageW(window, WM_KEYUP, VK_ESCAPE, 0);
}

}  // namespace rendal::console
