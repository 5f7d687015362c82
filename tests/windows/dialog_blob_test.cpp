// SPDX-License-Identifier: MIT
//
// The blob group through the dialog: threshold, connection, the list.
#include <algorithm>
#include <stdexcept>

#include "app/view/view_globals.h"
#include "tests/windows/gui_objects.h"
#include "tests/windows/main_dialog.h"

namespace {

using rendal::g_view;

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kRed = RGB(255, 0, 0);

class DialogBlob : public MainDialogTest {};

TEST_F(DialogBlob, ThresholdBinarisesAndSaysSoInBlue) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    Click(1042);
    EXPECT_EQ(TextOf(1002), L"threshold done");
    EXPECT_EQ(ColorsOf(1002), (Colors{kBlue, kWhite}));
    ASSERT_EQ(dialog.m_regionHistory.size(), 1u);
    EXPECT_EQ(dialog.m_regionOverlay.size(), 1u);
    EXPECT_EQ(dialog.m_redraw, 1);
    Tick();
    EXPECT_EQ(
        dialog.m_viewImage.at<cv::Vec3b>(static_cast<int>(g_view.offsetY) + 3,
                                         static_cast<int>(g_view.offsetX) + 3),
        cv::Vec3b(0, 0, 255));
  });
}

TEST_F(DialogBlob, ReversedBandIsRefusedInRed) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    Click(1042);
    SetBand(200, 100);
    Click(1042);
    EXPECT_EQ(TextOf(1002), L"MinGray = 200 > MaxGray = 100");
    EXPECT_EQ(ColorsOf(1002), (Colors{kRed, kWhite}));
    EXPECT_EQ(dialog.m_regionHistory.size(), 1u);
    EXPECT_EQ(dialog.m_regionOverlay.size(), 1u);
  });
}

TEST_F(DialogBlob, EmptyBandIsSaidAndNotKept) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    SetBand(50, 60);
    Click(1042);
    EXPECT_EQ(TextOf(1002), L"region is empty");
    EXPECT_EQ(ColorsOf(1002), (Colors{kRed, kWhite}));
    EXPECT_TRUE(dialog.m_regionHistory.empty());
  });
}

TEST_F(DialogBlob, ThresholdWithoutAnImageIsSilent) {
  Run([&] {
    Click(1042);
    EXPECT_EQ(TextOf(1002), L"");
    EXPECT_EQ(dialog.m_redraw, 0);
  });
}

TEST_F(DialogBlob, HistoryKeepsTheTwoNewest) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    for (int i = 0; i < 3; ++i) Click(1042);
    EXPECT_EQ(dialog.m_regionHistory.size(), 2u);
  });
}

TEST_F(DialogBlob, ConnectionListsEveryComponent) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    Click(1042);
    Click(1043);
    EXPECT_EQ(TextOf(1002), L"connection done, connected components =4");
    EXPECT_EQ(ColorsOf(1002), (Colors{kBlue, kWhite}));
    EXPECT_EQ(dialog.m_regionOverlay.size(), 4u);
    ASSERT_EQ(Rows(), 4);
    for (int row = 0; row < 4; ++row) {
      EXPECT_EQ(Cell(row, 0), std::to_wstring(row + 1));
      EXPECT_EQ(Cell(row, 1), L"25");
      for (int column = 2; column < 9; ++column) {
        EXPECT_EQ(Cell(row, column).size() - Cell(row, column).find(L'.'), 5u)
            << Cell(row, column);
      }
    }
  });
}

// Seen, not only set: the system draws the first column to the left.
TEST_F(DialogBlob, NumbersOfTheFirstColumnAreDrawnInTheMiddle) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    Click(1042);
    Click(1043);
    const HWND list = Control(1051);
    ::UpdateWindow(list);
    CRect cell;
    ListView_GetSubItemRect(list, 1, 0, LVIR_LABEL, &cell);
    const HDC dc = ::GetDC(list);
    int first = cell.right, last = cell.left;
    for (int y = cell.top + 2; y < cell.bottom - 2; ++y) {
      for (int x = cell.left + 2; x < cell.right - 2; ++x) {
        if (GetGValue(::GetPixel(dc, x, y)) > 100) continue;
        first = std::min(first, x);
        last = std::max(last, x);
      }
    }
    ::ReleaseDC(list, dc);
    ASSERT_LE(first, last);
    EXPECT_NEAR((first + last) / 2.0, (cell.left + cell.right) / 2.0, 2);
  });
}

