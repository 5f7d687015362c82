// SPDX-License-Identifier: MIT
//
// The common controls.
#pragma once

#include "afxwin.h"

class CListCtrl : public CWnd {
 public:
  DWORD GetExtendedStyle() const {
    return ListView_GetExtendedListViewStyle(m_hWnd);
  }
  DWORD SetExtendedStyle(DWORD style) {
    return ListView_SetExtendedListViewStyle(m_hWnd, style);
  }
  int InsertColumn(int index, const LVCOLUMN* column);
  int InsertColumn(int index, LPCTSTR heading, int format = LVCFMT_LEFT,
                   int width = -1, int sub_item = -1);
  BOOL DeleteColumn(int index) { return ListView_DeleteColumn(m_hWnd, index); }
  int GetColumnWidth(int index) const {
    return ListView_GetColumnWidth(m_hWnd, index);
  }
  int GetItemCount() const { return ListView_GetItemCount(m_hWnd); }
  int InsertItem(int index, LPCTSTR text);
  BOOL SetItemText(int item, int sub_item, LPCTSTR text);
  CString GetItemText(int item, int sub_item) const;
  UINT GetItemState(int item, UINT mask) const {
    return ListView_GetItemState(m_hWnd, item, mask);
  }
  // For item -1: of all items.
  BOOL SetItemState(int item, UINT state, UINT mask) {
    LVITEM change{};
    change.state = state;
    change.stateMask = mask;
    return ::SendMessageW(m_hWnd, LVM_SETITEMSTATE, item,
                          reinterpret_cast<LPARAM>(&change)) != 0;
  }
  // The next one behind `item` that has all of the LVNI_ flags; -1: none.
  int GetNextItem(int item, int flags) const {
    return ListView_GetNextItem(m_hWnd, item, flags);
  }
  BOOL EnsureVisible(int item, BOOL partial_is_enough) {
    return ListView_EnsureVisible(m_hWnd, item, partial_is_enough);
  }
  // LVIR_LABEL gives the cell's own rectangle, for the first column too.
  BOOL GetSubItemRect(int item, int sub_item, int area, CRect& rect) const {
    return ListView_GetSubItemRect(m_hWnd, item, sub_item, area, &rect);
  }
  BOOL DeleteAllItems() { return ListView_DeleteAllItems(m_hWnd); }
};

class CSpinButtonCtrl : public CWnd {
 public:
  virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
  using CWnd::Create;

  void SetRange32(int low, int high) {
    ::SendMessageW(m_hWnd, UDM_SETRANGE32, low, high);
  }
  void GetRange32(int& low, int& high) const {
    ::SendMessageW(m_hWnd, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&low),
                   reinterpret_cast<LPARAM>(&high));
  }
  int SetPos(int position) {
    return static_cast<short>(
        LOWORD(::SendMessageW(m_hWnd, UDM_SETPOS, 0, MAKELPARAM(position, 0))));
  }
  int GetPos() const {
    return static_cast<int>(::SendMessageW(m_hWnd, UDM_GETPOS, 0, 0));
  }
  int SetPos32(int position) {
    return static_cast<int>(::SendMessageW(m_hWnd, UDM_SETPOS32, 0, position));
  }
  int GetPos32(BOOL* error = nullptr) const {
    return static_cast<int>(::SendMessageW(m_hWnd, UDM_GETPOS32, 0,
                                           reinterpret_cast<LPARAM>(error)));
  }
  CWnd* GetBuddy() const {
    return FromHandle(
        reinterpret_cast<HWND>(::SendMessageW(m_hWnd, UDM_GETBUDDY, 0, 0)));
  }
};
