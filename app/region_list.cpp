// SPDX-License-Identifier: MIT
#include "app/region_list.h"

#include <numeric>

#include "app/text.h"
#include "app/ui_text.h"

namespace ui_text = rendal::ui_text;

namespace {

// The control keeps 4 pixels of its width for its borders.
constexpr int kBordersPx = 4;

// Beside a column's title. With the system's own, the longest is cut short.
constexpr int kTitleMarginPx = 4;

}  // namespace

BEGIN_MESSAGE_MAP(CRegionList, CListCtrl)
ON_NOTIFY_REFLECT(NM_CUSTOMDRAW, &CRegionList::OnCustomDraw)
END_MESSAGE_MAP()

void CRegionList::Build() {
  SetExtendedStyle(LVS_EX_GRIDLINES | LVS_EX_FULLROWSELECT);
  InsertColumns();
  ShowHorizontalScrollBar();
}

// The control aligns whatever was inserted as its first column to the left. So
// a placeholder goes first, and goes away again.
void CRegionList::InsertColumns() {
  InsertColumn(0, L"", LVCFMT_LEFT, 0);
  int index = 1;
  for (const ui_text::Column& column : ui_text::kRegionColumns) {
    InsertColumn(index++, column.title, LVCFMT_CENTER, column.width);
  }
  DeleteColumn(0);
  Header_SetBitmapMargin(ListView_GetHeader(GetSafeHwnd()), kTitleMarginPx);
}

void CRegionList::ShowHorizontalScrollBar() {
  const int columns = std::accumulate(
      ui_text::kRegionColumns.begin(), ui_text::kRegionColumns.end(), 0,
      [](int sum, const ui_text::Column& column) {
        return sum + column.width;
      });
  CRect place;
  GetWindowRect(&place);
  SCROLLINFO bar = {};
  bar.cbSize = sizeof bar;
  bar.fMask = SIF_RANGE | SIF_PAGE;
  bar.nMax = columns - 1;
  bar.nPage = static_cast<UINT>(place.Width() - kBordersPx);
  ShowScrollBar(SB_HORZ, TRUE);
  SetScrollInfo(SB_HORZ, &bar);
}

void CRegionList::Show(std::span<const rendal::FeatureRow> rows) {
  SetRedraw(FALSE);
  DeleteAllItems();
  for (int item = 0; item < static_cast<int>(rows.size()); ++item) {
    InsertItem(item, rendal::FromUtf8(rows[item][0]));
    for (int column = 1; column < static_cast<int>(rows[item].size());
         ++column) {
      SetItemText(item, column, rendal::FromUtf8(rows[item][column]));
    }
  }
  SetRedraw(TRUE);
  Invalidate();
}

// Some systems draw the first column's cells to the left whatever the column
// says, so they are drawn here.
void CRegionList::OnCustomDraw(NMHDR* header, LRESULT* result) {
  const auto& draw = *reinterpret_cast<NMLVCUSTOMDRAW*>(header);
  *result = CDRF_DODEFAULT;
  switch (draw.nmcd.dwDrawStage) {
    case CDDS_PREPAINT:
      *result = CDRF_NOTIFYITEMDRAW;
      break;
    case CDDS_ITEMPREPAINT:
      *result = CDRF_NOTIFYSUBITEMDRAW;
      break;
    case CDDS_ITEMPREPAINT | CDDS_SUBITEM:
      if (draw.iSubItem == 0) {
        DrawFirstCell(draw);
        *result = CDRF_SKIPDEFAULT;
      }
      break;
  }
}

void CRegionList::DrawFirstCell(const NMLVCUSTOMDRAW& draw) {
  const int item = static_cast<int>(draw.nmcd.dwItemSpec);
  CRect cell;
  GetSubItemRect(item, 0, LVIR_LABEL, cell);
  const bool selected = GetItemState(item, LVIS_SELECTED) != 0;
  const bool focused = ::GetFocus() == GetSafeHwnd();
  const int background = !selected ? COLOR_WINDOW
                         : focused ? COLOR_HIGHLIGHT
                                   : COLOR_BTNFACE;
  const int foreground =
      selected && focused ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT;
  const HDC dc = draw.nmcd.hdc;
  ::FillRect(dc, &cell, ::GetSysColorBrush(background));
  ::SetBkMode(dc, TRANSPARENT);
  ::SetTextColor(dc, ::GetSysColor(foreground));
  ::DrawTextW(dc, GetItemText(item, 0), -1, &cell,
              DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
}
