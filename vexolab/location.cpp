// SPDX-License-Identifier: MIT
#include "vexolab/location.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vexolab {
namespace {

// A rectangle narrower than this is measured over a strip of this width, and
// without tilt.
constexpr double kLeastWidth = 2.0;

constexpr double kSmallestBlur = 0.2;
constexpr double kWindowBlurs = 3.0;  // the pixels' window: 3 s + 1
constexpr double kWindowMargin = 1.0;

// How far from the edge the grey is taken as flat.
constexpr double kFlatReach = 12.0;
constexpr double kFlatReachBlurs = 4.0;
constexpr double kFlatReachMargin = 3.0;

// Another edge begins where the derivative changes sign by this part of the
// peak, or rises again by that part.
constexpr double kSignChange = 0.2;
constexpr double kRise = 0.25;

constexpr int kMaxIterations = 8;

// Grey levels are rounded to whole numbers: the noise is never below that. It
// is no white noise: without another noise of half a grey level to shake it,
// all rows along an edge on the lattice are rounded alike.
constexpr double kRoundingVariance = 1.0 / 12.0;
constexpr double kShakenVariance = 0.25;
constexpr double kSlipsToShake = 20;  // per pixel of slip

// The fourth cumulant of a unit square projected on a direction, over 24.
double square_kurtosis(const frame& f) {
  const double c2 = f.cos * f.cos;
  const double s2 = f.sin * f.sin;
  return -(c2 * c2 + s2 * s2) / (120.0 * 24.0);
}

// What is to be added to the variance of a pixel's noise because the rows of
// the strip are rounded alike: all of it when the edge runs along a row, a
// column or a diagonal, little when it slips across the lattice.
double rounding_alike(const frame& f, double half_width, double noise) {
  const double width = 2 * half_width;
  const double low = std::min(std::fabs(f.cos), std::fabs(f.sin));
  const double high = std::max(std::fabs(f.cos), std::fabs(f.sin));
  const double slope = std::min(low, (high - low) * std::numbers::sqrt2 / 2);
  return std::max(kShakenVariance - noise, 0.0) * width /
         (1 + kSlipsToShake * slope * width);
}

template <size_t N>
void take_out_tilt(step_equations<N>* e) {
  for (size_t i = 0; i < kTilt; ++i) e->matrix[kTilt][i] = 0;
  for (size_t i = kTilt; i < N; ++i) e->matrix[i][kTilt] = 0;
  e->gradient[kTilt] = 0;
}

// One Gauss-Newton step of the core unknowns, held within reason. Returns how
// far the geometry moved, in blurs.
double move(const vector_n<kCoreUnknowns>& x, const strip_bounds& b,
            step_model* m) {
  const double scale = -m->blur / m->step;
  const double s = m->blur;
  const double shift = std::clamp(scale * x[kPosition], -s, s);
  const double turn = std::clamp(scale * x[kTilt], -s, s);
  const double widen = std::clamp(scale * x[kBlur], -0.4 * s, 0.4 * s);
  m->low += x[kLow];
  m->step += x[kStep];
  m->position = std::clamp(m->position + shift, b.before, b.after);
  m->tilt += turn;
  m->blur = std::max(m->blur + widen, kSmallestBlur);
  return (std::fabs(shift) + 0.3 * std::fabs(turn) + 0.1 * std::fabs(widen)) /
         s;
}

}  // namespace

double admitted(const doubt& d, double caution) {
  const double square = d.shift * d.shift;
  if (!(square > caution * d.variance)) return 0;
  return d.shift * (1 - caution * d.variance / square);
}

// Full width of the fine derivative's peak at 60 % of its height, 0 if unknown.
double locator::width_of_peak(int index) const {
  constexpr float kLevel = 0.6f;
  const float height = fine_[index];
  const auto crossing = [&](int step) {
    int i = index;
    while (i + step >= 0 && i + step < fine_.size()) {
      const float inner = fine_[i] / height;
      const float outer = fine_[i + step] / height;
      if (outer < kLevel) {
        return std::abs(i - index) +
               static_cast<double>((inner - kLevel) / (inner - outer));
      }
      i += step;
    }
    return 0.0;
  };
  const double left = crossing(-1);
  const double right = crossing(1);
  if (left > 0 && right > 0) return left + right;
  return 2 * std::max(left, right);
}

