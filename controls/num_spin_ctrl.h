// SPDX-License-Identifier: MIT
//
// An up-down control for real numbers.
#pragma once

#include <afxcmn.h>

#include "controls/number_format.h"

// Edits a real value in its buddy edit box. The buddy's text is the value of
// record: whatever the operator types there counts, and the control's own
// integer position only mirrors it.
//
// Requires a control without UDS_SETBUDDYINT, which would write that position
// over the text.
class CNumSpinCtrl : public CSpinButtonCtrl {
 public:
  CNumSpinCtrl() = default;

  // Digits after the decimal separator, -1 for the general format; the buddy
  // is not rewritten before the next value.
  void SetDecimalPlaces(int decimals);
  // A step of 0 is stored, but leaves the native range and position alone.
  void SetRangeAndDelta(double minimum, double maximum, double step);
  // Writes `value` into the buddy, inside the range or not.
  void SetPos(double value);
  // The number in the buddy; 0 if it holds none or there is no buddy.
  double GetPos() const;

 protected:
  void PreSubclassWindow() override;

  afx_msg int OnCreate(LPCREATESTRUCT create);
  afx_msg void OnDeltaPos(NMHDR* header, LRESULT* result);
  DECLARE_MESSAGE_MAP()

 private:
  void WriteBuddy(double value);
  void SynchronizeNativePosition();

  NumberRange m_range;
  int m_nativePositions = 100;
  NumberFormat m_format;
};
