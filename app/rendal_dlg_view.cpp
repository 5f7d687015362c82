// SPDX-License-Identifier: MIT
//
// The image view: its window, and handlers that call app/view/.
#include <opencv2/highgui.hpp>

#include "app/image_window.h"
#include "app/rendal_dlg.h"
#include "app/text.h"
#include "app/view/roi_interaction.h"
#include "app/view/view_commands.h"
#include "app/view/view_globals.h"
#include "app/view/view_painter.h"

using rendal::g_view;

namespace {

constexpr UINT_PTR kRefreshTimer = 1;
constexpr UINT kRefreshPeriodMs = 20;

}  // namespace

void CRendalDlg::CreateImageWindow() {
  m_viewImage = cv::Mat::zeros(m_viewSize, CV_8UC3);
  rendal::OpenImageWindow(*GetDlgItem(IDC_VIEW), m_viewImage, OnViewMouse,
                          this);
}

void CRendalDlg::OnViewMouse(int event, int x, int y, int flags, void* dialog) {
  auto& self = *static_cast<CRendalDlg*>(dialog);
  const bool leftHeld = (flags & cv::EVENT_FLAG_LBUTTON) != 0;
  if (rendal::OnMouse({event, x, y, leftHeld}, self, g_view)) {
    self.OnViewClicked(x, y);
  }
}

void CRendalDlg::OnZoomOne() { rendal::ZoomOne(*this, g_view); }

void CRendalDlg::OnZoomFit() { rendal::ZoomFit(*this, g_view); }

BOOL CRendalDlg::OnMouseWheel(UINT flags, short delta, CPoint point) {
  CPoint cursor;
  ::GetCursorPos(&cursor);
  ScreenToClient(&cursor);
  rendal::ZoomWheel(*this, g_view, cursor.x, cursor.y, delta);
  return CDialogEx::OnMouseWheel(flags, delta, point);
}

void CRendalDlg::SetToolMode(rendal::ToolMode mode) {
  rendal::SelectToolMode(*this, mode);
}

void CRendalDlg::OnClearDisplay() {
  ShowStatus(rendal::ClearDisplay(*this));
  HighlightNothing();
}

void CRendalDlg::OnWidthChanged() {
  m_bandWidth = m_width.GetPos();
  RequestRedraw();
}

void CRendalDlg::StartRefresh() {
  SetTimer(kRefreshTimer, kRefreshPeriodMs, nullptr);
}

// What a click changed need not wait for the next tick.
void CRendalDlg::RefreshSoon() {
  if (m_redraw > 0) ::PostMessageW(m_hWnd, WM_TIMER, kRefreshTimer, 0);
}

void CRendalDlg::OnTimer(UINT_PTR id) {
  if (id == kRefreshTimer) {
    Refresh();
    GoOnClosing();
  }
  CDialogEx::OnTimer(id);
}

// One tick; most find nothing to do. A picture that fails is not tried again
// until the next request.
void CRendalDlg::Refresh() {
  ShowStatus(rendal::Guarded([this] {
    const auto readOut = rendal::RefreshView(*this, g_view, &m_viewImage);
    if (!readOut) return rendal::Status{};
    m_readout.ModifyStyle(0, SS_CENTER | SS_CENTERIMAGE);
    m_readout.SetText(rendal::FromUtf8(rendal::FormatReadOut(*readOut)));
    rendal::ShowInImageWindow(m_viewImage);
    return rendal::Status{};
  }));
  if (m_redraw > 0 && HasImage()) m_redraw = -m_redraw;
}
