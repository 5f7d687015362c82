// SPDX-License-Identifier: MIT
//
// Images of known edges as a camera would take them: the ideal shape, blurred
// by a Gaussian (the point spread function) and integrated over every pixel's
// square; then noise, then rounding to 8 bits. The integrals are exact for
// half planes and good to 1e-4 grey levels for ellipses.
#ifndef TESTS_VEXOLAB_SYNTHETIC_IMAGE_H_
#define TESTS_VEXOLAB_SYNTHETIC_IMAGE_H_

#include <functional>
#include <vector>

#include "tests/vexolab/random.h"

namespace synthetic {

// Part of each pixel that a shape covers, 0 to 1, before grey levels.
struct coverage {
  int width;
  int height;
  std::vector<double> part;

  coverage(int w, int h)
      : width(w),
        height(h),
        part(static_cast<size_t>(w) * static_cast<size_t>(h)) {}
  double& at(int x, int y) {
    return part[static_cast<size_t>(y) * static_cast<size_t>(width) +
                static_cast<size_t>(x)];
  }
  double at(int x, int y) const {
    return const_cast<coverage*>(this)->at(x, y);
  }
};

struct grey_image {
  int width;
  int height;
  std::vector<unsigned char> pixels;

  const unsigned char* data() const { return pixels.data(); }
};

// The side of the line through (x, y) into which the direction (cos angle,
// -sin angle) points; the angle in degrees, counter-clockwise on screen.
void add_half_plane(double x, double y, double angle, double psf, double part,
                    coverage* c);

// A filled ellipse; angle of the half-axis a as above.
struct disc_shape {
  double x;
  double y;
  double angle;
  double a;
  double b;
};
void add_ellipse(const disc_shape& shape, double psf, double part, coverage* c);

// dark + step * coverage, times illumination(x, y) if given, plus noise of the
// given standard deviation, rounded.
struct exposure {
  double dark = 50;
  double step = 150;
  double noise = 0;
  std::function<double(double, double)> illumination;
};
grey_image expose(const coverage& c, const exposure& e, random* r);

}  // namespace synthetic

#endif  // TESTS_VEXOLAB_SYNTHETIC_IMAGE_H_
