// SPDX-License-Identifier: MIT
//
// [1] G. Toussaint, Solving geometric problems with the rotating calipers,
//     1983.
#include "region/internal/rectangle.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "region/internal/vector_level.h"

#ifdef VEXO_X86_VECTORS
#include <immintrin.h>
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

// Few corners: for every edge all corners. No branch depends on the shape.
constexpr size_t kFew = 16;

struct edge_extents {
  double along[kFew], across[kFew];  // times the edge's length
  double area[kFew];
};

// Bits of the edges with the least area.
template <class T>
uint32_t measure_edges(const hull<T>& h, edge_extents* e) {
  using P = product<T>;
  double least = HUGE_VAL;
  uint32_t which = 0;
  for (size_t k = 0; k < h.size; ++k) {
    const point<T>& a = h.corners[k];
    const P ex = P(h.corners[k + 1].x - a.x);
    const P ey = P(h.corners[k + 1].y - a.y);
    const P base = ex * a.y - ey * a.x;
    P low = ex * a.x + ey * a.y;
    P high = low;
    P far = base;
    for (size_t c = 0; c < h.size; ++c) {
      const P along = ex * h.corners[c].x + ey * h.corners[c].y;
      low = std::min(low, along);
      high = std::max(high, along);
      far = std::max(far, ex * h.corners[c].y - ey * h.corners[c].x);
    }
    e->along[k] = high - low;
    e->across[k] = far - base;
    e->area[k] = e->along[k] * e->across[k] / (ex * ex + ey * ey);
    if (e->area[k] < least) which = 0;
    if (e->area[k] <= least) which |= 1u << k;
    least = std::min(least, e->area[k]);
  }
  return which;
}

#ifdef VEXO_X86_VECTORS
#define VEXO_TARGET __attribute__((target("avx2")))

// Of four edges from 32-bit numbers; infinite for those that do not exist.
VEXO_TARGET inline __m256d areas(__m128i along, __m128i across, __m128i length2,
                                 __m128i exists, edge_extents* e,
                                 size_t first) {
  const __m256d w = _mm256_cvtepi32_pd(along);
  const __m256d h = _mm256_cvtepi32_pd(across);
  const __m256d area =
      _mm256_div_pd(_mm256_mul_pd(w, h), _mm256_cvtepi32_pd(length2));
  _mm256_storeu_pd(e->along + first, w);
  _mm256_storeu_pd(e->across + first, h);
  return _mm256_blendv_pd(_mm256_set1_pd(HUGE_VAL), area,
                          _mm256_castsi256_pd(_mm256_cvtepi32_epi64(exists)));
}

// Eight edges at once: both products of a corner by one instruction.
VEXO_TARGET uint32_t measure_edges_avx2(const hull<int16_t>& h,
                                        edge_extents* e) {
  const auto load8 = [&h](size_t k) VEXO_TARGET {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(h.corners + k));
  };
  const __m256i size = _mm256_set1_epi32(static_cast<int>(h.size));
  __m256i edge = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  __m256d area[4];
  area[2] = area[3] = _mm256_set1_pd(HUGE_VAL);
  for (size_t k = 0; k < h.size; k += 8) {
    const __m256i from = load8(k);
    const __m256i ex_ey = _mm256_sub_epi16(load8(k + 1), from);
    const __m256i ey_ex = _mm256_or_si256(_mm256_slli_epi32(ex_ey, 16),
                                          _mm256_srli_epi32(ex_ey, 16));
    const __m256i normal =
        _mm256_sign_epi16(ey_ex, _mm256_set1_epi32(0x0001ffff));
    __m256i low = _mm256_madd_epi16(ex_ey, from);
    __m256i high = low;
    const __m256i base = _mm256_madd_epi16(normal, from);
    __m256i far = base;
    for (size_t c = 0; c < h.size; ++c) {
      int32_t both;
      std::memcpy(&both, h.corners + c, sizeof(both));
      const __m256i corner = _mm256_set1_epi32(both);
      const __m256i along = _mm256_madd_epi16(ex_ey, corner);
      low = _mm256_min_epi32(low, along);
      high = _mm256_max_epi32(high, along);
      far = _mm256_max_epi32(far, _mm256_madd_epi16(normal, corner));
    }
    const __m256i along = _mm256_sub_epi32(high, low);
    const __m256i across = _mm256_sub_epi32(far, base);
    const __m256i length2 = _mm256_madd_epi16(ex_ey, ex_ey);
    const __m256i exists = _mm256_cmpgt_epi32(size, edge);
    edge = _mm256_add_epi32(edge, _mm256_set1_epi32(8));
    area[k / 4] = areas(
        _mm256_castsi256_si128(along), _mm256_castsi256_si128(across),
        _mm256_castsi256_si128(length2), _mm256_castsi256_si128(exists), e, k);
    area[k / 4 + 1] = areas(_mm256_extracti128_si256(along, 1),
                            _mm256_extracti128_si256(across, 1),
                            _mm256_extracti128_si256(length2, 1),
                            _mm256_extracti128_si256(exists, 1), e, k + 4);
  }
  __m256d least = _mm256_min_pd(_mm256_min_pd(area[0], area[1]),
                                _mm256_min_pd(area[2], area[3]));
  least = _mm256_min_pd(least, _mm256_permute2f128_pd(least, least, 1));
  least = _mm256_min_pd(least, _mm256_permute_pd(least, 5));
  uint32_t which = 0;
  for (size_t k = 0; k < 4; ++k) {
    _mm256_storeu_pd(e->area + 4 * k, area[k]);
    const int equal =
        _mm256_movemask_pd(_mm256_cmp_pd(area[k], least, _CMP_EQ_OQ));
    which |= static_cast<uint32_t>(equal) << (4 * k);
  }
  return which;
}
#endif

