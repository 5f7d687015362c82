// SPDX-License-Identifier: MIT
#include "detail/handle_maps.h"

CHandleMap<HWND, CWnd>& WindowMap() {
  static auto& map = *new CHandleMap<HWND, CWnd>;
  return map;
}

CHandleMap<HGDIOBJ, CGdiObject>& GdiObjectMap() {
  static auto& map = *new CHandleMap<HGDIOBJ, CGdiObject>;
  return map;
}

CHandleMap<HDC, CDC>& DeviceContextMap() {
  static auto& map = *new CHandleMap<HDC, CDC>;
  return map;
}

CHandleMap<HMENU, CMenu>& MenuMap() {
  static auto& map = *new CHandleMap<HMENU, CMenu>;
  return map;
}

static int g_temporaryLocks = 0;

void AFXAPI AfxLockTempMaps() { ++g_temporaryLocks; }

BOOL AFXAPI AfxUnlockTempMaps(BOOL delete_temporary) {
  ASSERT(g_temporaryLocks > 0);
  if (--g_temporaryLocks > 0 || !delete_temporary) return g_temporaryLocks > 0;
  WindowMap().DeleteTemporary();
  GdiObjectMap().DeleteTemporary();
  DeviceContextMap().DeleteTemporary();
  MenuMap().DeleteTemporary();
  return FALSE;
}
