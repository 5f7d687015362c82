// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_RENDAL_APP_H_
#define RENDAL_APP_RENDAL_APP_H_

#include <afxwin.h>

// The program: one instance, one modal dialog.
//
//   Rendal.exe [IMAGE] [/lang zh|en]
//
// In any order. IMAGE is loaded after start-up as if it had been chosen in the
// dialog. What is not understood is named on the console.
class CRendalApp : public CWinApp {
 public:
  // Always FALSE: there is nothing to run once the dialog has closed.
  BOOL InitInstance() override;
};

extern CRendalApp theApp;

#endif  // RENDAL_APP_RENDAL_APP_H_
