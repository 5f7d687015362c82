// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_REGION_LIST_H_
#define RENDAL_APP_REGION_LIST_H_

#include <afxcmn.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "tools/region_overlay.h"

// The list of components: one row each, nine centred columns.
class CRegionList : public CListCtrl {
 public:
  // Styles, columns and the horizontal scroll bar, which is there from the
  // start.
  void Build();

  // Replaces all rows; none is selected then.
  void Show(std::span<const rendal::FeatureRow> rows);

  // Selects a row and scrolls to it, and no other; without one, or with one
  // that the list does not have, none.
  void SelectOnly(std::optional<size_t> row);
  std::vector<int32_t> SelectedRows() const;
  // While the program changes the list: what it reports then is no wish of the
  // operator.
  bool IsBeingSet() const { return m_isBeingSet; }

  // The selected rows, or all when none is.
  std::vector<rendal::FeatureRow> RowsToCopy() const;

 private:
  afx_msg void OnKeyDown(NMHDR* header, LRESULT* result);
  afx_msg void OnCustomDraw(NMHDR* header, LRESULT* result);
  DECLARE_MESSAGE_MAP()

 private:
  void InsertColumns();
  void ShowHorizontalScrollBar();
  void DrawFirstCell(const NMLVCUSTOMDRAW& draw);

  std::vector<rendal::FeatureRow> m_rows;
  bool m_isBeingSet = false;
};

#endif  // RENDAL_APP_REGION_LIST_H_
