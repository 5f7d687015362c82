// SPDX-License-Identifier: MIT
//
// Whatever is typed into a field, every button can be pressed after it, whole
// numbers are read within their range, and the next click of an arrow brings a
// number back into its own.
#include <cstdlib>

#include "tests/windows/main_dialog.h"

namespace {

struct Field {
  int edit, spin;
  double min, max;
  bool isWhole;
};
constexpr Field kFields[] = {
    {1003, 1005, 0, 1000, false},  // length
    {1004, 1006, 0, 1000, false},  // width
    {1010, 1026, 0, 255, false},   // amplitude
    {1028, 1029, 0.4, 10, false},  // sigma
    {1033, 1034, 0, 25, false},    // reps
    {1009, 1011, 0, 1000, true},   // count
    {1038, 1039, 0, 255, true},    // gray band
    {1040, 1041, 0, 255, true},
    {1059, 1060, 1, 100, true},  // structuring element
    {1061, 1062, 1, 100, true},
};

// Every button of the tools, the blob group's in the order of a round: two
// binarisations first.
constexpr int kButtons[] = {1018, 1019, 1042, 1042, 1043, 1047, 1052,
                            1053, 1054, 1055, 1056, 1057, 1065, 1066,
                            1067, 1069, 1022, 1049, 1049, 1032};
constexpr int kModes[] = {1015, 1016, 1036, 1072};
constexpr int kMeasure = 1017;

const std::wstring kTexts[] = {L"",
                               L"abc",
                               L"1e308",
                               L"-1",
                               L"NaN",
                               L"1,5",
                               L"0",
                               L"99999999999999999999",
                               std::wstring(400, L'9')};

// Taller than wide, for the line finder.
cv::Mat Wall() {
  cv::Mat image(48, 32, CV_8UC1, cv::Scalar(220));
  image.colRange(0, 16).setTo(20);
  return image;
}

class DialogTyping : public MainDialogTest {
 protected:
  void Type(int edit, const std::wstring& text) {
    ::SetWindowTextW(Control(edit), text.c_str());
  }

  void PressEverything() {
    for (const int button : kButtons) Click(button);
    for (const int mode : kModes) {
      Click(mode);
      Click(kMeasure);
      Tick();
    }
  }

  void ExpectArrowBringsBack(const Field& field) {
    PressArrow(field.spin, true);
    const double value = std::wcstod(TextOf(field.edit).c_str(), nullptr);
    EXPECT_TRUE(value >= field.min && value <= field.max)
        << CStringA(TextOf(field.edit).c_str());
  }

  void GoOver(const Field& field) {
    const std::wstring usual = TextOf(field.edit);
    for (const std::wstring& text : kTexts) {
      SCOPED_TRACE(std::to_string(field.edit) + " '" +
                   CStringA(text.c_str()).GetString() + "'");
      Type(field.edit, text);
      PressEverything();
      if (field.isWhole) {
        EXPECT_GE(SpinOf(field.spin), field.min);
        EXPECT_LE(SpinOf(field.spin), field.max);
      }
      ExpectArrowBringsBack(field);
      Type(field.edit, usual);
    }
  }

  void ExpectUsualWork() {
    Click(1036);  // across the edge
    Click(kMeasure);
    ASSERT_EQ(dialog.m_results.size(), 1u);
    EXPECT_FALSE(dialog.m_results[0].points.empty());
    SetBand(100, 255);
    Click(1042);
    EXPECT_EQ(TextOf(1002), L"threshold done");
    EXPECT_EQ(dialog.m_regionHistory.size(), 2u);
  }
};

TEST_F(DialogTyping, EveryButtonStandsWhateverStandsInAField) {
  RunWithImage(Wall(), [&] {
    Select(1058, 1);  // an element with a height
    for (const Field& field : kFields) GoOver(field);
    ExpectUsualWork();
  });
}

TEST_F(DialogTyping, WholeNumberThatIsUsedIsTheOneThatIsShown) {
  RunWithImage(Wall(), [&] {
    Select(1058, 1);
    for (const wchar_t* text : {L"300", L"-1", L"", L"abc"}) {
      Type(1038, text);
      Click(1042);
      EXPECT_EQ(TextOf(1038), std::to_wstring(SpinOf(1039)));
      Type(1059, text);
      Click(1053);
      EXPECT_EQ(TextOf(1059), std::to_wstring(SpinOf(1060)));
      Type(1038, L"100");
    }
  });
}

}  // namespace
