// SPDX-License-Identifier: MIT
//
// The basic controls. Included by afxwin.h.
#pragma once

#include "window.h"

class CStatic : public CWnd {
 public:
  virtual BOOL Create(LPCTSTR text, DWORD style, const RECT& rect, CWnd* parent,
                      UINT id = 0xFFFF) {
    return CWnd::Create(L"STATIC", text, style, rect, parent, id);
  }
  using CWnd::Create;
};

class CButton : public CWnd {
 public:
 protected:
  // Paints a button of style BS_OWNERDRAW.
  virtual void DrawItem(LPDRAWITEMSTRUCT) {}
  BOOL OnChildNotify(UINT message, WPARAM w, LPARAM l,
                     LRESULT* result) override;
};

class CEdit : public CWnd {
 public:
  virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create(L"EDIT", nullptr, style, rect, parent, id);
  }
  using CWnd::Create;
};

class CComboBox : public CWnd {
 public:
  int GetCount() const { return Ask(CB_GETCOUNT); }
  int GetCurSel() const { return Ask(CB_GETCURSEL); }
  int SetCurSel(int index) { return Ask(CB_SETCURSEL, index); }
  int AddString(LPCTSTR text) {
    return Ask(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
  }
  void ResetContent() { Ask(CB_RESETCONTENT); }
  int GetLBTextLen(int index) const { return Ask(CB_GETLBTEXTLEN, index); }
  void GetLBText(int index, CString& text) const;

 private:
  int Ask(UINT message, WPARAM w = 0, LPARAM l = 0) const {
    return static_cast<int>(::SendMessageW(m_hWnd, message, w, l));
  }
};
