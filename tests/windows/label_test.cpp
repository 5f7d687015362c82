// SPDX-License-Identifier: MIT
#include "controls/label.h"

#include <afxdialogex.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "controls/shell_open.h"
#include "mfc/detail/handle_maps.h"
#include "tests/windows/dialogs.h"
#include "tests/windows/gui_objects.h"

namespace {

constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kRed = RGB(255, 0, 0);

std::vector<CString> g_opened;

class CLabelDlg : public CDialogEx {
 public:
  CLabelDlg() : CDialogEx(IDD_LABEL) {
    Create(IDD_LABEL);
    ShowWindow(SW_SHOWNA);
    UpdateWindow();
  }
  ~CLabelDlg() override { DestroyWindow(); }
  void DoDataExchange(CDataExchange* exchange) override {
    DDX_Control(exchange, IDC_LABEL, m_label);
  }
  CLabel m_label;
};

class Label : public ::testing::Test {
 protected:
  Label() {
    g_opened.clear();
    SetShellOpener([](LPCTSTR target) { g_opened.push_back(target); });
  }
  ~Label() override {
    SetShellOpener(nullptr);
    AfxLockTempMaps();
    AfxUnlockTempMaps(TRUE);
  }

  CLabel& TheLabel() { return m_dialog.m_label; }
  std::string Text() {
    CString text;
    TheLabel().GetWindowText(text);
    return std::string(CStringA(text));
  }

  // What the label asks its text to be drawn with.
  struct Looks {
    COLORREF text_color, background;
    int mode;
    LOGFONT font;
    HGDIOBJ font_handle;
  };
  Looks Ask() {
    CClientDC dc(&TheLabel());
    const auto brush = reinterpret_cast<HGDIOBJ>(m_dialog.SendMessage(
        WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc.m_hDC),
        reinterpret_cast<LPARAM>(TheLabel().m_hWnd)));
    LOGBRUSH description{};
    ::GetObject(brush, sizeof(description), &description);
    Looks looks{dc.GetTextColor(),
                description.lbColor,
                dc.GetBkMode(),
                {},
                ::GetCurrentObject(dc, OBJ_FONT)};
    ::GetObject(looks.font_handle, sizeof(looks.font), &looks.font);
    ::SelectObject(dc, ::GetStockObject(SYSTEM_FONT));
    return looks;
  }

  // Pixels of exactly that colour on the screen.
  int Count(COLORREF color) {
    CClientDC dc(&TheLabel());
    CRect area;
    TheLabel().GetClientRect(area);
    int count = 0;
    for (int y = 0; y < area.Height(); ++y) {
      for (int x = 0; x < area.Width(); ++x)
        count += dc.GetPixel(x, y) == color;
    }
    return count;
  }

  // Rows from the first to the last that are not all background.
  int PaintedHeight(COLORREF background) {
    CClientDC dc(&TheLabel());
    CRect area;
    TheLabel().GetClientRect(area);
    int first = area.bottom, last = -1;
    for (int y = 0; y < area.Height(); ++y) {
      for (int x = 0; x < area.Width(); ++x) {
        if (dc.GetPixel(x, y) == background) continue;
        first = std::min(first, y);
        last = y;
      }
    }
    return last - first + 1;
  }

  void Tick() { TheLabel().SendMessage(WM_TIMER, 1, 0); }

  CLabelDlg m_dialog;
};

LOGFONT StockFont() {
  LOGFONT font{};
  ::GetObject(::GetStockObject(DEFAULT_GUI_FONT), sizeof(font), &font);
  return font;
}

TEST_F(Label, StartsInSystemColorsAndBoldSimSun) {
  const Looks looks = Ask();
  EXPECT_EQ(looks.text_color, ::GetSysColor(COLOR_WINDOWTEXT));
  EXPECT_EQ(looks.background, ::GetSysColor(COLOR_3DFACE));
  EXPECT_EQ(looks.mode, TRANSPARENT);
  EXPECT_STREQ(CStringA(looks.font.lfFaceName), "SimSun");
  EXPECT_EQ(looks.font.lfHeight, 14);
  EXPECT_EQ(looks.font.lfWeight, FW_BOLD);
  EXPECT_EQ(looks.font.lfCharSet, GB2312_CHARSET);
  EXPECT_EQ(looks.font.lfPitchAndFamily, VARIABLE_PITCH | FF_SWISS);
  EXPECT_FALSE(looks.font.lfItalic || looks.font.lfUnderline ||
               looks.font.lfStrikeOut);
}

