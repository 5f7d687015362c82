// SPDX-License-Identifier: MIT
//
// [1] G. Toussaint, Solving geometric problems with the rotating calipers,
//     1983.
#include "region/internal/rectangle.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "region/internal/vector_level.h"

#ifdef VEXO_X86_VECTORS
#define VEXO_INLINE __attribute__((always_inline)) inline
#else
#define VEXO_INLINE inline
#endif

namespace vexo::internal {
namespace {

constexpr double kPi = 3.141592653589793;

// A rectangle with one side on an edge (ex, ey) of the hull: its extents along
// and across the edge, both times the edge's length.
struct edge_rectangle {
  double ex, ey;
  double along, across;

  double length2() const { return ex * ex + ey * ey; }
  double area() const { return along * across / length2(); }

  // Turned by quarters so that the edge points right or down-right.
  edge_rectangle in_first_quadrant() const {
    edge_rectangle r = *this;
    while (!(r.ex > 0 && r.ey >= 0)) {
      r = {r.ey, -r.ex, r.across, r.along};
    }
    return r;
  }
};

// Smallest area, then least turn.
class smallest {
 public:
  void offer(const edge_rectangle& candidate, double area) {
    if (area > area_) return;
    const edge_rectangle r = candidate.in_first_quadrant();
    if (area < area_ || best_.ex * r.ey - best_.ey * r.ex < 0) best_ = r;
    area_ = area;
  }
  rectangle get() const {
    const double length = std::sqrt(best_.length2());
    return {best_.along / length, best_.across / length, best_.ex, best_.ey};
  }

 private:
  edge_rectangle best_{};
  double area_ = HUGE_VAL;
};

// Few corners: for every edge all corners, the edges side by side. No branch
// depends on the shape.
constexpr size_t kFew = 16;
constexpr size_t kLanes = hull::kSlack;

struct edge_extents {
  double ex[kFew], ey[kFew];
  double along[kFew], across[kFew];  // times the edge's length
  double area[kFew];
};

// Of the edges first..first + kLanes - 1, those beyond the last with it.
VEXO_INLINE void measure_edges_with(const hull& h, size_t first,
                                    edge_extents* e) {
  double ex[kLanes], ey[kLanes], low[kLanes], high[kLanes], base[kLanes],
      far[kLanes];
  const double* const x = h.x + first;
  const double* const y = h.y + first;
  for (size_t k = 0; k < kLanes; ++k) {
    ex[k] = x[k + 1] - x[k];
    ey[k] = y[k + 1] - y[k];
    low[k] = high[k] = ex[k] * x[k] + ey[k] * y[k];
    base[k] = far[k] = ex[k] * y[k] - ey[k] * x[k];
  }
  for (size_t c = 0; c < h.size; ++c) {
    for (size_t k = 0; k < kLanes; ++k) {
      const double along = ex[k] * h.x[c] + ey[k] * h.y[c];
      const double across = ex[k] * h.y[c] - ey[k] * h.x[c];
      low[k] = along < low[k] ? along : low[k];
      high[k] = along > high[k] ? along : high[k];
      far[k] = across > far[k] ? across : far[k];
    }
  }
  for (size_t k = 0; k < kLanes; ++k) {
    e->ex[first + k] = ex[k];
    e->ey[first + k] = ey[k];
    e->along[first + k] = high[k] - low[k];
    e->across[first + k] = far[k] - base[k];
    e->area[first + k] = (high[k] - low[k]) * (far[k] - base[k]) /
                         (ex[k] * ex[k] + ey[k] * ey[k]);
  }
}

void measure_edges(const hull& h, size_t first, edge_extents* e) {
  measure_edges_with(h, first, e);
}

#ifdef VEXO_X86_VECTORS
__attribute__((target("avx2"))) void measure_edges_avx2(const hull& h,
                                                        size_t first,
                                                        edge_extents* e) {
  measure_edges_with(h, first, e);
}
#endif

using measure_function = void (*)(const hull&, size_t, edge_extents*);

measure_function current_measure_edges() {
#ifdef VEXO_X86_VECTORS
  if (current_vector_level() >= vector_level::kAvx2) return measure_edges_avx2;
#endif
  return measure_edges;
}

rectangle from_few_corners(const hull& h) {
  edge_extents e;
  const measure_function measure = current_measure_edges();
  for (size_t k = 0; k < h.size; k += kLanes) measure(h, k, &e);
  double least = e.area[0];
  for (size_t k = 1; k < h.size; ++k) least = std::min(least, e.area[k]);
  smallest best;
  for (size_t k = 0; k < h.size; ++k) {
    if (e.area[k] > least) continue;
    best.offer({e.ex[k], e.ey[k], e.along[k], e.across[k]}, e.area[k]);
  }
  return best.get();
}

// Many corners: the three that touch the other sides while one edge after the
// other lies on the first side; they only move forward [1].
rectangle from_many_corners(const hull& h) {
  const auto next = [&h](size_t i) { return i + 1 == h.size ? 0 : i + 1; };
  smallest best;
  size_t right = 1, far = 1, left = 1;
  for (size_t i = 0; i < h.size; ++i) {
    const double ex = h.x[next(i)] - h.x[i];
    const double ey = h.y[next(i)] - h.y[i];
    const auto along = [&](size_t from, size_t to) {
      return ex * (h.x[to] - h.x[from]) + ey * (h.y[to] - h.y[from]);
    };
    const auto across = [&](size_t from, size_t to) {
      return ex * (h.y[to] - h.y[from]) - ey * (h.x[to] - h.x[from]);
    };
    while (along(right, next(right)) > 0) right = next(right);
    if (i == 0) far = right;
    while (across(far, next(far)) > 0) far = next(far);
    if (i == 0) left = far;
    while (along(left, next(left)) < 0) left = next(left);
    const edge_rectangle r{ex, ey, along(left, right), across(i, far)};
    best.offer(r, r.area());
  }
  return best.get();
}

}  // namespace

rectangle smallest_rectangle(const hull& h) {
  if (h.size == 2) {
    const double ux = h.x[1] - h.x[0];
    const double uy = h.y[1] - h.y[0];
    return {std::sqrt(ux * ux + uy * uy), 0, ux, uy};
  }
  return h.size <= kFew ? from_few_corners(h) : from_many_corners(h);
}

double rectangle_angle(const rectangle& r) {
  const bool wide = r.side_w > r.side_h;
  const double x = wide ? r.ux : -r.uy;
  const double y = wide ? r.uy : r.ux;
  if (y == 0) return 0;
  if (x == 0) return 90;
  double degrees = std::atan2(x, y) * 180 / kPi - 90;
  if (degrees <= -90) degrees += 180;
  if (degrees > 90) degrees -= 180;
  return degrees;
}

}  // namespace vexo::internal
