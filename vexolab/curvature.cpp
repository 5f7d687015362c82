// SPDX-License-Identifier: MIT
#include "vexolab/curvature.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>

#include "vexolab/shape_fit.h"

namespace vexolab {
namespace {

constexpr double kRadian = 180 / std::numbers::pi;

// Two rectangles belong to one curve when their angles differ as the circle
// through their centres says: within 3 degrees or 35 %.
constexpr double kTurnTolerance = 3 / kRadian;
constexpr double kTurnToleranceRatio = 0.35;
constexpr double kRounding = 5e-7;  // of the coordinates, with a margin

// Curvature of the circle through the origin of `f`, tangent to its cross
// direction, that passes through the other centre; exact at any distance.
std::optional<double> curvature_towards(const frame& f, const frame& other) {
  const double du = f.u_of(other.x, other.y);
  const double dv = f.v_of(other.x, other.y);
  const double distance2 = du * du + dv * dv;
  if (!(distance2 > 1e-6)) return std::nullopt;
  // In a row, as far as single precision knows.
  const double rounding =
      kRounding * (std::fabs(f.x) + std::fabs(f.y) + std::sqrt(distance2));
  const double bend = std::fabs(du) > rounding ? du : 0.0;
  // The scan turns by twice the angle of the chord.
  const double expected = 2 * std::atan(bend / dv);
  const double turn = std::atan2(f.cos * other.sin - f.sin * other.cos,
                                 f.cos * other.cos + f.sin * other.sin);
  const double tolerance =
      std::max(kTurnTolerance, kTurnToleranceRatio * std::fabs(expected));
  if (!(std::fabs(std::remainder(turn - expected, 2 * std::numbers::pi)) <=
        tolerance)) {
    return std::nullopt;
  }
  return 2 * bend / distance2;
}

size_t neighbour(size_t i, int offset, size_t n) {
  const auto m = static_cast<long>(n);
  return static_cast<size_t>(((static_cast<long>(i) + offset) % m + m) % m);
}

// Mean curvature toward the neighbours at +/- offset, and their mean squared
// distance.
struct two_sided {
  double curvature;
  double distance2;
};

std::optional<two_sided> curvature_at(const std::vector<frame>& frames,
                                      size_t i, int offset) {
  const size_t n = frames.size();
  double sum = 0;
  double distance2 = 0;
  int count = 0;
  for (const int side : {-offset, offset}) {
    const frame& other = frames[neighbour(i, side, n)];
    const auto k = curvature_towards(frames[i], other);
    if (!k) continue;
    sum += *k;
    const double dx = other.x - frames[i].x;
    const double dy = other.y - frames[i].y;
    distance2 += dx * dx + dy * dy;
    ++count;
  }
  if (count == 0) return std::nullopt;
  return two_sided{sum / count, distance2 / count};
}

// Signed curvature of the circle through three points, positive when it bends
// toward the scan direction of `f`.
double curvature_through(const frame& f, double ax, double ay, double bx,
                         double by, double cx, double cy) {
  const double abx = bx - ax;
  const double aby = by - ay;
  const double bcx = cx - bx;
  const double bcy = cy - by;
  const double acx = cx - ax;
  const double acy = cy - ay;
  const double product =
      std::hypot(abx, aby) * std::hypot(bcx, bcy) * std::hypot(acx, acy);
  if (!(product > 1e-9)) return 0;
  const double k = 2 * std::fabs(abx * bcy - aby * bcx) / product;
  // The middle of the chord lies on the side toward which the curve bends.
  const double mx = (ax + cx) / 2 - bx;
  const double my = (ay + cy) / 2 - by;
  return mx * f.cos - my * f.sin > 0 ? k : -k;
}

// Which neighbours of rectangle i to ask for its curvature: those as far apart
// as the rectangles are wide; nearer ones tell mostly noise. At most half a
// radian away.
int stride_at(const std::vector<frame>& frames, size_t i, double curvature) {
  const frame& next = frames[neighbour(i, 1, frames.size())];
  const double spacing = std::hypot(next.x - frames[i].x, next.y - frames[i].y);
  if (!(spacing > 0)) return 1;
  const double wanted = 2 * frames[i].half_width / spacing;
  const double allowed = 0.5 / (std::fabs(curvature) * spacing);
  return std::max(1, static_cast<int>(std::min({wanted, allowed, 1e4}) + 0.5));
}

// Curvature through the points of i and of neighbours on both sides, over that
// through their rectangles' centres.
void collect_ratios(const std::vector<frame>& frames,
                    const std::vector<measured_point>& points, size_t i,
                    double curvature, std::vector<double>* ratios) {
  constexpr int kNeighbours = 3;
  constexpr double kFarthestTurn = 3.2;  // half around: the rest is far away
  const size_t n = frames.size();
  const int stride = stride_at(frames, i, curvature);
  const frame& next = frames[neighbour(i, stride, n)];
  const double turn = std::fabs(curvature) *
                      std::hypot(next.x - frames[i].x, next.y - frames[i].y);
  ratios->clear();
  for (int before = 1; before <= kNeighbours; ++before) {
    for (int after = 1; after <= kNeighbours; ++after) {
      const size_t a = neighbour(i, -before * stride, n);
      const size_t c = neighbour(i, after * stride, n);
      if (a == i || c == i || a == c) continue;
      if (before + after > 2 && (before + after) * turn > kFarthestTurn) {
        continue;
      }
      if (!points[a].found || !points[c].found) continue;
      const double by_rectangles =
          curvature_through(frames[i], frames[a].x, frames[a].y, frames[i].x,
                            frames[i].y, frames[c].x, frames[c].y);
      if (by_rectangles == 0) continue;
      const double by_points =
          curvature_through(frames[i], points[a].x, points[a].y, points[i].x,
                            points[i].y, points[c].x, points[c].y);
      ratios->push_back(by_points / by_rectangles);
    }
  }
}

// The median of the ratios if it can be believed: it is an ordinary one, or at
// least four of them agree about it.
std::optional<double> believable(std::vector<double>* ratios) {
  constexpr double kAgreement = 0.3;
  constexpr int kLeastAgreeing = 4;
  if (ratios->empty()) return std::nullopt;
  std::sort(ratios->begin(), ratios->end());
  const size_t n = ratios->size();
  const double median = ((*ratios)[(n - 1) / 2] + (*ratios)[n / 2]) / 2;
  if (median > 0.5 && median < 2) return median;
  const auto agreeing =
      std::count_if(ratios->begin(), ratios->end(), [median](double ratio) {
        return std::fabs(ratio - median) < kAgreement;
      });
  if (agreeing >= kLeastAgreeing) return median;
  return std::nullopt;
}

// The centres of rectangles, in units of half their spread.
struct centre_points {
  double x0, y0, unit;
  std::vector<double> x, y;
  std::vector<double> weight;