TEST_F(Label, FontSettersTakeTheStockFace) {
  TheLabel().SetFontSize(22).SetFontBold(true);
  const LOGFONT font = Ask().font;
  EXPECT_STREQ(CStringA(font.lfFaceName), CStringA(StockFont().lfFaceName));
  EXPECT_EQ(font.lfHeight, -22);
  EXPECT_EQ(font.lfWeight, FW_BOLD);
  EXPECT_EQ(font.lfCharSet, StockFont().lfCharSet);
}

TEST_F(Label, FontShowsInThePaintedText) {
  TheLabel().SetBkColor(kWhite).SetTextColor(kRed).SetText(L"HH");
  EXPECT_EQ(TheLabel().GetFont()->GetSafeHandle(), Ask().font_handle);
  const int simsun = PaintedHeight(kWhite);
  TheLabel().SetFontSize(30);
  const int large = PaintedHeight(kWhite);
  TheLabel().SetFontSize(8);
  const int small = PaintedHeight(kWhite);
  EXPECT_NEAR(simsun, 10, 3);
  EXPECT_NEAR(large, 22, 3);
  EXPECT_NEAR(small, 6, 3);
  EXPECT_EQ(TheLabel().GetFont()->GetSafeHandle(), Ask().font_handle);
}

TEST_F(Label, WeightAloneKeepsTheStockHeight) {
  TheLabel().SetFontBold(true);
  EXPECT_EQ(Ask().font.lfHeight, StockFont().lfHeight);
  TheLabel().SetFontBold(false);
  EXPECT_EQ(Ask().font.lfWeight, FW_NORMAL);
}

TEST_F(Label, BothColorsShowAtOnce) {
  TheLabel().SetFontSize(22).SetFontBold(true).SetText(L"threshold done");
  TheLabel().SetBkColor(kBlue).SetTextColor(kWhite);
  const int area = Count(kBlue) + Count(kWhite);
  EXPECT_GT(Count(kBlue), area / 2);
  EXPECT_GT(Count(kWhite), 50);
}

TEST_F(Label, BackgroundWaitsForTheNextRepaint) {
  TheLabel().SetText(L"x");
  m_dialog.UpdateWindow();
  TheLabel().SetBkColor(kBlue);
  EXPECT_EQ(Count(kBlue), 0);
  TheLabel().SetTextColor(kRed);
  EXPECT_GT(Count(kBlue), 100);
}

TEST_F(Label, TextShowsAtOnce) {
  TheLabel().SetBkColor(kWhite).SetTextColor(kRed).SetFontSize(22);
  EXPECT_EQ(Count(kRed), 0);
  TheLabel().SetText(L"\u6d4b\u91cf");
  EXPECT_GT(Count(kRed), 20);
  EXPECT_EQ(Text(), std::string(CStringA(L"\u6d4b\u91cf")));
  TheLabel().SetText(L"");
  EXPECT_EQ(Count(kRed), 0);
}

TEST_F(Label, SettersBeforeTheWindowExistsAreKept) {
  CLabel label;
  label.SetText(L"lost").SetTextColor(kRed).SetBkColor(kBlue).SetFontSize(20);
  ASSERT_TRUE(label.SubclassDlgItem(IDC_OTHER_LABEL, &m_dialog));
  CClientDC dc(&label);
  m_dialog.SendMessage(WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc.m_hDC),
                       reinterpret_cast<LPARAM>(label.m_hWnd));
  EXPECT_EQ(dc.GetTextColor(), kRed);
  ::SelectObject(dc, ::GetStockObject(SYSTEM_FONT));
  label.UnsubclassWindow();
}

TEST_F(Label, ClickOpensTheTextWithTheShell) {
  TheLabel().SetText(L"http://localhost/\u4e2d");
  TheLabel().SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
  ASSERT_EQ(g_opened.size(), 1u);
  EXPECT_EQ(g_opened[0], L"http://localhost/\u4e2d");
}

TEST_F(Label, ClickOnAnEmptyLabelOpensNothing) {
  TheLabel().SetText(L"");
  TheLabel().SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
  EXPECT_TRUE(g_opened.empty());
}

TEST_F(Label, ClickOnTextThatCannotBeOpenedHasNoVisibleEffect) {
  SetShellOpener(nullptr);  // the real one
  TheLabel().SetText(L"threshold done");
  const HWND before = ::GetForegroundWindow();
  TheLabel().SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
  EXPECT_EQ(Text(), "threshold done");
  EXPECT_EQ(::GetForegroundWindow(), before);
  EXPECT_TRUE(m_dialog.IsWindowVisible());
}

