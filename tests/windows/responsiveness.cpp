// SPDX-License-Identifier: MIT
#include "tests/windows/responsiveness.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

#include "res/resource.h"
#include "tests/windows/operator.h"
#include "tests/windows/photographs.h"
#include "tests/windows/screen.h"
#include "tests/windows/twin.h"

namespace rendal_test {
namespace {

namespace fs = std::filesystem;

constexpr int kRepetitions = 9;
constexpr int kSettleMs = 300;
constexpr UINT_PTR kRefreshTimer = 1;
constexpr double kStripTop = 0.38;  // of the view's height
constexpr double kStripBottom = 0.52;
constexpr int kRegionGoalMs = 100;
constexpr int kCaliperGoalMs = 50;
constexpr int kDiscRadius = 10;

cv::Mat Enlarged() {
  cv::Mat image;
  cv::resize(GreyPhotograph(L"coins.png"), image, {5120, 4040}, 0, 0,
             cv::INTER_CUBIC);
  return image;
}

cv::Mat Tiled() { return cv::repeat(GreyPhotograph(L"camera.png"), 8, 10); }

// A strip across the view in which every press leaves something: the coins of
// one row, and the middle of every shape.
RECT StripOf(HWND view) {
  RECT place = {};
  ::GetWindowRect(view, &place);
  const int height = place.bottom - place.top;
  place.bottom = place.top + static_cast<int>(kStripBottom * height);
  place.top += static_cast<int>(kStripTop * height);
  return place;
}

double MsOf(const std::function<void()>& act) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  act();
  return std::chrono::duration<double, std::milli>(Clock::now() - start)
      .count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct Step {
  const char* name;
  int button;
};

constexpr Step kRegionSteps[] = {
    {"threshold", IDC_THRESHOLD},
    {"connection", IDC_CONNECTION},
    {"fill_up", IDC_FILL_UP},
    {"dilation, disc 10", IDC_DILATION},
    {"erosion, disc 10", IDC_EROSION},
    {"opening, disc 10", IDC_OPENING},
    {"closing, disc 10", IDC_CLOSING},
    {"top_hat, disc 10", IDC_TOP_HAT},
    {"bottom_hat, disc 10", IDC_BOTTOM_HAT},
};
// Buttons are the shapes'.
constexpr Step kCaliperSteps[] = {
    {"line, 200 calipers", IDC_MODE_LINE},
    {"circle, 200 calipers", IDC_MODE_CIRCLE},
    {"ellipse, 200 calipers", IDC_MODE_ELLIPSE},
};

class Stopwatch {
 public:
  Stopwatch() : program_(ProgramPath(), {}), window_(program_.id()) {
    window_.DismissWelcome();
    BringToTop(window_.dialog());
  }
  void Time(const char* title, const cv::Mat& image);

 private:
  // What one press costs [ms]; handler and refresh are timed in a press of
  // their own, from whose end to the other's start no time passes.
  struct Press {
    double picture;  // from the click until the screen shows it
    double tool;     // what the console says
    double handler;  // the click's, with the tool in it
    double refresh;  // the tick's that paints the view
  };

  void Load(const cv::Mat& image);
  void TimeStep(const Step& step, int button, int goal_ms);
  Press TimePress(int button, const cv::Mat& cleared);
  cv::Mat Strip() const { return ScreenPart(StripOf(window_.ViewWindow())); }
  cv::Mat ClearedStrip() const;
  void Clear(const cv::Mat& cleared) const;
  double ToolMs() const;

