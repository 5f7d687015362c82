// SPDX-License-Identifier: MIT
#include "controls/num_spin_ctrl.h"

#include <afxdialogex.h>
#include <gtest/gtest.h>

#include <string>

#include "mfc/detail/handle_maps.h"
#include "tests/windows/dialogs.h"
#include "tests/windows/gui_objects.h"

namespace {

class CSpinDlg : public CDialogEx {
 public:
  CSpinDlg() : CDialogEx(IDD_SPIN) {
    Create(IDD_SPIN);
    ShowWindow(SW_SHOWNA);
  }
  ~CSpinDlg() override { DestroyWindow(); }
  void DoDataExchange(CDataExchange* exchange) override {
    DDX_Control(exchange, IDC_SPIN, m_spin);
  }
  CNumSpinCtrl m_spin;
};

class NumSpinCtrl : public ::testing::Test {
 protected:
  void TearDown() override {
    AfxLockTempMaps();
    AfxUnlockTempMaps(TRUE);
  }

  void SetUpSpin(double minimum, double maximum, double step, double value) {
    Spin().SetDecimalPlaces(2);
    Spin().SetRangeAndDelta(minimum, maximum, step);
    Spin().SetPos(value);
  }

  CNumSpinCtrl& Spin() { return m_dialog.m_spin; }
  std::string Text() const {
    CString text;
    m_dialog.GetDlgItemText(IDC_EDIT, text);
    return std::string(CStringA(text));
  }
  void Type(LPCTSTR text) { m_dialog.SetDlgItemText(IDC_EDIT, text); }

  // Real clicks on the arrows.
  std::string Click(int arrows) {
    CRect rect;
    Spin().GetClientRect(rect);
    for (int i = 0; i < std::abs(arrows); ++i) {
      const LPARAM at =
          MAKELPARAM(rect.Width() / 2, arrows > 0 ? 3 : rect.Height() - 3);
      Spin().SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, at);
      Spin().SendMessage(WM_LBUTTONUP, 0, at);
    }
    return Text();
  }

  int NativePosition() { return Spin().GetPos32(); }
  std::pair<int, int> NativeRange() {
    int low = -1, high = -1;
    Spin().GetRange32(low, high);
    return {low, high};
  }

  CSpinDlg m_dialog;
};

using Range = std::pair<int, int>;

TEST_F(NumSpinCtrl, BuddyIsTheEditBeforeIt) {
  EXPECT_EQ(::GetDlgCtrlID(*Spin().GetBuddy()), IDC_EDIT);
}

TEST_F(NumSpinCtrl, NativeRangeStartsWithAHundredSteps) {
  EXPECT_EQ(NativeRange(), Range(0, 100));
  EXPECT_EQ(NativePosition(), 0);
}

TEST_F(NumSpinCtrl, GeneralFormatUntilDecimalsAreSet) {
  Spin().SetPos(1.0 / 3);
  EXPECT_EQ(Text(), "0.333333");
  Spin().SetDecimalPlaces(2);
  EXPECT_EQ(Text(), "0.333333") << "no reformatting by itself";
  Spin().SetPos(1.0 / 3);
  EXPECT_EQ(Text(), "0.33");
}

TEST_F(NumSpinCtrl, SigmaShowsOneAndStepsToOnePointOne) {
  SetUpSpin(0.4, 10, 0.1, 1.0);
  EXPECT_EQ(Text(), "1");
  EXPECT_EQ(Click(+1), "1.1");
  EXPECT_EQ(Click(-3), "0.8");
  EXPECT_EQ(Spin().GetPos(), 0.8);
}

TEST_F(NumSpinCtrl, StepDownAtMinimumStays) {
  SetUpSpin(0.4, 10, 0.1, 0.4);
  EXPECT_EQ(Click(-1), "0.4");
  EXPECT_EQ(NativePosition(), 0);
}

TEST_F(NumSpinCtrl, StepUpAtMaximumStays) {
  SetUpSpin(0, 25, 0.5, 25);
  EXPECT_EQ(Click(+2), "25");
  EXPECT_EQ(NativePosition(), 50);
}

TEST_F(NumSpinCtrl, NativePositionMirrorsTheValue) {
  SetUpSpin(0, 25, 0.5, 2);
  EXPECT_EQ(NativeRange(), Range(0, 50));
  EXPECT_EQ(NativePosition(), 4);
  Click(+1);
  EXPECT_EQ(Text(), "2.5");
  EXPECT_EQ(NativePosition(), 5) << "the native control moves as well";
  Spin().SetPos(25);
  EXPECT_EQ(NativePosition(), 50);
  Spin().SetPos(99);
  EXPECT_EQ(Text(), "99") << "set as it is";
  EXPECT_EQ(NativePosition(), 50);
}

TEST_F(NumSpinCtrl, WideRangeIsCompressedButStepsAreExact) {
  SetUpSpin(-1e5, 1e5, 0.25, 0);
  EXPECT_EQ(NativeRange(), Range(0, 32767));
  EXPECT_EQ(NativePosition(), 16384);
  EXPECT_EQ(Click(+1), "0.25");
  EXPECT_EQ(Click(-2), "-0.25");
}

