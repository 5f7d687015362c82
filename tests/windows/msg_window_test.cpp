// SPDX-License-Identifier: MIT
#include "controls/msg_window.h"

#include <afxdialogex.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "controls/shell_open.h"
#include "mfc/detail/handle_maps.h"
#include "tests/windows/dialogs.h"
#include "tests/windows/gui_objects.h"

namespace {

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kTitleGray = RGB(33, 33, 33);
constexpr COLORREF kTextGray = RGB(66, 66, 66);

std::vector<CString> g_opened;
int g_alive = 0;

class CCountedMsgWindow : public CMsgWindow {
 public:
  CCountedMsgWindow() { ++g_alive; }
  ~CCountedMsgWindow() override { --g_alive; }
};

// Opens a window and handles messages until `done` or 5 s have passed.
template <typename Condition>
bool PumpUntil(Condition done) {
  const DWORD deadline = ::GetTickCount() + 5000;
  while (!done()) {
    MSG message;
    if (::GetTickCount() > deadline) return false;
    while (::PeekMessage(&message, nullptr, 0, 0, PM_REMOVE)) {
      ::TranslateMessage(&message);
      ::DispatchMessage(&message);
    }
    ::Sleep(1);
  }
  return true;
}

class MsgWindow : public ::testing::Test {
 protected:
  MsgWindow() : m_parent(IDD_PLAIN) {
    g_opened.clear();
    SetShellOpener([](LPCTSTR target) { g_opened.push_back(target); });
    m_parent.Create(IDD_PLAIN);
    m_parent.ShowWindow(SW_SHOW);
    m_window = new CCountedMsgWindow;
  }
  ~MsgWindow() override {
    if (g_alive > 0 && m_window->m_hWnd != nullptr) m_window->DestroyWindow();
    m_parent.DestroyWindow();
    SetShellOpener(nullptr);
    AfxLockTempMaps();
    AfxUnlockTempMaps(TRUE);
    EXPECT_EQ(g_alive, 0);
    EXPECT_EQ(WindowMap().PermanentCount(), 0u);
  }

  void Open(int milliseconds, LPCTSTR link = L"http://localhost/") {
    ASSERT_TRUE(m_window->Create(&m_parent, L"VEXOLAB", 300, 180));
    m_window->SetContent(L"VEXOLAB", L"\u6b22\u8fce\u6765\u5230\n\n", link);
    m_window->Show(milliseconds);
  }

  int Count(COLORREF color, const CRect& area) {
    CClientDC dc(m_window);
    int count = 0;
    for (int y = area.top; y < area.bottom; ++y) {
      for (int x = area.left; x < area.right; ++x) {
        count += dc.GetPixel(x, y) == color;
      }
    }
    return count;
  }

