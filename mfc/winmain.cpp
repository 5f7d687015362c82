// SPDX-License-Identifier: MIT
//
// The entry point of window programs; linked only into those.
#include "afxwin.h"

extern "C" int WINAPI wWinMain(HINSTANCE instance, HINSTANCE previous,
                               LPWSTR command, int show) {
  return AfxWinMain(instance, previous, command, show);
}
