// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_ABOUT_DLG_H_
#define RENDAL_APP_ABOUT_DLG_H_

#include <afxdialogex.h>
#include <afxwin.h>

#include <cstdint>

#include "res/resource.h"

class CAboutDlg : public CDialogEx {
 public:
  enum { IDD = IDD_ABOUTBOX };

  // `language` as Workbench::m_language.
  CAboutDlg(int32_t language, CWnd* parent);

 protected:
  BOOL OnInitDialog() override;

 private:
  int32_t m_language;
};

#endif  // RENDAL_APP_ABOUT_DLG_H_
