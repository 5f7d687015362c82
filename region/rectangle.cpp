// SPDX-License-Identifier: MIT
//
// [1] G. Toussaint, Solving geometric problems with the rotating calipers,
//     1983.
#include "region/internal/rectangle.h"

#include <cmath>
#include <utility>

namespace vexo::internal {
namespace {

constexpr double kPi = 3.141592653589793;

point from(const point& a, const point& b) { return {b.x - a.x, b.y - a.y}; }
double dot(const point& a, const point& b) { return a.x * b.x + a.y * b.y; }
double cross(const point& a, const point& b) { return a.x * b.y - a.y * b.x; }

// The three corners that touch the other sides while edge i lies on the first
// one [1]. They only move forward as i does.
class calipers {
 public:
  calipers(const point* hull, size_t n) : hull_(hull), n_(n) {}

  void turn_to(size_t i, const point& edge) {
    while (dot(edge, step(right_)) > 0) right_ = next(right_);
    if (i == 0) far_ = right_;
    while (cross(edge, step(far_)) > 0) far_ = next(far_);
    if (i == 0) left_ = far_;
    while (dot(edge, step(left_)) < 0) left_ = next(left_);
  }

  // Extents along and across the edge, times its length.
  double along(const point& edge) const {
    return dot(edge, from(hull_[left_], hull_[right_]));
  }
  double across(size_t i, const point& edge) const {
    return cross(edge, from(hull_[i], hull_[far_]));
  }

  point step(size_t i) const { return from(hull_[i], hull_[next(i)]); }

 private:
  size_t next(size_t i) const { return i + 1 == n_ ? 0 : i + 1; }

  const point* hull_;
  size_t n_;
  size_t right_ = 1;
  size_t far_ = 1;
  size_t left_ = 1;
};

// Turns u by quarters into the first quadrant, swapping the sides each time.
rectangle in_first_quadrant(rectangle r) {
  while (!(r.u.x > 0 && r.u.y >= 0)) {
    r.u = {r.u.y, -r.u.x};
    std::swap(r.side_w, r.side_h);
  }
  return r;
}

}  // namespace

rectangle smallest_rectangle(const point* hull, size_t n) {
  if (n == 2) {
    const point side = from(hull[0], hull[1]);
    return {std::sqrt(dot(side, side)), 0, side};
  }
  rectangle best{};
  double best_area = 0;
  double best_length2 = 1;
  calipers arms(hull, n);
  for (size_t i = 0; i < n; ++i) {
    const point edge = arms.step(i);
    arms.turn_to(i, edge);
    const double length2 = dot(edge, edge);
    const rectangle r =
        in_first_quadrant({arms.along(edge), arms.across(i, edge), edge});
    const double area = r.side_w * r.side_h / length2;
    const bool better = i == 0 || area < best_area ||
                        (area == best_area && cross(best.u, r.u) < 0);
    if (!better) continue;
    best = r;
    best_area = area;
    best_length2 = length2;
  }
  const double length = std::sqrt(best_length2);
  return {best.side_w / length, best.side_h / length, best.u};
}

double rectangle_angle(const rectangle& r) {
  const point side = r.side_w > r.side_h ? r.u : point{-r.u.y, r.u.x};
  double degrees = std::atan2(side.x, side.y) * 180 / kPi - 90;
  while (degrees <= -90) degrees += 180;
  while (degrees > 90) degrees -= 180;
  return degrees;
}

}  // namespace vexo::internal
