// SPDX-License-Identifier: MIT
#include "app/view/roi_interaction.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace rendal {
namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr float kSmallestSizeImagePx = 1;

int32_t Grab(int kind, int handle) { return kind << 16 | handle; }
int GrabbedKind(int32_t grabbed) { return grabbed >> 16; }
int GrabbedHandle(int32_t grabbed) { return grabbed & 0xFFFF; }

// Unit vector of an angle that counts counter-clockwise on screen, where rows
// grow downwards.
cv::Point2f Direction(float degrees) {
  const double radians = degrees / kDegreesPerRadian;
  return {static_cast<float>(std::cos(radians)),
          static_cast<float>(-std::sin(radians))};
}

float AngleOf(cv::Point2f direction) {
  return static_cast<float>(std::atan2(-direction.y, direction.x) *
                            kDegreesPerRadian);
}

float Distance(cv::Point2f a, cv::Point2f b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

// Length of `v` along a unit vector, never below the smallest size.
float SizeAlong(cv::Point2f v, cv::Point2f unit) {
  return std::max(std::abs(v.dot(unit)), kSmallestSizeImagePx);
}

void MoveEllipseHandle(RoiShape& shape, int handle, cv::Point2f image) {
  float* const v = shape.values;
  const cv::Point2f center(v[0], v[1]);
  const cv::Point2f arm = image - center;
  switch (handle) {
    case 0:
      v[0] = image.x;
      v[1] = image.y;
      break;
    case 1:
      v[3] = SizeAlong(arm, Direction(v[2]));
      break;
    case 2:
      v[4] = SizeAlong(arm, Direction(v[2] + 90));
      break;
    case 3:
      // This handle sits opposite to where the angle points. On the centre it
      // says nothing about the angle.
      if (arm != cv::Point2f(0, 0)) v[2] = AngleOf(-arm);
      break;
  }
}

void PressLeft(const MouseEvent& event, const Workbench& workbench,
               ViewState& view) {
  view.pointerX = event.x;
  view.pointerY = event.y;
  view.pressX = event.x;
  view.pressY = event.y;
  view.dragging = true;
  view.clicking = true;
  view.grabbed = kNothingGrabbed;
  const RoiShape* const shape = workbench.CurrentShape();
  // Shapes can be edited only while no results are shown.
  if (shape == nullptr || workbench.m_hideResults == 0) return;
  const int handle = HitHandle(*shape, view, event.x, event.y);
  if (handle < 0) return;
  view.grabbed = Grab(shape->kind, handle);
  view.clicking = false;
}

// Whether a click ends.
bool ReleaseLeft(ViewState& view) {
  const bool clicked = view.dragging && view.clicking;
  view.dragging = false;
  view.clicking = false;
  return clicked;
}

void Pan(const MouseEvent& event, ViewState& view) {
  view.offsetX += static_cast<float>(event.x - view.pointerX);
  view.offsetY += static_cast<float>(event.y - view.pointerY);
  view.pointerX = event.x;
  view.pointerY = event.y;
}

void DragHandle(const MouseEvent& event, Workbench& workbench,
                const ViewState& view) {
  const size_t kind = GrabbedKind(view.grabbed);
  if (kind >= workbench.m_roiShapes.size()) return;
  MoveHandle(
      workbench.m_roiShapes[kind], GrabbedHandle(view.grabbed),
      view.ToImage(static_cast<float>(event.x), static_cast<float>(event.y)));
}

void Move(const MouseEvent& event, Workbench& workbench, ViewState& view) {
  view.hoverX = event.x;
  view.hoverY = event.y;
  // A button that is let go outside the view says so only here.
  if (!event.left_held) view.dragging = false;
  if (!view.dragging) return;
  if (std::abs(event.x - view.pressX) >= kDragPx ||
      std::abs(event.y - view.pressY) >= kDragPx) {
    view.clicking = false;
  }
  if (view.grabbed == kNothingGrabbed) {
    Pan(event, view);
  } else {
    DragHandle(event, workbench, view);
  }
}

}  // namespace

std::vector<cv::Point2f> HandlesOf(const RoiShape& shape) {
  const float* const v = shape.values;
  switch (shape.kind) {
    case kToolLine:
    case kToolBand:
      return {{v[0], v[1]}, {v[2], v[3]}};
    case kToolCircle:
      return {{v[0], v[1]}, {v[0] + v[2], v[1]}};
    case kToolEllipse: {
      const cv::Point2f center(v[0], v[1]);
      const cv::Point2f first = v[3] * Direction(v[2]);
      const cv::Point2f second = v[4] * Direction(v[2] + 90);
      return {center, center + first, center + second, center - first};
    }
    default:
      return {};
  }
}

int HitHandle(const RoiShape& shape, const ViewState& view, int view_x,
              int view_y) {
  const float radius = kHandleRadiusImagePx * view.zoom;
  const std::vector<cv::Point2f> handles = HandlesOf(shape);
  for (size_t i = 0; i < handles.size(); ++i) {
    const cv::Point2f at = view.ToView(handles[i].x, handles[i].y);
    const float dx = static_cast<float>(view_x) - at.x;
    const float dy = static_cast<float>(view_y) - at.y;
    if (dx * dx + dy * dy < radius * radius) return static_cast<int>(i);
  }
  return -1;
}

void MoveHandle(RoiShape& shape, int handle, cv::Point2f image) {
  float* const v = shape.values;
  switch (shape.kind) {
    case kToolLine:
    case kToolBand:
      v[handle == 0 ? 0 : 2] = image.x;
      v[handle == 0 ? 1 : 3] = image.y;
      break;
    case kToolCircle:
      if (handle == 0) {
        v[0] = image.x;
        v[1] = image.y;
      } else {
        v[2] = std::max(Distance(image, {v[0], v[1]}), kSmallestSizeImagePx);
      }
      break;
    case kToolEllipse:
      MoveEllipseHandle(shape, handle, image);
      break;
  }
}

bool OnMouse(const MouseEvent& event, Workbench& workbench, ViewState& view) {
  if (!workbench.HasImage() || !view.Contains(event.x, event.y)) return false;
  const cv::Size image = workbench.m_srcImage.size();
  bool clicked = false;
  switch (event.code) {
    case kMouseMove:
      Move(event, workbench, view);
      break;
    case kLeftDown:
      PressLeft(event, workbench, view);
      break;
    case kLeftUp:
      clicked = ReleaseLeft(view);
      break;
    case kLeftDoubleClick:
      view.OneToOneAt(image, event.x, event.y);
      break;
    case kRightDoubleClick:
    case kMiddleDoubleClick:
      view.ShowFit(image);
      break;
    default:
      return false;
  }
  workbench.RearmRedraw();
  return clicked;
}

}  // namespace rendal
