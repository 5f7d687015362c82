// SPDX-License-Identifier: MIT
//
// The real Rendal.exe measuring in photographs: shapes are dragged onto parts
// with the mouse, and what the console says is compared with the tools at work
// on a workbench that gets the same events, and once with a measurement that
// has nothing in common with them.
#include <windows.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "res/resource.h"
#include "tests/windows/operator.h"
#include "tests/windows/photographs.h"
#include "tests/windows/screen.h"
#include "tests/windows/twin.h"
#include "tools/caliper_tool.h"
#include "tools/line_finder.h"

namespace rendal_test {
namespace {

namespace fs = std::filesystem;
using rendal::CaliperParameters;

// Wide lines are broken by the console, and blanks lost where they are.
std::wstring WithoutBlanks(std::wstring text) {
  std::erase_if(text, [](wchar_t c) { return c == L' ' || c == L'\n'; });
  return text;
}

// The last lines of a text, as many as the console is sure to hold.
std::string LastLines(const std::string& text, int lines) {
  size_t at = text.size();
  for (int i = 0; i <= lines && at != 0 && at != std::string::npos; ++i) {
    at = text.rfind('\n', at - 1);
  }
  return at == std::string::npos || at == 0 ? text : text.substr(at + 1);
}

class MeasureEndToEnd : public testing::Test {
 protected:
  void Start(const fs::path& image) {
    process_ =
        std::make_unique<Process>(ProgramPath(), std::vector{image.wstring()});
    window_ = std::make_unique<Operator>(process_->id());
    WaitUntil("a status", [this] { return !window_->Status().empty(); });
    twin_ = std::make_unique<Twin>(*window_);
    twin().Loaded(image);
    ASSERT_TRUE(bench().HasImage());
  }
  const Operator& window() const { return *window_; }
  Twin& twin() const { return *twin_; }
  rendal::Workbench& bench() const { return twin_->bench; }

  // Presses "measure" and expects on the console what the tool prints. Returns
  // the line with the result.
  std::string MeasureWith(const CaliperParameters& parameters) {
    twin().Type(parameters);
    window().ClearConsole();
    window().Click(IDC_MEASURE);
    testing::internal::CaptureStdout();
    rendal::Measure(bench(), parameters);
    return ExpectOnConsole(testing::internal::GetCapturedStdout(), 1);
  }
  void FindLineWith(int display) {
    window().Select(IDC_FIND_LINE_DISPLAY, display);
    window().ClearConsole();
    window().Click(IDC_FIND_LINE);
    testing::internal::CaptureStdout();
    rendal::FindLine(bench(), display);
    ExpectOnConsole(testing::internal::GetCapturedStdout(), 10);
  }

 private:
  std::string ExpectOnConsole(const std::string& printed, int lines) const {
    const std::string expected = LastLines(printed, lines);
    EXPECT_FALSE(expected.empty());
    const std::wstring wanted = WithoutBlanks(Wide(expected));
    std::wstring seen;
    try {
      WaitUntil("the tool's lines", [&] {
        seen = WithoutBlanks(window().ConsoleText());
        return seen.find(wanted) != std::wstring::npos;
      });
    } catch (const std::exception&) {
      ADD_FAILURE() << expected << "is not in\n" << Utf8(seen);
    }
    return expected;
  }

