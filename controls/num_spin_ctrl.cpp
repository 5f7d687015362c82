// SPDX-License-Identifier: MIT
#include "controls/num_spin_ctrl.h"

// clang-format off
BEGIN_MESSAGE_MAP(CNumSpinCtrl, CSpinButtonCtrl)
  ON_WM_CREATE()
  ON_NOTIFY_REFLECT(UDN_DELTAPOS, &CNumSpinCtrl::OnDeltaPos)
END_MESSAGE_MAP()
// clang-format on

void CNumSpinCtrl::SetDecimalPlaces(int decimals) {
  m_format.m_decimals = decimals;
}

void CNumSpinCtrl::SetRangeAndDelta(double minimum, double maximum,
                                    double step) {
  m_range = {minimum, maximum, step};
  if (step == 0) return;
  m_nativePositions = NativePositions(m_range);
  if (m_hWnd == nullptr) return;
  SetRange32(0, m_nativePositions);
  SynchronizeNativePosition();
}

void CNumSpinCtrl::SetPos(double value) {
  WriteBuddy(value);
  SynchronizeNativePosition();
}

double CNumSpinCtrl::GetPos() const {
  const CWnd* buddy = m_hWnd != nullptr ? GetBuddy() : nullptr;
  if (buddy == nullptr) return 0.0;
  CString text;
  buddy->GetWindowText(text);
  return ParseNumber(text);
}

void CNumSpinCtrl::PreSubclassWindow() {
  CSpinButtonCtrl::PreSubclassWindow();
  ASSERT((GetStyle() & UDS_SETBUDDYINT) == 0);
  SetRangeAndDelta(m_range.m_minimum, m_range.m_maximum, m_range.m_step);
}

int CNumSpinCtrl::OnCreate(LPCREATESTRUCT create) {
  if (CSpinButtonCtrl::OnCreate(create) == -1) return -1;
  SetRangeAndDelta(m_range.m_minimum, m_range.m_maximum, m_range.m_step);
  return 0;
}

void CNumSpinCtrl::OnDeltaPos(NMHDR* header, LRESULT* result) {
  const int delta = reinterpret_cast<const NMUPDOWN*>(header)->iDelta;
  const bool wrap = (GetStyle() & UDS_WRAP) != 0;
  WriteBuddy(StepNumber(GetPos(), delta, m_range, wrap));
  *result = 0;  // the native position moves as well
}

void CNumSpinCtrl::WriteBuddy(double value) {
  CWnd* buddy = m_hWnd != nullptr ? GetBuddy() : nullptr;
  if (buddy == nullptr) return;
  buddy->SetWindowText(FormatNumber(value, m_format).c_str());
}

void CNumSpinCtrl::SynchronizeNativePosition() {
  const auto position = NativePosition(GetPos(), m_range, m_nativePositions);
  if (position.has_value()) CSpinButtonCtrl::SetPos(*position);
}
