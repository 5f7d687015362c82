// SPDX-License-Identifier: MIT
//
// The system's common dialogs.
#pragma once

#include "afxwin.h"

// The system's file-open dialog.
class CFileDialog : public CDialog {
 public:
  // `filter`: pairs of description and patterns, each ended by '|', and one
  // more '|' at the end. Only the opening form exists here, and of the flags
  // only those of the one use: read-only box hidden, current folder kept.
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
  CString m_fileName;
  CString m_filter;
  CString m_path;
  CWnd* m_pParent;
};
