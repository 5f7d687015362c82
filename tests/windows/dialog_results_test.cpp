// SPDX-License-Identifier: MIT
//
// The region list and the view beside each other, and rows on the clipboard.
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>

#include "app/view/view_globals.h"
#include "recipes/tables.h"
#include "tests/windows/main_dialog.h"

namespace {

using rendal::g_view;
using Numbers = std::vector<int32_t>;

class DialogResults : public MainDialogTest {
 protected:
  // Squares of 5 pixels, 7 apart, from (1, 1) on; as components with rows.
  void RunWithSquares(int count, const Script& script) {
    RunWithImage(Squares({400, 300}, count, 5, 200), [&] {
      Click(IDC_THRESHOLD);
      Click(IDC_CONNECTION);
      Tick();
      script();
    });
  }

  HWND List() const { return Control(IDC_REGION_LIST); }
  void SelectRow(int row, bool selected = true) {
    ListView_SetItemState(List(), row, selected ? LVIS_SELECTED : 0,
                          LVIS_SELECTED);
  }
  Numbers Selected() const {
    Numbers rows;
    for (int row = -1;
         (row = ListView_GetNextItem(List(), row, LVNI_SELECTED)) >= 0;) {
      rows.push_back(row);
    }
    return rows;
  }
  void ClickView(int x, int y) {
    Mouse(WM_LBUTTONDOWN, x, y, MK_LBUTTON);
    Mouse(WM_LBUTTONUP, x, y);
  }
  // In the middle of a square.
  void ClickSquare(int number) {
    constexpr int kPerRow = 399 / 7;
    const cv::Point2f at =
        g_view.ToView(static_cast<float>(3 + number % kPerRow * 7),
                      static_cast<float>(3 + number / kPerRow * 7));
    ClickView(static_cast<int>(at.x), static_cast<int>(at.y));
  }
  cv::Vec3b PixelAt(float x, float y) const {
    const cv::Point2f at = g_view.ToView(x, y);
    return dialog.m_viewImage.at<cv::Vec3b>(static_cast<int>(at.y),
                                            static_cast<int>(at.x));
  }

