// SPDX-License-Identifier: MIT
//
// The real Rendal.exe measuring in photographs: shapes are dragged onto parts
// with the mouse, and what the console says is compared with the tools at work
// on a workbench that gets the same events, and once with a measurement that
// has nothing in common with them.
#include <windows.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <numbers>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/view/image_loader.h"
#include "app/view/roi_interaction.h"
#include "app/view/view_commands.h"
#include "gtest/gtest.h"
#include "res/resource.h"
#include "tests/windows/operator.h"
#include "tools/caliper_tool.h"
#include "tools/line_finder.h"

namespace rendal_test {
namespace {

namespace fs = std::filesystem;
using rendal::CaliperParameters;

// setup/environment.sh says where the photographs are.
fs::path Photograph(const std::wstring& name) {
  const wchar_t* const folder = ::_wgetenv(L"RENDAL_PHOTOGRAPHS");
  if (folder == nullptr) throw std::runtime_error("no RENDAL_PHOTOGRAPHS");
  for (const auto& entry :
       fs::recursive_directory_iterator(L"Z:" + std::wstring(folder))) {
    if (entry.path().filename() == name) return entry.path();
  }
  throw std::runtime_error("no photograph " + Utf8(name));
}

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
    WaitUntil("a status", [this] { return !window().Status().empty(); });
    const SIZE size = window().ViewSize();
    view_.viewWidth = size.cx;
    view_.viewHeight = size.cy;
    rendal::LoadImageFile(image, bench_, view_);
    ASSERT_TRUE(bench_.HasImage());
  }
  const Operator& window() const { return *window_; }

  void SetMode(int button, rendal::ToolMode mode) {
    window().Click(button);
    rendal::SelectToolMode(bench_, mode);
  }
  // Drags from one image point to another, in the window and beside it.
  void Drag(cv::Point2f from, cv::Point2f to) {
    const cv::Point start = ViewPixel(from);
    const cv::Point end = ViewPixel(to);
    window().Drag({start.x, start.y}, {end.x, end.y});
    rendal::OnMouse({rendal::kLeftDown, start.x, start.y}, bench_, view_);
    rendal::OnMouse({rendal::kMouseMove, end.x, end.y}, bench_, view_);
    rendal::OnMouse({rendal::kLeftUp, end.x, end.y}, bench_, view_);
  }
  void ClearDisplay() {
    window().Click(IDC_CLEAR_DISPLAY);
    rendal::ClearDisplay(bench_);
  }
  void Type(const CaliperParameters& p) const {
    window().Type(IDC_LENGTH, std::to_wstring(p.length));
    window().Type(IDC_WIDTH, std::to_wstring(p.width));
    window().Type(IDC_AMPLITUDE, std::to_wstring(p.amplitude));
    window().Type(IDC_SIGMA, std::to_wstring(p.sigma));
    window().Type(IDC_REPS, std::to_wstring(p.reps));
    window().SetSpin(IDC_COUNT_SPIN, p.count);
    window().Select(IDC_DIRECTION, p.direction > 0 ? 0 : 1);
    window().Select(IDC_SELECTION, SelectionIndex(p.selection));
  }

  // Presses "measure" and expects on the console what the tool prints. Returns
  // the line with the result.
  std::string MeasureWith(const CaliperParameters& parameters) {
    Type(parameters);
    window().ClearConsole();
    window().Click(IDC_MEASURE);
    testing::internal::CaptureStdout();
    rendal::Measure(bench_, parameters);
    return ExpectOnConsole(testing::internal::GetCapturedStdout(), 1);
  }
  void FindLineWith(int display) {
    window().Select(IDC_FIND_LINE_DISPLAY, display);
    window().ClearConsole();
    window().Click(IDC_FIND_LINE);
    testing::internal::CaptureStdout();
    rendal::FindLine(bench_, display);
    ExpectOnConsole(testing::internal::GetCapturedStdout(), 10);
  }