TEST_F(Label, MouseReachesTheLabelAndNotOnlyItsParent) {
  CRect place;
  TheLabel().GetWindowRect(place);
  const CPoint middle = place.CenterPoint();
  EXPECT_EQ(
      TheLabel().SendMessage(WM_NCHITTEST, 0, MAKELPARAM(middle.x, middle.y)),
      HTCLIENT);
}

TEST_F(Label, CursorShowsIfSet) {
  const auto ask = [&] {
    return TheLabel().SendMessage(WM_SETCURSOR,
                                  reinterpret_cast<WPARAM>(TheLabel().m_hWnd),
                                  MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
  };
  ::SetCursor(::LoadCursor(nullptr, IDC_ARROW));
  EXPECT_FALSE(ask() && ::GetCursor() == ::LoadCursor(nullptr, IDC_HAND));
  const HCURSOR hand = ::LoadCursor(nullptr, IDC_HAND);
  TheLabel().SetLabelCursor(hand);
  EXPECT_EQ(ask(), TRUE);
  EXPECT_EQ(::GetCursor(), hand);
  TheLabel().SetLabelCursor(nullptr);
  ::SetCursor(::LoadCursor(nullptr, IDC_ARROW));
  ask();
  EXPECT_EQ(::GetCursor(), ::LoadCursor(nullptr, IDC_ARROW));
}

TEST_F(Label, FlashingTextGoesAndComes) {
  TheLabel().SetText(L"alarm").Flash(CLabel::kFlashText, 60000);
  EXPECT_EQ(Text(), "alarm");
  Tick();
  EXPECT_EQ(Text(), "");
  Tick();
  EXPECT_EQ(Text(), "alarm");
  Tick();
  TheLabel().Flash(CLabel::kFlashNone);
  EXPECT_EQ(Text(), "alarm") << "stopped in the dark phase";
  EXPECT_FALSE(TheLabel().KillTimer(1)) << "no timer is left";
  Tick();
  EXPECT_EQ(Text(), "alarm");
}

TEST_F(Label, TextSetWhileFlashingIsTheOneThatComesBack) {
  TheLabel().SetText(L"one").Flash(CLabel::kFlashText, 60000);
  TheLabel().SetText(L"two");
  Tick();
  Tick();
  EXPECT_EQ(Text(), "two");
}

TEST_F(Label, FlashingBackgroundAlternates) {
  TheLabel().SetText(L"alarm").SetBkColor(kRed);
  TheLabel().Flash(CLabel::kFlashBackground, 60000);
  EXPECT_EQ(Ask().background, ::GetSysColor(COLOR_3DFACE));
  EXPECT_EQ(Count(kRed), 0);
  Tick();
  EXPECT_EQ(Ask().background, kRed);
  EXPECT_GT(Count(kRed), 100) << "repainted by the tick itself";
  Tick();
  EXPECT_EQ(Ask().background, ::GetSysColor(COLOR_3DFACE));
  TheLabel().Flash(CLabel::kFlashNone);
  EXPECT_EQ(Ask().background, kRed);
  EXPECT_EQ(Text(), "alarm");
}

TEST_F(Label, FlashRunsOnATimerOfItsOwn) {
  TheLabel().SetText(L"alarm").Flash(CLabel::kFlashText, 10);
  const DWORD deadline = ::GetTickCount() + 5000;
  MSG message;
  while (!Text().empty() && ::GetTickCount() < deadline) {
    if (::GetMessage(&message, nullptr, 0, 0) <= 0) break;
    ::DispatchMessage(&message);
  }
  EXPECT_EQ(Text(), "");
}

TEST_F(Label, SettersLeaveNoGraphicsObjects) {
  const auto round = [&](int i) {
    TheLabel().SetFontSize(10 + i % 20).SetFontBold(i % 2 == 0);
    TheLabel().SetBkColor(RGB(i, 0, 0)).SetTextColor(RGB(0, i, 0));
    AfxLockTempMaps();
    AfxUnlockTempMaps(TRUE);
  };
  for (int i = 0; i < 40; ++i) round(i);
  const size_t before = LiveGdiObjects();
  for (int i = 0; i < 400; ++i) round(i % 40);
  EXPECT_LE(LiveGdiObjects(), before + 2);
}

TEST_F(Label, DestructorFreesFontAndBrushes) {
  for (int i = 0; i < 3; ++i) CLabel().SetFontSize(9);
  const size_t before = LiveGdiObjects();
  for (int i = 0; i < 50; ++i) CLabel().SetFontSize(9).SetBkColor(kRed);
  EXPECT_EQ(LiveGdiObjects(), before);
}

}  // namespace
