// SPDX-License-Identifier: MIT
//
// The application object. Included by afxwin.h.
#pragma once

#include "window.h"

class CWinThread : public CCmdTarget {
 public:
  CWnd* m_pMainWnd = nullptr;

  virtual BOOL InitInstance() { return FALSE; }
  virtual int ExitInstance() { return 0; }
  // Called with what a message handler threw; the program goes on. Shows the
  // message in a message box unless overridden.
  virtual LRESULT ProcessWndProcException(CException* exception,
                                          const MSG* message);
};

// One global object per program.
class CWinApp : public CWinThread {
 public:
  explicit CWinApp(LPCTSTR name = nullptr);
  ~CWinApp() override;

  HINSTANCE m_hInstance;
  LPTSTR m_lpCmdLine;
  LPCTSTR m_pszAppName = nullptr;

  BOOL InitInstance() override { return TRUE; }
  HICON LoadIcon(UINT id) const {
    return ::LoadIconW(AfxGetResourceHandle(), MAKEINTRESOURCEW(id));
  }
  virtual int DoMessageBox(LPCTSTR prompt, UINT type, UINT help_id);

 protected:
  // The key for stored settings; this program stores none.
  void SetRegistryKey(LPCTSTR key) { m_registryKey = key; }

 private:
  CString m_name;
  CString m_registryKey;
};

CWinApp* AFXAPI AfxGetApp();
CWnd* AFXAPI AfxGetMainWnd();
LPCTSTR AFXAPI AfxGetAppName();
int AFXAPI AfxWinMain(HINSTANCE instance, HINSTANCE previous, LPTSTR command,
                      int show);

int AFXAPI AfxMessageBox(LPCTSTR text, UINT type = MB_OK, UINT help_id = 0);
// A window class for these attributes, registered once per combination.
LPCTSTR AFXAPI AfxRegisterWndClass(UINT style, HCURSOR cursor = nullptr,
                                   HBRUSH background = nullptr,
                                   HICON icon = nullptr);
// Nothing to do here: there are no OLE controls.
inline void AfxEnableControlContainer() {}

// While locked, temporary objects stay even when the outermost loop is idle.
// Unlock returns whether they are still locked.
void AFXAPI AfxLockTempMaps();
BOOL AFXAPI AfxUnlockTempMaps(BOOL delete_temporary = TRUE);
