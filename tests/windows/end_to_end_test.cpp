// SPDX-License-Identifier: MIT
//
// The real Rendal.exe, worked from outside: what it shows in labels, list and
// console against what the region library says of the same image, and what it
// does with files that are no images.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "region/operations.h"
#include "region/region.h"
#include "res/resource.h"
#include "tests/windows/operator.h"
#include "tests/windows/scratch.h"

namespace rendal_test {
namespace {

namespace fs = std::filesystem;

constexpr int kShownRows = 100;

// Smooth bright and dark spots of many sizes, the same on every run.
cv::Mat Spots(int type = CV_8UC1) {
  cv::Mat noise(300, 400, type), smooth;
  cv::RNG(20).fill(noise, cv::RNG::UNIFORM, 0, 256);
  cv::GaussianBlur(noise, smooth, cv::Size(9, 9), 0);
  cv::normalize(smooth, smooth, 0, 255, cv::NORM_MINMAX);
  return smooth;
}

std::string Text(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

// What the list must show for a component.
std::vector<std::string> FeaturesOf(const vexo::region& component, int id) {
  return {std::to_string(id),
          std::to_string(component.area),
          Text("%.4f", component.ra()),
          Text("%.4f", component.rb()),
          Text("%.4f", component.phi()),
          Text("%.4f", component.rect_half_length1()),
          Text("%.4f", component.rect_half_length2()),
          Text("%.4f", component.rect_angle()),
          Text("%.4f", component.circularity())};
}

class EndToEnd : public testing::Test {
 protected:
  void Start(const std::vector<std::wstring>& arguments = {}) {
    program_ = std::make_unique<Process>(ProgramPath(), arguments);
    window_ = std::make_unique<Operator>(program_->id());
  }

  Operator& window() { return *window_; }
  std::string StatusAfter(int button) {
    return Utf8(window().StatusAfter(button));
  }
  std::string Load(const fs::path& path) {
    return Utf8(window().Load(path.wstring()));
  }
  void SetBand(int min, int max) {
    window().SetSpin(IDC_MIN_GRAY_SPIN, min);
    window().SetSpin(IDC_MAX_GRAY_SPIN, max);
  }

  // The band's components in window, list and console against the library's.
  void CheckComponents(const cv::Mat& gray, int min, int max) {
    vexo::region band, components;
    vexo::threshold_y(gray.data, gray.cols, gray.rows, min, max, &band);
    const int count = vexo::connection_y(band, &components, 1);
    ASSERT_GT(count, 0);

    SetBand(min, max);
    window().ClearConsole();
    EXPECT_EQ(StatusAfter(IDC_THRESHOLD), "threshold done");
    EXPECT_EQ(
        StatusAfter(IDC_CONNECTION),
        "connection done, connected components =" + std::to_string(count));
    CheckConsole(count);
    const auto rows = window().Rows();
    ASSERT_EQ(rows.size(), static_cast<size_t>(std::min(count, kShownRows)));
    for (size_t row = 0; row < rows.size(); ++row) {
      const auto expected =
          FeaturesOf(*components.children[row], static_cast<int>(row) + 1);
      ASSERT_EQ(rows[row].size(), expected.size());
      for (size_t column = 0; column < expected.size(); ++column) {
        EXPECT_EQ(Utf8(rows[row][column]), expected[column])
            << "row " << row << ", column " << column;
      }
    }
  }

  // Label, time, empty line, for both tools; then the count.
  void CheckConsole(int count) {
    double threshold_s = -1, connection_s = -1;
    int printed = -1;
    const std::string text = Utf8(window().ConsoleTextWith(
        L"connected components = " + std::to_wstring(count)));
    EXPECT_EQ(std::sscanf(text.c_str(),
                          "threshold\nelasped time:%lfs\n\n"
                          "connection\nelasped time:%lfs\n\n"
                          "connected components = %d\n",
                          &threshold_s, &connection_s, &printed),
              3)
        << text;
    EXPECT_EQ(text.rfind("threshold\nelasped time:", 0), 0u) << text;
    EXPECT_NE(text.find("s\n\nconnection\nelasped time:"), std::string::npos)
        << text;
    EXPECT_GT(threshold_s, 0);
    EXPECT_GT(connection_s, 0);
    EXPECT_EQ(printed, count);
  }

  Scratch scratch_;
  std::unique_ptr<Process> program_;
  std::unique_ptr<Operator> window_;
};

TEST_F(EndToEnd, ListedFeaturesAreTheLibrarysOwn) {
  const cv::Mat image = Spots();
  Start();
  EXPECT_EQ(Load(scratch_.WriteImage(L"a.png", ".png", image)),
            "\u6253\u5f00\u56fe\u7247,width = 400, height = 300");
  CheckComponents(image, 150, 255);
  CheckComponents(image, 0, 100);
}

TEST_F(EndToEnd, NoMoreThanAHundredRowsForManyComponents) {
  cv::Mat image(60, 60, CV_8UC1, cv::Scalar(0));
  for (int row = 0; row < 60; row += 4) {
    for (int col = 0; col < 60; col += 4) image.at<uchar>(row, col) = 200;
  }
  Start();
  Load(scratch_.WriteImage(L"dots.bmp", ".bmp", image));
  CheckComponents(image, 128, 255);
  EXPECT_EQ(window().Rows().size(), 100u);
}

TEST_F(EndToEnd, ColourImageIsWorkedOnInGray) {
  const cv::Mat colour = Spots(CV_8UC3);
  cv::Mat gray;
  cv::cvtColor(colour, gray, cv::COLOR_BGR2GRAY);
  Start();
  Load(scratch_.WriteImage(L"colour.tif", ".tif", colour));
  CheckComponents(gray, 128, 255);
}

TEST_F(EndToEnd, ListHasItsNineColumns) {
  Start();
  const std::vector<std::wstring> expected = {
      L"id",         L"area",       L"ra",        L"rb",         L"phi",
      L"rect2_len1", L"rect2_len2", L"rect2_phi", L"circularity"};
  EXPECT_EQ(window().ColumnTitles(), expected);
  EXPECT_TRUE(window().Rows().empty());
}

TEST_F(EndToEnd, CommandLineLoadsAnImageFromAChinesePath) {
  const cv::Mat image = Spots();
  const fs::path path =
      scratch_.WriteImage(L"\u786c\u5e01 1.png", ".png", image);
  Start({path.wstring()});
  WaitUntil("a status", [this] { return !window().Status().empty(); });
  EXPECT_EQ(Utf8(window().Status()),
            "\u6253\u5f00\u56fe\u7247,width = 400, height = 300");
  window().ConsoleTextWith(L"src path = " + path.wstring());
  CheckComponents(image, 150, 255);
}

TEST_F(EndToEnd, ChinesePathOpensThroughTheDialog) {
  Start();
  EXPECT_EQ(Load(scratch_.WriteImage(L"\u786c\u5e01 2.png", ".png", Spots())),
            "\u6253\u5f00\u56fe\u7247,width = 400, height = 300");
}

// Each of these leaves a program that still works.
TEST_F(EndToEnd, FilesThatAreNoImagesShowAsEmpty) {
  const cv::Mat image = Spots();
  const fs::path good = scratch_.WriteImage(L"good.png", ".png", image);
  const std::string prose = "This is a text, whatever its name says.\n";
  const fs::path text =
      scratch_.Write(L"text.png", {prose.begin(), prose.end()});
  const fs::path nothing = scratch_.Write(L"nothing.jpg", {});
  Start();
  for (const fs::path& path : {text, nothing}) {
    window().ClearConsole();
    EXPECT_EQ(Load(path), "\u6253\u5f00\u56fe\u7247,width = 0, height = 0");
    window().ConsoleTextWith(L"src path = " + path.wstring());
    // Nothing to binarise, and nothing said about it.
    window().ClearStatus();
    window().Press(IDC_THRESHOLD);
    EXPECT_EQ(StatusAfter(IDC_CONNECTION), "no binarization yet, 0");
  }
  Load(good);
  CheckComponents(image, 150, 255);
}

// Whatever the image library makes of a file that ends early is what is shown.
TEST_F(EndToEnd, TruncatedImagesLeaveTheProgramWorking) {
  const cv::Mat image = Spots();
  Start();
  for (const char* extension : {".png", ".jpg", ".tif", ".bmp"}) {
    std::vector<unsigned char> bytes = Scratch::Encoded(extension, image);
    bytes.resize(bytes.size() / 2);
    const cv::Mat decoded = cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
    const fs::path path = scratch_.Write(L"half" + Wide(extension), bytes);
    EXPECT_EQ(Load(path), "\u6253\u5f00\u56fe\u7247,width = " +
                              std::to_string(decoded.cols) +
                              ", height = " + std::to_string(decoded.rows))
        << extension;
  }
  Load(scratch_.WriteImage(L"good.png", ".png", image));
  CheckComponents(image, 150, 255);
}

TEST_F(EndToEnd, VanishedPathShowsAsEmpty) {
  const fs::path path = scratch_.WriteImage(L"gone.png", ".png", Spots());
  fs::remove(path);
  Start({path.wstring()});
  WaitUntil("a status", [this] { return !window().Status().empty(); });
  EXPECT_EQ(Utf8(window().Status()),
            "\u6253\u5f00\u56fe\u7247,width = 0, height = 0");
}

TEST_F(EndToEnd, CancelledDialogChangesNothing) {
  const cv::Mat image = Spots();
  Start();
  Load(scratch_.WriteImage(L"a.png", ".png", image));
  window().ClearStatus();
  window().Press(IDC_LOAD_IMAGE);
  const HWND open = window().WaitForFileDialog();
  ::PostMessageW(open, WM_COMMAND, IDCANCEL, 0);
  WaitUntil("the dialog's end", [open] { return !::IsWindow(open); });
  EXPECT_TRUE(window().Status().empty());
  CheckComponents(image, 150, 255);
}

TEST_F(EndToEnd, GuardsSpeakInTheStatus) {
  Start();
  EXPECT_EQ(StatusAfter(IDC_CONNECTION), "no binarization yet, 0");
  Load(scratch_.WriteImage(L"a.png", ".png", Spots()));
  SetBand(200, 100);
  EXPECT_EQ(StatusAfter(IDC_THRESHOLD), "MinGray = 200 > MaxGray = 100");
  EXPECT_EQ(StatusAfter(IDC_CONNECTION), "no binarization yet, 0");
}

// The message box of a process: its text.
std::wstring MessageBoxText(HWND box) {
  wchar_t text[100] = {};
  ::GetDlgItemTextW(box, 0xFFFF, text, 100);
  return text;
}

TEST_F(EndToEnd, SecondInstanceSaysSoAndEnds) {
  Start();
  Process second(ProgramPath(), {});
  HWND box = nullptr;
  WaitUntil("the second instance's message", [&] {
    for (const HWND candidate : TopWindows(second.id())) {
      if (::GetDlgItem(candidate, 0xFFFF)) box = candidate;
    }
    return box != nullptr;
  });
  EXPECT_EQ(Utf8(MessageBoxText(box)), "Rendal.exe\u5df2\u7ecf\u6253\u5f00!");
  ::PostMessageW(box, WM_COMMAND, IDOK, 0);
  EXPECT_EQ(second.ExitCode(), 0u);
  EXPECT_FALSE(program_->HasEnded());
  EXPECT_EQ(StatusAfter(IDC_CONNECTION), "no binarization yet, 0");
}

TEST_F(EndToEnd, CommandLineChoosesEnglish) {
  const fs::path path = scratch_.WriteImage(L"en.png", ".png", Spots());
  Start({L"/lang", L"en", path.wstring()});
  WaitUntil("a status", [this] { return !window().Status().empty(); });
  EXPECT_EQ(window().Status(), L"open image,width = 400, height = 300");
  EXPECT_EQ(window().Caption().substr(0, 13), L"Measure    20");
  EXPECT_EQ(window().TextOf(IDC_LOAD_IMAGE), L"Load image");
  EXPECT_EQ(window().TextOf(IDC_MEASURE), L"Measure");
  EXPECT_EQ(window().TextOf(IDC_CLEAR_DISPLAY), L"Clear display");
  window().SwitchLanguage();
  EXPECT_EQ(Utf8(window().TextOf(IDC_MEASURE)), "\u6d4b\u91cf");
}

TEST_F(EndToEnd, LanguageThatIsNotKnownIsNamedAndIgnored) {
  const fs::path path = scratch_.WriteImage(L"fr.png", ".png", Spots());
  Start({L"/lang", L"fr", path.wstring()});
  WaitUntil("a status", [this] { return !window().Status().empty(); });
  EXPECT_EQ(Utf8(window().Status()),
            "\u6253\u5f00\u56fe\u7247,width = 400, height = 300");
  EXPECT_EQ(Utf8(window().Caption().substr(0, 8)), "\u6d4b\u91cf    20");
  EXPECT_EQ(Utf8(window().TextOf(IDC_MEASURE)), "\u6d4b\u91cf");
  window().ConsoleTextWith(L"option ignored: /lang fr");
}

TEST_F(EndToEnd, ClosingTheWindowEndsTheProgram) {
  Start();
  window().DismissWelcome();
  window().Close();
  EXPECT_EQ(program_->ExitCode(), 0u);
}

}  // namespace
}  // namespace rendal_test
