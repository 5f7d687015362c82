// SPDX-License-Identifier: MIT
//
// The diagnostic console: one per process, where standard output goes. Nothing
// here reports a failure; without a console the output goes nowhere.
#ifndef RENDAL_APP_CONSOLE_H_
#define RENDAL_APP_CONSOLE_H_

#include <afxwin.h>

namespace rendal::console {

// Opens the console at the top-left corner of the screen, sends standard
// output to it as UTF-8, and takes the Close command out of its system menu,
// because closing a console ends the whole process.
//
// A console that is closed all the same (some terminals have a close box of
// their own) closes `window`, so that the program ends in order and with exit
// code 0, unless a tool is at work for longer than the system waits (5 s on
// Windows). Ctrl+C and Ctrl+Break in the console do nothing: whoever copies a
// line out of it does not want to end the program.
void Open(HWND window);

// Empties it.
void Clear();

// Ends a selection that the operator may have started in it: until then it
// blocks every write.
void EndSelection();

}  // namespace rendal::console

#endif  // RENDAL_APP_CONSOLE_H_
