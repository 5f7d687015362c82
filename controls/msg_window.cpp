// SPDX-License-Identifier: MIT
#include "controls/msg_window.h"

#include "controls/shell_open.h"

namespace {

constexpr UINT_PTR kCloseTimer = 1;
constexpr DWORD kShowAnimationMs = 300;
constexpr DWORD kTimedCloseAnimationMs = 300;
constexpr DWORD kClickedCloseAnimationMs = 200;

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kTitleColor = RGB(33, 33, 33);
constexpr COLORREF kTextColor = RGB(66, 66, 66);
constexpr int kMarginPx = 10;
constexpr int kTextTopPx = 40;
constexpr int kFontHeightPx = 16;

}  // namespace

// clang-format off
BEGIN_MESSAGE_MAP(CMsgWindow, CWnd)
  ON_WM_PAINT()
  ON_WM_ERASEBKGND()
  ON_WM_TIMER()
  ON_WM_LBUTTONDOWN()
  ON_WM_RBUTTONDOWN()
END_MESSAGE_MAP()
// clang-format on

BOOL CMsgWindow::Create(CWnd* parent, LPCTSTR caption, int width, int height) {
  m_width = width;
  m_height = height;
  const LPCTSTR class_name = AfxRegisterWndClass(
      CS_HREDRAW | CS_VREDRAW, ::LoadCursor(nullptr, IDC_ARROW),
      static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)),
      ::LoadIcon(nullptr, IDI_INFORMATION));
  return CreateEx(WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE,
                  class_name, caption, WS_POPUP | WS_BORDER,
                  CRect(0, 0, m_width, m_height), parent, 0);
}

void CMsgWindow::SetContent(LPCTSTR title, LPCTSTR text, LPCTSTR link) {
  m_title = title;
  m_text = text;
  m_link = link;
  if (m_hWnd != nullptr) Invalidate();
}

void CMsgWindow::Show(int milliseconds) {
  CRect client, work;
  GetClientRect(client);
  ::SystemParametersInfo(SPI_GETWORKAREA, 0, &work, 0);
  SetWindowPos(&wndTopMost, work.right - client.Width(),
               work.bottom - client.Height(), 0, 0,
               SWP_NOSIZE | SWP_NOACTIVATE);
  AnimateWindow(kShowAnimationMs, AW_SLIDE | AW_VER_NEGATIVE);
  ShowWindow(SW_SHOWNOACTIVATE);
  Invalidate();
  UpdateWindow();
  if (milliseconds > 0) SetTimer(kCloseTimer, milliseconds, nullptr);
}

void CMsgWindow::PostNcDestroy() { delete this; }

void CMsgWindow::OnPaint() {
  CPaintDC dc(this);
  CRect client;
  GetClientRect(client);
  CDC memory;
  CBitmap bitmap;
  memory.CreateCompatibleDC(&dc);
  bitmap.CreateCompatibleBitmap(&dc, client.Width(), client.Height());
  CBitmap* old_bitmap = memory.SelectObject(&bitmap);
  Draw(&memory, client);
  dc.BitBlt(0, 0, client.Width(), client.Height(), &memory, 0, 0, SRCCOPY);
  memory.SelectObject(old_bitmap);
}

static void DrawTextIn(CDC* dc, const CString& text, CRect area, int weight,
                       COLORREF color, UINT format) {
  CFont font;
  font.CreateFont(kFontHeightPx, 0, 0, 0, weight, FALSE, FALSE, FALSE,
                  DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                  DEFAULT_QUALITY, DEFAULT_PITCH | FF_SWISS, _T("Arial"));
  CFont* old_font = dc->SelectObject(&font);
  dc->SetTextColor(color);
  dc->DrawText(text, area, format | DT_NOPREFIX);
  dc->SelectObject(old_font);
}

void CMsgWindow::Draw(CDC* dc, const CRect& client) {
  dc->FillSolidRect(client, kWhite);
  dc->SetBkMode(TRANSPARENT);
  const CRect title(kMarginPx, kMarginPx, client.right - kMarginPx, kTextTopPx);
  DrawTextIn(dc, m_title, title, FW_BOLD, kTitleColor,
             DT_SINGLELINE | DT_END_ELLIPSIS);
  const CRect text(kMarginPx, kTextTopPx, client.right, client.bottom);
  DrawTextIn(dc, m_text, text, FW_NORMAL, kTextColor, DT_WORDBREAK);
}

BOOL CMsgWindow::OnEraseBkgnd(CDC*) {
  return TRUE;  // painted whole, so erasing would only flicker
}

void CMsgWindow::OnTimer(UINT_PTR id) {
  if (id != kCloseTimer) return CWnd::OnTimer(id);
  Close(kTimedCloseAnimationMs);
}

void CMsgWindow::OnLButtonDown(UINT, CPoint) {
  const CString link = m_link;
  m_link.Empty();
  Close(kClickedCloseAnimationMs);
  OpenWithShell(link);
}

void CMsgWindow::OnRButtonDown(UINT, CPoint) {
  Close(kClickedCloseAnimationMs);
}

void CMsgWindow::Close(DWORD animation_ms) {
  KillTimer(kCloseTimer);
  AnimateWindow(animation_ms, AW_HIDE | AW_SLIDE | AW_VER_POSITIVE);
  DestroyWindow();
}
