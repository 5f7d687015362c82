// SPDX-License-Identifier: MIT
//
// The dialog in both languages: all that is on screen changes at once and
// fits, and nothing else changes.
#include <map>
#include <set>

#include "app/text.h"
#include "app/ui_text.h"
#include "app/view/view_globals.h"
#include "tests/windows/gui_objects.h"
#include "tests/windows/main_dialog.h"

namespace {

using Strings = std::vector<std::wstring>;
using rendal::kChinese;
using rendal::kEnglish;

// What reads the same in both languages: names of operations, parameters and
// library values, and what carries no caption.
const std::set<std::wstring> kSameInBoth = {
    L"",           L"1:1",        L"Fit",          L"Do",
    L"CLS",        L"Blob",       L"sigma",        L"reps",
    L"MinGray",    L"MaxGray",    L"\u2193\u2191", L"threshold",
    L"connection", L"fill_up",    L"skeleton",     L"boundary",
    L"R",          L"dilation",   L"erosion",      L"opening",
    L"closing",    L"top_hat",    L"bottom_hat",   L"hit_or_miss",
    L"union",      L"difference", L"intersection", L"save features"};

bool IsWestern(const std::wstring& text) {
  return std::all_of(text.begin(), text.end(),
                     [](wchar_t c) { return c < 0x80; });
}

class DialogLanguage : public MainDialogTest {
 protected:
  void Switch() {
    ::SendMessageW(dialog.m_hWnd, WM_SYSCOMMAND, IDM_LANGUAGE, 0);
  }
  void RunIn(int32_t language, const Script& script) {
    dialog.m_language = language;
    Run(script);
  }

  std::vector<HWND> Children() const {
    std::vector<HWND> children;
    for (HWND child = ::GetWindow(dialog.m_hWnd, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
      children.push_back(child);
    }
    return children;
  }
  static std::wstring KindOf(HWND window) {
    wchar_t name[32] = L"";
    ::GetClassNameW(window, name, 32);
    return name;
  }
  std::wstring Command(UINT id) const {
    wchar_t text[64] = L"";
    ::GetMenuStringW(::GetSystemMenu(dialog.m_hWnd, FALSE), id, text, 64,
                     MF_BYCOMMAND);
    return text;
  }
  // The system menu's item that opens another menu.
  std::wstring RecentFilesTitle() const {
    const HMENU menu = ::GetSystemMenu(dialog.m_hWnd, FALSE);
    for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
      if (::GetSubMenu(menu, i) == nullptr) continue;
      wchar_t text[64] = L"";
      ::GetMenuStringW(menu, static_cast<UINT>(i), text, 64, MF_BYPOSITION);
      return text;
    }
    return L"";
  }
  Strings ColumnTitles() const {
    Strings titles;
    for (size_t i = 0; i < rendal::kFeatureColumns.size(); ++i) {
      wchar_t text[64] = L"";
      LVCOLUMNW column = {};
      column.mask = LVCF_TEXT;
      column.pszText = text;
      column.cchTextMax = 64;
      ::SendMessageW(Control(IDC_REGION_LIST), LVM_GETCOLUMNW, i,
                     reinterpret_cast<LPARAM>(&column));
      titles.push_back(text);
    }
    return titles;
  }

