// SPDX-License-Identifier: MIT
//
// How the program starts and ends.
#include <cstdio>
#include <cwctype>
#include <thread>

#include "app/build_date.h"
#include "app/placement.h"
#include "app/rendal_app.h"
#include "app/start_options.h"
#include "app/view/view_globals.h"
#include "tests/windows/gui_objects.h"
#include "tests/windows/main_dialog.h"

namespace {

class StartUp : public MainDialogTest {
 protected:
  // The system menu's last item.
  std::pair<UINT, std::wstring> LastSystemCommand() const {
    const HMENU menu = ::GetSystemMenu(dialog.m_hWnd, FALSE);
    const int last = ::GetMenuItemCount(menu) - 1;
    wchar_t text[64] = L"";
    ::GetMenuStringW(menu, static_cast<UINT>(last), text, 64, MF_BYPOSITION);
    return {::GetMenuItemID(menu, last), text};
  }
};

TEST_F(StartUp, TitleCarriesTheBuildDate) {
  Run([&] {
    std::wstring title = TextOf(dialog.m_hWnd);
    ASSERT_EQ(title.substr(0, 8), L"测量    20");
    for (size_t i = 8; i < title.size(); ++i)
      if (std::iswdigit(title[i])) title[i] = L'#';
    EXPECT_EQ(title, L"测量    20##-##-##");
  });
}

TEST(Placement, TitleOfALargerWindowStaysInReach) {
  const CRect work(0, 24, 1366, 768);
  using rendal::PlaceForTitle;
  EXPECT_EQ(PlaceForTitle(CRect(4, -45, 1360, 835), work), CPoint(4, 24));
  EXPECT_EQ(PlaceForTitle(CRect(-100, 30, 1500, 500), work), CPoint(0, 30));
  EXPECT_EQ(PlaceForTitle(CRect(1200, 600, 1400, 800), work),
            CPoint(1166, 568));
  EXPECT_EQ(PlaceForTitle(CRect(100, 100, 300, 300), work), CPoint(100, 100));
}

TEST(Placement, TitleInReachCanBeDragged) {
  const CRect work(0, 24, 1366, 768);
  using rendal::IsTitleInReach;
  EXPECT_TRUE(IsTitleInReach(CRect(4, 24, 1360, 904), work, 20));
  EXPECT_TRUE(IsTitleInReach(CRect(1266, 748, 2622, 1628), work, 20));
  EXPECT_FALSE(IsTitleInReach(CRect(1267, 748, 2623, 1628), work, 20));
  EXPECT_FALSE(IsTitleInReach(CRect(1266, 749, 2622, 1629), work, 20));
  EXPECT_FALSE(IsTitleInReach(CRect(4, 23, 1360, 903), work, 20));
  EXPECT_TRUE(IsTitleInReach(CRect(-1256, 24, 100, 904), work, 20));
  EXPECT_FALSE(IsTitleInReach(CRect(-1257, 24, 99, 904), work, 20));
}

TEST(BuildDate, ReadsTheCompilersDate) {
  using rendal::BuildDate;
  using rendal::ParseBuildDate;
  EXPECT_EQ(ParseBuildDate("Nov 21 2026"), (BuildDate{2026, 11, 21}));
  EXPECT_EQ(ParseBuildDate("Jan  1 2027"), (BuildDate{2027, 1, 1}));
  EXPECT_EQ(ParseBuildDate("Dec 31 1999"), (BuildDate{1999, 12, 31}));
}

TEST_F(StartUp, FrameCannotBeResized) {
  Run([&] {
    const LONG style = ::GetWindowLongW(dialog.m_hWnd, GWL_STYLE);
    EXPECT_FALSE(style & WS_THICKFRAME);
    EXPECT_TRUE(style & WS_CAPTION);
    EXPECT_TRUE(style & WS_SYSMENU);
    EXPECT_TRUE(style & WS_MINIMIZEBOX);
    EXPECT_FALSE(style & WS_MAXIMIZEBOX);
  });
}

TEST_F(StartUp, BothIconsAreTheApplications) {
  Run([&] {
    EXPECT_NE(::SendMessageW(dialog.m_hWnd, WM_GETICON, ICON_BIG, 0), 0);
    EXPECT_EQ(::SendMessageW(dialog.m_hWnd, WM_GETICON, ICON_BIG, 0),
              ::SendMessageW(dialog.m_hWnd, WM_GETICON, ICON_SMALL, 0));
    EXPECT_EQ(::SendMessageW(dialog.m_hWnd, WM_QUERYDRAGICON, 0, 0),
              ::SendMessageW(dialog.m_hWnd, WM_GETICON, ICON_BIG, 0));
  });
}

TEST_F(StartUp, SystemMenuEndsWithAbout) {
  Run([&] {
    EXPECT_EQ(LastSystemCommand(),
              (std::pair<UINT, std::wstring>(16, L"关于 Rendal(&A)...")));
  });
}

TEST_F(StartUp, EnglishSystemMenuEndsWithAbout) {
  dialog.m_language = rendal::kEnglish;
  Run([&] {
    EXPECT_EQ(LastSystemCommand(),
              (std::pair<UINT, std::wstring>(16, L"&About Rendal...")));
  });
}

TEST_F(StartUp, AboutCommandShowsTheAboutBox) {
  for (const int32_t language : {rendal::kChinese, rendal::kEnglish}) {
    dialog.m_language = language;
    const bool chinese = language == rendal::kChinese;
    int shown = 0;
    Run([&] {
      WithModal([&] { ::SendMessageW(dialog.m_hWnd, WM_SYSCOMMAND, 16, 0); },
                [&](HWND about) {
                  ++shown;
                  EXPECT_EQ(TextOf(about),
                            chinese ? L"关于 Rendal" : L"About Rendal");
                  EXPECT_EQ(
                      TextOf(::GetDlgItem(about, IDC_ABOUT_TEXT)),
                      chinese ? L"Rendal，版本 1.0" : L"Rendal, version 1.0");
                  EXPECT_EQ(TextOf(::GetDlgItem(about, IDOK)),
                            chinese ? L"确定" : L"OK");
                  ::PostMessageW(about, WM_COMMAND, IDOK, 0);
                });
      EXPECT_TRUE(::IsWindowEnabled(dialog.m_hWnd));
    });
    EXPECT_EQ(shown, 1);
  }
}

TEST_F(StartUp, StateBeforeTheFirstLoad) {
  Run([&] {
    EXPECT_EQ(dialog.m_redraw, 0);
    EXPECT_EQ(dialog.m_language, 0);
    EXPECT_EQ(dialog.m_parallelMode, 1);
    EXPECT_TRUE(dialog.m_srcImage.empty());
    EXPECT_GE(dialog.m_regionHistory.capacity(), 3u);
    EXPECT_TRUE(dialog.m_regionHistory.empty());
    EXPECT_TRUE(dialog.m_regionOverlay.empty());
    const std::vector<std::vector<float>> expected = {
        {0, 0, 100, 100}, {0, 0, 100}, {0, 0, 100, 100}, {100, 100, 0, 40, 20}};
    ASSERT_EQ(dialog.m_roiShapes.size(), 4u);
    for (size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(dialog.m_roiShapes[i].kind, i);
      for (size_t k = 0; k < expected[i].size(); ++k) {
        EXPECT_EQ(dialog.m_roiShapes[i].values[k], expected[i][k]) << i;
      }
    }
  });
}

TEST_F(StartUp, ViewIsAsItWasMeantBeforeAnyImage) {
  rendal::g_view = {5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, true, 5,
                    5, 5, true, {5}};
  Run([&] {
    const rendal::ViewState& view = rendal::g_view;
    EXPECT_EQ(view.zoom, 1.0f);
    EXPECT_EQ(view.fitZoom, 1.0f);
    EXPECT_EQ(view.minZoom, 0.125f);
    EXPECT_EQ(view.offsetX, 0.0f);
    EXPECT_EQ(view.pointerY, 0);
    EXPECT_FALSE(view.dragging);
    EXPECT_EQ(view.grabbed, -1);
    EXPECT_TRUE(view.highlighted.empty());
  });
}

TEST_F(StartUp, RequestAndHidingStandSideBySide) {
  EXPECT_EQ(&dialog.m_hideResults, &dialog.m_redraw + 1);
}

TEST_F(StartUp, WelcomeWindowStandsInTheCorner) {
  Run([&] {
    const HWND popUp = WelcomeWindow();
    ASSERT_NE(popUp, nullptr);
    CRect place, client, work;
    ::GetWindowRect(popUp, &place);
    ::GetClientRect(popUp, &client);
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    EXPECT_EQ(place.Size(), CSize(300, 180));
    EXPECT_EQ(place.left, work.right - client.Width());
    EXPECT_EQ(place.top, work.bottom - client.Height());
  });
}

TEST_F(StartUp, RightClickClosesTheWelcomeWindow) {
  Run([&] {
    const HWND popUp = WelcomeWindow();
    ::SendMessageW(popUp, WM_RBUTTONDOWN, MK_RBUTTON, 0);
    EXPECT_FALSE(::IsWindow(popUp));
  });
}

TEST_F(StartUp, ConsoleIsNamedAndInTheCorner) {
  wchar_t title[64] = L"";
  RECT place = {-1, -1, -1, -1};
  RunOnConsole([&] {
    ::GetConsoleTitleW(title, 64);
    const HWND console = ::GetConsoleWindow();
    if (console != nullptr) ::GetWindowRect(console, &place);
  });
  EXPECT_STREQ(title, L"Debug Output");
  EXPECT_EQ(place.left, 0);
  EXPECT_EQ(place.top, 0);
}

TEST_F(StartUp, ConsoleShowsChineseAndClsEmptiesIt) {
  std::vector<std::wstring> before, after, next;
  RunOnConsole([&] {
    std::printf("路径 = 图像.png\n");
    std::fflush(stdout);
    before = ConsoleRows();
    Click(1031);
    after = ConsoleRows();
    std::printf("next\n");
    std::fflush(stdout);
    next = ConsoleRows();
  });
  ASSERT_GE(before.size(), 2u);
  EXPECT_EQ(before[before.size() - 2], L"路径 = 图像.png");
  for (const std::wstring& row : after) EXPECT_EQ(row, L"");
  EXPECT_EQ(after.size(), next.size() - 1);
  EXPECT_LE(next.size(), 3u);
  EXPECT_EQ(next[next.size() - 2], L"next");
}

// Keys that the console's window got, as its input buffer tells: a key of 27
// that ends no selection arrives there.
TEST_F(StartUp, CommandsSendEscapeToTheConsoleAndNotificationsDoNot) {
  Run([&] {
    const HANDLE input = ::CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(input, INVALID_HANDLE_VALUE);
    const auto escapes = [&] {
      INPUT_RECORD records[32];
      DWORD count = 0;
      ::PeekConsoleInputW(input, records, 32, &count);
      std::vector<BOOL> downs;
      for (DWORD i = 0; i < count; ++i) {
        if (records[i].EventType == KEY_EVENT &&
            records[i].Event.KeyEvent.wVirtualKeyCode == VK_ESCAPE) {
          downs.push_back(records[i].Event.KeyEvent.bKeyDown);
        }
      }
      return downs;
    };
    ::FlushConsoleInputBuffer(input);
    ::SetWindowTextW(Control(1004), L"21");
    Click(1020);
    EXPECT_TRUE(PumpUntil([&] { return escapes().size() >= 2; }));
    EXPECT_EQ(escapes(), (std::vector<BOOL>{TRUE, FALSE}));
    ::CloseHandle(input);
  });
}

TEST_F(StartUp, CloseBoxEndsWithCancel) {
  EXPECT_EQ(Run([&] { ::SendMessageW(dialog.m_hWnd, WM_CLOSE, 0, 0); }),
            IDCANCEL);
}

TEST_F(StartUp, ReturnKeyDoesNotCloseTheDialog) {
  Run([&] {
    ::SendMessageW(dialog.m_hWnd, WM_COMMAND, IDOK, 0);
    PumpFor(50);
    EXPECT_TRUE(::IsWindow(dialog.m_hWnd));
    EXPECT_TRUE(::IsWindowVisible(dialog.m_hWnd));
  });
}

TEST_F(StartUp, ClosingForgetsTheHistoryAndTheImageWindow) {
  dialog.m_startImage = WriteImage("a.png", Squares({40, 40}, 4, 5, 200));
  Run([&] {
    Click(1042);
    EXPECT_EQ(dialog.m_regionHistory.size(), 1u);
  });
  EXPECT_TRUE(dialog.m_regionHistory.empty());
  EXPECT_EQ(::FindWindowW(nullptr, L"ImageShow"), nullptr);
}

TEST_F(StartUp, OpeningAgainAndAgainLeavesNothingBehind) {
  const auto cycle = [&] { Run([&] { Tick(); }); };
  for (int i = 0; i < 3; ++i) cycle();
  const size_t before = LiveGdiObjects();
  for (int i = 0; i < 5; ++i) cycle();
  EXPECT_LE(LiveGdiObjects(), before);
}

TEST(SingleInstance, SecondStartSaysSoAndEnds) {
  const HANDLE first = ::CreateMutexW(nullptr, FALSE, L"Rendal");
  std::wstring text;
  int buttons = 0;
  std::thread operatorThread([&] {
    HWND box = nullptr;
    for (int i = 0; i < 1000 && box == nullptr; ++i) {
      ::Sleep(10);
      box = ::FindWindowW(L"#32770", L"Rendal");
    }
    if (box == nullptr) return;
    for (HWND child = ::GetWindow(box, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
      wchar_t kind[16] = L"", words[64] = L"";
      ::GetClassNameW(child, kind, 16);
      ::SendMessageW(child, WM_GETTEXT, 64, reinterpret_cast<LPARAM>(words));
      const bool visible = ::IsWindowVisible(child);
      if (std::wstring(kind) == L"Static" && visible && *words) text = words;
      if (std::wstring(kind) == L"Button" && visible) ++buttons;
    }
    ::PostMessageW(box, WM_COMMAND, IDOK, 0);
  });
  EXPECT_FALSE(theApp.InitInstance());
  operatorThread.join();
  EXPECT_EQ(text, L"Rendal.exe已经打开!");
  EXPECT_EQ(buttons, 1);
  EXPECT_EQ(theApp.m_pMainWnd, nullptr);
  ::CloseHandle(first);
  // The refused start gave its own handle back.
  ::SetLastError(0);
  const HANDLE again = ::CreateMutexW(nullptr, FALSE, L"Rendal");
  EXPECT_NE(::GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  ::CloseHandle(again);
}

rendal::StartOptions Parsed(std::vector<std::wstring> words) {
  std::vector<wchar_t*> arguments;
  for (std::wstring& word : words) arguments.push_back(word.data());
  return rendal::ParseStartOptions(arguments);
}

using Strings = std::vector<std::wstring>;

TEST(StartOptions, NothingIsChineseWithoutAnImage) {
  const rendal::StartOptions options = Parsed({});
  EXPECT_TRUE(options.image.empty());
  EXPECT_EQ(options.language, rendal::kChinese);
  EXPECT_EQ(options.ignored, Strings{});
}

TEST(StartOptions, PathAndLanguageComeInAnyOrder) {
  const std::wstring path = L"C:\\图像\\a b.png";
  for (const Strings& words :
       {Strings{path, L"/lang", L"en"}, Strings{L"/lang", L"en", path},
        Strings{L"/LANG", L"EN", path}, Strings{path, L"-lang", L"en"},
        Strings{path, L"--lang", L"en"},
        Strings{L"/lang", L"zh", path, L"/lang", L"en"}}) {
    const rendal::StartOptions options = Parsed(words);
    EXPECT_EQ(options.image.wstring(), path);
    EXPECT_EQ(options.language, rendal::kEnglish);
    EXPECT_EQ(options.ignored, Strings{});
  }
  EXPECT_EQ(Parsed({L"/lang", L"en", L"/lang", L"zh"}).language,
            rendal::kChinese);
}

TEST(StartOptions, WhatIsNotUnderstoodIsIgnoredAndNamed) {
  const rendal::StartOptions options =
      Parsed({L"/full", L"--english", L"/lang", L"fr", L"a.png", L"b.png", L"-",
              L"", L"/lang"});
  EXPECT_EQ(options.image.wstring(), L"a.png");
  EXPECT_EQ(options.language, rendal::kChinese);
  EXPECT_EQ(options.ignored, (Strings{L"/full", L"--english", L"/lang fr",
                                      L"b.png", L"-", L"", L"/lang"}));
}

TEST(StartOptions, PathsFromTheRootAreImages) {
  EXPECT_EQ(Parsed({L"/data/a.png"}).image.wstring(), L"/data/a.png");
  EXPECT_EQ(Parsed({L"-1.png"}).image.wstring(), L"-1.png");
}

TEST_F(StartUp, ConsoleNamesTheOptionsThatWereIgnored) {
  dialog.m_ignoredOptions = {L"/full", L"图"};
  std::vector<std::wstring> rows;
  RunOnConsole([&] { rows = ConsoleRows(); });
  ASSERT_GE(rows.size(), 2u);
  EXPECT_EQ(rows[0], L"option ignored: /full");
  EXPECT_EQ(rows[1], L"option ignored: 图");
}

TEST_F(StartUp, ImageOfTheCommandLineIsLoaded) {
  dialog.m_startImage = WriteImage("图像.png", cv::Mat(80, 100, CV_8UC1, 7));
  Run([&] {
    EXPECT_EQ(dialog.m_srcImage.size(), cv::Size(100, 80));
    EXPECT_EQ(TextOf(1002), L"打开图片,width = 100, height = 80");
  });
}

}  // namespace
