// SPDX-License-Identifier: MIT
#pragma once

#include "afxwin.h"

// The framework's dialog with a settable background; this program leaves the
// background to the system, so the class adds nothing here.
class CDialogEx : public CDialog {
 public:
  using CDialog::CDialog;
};
