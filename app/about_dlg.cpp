// SPDX-License-Identifier: MIT
#include "app/about_dlg.h"

#include "app/ui_text.h"

namespace ui_text = rendal::ui_text;

CAboutDlg::CAboutDlg(int32_t language, CWnd* parent)
    : CDialogEx(IDD, parent), m_language(language) {}

BOOL CAboutDlg::OnInitDialog() {
  CDialogEx::OnInitDialog();
  if (m_language == rendal::kEnglish) {
    SetWindowText(ui_text::kAboutCaptionEnglish);
    SetDlgItemText(IDC_ABOUT_TEXT, ui_text::kAboutTextEnglish);
    SetDlgItemText(IDOK, ui_text::kOkEnglish);
  }
  return TRUE;
}