bool locator::find_start(const profile& p, const edge& found, double sigma,
                         start* s) const {
  const float sign = found.amplitude > 0 ? 1.0f : -1.0f;
  const double reach = std::max(1.0, 0.6 * sigma) + 0.5;
  const int first =
      std::max(static_cast<int>(std::ceil(found.u - reach - p.u(0.5))), 0);
  const int last =
      std::min(static_cast<int>(std::floor(found.u + reach - p.u(0.5))),
               fine_.size() - 1);
  s->index = -1;
  for (int i = first; i <= last; ++i) {
    if (s->index < 0 || sign * fine_[i] > sign * fine_[s->index]) s->index = i;
  }
  if (s->index < 0 || !(sign * fine_[s->index] > 0)) return false;

  s->u = p.u(s->index + 0.5);
  if (s->index > 0 && s->index + 1 < fine_.size()) {
    s->u += peak_of(fine_[s->index - 1], fine_[s->index], fine_[s->index + 1])
                .offset;
  }
  // The peak is a Gaussian of the image's blur, the kernel, the bilinear
  // samples and the differences; 2.0216 sigma wide at 60 %.
  const double width = width_of_peak(s->index) / 2.0216;
  const double variance = width * width - kernel_.sigma() * kernel_.sigma() -
                          (kSamplingVariance - 1.0 / 12.0);
  s->blur = width > 0 ? std::sqrt(std::max(variance, 0.15)) : 0.8;
  find_flats(p, s);
  return true;
}

void locator::find_flats(const profile& p, start* s) const {
  const float height = fine_[s->index];
  const int reach = static_cast<int>(
      std::max(kFlatReach, kFlatReachBlurs * s->blur + kFlatReachMargin));
  // Derivative values from the peak outward, until something else begins.
  const auto extent = [&](int step) {
    float lowest = 1;
    int n = 0;
    for (int i = s->index + step; n < reach && i >= 0 && i < fine_.size();
         i += step, ++n) {
      const float value = fine_[i] / height;
      if (value < -static_cast<float>(kSignChange) ||
          value > lowest + static_cast<float>(kRise)) {
        break;
      }
      lowest = std::min(lowest, value);
    }
    return n;
  };
  // Derivative i lies between positions i and i + 1.
  s->flat_begin = s->index - extent(-1);
  s->flat_end = std::min(s->index + 1 + extent(1) + 1, p.size());
}