  // Everything that can be read: titles, menu, the controls in their order and
  // the entries of the combo boxes.
  Strings Wording() const {
    Strings all = {TextOf(dialog.m_hWnd), Command(IDM_ABOUTBOX),
                   Command(IDM_LANGUAGE), RecentFilesTitle(),
                   Command(IDM_SAVE_PICTURE), Command(IDM_RECORD_RECIPE),
                   Command(IDM_SAVE_RECIPE), Command(IDM_RUN_RECIPE)};
    for (const HWND child : Children()) {
      all.push_back(TextOf(child));
      if (KindOf(child) != L"ComboBox") continue;
      const Strings items = ItemsOf(::GetDlgCtrlID(child));
      all.insert(all.end(), items.begin(), items.end());
    }
    const Strings titles = ColumnTitles();
    all.insert(all.end(), titles.begin(), titles.end());
    return all;
  }
  Strings WordingFromTheStart(int32_t language) {
    Strings wording;
    RunIn(language, [&] { wording = Wording(); });
    return wording;
  }
};

// Changing

TEST_F(DialogLanguage, ChangesEveryTextAndBack) {
  const Strings chinese = WordingFromTheStart(kChinese);
  const Strings english = WordingFromTheStart(kEnglish);
  ASSERT_EQ(chinese.size(), english.size());
  EXPECT_NE(chinese, english);
  RunIn(kChinese, [&] {
    Switch();
    EXPECT_EQ(dialog.m_language, kEnglish);
    EXPECT_EQ(Wording(), english);
    Switch();
    EXPECT_EQ(dialog.m_language, kChinese);
    EXPECT_EQ(Wording(), chinese);
  });
  RunIn(kEnglish, [&] {
    Switch();
    EXPECT_EQ(Wording(), chinese);
    Switch();
    EXPECT_EQ(Wording(), english);
  });
}

TEST_F(DialogLanguage, EveryCaptionDiffersOrIsTheSameOnPurpose) {
  RunIn(kChinese, [&] {
    Select(IDC_ELEMENT, 1);
    std::map<HWND, std::wstring> chinese;
    for (const HWND child : Children()) chinese[child] = TextOf(child);
    Switch();
    for (const auto& [child, text] : chinese) {
      const std::wstring kind = KindOf(child);
      if (kind != L"Static" && kind != L"Button") continue;
      const int id = ::GetDlgCtrlID(child);
      EXPECT_TRUE(IsWestern(TextOf(child)) || id == IDC_TOGGLE_GRAY) << id;
      if (kSameInBoth.count(text)) {
        EXPECT_EQ(TextOf(child), text) << id;
      } else {
        EXPECT_FALSE(IsWestern(text)) << id;
        EXPECT_NE(TextOf(child), L"") << id;
      }
    }
    EXPECT_EQ(ItemsOf(IDC_DIRECTION), (Strings{L"positive", L"negative"}));
    EXPECT_EQ(ItemsOf(IDC_ELEMENT),
              (Strings{L"circle", L"rectangle", L"cross"}));
    EXPECT_TRUE(IsWestern(TextOf(dialog.m_hWnd)));
    EXPECT_TRUE(IsWestern(Command(IDM_ABOUTBOX)));
  });
}

TEST_F(DialogLanguage, LabelOfTheElementsSizeFollowsTheElement) {
  RunIn(kChinese, [&] {
    Switch();
    EXPECT_EQ(TextOf(IDC_ELEMENT_WIDTH_LABEL), L"R");
    EXPECT_FALSE(::IsWindowEnabled(Control(IDC_ELEMENT_HEIGHT)));
    Select(IDC_ELEMENT, 2);
    EXPECT_EQ(TextOf(IDC_ELEMENT_WIDTH_LABEL), L"Width");
    Switch();
    EXPECT_EQ(TextOf(IDC_ELEMENT_WIDTH_LABEL), L"宽");
    EXPECT_TRUE(::IsWindowEnabled(Control(IDC_ELEMENT_HEIGHT)));
  });
}

TEST_F(DialogLanguage, SystemMenuNamesTheOtherLanguage) {
  RunIn(kChinese, [&] {
    EXPECT_EQ(Command(IDM_LANGUAGE), L"English(&E)");
    Switch();
    EXPECT_EQ(Command(IDM_LANGUAGE), L"中文(&C)");
    EXPECT_EQ(Command(IDM_ABOUTBOX), L"&About Rendal...");
  });
}

TEST_F(DialogLanguage, MessageOnScreenIsToldAgain) {
  dialog.m_language = kChinese;
  RunWithImage(cv::Mat(80, 100, CV_8UC1, cv::Scalar(50)), [&] {
    const Colors colors = ColorsOf(IDC_STATUS);
    Switch();
    EXPECT_EQ(TextOf(IDC_STATUS), L"open image,width = 100, height = 80");
    EXPECT_EQ(ColorsOf(IDC_STATUS), colors);
    Switch();
    EXPECT_EQ(TextOf(IDC_STATUS), L"打开图片,width = 100, height = 80");
    Click(IDC_CLEAR_DISPLAY);
    Switch();
    EXPECT_EQ(TextOf(IDC_STATUS), L"");
  });
}

TEST_F(DialogLanguage, AboutBoxSpeaksTheLanguageThatIsOn) {
  std::wstring title;
  RunIn(kChinese, [&] {
    Switch();
    WithModal([&] { ::SendMessageW(dialog.m_hWnd, WM_SYSCOMMAND, 16, 0); },
              [&](HWND about) {
                title = TextOf(about);
                ::PostMessageW(about, WM_COMMAND, IDOK, 0);
              });
  });
  EXPECT_EQ(title, L"About Rendal");
}

TEST_F(DialogLanguage, FileDialogIsTitledInTheLanguageThatIsOn) {
  Strings titles;
  const auto note = [&](HWND box) {
    titles.push_back(TextOf(box));
    ::PostMessageW(box, WM_COMMAND, IDCANCEL, 0);
  };
  RunIn(kChinese, [&] {
    WithModal([&] { Click(IDC_LOAD_IMAGE); }, note);
    Switch();
    WithModal([&] { Click(IDC_LOAD_IMAGE); }, note);
  });
  EXPECT_EQ(titles, (Strings{L"打开图像", L"Open image"}));
}

// The pop-up paints its text itself.
std::vector<COLORREF> PixelsOf(HWND window) {
  CRect area;
  ::GetClientRect(window, &area);
  ::UpdateWindow(window);
  const HDC dc = ::GetDC(window);
  std::vector<COLORREF> pixels;
  for (int y = 0; y < area.Height(); y += 2) {
    for (int x = 0; x < area.Width(); x += 2) {
      pixels.push_back(::GetPixel(dc, x, y));
    }
  }
  ::ReleaseDC(window, dc);
  return pixels;
}

TEST_F(DialogLanguage, WelcomeWindowOnScreenIsToldAgain) {
  RunIn(kChinese, [&] {
    const HWND popUp = WelcomeWindow();
    ASSERT_NE(popUp, nullptr);
    const auto chinese = PixelsOf(popUp);
    Switch();
    EXPECT_NE(PixelsOf(popUp), chinese);
    Switch();
    EXPECT_EQ(PixelsOf(popUp), chinese);
    ::SendMessageW(popUp, WM_RBUTTONDOWN, MK_RBUTTON, 0);
    Switch();  // after it is gone
  });
}

// What stays

TEST_F(DialogLanguage, SelectionsValuesAndStateStay) {
  dialog.m_language = kChinese;
  RunWithImage(Squares({200, 120}, 12, 10, 200), [&] {
    Select(IDC_DIRECTION, 1);
    Select(IDC_SELECTION, 4);
    Select(IDC_ELEMENT, 2);
    Select(IDC_BOUNDARY_TYPE, 2);
    Select(IDC_FIND_LINE_DISPLAY, 1);
    ::SetWindowTextW(Control(IDC_LENGTH), L"12.5");
    SetSpin(IDC_ELEMENT_WIDTH_SPIN, 7);
    Click(IDC_MODE_ELLIPSE);
    Click(IDC_THRESHOLD);
    Click(IDC_CONNECTION);
    Click(IDC_MEASURE);
    Click(IDC_THRESHOLD);
    Tick();
    std::map<HWND, std::wstring> edits;
    for (const HWND child : Children()) {
      if (KindOf(child) == L"Edit") edits[child] = TextOf(child);
    }
    const cv::Mat picture = dialog.m_viewImage.clone();
    const HWND focus = ::GetFocus();
    for (int i = 0; i < 3; ++i) {
      Switch();
      EXPECT_EQ(SelectionOf(IDC_DIRECTION), 1);
      EXPECT_EQ(SelectionOf(IDC_SELECTION), 4);
      EXPECT_EQ(SelectionOf(IDC_ELEMENT), 2);
      EXPECT_EQ(SelectionOf(IDC_BOUNDARY_TYPE), 2);
      EXPECT_EQ(SelectionOf(IDC_FIND_LINE_DISPLAY), 1);
      EXPECT_EQ(SpinOf(IDC_ELEMENT_WIDTH_SPIN), 7);
      for (const auto& [edit, text] : edits) EXPECT_EQ(TextOf(edit), text);
      EXPECT_EQ(::IsDlgButtonChecked(dialog.m_hWnd, IDC_MODE_ELLIPSE),
                static_cast<UINT>(BST_CHECKED));
      EXPECT_EQ(TextOf(IDC_STATUS), L"threshold done");
      EXPECT_EQ(Rows(), 12);
      EXPECT_EQ(Cell(11, 0), L"12");
      EXPECT_EQ(::GetFocus(), focus);
      EXPECT_EQ(dialog.m_toolMode, rendal::kToolEllipse);
      EXPECT_EQ(dialog.m_redraw, -1);
      EXPECT_EQ(dialog.m_hideResults, 0);
      EXPECT_EQ(dialog.m_regionHistory.size(), 2u);
      EXPECT_EQ(dialog.m_regionOverlay.size(), 1u);
      EXPECT_EQ(dialog.m_results.size(), 1u);
      EXPECT_EQ(cv::norm(dialog.m_viewImage, picture, cv::NORM_INF), 0);
    }
  });
}

TEST_F(DialogLanguage, ChangingOftenLeavesNoGraphicsObjects) {
  RunIn(kChinese, [&] {
    for (int i = 0; i < 4; ++i) Switch();
    const size_t before = LiveGdiObjects();
    for (int i = 0; i < 20; ++i) Switch();
    EXPECT_LE(LiveGdiObjects(), before);
  });
}

// Reading: every text fits its place

// Width that a control of this kind has for its text, by what the system
// draws beside it.
int RoomForText(HWND control, const std::wstring& kind) {
  constexpr int kButtonEdgePx = 3;
  constexpr int kCheckBoxPx = 13 + 4;
  constexpr int kGroupIndentPx = 9;
  CRect area;
  ::GetClientRect(control, &area);
  if (kind == L"ComboBox") {
    return area.Width() - ::GetSystemMetrics(SM_CXVSCROLL) - 2 * kButtonEdgePx;
  }
  if (kind != L"Button") return area.Width();
  switch (::GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) {
    case BS_GROUPBOX:
      return area.Width() - 2 * kGroupIndentPx;
    case BS_AUTORADIOBUTTON:
    case BS_AUTOCHECKBOX:
      return area.Width() - kCheckBoxPx;
    default:
      return area.Width() - 2 * kButtonEdgePx;
  }
}

// Size of a text in the control's own font.
CSize ExtentOf(HWND control, const std::wstring& text) {
  const HDC dc = ::GetDC(control);
  const auto font =
      reinterpret_cast<HFONT>(::SendMessageW(control, WM_GETFONT, 0, 0));
  const HGDIOBJ old = ::SelectObject(dc, font);
  SIZE extent = {};
  ::GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()),
                          &extent);
  ::SelectObject(dc, old);
  ::ReleaseDC(control, dc);
  return extent;
}