TEST_F(DialogBlob, ListHoldsTheFirstHundredComponents) {
  RunWithImage(Squares({100, 100}, 150, 3, 200), [&] {
    Click(1042);
    Click(1043);
    EXPECT_EQ(TextOf(1002), L"connection done, connected components =150");
    EXPECT_EQ(Rows(), 100);
    EXPECT_EQ(Cell(99, 0), L"100");
    ASSERT_EQ(dialog.m_regionOverlay.size(), 150u);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(dialog.m_regionOverlay[0].color[i],
                dialog.m_regionOverlay[16].color[i]);
    }
    // Other operations leave the rows; the next connection replaces them.
    Click(1047);
    EXPECT_EQ(Rows(), 100);
    Click(1043);
    EXPECT_EQ(Rows(), 100);
  });
}

TEST_F(DialogBlob, DownUpTogglesTheBand) {
  Run([&] {
    const auto band = [&] { return std::pair(SpinOf(1039), SpinOf(1041)); };
    SetBand(0, 255);
    Click(1049);
    EXPECT_EQ(band(), std::pair(128, 255));
    EXPECT_EQ(TextOf(1038), L"128");
    Click(1049);
    EXPECT_EQ(band(), std::pair(0, 127));
    EXPECT_EQ(TextOf(1040), L"127");
    Click(1049);
    EXPECT_EQ(band(), std::pair(128, 255));
    SetBand(50, 200);
    Click(1049);
    EXPECT_EQ(band(), std::pair(50, 200));
    EXPECT_EQ(TextOf(1002), L"");
  });
}

TEST_F(DialogBlob, ElementKindRelabelsTheWidth) {
  Run([&] {
    for (const auto& [index, label, hasHeight] :
         {std::tuple(1, L"宽", true), std::tuple(0, L"R", false),
          std::tuple(2, L"宽", true), std::tuple(0, L"R", false)}) {
      Select(1058, index);
      EXPECT_EQ(TextOf(1063), label);
      EXPECT_EQ(::IsWindowEnabled(Control(1064)) != 0, hasHeight);
      EXPECT_EQ(::IsWindowEnabled(Control(1061)) != 0, hasHeight);
    }
  });
}

TEST_F(DialogBlob, ButtonsWithoutAToolDoNothing) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    const std::wstring status = TextOf(1002);
    for (const int id : {1020, 1045, 1046, 1048, 1068, 1071}) {
      ::SendMessageW(dialog.m_hWnd, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                     reinterpret_cast<LPARAM>(Control(id)));
      EXPECT_EQ(TextOf(1002), status) << id;
      EXPECT_EQ(dialog.m_redraw, -1) << id;
    }
  });
}

// A dialog with a tool that fails behind one of the spare buttons.
class CFailingDialog : public COpenDialog {
  afx_msg void OnFail() { throw std::runtime_error("malloc failed"); }
  DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(CFailingDialog, COpenDialog)
ON_BN_CLICKED(IDC_SPARE_2, &CFailingDialog::OnFail)
END_MESSAGE_MAP()

class FailingDialog : public MainDialogTest {
 protected:
  FailingDialog() : MainDialogTest(std::make_unique<CFailingDialog>()) {}
};

TEST_F(FailingDialog, ToolThatThrowsEndsInRedAndTheDialogLives) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    Click(1042);
    Click(IDC_SPARE_2);
    EXPECT_EQ(TextOf(1002), L"malloc failed");
    EXPECT_EQ(ColorsOf(1002), (Colors{kRed, kWhite}));
    EXPECT_EQ(dialog.m_regionHistory.size(), 1u);
    EXPECT_EQ(dialog.m_regionOverlay.size(), 1u);
    Click(1042);
    EXPECT_EQ(TextOf(1002), L"threshold done");
  });
}

TEST_F(DialogBlob, HundredsOfPressesLeaveNoBlockBehind) {
  RunWithImage(Squares({200, 200}, 150, 5, 200), [&] {
    const auto press = [&](int times) {
      for (int i = 0; i < times; ++i) {
        Click(1042);
        Click(1043);
      }
    };
    press(50);
    const size_t blocks = LiveHeapBlocks();
    const size_t objects = LiveGdiObjects();
    press(300);
    EXPECT_LE(LiveHeapBlocks(), blocks + 20);
    EXPECT_LE(LiveGdiObjects(), objects);
  });
}

TEST_F(DialogBlob, AThousandTicksLeaveNoGdiObjectBehind) {
  RunWithImage(Squares({200, 200}, 150, 5, 200), [&] {
    Click(1042);
    const auto tick = [&](int times) {
      for (int i = 0; i < times; ++i) {
        dialog.m_redraw = 1;
        Tick();
      }
    };
    tick(20);
    const size_t objects = LiveGdiObjects();
    tick(1000);
    EXPECT_LE(LiveGdiObjects(), objects);
  });
}

}  // namespace
