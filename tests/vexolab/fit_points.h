// SPDX-License-Identifier: MIT
//
// Points on known shapes, and do_fit() in a form that tests can read.
#ifndef TESTS_VEXOLAB_FIT_POINTS_H_
#define TESTS_VEXOLAB_FIT_POINTS_H_

#include <cmath>
#include <vector>

#include "tests/vexolab/random.h"
#include "vexolab/vexolab.h"

namespace fit_points {

constexpr double kPi = 3.14159265358979323846;

struct point {
  double x, y;
};
using points = std::vector<point>;

// As the generators see it: angle counter-clockwise on screen, y down.
struct ellipse {
  double cx, cy, angle, a, b;

  // At the parameter t [rad], displaced by `off` along the outward normal.
  point at(double t, double off = 0) const {
    const double u = a * std::cos(t), v = b * std::sin(t);
    const double nu = b * std::cos(t), nv = a * std::sin(t);
    const double scale = off / std::hypot(nu, nv);
    const double cs = std::cos(angle * kPi / 180);
    const double sn = std::sin(angle * kPi / 180);
    const double p = u + scale * nu, q = v + scale * nv;
    return {cx + cs * p - sn * q, cy - (sn * p + cs * q)};
  }
};

// n points at equal steps of t from `first` on, over `turn` of a revolution,
// each displaced along the normal by off(i).
template <typename Offset>
points on(const ellipse& shape, int n, double first, double turn, Offset off) {
  points result;
  for (int i = 0; i < n; ++i) {
    result.push_back(shape.at(first + 2 * kPi * turn * i / n, off(i)));
  }
  return result;
}

inline points on(const ellipse& shape, int n, double first = 0,
                 double turn = 1) {
  return on(shape, n, first, turn, [](int) { return 0.0; });
}

template <typename Offset>
points on_segment(point from, point to, int n, Offset off) {
  const double dx = to.x - from.x, dy = to.y - from.y;
  const double length = std::hypot(dx, dy);
  points result;
  for (int i = 0; i < n; ++i) {
    const double t = n > 1 ? i / (n - 1.0) : 0, d = off(i);
    result.push_back(
        {from.x + t * dx - d * dy / length, from.y + t * dy + d * dx / length});
  }
  return result;
}

inline points on_segment(point from, point to, int n) {
  return on_segment(from, to, n, [](int) { return 0.0; });
}

inline points moved(points p, double dx, double dy) {
  for (point& q : p) q = {q.x + dx, q.y + dy};
  return p;
}

inline points scaled(points p, double factor) {
  for (point& q : p) q = {q.x * factor, q.y * factor};
  return p;
}

// x in the first half, y in the second.
inline std::vector<double> packed(const points& p) {
  std::vector<double> result(2 * p.size());
  for (size_t i = 0; i < p.size(); ++i) {
    result[i] = p[i].x;
    result[p.size() + i] = p[i].y;
  }
  return result;
}

struct parameters {
  int method = 7;
  float factor = 2;
  int iterations = 20;
  int least = 2;
};

constexpr parameters kRobust{};
constexpr parameters kShortTail{0, 2, 20, 2};
constexpr parameters kPlain{7, 0, 20, 2};

constexpr double kGuard = -7.25e33;

struct result {
  int code;
  double v[6];  // kGuard wherever do_fit() has not written
};

inline result fit(const points& p, int shape, parameters how = kRobust) {
  result r{0, {kGuard, kGuard, kGuard, kGuard, kGuard, kGuard}};
  const std::vector<double> data = packed(p);
  r.code = do_fit(data.data(), static_cast<int>(p.size()), shape, how.method,
                  how.factor, how.iterations, how.least, r.v);
  return r;
}

}  // namespace fit_points

#endif  // TESTS_VEXOLAB_FIT_POINTS_H_
