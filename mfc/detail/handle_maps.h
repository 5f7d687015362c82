// SPDX-License-Identifier: MIT
//
// The four maps of the program. They are never destroyed, so objects with
// static storage may let go of their handles whenever their turn comes.
#pragma once

#include "../afxwin.h"
#include "handle_map.h"

CHandleMap<HWND, CWnd>& WindowMap();
CHandleMap<HGDIOBJ, CGdiObject>& GdiObjectMap();
CHandleMap<HDC, CDC>& DeviceContextMap();
CHandleMap<HMENU, CMenu>& MenuMap();
