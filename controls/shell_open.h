// SPDX-License-Identifier: MIT
//
// Opening a document, program or link as a double click in the shell would.
#pragma once

#include <afxwin.h>

// Opens `target`; what cannot be opened, and an empty target, is silently left
// alone.
void OpenWithShell(LPCTSTR target);

// Replaces what OpenWithShell() calls (nullptr: the shell again) and returns
// what it called before. For programs that watch instead of opening.
using ShellOpener = void (*)(LPCTSTR target);
ShellOpener SetShellOpener(ShellOpener opener);
