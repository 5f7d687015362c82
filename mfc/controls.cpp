// SPDX-License-Identifier: MIT
#include "afxcmn.h"

BOOL CButton::OnChildNotify(UINT message, WPARAM w, LPARAM l, LRESULT* result) {
  if (message != WM_DRAWITEM) {
    return CWnd::OnChildNotify(message, w, l, result);
  }
  DrawItem(reinterpret_cast<LPDRAWITEMSTRUCT>(l));
  *result = TRUE;
  return TRUE;
}

void CComboBox::GetLBText(int index, CString& text) const {
  const int length = GetLBTextLen(index);
  if (length == CB_ERR) return text.Empty();
  ::SendMessageW(m_hWnd, CB_GETLBTEXT, index,
                 reinterpret_cast<LPARAM>(text.GetBuffer(length + 1)));
  text.ReleaseBuffer();
}

int CListCtrl::InsertColumn(int index, const LVCOLUMN* column) {
  return ListView_InsertColumn(m_hWnd, index, column);
}

int CListCtrl::InsertColumn(int index, LPCTSTR heading, int format, int width,
                            int sub_item) {
  LVCOLUMN column{};
  column.mask = LVCF_TEXT | LVCF_FMT;
  column.pszText = const_cast<LPTSTR>(heading);
  column.fmt = format;
  if (width != -1) column.mask |= LVCF_WIDTH;
  column.cx = width;
  if (sub_item != -1) column.mask |= LVCF_SUBITEM;
  column.iSubItem = sub_item;
  return InsertColumn(index, &column);
}

int CListCtrl::InsertItem(int index, LPCTSTR text) {
  LVITEM item{};
  item.mask = LVIF_TEXT;
  item.iItem = index;
  item.pszText = const_cast<LPTSTR>(text);
  return ListView_InsertItem(m_hWnd, &item);
}

BOOL CListCtrl::SetItemText(int item, int sub_item, LPCTSTR text) {
  LVITEM change{};
  change.iSubItem = sub_item;
  change.pszText = const_cast<LPTSTR>(text);
  return ::SendMessageW(m_hWnd, LVM_SETITEMTEXTW, item,
                        reinterpret_cast<LPARAM>(&change)) != 0;
}

CString CListCtrl::GetItemText(int item, int sub_item) const {
  CString text;
  LVITEM request{};
  request.iSubItem = sub_item;
  // The control does not tell the length beforehand.
  for (int size = 128;; size *= 2) {
    request.cchTextMax = size;
    request.pszText = text.GetBuffer(size);
    const auto length = static_cast<int>(::SendMessageW(
        m_hWnd, LVM_GETITEMTEXTW, item, reinterpret_cast<LPARAM>(&request)));
    if (length >= size - 1) continue;
    // The control may hand out its own text instead of filling the buffer.
    return CString(request.pszText, length);
  }
}

BOOL CSpinButtonCtrl::Create(DWORD style, const RECT& rect, CWnd* parent,
                             UINT id) {
  return CWnd::Create(UPDOWN_CLASS, nullptr, style, rect, parent, id);
}
