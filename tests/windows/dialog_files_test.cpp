// SPDX-License-Identifier: MIT
//
// Images that are dropped or opened again, and the keys of the dialog.
#include <shlobj.h>

#include "app/recent_files.h"
#include "app/text.h"
#include "app/view/view_globals.h"
#include "tests/windows/main_dialog.h"

namespace {

namespace fs = std::filesystem;
using rendal::g_view;
using rendal::RecentFiles;
using Strings = std::vector<std::wstring>;

class DialogFiles : public MainDialogTest {
 protected:
  DialogFiles() { dialog.m_language = rendal::kEnglish; }

  fs::path WriteGrey(const std::string& name, int width) {
    return WriteImage(name, cv::Mat(30, width, CV_8UC1, cv::Scalar(50)));
  }
  // As the system does it.
  void Drop(const std::vector<fs::path>& paths) {
    std::wstring list;
    for (const fs::path& path : paths) list += path.wstring() + L'\0';
    list += L'\0';
    const size_t bytes = sizeof(DROPFILES) + list.size() * sizeof(wchar_t);
    const HGLOBAL memory = ::GlobalAlloc(GHND, bytes);
    auto* files = static_cast<DROPFILES*>(::GlobalLock(memory));
    files->pFiles = sizeof(DROPFILES);
    files->fWide = TRUE;
    memcpy(files + 1, list.data(), list.size() * sizeof(wchar_t));
    ::GlobalUnlock(memory);
    ::SendMessageW(dialog.m_hWnd, WM_DROPFILES,
                   reinterpret_cast<WPARAM>(memory), 0);
  }
  // The menu of recent files in the system menu.
  HMENU RecentMenu() const {
    const HMENU menu = ::GetSystemMenu(dialog.m_hWnd, FALSE);
    for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
      if (::GetSubMenu(menu, i) != nullptr) return ::GetSubMenu(menu, i);
    }
    return nullptr;
  }
  void ChooseRecent(UINT position) {
    ::SendMessageW(dialog.m_hWnd, WM_SYSCOMMAND,
                   ::GetMenuItemID(RecentMenu(), static_cast<int>(position)),
                   0);
  }
  static Strings Kept() { return RecentFiles(kSettingsKey).Paths(); }
};

// Dropping

TEST_F(DialogFiles, DroppedFileIsLoaded) {
  RunWithImage(cv::Mat(80, 100, CV_8UC1, 50), [&] {
    EXPECT_TRUE(::GetWindowLongW(dialog.m_hWnd, GWL_EXSTYLE) &
                WS_EX_ACCEPTFILES);
    Drop({WriteGrey("\xE5\x9B\xBE 1.png", 40), WriteGrey("b.png", 41)});
    EXPECT_EQ(dialog.m_srcImage.size(), cv::Size(40, 30));
    EXPECT_EQ(TextOf(IDC_STATUS), L"open image,width = 40, height = 30");
  });
}

TEST_F(DialogFiles, DroppedFolderOrVanishedFileLeavesTheImage) {
  RunWithImage(cv::Mat(80, 100, CV_8UC1, 50), [&] {
    const fs::path image = WriteGrey("a.png", 40);
    for (const fs::path& path :
         {image.parent_path(), image.parent_path() / "none.png"}) {
      Drop({path});
      EXPECT_EQ(dialog.m_srcImage.size(), cv::Size(100, 80));
      EXPECT_EQ(TextOf(IDC_STATUS),
                L"no such file: " + path.filename().wstring());
      EXPECT_EQ(ColorsOf(IDC_STATUS).text, RGB(255, 0, 0));
    }
    Drop({});
    ::EnableWindow(dialog.m_hWnd, FALSE);  // a modal dialog is open
    Drop({image});
    ::EnableWindow(dialog.m_hWnd, TRUE);
    EXPECT_EQ(dialog.m_srcImage.size(), cv::Size(100, 80));
  });
}

// Recent files

TEST_F(DialogFiles, OpenedImagesAreInTheSystemMenuNewestFirst) {
  RunWithImage(cv::Mat(80, 100, CV_8UC1, 50), [&] {
    const fs::path a = WriteGrey("a & b.png", 40);
    const fs::path b = WriteGrey("b.png", 41);
    Drop({a});
    Drop({b});
    const fs::path none = a.parent_path() / "text.png";
    ::CloseHandle(::CreateFileW(none.c_str(), GENERIC_WRITE, 0, nullptr,
                                CREATE_ALWAYS, 0, nullptr));
    Drop({none});  // no image
    dialog.m_maxImagePixels = 1000;
    Drop({WriteGrey("large.png", 42)});  // refused, with an image shown
    dialog.m_maxImagePixels = 1000000;
    Drop({a});
    ASSERT_EQ(::GetMenuItemCount(RecentMenu()), 3);
    EXPECT_EQ(Kept(), (Strings{a.wstring(), b.wstring(),
                               dialog.m_startImage.wstring()}));
    wchar_t text[300] = L"";
    ::GetMenuStringW(RecentMenu(), 0, text, 300, MF_BYPOSITION);
    EXPECT_EQ(text, L"&1  " + rendal::MenuTextOf(a.wstring()));
    ChooseRecent(1);
    EXPECT_EQ(dialog.m_srcImage.cols, 41);
    EXPECT_EQ(Kept()[0], b.wstring());
  });
}

