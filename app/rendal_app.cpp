// SPDX-License-Identifier: MIT
#include "app/rendal_app.h"

#include <afxcontrolbars.h>

#include <memory>

#include "app/rendal_dlg.h"
#include "app/start_options.h"
#include "app/ui_text.h"

namespace ui_text = rendal::ui_text;

CRendalApp theApp;

namespace {

constexpr DWORD kAllWin95Classes = 0xFF;

void InitControlClasses() {
  INITCOMMONCONTROLSEX classes = {sizeof classes, kAllWin95Classes};
  ::InitCommonControlsEx(&classes);
}

// Whether this is the only running instance. The mutex lives as long as the
// process; its handle is not needed again.
bool ClaimSingleInstance(int32_t language) {
  const HANDLE mutex = ::CreateMutexW(nullptr, FALSE, L"Rendal");
  if (::GetLastError() != ERROR_ALREADY_EXISTS) return true;
  ::MessageBoxW(nullptr, ui_text::kAlreadyOpen.In(language),
                ui_text::kApplicationName, MB_OK);
  if (mutex != nullptr) ::CloseHandle(mutex);
  return false;
}

}  // namespace

BOOL CRendalApp::InitInstance() {
  InitControlClasses();
  const rendal::StartOptions options = rendal::ReadStartOptions();
  if (!ClaimSingleInstance(options.language)) return FALSE;
  CWinApp::InitInstance();
  AfxEnableControlContainer();
  auto shellManager = std::make_unique<CShellManager>();
  CMFCVisualManager::SetDefaultManager(RUNTIME_CLASS(CMFCVisualManagerWindows));
  SetRegistryKey(ui_text::kRegistryKey);

  CRendalDlg dialog;
  dialog.m_language = options.language;
  dialog.m_startImage = options.image;
  dialog.m_ignoredOptions = options.ignored;
  m_pMainWnd = &dialog;
  dialog.DoModal();
  m_pMainWnd = nullptr;
  shellManager.reset();
  return FALSE;
}
