// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_CLIPBOARD_H_
#define RENDAL_APP_CLIPBOARD_H_

#include <afxwin.h>

namespace rendal {

// Puts a text on the clipboard in place of what is there. False, with the
// clipboard as it was, when another program does not let go of it.
bool SetClipboardText(HWND owner, const CString& text);

}  // namespace rendal

#endif  // RENDAL_APP_CLIPBOARD_H_
