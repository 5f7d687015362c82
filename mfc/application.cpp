// SPDX-License-Identifier: MIT
#include <cstdio>
#include <cstdlib>

#include "afxwin.h"

#ifndef NDEBUG
void AFXAPI AfxAssertFailedLine(const char* file, int line) {
  CStringA text;
  text.Format("assertion failed: %s:%d\n", file, line);
  ::OutputDebugStringA(text);
  std::fputs(text, stderr);
  std::abort();
}

#endif

BOOL CException::GetErrorMessage(LPTSTR text, UINT size, UINT*) {
  if (size > 0) text[0] = 0;
  return FALSE;
}

int CException::ReportError(UINT type, UINT) {
  wchar_t text[512];
  if (!GetErrorMessage(text, 512)) ::lstrcpyW(text, L"Unknown error.");
  return AfxMessageBox(text, type);
}

void AFXAPI AfxThrowUserException() { throw new CUserException; }
void AFXAPI AfxThrowInvalidArgException() { throw new CInvalidArgException; }

HINSTANCE AFXAPI AfxGetInstanceHandle() { return ::GetModuleHandleW(nullptr); }

static CWinApp* g_app = nullptr;

CWinApp* AFXAPI AfxGetApp() { return g_app; }

CWnd* AFXAPI AfxGetMainWnd() {
  return g_app != nullptr ? g_app->m_pMainWnd : nullptr;
}

LPCTSTR AFXAPI AfxGetAppName() {
  return g_app != nullptr ? g_app->m_pszAppName : L"";
}

LRESULT CWinThread::ProcessWndProcException(CException* exception,
                                            const MSG* message) {
  exception->ReportError(MB_ICONEXCLAMATION);
  if (message->message == WM_CREATE) return -1;  // refuses the window
  if (message->message == WM_PAINT) {
    // Else the same paint would come again at once.
    ::ValidateRect(message->hwnd, nullptr);
  }
  return 0;
}

// The program's own name without folder and extension.
static CString ModuleTitle() {
  wchar_t path[MAX_PATH] = L"";
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  CString title(path);
  title = title.Mid(title.ReverseFind(L'\\') + 1);
  const int dot = title.ReverseFind(L'.');
  return dot > 0 ? title.Left(dot) : title;
}

CWinApp::CWinApp(LPCTSTR name)
    : m_hInstance(AfxGetInstanceHandle()),
      m_lpCmdLine(::GetCommandLineW()),
      m_name(name != nullptr ? CString(name) : ModuleTitle()) {
  ASSERT(g_app == nullptr);
  m_pszAppName = m_name;
  g_app = this;
}

CWinApp::~CWinApp() { g_app = nullptr; }

int CWinApp::DoMessageBox(LPCTSTR prompt, UINT type, UINT) {
  const HWND main = m_pMainWnd != nullptr ? m_pMainWnd->m_hWnd : nullptr;
  const HWND owner = main != nullptr ? ::GetLastActivePopup(main) : nullptr;
  return ::MessageBoxW(owner, prompt, m_pszAppName, type);
}

int AFXAPI AfxMessageBox(LPCTSTR text, UINT type, UINT help_id) {
  if (g_app != nullptr) return g_app->DoMessageBox(text, type, help_id);
  return ::MessageBoxW(nullptr, text, L"", type);
}

LPCTSTR AFXAPI AfxRegisterWndClass(UINT style, HCURSOR cursor,
                                   HBRUSH background, HICON icon) {
  static wchar_t name[64];
  ::_snwprintf(name, 64, L"Afx:%x:%p:%p:%p", style, cursor, background, icon);
  WNDCLASSW description{};
  if (::GetClassInfoW(AfxGetInstanceHandle(), name, &description)) return name;
  description.style = style;
  // Attached windows get the framework's procedure before their first message.
  description.lpfnWndProc = ::DefWindowProcW;
  description.hInstance = AfxGetInstanceHandle();
  description.hIcon = icon;
  description.hCursor = cursor;
  description.hbrBackground = background;
  description.lpszClassName = name;
  return ::RegisterClassW(&description) != 0 ? name : nullptr;
}

int AFXAPI AfxWinMain(HINSTANCE instance, HINSTANCE, LPTSTR command, int) {
  CWinApp* app = AfxGetApp();
  if (app == nullptr) return -1;
  app->m_hInstance = instance;
  app->m_lpCmdLine = command;
  // Only dialog programs live here: all of the run is inside InitInstance.
  app->InitInstance();
  if (app->m_pMainWnd != nullptr) app->m_pMainWnd->DestroyWindow();
  const int result = app->ExitInstance();
  AfxLockTempMaps();
  AfxUnlockTempMaps(TRUE);
  return result;
}