  rendal::Workbench bench_;
  rendal::ViewState view_;

 private:
  cv::Point ViewPixel(cv::Point2f image) const {
    return view_.ToView(image.x, image.y);
  }
  static int SelectionIndex(const std::string& name) {
    const std::vector<std::string> names = {
        "first+", "first-", "first", "last+", "last-", "last", "strongest"};
    return static_cast<int>(std::find(names.begin(), names.end(), name) -
                            names.begin());
  }
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
};

struct Circle {
  double x, y, radius;
};

// The circle through the steepest descents of grey along 360 rays: bicubic
// samples, smoothed, their derivative's extremum by a parabola; least squares.
Circle CircleBySlopes(const cv::Mat& image, Circle start, double reach) {
  constexpr double kStep = 0.1;
  const int samples = static_cast<int>(2 * reach / kStep) + 1;
  cv::Mat grey;
  image.convertTo(grey, CV_32F);
  cv::Mat equations(360, 3, CV_64F), right(360, 1, CV_64F);
  for (int ray = 0; ray < 360; ++ray) {
    const double c = std::cos(ray * std::numbers::pi / 180);
    const double s = std::sin(ray * std::numbers::pi / 180);
    const auto radius = [&](double k) {
      return start.radius - reach + k * kStep;
    };
    cv::Mat x(1, samples, CV_32F), y(1, samples, CV_32F), profile;
    for (int k = 0; k < samples; ++k) {
      x.at<float>(k) = static_cast<float>(start.x + radius(k) * c);
      y.at<float>(k) = static_cast<float>(start.y + radius(k) * s);
    }
    cv::remap(grey, profile, x, y, cv::INTER_CUBIC);
    cv::GaussianBlur(profile, profile, cv::Size(), 1 / kStep, 1e-6,
                     cv::BORDER_REPLICATE);
    const auto descent = [&](int k) {
      return profile.at<float>(k - 1) - profile.at<float>(k + 1);
    };
    int best = 2;
    for (int k = 2; k < samples - 2; ++k) {
      if (descent(k) > descent(best)) best = k;
    }
    const double before = descent(best - 1), at = descent(best),
                 after = descent(best + 1);
    const double r =
        radius(best + 0.5 * (before - after) / (before - 2 * at + after));
    // x^2 + y^2 = 2 a x + 2 b y + d about the starting centre.
    equations.at<double>(ray, 0) = 2 * r * c;
    equations.at<double>(ray, 1) = 2 * r * s;
    equations.at<double>(ray, 2) = 1;
    right.at<double>(ray) = r * r;
  }
  cv::Mat solution;
  cv::solve(equations, right, solution, cv::DECOMP_SVD);
  const double a = solution.at<double>(0), b = solution.at<double>(1);
  return {start.x + a, start.y + b,
          std::sqrt(solution.at<double>(2) + a * a + b * b)};
}

// A coin of the photograph, roughly.
const Circle kCoin = {270.6, 118.8, 24.7};

TEST_F(MeasureEndToEnd, CircleOnACoinAgreesWithItsSlopes) {
  Start(Photograph(L"coins.png"));
  SetMode(IDC_MODE_CIRCLE, rendal::kToolCircle);
  const cv::Point2f middle(0.5f * 384, 0.5f * 303);
  const cv::Point2f coin(270.6f, 118.8f);
  Drag(middle, coin);
  Drag(coin + cv::Point2f(0.25f * 303, 0), coin + cv::Point2f(24.7f, 0));
  const std::string line = MeasureWith({12, 2, 20, 1, 0, 360, 1, "last-"});
  Circle measured = {};
  ASSERT_EQ(
      std::sscanf(line.c_str(), "circle center = (%lf, %lf), radius = %lf",
                  &measured.x, &measured.y, &measured.radius),
      3)
      << line;
  const Circle other = CircleBySlopes(bench_.m_srcImage, kCoin, 6);
  EXPECT_NEAR(measured.x, other.x, 0.05);
  EXPECT_NEAR(measured.y, other.y, 0.05);
  EXPECT_NEAR(measured.radius, other.radius, 0.05);
  std::printf("window %.3f %.3f %.3f, slopes %.3f %.3f %.3f\n", measured.x,
              measured.y, measured.radius, other.x, other.y, other.radius);
}