TEST_F(NumSpinCtrl, ClicksGoOnWhereTheNativePositionIsAtItsEnd) {
  // 32767 native positions for 800,000 steps: near the end of the range many
  // steps share the last position.
  SetUpSpin(-1e5, 1e5, 0.25, 1e5 - 1);
  EXPECT_EQ(NativePosition(), 32767);
  EXPECT_EQ(Click(+1), "99999.25");
  EXPECT_EQ(Click(+5), "100000");
}

TEST_F(NumSpinCtrl, TypedTextIsTheValueOfRecord) {
  SetUpSpin(0, 1000, 1, 40);
  Type(L"12.5");
  EXPECT_EQ(Spin().GetPos(), 12.5);
  EXPECT_EQ(Click(+1), "13.5");
}

TEST_F(NumSpinCtrl, ValueTypedOutsideComesBackWithTheNextClick) {
  SetUpSpin(0, 255, 1, 20);
  for (const int arrow : {-1, +1}) {
    Type(L"5000");
    EXPECT_EQ(Spin().GetPos(), 5000) << "allowed until then";
    EXPECT_EQ(Click(arrow), "255");
    Type(L"-3");
    EXPECT_EQ(Click(arrow), "0");
  }
}

TEST_F(NumSpinCtrl, TextThatIsNoNumberCountsAsZero) {
  SetUpSpin(0, 255, 1, 20);
  for (LPCTSTR text : {L"", L"abc", L"-", L" "}) {
    Type(text);
    EXPECT_EQ(Spin().GetPos(), 0);
    EXPECT_EQ(Click(+1), "1");
  }
}

TEST_F(NumSpinCtrl, WrapStyleGoesOnAtTheOtherEnd) {
  SetUpSpin(0.4, 10, 0.1, 0.4);
  Spin().ModifyStyle(0, UDS_WRAP);
  EXPECT_EQ(Click(-1), "10");
  EXPECT_EQ(Click(+1), "0.4");
  EXPECT_EQ(Click(+1), "0.5");
}

TEST_F(NumSpinCtrl, StepZeroKeepsTheNativeRange) {
  SetUpSpin(0, 25, 0.5, 2);
  Spin().SetRangeAndDelta(0, 10, 0);
  EXPECT_EQ(NativeRange(), Range(0, 50));
  EXPECT_EQ(Click(+1), "2") << "moves by nothing";
}

TEST_F(NumSpinCtrl, EmptyRangeHoldsItsOnlyValue) {
  SetUpSpin(0, 25, 0.5, 2);
  Spin().SetRangeAndDelta(7, 7, 1);
  EXPECT_EQ(Click(+1), "7");
  EXPECT_EQ(Click(-1), "7");
}

TEST_F(NumSpinCtrl, RangeSetLaterSynchronizesWithTheText) {
  Type(L"5");
  Spin().SetRangeAndDelta(0, 10, 0.5);
  EXPECT_EQ(NativePosition(), 10);
  EXPECT_EQ(Text(), "5");
}

TEST_F(NumSpinCtrl, NativePositionNeverReachesTheBuddy) {
  SetUpSpin(0, 25, 0.5, 2);
  Spin().SendMessage(UDM_SETPOS32, 0, 33);
  EXPECT_EQ(Text(), "2");
}

TEST_F(NumSpinCtrl, NewWindowStartsWithItsRange) {
  CNumSpinCtrl spin;
  spin.SetRangeAndDelta(0, 25, 0.5);
  ASSERT_TRUE(spin.Create(WS_VISIBLE | UDS_ALIGNRIGHT, CRect(0, 0, 20, 20),
                          &m_dialog, 77));
  int low = -1, high = -1;
  spin.GetRange32(low, high);
  EXPECT_EQ(Range(low, high), Range(0, 50));
  spin.DestroyWindow();
}

TEST_F(NumSpinCtrl, WithoutABuddyItIsZeroAndNothingHappens) {
  CNumSpinCtrl spin;
  EXPECT_EQ(spin.GetPos(), 0) << "without a window as well";
  spin.SetPos(4);
  ASSERT_TRUE(spin.Create(WS_VISIBLE, CRect(90, 0, 110, 30), &m_dialog, 77));
  spin.SetPos(4);
  EXPECT_EQ(spin.GetPos(), 0);
  spin.SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(9, 3));
  spin.SendMessage(WM_LBUTTONUP, 0, MAKELPARAM(9, 3));
  EXPECT_EQ(spin.GetPos(), 0);
  EXPECT_EQ(Text(), "") << "the other spin's buddy stays";
  spin.DestroyWindow();
}

TEST_F(NumSpinCtrl, LongTypedTextDoesNoHarm) {
  SetUpSpin(0, 255, 1, 20);
  Type(CString(L'9', 5000));
  EXPECT_EQ(Click(-1), "255");
}

}  // namespace
