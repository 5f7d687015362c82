// SPDX-License-Identifier: MIT
//
// How messages reach objects: shared by the window sources of this folder.
#pragma once

#include <exception>

#include "../afxwin.h"

// The procedure of every attached window.
LRESULT CALLBACK AfxWndProc(HWND window, UINT message, WPARAM w, LPARAM l);

// Attaches the next window that this thread creates to `window`, before it gets
// its first message; Unhook tells whether that has happened.
void AfxHookWindowCreate(CWnd* window);
bool AfxUnhookWindowCreate();

// Hand over to CWinApp::ProcessWndProcException().
LRESULT AfxReportException(CException* exception, const MSG& message);
LRESULT AfxReportException(const std::exception& exception, const MSG& message);

// Runs a handler; what it throws is reported and never unwinds the system's
// frames below.
template <typename Handler>
LRESULT AfxGuarded(const MSG& message, Handler handler) {
  try {
    return handler();
  } catch (CException* exception) {
    const LRESULT result = AfxReportException(exception, message);
    exception->Delete();
    return result;
  } catch (const std::exception& exception) {
    return AfxReportException(exception, message);
  }
}
