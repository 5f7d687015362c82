// SPDX-License-Identifier: MIT
#include "app/view/view_state.h"

#include <algorithm>
#include <cmath>

namespace rendal {
namespace {

// Extent in view pixels of `length` image pixels: whole pixels, except that an
// image thinner than one view pixel keeps its fraction, so that positions
// relative to it stay defined.
float ShownExtent(int length, float zoom) {
  const float exact = static_cast<float>(length) * zoom;
  const float whole = static_cast<float>(TruncateToInt(exact));
  return whole >= 1 ? whole : exact;
}

// Position of a view coordinate relative to the shown image, 0 at its near
// edge, 1 at its far one.
float Relative(int view, float offset, float extent) {
  return (static_cast<float>(view) - offset) / extent;
}

// Offset that shows image positions first..last in the middle of the view, or
// the present one if they are all in it.
float OffsetShowing(int first, int last, float zoom, float offset, int view) {
  // What an enlarged pixel covers beyond the view pixel at its middle.
  const float beyond = std::max(0.0f, (zoom - 1) / 2);
  const float low = static_cast<float>(first) * zoom + offset - beyond;
  const float high = static_cast<float>(last) * zoom + offset + beyond;
  if (low >= 0 && high < static_cast<float>(view)) return offset;
  return std::round(offset + (static_cast<float>(view) - low - high) / 2);
}

float OffsetKeeping(int view, float relative, float extent) {
  return static_cast<float>(view - TruncateToInt(relative * extent + 0.5f));
}

}  // namespace

int TruncateToInt(float value) {
  constexpr float kLimit = 1 << 30;
  if (std::isnan(value)) return 0;
  return static_cast<int>(std::clamp(value, -kLimit, kLimit));
}

int RoundToInt(float value) { return TruncateToInt(std::round(value)); }

int ViewState::ImageColumn(int view_x) const {
  return RoundToInt((static_cast<float>(view_x) - offsetX) / zoom);
}

int ViewState::ImageRow(int view_y) const {
  return RoundToInt((static_cast<float>(view_y) - offsetY) / zoom);
}

void ViewState::FitTo(cv::Size image) {
  const float across = static_cast<float>(viewWidth) / image.width;
  const float down = static_cast<float>(viewHeight) / image.height;
  // An image without pixels is "shown" at 100 %.
  fitZoom = image.empty() ? 1.0f : std::min(1.0f, std::min(down, across));
  minZoom = 0.5f * fitZoom;
  ShowFit(image);
}

void ViewState::ShowFit(cv::Size image) { CenterAt(image, fitZoom); }

void ViewState::CenterAt(cv::Size image, float new_zoom) {
  zoom = new_zoom;
  const auto margin = [new_zoom](int view, int length) {
    return (view - TruncateToInt(static_cast<float>(length) * new_zoom)) / 2;
  };
  offsetX = static_cast<float>(margin(viewWidth, image.width));
  offsetY = static_cast<float>(margin(viewHeight, image.height));
}

void ViewState::OneToOne(cv::Size image) {
  if (Contains(pointerX, pointerY)) {
    OneToOneAt(image, pointerX, pointerY);
  } else {
    OneToOneAt(image, image.width / 2, image.height / 2);
  }
}

void ViewState::OneToOneAt(cv::Size image, int view_x, int view_y) {
  ZoomAbout(image, view_x, view_y, 1.0f);
}

bool ViewState::WheelAt(cv::Size image, int view_x, int view_y, int delta) {
  if (!Contains(view_x, view_y) || delta == 0) return false;
  const float new_zoom = delta > 0 ? std::min(zoom * kWheelInFactor, kMaxZoom)
                                   : std::max(zoom * kWheelOutFactor, minZoom);
  ZoomAbout(image, view_x, view_y, new_zoom);
  return true;
}

void ViewState::BringIntoSight(cv::Point first, cv::Point last) {
  offsetX = OffsetShowing(first.x, last.x, zoom, offsetX, viewWidth);
  offsetY = OffsetShowing(first.y, last.y, zoom, offsetY, viewHeight);
}

void ViewState::ZoomAbout(cv::Size image, int view_x, int view_y,
                          float new_zoom) {
  const float relative_x =
      Relative(view_x, offsetX, ShownExtent(image.width, zoom));
  const float relative_y =
      Relative(view_y, offsetY, ShownExtent(image.height, zoom));
  zoom = new_zoom;
  offsetX = OffsetKeeping(view_x, relative_x, ShownExtent(image.width, zoom));
  offsetY = OffsetKeeping(view_y, relative_y, ShownExtent(image.height, zoom));
}

}  // namespace rendal
