// SPDX-License-Identifier: MIT
//
// What the robust iteration asks of a line, a circle or an ellipse.
#ifndef VEXOLAB_SHAPE_FIT_H_
#define VEXOLAB_SHAPE_FIT_H_

#include <algorithm>
#include <array>
#include <memory>

namespace vexolab {

// Borrowed coordinates, in the frame of one fit: the origin amid the points,
// the unit a power of two near their spread.
struct point_set {
  const double* x;
  const double* y;
  int n;
};

// The same in single precision: twice as many fit a register, and to tell near
// points from far ones 1e-4 px will do.
struct rough_points {
  const float* x;
  const float* y;
  int n;
};

// A shape guessed from a few points, as the coefficients of its equation; what
// they mean is each shape's own.
using guess = std::array<double, 6>;

// The first kCount of them in single precision.
template <int kCount>
std::array<float, kCount> single(const guess& shape) {
  std::array<float, kCount> result;
  for (int i = 0; i < kCount; ++i) result[i] = static_cast<float>(shape[i]);
  return result;
}

// When a geometric fit ends: with the first step below last_step, after
// most_steps at the latest. It visits the points most_steps + 1 times, and
// twice more to start.
struct effort {
  double last_step;
  int most_steps;
};

// To the end: what follows such a step is rounding. Of many points, fewer steps
// are taken.
inline effort full_effort(int points) {
  return {1e-8, std::clamp(200000 / points, 3, 200)};
}

class shape_fit {
 public:
  virtual ~shape_fit() = default;

  // Number of parameters: 2, 3 or 5. As many points determine a guess.
  virtual int freedom() const = 0;

  // ---- Guesses ----------------------------------------------------------

  // Number of random samples that make the start safe.
  virtual int samples() const = 0;
  // The shape through points[index[0 .. freedom() - 1]]; false if these
  // determine none.
  virtual bool through(const point_set& points, const int* index,
                       guess* shape) const = 0;
  // How many points are closer to the shape than `tolerance`, roughly. The
  // start's inner loop: no square root, no branch.
  virtual int count_within(const rough_points& points, const guess& shape,
                           double tolerance) const = 0;
  // Unsigned distances, to first order far from the shape.
  virtual void distances(const point_set& points, const guess& shape,
                         double* distance) const = 0;
  // Number of guesses to be compared closely, at least 1.
  virtual int finalists() const { return 1; }
  // Algebraic fit to all points of weight > 0; false if they determine none.
  virtual bool refit(const point_set& points, const double* weight,
                     guess* shape) const = 0;

  // ---- The geometric fit -------------------------------------------------

  // Minimises the weighted sum of squared distances, from the last fit if
  // `warm`, else from an algebraic one. False: degenerate.
  virtual bool fit(const point_set& points, const double* weight, bool warm,
                   const effort& most) = 0;
  // Unsigned orthogonal distances from the last fit.
  virtual void distances(const point_set& points, double* distance) const = 0;
  // The last fit as do_fit() reports it, moved back into the image.
  virtual void report(double origin_x, double origin_y, double unit,
                      double* out) const = 0;
};

std::unique_ptr<shape_fit> make_line_fit();
std::unique_ptr<shape_fit> make_circle_fit();
std::unique_ptr<shape_fit> make_ellipse_fit();

}  // namespace vexolab

#endif  // VEXOLAB_SHAPE_FIT_H_