  std::unique_ptr<Process> process_;
  std::unique_ptr<Operator> window_;
  std::unique_ptr<Twin> twin_;
};

TEST_F(MeasureEndToEnd, CircleOnACoinAgreesWithItsSlopes) {
  Start(Photograph(L"coins.png"));
  twin().SetMode(IDC_MODE_CIRCLE, rendal::kToolCircle);
  const cv::Point2f middle(0.5f * 384, 0.5f * 303);
  const cv::Point2f coin(270.6f, 118.8f);
  twin().Drag(middle, coin);
  twin().Drag(coin + cv::Point2f(0.25f * 303, 0), coin + cv::Point2f(24.7f, 0));
  const std::string line = MeasureWith({12, 2, 20, 1, 0, 360, 1, "last-"});
  Circle measured = {};
  ASSERT_EQ(
      std::sscanf(line.c_str(), "circle center = (%lf, %lf), radius = %lf",
                  &measured.x, &measured.y, &measured.radius),
      3)
      << line;
  const Circle other = CircleBySlopes(bench().m_srcImage, kCoin, 6);
  EXPECT_NEAR(measured.x, other.x, 0.05);
  EXPECT_NEAR(measured.y, other.y, 0.05);
  EXPECT_NEAR(measured.radius, other.radius, 0.05);
  std::printf("window %.3f %.3f %.3f, slopes %.3f %.3f %.3f\n", measured.x,
              measured.y, measured.radius, other.x, other.y, other.radius);
}

TEST_F(MeasureEndToEnd, EllipseOnACoinPrintsWhatTheToolSays) {
  Start(Photograph(L"coins.png"));
  twin().SetMode(IDC_MODE_ELLIPSE, rendal::kToolEllipse);
  const cv::Point2f middle(0.5f * 384, 0.5f * 303);
  const cv::Point2f coin(347, 187);
  twin().Drag(middle, coin);
  twin().Drag(coin + cv::Point2f(0.25f * 384, 0), coin + cv::Point2f(33, 0));
  twin().Drag(coin + cv::Point2f(0, -0.25f * 303), coin + cv::Point2f(0, -30));
  twin().Drag(coin - cv::Point2f(33, 0), coin - cv::Point2f(33, -12));
  EXPECT_NEAR(bench().m_roiShapes[rendal::kToolEllipse].values[2], 20, 4);
  const std::string line = MeasureWith({20, 6, 20, 1, 2, 0, 1, "strongest"});
  double x = 0, y = 0, size1 = 0, size2 = 0;
  ASSERT_EQ(std::sscanf(line.c_str(),
                        "ellipse center = (%lf, %lf), size = (%lf, %lf)", &x,
                        &y, &size1, &size2),
            4)
      << line;
  EXPECT_NEAR(x, 347, 1);
  EXPECT_NEAR(y, 186.7, 1);
  EXPECT_NEAR(std::sqrt(size1 * size2), 31.6, 1);
}

TEST_F(MeasureEndToEnd, BandAcrossCoinsPrintsEveryEdge) {
  Start(Photograph(L"coins.png"));
  twin().SetMode(IDC_MODE_BAND, rendal::kToolBand);
  twin().Drag({0.25f * 384, 0.5f * 303}, {20, 196});
  twin().Drag({0.75f * 384, 0.5f * 303}, {180, 196});
  const std::string line = MeasureWith({40, 5, 30, 1, 2, 0, 1, "first+"});
  EXPECT_GE(bench().m_results.at(0).points.size(), 6u);  // three coins
  EXPECT_EQ(line.rfind("i = ", 0), 0u) << line;
}

TEST_F(MeasureEndToEnd, LineOnATripodsLegPrintsWhatTheToolSays) {
  Start(Photograph(L"camera.png"));
  twin().SetMode(IDC_MODE_LINE, rendal::kToolLine);
  twin().Drag({0.25f * 512, 0.5f * 512}, {282, 360});
  twin().Drag({0.75f * 512, 0.5f * 512}, {246, 470});
  const std::string line = MeasureWith({30, 5, 20, 1, 2, 0, 1, "strongest"});
  EXPECT_EQ(line.rfind("line center = (", 0), 0u) << line;
}

// Upright and narrow, as the line finder wants it: the rocket of a photograph.
TEST_F(MeasureEndToEnd, LineFinderPrintsTheSameInEveryDisplay) {
  const fs::path path =
      fs::temp_directory_path() /
      (L"rocket " + std::to_wstring(::GetCurrentProcessId()) + L".png");
  WritePng(path, UprightRocket());
  Start(path);
  for (const int display : {0, 1, 2}) FindLineWith(display);
  EXPECT_GT(bench().m_results.at(0).points.size(), 10u);
  fs::remove(path);
}

TEST_F(MeasureEndToEnd, ShownResultsPanUntilTheDisplayIsCleared) {
  Start(Photograph(L"coins.png"));
  twin().SetMode(IDC_MODE_CIRCLE, rendal::kToolCircle);
  const cv::Point2f middle(0.5f * 384, 0.5f * 303);
  const cv::Point2f aside = middle + cv::Point2f(30, 20);
  MeasureWith({});
  twin().Drag(middle, aside);  // pans
  EXPECT_EQ(bench().m_roiShapes[rendal::kToolCircle].values[0], middle.x);
  const std::string before = MeasureWith({});
  twin().ClearDisplay();
  twin().Drag(middle, aside);  // moves the circle
  EXPECT_NEAR(bench().m_roiShapes[rendal::kToolCircle].values[0], aside.x, 1);
  EXPECT_NE(MeasureWith({}), before);
}

}  // namespace
}  // namespace rendal_test
