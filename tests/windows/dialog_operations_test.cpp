// SPDX-License-Identifier: MIT
//
// The region operations through the dialog.
#include "tests/windows/main_dialog.h"

namespace {

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kRed = RGB(255, 0, 0);

class DialogOperations : public MainDialogTest {};

TEST_F(DialogOperations, OperationsBeforeAThresholdAreRefused) {
  Run([&] {
    for (const int id :
         {1043, 1047, 1055, 1056, 1057, 1065, 1066, 1067, 1069}) {
      ::SetWindowTextW(Control(1002), L"");
      Click(id);
      EXPECT_EQ(TextOf(1002), L"no binarization yet, 0") << id;
      EXPECT_EQ(ColorsOf(1002), (Colors{kRed, kWhite})) << id;
    }
    for (const int id : {1052, 1053, 1054}) {
      ::SetWindowTextW(Control(1002), L"");
      Click(id);
      EXPECT_EQ(TextOf(1002), L"The number of regions is less than 2, 0") << id;
    }
    EXPECT_EQ(dialog.m_redraw, 0);
    EXPECT_EQ(Rows(), 0);
  });
}

TEST_F(DialogOperations, UnionAfterOneThresholdNamesTheCount) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    Click(1042);
    Click(1052);
    EXPECT_EQ(TextOf(1002), L"The number of regions is less than 2, 1");
  });
}

TEST_F(DialogOperations, EveryOperationReportsItsEnd) {
  const std::vector<std::pair<int, std::wstring>> operations = {
      {1047, L"fill_up done"},    {1052, L"union2 done"},
      {1053, L"difference done"}, {1054, L"intersection done"},
      {1055, L"dilation1 done"},  {1056, L"erosion1 done"},
      {1057, L"opening done"},    {1065, L"closing done"},
      {1066, L"top_hat done"},    {1067, L"bottom_hat done"},
      {1069, L"boundary done"}};
  for (const int32_t mode : {1, 0}) {
    dialog.m_parallelMode = mode;
    RunWithImage(Squares({60, 60}, 4, 9, 200), [&] {
      Click(1042);
      Click(1042);
      for (const auto& [id, message] : operations) {
        dialog.m_redraw = 0;
        Click(id);
        EXPECT_EQ(TextOf(1002), message) << mode;
        EXPECT_EQ(ColorsOf(1002), (Colors{kBlue, kWhite}));
        EXPECT_EQ(dialog.m_redraw, 1) << id;
        EXPECT_EQ(dialog.m_regionOverlay.size(), 1u) << id;
      }
    });
  }
}

TEST_F(DialogOperations, ElementComesFromComboAndSpins) {
  const auto chords = [&] {
    size_t pixels = 0;
    for (const vexo::chord& c : dialog.m_regionOverlay[0].chords) {
      pixels += static_cast<size_t>(c.col_end - c.col_begin + 1);
    }
    return pixels;
  };
  cv::Mat image = cv::Mat::zeros(101, 101, CV_8UC1);
  image.at<uint8_t>(50, 50) = 255;
  RunWithImage(image, [&] {
    Click(1042);
    Select(1058, 1);
    SetSpin(1060, 7);
    SetSpin(1062, 5);
    Click(1055);
    EXPECT_EQ(chords(), 35u);
    Select(1058, 0);
    SetSpin(1060, 1);
    Click(1055);
    EXPECT_EQ(chords(), 5u);
  });
}

TEST_F(DialogOperations, BoundaryTypeComesFromItsCombo) {
  RunWithImage(Squares({60, 60}, 1, 9, 200), [&] {
    Click(1042);
    std::vector<int> top;
    for (const int type : {0, 2}) {
      Select(1070, type);
      Click(1069);
      top.push_back(dialog.m_regionOverlay[0].chords[0].row);
    }
    Select(1070, -1);
    Click(1069);
    EXPECT_EQ(dialog.m_regionOverlay[0].chords[0].row, 1);
    EXPECT_EQ(top[0], 1);
    EXPECT_EQ(top[1], 0);
  });
}

}  // namespace
