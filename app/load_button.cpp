// SPDX-License-Identifier: MIT
#include "app/load_button.h"

namespace {

constexpr int kFocusInsetPx = 3;

HBRUSH BackgroundOf(const CWnd& button, HDC dc) {
  return reinterpret_cast<HBRUSH>(
      ::SendMessageW(::GetParent(button.GetSafeHwnd()), WM_CTLCOLORBTN,
                     reinterpret_cast<WPARAM>(dc),
                     reinterpret_cast<LPARAM>(button.GetSafeHwnd())));
}

void DrawCaption(const CWnd& button, HDC dc, CRect area, UINT state) {
  CString caption;
  button.GetWindowText(caption);
  if (state & ODS_SELECTED) area.OffsetRect(1, 1);
  ::SetBkMode(dc, TRANSPARENT);
  ::SetTextColor(
      dc, ::GetSysColor(state & ODS_DISABLED ? COLOR_GRAYTEXT : COLOR_BTNTEXT));
  ::DrawTextW(dc, caption, -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

}  // namespace

void CLoadButton::DrawItem(LPDRAWITEMSTRUCT item) {
  CRect area(item->rcItem);
  const HDC dc = item->hDC;
  const int saved = ::SaveDC(dc);
  ::FillRect(dc, &area, BackgroundOf(*this, dc));
  ::DrawEdge(dc, &area,
             item->itemState & ODS_SELECTED ? EDGE_SUNKEN : EDGE_RAISED,
             BF_RECT);
  DrawCaption(*this, dc, area, item->itemState);
  if (item->itemState & ODS_FOCUS) {
    area.DeflateRect(kFocusInsetPx, kFocusInsetPx);
    ::DrawFocusRect(dc, &area);
  }
  ::RestoreDC(dc, saved);
}
