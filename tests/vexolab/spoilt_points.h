// SPDX-License-Identifier: MIT
//
// Noisy points on known shapes among which some are wrong, and how far a fit to
// them is off.
#ifndef TESTS_VEXOLAB_SPOILT_POINTS_H_
#define TESTS_VEXOLAB_SPOILT_POINTS_H_

#include <cmath>
#include <vector>

#include "tests/vexolab/fit_points.h"
#include "tests/vexolab/random.h"

namespace spoilt_points {

using fit_points::ellipse;
using fit_points::kPi;
using fit_points::point;
using fit_points::points;

// A line is an ellipse of which only the long axis counts.
struct known_shape {
  int shape;
  ellipse e;

  // At `t` of the way along it, `off` beside it.
  point at(double t, double off) const {
    if (shape != VEXOLAB_LINE) return e.at(2 * kPi * t, off);
    const double cs = std::cos(e.angle * kPi / 180);
    const double sn = -std::sin(e.angle * kPi / 180);
    const double u = (2 * t - 1) * e.a;
    return {e.cx + u * cs - off * sn, e.cy + u * sn + off * cs};
  }
};

inline known_shape any_shape(int shape, synthetic::random* r) {
  known_shape s{shape,
                {r->uniform(150, 350), r->uniform(150, 350),
                 r->uniform(-180, 180), 80, 45}};
  if (shape == VEXOLAB_CIRCLE) s.e.a = s.e.b = 60;
  if (shape == VEXOLAB_LINE) s.e.a = 70;
  return s;
}

// Distance of q from what do_fit() reported, by projection on the contour.
inline double distance(int shape, const double* v, point q) {
  if (shape == VEXOLAB_LINE) {
    return std::fabs(v[0] * (q.y - v[3]) - v[1] * (q.x - v[2]));
  }
  if (shape == VEXOLAB_CIRCLE) {
    return std::fabs(std::hypot(q.x - v[0], q.y - v[1]) - v[2]);
  }
  const double cs = std::cos(v[2] * kPi / 180);
  const double sn = -std::sin(v[2] * kPi / 180);
  const double dx = q.x - v[0], dy = q.y - v[1];
  const double x = cs * dx + sn * dy, y = cs * dy - sn * dx;
  double t = std::atan2(v[3] * y, v[4] * x);
  for (int i = 0; i < 10; ++i) {
    const double ex = v[3] * std::cos(t) - x, ey = v[4] * std::sin(t) - y;
    const double tx = -v[3] * std::sin(t), ty = v[4] * std::cos(t);
    t -= (ex * tx + ey * ty) / (tx * tx + ty * ty);
  }
  return std::hypot(v[3] * std::cos(t) - x, v[4] * std::sin(t) - y);
}

// How far the fit is from the truth: root mean square along the contour.
inline double error_of(const known_shape& truth, const double* v) {
  double sum = 0;
  for (int i = 0; i < 40; ++i) {
    const double d = distance(truth.shape, v, truth.at((i + 0.5) / 40, 0));
    sum += d * d / 40;
  }
  return std::sqrt(sum);
}

enum class outliers {
  kAnywhere,   // in a box around the shape
  kBeside,     // up to 20 px beside the shape
  kDouble,     // every one of them the same distance beside it
  kBlob,       // around one place
  kOtherEdge,  // a run of neighbours on a parallel contour
  kStraight,   // a run of neighbours on a straight edge
};
constexpr double kNoise = 0.05;

struct spoilt {
  points all, inliers;
};

inline std::vector<bool> choose_outliers(int n, int count, bool run,
                                         bool closed, synthetic::random* r) {
  std::vector<bool> out(n, false);
  if (run) {
    const int first = r->below(closed ? n : n - count + 1);
    for (int i = 0; i < count; ++i) out[(first + i) % n] = true;
    return out;
  }
  while (count > 0) {
    const int i = r->below(n);
    count -= !out[i];
    out[i] = true;
  }
  return out;
}

inline spoilt spoil(const known_shape& truth, int n, int count, outliers kind,
                    synthetic::random* r) {
  const bool run = kind == outliers::kOtherEdge || kind == outliers::kStraight;
  const std::vector<bool> out =
      choose_outliers(n, count, run, truth.shape != VEXOLAB_LINE, r);
  const double beside = r->uniform(2, 10) * (r->below(2) ? 1 : -1);
  const point blob = truth.at(r->uniform(0, 1), r->uniform(-20, 20));
  // Of the straight edge: through the first of the run, at an angle.
  const double slope = r->uniform(0.2, 0.6) * (r->below(2) ? 1 : -1);
  int in_run = 0;
  spoilt result;
  for (int i = 0; i < n; ++i) {
    const double t = (i + 0.5) / n, noise = kNoise * r->normal();
    point p = truth.at(t, noise);
    if (!out[i]) {
      result.inliers.push_back(p);
    } else if (kind == outliers::kAnywhere) {
      p = {truth.e.cx + r->uniform(-100, 100),
           truth.e.cy + r->uniform(-100, 100)};
    } else if (kind == outliers::kBeside) {
      p = truth.at(t, r->uniform(-20, 20));
    } else if (kind == outliers::kBlob) {
      p = {blob.x + r->normal(), blob.y + r->normal()};
    } else if (kind == outliers::kStraight) {
      const double step = 2 * truth.e.a / n;
      p = truth.at(t, slope * step * ++in_run + beside / 4 + noise);
    } else {
      p = truth.at(t, beside + noise);
    }
    result.all.push_back(p);
  }
  return result;
}

}  // namespace spoilt_points

#endif  // TESTS_VEXOLAB_SPOILT_POINTS_H_