  std::wstring Clipboard() const {
    std::wstring text;
    if (!::OpenClipboard(dialog.m_hWnd)) return L"(not open)";
    if (const HANDLE data = ::GetClipboardData(CF_UNICODETEXT)) {
      text = static_cast<const wchar_t*>(::GlobalLock(data));
      ::GlobalUnlock(data);
    }
    ::CloseClipboard();
    return text;
  }
  void PutOnClipboard(const wchar_t* text) const {
    const size_t bytes = (wcslen(text) + 1) * sizeof(wchar_t);
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
    memcpy(::GlobalLock(memory), text, bytes);
    ::GlobalUnlock(memory);
    ::OpenClipboard(dialog.m_hWnd);
    ::EmptyClipboard();
    ::SetClipboardData(CF_UNICODETEXT, memory);
    ::CloseClipboard();
  }
  std::wstring LineOf(int row) const {
    std::wstring line = Cell(row, 0);
    for (int column = 1; column < 9; ++column)
      line += L"\t" + Cell(row, column);
    return line + L"\r\n";
  }
  static std::wstring Header() {
    return L"id\tarea\tra\trb\tphi\trect2_len1\trect2_len2\trect2_phi\t"
           L"circularity\r\n";
  }
};

// List and view

TEST_F(DialogResults, SelectedRowsAreOutlinedWithOnePicture) {
  RunWithSquares(12, [&] {
    const cv::Mat plain = dialog.m_viewImage.clone();
    ASSERT_EQ(dialog.m_redraw, -1);
    SelectRow(2);
    EXPECT_EQ(g_view.highlighted, Numbers{2});
    EXPECT_EQ(dialog.m_redraw, 1);
    Tick();
    EXPECT_EQ(dialog.m_redraw, -1);
    EXPECT_EQ(PixelAt(14, 3), cv::Vec3b(255, 255, 255)) << "ring";
    SelectRow(5);
    EXPECT_EQ(g_view.highlighted, (Numbers{2, 5}));
    SelectRow(2, false);
    EXPECT_EQ(g_view.highlighted, Numbers{5});
    SelectRow(5, false);
    Tick();
    EXPECT_EQ(cv::norm(dialog.m_viewImage, plain, cv::NORM_INF), 0);
  });
}

TEST_F(DialogResults, SelectedComponentScrollsIntoSight) {
  RunWithSquares(12, [&] {
    const float offset = g_view.offsetX;
    SelectRow(1);
    EXPECT_EQ(g_view.offsetX, offset);
    g_view.offsetX = -5000;
    SelectRow(0);
    EXPECT_NEAR(g_view.ToView(3, 3).x, g_view.viewWidth / 2.0f, 1);
    EXPECT_EQ(g_view.zoom, 1);
  });
}

TEST_F(DialogResults, ClickOnAComponentSelectsItsRow) {
  RunWithSquares(100, [&] {
    const float offset = g_view.offsetX;
    ClickSquare(90);
    EXPECT_EQ(Selected(), Numbers{90});
    EXPECT_EQ(g_view.highlighted, Numbers{90});
    EXPECT_EQ(g_view.offsetX, offset);
    EXPECT_GT(ListView_GetTopIndex(List()), 0) << "the row is in sight";
    ClickSquare(3);
    EXPECT_EQ(Selected(), Numbers{3});
    ClickView(2, 2);  // the view's background
    EXPECT_EQ(Selected(), Numbers{});
    EXPECT_EQ(g_view.highlighted, Numbers{});
  });
}

TEST_F(DialogResults, DragSelectsNothingAndPans) {
  RunWithSquares(12, [&] {
    const float offset = g_view.offsetX;
    const cv::Point2f at = g_view.ToView(3, 3);
    const int x = static_cast<int>(at.x);
    const int y = static_cast<int>(at.y);
    Mouse(WM_LBUTTONDOWN, x, y, MK_LBUTTON);
    Mouse(WM_MOUSEMOVE, x + 10, y, MK_LBUTTON);
    Mouse(WM_LBUTTONUP, x + 10, y);
    EXPECT_EQ(g_view.offsetX, offset + 10);
    EXPECT_EQ(Selected(), Numbers{});
  });
}

TEST_F(DialogResults, ComponentBeyondTheRowsIsOutlinedWithoutARow) {
  RunWithSquares(150, [&] {
    ClickSquare(7);
    ClickSquare(120);
    EXPECT_EQ(Selected(), Numbers{});
    EXPECT_EQ(g_view.highlighted, Numbers{120});
  });
}

TEST_F(DialogResults, WhatIsNotShownIsNotClicked) {
  RunWithSquares(12, [&] {
    SelectRow(4);
    Click(IDC_CLEAR_DISPLAY);
    EXPECT_EQ(Selected(), Numbers{});
    EXPECT_EQ(g_view.highlighted, Numbers{});
    ClickSquare(3);
    EXPECT_EQ(Selected(), Numbers{});
    SelectRow(4);
    Click(IDC_FILL_UP);
    ClickSquare(3);
    EXPECT_EQ(Selected(), Numbers{4});
    Click(IDC_CONNECTION);
    EXPECT_EQ(g_view.highlighted, Numbers{});
    EXPECT_EQ(Selected(), Numbers{});
  });
}

// Clipboard

TEST_F(DialogResults, CopyPutsTheSelectedRowsElseAllOnTheClipboard) {
  dialog.m_language = rendal::kEnglish;
  RunWithSquares(3, [&] {
    ::SendMessageW(dialog.m_hWnd, WM_COMMAND, IDM_COPY_ROWS, 0);
    EXPECT_EQ(Clipboard(), Header() + LineOf(0) + LineOf(1) + LineOf(2));
    EXPECT_EQ(TextOf(IDC_STATUS), L"rows copied: 3");
    SelectRow(0);
    SelectRow(2);
    Press(List(), 'C', true);
    EXPECT_EQ(Clipboard(), Header() + LineOf(0) + LineOf(2));
    EXPECT_EQ(TextOf(IDC_STATUS), L"rows copied: 2");
    PutOnClipboard(L"mine");
    Press(List(), 'C');
    EXPECT_EQ(Clipboard(), L"mine") << "without Ctrl";
  });
}

TEST_F(DialogResults, EmptyListLeavesTheClipboardAlone) {
  Run([&] {
    PutOnClipboard(L"mine");
    Press(List(), 'C', true);
    EXPECT_EQ(Clipboard(), L"mine");
    EXPECT_EQ(TextOf(IDC_STATUS), L"");
  });
}

struct ClipboardHolder {
  HANDLE opened = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE enough = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE thread = ::CreateThread(nullptr, 0, Hold, this, 0, nullptr);

