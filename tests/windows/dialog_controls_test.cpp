// SPDX-License-Identifier: MIT
//
// What the dialog shows before anything was done.
#include <map>

#include "app/view/view_globals.h"
#include "tests/windows/gui_objects.h"
#include "tests/windows/main_dialog.h"

namespace {

using Strings = std::vector<std::wstring>;

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kBlue = RGB(0, 0, 255);

class DialogControls : public MainDialogTest {
 protected:
  std::wstring ClassOf(int id) const {
    wchar_t name[64] = L"";
    ::GetClassNameW(Control(id), name, 64);
    return name;
  }
  LONG StyleOf(int id) const {
    return ::GetWindowLongW(Control(id), GWL_STYLE);
  }
  CRect PlaceOf(int id) const {
    CRect place;
    ::GetWindowRect(Control(id), &place);
    ::MapWindowPoints(nullptr, dialog.m_hWnd, reinterpret_cast<POINT*>(&place),
                      2);
    return place;
  }
  std::pair<int, int> RangeOf(int spin) const {
    int low = -1, high = -1;
    ::SendMessageW(Control(spin), UDM_GETRANGE32,
                   reinterpret_cast<WPARAM>(&low),
                   reinterpret_cast<LPARAM>(&high));
    return {low, high};
  }
  int PositionOf(int spin) const {
    return static_cast<int>(::SendMessageW(Control(spin), UDM_GETPOS32, 0, 0));
  }
};

TEST_F(DialogControls, CaptionsAreTheDocumentedOnes) {
  const std::map<int, std::wstring> captions = {
      {1001, L"加载图像"},
      {1018, L"1:1"},
      {1019, L"Fit"},
      {1022, L"Do"},
      {1020, L""},
      {1045, L""},
      {1046, L""},
      {1007, L"长度"},
      {1008, L"宽度"},
      {1027, L"幅值"},
      {1030, L"sigma"},
      {1035, L"reps"},
      {1012, L"数量"},
      {1013, L"方向"},
      {1024, L"选择"},
      {1037, L"无"},
      {1015, L"直线"},
      {1016, L"圆"},
      {1036, L"直线+ROI宽"},
      {1072, L"椭圆"},
      {1017, L"测量"},
      {1032, L"清除显示"},
      {1031, L"CLS"},
      {1049, L"↓↑"},
      {1042, L"threshold"},
      {1043, L"connection"},
      {1047, L"fill_up"},
      {1071, L"skeleton"},
      {1069, L"boundary"},
      {1063, L"R"},
      {1064, L"高"},
      {1055, L"dilation"},
      {1056, L"erosion"},
      {1057, L"opening"},
      {1065, L"closing"},
      {1066, L"top_hat"},
      {1067, L"bottom_hat"},
      {1068, L"hit_or_miss"},
      {1052, L"union"},
      {1053, L"difference"},
      {1054, L"intersection"},
      {1044, L"save features"},
      {1048, L""},
      {1002, L""},
      {1021, L""},
  };
  Run([&] {
    for (const auto& [id, caption] : captions) {
      EXPECT_NE(Control(id), nullptr) << id;
      EXPECT_EQ(TextOf(id), caption) << id;
    }
  });
}

TEST_F(DialogControls, KindsAreTheDocumentedOnes) {
  const std::map<std::wstring, std::vector<int>> kinds = {
      {L"Static",
       {1000, 1002, 1021, 1007, 1008, 1012, 1013, 1024, 1027, 1030, 1035, 1063,
        1064}},
      {L"Edit", {1003, 1004, 1009, 1010, 1028, 1033, 1038, 1040, 1059, 1061}},
      {L"msctls_updown32",
       {1005, 1006, 1011, 1026, 1029, 1034, 1039, 1041, 1060, 1062}},
      {L"ComboBox", {1014, 1025, 1058, 1070, 1073}},
      {L"SysListView32", {1051}},
  };
  Run([&] {
    for (const auto& [kind, ids] : kinds) {
      for (const int id : ids) EXPECT_EQ(ClassOf(id), kind) << id;
    }
    for (const int id : {1037, 1015, 1016, 1036, 1072}) {
      EXPECT_EQ(StyleOf(id) & BS_TYPEMASK, BS_AUTORADIOBUTTON) << id;
    }
    EXPECT_TRUE(StyleOf(1037) & WS_GROUP);
    EXPECT_EQ(StyleOf(1044) & BS_TYPEMASK, BS_AUTOCHECKBOX);
    for (const int id : {1014, 1025, 1058, 1070, 1073}) {
      EXPECT_EQ(StyleOf(id) & 3, CBS_DROPDOWNLIST) << id;
    }
  });
}

TEST_F(DialogControls, OnlySkeletonAndTheCirclesHeightAreDisabled) {
  Run([&] {
    Strings disabled;
    for (HWND child = ::GetWindow(dialog.m_hWnd, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
      if (!::IsWindowEnabled(child)) {
        disabled.push_back(std::to_wstring(::GetDlgCtrlID(child)));
      }
    }
    // The height's spin is disabled with its edit by the system.
    std::erase(disabled, L"1062");
    EXPECT_EQ(disabled, (Strings{L"1071", L"1064", L"1061"}));
  });
}

TEST_F(DialogControls, OnlySaveFeaturesAndTheSpareButtonAreHidden) {
  Run([&] {
    Strings hidden;
    for (HWND child = ::GetWindow(dialog.m_hWnd, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
      if (!::IsWindowVisible(child)) {
        hidden.push_back(std::to_wstring(::GetDlgCtrlID(child)));
      }
    }
    EXPECT_EQ(hidden, (Strings{L"1044", L"1048"}));
  });
}

TEST_F(DialogControls, EverySpinFollowsItsBuddyInTabOrder) {
  const std::map<int, int> editOfSpin = {
      {1005, 1003}, {1006, 1004}, {1026, 1010}, {1029, 1028}, {1034, 1033},
      {1011, 1009}, {1039, 1038}, {1041, 1040}, {1060, 1059}, {1062, 1061}};
  Run([&] {
    for (const auto& [spin, edit] : editOfSpin) {
      EXPECT_EQ(::GetWindow(Control(spin), GW_HWNDPREV), Control(edit)) << spin;
      EXPECT_EQ(reinterpret_cast<HWND>(
                    ::SendMessageW(Control(spin), UDM_GETBUDDY, 0, 0)),
                Control(edit))
          << spin;
      EXPECT_TRUE(StyleOf(spin) & UDS_ALIGNRIGHT) << spin;
    }
  });
}

TEST_F(DialogControls, TabOrderFollowsTheLayout) {
  const std::vector<int> expected = {
      1001, 1018, 1019, 1022, 1073, 1020, 1045, 1046, 1003, 1004, 1010,
      1028, 1033, 1009, 1014, 1025, 1037, 1017, 1032, 1031, 1038, 1040,
      1049, 1042, 1043, 1047, 1069, 1070, 1058, 1059, 1055, 1056, 1057,
      1065, 1066, 1067, 1068, 1052, 1053, 1054, 1051};
  Run([&] {
    std::vector<int> order;
    const HWND first = ::GetNextDlgTabItem(dialog.m_hWnd, nullptr, FALSE);
    HWND control = first;
    do {
      order.push_back(::GetDlgCtrlID(control));
      control = ::GetNextDlgTabItem(dialog.m_hWnd, control, FALSE);
    } while (control != first && order.size() < 100);
    EXPECT_EQ(order, expected);
  });
}

TEST_F(DialogControls, NumericSpinsHaveTheirDefaultsAndSteps) {
  struct Case {
    int edit, spin;
    std::wstring value, afterUp;
    int positions;
  };
  const std::vector<Case> cases = {
      {1003, 1005, L"40", L"41", 1000}, {1004, 1006, L"20", L"21", 1000},
      {1010, 1026, L"20", L"21", 255},  {1028, 1029, L"1", L"1.1", 95},
      {1033, 1034, L"2", L"2.5", 50},
  };
  Run([&] {
    for (const Case& c : cases) {
      EXPECT_EQ(TextOf(c.edit), c.value) << c.edit;
      EXPECT_EQ(RangeOf(c.spin), std::pair(0, c.positions)) << c.spin;
      PressArrow(c.spin, true);
      EXPECT_EQ(TextOf(c.edit), c.afterUp) << c.edit;
    }
  });
}

TEST_F(DialogControls, NumericSpinsStopAtBothEnds) {
  struct Case {
    int edit, spin;
    std::wstring min, max;
  };
  const std::vector<Case> cases = {{1003, 1005, L"0", L"1000"},
                                   {1004, 1006, L"0", L"1000"},
                                   {1010, 1026, L"0", L"255"},
                                   {1028, 1029, L"0.4", L"10"},
                                   {1033, 1034, L"0", L"25"}};
  Run([&] {
    for (const Case& c : cases) {
      ::SetWindowTextW(Control(c.edit), c.min.c_str());
      PressArrow(c.spin, false);
      EXPECT_EQ(TextOf(c.edit), c.min) << c.edit;
      ::SetWindowTextW(Control(c.edit), c.max.c_str());
      PressArrow(c.spin, true);
      EXPECT_EQ(TextOf(c.edit), c.max) << c.edit;
    }
  });
}

TEST_F(DialogControls, PlainSpinsHaveTheirRangesAndPositions) {
  struct Case {
    int edit, spin, min, max, position;
  };
  const std::vector<Case> cases = {{1009, 1011, 0, 1000, 0},
                                   {1038, 1039, 0, 255, 128},
                                   {1040, 1041, 0, 255, 255},
                                   {1059, 1060, 1, 100, 3},
                                   {1061, 1062, 1, 100, 3}};
  Run([&] {
    for (const Case& c : cases) {
      EXPECT_EQ(RangeOf(c.spin), std::pair(c.min, c.max)) << c.spin;
      EXPECT_EQ(PositionOf(c.spin), c.position) << c.spin;
      EXPECT_EQ(TextOf(c.edit), std::to_wstring(c.position)) << c.edit;
    }
    // No thousands separator in what the tools will read.
    ::SendMessageW(Control(1011), UDM_SETPOS32, 0, 1000);
    EXPECT_EQ(TextOf(1009), L"1000");
  });
}

TEST_F(DialogControls, CombosAreFilledAndSelected) {
  Run([&] {
    EXPECT_EQ(ItemsOf(1014), (Strings{L"正", L"负"}));
    EXPECT_EQ(ItemsOf(1025), (Strings{L"first+", L"first-", L"first", L"last+",
                                      L"last-", L"last", L"strongest"}));
    EXPECT_EQ(ItemsOf(1058), (Strings{L"圆形", L"矩形", L"十字"}));
    EXPECT_EQ(ItemsOf(1070), (Strings{L"inner", L"inner_filled", L"outer"}));
    EXPECT_EQ(ItemsOf(1073), (Strings{L"1", L"2", L"3"}));
    for (const int id : {1014, 1025, 1058, 1070}) {
      EXPECT_EQ(SelectionOf(id), 0) << id;
    }
    EXPECT_EQ(SelectionOf(1073), 2);
  });
}

TEST_F(DialogControls, ToolModeIsNone) {
  Run([&] {
    EXPECT_EQ(dialog.m_toolMode, 99);
    for (const int id : {1037, 1015, 1016, 1036, 1072}) {
      EXPECT_EQ(::IsDlgButtonChecked(dialog.m_hWnd, id),
                id == 1037 ? BST_CHECKED : BST_UNCHECKED)
          << id;
    }
  });
}

TEST_F(DialogControls, RegionListHasNineCentredColumns) {
  const std::vector<std::pair<std::wstring, int>> columns = {
      {L"id", 40},          {L"area", 80},       {L"ra", 100},
      {L"rb", 100},         {L"phi", 100},       {L"rect2_len1", 100},
      {L"rect2_len2", 100}, {L"rect2_phi", 100}, {L"circularity", 80}};
  Run([&] {
    const HWND list = Control(1051);
    EXPECT_EQ(Header_GetItemCount(ListView_GetHeader(list)), 9);
    for (int i = 0; i < 9; ++i) {
      wchar_t title[32] = L"";
      LVCOLUMNW column = {};
      column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
      column.pszText = title;
      column.cchTextMax = 32;
      ::SendMessageW(list, LVM_GETCOLUMNW, static_cast<WPARAM>(i),
                     reinterpret_cast<LPARAM>(&column));
      EXPECT_EQ(title, columns[static_cast<size_t>(i)].first);
      EXPECT_EQ(column.cx, columns[static_cast<size_t>(i)].second) << i;
      EXPECT_EQ(column.fmt & LVCFMT_JUSTIFYMASK, LVCFMT_CENTER) << i;
    }
    const DWORD extended = ListView_GetExtendedListViewStyle(list);
    EXPECT_TRUE(extended & LVS_EX_GRIDLINES);
    EXPECT_TRUE(extended & LVS_EX_FULLROWSELECT);
    EXPECT_EQ(ListView_GetItemCount(list), 0);
  });
}

TEST_F(DialogControls, RegionListHasItsScrollBarFromTheStart) {
  Run([&] {
    SCROLLINFO bar = {};
    bar.cbSize = sizeof bar;
    bar.fMask = SIF_RANGE | SIF_PAGE;
    ASSERT_TRUE(::GetScrollInfo(Control(1051), SB_HORZ, &bar));
    EXPECT_EQ(bar.nMin, 0);
    EXPECT_EQ(bar.nMax, 40 + 80 + 6 * 100 + 80 - 1);
    EXPECT_EQ(bar.nPage, static_cast<UINT>(PlaceOf(1051).Width() - 4));
    EXPECT_TRUE(StyleOf(1051) & WS_HSCROLL);
  });
}

TEST_F(DialogControls, ViewIsTheHostsSizeAtTheTopLeft) {
  Run([&] {
    const CRect place = PlaceOf(1000);
    EXPECT_EQ(place.left, 0);
    EXPECT_EQ(place.top, 0);
    EXPECT_EQ(dialog.m_viewSize, cv::Size(place.Width(), place.Height()));
    EXPECT_EQ(rendal::g_viewWidth, place.Width());
    EXPECT_EQ(rendal::g_viewHeight, place.Height());
    CRect expected(0, 0, 456, 344);
    ::MapDialogRect(dialog.m_hWnd, &expected);
    EXPECT_EQ(place, expected);
  });
}

TEST_F(DialogControls, ImageWindowFillsTheHostAndItsFrameIsHidden) {
  Run([&] {
    const HWND image = ::GetWindow(Control(1000), GW_CHILD);
    ASSERT_NE(image, nullptr);
    CRect client;
    ::GetClientRect(image, &client);
    EXPECT_EQ(client.Size(),
              CSize(dialog.m_viewSize.width, dialog.m_viewSize.height));
    CRect imagePlace, hostPlace;
    ::GetWindowRect(image, &imagePlace);
    ::GetWindowRect(Control(1000), &hostPlace);
    EXPECT_EQ(imagePlace.TopLeft(), hostPlace.TopLeft());
    const HWND frame = ::FindWindowW(nullptr, L"ImageShow");
    ASSERT_NE(frame, nullptr);
    EXPECT_FALSE(::IsWindowVisible(frame));
    EXPECT_EQ(dialog.m_viewImage.type(), CV_8UC3);
    EXPECT_EQ(dialog.m_viewImage.size(), dialog.m_viewSize);
    EXPECT_EQ(cv::countNonZero(dialog.m_viewImage.reshape(1)), 0);
  });
}

TEST_F(DialogControls, ReadOutStartsEmptyWhiteOnBlue) {
  Run([&] {
    EXPECT_EQ(ColorsOf(1021), (Colors{kWhite, kBlue}));
    EXPECT_EQ(TextOf(1021), L"");
  });
}

TEST_F(DialogControls, StatusLabelsUseBold22) {
  Run([&] {
    for (const int id : {1002, 1021}) {
      const HDC dc = ::GetDC(Control(id));
      ::SendMessageW(dialog.m_hWnd, WM_CTLCOLORSTATIC,
                     reinterpret_cast<WPARAM>(dc),
                     reinterpret_cast<LPARAM>(Control(id)));
      LOGFONTW font = {};
      ::GetObjectW(::GetCurrentObject(dc, OBJ_FONT), sizeof font, &font);
      ::ReleaseDC(Control(id), dc);
      EXPECT_EQ(font.lfHeight, -22) << id;
      EXPECT_EQ(font.lfWeight, FW_BOLD) << id;
    }
  });
}

TEST_F(DialogControls, DialogKeepsItsSizeWhateverTheScreen) {
  Run([&] {
    CRect expected(0, 0, 600, 360);
    ::MapDialogRect(dialog.m_hWnd, &expected);
    CRect client;
    ::GetClientRect(dialog.m_hWnd, &client);
    EXPECT_EQ(client, expected);
    CRect work, window;
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    ::GetWindowRect(dialog.m_hWnd, &window);
    EXPECT_GE(window.top, work.top);
    EXPECT_GE(window.left, work.left);
  });
}

TEST_F(DialogControls, NothingOverlapsOrLeavesTheDialog) {
  Run([&] {
    CRect client;
    ::GetClientRect(dialog.m_hWnd, &client);
    std::vector<std::pair<int, CRect>> placed;
    for (HWND child = ::GetWindow(dialog.m_hWnd, GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
      CRect place;
      ::GetWindowRect(child, &place);
      ::MapWindowPoints(nullptr, dialog.m_hWnd,
                        reinterpret_cast<POINT*>(&place), 2);
      const int id = ::GetDlgCtrlID(child);
      CRect inside;
      ::IntersectRect(&inside, &place, &client);
      EXPECT_EQ(inside, place) << id;
      wchar_t kind[16] = L"";
      ::GetClassNameW(child, kind, 16);
      const LONG style = ::GetWindowLongW(child, GWL_STYLE);
      const bool isGroup = std::wstring(kind) == L"Button" &&
                           (style & BS_TYPEMASK) == BS_GROUPBOX;
      const bool isSpin = std::wstring(kind) == L"msctls_updown32";
      if (isGroup || isSpin) continue;
      for (const auto& [other, otherPlace] : placed) {
        CRect common;
        EXPECT_FALSE(::IntersectRect(&common, &place, &otherPlace))
            << id << " and " << other;
      }
      placed.emplace_back(id, place);
    }
  });
}

}  // namespace