uint32_t find_least(const hull<double>& h, edge_extents* e) {
  return measure_edges(h, e);
}

uint32_t find_least(const hull<int16_t>& h, edge_extents* e) {
#ifdef VEXO_X86_VECTORS
  if (current_vector_level() >= vector_level::kAvx2) {
    return measure_edges_avx2(h, e);
  }
#endif
  return measure_edges(h, e);
}

template <class T>
rectangle from_few_corners(const hull<T>& h) {
  edge_extents e;
  smallest best;
  for (uint32_t least = find_least(h, &e); least != 0; least &= least - 1) {
    const auto k = static_cast<size_t>(std::countr_zero(least));
    const double ex = product<T>(h.corners[k + 1].x - h.corners[k].x);
    const double ey = product<T>(h.corners[k + 1].y - h.corners[k].y);
    best.offer({ex, ey, e.along[k], e.across[k]}, e.area[k]);
  }
  return best.get();
}

// Many corners: the three that touch the other sides while one edge after the
// other lies on the first side; they only move forward [1].
template <class T>
rectangle from_many_corners(const hull<T>& h) {
  using P = product<T>;
  const auto next = [&h](size_t i) { return i + 1 == h.size ? 0 : i + 1; };
  smallest best;
  size_t right = 1, far = 1, left = 1;
  for (size_t i = 0; i < h.size; ++i) {
    const P ex = h.corners[i + 1].x - h.corners[i].x;
    const P ey = h.corners[i + 1].y - h.corners[i].y;
    const auto along = [&](size_t from, size_t to) {
      const point<T>&a = h.corners[from], &b = h.corners[to];
      return ex * P(b.x - a.x) + ey * P(b.y - a.y);
    };
    const auto across = [&](size_t from, size_t to) {
      const point<T>&a = h.corners[from], &b = h.corners[to];
      return ex * P(b.y - a.y) - ey * P(b.x - a.x);
    };
    while (along(right, next(right)) > 0) right = next(right);
    if (i == 0) far = right;
    while (across(far, next(far)) > 0) far = next(far);
    if (i == 0) left = far;
    while (along(left, next(left)) < 0) left = next(left);
    const edge_rectangle r{double(ex), double(ey), double(along(left, right)),
                           double(across(i, far))};
    best.offer(r, r.area());
  }
  return best.get();
}

}  // namespace

template <class T>
rectangle smallest_rectangle(const hull<T>& h) {
  if (h.size < 2) return {0, 0, 1, 0};
  if (h.size == 2) {
    const double ux = h.corners[1].x - h.corners[0].x;
    const double uy = h.corners[1].y - h.corners[0].y;
    return {std::sqrt(ux * ux + uy * uy), 0, ux, uy};
  }
  return h.size <= kFew ? from_few_corners(h) : from_many_corners(h);
}

template rectangle smallest_rectangle(const hull<int16_t>& corners);
template rectangle smallest_rectangle(const hull<double>& corners);

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
