// SPDX-License-Identifier: MIT
//
// The pixels around an edge, gathered once and then fitted in place: no
// resampling, every pixel enters with its exact place.
#ifndef VEXOLAB_PIXEL_STRIP_H_
#define VEXOLAB_PIXEL_STRIP_H_

#include <cstddef>
#include <vector>

#include "vexolab/frame.h"

namespace vexolab {

// Where the strip lies: along the curve u = centre + tilt v + sagitta(v), with
// distances from it, along its normals, from `before` to `after`.
struct strip_bounds {
  double centre;
  double tilt;
  arc bend;
  double before;  // <= 0
  double after;   // >= 0
  double half_width;
};

class pixel_strip {
 public:
  // The arrays are filled up to a multiple of this with pixels of weight 0.
  static constexpr size_t kLanes = 8;

  // Cost: about 3 ns a pixel.
  void gather(const image& picture, const frame& f, const strip_bounds& b);

  size_t padded_size() const { return (size_ + kLanes - 1) / kLanes * kLanes; }
  size_t size() const { return size_; }
  // By all calls of gather() so far.
  double pixels_gathered() const { return gathered_; }

  const float* t() const {
    return t_.data();
  }  // distance from the curve without tilt
  const float* v() const { return v_.data(); }  // v / half_width
  const float* grey() const { return grey_.data(); }
  // How much of the pixel's width lies in the strip, 0 to 1.
  const float* weight() const { return weight_.data(); }

 private:
  struct inverses {
    double along;
    double sin;
    double half_width;
  };
  void add_row(const image& picture, const frame& f, const strip_bounds& b,
               const inverses& inverse, int y, double stray);
  void bend(const arc& a, double half_width);
  void reserve(size_t more);
  void pad();

  size_t size_ = 0;
  double gathered_ = 0;
  std::vector<float> t_;
  std::vector<float> v_;
  std::vector<float> grey_;
  std::vector<float> weight_;
};

}  // namespace vexolab

#endif  // VEXOLAB_PIXEL_STRIP_H_
