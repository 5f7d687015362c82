// SPDX-License-Identifier: MIT
//
// How messages reach objects: shared by the window sources of this folder.
#pragma once

#include <functional>

#include "../afxwin.h"

// The procedure of every attached window.
LRESULT CALLBACK AfxWndProc(HWND window, UINT message, WPARAM w, LPARAM l);

// Attaches the next window that this thread creates to `window`, before it gets
// its first message; Unhook tells whether that has happened.
void AfxHookWindowCreate(CWnd* window);
bool AfxUnhookWindowCreate();

// Runs a handler; what it throws goes to CWinApp::ProcessWndProcException and
// never into the system's frames below.
LRESULT AfxGuarded(const MSG& message, const std::function<LRESULT()>& handler);
