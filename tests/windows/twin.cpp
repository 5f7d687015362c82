// SPDX-License-Identifier: MIT
#include "tests/windows/twin.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <string>

#include "app/view/image_loader.h"
#include "app/view/roi_interaction.h"
#include "app/view/view_commands.h"
#include "res/resource.h"

namespace rendal_test {
namespace {

int SelectionIndex(const std::string& name) {
  const std::array<std::string, 7> names = {
      "first+", "first-", "first", "last+", "last-", "last", "strongest"};
  return static_cast<int>(std::find(names.begin(), names.end(), name) -
                          names.begin());
}

// As an operator types it: no zeros at the end.
std::wstring Number(double value) {
  wchar_t text[32];
  std::swprintf(text, std::size(text), L"%g", value);
  return text;
}

}  // namespace

Twin::Twin(const Operator& program) : window(program) {
  const SIZE size = window.ViewSize();
  view.viewWidth = size.cx;
  view.viewHeight = size.cy;
}

void Twin::Loaded(const std::filesystem::path& image) {
  rendal::LoadImageFile(image, bench, view);
}

void Twin::SetMode(int button, rendal::ToolMode mode) {
  window.Click(button);
  rendal::SelectToolMode(bench, mode);
}

void Twin::ClearDisplay() {
  window.Click(IDC_CLEAR_DISPLAY);
  rendal::ClearDisplay(bench);
}

void Twin::Drag(cv::Point2f from, cv::Point2f to) {
  const cv::Point start = ViewPixel(from);
  const cv::Point end = ViewPixel(to);
  window.Drag({start.x, start.y}, {end.x, end.y});
  rendal::OnMouse({rendal::kLeftDown, start.x, start.y}, bench, view);
  rendal::OnMouse({rendal::kMouseMove, end.x, end.y}, bench, view);
  rendal::OnMouse({rendal::kLeftUp, end.x, end.y}, bench, view);
}

void Twin::Wheel(cv::Point2f at, int notches) {
  const cv::Point cursor = ViewPixel(at);
  const int delta = notches > 0 ? WHEEL_DELTA : -WHEEL_DELTA;
  for (int i = 0; i < std::abs(notches); ++i) {
    window.Wheel({cursor.x, cursor.y}, delta);
    rendal::ZoomWheel(bench, view, cursor.x, cursor.y, delta);
  }
}

void Twin::ZoomOne() {
  window.Click(IDC_ZOOM_ONE);
  rendal::ZoomOne(bench, view);
}

void Twin::ZoomFit() {
  window.Click(IDC_ZOOM_FIT);
  rendal::ZoomFit(bench, view);
}

void Twin::Type(const rendal::CaliperParameters& p) const {
  window.Type(IDC_LENGTH, Number(p.length));
  window.Type(IDC_WIDTH, Number(p.width));
  window.Type(IDC_AMPLITUDE, Number(p.amplitude));
  window.Type(IDC_SIGMA, Number(p.sigma));
  window.Type(IDC_REPS, Number(p.reps));
  window.SetSpin(IDC_COUNT_SPIN, p.count);
  window.Select(IDC_DIRECTION, p.direction > 0 ? 0 : 1);
  window.Select(IDC_SELECTION, SelectionIndex(p.selection));
}

cv::Point Twin::ViewPixel(cv::Point2f image) const {
  return view.ToView(image.x, image.y);
}

}  // namespace rendal_test
