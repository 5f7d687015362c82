// SPDX-License-Identifier: MIT
//
// Zoom, offset and pointer of the image view, and the mapping between the two
// coordinate systems:
//
//   view_x  = image_x * zoom + offsetX          image point -> view position
//   image_x = round((view_x - offsetX) / zoom)  view pixel -> image pixel
//
// with 32-bit floats throughout; round() goes half away from zero. No window,
// no image: sizes are arguments.
#ifndef RENDAL_APP_VIEW_VIEW_STATE_H_
#define RENDAL_APP_VIEW_VIEW_STATE_H_

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace rendal {

inline constexpr float kWheelInFactor = 1.25f;
inline constexpr float kWheelOutFactor = 0.8f;
inline constexpr float kMaxZoom = 128.0f;

// ViewState::grabbed when a drag pans.
inline constexpr int32_t kNothingGrabbed = -1;

struct ViewState {
  float zoom = 1.0f;       // view pixels per image pixel
  float fitZoom = 1.0f;    // whole image visible, never above 1
  float minZoom = 0.125f;  // the wheel goes no lower
  float offsetX = 0;       // view position of the image's top-left corner,
  float offsetY = 0;       // whole values [view px]
  int32_t viewWidth = 0;   // [view px]
  int32_t viewHeight = 0;

  int32_t pointerX = 0;  // last press or drag step [view px]
  int32_t pointerY = 0;
  int32_t hoverX = 0;  // last position seen [view px]
  int32_t hoverY = 0;
  bool dragging = false;  // the left button is held after a press in the view
  // kNothingGrabbed, or the grabbed handle: shape kind in the high 16 bits,
  // handle number in the low 16.
  int32_t grabbed = kNothingGrabbed;
  int32_t pressX = 0;  // last press [view px]
  int32_t pressY = 0;
  bool clicking = false;  // it has grabbed nothing and not been dragged since

  // Numbers of the components that are outlined.
  std::vector<int32_t> highlighted;

  bool Contains(int view_x, int view_y) const {
    return view_x >= 0 && view_y >= 0 && view_x < viewWidth &&
           view_y < viewHeight;
  }

  // View position of an image point.
  cv::Point2f ToView(float image_x, float image_y) const {
    return {image_x * zoom + offsetX, image_y * zoom + offsetY};
  }
  // Image position under a view position, not rounded.
  cv::Point2f ToImage(float view_x, float view_y) const {
    return {(view_x - offsetX) / zoom, (view_y - offsetY) / zoom};
  }
  // Image pixel that a view pixel shows.
  int ImageColumn(int view_x) const;
  int ImageRow(int view_y) const;

  // Sets all zooms and the offset for a new image: small images at 100 % and
  // centred, large ones shrunk to fit and centred.
  void FitTo(cv::Size image);
  // Back to fitZoom, centred.
  void ShowFit(cv::Size image);
  // 100 %, with the image point under the anchor staying there. Without an
  // anchor: the pointer if it lies in the view, else half the image's size
  // taken as a view position (deliberate, not the view's centre).
  void OneToOne(cv::Size image);
  void OneToOneAt(cv::Size image, int view_x, int view_y);
  // One wheel notch forward (delta > 0) or back, whatever its size; the image
  // point under the cursor stays there. Nothing outside the view or for 0;
  // false then.
  bool WheelAt(cv::Size image, int view_x, int view_y, int delta);
  // Pans, along each axis on its own, to have image columns and rows in the
  // middle of the view, unless all of them are in it. The corners are included.
  void BringIntoSight(cv::Point first, cv::Point last);

 private:
  void CenterAt(cv::Size image, float new_zoom);
  void ZoomAbout(cv::Size image, int view_x, int view_y, float new_zoom);
};

// value as an int, cut towards zero; what does not fit is brought to the
// nearest end of +-2^30, what is no number becomes 0.
int TruncateToInt(float value);
// The same, rounded half away from zero.
int RoundToInt(float value);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_VIEW_STATE_H_