location locator::locate(const image& picture, const frame& f, const profile& p,
                         const edge& found, double sigma, double curvature) {
  location result;
  result.u = found.u;
  start s;
  if (!find_start(p, found, sigma, &s)) return result;

  const bool with_tilt = 2 * f.half_width >= kLeastWidth;
  strip_bounds bounds = {s.u, 0, curvature,
                         0,   0, std::max(f.half_width, kLeastWidth / 2)};
  const double first_u = p.u(s.flat_begin);
  const double last_u = p.u(s.flat_end - 1);
  step_model m = {0, 0, 0, 0, s.blur, 0};
  const double kurtosis = square_kurtosis(f);
  flat_side before;
  flat_side after;

  for (int round = 0; round < 2; ++round) {
    const double window = kWindowBlurs * m.blur + kWindowMargin;
    bounds.before = std::max(-window, first_u - 0.5 - bounds.centre);
    bounds.after = std::min(window, last_u + 0.5 - bounds.centre);
    if (!(bounds.before < 0 && bounds.after > 0)) return result;
    strip_.gather(picture, f, bounds);
    if (strip_.size() < 2 * kCoreUnknowns) return result;

    before = {};
    after = {};
    for (int k = s.flat_begin; k < s.flat_end; ++k) {
      const double t = p.u(k) - bounds.centre;
      if (t <= bounds.before - 1) before.add(t, p.values()[k], p.lines());
      if (t >= bounds.after + 1) after.add(t, p.values()[k], p.lines());
    }
    if (round == 0) {
      const double low =
          before.n > 0 ? before.grey / before.n : p.values()[s.flat_begin];
      const double high =
          after.n > 0 ? after.grey / after.n : p.values()[s.flat_end - 1];
      m.low = low;
      m.step = high - low;
    }
    const double start_blur = m.blur;
    if (!(m.step * found.amplitude > 0)) return result;
    for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
      m.kurtosis = kurtosis / (m.blur * m.blur * m.blur * m.blur);
      auto e = equations_of<kCoreUnknowns>(strip_, m);
      add_flat_sides(before, after, m, &e);
      if (!with_tilt) take_out_tilt(&e);
      factorise(&e.matrix);
      const auto y = forward(e.matrix, e.gradient);
      const double moved =
          move(backward<kCoreUnknowns>(e.matrix, y), bounds, &m);
      if (!(m.step * found.amplitude > 0)) return result;
      if (moved < 0.03) break;
    }
    const bool turned = std::fabs(m.tilt) > 0.75;
    const bool widened = std::fabs(m.blur - start_blur) > 0.4 * start_blur;
    if (round > 0 || !(turned || widened)) break;
    bounds.centre += m.position;
    bounds.tilt = m.tilt / bounds.half_width;
    m.position = 0;
  }

  m.kurtosis = kurtosis / (m.blur * m.blur * m.blur * m.blur);
  auto e = equations_of<kAllUnknowns>(strip_, m);
  const double squares = e.squares;
  add_flat_sides(before, after, m, &e);
  if (!with_tilt) take_out_tilt(&e);
  factorise(&e.matrix);
  const auto y = forward(e.matrix, e.gradient);
  vector_n<kAllUnknowns> unit{};
  unit[kPosition] = 1;
  const auto x = forward(e.matrix, unit);

  double remaining = squares;
  for (const double value : y) remaining -= value * value;
  const double freedom =
      std::max(1.0, static_cast<double>(strip_.size()) - 8.0);
  const double noise = std::max(remaining / freedom, kRoundingVariance);
  const double scale = -m.blur / m.step;
  const double scale2 =
      scale * scale * (noise + rounding_alike(f, bounds.half_width, noise));

  const double blur = m.blur;
  move(backward<kCoreUnknowns>(e.matrix, y), bounds, &m);
  const double u = bounds.centre + m.position;
  // A turned edge smears the profile, and the detector's peak may be anywhere
  // on it.
  const double farthest = std::max({1.0, 0.6 * sigma, 0.5 * std::fabs(m.tilt)});
  const bool plausible = m.step * found.amplitude > 0 &&
                         std::fabs(u - found.u) <= farthest &&
                         std::fabs(u) <= f.half_length;
  if (!plausible) return result;

  result.fitted = true;
  result.u = u;
  result.tilt = m.tilt / bounds.half_width;
  result.blur = blur;
  for (size_t i = 0; i < kCoreUnknowns; ++i) result.variance += x[i] * x[i];
  result.variance *= scale2;
  const double half = bounds.half_width;
  double sensitivity = 0;
  for (size_t i = 0; i < kCoreUnknowns; ++i) {
    sensitivity -= x[i] * e.matrix[kCurvature][i];
  }
  result.per_curvature = sensitivity * half * half / 2;
  result.curvature = {scale * x[kCurvature] * y[kCurvature],
                      scale2 * x[kCurvature] * x[kCurvature]};
  const auto with_curvature = backward<kCurvature + 1>(e.matrix, y);
  result.bent = scale * with_curvature[kCurvature] * 2 / (half * half);
  result.illumination = {
      scale * (x[kRampBefore] * y[kRampBefore] + x[kRampAfter] * y[kRampAfter]),
      scale2 *
          (x[kRampBefore] * x[kRampBefore] + x[kRampAfter] * x[kRampAfter])};
  return result;
}

}  // namespace vexolab
