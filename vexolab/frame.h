// SPDX-License-Identifier: MIT
//
// The image and a measure rectangle's own coordinates: u along the scan, v
// across it, both zero at the centre.
#ifndef VEXOLAB_FRAME_H_
#define VEXOLAB_FRAME_H_

#include <cmath>
#include <numbers>

namespace vexolab {

// 8-bit grey, row-major, no padding; at least 2 x 2.
struct image {
  const unsigned char* data;
  int width;
  int height;
};

struct frame {
  double x;  // centre
  double y;
  double cos;  // of the scan direction's angle
  double sin;
  double half_length;  // along the scan
  double half_width;   // across it

  double image_x(double u, double v) const { return x + u * cos + v * sin; }
  double image_y(double u, double v) const { return y - u * sin + v * cos; }
  double u_of(double px, double py) const {
    return (px - x) * cos - (py - y) * sin;
  }
  double v_of(double px, double py) const {
    return (px - x) * sin + (py - y) * cos;
  }
};

// Angle in degrees, counter-clockwise on screen.
inline frame frame_of(double x, double y, double phi, double half_length,
                      double half_width) {
  const double angle = std::fmod(phi, 360.0) * std::numbers::pi / 180;
  return {x, y, std::cos(angle), std::sin(angle), half_length, half_width};
}

// std::floor without a library call where the processor has no instruction for
// it. |value| below 2^31.
inline int floor_of(double value) {
  const int whole = static_cast<int>(value);
  return whole - (value < whole ? 1 : 0);
}

// How an edge is bent where it crosses the scan axis: its curvature [1/px],
// positive when it bends toward positive u, and the curvature's first two
// derivatives along v. They are small corrections of the circle.
struct arc {
  double curvature = 0;
  double first = 0;
  double second = 0;
};

// How far a circle of the given curvature, tangent to the cross direction at
// v = 0, has left it at v: positive curvature bends toward positive u. Series,
// good to 1e-3 up to turns of 30 degrees.
inline double sagitta(double curvature, double v) {
  const double cv2 = curvature * v * v;
  const double q = curvature * cv2;
  return cv2 * (1.0 / 2 + q * (1.0 / 8 + q * (1.0 / 16)));
}

}  // namespace vexolab

#endif  // VEXOLAB_FRAME_H_
