// SPDX-License-Identifier: MIT
#include "tests/windows/days_round.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "res/resource.h"
#include "tests/windows/screen.h"
#include "tests/windows/seen.h"
#include "tests/windows/twin.h"

namespace rendal_test {
namespace {

namespace fs = std::filesystem;
using rendal::CaliperParameters;

// What lies beyond the image is background here and something else in the
// library that the pictures are compared with, so they count from here on.
constexpr int kMarginPx = 6;
const cv::Size kElement(5, 3);
constexpr double kCircleTolerancePx = 0.05;
constexpr UINT kMessageBoxText = 0xFFFF;

// A folder that goes with the round.
class Scratch {
 public:
  Scratch()
      : path_(fs::temp_directory_path() /
              (L"round " + std::to_wstring(::GetCurrentProcessId()))) {
    fs::create_directories(path_);
  }
  ~Scratch() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  fs::path operator/(const wchar_t* name) const { return path_ / name; }

 private:
  fs::path path_;
};

// Components in the order of their first pixels: their pixels' numbers from 1,
// 0 elsewhere, and their areas.
struct Components {
  explicit Components(const cv::Mat& mask) {
    cv::Mat labels;
    const int count = cv::connectedComponents(mask, labels, 8, CV_32S);
    std::vector<int> order(count, 0);
    numbers = cv::Mat::zeros(mask.size(), CV_32S);
    for (int row = 0; row < mask.rows; ++row) {
      for (int col = 0; col < mask.cols; ++col) {
        const int label = labels.at<int>(row, col);
        if (label == 0) continue;
        if (order[label] == 0) {
          areas.push_back(0);
          order[label] = static_cast<int>(areas.size());
        }
        ++areas[order[label] - 1];
        numbers.at<int>(row, col) = order[label];
      }
    }
  }
  cv::Mat numbers;
  std::vector<int> areas;
};

cv::Mat ColorsOf(const Components& components) {
  cv::Mat colors(components.numbers.size(), CV_8UC3, cv::Scalar::all(0));
  for (int row = 0; row < colors.rows; ++row) {
    for (int col = 0; col < colors.cols; ++col) {
      const int number = components.numbers.at<int>(row, col);
      if (number == 0) continue;
      const auto& rgb = rendal::PaletteColor(number - 1);
      colors.at<cv::Vec3b>(row, col) = {static_cast<unsigned char>(rgb[2]),
                                        static_cast<unsigned char>(rgb[1]),
                                        static_cast<unsigned char>(rgb[0])};
    }
  }
  return colors;
}

// The mask and every background area that does not reach the picture's border.
cv::Mat Filled(const cv::Mat& mask) {
  cv::Mat outside;
  cv::copyMakeBorder(mask, outside, 1, 1, 1, 1, cv::BORDER_CONSTANT, 0);
  cv::floodFill(outside, {0, 0}, 128);
  return outside(cv::Rect(1, 1, mask.cols, mask.rows)) != 128;
}

cv::Mat By(cv::MorphTypes operation, const cv::Mat& mask) {
  cv::Mat out;
  cv::morphologyEx(mask, out, operation,
                   cv::getStructuringElement(cv::MORPH_RECT, kElement));
  return out;
}

cv::Mat ByCross(cv::MorphTypes operation, const cv::Mat& mask) {
  cv::Mat out;
  cv::morphologyEx(mask, out, operation,
                   cv::getStructuringElement(cv::MORPH_CROSS, {3, 3}));
  return out;
}

Circle CircleIn(const std::string& line) {
  Circle said = {};
  Require(std::sscanf(line.c_str(), "circle center = (%lf, %lf), radius = %lf",
                      &said.x, &said.y, &said.radius) == 3,
          "centre and radius in: " + line);
  return said;
}

class Round {
 public:
  explicit Round(fs::path pictures)
      : pictures_(std::move(pictures)),
        program_(ProgramPath(), {}),
        window_(program_.id()),
        twin_(window_) {}

  void Work() {
    try {
      Start();
      Blobs();
      CircleOnCoin();
      EllipseAndBand();
      Line();
      LineFinder();
      View();
      Language();
      SecondStart();
      End();
    } catch (...) {
      PictureOf(nullptr, "failed");
      throw;
    }
  }

 private:
  void Start();
  void Blobs();
  void SetOperations(const cv::Mat& older, const cv::Mat& newer);
  void Morphology(const cv::Mat& mask);
  void Connect(const cv::Mat& mask);
  void CircleOnCoin();
  void EllipseAndBand();
  void Line();
  void LineFinder();
  void View();
  void Language();
  void SecondStart();
  void End();

