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
ON_NOTIFY_REFLECT(LVN_KEYDOWN, &CRegionList::OnKeyDown)
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
  for (const int width : ui_text::kRegionColumnWidths) {
    const char* const title = rendal::kFeatureColumns[index - 1];
    InsertColumn(index++, rendal::FromUtf8(title), LVCFMT_CENTER, width);
  }
  DeleteColumn(0);
  Header_SetBitmapMargin(ListView_GetHeader(GetSafeHwnd()), kTitleMarginPx);
}

void CRegionList::ShowHorizontalScrollBar() {
  const int columns = std::accumulate(ui_text::kRegionColumnWidths.begin(),
                                      ui_text::kRegionColumnWidths.end(), 0);
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
  m_rows.assign(rows.begin(), rows.end());
  m_isBeingSet = true;
  SetRedraw(FALSE);
  DeleteAllItems();
  for (int item = 0; item < static_cast<int>(m_rows.size()); ++item) {
    InsertItem(item, rendal::FromUtf8(rows[item][0]));
    for (int column = 1; column < static_cast<int>(rows[item].size());
         ++column) {
      SetItemText(item, column, rendal::FromUtf8(rows[item][column]));
    }
  }
  SetRedraw(TRUE);
  m_isBeingSet = false;
  Invalidate();
}

void CRegionList::SelectOnly(std::optional<size_t> row) {
  m_isBeingSet = true;
  SetItemState(-1, 0, LVIS_SELECTED);
  if (row && *row < m_rows.size()) {
    const int item = static_cast<int>(*row);
    constexpr UINT kCurrent = LVIS_SELECTED | LVIS_FOCUSED;
    SetItemState(item, kCurrent, kCurrent);
    EnsureVisible(item, FALSE);
  }
  m_isBeingSet = false;
}

std::vector<int32_t> CRegionList::SelectedRows() const {
  std::vector<int32_t> rows;
  for (int item = GetNextItem(-1, LVNI_SELECTED); item >= 0;
       item = GetNextItem(item, LVNI_SELECTED)) {
    rows.push_back(item);
  }
  return rows;
}

std::vector<rendal::FeatureRow> CRegionList::RowsToCopy() const {
  const std::vector<int32_t> selected = SelectedRows();
  if (selected.empty()) return m_rows;
  std::vector<rendal::FeatureRow> rows;
  for (const int32_t row : selected) rows.push_back(m_rows[row]);
  return rows;
}

void CRegionList::OnKeyDown(NMHDR* header, LRESULT* result) {
  *result = 0;
  const auto& key = *reinterpret_cast<NMLVKEYDOWN*>(header);
  if (key.wVKey == 'C' && ::GetKeyState(VK_CONTROL) < 0) {
    GetParent()->SendMessage(WM_COMMAND, IDM_COPY_ROWS);
  }
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
