// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_REGION_LIST_H_
#define RENDAL_APP_REGION_LIST_H_

#include <afxcmn.h>

#include <span>

#include "tools/region_overlay.h"

// The list of components: one row each, nine centred columns.
class CRegionList : public CListCtrl {
 public:
  // Styles, columns and the horizontal scroll bar, which is there from the
  // start.
  void Build();

  // Replaces all rows.
  void Show(std::span<const rendal::FeatureRow> rows);

 private:
  afx_msg void OnCustomDraw(NMHDR* header, LRESULT* result);
  DECLARE_MESSAGE_MAP()

 private:
  void InsertColumns();
  void ShowHorizontalScrollBar();
  void DrawFirstCell(const NMLVCUSTOMDRAW& draw);
};

#endif  // RENDAL_APP_REGION_LIST_H_