  Process program_;
  Operator window_;
};

void Stopwatch::Load(const cv::Mat& image) {
  const fs::path path = fs::temp_directory_path() /
                        (L"large " + std::to_wstring(program_.id()) + L".bmp");
  std::vector<unsigned char> bytes;
  cv::imencode(".bmp", image, bytes);
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  window_.Load(path.wstring());
  fs::remove(path);
}

cv::Mat Stopwatch::ClearedStrip() const {
  window_.Click(IDC_CLEAR_DISPLAY);
  cv::Mat last, next = Strip();
  do {
    last = next;
    ::Sleep(kSettleMs);
    next = Strip();
  } while (cv::norm(last, next, cv::NORM_L1) != 0);
  return next;
}

// Returns when the screen shows nothing but the image, and the console nothing.
void Stopwatch::Clear(const cv::Mat& cleared) const {
  window_.Click(IDC_CLEAR_DISPLAY);
  window_.ClearConsole();
  WaitUntil("a cleared display",
            [&] { return cv::norm(Strip(), cleared, cv::NORM_L1) == 0; });
}

Stopwatch::Press Stopwatch::TimePress(int button, const cv::Mat& cleared) {
  Press press = {};
  Clear(cleared);
  press.picture = MsOf([&] {
    window_.Press(button);
    for (int looks = 0; cv::norm(Strip(), cleared, cv::NORM_L1) == 0; ++looks) {
      if (looks > 10'000) {
        throw std::runtime_error("nothing new to see after pressing " +
                                 std::to_string(button));
      }
    }
  });
  press.tool = ToolMs();
  Clear(cleared);
  press.handler = MsOf([&] { window_.Click(button); });
  press.refresh =
      MsOf([&] { Send(window_.dialog(), WM_TIMER, kRefreshTimer); });
  return press;
}

// What the console says of the last press.
double Stopwatch::ToolMs() const {
  const std::string text = Utf8(window_.ConsoleTextWith(L"elasped time:"));
  const std::string label = "elasped time:";
  return 1000 * std::stod(text.substr(text.find(label) + label.size()));
}

void Stopwatch::TimeStep(const Step& step, int button, int goal_ms) {
  const cv::Mat cleared = ClearedStrip();
  std::vector<Press> presses;
  for (int i = 0; i < kRepetitions; ++i) {
    presses.push_back(TimePress(button, cleared));
  }
  const auto all = [&](double Press::*part) {
    std::vector<double> values;
    for (const Press& press : presses) values.push_back(press.*part);
    return values;
  };
  const std::vector<double> pictures = all(&Press::picture);
  std::printf("| %s | %.0f | %.0f | %d | %.1f | %.1f | %.1f |\n", step.name,
              Median(pictures),
              *std::max_element(pictures.begin(), pictures.end()), goal_ms,
              Median(all(&Press::tool)), Median(all(&Press::handler)),
              Median(all(&Press::refresh)));
  std::fflush(stdout);
}

void Stopwatch::Time(const char* title, const cv::Mat& image) {
  std::printf(
      "| %s, %d x %d | click to picture | worst | goal | tool | handler | "
      "refresh |\n|---|---|---|---|---|---|---|\n",
      title, image.cols, image.rows);
  Load(image);
  window_.Select(IDC_ELEMENT, 0);
  window_.SetSpin(IDC_ELEMENT_WIDTH_SPIN, kDiscRadius);
  window_.Click(IDC_MODE_NONE);
  for (const Step& step : kRegionSteps) {
    TimeStep(step, step.button, kRegionGoalMs);
  }
  Twin(window_).Type({60, 20, 20, 1, 2, 200, 1, "strongest"});
  for (const Step& step : kCaliperSteps) {
    window_.Click(step.button);
    TimeStep(step, IDC_MEASURE, kCaliperGoalMs);
  }
  std::vector<double> looks;
  for (int i = 0; i < kRepetitions; ++i) {
    looks.push_back(MsOf([this] { Strip(); }));
  }
  std::printf("\none look at the screen: %.1f ms\n\n", Median(looks));
}

}  // namespace

void MeasureResponsiveness() {
  Stopwatch stopwatch;
  stopwatch.Time("coins, enlarged", Enlarged());
  stopwatch.Time("camera, tiled", Tiled());
}

}  // namespace rendal_test