TEST_F(MeasureEndToEnd, EllipseOnACoinPrintsWhatTheToolSays) {
  Start(Photograph(L"coins.png"));
  SetMode(IDC_MODE_ELLIPSE, rendal::kToolEllipse);
  const cv::Point2f middle(0.5f * 384, 0.5f * 303);
  const cv::Point2f coin(347, 187);
  Drag(middle, coin);
  Drag(coin + cv::Point2f(0.25f * 384, 0), coin + cv::Point2f(33, 0));
  Drag(coin + cv::Point2f(0, -0.25f * 303), coin + cv::Point2f(0, -30));
  Drag(coin - cv::Point2f(33, 0), coin - cv::Point2f(33, -12));
  EXPECT_NEAR(bench_.m_roiShapes[rendal::kToolEllipse].values[2], 20, 4);
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
  SetMode(IDC_MODE_BAND, rendal::kToolBand);
  Drag({0.25f * 384, 0.5f * 303}, {20, 196});
  Drag({0.75f * 384, 0.5f * 303}, {180, 196});
  const std::string line = MeasureWith({40, 5, 30, 1, 2, 0, 1, "first+"});
  EXPECT_GE(bench_.m_results.at(0).points.size(), 6u);  // three coins
  EXPECT_EQ(line.rfind("i = ", 0), 0u) << line;
}

TEST_F(MeasureEndToEnd, LineOnATripodsLegPrintsWhatTheToolSays) {
  Start(Photograph(L"camera.png"));
  SetMode(IDC_MODE_LINE, rendal::kToolLine);
  Drag({0.25f * 512, 0.5f * 512}, {282, 360});
  Drag({0.75f * 512, 0.5f * 512}, {246, 470});
  const std::string line = MeasureWith({30, 5, 20, 1, 2, 0, 1, "strongest"});
  EXPECT_EQ(line.rfind("line center = (", 0), 0u) << line;
}

// Upright and narrow, as the line finder wants it: the rocket of a photograph.
TEST_F(MeasureEndToEnd, LineFinderPrintsTheSameInEveryDisplay) {
  const cv::Mat photograph =
      cv::imread(Photograph(L"rocket.jpg").string(), cv::IMREAD_GRAYSCALE);
  ASSERT_FALSE(photograph.empty());
  const fs::path path =
      fs::temp_directory_path() /
      (L"rocket " + std::to_wstring(::GetCurrentProcessId()) + L".png");
  ASSERT_TRUE(
      cv::imwrite(path.string(), photograph(cv::Rect(290, 120, 64, 290))));
  Start(path);
  for (const int display : {0, 1, 2}) FindLineWith(display);
  EXPECT_GT(bench_.m_results.at(0).points.size(), 10u);
  fs::remove(path);
}

TEST_F(MeasureEndToEnd, ShownResultsPanUntilTheDisplayIsCleared) {
  Start(Photograph(L"coins.png"));
  SetMode(IDC_MODE_CIRCLE, rendal::kToolCircle);
  const cv::Point2f middle(0.5f * 384, 0.5f * 303);
  const cv::Point2f aside = middle + cv::Point2f(30, 20);
  MeasureWith({});
  Drag(middle, aside);  // pans
  EXPECT_EQ(bench_.m_roiShapes[rendal::kToolCircle].values[0], middle.x);
  const std::string before = MeasureWith({});
  ClearDisplay();
  Drag(middle, aside);  // moves the circle
  EXPECT_NEAR(bench_.m_roiShapes[rendal::kToolCircle].values[0], aside.x, 1);
  EXPECT_NE(MeasureWith({}), before);
}

}  // namespace
}  // namespace rendal_test
