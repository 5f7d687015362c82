// SPDX-License-Identifier: MIT
#include "controls/label.h"

#include "controls/shell_open.h"

static constexpr UINT_PTR kFlashTimer = 1;

// clang-format off
BEGIN_MESSAGE_MAP(CLabel, CStatic)
  ON_WM_CTLCOLOR_REFLECT()
  ON_WM_TIMER()
  ON_WM_LBUTTONDOWN()
  ON_WM_SETCURSOR()
END_MESSAGE_MAP()
// clang-format on

CLabel::CLabel()
    : m_textColor(::GetSysColor(COLOR_WINDOWTEXT)),
      m_background(::GetSysColor(COLOR_3DFACE)),
      m_blinkBackground(::GetSysColor(COLOR_3DFACE)) {
  ::GetObject(::GetStockObject(DEFAULT_GUI_FONT), sizeof(m_fontDescription),
              &m_fontDescription);
  // Deliberately not what the description says: see SetFontBold().
  m_font.CreateFont(14, 0, 0, 0, FW_BOLD, FALSE, FALSE, FALSE, GB2312_CHARSET,
                    OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                    VARIABLE_PITCH | FF_SWISS, _T("SimSun"));
}

CLabel& CLabel::SetText(LPCTSTR text) {
  if (m_hWnd != nullptr) SetWindowText(text);
  if (m_blinkKind == kFlashText) m_savedText = text;
  Repaint();
  return *this;
}

CLabel& CLabel::SetTextColor(COLORREF color) {
  m_textColor = color;
  Repaint();
  return *this;
}

CLabel& CLabel::SetBkColor(COLORREF color) {
  m_background.DeleteObject();
  m_background.CreateSolidBrush(color);
  return *this;
}

CLabel& CLabel::SetFontBold(bool bold) {
  m_fontDescription.lfWeight = bold ? FW_BOLD : FW_NORMAL;
  RecreateFont();
  return *this;
}

CLabel& CLabel::SetFontSize(int height) {
  m_fontDescription.lfHeight = -height;
  RecreateFont();
  return *this;
}

CLabel& CLabel::SetLabelCursor(HCURSOR cursor) {
  m_cursor = cursor;
  return *this;
}

CLabel& CLabel::Flash(FlashKind kind, UINT half_period_ms) {
  ASSERT(m_hWnd != nullptr);
  if (m_blinkKind != kFlashNone) {
    KillTimer(kFlashTimer);
    if (m_blinkKind == kFlashText) SetWindowText(m_savedText);
  }
  m_blinkKind = kind;
  m_blinkPhase = 0;
  GetWindowText(m_savedText);
  if (kind != kFlashNone) SetTimer(kFlashTimer, half_period_ms, nullptr);
  Repaint();
  return *this;
}

void CLabel::RecreateFont() {
  m_font.DeleteObject();
  m_font.CreateFontIndirect(&m_fontDescription);
  if (m_hWnd != nullptr) SetFont(&m_font, FALSE);
  Repaint();
}

void CLabel::Repaint() {
  if (m_hWnd == nullptr) return;
  RedrawWindow(nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

void CLabel::PreSubclassWindow() {
  CStatic::PreSubclassWindow();
  // Without it a static text lets the mouse through to its parent.
  ModifyStyle(0, SS_NOTIFY);
  // Some systems select the control's own font after asking for the colours.
  SetFont(&m_font, FALSE);
}

HBRUSH CLabel::CtlColor(CDC* dc, UINT type) {
  if (type == CTLCOLOR_STATIC) {
    dc->SelectObject(&m_font);
    dc->SetTextColor(m_textColor);
    dc->SetBkMode(TRANSPARENT);
  }
  const bool is_off = m_blinkKind == kFlashBackground && m_blinkPhase == 0;
  return is_off ? m_blinkBackground : m_background;
}

void CLabel::OnTimer(UINT_PTR id) {
  const bool was_on = m_blinkPhase != 0;
  m_blinkPhase = was_on ? 0 : 1;
  if (m_blinkKind == kFlashBackground) {
    Invalidate(FALSE);
    UpdateWindow();
  } else if (m_blinkKind == kFlashText) {
    SetWindowText(was_on ? m_savedText.GetString() : _T(""));
  }
  CStatic::OnTimer(id);
}

void CLabel::OnLButtonDown(UINT flags, CPoint point) {
  CString text;
  GetWindowText(text);
  OpenWithShell(text);
  CStatic::OnLButtonDown(flags, point);
}

BOOL CLabel::OnSetCursor(CWnd* window, UINT hit_test, UINT message) {
  if (m_cursor == nullptr) {
    return CStatic::OnSetCursor(window, hit_test, message);
  }
  ::SetCursor(m_cursor);
  return TRUE;
}