TEST_F(DialogFiles, NextDialogKnowsThemAndVanishedOnesAreToldAndDropped) {
  const fs::path a = WriteGrey("a.png", 40);
  RecentFiles files(kSettingsKey);
  files.Add(a.parent_path() / "gone.png");
  files.Add(a);
  Run([&] {
    ASSERT_EQ(::GetMenuItemCount(RecentMenu()), 2);
    ChooseRecent(0);
    EXPECT_EQ(dialog.m_srcImage.cols, 40);
    ChooseRecent(1);
    EXPECT_EQ(TextOf(IDC_STATUS), L"no such file: gone.png");
    EXPECT_EQ(dialog.m_srcImage.cols, 40);
    EXPECT_EQ(::GetMenuItemCount(RecentMenu()), 1);
    EXPECT_EQ(Kept(), Strings{a.wstring()});
    // A command that came too late.
    ::SendMessageW(dialog.m_hWnd, WM_SYSCOMMAND, IDM_RECENT_LAST, 0);
    EXPECT_EQ(dialog.m_srcImage.cols, 40);
  });
}

TEST_F(DialogFiles, AtMostEightAreKeptAndNoneTwice) {
  RecentFiles files(kSettingsKey);
  EXPECT_TRUE(files.Paths().empty());
  for (int i = 0; i < 10; ++i) files.Add(L"C:\\" + std::to_wstring(i));
  ASSERT_EQ(Kept().size(), 8u);
  EXPECT_EQ(Kept().front(), L"C:\\9");
  EXPECT_EQ(Kept().back(), L"C:\\2");
  files.Add(L"c:/5");
  ASSERT_EQ(Kept().size(), 8u);
  EXPECT_EQ(Kept()[0], L"c:\\5");
  EXPECT_EQ(Kept()[1], L"C:\\9");
  files.Remove(0);
  EXPECT_EQ(Kept().size(), 7u);
}

TEST_F(DialogFiles, LongPathsAreShortenedInTheMenuOnly) {
  const std::wstring folder(100, L'f');
  const std::wstring path = L"C:\\" + folder + L"\\a&b.png";
  const std::wstring text = rendal::MenuTextOf(path);
  EXPECT_LE(text.size(), 61u);
  EXPECT_EQ(text.substr(0, 5), L"C:\\ff");
  EXPECT_EQ(text.substr(text.size() - 8), L"a&&b.png");
}

// Keys

TEST_F(DialogFiles, KeysAreCommandsWhereverTheFocusIs) {
  dialog.m_language = rendal::kEnglish;
  RunWithImage(Squares({2000, 1500}, 4, 5, 200), [&] {
    for (const HWND window :
         {dialog.m_hWnd, Control(IDC_LENGTH), Control(IDC_DIRECTION),
          Control(IDC_CONNECTION), Control(IDC_REGION_LIST), ImageWindow()}) {
      const float fit = g_view.fitZoom;
      Press(window, '1', true);
      EXPECT_EQ(g_view.zoom, 1);
      Press(window, '0', true);
      EXPECT_EQ(g_view.zoom, fit);
      dialog.m_toolMode = rendal::kToolCircle;
      dialog.m_hideResults = 1;
      Press(window, VK_F5);
      EXPECT_EQ(dialog.m_hideResults, 0);
      Press(window, VK_ESCAPE);
      EXPECT_EQ(dialog.m_hideResults, 1);
    }
    EXPECT_TRUE(::IsWindowVisible(dialog.m_hWnd)) << "Esc closes nothing";
  });
}

TEST_F(DialogFiles, EditFieldsAndOpenListsKeepTheirKeys) {
  RunWithImage(cv::Mat(80, 100, CV_8UC1, 50), [&] {
    g_view.zoom = 3;
    const HWND edit = Control(IDC_LENGTH);
    ::SetFocus(edit);
    ::SendMessageW(edit, EM_SETSEL, 0, -1);
    Press(edit, '1');
    Press(edit, '0');
    EXPECT_EQ(TextOf(edit), L"10");
    EXPECT_EQ(g_view.zoom, 3);
    dialog.m_hideResults = 0;
    const HWND combo = Control(IDC_DIRECTION);
    ::SetFocus(combo);
    ::SendMessageW(combo, CB_SHOWDROPDOWN, TRUE, 0);
    Press(combo, VK_ESCAPE);
    EXPECT_EQ(::SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0), 0);
    EXPECT_EQ(dialog.m_hideResults, 0) << "not cleared";
  });
}

TEST_F(DialogFiles, ControlOOpensAFile) {
  std::wstring title;
  Run([&] {
    WithModal([&] { Press(dialog.m_hWnd, 'O', true); },
              [&](HWND box) {
                title = TextOf(box);
                ::PostMessageW(box, WM_COMMAND, IDCANCEL, 0);
              });
  });
  EXPECT_EQ(title, L"Open image");
}

}  // namespace
