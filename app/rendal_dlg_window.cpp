// SPDX-License-Identifier: MIT
//
// The dialog as a window among others: how it closes, and where it stands when
// the screens change.
#include "app/open_dialogs.h"
#include "app/placement.h"
#include "app/rendal_dlg.h"

namespace {

CRect WorkAreaAt(const CRect& window) {
  MONITORINFO monitor = {};
  monitor.cbSize = sizeof monitor;
  ::GetMonitorInfoW(::MonitorFromRect(&window, MONITOR_DEFAULTTONEAREST),
                    &monitor);
  return monitor.rcWork;
}

}  // namespace

// A dialog that waits for an answer would outlive the window that it belongs
// to, and the program with it: so closing cancels it. Loops inside each other
// end one after the other; the refresh timer asks again until all have.
void CRendalDlg::OnClose() {
  m_isClosing = true;
  EndDialog(IDCANCEL);
  rendal::CancelOpenDialogs(m_hWnd);
  CDialogEx::OnClose();
}

void CRendalDlg::GoOnClosing() {
  if (m_isClosing) rendal::CancelOpenDialogs(m_hWnd);
}

// A click that was on its way when a dialog opened, or comes from another
// program, must not start anything below it.
bool CRendalDlg::IsWaitingForAnswer() const { return !IsWindowEnabled(); }

void CRendalDlg::KeepTitleOnScreen() {
  CRect window;
  GetWindowRect(&window);
  const CPoint place = rendal::PlaceForTitle(window, WorkAreaAt(window));
  SetWindowPos(nullptr, place.x, place.y, 0, 0,
               SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// A screen that went, or shrank, must not take the window with it. Where the
// operator can still drag it, it stays. (Minimised, it has no title; the next
// restoring looks again.)
void CRendalDlg::ComeBackIntoReach() {
  if (IsIconic() || !IsWindowVisible()) return;
  CRect window;
  GetWindowRect(&window);
  if (!rendal::IsTitleInReach(window, WorkAreaAt(window),
                              ::GetSystemMetrics(SM_CYCAPTION))) {
    KeepTitleOnScreen();
  }
}

LRESULT CRendalDlg::OnScreensChanged(WPARAM, LPARAM) {
  ComeBackIntoReach();
  return Default();
}

void CRendalDlg::OnSize(UINT type, int width, int height) {
  CDialogEx::OnSize(type, width, height);
  if (type == SIZE_RESTORED) ComeBackIntoReach();
}