  void Load(const fs::path& path);
  cv::Mat Threshold(int min, int max, const std::string& picture);
  void PressBlob(int button, const std::wstring& done,
                 const std::wstring& label, const cv::Mat& expected,
                 const std::string& picture, int margin = 0);
  std::string Measure(const CaliperParameters& parameters,
                      const std::wstring& label, const std::string& line);

  void Picture(const std::string& name) { PictureOf(window_.dialog(), name); }
  void PictureOf(HWND window, const std::string& name);
  // Empties the console, keeping its text for the record.
  void NewConsole();
  std::string Console(const std::wstring& awaited) {
    return Utf8(window_.ConsoleTextWith(awaited));
  }

  const fs::path pictures_;
  const Scratch scratch_;
  Process program_;
  Operator window_;
  Twin twin_;
  int picture_number_ = 0;
  std::string said_;
};

void Round::PictureOf(HWND window, const std::string& name) {
  if (pictures_.empty()) return;
  char number[8];
  std::snprintf(number, sizeof number, "%02d_", ++picture_number_);
  SaveScreen(window, pictures_ / (number + name + ".png"));
}

void Round::NewConsole() {
  said_ += Utf8(window_.ConsoleText());
  window_.ClearConsole();
}

void Round::Start() {
  PictureOf(nullptr, "started");
  window_.DismissWelcome();
  BringToTop(window_.dialog());
  Require(window_.Status().empty(), "an empty status before the first load");
  Require(window_.ColumnTitles().size() == 9, "nine columns");
  Picture("window");
}

void Round::Load(const fs::path& path) {
  NewConsole();
  const std::string status = Utf8(window_.Load(path.wstring()));
  twin_.Loaded(path);
  const cv::Size size = twin_.bench.m_srcImage.size();
  Require(status.find("width = " + std::to_string(size.width) + ", height = " +
                      std::to_string(size.height)) != std::string::npos,
          "the image's size in: " + status);
  Console(L"src path = " + path.wstring());
}

cv::Mat Round::Threshold(int min, int max, const std::string& picture) {
  window_.SetSpin(IDC_MIN_GRAY_SPIN, min);
  window_.SetSpin(IDC_MAX_GRAY_SPIN, max);
  Require(window_.TextOf(IDC_MIN_GRAY) == std::to_wstring(min),
          "the band's lower end");
  Require(window_.TextOf(IDC_MAX_GRAY) == std::to_wstring(max),
          "the band's upper end");
  cv::Mat mask;
  cv::inRange(twin_.bench.m_srcImage, min, max, mask);
  PressBlob(IDC_THRESHOLD, L"threshold done", L"threshold", mask, picture);
  return mask;
}

void Round::PressBlob(int button, const std::wstring& done,
                      const std::wstring& label, const cv::Mat& expected,
                      const std::string& picture, int margin) {
  NewConsole();
  const std::wstring status = window_.StatusAfter(button);
  Require(status == done, Utf8(done) + " in the status, but: " + Utf8(status));
  const std::string text = Console(label + L"elasped time:");
  Require(text.find("s\n") != std::string::npos, "a time in: " + text);
  RequireMask(twin_, expected, margin, "the region after " + Utf8(done));
  Picture(picture);
}

void Round::Blobs() {
  const fs::path coins = Photograph(L"coins.png");
  Load(coins);
  RequireImage(twin_, "the photograph");
  Picture("image");
  const cv::Mat older = Threshold(80, 170, "threshold_first");
  const cv::Mat newer = Threshold(110, 255, "threshold_second");
  SetOperations(older, newer);
  Morphology(newer);
  PressBlob(IDC_FILL_UP, L"fill_up done", L"fill up", Filled(newer), "fill_up");
  Connect(newer);
  window_.SetSpin(IDC_MIN_GRAY_SPIN, 0);
  window_.Click(IDC_TOGGLE_GRAY);
  Require(window_.SpinPosition(IDC_MIN_GRAY_SPIN) == 128 &&
              window_.SpinPosition(IDC_MAX_GRAY_SPIN) == 255,
          "the bright half after the first toggle");
  window_.Click(IDC_TOGGLE_GRAY);
  Require(window_.SpinPosition(IDC_MIN_GRAY_SPIN) == 0 &&
              window_.SpinPosition(IDC_MAX_GRAY_SPIN) == 127,
          "the dark half after the second");
}

void Round::SetOperations(const cv::Mat& older, const cv::Mat& newer) {
  PressBlob(IDC_UNION, L"union2 done", L"union2", older | newer, "union");
  PressBlob(IDC_DIFFERENCE, L"difference done", L"difference", older & ~newer,
            "difference");
  PressBlob(IDC_INTERSECTION, L"intersection done", L"intersection",
            older & newer, "intersection");
}

void Round::Morphology(const cv::Mat& mask) {
  Require(!::IsWindowEnabled(window_.Control(IDC_ELEMENT_HEIGHT)),
          "a circle without a height");
  window_.Select(IDC_ELEMENT, 1);
  Require(::IsWindowEnabled(window_.Control(IDC_ELEMENT_HEIGHT)),
          "a rectangle with a height");
  window_.SetSpin(IDC_ELEMENT_WIDTH_SPIN, kElement.width);
  window_.SetSpin(IDC_ELEMENT_HEIGHT_SPIN, kElement.height);
  const auto press = [&](int button, const wchar_t* name,
                         const cv::Mat& expected, const std::string& picture) {
    PressBlob(button, std::wstring(name) + L" done", name, expected, picture,
              kMarginPx);
  };
  press(IDC_DILATION, L"dilation1", By(cv::MORPH_DILATE, mask), "dilation");
  press(IDC_EROSION, L"erosion1", By(cv::MORPH_ERODE, mask), "erosion");
  press(IDC_OPENING, L"opening", By(cv::MORPH_OPEN, mask), "opening");
  press(IDC_CLOSING, L"closing", By(cv::MORPH_CLOSE, mask), "closing");
  press(IDC_TOP_HAT, L"top_hat", By(cv::MORPH_TOPHAT, mask), "top_hat");
  press(IDC_BOTTOM_HAT, L"bottom_hat", By(cv::MORPH_BLACKHAT, mask),
        "bottom_hat");
  press(IDC_BOUNDARY, L"boundary", mask & ~ByCross(cv::MORPH_ERODE, mask),
        "boundary_inner");
  window_.Select(IDC_BOUNDARY_TYPE, 2);
  press(IDC_BOUNDARY, L"boundary", ByCross(cv::MORPH_DILATE, mask) & ~mask,
        "boundary_outer");
}

void Round::Connect(const cv::Mat& mask) {
  const Components components(mask);
  const std::wstring count = std::to_wstring(components.areas.size());
  NewConsole();
  Require(window_.StatusAfter(IDC_CONNECTION) ==
              L"connection done, connected components =" + count,
          Utf8(count) + " components in the status");
  Console(L"connected components = " + count);
  RequirePicture(twin_, ColorsOf(components), 0,
                 "each component in its colour");
  const auto rows = window_.Rows();
  Require(rows.size() == std::min<size_t>(components.areas.size(), 100),
          "a row for each component");
  for (size_t i = 0; i < rows.size(); ++i) {
    Require(rows[i].at(0) == std::to_wstring(i + 1) &&
                rows[i].at(1) == std::to_wstring(components.areas[i]),
            "number and area in row " + std::to_string(i + 1));
  }
  twin_.Wheel({192, 150}, 4);
  RequirePicture(twin_, ColorsOf(components), 0, "the components, enlarged");
  Picture("connection");
  twin_.ZoomFit();
}

std::string Round::Measure(const CaliperParameters& parameters,
                           const std::wstring& label, const std::string& line) {
  twin_.Type(parameters);
  NewConsole();
  window_.Click(IDC_MEASURE);
  const std::string text = Console(Wide(line));
  Require(text.starts_with(Utf8(label) + "\nelasped time:"),
          "the time first in: " + text);
  twin_.bench.ShowResult({});  // from now on presses pan
  return text.substr(text.find(line));
}

void Round::CircleOnCoin() {
  twin_.SetMode(IDC_MODE_CIRCLE, rendal::kToolCircle);
  twin_.ClearDisplay();
  const cv::Point2f middle(0.5f * 384, 0.5f * 303);
  const cv::Point2f coin(270.6f, 118.8f);
  RequireColors(twin_, {kSeenYellow}, {kSeenRed}, 100,
                "the circle to be placed");
  Picture("circle_placed");
  twin_.Drag(middle, coin);
  twin_.Drag(coin + cv::Point2f(0.25f * 303, 0), coin + cv::Point2f(24.7f, 0));
  const std::string text = Measure({12, 2, 20, 1, 0, 360, 1, "last-"},
                                   L"measure circle", "circle center = (");
  const Circle seen = CircleIn(text);
  const Circle other = CircleBySlopes(twin_.bench.m_srcImage, kCoin, 6);
  Require(std::abs(seen.x - other.x) <= kCircleTolerancePx &&
              std::abs(seen.y - other.y) <= kCircleTolerancePx &&
              std::abs(seen.radius - other.radius) <= kCircleTolerancePx,
          "the circle of an independent measurement, (" +
              std::to_string(other.x) + ", " + std::to_string(other.y) + "), " +
              std::to_string(other.radius) + ", in: " + text);
  std::printf("circle: window %.4f %.4f %.4f, independent %.4f %.4f %.4f\n",
              seen.x, seen.y, seen.radius, other.x, other.y, other.radius);
  RequireColors(twin_, {kSeenGreen, kSeenMagenta}, {}, 100, "calipers");
  Picture("circle_exact");
  twin_.ClearDisplay();

  // Fewer calipers, closer, on a circle drawn more carelessly.
  twin_.Drag(coin + cv::Point2f(24.7f, 0), coin + cv::Point2f(29, 0));
  const std::string again = Measure({14, 4, 20, 1, 2, 24, 1, "last-"},
                                    L"measure circle", "circle center = (");
  twin_.Wheel(coin, 10);
  RequireCircle(twin_, CircleIn(again), "the circle that the console says");
  RequireColors(twin_, {kSeenGreen, kSeenMagenta, kSeenYellow}, {}, 100,
                "calipers, enlarged");
  Picture("circle");
  twin_.ClearDisplay();
  RequireColors(twin_, {kSeenYellow}, {kSeenBlue, kSeenGreen, kSeenMagenta},
                100, "a cleared display");
  Picture("cleared");
  twin_.ZoomFit();
}

void Round::EllipseAndBand() {
  twin_.SetMode(IDC_MODE_ELLIPSE, rendal::kToolEllipse);
  const cv::Point2f middle(0.5f * 384, 0.5f * 303);
  const cv::Point2f coin(347, 187);
  twin_.Drag(middle, coin);
  twin_.Drag(coin + cv::Point2f(0.25f * 384, 0), coin + cv::Point2f(38, 0));
  twin_.Drag(coin + cv::Point2f(0, -0.25f * 303), coin + cv::Point2f(0, -36));
  twin_.Drag(coin - cv::Point2f(38, 0), coin - cv::Point2f(38, -14));
  const std::string text = Measure({20, 6, 20, 1, 2, 24, 1, "strongest"},
                                   L"measure ellipse", "ellipse center = (");
  double x = 0, y = 0, size1 = 0, size2 = 0;
  Require(std::sscanf(text.c_str(),
                      "ellipse center = (%lf, %lf), size = (%lf, %lf)", &x, &y,
                      &size1, &size2) == 4 &&
              std::abs(x - 347) < 1 && std::abs(y - 186.7) < 1 &&
              std::abs(std::sqrt(size1 * size2) - 31.6) < 1,
          "the coin's centre and sizes in: " + text);
  twin_.Wheel(coin, 8);
  RequireColors(twin_, {kSeenBlue, kSeenGreen, kSeenMagenta, kSeenYellow}, {},
                100, "the fitted ellipse");
  Picture("ellipse");
  twin_.ClearDisplay();
  twin_.ZoomFit();

  twin_.SetMode(IDC_MODE_BAND, rendal::kToolBand);
  twin_.Drag({0.25f * 384, 0.5f * 303}, {20, 196});
  twin_.Drag({0.75f * 384, 0.5f * 303}, {180, 196});
  Measure({40, 5, 30, 1, 2, 0, 1, "first+"}, L"measure pos", "i =   1, x = ");
  twin_.Wheel({100, 196}, 7);
  RequireColors(twin_, {kSeenMagenta, kSeenYellow}, {kSeenBlue}, 50,
                "the edges in the band");
  Picture("band");
  twin_.ClearDisplay();
}

void Round::Line() {
  Load(Photograph(L"camera.png"));
  twin_.SetMode(IDC_MODE_LINE, rendal::kToolLine);
  twin_.Drag({0.25f * 512, 0.5f * 512}, {282, 360});
  twin_.Drag({0.75f * 512, 0.5f * 512}, {246, 470});
  Measure({30, 5, 20, 1, 2, 0, 1, "strongest"}, L"measure line",
          "line center = (");
  twin_.Wheel({264, 415}, 6);
  RequireColors(twin_, {kSeenBlue, kSeenGreen, kSeenMagenta, kSeenYellow}, {},
                100, "the fitted line");
  Picture("line");
  twin_.ClearDisplay();
  twin_.SetMode(IDC_MODE_NONE, rendal::kToolNone);
  RequireImage(twin_, "the bare image");
}

void Round::LineFinder() {
  const fs::path rocket = scratch_ / L"rocket.png";
  WritePng(rocket, UprightRocket());
  Load(rocket);
  RequireImage(twin_, "the rocket");
  const std::vector<std::vector<cv::Vec3b>> shown = {
      {kSeenWhite}, {kSeenBlue, kSeenGreen, kSeenMagenta}, {kSeenMagenta}};
  for (int display = 0; display < 3; ++display) {
    twin_.ZoomFit();
    window_.Select(IDC_FIND_LINE_DISPLAY, display);
    NewConsole();
    window_.Click(IDC_FIND_LINE);
    const std::string text = Console(L"err_code =   0");
    Require(text.starts_with("HoughLinesP found "), "the lines in: " + text);
    Console(L"amp = ");
    twin_.Wheel({30, 60}, display == 2 ? 12 : 5);
    RequireColors(twin_, shown[display], {}, 50, "the line finder's display");
    Picture("line_finder_" + std::to_string(display + 1));
  }
  twin_.ClearDisplay();
}

void Round::View() {
  Load(Photograph(L"retina.jpg"));
  RequireImage(twin_, "a large photograph, shrunk to fit");
  Require(twin_.view.zoom < 1, "a photograph larger than the view");
  Picture("fit");
  twin_.ZoomOne();
  Require(twin_.view.zoom == 1, "1:1");
  RequireImage(twin_, "the photograph 1:1");
  Picture("one_to_one");
  twin_.Drag({700, 700}, {600, 650});
  RequireImage(twin_, "the photograph, panned");
  Picture("panned");
  twin_.Wheel({700, 700}, 20);
  RequireImage(twin_, "the photograph, enlarged");
  Picture("enlarged");
  twin_.Wheel({700, 700}, -40);
  RequireImage(twin_, "the photograph at its smallest");
  Picture("smallest");
  twin_.ZoomFit();
  RequireImage(twin_, "the photograph, fitted again");
}

void Round::Language() {
  const std::wstring caption = window_.TextOf(IDC_MEASURE);
  const std::wstring status = window_.Status();
  window_.SwitchLanguage();
  Require(window_.TextOf(IDC_MEASURE) == L"Measure", "an English button");
  Require(window_.Status() == L"open image,width = 1411, height = 1411",
          "the last message in English");
  Picture("english");
  ::PostMessageW(window_.dialog(), WM_SYSCOMMAND, IDM_ABOUTBOX, 0);
  HWND about = nullptr;
  WaitUntil("the about box", [&] {
    about = window_.FindModal();
    return about != nullptr;
  });
  PictureOf(nullptr, "about");
  ::PostMessageW(about, WM_COMMAND, IDOK, 0);
  WaitUntil("the about box's end", [&] { return !::IsWindow(about); });
  window_.SwitchLanguage();
  Require(window_.TextOf(IDC_MEASURE) == caption, "the first language again");
  Require(window_.Status() == status, "the message in the first language");
}

void Round::SecondStart() {
  Process second(ProgramPath(), {});
  HWND box = nullptr;
  WaitUntil("the second start's message", [&] {
    for (const HWND candidate : TopWindows(second.id())) {
      if (::GetDlgItem(candidate, kMessageBoxText)) box = candidate;
    }
    return box != nullptr;
  });
  PictureOf(nullptr, "second_start");
  ::PostMessageW(box, WM_COMMAND, IDOK, 0);
  Require(second.ExitCode() == 0, "the second start's end");
  Require(!program_.HasEnded(), "the first one at work");
  RequireImage(twin_, "the first one's picture");
}

void Round::End() {
  NewConsole();
  window_.Close();
  Require(program_.ExitCode() == 0, "an end without an error");
  if (!pictures_.empty()) {
    std::ofstream(pictures_ / "console.txt", std::ios::binary) << said_;
  }
}

}  // namespace

void WorkDaysRound(const fs::path& pictures) { Round(pictures).Work(); }

}  // namespace rendal_test
