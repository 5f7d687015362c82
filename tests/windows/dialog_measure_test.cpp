// SPDX-License-Identifier: MIT
//
// The caliper group and the line finder through the dialog: what the handlers
// read from the controls, and what they leave behind.
#include <new>

#include "app/view/view_globals.h"
#include "tests/tools/recorded_library.h"
#include "tests/windows/main_dialog.h"

namespace {

using rendal::g_view;
using rendal::RecordedLibrary;
using Calls = std::vector<std::string>;

constexpr int kModeButtons[] = {1015, 1016, 1036, 1072};

// Taller than wide, for the line finder: dark left of column 40.
cv::Mat Wall() {
  cv::Mat image(120, 80, CV_8UC1, cv::Scalar(220));
  image.colRange(0, 40).setTo(20);
  return image;
}

class DialogMeasure : public MainDialogTest {
 protected:
  // A dialog with an image and a library that notes its calls.
  void RunRecorded(const Script& script) {
    RunWithImage(Wall(), [&] {
      dialog.m_measurementLibrary = RecordedLibrary::Table();
      library.image = dialog.m_srcImage.data;
      script();
    });
  }
  void Type(int edit, const wchar_t* text) {
    ::SetWindowTextW(Control(edit), text);
  }

  RecordedLibrary library;
};

TEST_F(DialogMeasure, DefaultsOfTheControlsAreMeasuredWith) {
  RunRecorded([&] {
    Click(1016);
    Click(1017);
    ASSERT_GE(library.calls.size(), 3u);
    EXPECT_EQ(library.calls[0], "gen_measure_circle(40, 60, 20, 40, 20, 1, 0)");
    EXPECT_EQ(library.calls[1],
              "do_measure(image, 80, 120, 1, 20, \"first+\", rectangles, 2)");
    EXPECT_EQ(library.calls[2], "do_fit(points, 2, 1, 7, 2, 20, 3)");
  });
}

TEST_F(DialogMeasure, EveryControlIsReadAtEveryPress) {
  RunRecorded([&] {
    Click(1015);
    Click(1017);
    library.calls.clear();
    Type(1003, L"31.5");
    Type(1004, L"7.25");
    Type(1010, L"12");
    Type(1028, L"1.25");
    Type(1033, L"3.5");
    SetSpin(1011, 9);
    Select(1014, 1);
    Select(1025, 6);
    Click(1017);
    EXPECT_EQ(library.calls,
              Calls({"gen_measure_line(20, 60, 60, 60, 31.5, 7.25, -1, 9)",
                     "do_measure(image, 80, 120, 1.25, 12, \"strongest\", "
                     "rectangles, 2)",
                     "do_fit(points, 2, 0, 7, 3.5, 20, 2)", "clear_mems(3)",
                     "clear_mems(4)"}));
  });
}

TEST_F(DialogMeasure, ArrowsOfTheSpinsCount) {
  RunRecorded([&] {
    Click(1015);
    PressArrow(1005, true);
    PressArrow(1006, false);
    PressArrow(1011, true);
    Click(1017);
    EXPECT_EQ(library.calls[0],
              "gen_measure_line(20, 60, 60, 60, 41, 19, 1, 1)");
  });
}

TEST_F(DialogMeasure, EverySelectionIsHandedOnByItsText) {
  RunRecorded([&] {
    Click(1015);
    const char* const names[] = {"first+", "first-", "first",    "last+",
                                 "last-",  "last",   "strongest"};
    for (int i = 0; i < 7; ++i) {
      library.calls.clear();
      Select(1025, i);
      Click(1017);
      EXPECT_NE(library.calls[1].find('"' + std::string(names[i]) + '"'),
                std::string::npos)
          << library.calls[1];
    }
  });
}

TEST_F(DialogMeasure, EveryModeMeasuresItsOwnShape) {
  RunRecorded([&] {
    const char* const first[] = {"gen_measure_line(20, 60, 60, 60, ",
                                 "gen_measure_circle(40, 60, 20, ",
                                 "ppw_to_rr(20, 60, 60, 60, 20)",
                                 "gen_measure_ellipse(40, 60, 0, 20, 30, "};
    for (int mode = 0; mode < 4; ++mode) {
      library.calls.clear();
      Click(kModeButtons[mode]);
      Click(1017);
      ASSERT_FALSE(library.calls.empty()) << mode;
      EXPECT_EQ(library.calls[0].rfind(first[mode], 0), 0u) << library.calls[0];
    }
  });
}

TEST_F(DialogMeasure, NothingHappensWithoutAnImage) {
  Run([&] {
    dialog.m_measurementLibrary = RecordedLibrary::Table();
    for (const int mode : kModeButtons) {
      Click(mode);
      dialog.m_redraw = 0;
      Click(1017);
      Click(1022);
      EXPECT_EQ(dialog.m_redraw, 0);
    }
    EXPECT_EQ(library.calls, Calls());
    EXPECT_TRUE(dialog.m_results.empty());
    EXPECT_EQ(TextOf(1002), L"");
  });
}

TEST_F(DialogMeasure, ModeNoneKeepsResultsAndRequestsNothing) {
  RunRecorded([&] {
    Click(1015);
    Click(1017);
    Click(1037);
    Tick();
    library.calls.clear();
    Click(1017);
    EXPECT_EQ(library.calls, Calls());
    EXPECT_EQ(dialog.m_results.size(), 1u);
    EXPECT_EQ(dialog.m_redraw, -1);
  });
}

TEST_F(DialogMeasure, ResultsAreShownUntilTheDisplayIsCleared) {
  RunRecorded([&] {
    Click(1015);
    Click(1017);
    EXPECT_EQ(dialog.m_hideResults, 0);
    EXPECT_EQ(dialog.m_redraw, 1);
    Tick();
    const auto at = [&](int x, int y) {
      return cv::Point(static_cast<int>(g_view.offsetX) + x,
                       static_cast<int>(g_view.offsetY) + y);
    };
    // An edge point at (10, 20), as a ring of radius 2.
    EXPECT_EQ(dialog.m_viewImage.at<cv::Vec3b>(at(12, 20)),
              cv::Vec3b(255, 0, 255));
    // The start of the line lies at (20, 60).
    const cv::Point start = at(20, 60);
    Mouse(WM_LBUTTONDOWN, start.x, start.y, MK_LBUTTON);
    EXPECT_EQ(g_view.grabbed, rendal::kNothingGrabbed);
    Mouse(WM_LBUTTONUP, start.x, start.y);
    Click(1032);
    Tick();
    EXPECT_NE(dialog.m_viewImage.at<cv::Vec3b>(at(12, 20)),
              cv::Vec3b(255, 0, 255));
    Mouse(WM_LBUTTONDOWN, start.x, start.y, MK_LBUTTON);
    EXPECT_EQ(g_view.grabbed, 0);
    Mouse(WM_LBUTTONUP, start.x, start.y);
  });
}

TEST_F(DialogMeasure, MeasuringLeavesStatusAndListAlone) {
  RunRecorded([&] {
    Click(1042);
    Click(1043);
    const std::wstring status = TextOf(1002);
    const int rows = Rows();
    ASSERT_GT(rows, 0);
    Click(1015);
    Click(1017);
    Click(1022);
    EXPECT_EQ(TextOf(1002), status);
    EXPECT_EQ(Rows(), rows);
    EXPECT_TRUE(dialog.m_regionOverlay.empty());
    EXPECT_EQ(dialog.m_regionHistory.size(), 1u);
  });
}

TEST_F(DialogMeasure, DoShowsWhatItsComboSays) {
  RunRecorded([&] {
    // The last item is selected at the start: every edge.
    library.edges = {{1, 2, 30}};
    Click(1022);
    ASSERT_EQ(dialog.m_results.size(), 1u);
    EXPECT_EQ(dialog.m_results[0].points.size(), 1u);
    EXPECT_TRUE(dialog.m_results[0].rectangles.empty());
    Select(1073, 0);
    Click(1022);
    ASSERT_EQ(dialog.m_results[0].shapes.size(), 1u);
    EXPECT_EQ(dialog.m_results[0].shapes[0].kind, rendal::kSegment);
    Select(1073, 1);
    Click(1022);
    EXPECT_EQ(dialog.m_results[0].rectangles.size(), 2u);
    EXPECT_EQ(dialog.m_redraw, 1);
    EXPECT_EQ(dialog.m_hideResults, 0);
  });
}

TEST_F(DialogMeasure, DoWorksInEveryMode) {
  RunRecorded([&] {
    for (const int mode : {1015, 1016, 1036, 1072, 1037}) {
      Click(mode);
      library.calls.clear();
      Click(1022);
      EXPECT_EQ(library.calls.size(), 11u) << mode;
    }
  });
}

TEST_F(DialogMeasure, OutOfMemoryEndsInRedAndKeepsTheResults) {
  RunRecorded([&] {
    Click(1015);
    Click(1017);
    Tick();
    dialog.m_measurementLibrary.do_fit = [](const double*, int, int, int, float,
                                            int, int, double*) -> int {
      throw std::bad_alloc();
    };
    library.calls.clear();
    for (const int button : {1017, 1022}) {
      Click(button);
      EXPECT_EQ(ColorsOf(1002).text, RGB(255, 0, 0));
      EXPECT_EQ(dialog.m_results.size(), 1u);
      EXPECT_EQ(dialog.m_redraw, -1);
    }
    // Memory is released all the same.
    EXPECT_EQ(std::count_if(library.calls.begin(), library.calls.end(),
                            [](const std::string& call) {
                              return call.rfind("clear_mems", 0) == 0;
                            }),
              4);
  });
}

}  // namespace
