// SPDX-License-Identifier: MIT
//
// The system's common dialogs.
#pragma once

#include "afxwin.h"

// The system's dialogs for opening a file and for saving one.
class CFileDialog : public CDialog {
 public:
  // `open`: FALSE for saving. `filter`: pairs of description and patterns, each
  // ended by '|', and one more '|' at the end. `default_extension` (without a
  // point) goes behind a name without one, or that of the filter chosen. Of the
  // flags only those of the two uses exist here: read-only box hidden, current
  // folder kept, a question before a file is overwritten.
  explicit CFileDialog(BOOL open, LPCTSTR default_extension = nullptr,
                       LPCTSTR file_name = nullptr,
                       DWORD flags = OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT,
                       LPCTSTR filter = nullptr, CWnd* parent = nullptr);

  // Of its fields only lpstrTitle counts: the window's title, the system's own
  // if null.
  OPENFILENAME m_ofn = {};

  // IDOK or IDCANCEL.
  INT_PTR DoModal() override;
  CString GetPathName() const { return m_path; }

 private:
  BOOL m_bOpenFileDialog;
  CString m_extension;
  CString m_fileName;
  CString m_filter;
  CString m_path;
  CWnd* m_pParent;
};