class LanguageFits : public DialogLanguage,
                     public testing::WithParamInterface<int32_t> {
 protected:
  void ExpectFits(HWND control, const std::wstring& text) {
    const std::wstring kind = KindOf(control);
    CRect area;
    ::GetClientRect(control, &area);
    const CSize extent = ExtentOf(control, text);
    const std::string what = std::to_string(::GetDlgCtrlID(control)) + " " +
                             std::string(CStringA(text.c_str()).GetString());
    EXPECT_LE(extent.cx, RoomForText(control, kind)) << what;
    EXPECT_LE(extent.cy, area.Height()) << what;
  }
};
INSTANTIATE_TEST_SUITE_P(BothLanguages, LanguageFits,
                         testing::Values(kChinese, kEnglish));

TEST_P(LanguageFits, EveryCaptionAndEntryFitsItsControl) {
  RunIn(GetParam(), [&] {
    size_t captions = 0;
    for (const int element : {0, 1}) {
      Select(IDC_ELEMENT, element);
      for (const HWND child : Children()) {
        const std::wstring kind = KindOf(child);
        if (kind == L"Static" || kind == L"Button") {
          ExpectFits(child, TextOf(child));
          captions += !TextOf(child).empty();
        } else if (kind == L"ComboBox") {
          for (const std::wstring& item : ItemsOf(::GetDlgCtrlID(child))) {
            ExpectFits(child, item);
          }
        }
      }
    }
    EXPECT_GT(captions, 80u);
  });
}

