// SPDX-License-Identifier: MIT
//
// Dialogs, message boxes and menus that wait for the operator's answer.
#ifndef RENDAL_APP_OPEN_DIALOGS_H_
#define RENDAL_APP_OPEN_DIALOGS_H_

#include <afxwin.h>

namespace rendal {

// Answers them all as an operator would who wants nothing of it: "cancel", else
// "no", else "OK". Returns at once; a dialog below another one may need a
// second call when that has gone. `main`, of this thread, is not asked.
void CancelOpenDialogs(HWND main);

}  // namespace rendal

#endif  // RENDAL_APP_OPEN_DIALOGS_H_
