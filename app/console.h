// SPDX-License-Identifier: MIT
//
// The diagnostic console: one per process, where standard output goes. Nothing
// here reports a failure; without a console the output goes nowhere.
#ifndef RENDAL_APP_CONSOLE_H_
#define RENDAL_APP_CONSOLE_H_

namespace rendal::console {

// Opens the console at the top-left corner of the screen, sends standard
// output to it as UTF-8, and takes the Close command out of its system menu,
// because closing a console ends the whole process.
void Open();

// Empties it.
void Clear();

// Ends a selection that the operator may have started in it: until then it
// blocks every write.
void EndSelection();

}  // namespace rendal::console

#endif  // RENDAL_APP_CONSOLE_H_