TEST_P(LanguageFits, ColumnTitlesFitTheirColumns) {
  RunIn(GetParam(), [&] {
    const HWND list = Control(IDC_REGION_LIST);
    const HWND header = ListView_GetHeader(list);
    const int margin = static_cast<int>(Header_GetBitmapMargin(header));
    ASSERT_GT(margin, 0);
    const Strings titles = ColumnTitles();
    for (size_t i = 0; i < titles.size(); ++i) {
      EXPECT_LE(ExtentOf(header, titles[i]).cx + 2 * margin,
                ListView_GetColumnWidth(list, i))
          << i;
    }
  });
}

TEST_P(LanguageFits, LongestMessagesFitTheStatusLabel) {
  RunIn(GetParam(), [&] {
    const int32_t language = GetParam();
    using namespace rendal::messages;
    for (const rendal::Status& status :
         {ImageOpened(language, 99999, 99999),
          ChannelsNotSupported(language, 2), BandReversed(language, 255, 254),
          NoBinarization(language, 0), TooFewRegions(language, 1),
          ConnectionDone(language, 9999999), Done(language, "intersection")}) {
      ExpectFits(Control(IDC_STATUS),
                 rendal::FromUtf8(status.text).GetString());
    }
    ExpectFits(Control(IDC_READOUT), L"99999, 99999, 255");
  });
}

}  // namespace
