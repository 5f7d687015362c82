// SPDX-License-Identifier: MIT
#include "afxcontrolbars.h"

IMPLEMENT_DYNCREATE(CMFCVisualManager, CObject)
IMPLEMENT_DYNCREATE(CMFCVisualManagerWindows, CMFCVisualManager)

static const CRuntimeClass* g_defaultManager = nullptr;

void CMFCVisualManager::SetDefaultManager(const CRuntimeClass* manager) {
  g_defaultManager = manager;
}

const CRuntimeClass* CMFCVisualManager::GetDefaultManager() {
  return g_defaultManager;
}