  CDialogEx m_parent;
  CMsgWindow* m_window = nullptr;
};

TEST_F(MsgWindow, HasTheSizeAndStylesOfANotification) {
  Open(0);
  CRect place;
  m_window->GetWindowRect(place);
  EXPECT_EQ(place.Size(), CSize(300, 180));
  const DWORD extended = WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE;
  EXPECT_EQ(m_window->GetExStyle() & extended, extended);
  EXPECT_EQ(m_window->GetStyle() & (WS_POPUP | WS_BORDER | WS_VISIBLE),
            DWORD(WS_POPUP | WS_BORDER | WS_VISIBLE));
  CString caption;
  m_window->GetWindowText(caption);
  EXPECT_EQ(caption, L"VEXOLAB");
}

TEST_F(MsgWindow, ClassHasCursorBrushAndIcon) {
  Open(0);
  const auto style = ::GetClassLongPtr(*m_window, GCL_STYLE);
  EXPECT_EQ(style & (CS_HREDRAW | CS_VREDRAW), CS_HREDRAW | CS_VREDRAW);
  EXPECT_EQ(::GetClassLongPtr(*m_window, GCLP_HBRBACKGROUND),
            reinterpret_cast<ULONG_PTR>(::GetStockObject(WHITE_BRUSH)));
  EXPECT_EQ(::GetClassLongPtr(*m_window, GCLP_HCURSOR),
            reinterpret_cast<ULONG_PTR>(::LoadCursor(nullptr, IDC_ARROW)));
  EXPECT_EQ(::GetClassLongPtr(*m_window, GCLP_HICON),
            reinterpret_cast<ULONG_PTR>(::LoadIcon(nullptr, IDI_INFORMATION)));
}

TEST_F(MsgWindow, SitsInTheCornerOfTheWorkArea) {
  Open(0);
  CRect work, client, place;
  ::SystemParametersInfo(SPI_GETWORKAREA, 0, &work, 0);
  m_window->GetClientRect(client);
  m_window->GetWindowRect(place);
  EXPECT_EQ(place.TopLeft(),
            CPoint(work.right - client.Width(), work.bottom - client.Height()));
}

TEST_F(MsgWindow, TakesNeitherFocusNorActivation) {
  m_parent.SetForegroundWindow();
  const HWND focus = ::GetFocus();
  const HWND active = ::GetActiveWindow();
  Open(0);
  EXPECT_TRUE(m_window->IsWindowVisible());
  EXPECT_EQ(::GetFocus(), focus);
  EXPECT_EQ(::GetActiveWindow(), active);
  EXPECT_NE(::GetActiveWindow(), m_window->m_hWnd);
}

TEST_F(MsgWindow, PaintsABoldTitleAndAWrappedTextOnWhite) {
  Open(0);
  CRect client;
  m_window->GetClientRect(client);
  const CRect title(10, 10, client.right, 40);
  const CRect text(10, 40, client.right, client.bottom);
  EXPECT_GT(Count(kTitleGray, title), 30);
  EXPECT_EQ(Count(kTextGray, title), 0);
  EXPECT_GT(Count(kTextGray, text), 30);
  EXPECT_EQ(Count(kTitleGray, text), 0);
  EXPECT_EQ(Count(kWhite, CRect(0, 0, client.right, 10)), client.Width() * 10);
}

TEST_F(MsgWindow, AmpersandIsTextLikeAnyOther) {
  ASSERT_TRUE(m_window->Create(&m_parent, L"", 300, 180));
  m_window->SetContent(L"&", L"&", L"");
  m_window->Show(0);
  EXPECT_GT(Count(kTitleGray, CRect(10, 10, 40, 40)), 0);
  EXPECT_LT(Count(kWhite, CRect(10, 40, 40, 70)), 30 * 30);
}

TEST_F(MsgWindow, LongTextWraps) {
  ASSERT_TRUE(m_window->Create(&m_parent, L"", 300, 180));
  CString words;
  for (int i = 0; i < 60; ++i) words += L"wide word ";
  m_window->SetContent(L"", words, L"");
  m_window->Show(0);
  CRect client;
  m_window->GetClientRect(client);
  EXPECT_GT(Count(kTextGray, CRect(10, 40, client.right, 60)), 30);
  EXPECT_GT(Count(kTextGray, CRect(10, 80, client.right, 120)), 60);
}

TEST_F(MsgWindow, ClosesByItselfAfterItsTime) {
  Open(30);
  EXPECT_TRUE(m_window->IsWindowVisible());
  EXPECT_TRUE(PumpUntil([] { return g_alive == 0; }));
  EXPECT_TRUE(g_opened.empty());
}

TEST_F(MsgWindow, WithoutATimeItStays) {
  Open(0);
  EXPECT_FALSE(m_window->KillTimer(1)) << "no timer was started";
  m_window->Show(-5);
  EXPECT_FALSE(m_window->KillTimer(1));
}

TEST_F(MsgWindow, OtherTimersDoNotCloseIt) {
  Open(0);
  m_window->SendMessage(WM_TIMER, 2, 0);
  EXPECT_EQ(g_alive, 1);
}

TEST_F(MsgWindow, LeftClickClosesAndThenOpensTheLink) {
  Open(60000, L"http://localhost/home");
  SetShellOpener([](LPCTSTR target) {
    EXPECT_EQ(g_alive, 0) << "the window is gone first";
    g_opened.push_back(target);
  });
  const HWND handle = *m_window;
  m_window->SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, 20));
  EXPECT_FALSE(::IsWindow(handle));
  ASSERT_EQ(g_opened.size(), 1u);
  EXPECT_EQ(g_opened[0], L"http://localhost/home");
}

TEST_F(MsgWindow, LeftClickWithoutALinkOnlyCloses) {
  Open(60000, L"");
  m_window->SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, 20));
  EXPECT_EQ(g_alive, 0);
  EXPECT_TRUE(g_opened.empty());
}

TEST_F(MsgWindow, RightClickClosesWithoutOpening) {
  Open(60000);
  m_window->SendMessage(WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(20, 20));
  EXPECT_EQ(g_alive, 0);
  EXPECT_TRUE(g_opened.empty());
}

TEST_F(MsgWindow, GoesWithItsParent) {
  Open(60000);
  m_parent.DestroyWindow();
  EXPECT_EQ(g_alive, 0);
}

TEST_F(MsgWindow, FailedCreationDeletesTheObject) {
  CWnd no_window;
  no_window.m_hWnd = reinterpret_cast<HWND>(0x12345);  // no such parent
  EXPECT_FALSE(m_window->Create(&no_window, L"", 300, 180));
  EXPECT_EQ(g_alive, 0);
  no_window.m_hWnd = nullptr;
}

TEST_F(MsgWindow, PaintingLeavesNoGraphicsObjects) {
  Open(0);
  const auto repaint = [this] {
    m_window->Invalidate();
    m_window->UpdateWindow();
    AfxLockTempMaps();
    AfxUnlockTempMaps(TRUE);
  };
  for (int i = 0; i < 3; ++i) repaint();
  const size_t before = LiveGdiObjects();
  for (int i = 0; i < 50; ++i) repaint();
  EXPECT_EQ(LiveGdiObjects(), before);
}

}  // namespace