  static DWORD WINAPI Hold(LPVOID self) {
    const auto* holder = static_cast<ClipboardHolder*>(self);
    ::OpenClipboard(nullptr);
    ::SetEvent(holder->opened);
    ::WaitForSingleObject(holder->enough, INFINITE);
    ::CloseClipboard();
    return 0;
  }
  void Release() {
    ::SetEvent(enough);
    ::WaitForSingleObject(thread, INFINITE);
    for (const HANDLE handle : {opened, enough, thread}) ::CloseHandle(handle);
  }
};

TEST_F(DialogResults, ClipboardInUseIsToldInRed) {
  dialog.m_language = rendal::kEnglish;
  RunWithSquares(3, [&] {
    ClipboardHolder other;
    ::WaitForSingleObject(other.opened, INFINITE);
    ::SendMessageW(dialog.m_hWnd, WM_COMMAND, IDM_COPY_ROWS, 0);
    other.Release();
    EXPECT_EQ(TextOf(IDC_STATUS), L"clipboard in use by another program");
    EXPECT_EQ(ColorsOf(IDC_STATUS).text, RGB(255, 0, 0));
  });
}

TEST_F(DialogResults, ControlCInAnEditCopiesItsText) {
  RunWithSquares(3, [&] {
    PutOnClipboard(L"mine");
    ::SetWindowTextW(Control(IDC_LENGTH), L"12.5");
    ::SetFocus(Control(IDC_LENGTH));
    ::SendMessageW(Control(IDC_LENGTH), EM_SETSEL, 0, -1);
    Press(Control(IDC_LENGTH), 'C', true);
    EXPECT_EQ(Clipboard(), L"12.5");
  });
}

TEST_F(DialogResults, ContextMenuCopies) {
  dialog.m_language = rendal::kEnglish;
  RunWithSquares(3, [&] {
    // The menu takes what is posted: down to its first item, then that.
    ::PostMessageW(List(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(List()),
                   MAKELPARAM(-1, -1));
    ::PostMessageW(dialog.m_hWnd, WM_KEYDOWN, VK_DOWN, 1);
    ::PostMessageW(dialog.m_hWnd, WM_KEYDOWN, VK_RETURN, 1);
    EXPECT_TRUE(
        PumpUntil([&] { return TextOf(IDC_STATUS) == L"rows copied: 3"; }));
    EXPECT_EQ(Clipboard(), Header() + LineOf(0) + LineOf(1) + LineOf(2));
  });
}

// Files

std::string TextOfFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(DialogResults, ExportWritesAllComponentsNotOnlyTheRows) {
  dialog.m_language = rendal::kEnglish;
  RunWithSquares(150, [&] {
    ASSERT_EQ(Rows(), 100);
    for (const wchar_t* name : {L"\u8868.csv", L"table.JSON"}) {
      const auto path = dialog.m_startImage.parent_path() / name;
      WithModal(
          [&] { ::SendMessageW(dialog.m_hWnd, WM_COMMAND, IDM_EXPORT, 0); },
          [&](HWND box) { AnswerFileDialog(box, path); });
      EXPECT_EQ(TextOf(IDC_STATUS), L"components exported: 150");
      const bool isJson = path.extension() == L".JSON";
      EXPECT_EQ(TextOfFile(path),
                isJson ? rendal::ComponentJson(dialog.m_components)
                       : rendal::ComponentCsv(dialog.m_components));
    }
  });
}

// The file dialog has asked about "a" only.
TEST_F(DialogResults, FileWhoseExtensionIsAddedIsReplacedIfTheOperatorSaysSo) {
  dialog.m_language = rendal::kEnglish;
  RunWithSquares(3, [&] {
    const auto folder = dialog.m_startImage.parent_path();
    const auto file = folder / "a.csv";
    for (const int answer : {IDNO, IDYES}) {
      std::ofstream(file) << "mine";
      std::wstring question;
      AnswerMessageBox(answer, &question);
      WithModal(
          [&] { ::SendMessageW(dialog.m_hWnd, WM_COMMAND, IDM_EXPORT, 0); },
          [&](HWND box) { AnswerFileDialog(box, folder / "a"); });
      EXPECT_EQ(question, L"a.csv\nThe file exists. Replace it?");
      EXPECT_EQ(
          TextOfFile(file),
          answer == IDYES ? rendal::ComponentCsv(dialog.m_components) : "mine");
    }
  });
}

TEST_F(DialogResults, ExportBeforeTheFirstLabellingIsToldInRed) {
  dialog.m_language = rendal::kEnglish;
  Run([&] {
    ::SendMessageW(dialog.m_hWnd, WM_COMMAND, IDM_EXPORT, 0);
    EXPECT_EQ(TextOf(IDC_STATUS), L"no components yet");
    ::SendMessageW(dialog.m_hWnd, WM_SYSCOMMAND, IDM_SAVE_PICTURE, 0);
    EXPECT_EQ(TextOf(IDC_STATUS), L"no image yet");
  });
}

TEST_F(DialogResults, PictureIsSavedAsShown) {
  dialog.m_language = rendal::kEnglish;
  RunWithSquares(12, [&] {
    SelectRow(2);  // not drawn yet
    const auto folder = dialog.m_startImage.parent_path();
    const auto save = [&](const std::filesystem::path& path) {
      WithModal([&] { Press(dialog.m_hWnd, 'S', true); },
                [&](HWND box) { AnswerFileDialog(box, path); });
    };
    save(folder / L"\u56fe 1.png");
    EXPECT_EQ(TextOf(IDC_STATUS), L"picture saved");
    const std::string bytes = TextOfFile(folder / L"\u56fe 1.png");
    const cv::Mat saved = cv::imdecode(
        std::vector<char>(bytes.begin(), bytes.end()), cv::IMREAD_COLOR);
    ASSERT_EQ(saved.size(), dialog.m_viewImage.size());
    EXPECT_EQ(cv::norm(saved, dialog.m_viewImage, cv::NORM_INF), 0);
    EXPECT_EQ(PixelAt(14, 3), cv::Vec3b(255, 255, 255)) << "outlined";
    save(folder / "a.bmp");
    EXPECT_EQ(TextOfFile(folder / "a.bmp").substr(0, 2), "BM");
    save(folder / "plain");
    EXPECT_EQ(TextOfFile(folder / "plain.png").substr(1, 3), "PNG");
  });
}

}  // namespace