  explicit centre_points(const std::vector<frame>& frames)
      : weight(frames.size(), 1.0) {
    double left = frames[0].x, right = left;
    double top = frames[0].y, bottom = top;
    for (const frame& f : frames) {
      left = std::min(left, f.x);
      right = std::max(right, f.x);
      top = std::min(top, f.y);
      bottom = std::max(bottom, f.y);
    }
    x0 = (left + right) / 2;
    y0 = (top + bottom) / 2;
    unit = std::max(right - left, bottom - top) / 2;
    for (const frame& f : frames) {
      x.push_back((f.x - x0) / unit);
      y.push_back((f.y - y0) / unit);
    }
  }

  point_set set() const {
    return {x.data(), y.data(), static_cast<int>(x.size())};
  }
};

// The ellipse on which all centres stand: centre, angle, half-axes.
bool ellipse_of(const std::vector<frame>& frames, double* ellipse) {
  constexpr double kOnEllipsePx = 1e-3;
  if (frames.size() < 6) return false;
  const centre_points p(frames);
  if (!(p.unit > 0 && p.unit < 1e7)) return false;
  const double tolerance = kOnEllipsePx / p.unit + 1e-6;
  std::vector<double> distance(frames.size());
  const auto all_on_it = [&] {
    return std::all_of(distance.begin(), distance.end(),
                       [&](double d) { return d < tolerance; });
  };
  const auto shape = make_ellipse_fit();
  // The algebraic fit costs a hundredth of the geometric one and already says
  // whether there is an ellipse at all.
  guess start;
  if (!shape->refit(p.set(), p.weight.data(), &start)) return false;
  shape->distances(p.set(), start, distance.data());
  if (!all_on_it()) return false;
  if (!shape->fit(p.set(), p.weight.data(), false, full_effort(p.set().n)))
    return false;
  shape->distances(p.set(), distance.data());
  if (!all_on_it()) return false;
  shape->report(p.x0, p.y0, p.unit, ellipse);
  return true;
}

// The bend of an ellipse of half-axes a and b at (a p, b q), p^2 + q^2 = 1,
// seen from within along its normal; derivatives along growing angle.
arc arc_of_ellipse(double a, double b, double p, double q) {
  const double speed2 = a * a * q * q + b * b * p * p;
  const double speed = std::sqrt(speed2);
  const double first = 2 * (a * a - b * b) * p * q;  // of speed2, by angle
  const double second = 2 * (a * a - b * b) * (p * p - q * q);
  const double cube = speed2 * speed2 * speed2;
  arc result;
  result.curvature = -a * b / (speed2 * speed);
  result.first = 1.5 * a * b * first / cube;
  result.second =
      1.5 * a * b / (speed * cube) * (second - 3 * first * first / speed2);
  return result;
}

// The arc at each rectangle if all of them stand on one ellipse, along its
// normals: then it is known exactly, however few they are.
bool arcs_of_ellipse(const std::vector<frame>& frames,
                     std::vector<arc>* result) {
  constexpr double kAlongNormal = 0.02;  // radians
  double e[5];
  if (!ellipse_of(frames, e)) return false;
  const frame own = frame_of(e[0], e[1], e[2], 0, 0);
  for (size_t i = 0; i < frames.size(); ++i) {
    const frame& f = frames[i];
    const double p = own.u_of(f.x, f.y) / e[3];
    const double q = own.v_of(f.x, f.y) / e[4];
    // The normal, along the ellipse's own axes and then in the image.
    const double length = std::hypot(p / e[3], q / e[4]);
    const double nu = p / e[3] / length;
    const double nv = q / e[4] / length;
    const double nx = nu * own.cos + nv * own.sin;
    const double ny = -nu * own.sin + nv * own.cos;
    if (!(std::fabs(f.cos * ny + f.sin * nx) < kAlongNormal)) return false;
    arc& a = (*result)[i] = arc_of_ellipse(e[3], e[4], p, q);
    // Outward v runs as p, q do when seen in the ellipse's own axes; inward all
    // is mirrored, u and v.
    if (f.cos * nx - f.sin * ny > 0) continue;
    a.curvature = -a.curvature;
    a.second = -a.second;
  }
  return true;
}

bool all_alike(const std::vector<double>& curvatures) {
  const auto [low, high] =
      std::minmax_element(curvatures.begin(), curvatures.end());
  return *high - *low <= 1e-3 * std::max(std::fabs(*low), std::fabs(*high));
}

// From the neighbours at one and two places to either side.
std::vector<double> curvature_by_neighbours(const std::vector<frame>& frames) {
  const size_t n = frames.size();
  std::vector<double> result(n, 0.0);
  for (size_t i = 0; i < n; ++i) {
    const auto near = curvature_at(frames, i, 1);
    if (!near) continue;
    result[i] = near->curvature;
    if (n < 5) continue;
    const auto far = curvature_at(frames, i, 2);
    if (!far || far->distance2 < 1.5 * near->distance2) continue;
    // To zero distance: the error of either grows with its square.
    result[i] += (near->curvature - far->curvature) * near->distance2 /
                 (far->distance2 - near->distance2);
  }
  return result;
}

}  // namespace

std::vector<arc> arcs_of_rectangles(const std::vector<frame>& frames) {
  std::vector<arc> result(frames.size());
  if (frames.size() < 2) return result;
  const std::vector<double> curvatures = curvature_by_neighbours(frames);
  if (!all_alike(curvatures) && arcs_of_ellipse(frames, &result)) return result;
  for (size_t i = 0; i < frames.size(); ++i) result[i] = {curvatures[i]};
  return result;
}

std::vector<double> curvature_of_points(
    const std::vector<frame>& frames, const std::vector<arc>& drawn,
    const std::vector<measured_point>& points) {
  std::vector<double> result(frames.size());
  std::vector<double> ratios;
  for (size_t i = 0; i < frames.size(); ++i) {
    result[i] = points[i].curvature;
    const double by_drawing = drawn[i].curvature;
    if (!points[i].found || by_drawing == 0) continue;
    collect_ratios(frames, points, i, by_drawing, &ratios);
    if (const auto ratio = believable(&ratios)) result[i] = *ratio * by_drawing;
  }
  return result;
}

}  // namespace vexolab
