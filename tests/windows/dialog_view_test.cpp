// SPDX-License-Identifier: MIT
//
// The image view through the dialog: loading, zoom, mouse, refresh, tool modes.
#include "app/view/view_globals.h"
#include "tests/windows/gui_objects.h"
#include "tests/windows/main_dialog.h"

namespace {

using rendal::g_view;

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kBlue = RGB(0, 0, 255);

class DialogView : public MainDialogTest {};

// Loading

TEST_F(DialogView, LoadShowsTheSizeWhiteOnBlue) {
  RunWithImage(cv::Mat(80, 100, CV_8UC1, 50), [&] {
    EXPECT_EQ(TextOf(1002), L"打开图片,width = 100, height = 80");
    EXPECT_EQ(ColorsOf(1002), (Colors{kWhite, kBlue}));
    EXPECT_TRUE(::GetWindowLongW(Control(1002), GWL_STYLE) & SS_CENTERIMAGE);
    EXPECT_EQ(dialog.m_redraw, -1);
    EXPECT_EQ(dialog.m_hideResults, 1);
    EXPECT_EQ(g_view.zoom, 1.0f);
  });
}

TEST_F(DialogView, EnglishLoadSpeaksEnglish) {
  dialog.m_language = rendal::kEnglish;
  RunWithImage(cv::Mat(80, 100, CV_8UC1, 50), [&] {
    EXPECT_EQ(TextOf(1002), L"open image,width = 100, height = 80");
  });
}

TEST_F(DialogView, FileThatIsNoImageReadsZeroSize) {
  dialog.m_startImage = WriteImage("a.png", cv::Mat(8, 8, CV_8UC1, 1));
  std::filesystem::resize_file(dialog.m_startImage, 0);
  Run([&] {
    EXPECT_EQ(TextOf(1002), L"打开图片,width = 0, height = 0");
    Tick();
    Click(1042);
    Click(1018);
    Click(1019);
    Wheel(10, 10, 120);
    EXPECT_EQ(TextOf(1002), L"打开图片,width = 0, height = 0");
  });
}

TEST_F(DialogView, OpenDialogLoadsTheChosenFile) {
  const auto path = WriteImage("选择.png", cv::Mat(30, 40, CV_8UC3));
  Run([&] {
    WithModal([&] { Click(1001); },
              [&](HWND box) { AnswerFileDialog(box, path); });
    EXPECT_EQ(dialog.m_srcImage.size(), cv::Size(40, 30));
    EXPECT_EQ(dialog.m_srcImage.type(), CV_8UC1);
  });
}

TEST_F(DialogView, CancelledOpenDialogChangesNothing) {
  RunWithImage(cv::Mat(80, 100, CV_8UC1, 50), [&] {
    const auto* pixels = dialog.m_srcImage.data;
    WithModal([&] { Click(1001); },
              [&](HWND box) {
                PumpFor(300);
                ::PostMessageW(box, WM_COMMAND, IDCANCEL, 0);
              });
    EXPECT_EQ(dialog.m_srcImage.data, pixels);
    EXPECT_EQ(dialog.m_redraw, -1);
  });
}

// Zoom

TEST_F(DialogView, LargeImageIsFittedAndTheWheelStopsAtBothEnds) {
  RunWithImage(cv::Mat(3000, 4000, CV_8UC1, 50), [&] {
    const float fit = g_view.zoom;
    EXPECT_LT(fit, 1.0f);
    for (int i = 0; i < 10; ++i) Wheel(200, 200, -120);
    EXPECT_EQ(g_view.zoom, 0.5f * fit);
    for (int i = 0; i < 60; ++i) Wheel(200, 200, 120);
    EXPECT_EQ(g_view.zoom, 128.0f);
    Click(1019);
    EXPECT_EQ(g_view.zoom, fit);
    EXPECT_EQ(dialog.m_redraw, 1);
  });
}

TEST_F(DialogView, WheelKeepsThePointUnderTheCursor) {
  RunWithImage(cv::Mat(300, 400, CV_8UC1, 50), [&] {
    const cv::Point2f before = g_view.ToImage(500, 400);
    Wheel(500, 400, 120);
    const cv::Point2f after = g_view.ToImage(500, 400);
    EXPECT_FLOAT_EQ(g_view.zoom, 1.25f);
    EXPECT_NEAR(before.x, after.x, 1);
    EXPECT_NEAR(before.y, after.y, 1);
    EXPECT_EQ(dialog.m_redraw, 1);
  });
}

TEST_F(DialogView, WheelOverThePanelOrWithoutDeltaDoesNothing) {
  RunWithImage(cv::Mat(300, 400, CV_8UC1, 50), [&] {
    Wheel(g_view.viewWidth + 5, 100, 120);
    Wheel(100, g_view.viewHeight + 2, 120);
    Wheel(100, 100, 0);
    EXPECT_EQ(g_view.zoom, 1.0f);
    EXPECT_EQ(dialog.m_redraw, -1);
  });
}

TEST_F(DialogView, OneToOneWithoutPointerAnchorsAtHalfTheImage) {
  RunWithImage(cv::Mat(3000, 4000, CV_8UC1, 50), [&] {
    g_view.pointerX = -1;
    const float offsetX = g_view.offsetX, offsetY = g_view.offsetY;
    const float shown = std::trunc(g_view.zoom * 4000);
    const float shownY = std::trunc(g_view.zoom * 3000);
    Click(1018);
    EXPECT_EQ(g_view.zoom, 1.0f);
    EXPECT_NEAR(g_view.offsetX, 2000 - 4000 * ((2000 - offsetX) / shown), 1);
    EXPECT_NEAR(g_view.offsetY, 1500 - 3000 * ((1500 - offsetY) / shownY), 1);
    EXPECT_EQ(dialog.m_redraw, 1);
  });
}

TEST_F(DialogView, ZoomButtonsDoNothingBeforeTheFirstLoad) {
  Run([&] {
    Click(1018);
    Click(1019);
    Wheel(100, 100, 120);
    EXPECT_EQ(g_view.zoom, 1.0f);
    EXPECT_EQ(dialog.m_redraw, 0);
  });
}

// Mouse in the view

TEST_F(DialogView, DragPansTheImage) {
  RunWithImage(cv::Mat(300, 400, CV_8UC1, 50), [&] {
    const float x = g_view.offsetX, y = g_view.offsetY;
    Mouse(WM_LBUTTONDOWN, 100, 100, MK_LBUTTON);
    Mouse(WM_MOUSEMOVE, 130, 90, MK_LBUTTON);
    Mouse(WM_LBUTTONUP, 130, 90);
    Mouse(WM_MOUSEMOVE, 300, 300);
    EXPECT_EQ(g_view.offsetX, x + 30);
    EXPECT_EQ(g_view.offsetY, y - 10);
  });
}

TEST_F(DialogView, ButtonLetGoOutsideTheViewEndsTheDrag) {
  RunWithImage(cv::Mat(300, 400, CV_8UC1, 50), [&] {
    const float x = g_view.offsetX;
    Mouse(WM_LBUTTONDOWN, 100, 100, MK_LBUTTON);
    Mouse(WM_LBUTTONUP, -30, 100);
    Mouse(WM_MOUSEMOVE, 300, 300);
    EXPECT_EQ(g_view.offsetX, x);
    EXPECT_FALSE(g_view.dragging);
  });
}

TEST_F(DialogView, DoubleClicksZoomToOneAndFit) {
  RunWithImage(cv::Mat(3000, 4000, CV_8UC1, 50), [&] {
    const float fit = g_view.zoom;
    Mouse(WM_LBUTTONDBLCLK, 300, 200, MK_LBUTTON);
    EXPECT_EQ(g_view.zoom, 1.0f);
    Mouse(WM_MBUTTONDBLCLK, 300, 200, MK_MBUTTON);
    EXPECT_EQ(g_view.zoom, fit);
    Mouse(WM_LBUTTONDBLCLK, 300, 200, MK_LBUTTON);
    Mouse(WM_RBUTTONDBLCLK, 300, 200, MK_RBUTTON);
    EXPECT_EQ(g_view.zoom, fit);
  });
}

TEST_F(DialogView, ReadOutFollowsThePointer) {
  cv::Mat image(300, 400, CV_8UC1, 50);
  image.at<uint8_t>(7, 11) = 99;
  RunWithImage(image, [&] {
    const int left = static_cast<int>(g_view.offsetX);
    const int top = static_cast<int>(g_view.offsetY);
    Mouse(WM_MOUSEMOVE, left + 11, top + 7);
    Tick();
    EXPECT_EQ(TextOf(1021), L"11, 7, 99");
    Mouse(WM_MOUSEMOVE, left - 3, top - 5);
    Tick();
    EXPECT_EQ(TextOf(1021), L"-3, -5, 0");
    const LONG style = ::GetWindowLongW(Control(1021), GWL_STYLE);
    EXPECT_TRUE(style & SS_CENTERIMAGE);
    EXPECT_TRUE(style & SS_CENTER);
  });
}

// Refresh

TEST_F(DialogView, TickShowsTheImage) {
  RunWithImage(cv::Mat(30, 40, CV_8UC1, 77), [&] {
    EXPECT_EQ(dialog.m_viewImage.at<cv::Vec3b>(g_view.viewHeight / 2,
                                               g_view.viewWidth / 2),
              cv::Vec3b(77, 77, 77));
    EXPECT_EQ(dialog.m_viewImage.at<cv::Vec3b>(0, 0), cv::Vec3b(0, 0, 0));
    const HDC dc = ::GetDC(ImageWindow());
    ::SendMessageW(ImageWindow(), WM_PAINT, 0, 0);
    EXPECT_EQ(::GetPixel(dc, g_view.viewWidth / 2, g_view.viewHeight / 2),
              RGB(77, 77, 77));
    ::ReleaseDC(ImageWindow(), dc);
  });
}

TEST_F(DialogView, IdleTickTouchesNothing) {
  RunWithImage(cv::Mat(30, 40, CV_8UC1, 77), [&] {
    for (const int request : {0, -1, -5}) {
      dialog.m_redraw = request;
      dialog.m_viewImage.setTo(9);
      ::SetWindowTextW(Control(1021), L"untouched");
      Tick();
      EXPECT_EQ(dialog.m_redraw, request);
      EXPECT_EQ(TextOf(1021), L"untouched");
      EXPECT_EQ(cv::countNonZero(dialog.m_viewImage.reshape(1) != 9), 0);
    }
  });
}

TEST_F(DialogView, SeveralRequestsAreDrawnOnce) {
  RunWithImage(cv::Mat(30, 40, CV_8UC1, 77), [&] {
    Click(1015);
    Click(1016);
    EXPECT_EQ(dialog.m_redraw, 1);
    Tick();
    EXPECT_EQ(dialog.m_redraw, -1);
  });
}

TEST_F(DialogView, OtherTimersDrawNothing) {
  RunWithImage(cv::Mat(30, 40, CV_8UC1, 77), [&] {
    dialog.m_redraw = 1;
    ::SendMessageW(dialog.m_hWnd, WM_TIMER, 2, 0);
    EXPECT_EQ(dialog.m_redraw, 1);
  });
}

TEST_F(DialogView, TimerRunsByItself) {
  RunWithImage(cv::Mat(30, 40, CV_8UC1, 77), [&] {
    dialog.m_redraw = 1;
    EXPECT_TRUE(PumpUntil([&] { return dialog.m_redraw == -1; }));
  });
}

// Tool modes

TEST_F(DialogView, ClickIsSeenBeforeTheNextTick) {
  RunWithImage(cv::Mat(80, 100, CV_8UC1, 200), [&] {
    ::KillTimer(dialog.m_hWnd, 1);
    ::SetWindowTextW(Control(1004), L"33");
    PumpFor(30);
    EXPECT_EQ(dialog.m_redraw, 1) << "typing waits for the tick";
    dialog.m_redraw = -1;
    Click(1042);
    EXPECT_EQ(dialog.m_redraw, 1) << "the handler itself does not draw";
    EXPECT_TRUE(PumpUntil([&] { return dialog.m_redraw == -1; }));
    const cv::Point middle(dialog.m_viewSize.width / 2,
                           dialog.m_viewSize.height / 2);
    EXPECT_EQ(dialog.m_viewImage.at<cv::Vec3b>(middle), cv::Vec3b(0, 0, 255));
  });
}

TEST_F(DialogView, RadiosChooseTheToolAndAskForAPicture) {
  const std::vector<std::pair<int, int>> modes = {
      {1015, 0}, {1016, 1}, {1036, 2}, {1072, 3}, {1037, 99}};
  Run([&] {
    for (const auto& [id, mode] : modes) {
      dialog.m_redraw = 0;
      Click(id);
      EXPECT_EQ(dialog.m_toolMode, mode);
      EXPECT_EQ(dialog.m_redraw, 1);
      EXPECT_TRUE(::IsDlgButtonChecked(dialog.m_hWnd, id));
    }
  });
}

TEST_F(DialogView, ClearDisplayHidesResultsAndEmptiesTheStatus) {
  RunWithImage(Squares({60, 60}, 4, 5, 200), [&] {
    Click(1042);
    dialog.m_hideResults = 0;
    dialog.m_redraw = 0;
    Click(1032);
    EXPECT_EQ(dialog.m_redraw, 1);
    EXPECT_EQ(dialog.m_hideResults, 1);
    EXPECT_EQ(TextOf(1002), L"");
    EXPECT_EQ(ColorsOf(1002), (Colors{kWhite, kBlue}));
    EXPECT_TRUE(dialog.m_regionOverlay.empty());
    EXPECT_EQ(dialog.m_regionHistory.size(), 1u);
  });
}

TEST_F(DialogView, ChangedWidthAsksForAPicture) {
  Run([&] {
    dialog.m_redraw = 0;
    ::SetWindowTextW(Control(1004), L"35.5");
    EXPECT_EQ(dialog.m_redraw, 1);
    EXPECT_EQ(dialog.m_bandWidth, 35.5);
    dialog.m_redraw = 0;
    ::SetWindowTextW(Control(1003), L"12");
    EXPECT_EQ(dialog.m_redraw, 0);
  });
}

TEST_F(DialogView, LoadButtonIsGreen) {
  Run([&] {
    const HDC dc = ::GetDC(Control(1001));
    const auto brush = reinterpret_cast<HBRUSH>(::SendMessageW(
        dialog.m_hWnd, WM_CTLCOLORBTN, reinterpret_cast<WPARAM>(dc),
        reinterpret_cast<LPARAM>(Control(1001))));
    LOGBRUSH description = {};
    ::GetObjectW(brush, sizeof description, &description);
    EXPECT_EQ(description.lbColor, RGB(0, 255, 0));
    const auto other = reinterpret_cast<HBRUSH>(::SendMessageW(
        dialog.m_hWnd, WM_CTLCOLORBTN, reinterpret_cast<WPARAM>(dc),
        reinterpret_cast<LPARAM>(Control(1018))));
    EXPECT_NE(other, brush);
    // Seen, not only asked for.
    ::RedrawWindow(Control(1001), nullptr, nullptr,
                   RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_EQ(::GetPixel(dc, 8, 8), RGB(0, 255, 0));
    ::ReleaseDC(Control(1001), dc);
  });
}

}  // namespace
