// SPDX-License-Identifier: MIT
//
// The parts of the visual framework that a dialog program touches at start-up.
// They have no effect here: all controls are the system's own.
#pragma once

#include "afxdialogex.h"
#include "afxwin.h"

class CShellManager : public CObject {};

class CMFCVisualManager : public CObject {
  DECLARE_DYNCREATE(CMFCVisualManager)

 public:
  static void SetDefaultManager(const CRuntimeClass* manager);
  // The class last set; the framework keeps an object of it.
  static const CRuntimeClass* GetDefaultManager();
};

class CMFCVisualManagerWindows : public CMFCVisualManager {
  DECLARE_DYNCREATE(CMFCVisualManagerWindows)
};
