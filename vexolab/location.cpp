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
// The last steps' size, in blurs: the next one is its square.
constexpr double kSettled = 0.03;

// The pixels are gathered anew when the edge strays this far from across the
// strip [px], or its blur is off by this part.
constexpr double kMostTurned = 0.75;
constexpr double kMostWidened = 0.4;

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

// The fit of one edge to the pixels of its strip.
class strip_fit {
 public:
  strip_fit(const frame& f, const profile& p, const edge_start& s,
            const arc& bend, pixel_strip* strip)
      : frame_(f),
        profile_(p),
        start_(s),
        strip_(*strip),
        square_kurtosis_(square_kurtosis(f)),
        with_tilt_(2 * f.half_width >= kLeastWidth) {
    bounds_ = {s.u, 0, bend, 0, 0, std::max(f.half_width, kLeastWidth / 2)};
    model_.blur = s.blur;
  }

  // False when the pixels do not make an edge of that polarity.
  bool run(const image& picture, bool rising) {
    if (!gather(picture)) return false;
    start_levels();
    if (!iterate(rising)) return false;
    if (!misplaced()) return true;
    bounds_.centre += model_.position;
    bounds_.tilt = model_.tilt / bounds_.half_width;
    model_.position = 0;
    return gather(picture) && iterate(rising);
  }

  // The last step, with the terms that the model leaves out beside it.
  location finish();

  double step() const { return model_.step; }
  // How far the edge strays along u within the strip.
  double reach() const { return std::fabs(model_.tilt); }

 private:
  bool gather(const image& picture);
  void start_levels();
  bool iterate(bool rising);

  template <size_t N>
  step_equations<N> equations() {
    const double s2 = model_.blur * model_.blur;
    model_.kurtosis = square_kurtosis_ / (s2 * s2);
    step_equations<N> e = equations_of<N>(strip_, model_);
    pixel_squares_ = e.squares;
    add_flat_sides(before_, after_, model_, &e);
    if (!with_tilt_) take_out_tilt(&e);
    factorise(&e.matrix);
    return e;
  }

  // Whether the pixels were gathered around another place than this.
  bool misplaced() const {
    return std::fabs(model_.tilt) > kMostTurned ||
           std::fabs(model_.blur - start_.blur) > kMostWidened * start_.blur;
  }

  double noise(const vector_n<kAllUnknowns>& y) const;

  const frame& frame_;
  const profile& profile_;
  const edge_start& start_;
  pixel_strip& strip_;
  const double square_kurtosis_;
  const bool with_tilt_;
  strip_bounds bounds_{};
  step_model model_{};
  flat_side before_;
  flat_side after_;
  double pixel_squares_ = 0;
};

bool strip_fit::gather(const image& picture) {
  const double window = kWindowBlurs * model_.blur + kWindowMargin;
  const double first_u = profile_.u(start_.flat_begin) - 0.5;
  const double last_u = profile_.u(start_.flat_end - 1) + 0.5;
  bounds_.before = std::max(-window, first_u - bounds_.centre);
  bounds_.after = std::min(window, last_u - bounds_.centre);
  if (!(bounds_.before < 0 && bounds_.after > 0)) return false;
  strip_.gather(picture, frame_, bounds_);
  before_ = {};
  after_ = {};
  for (int k = start_.flat_begin; k < start_.flat_end; ++k) {
    const double t = profile_.u(k) - bounds_.centre;
    const float grey = profile_.values()[k];
    if (t <= bounds_.before - 1) before_.add(t, grey, profile_.lines());
    if (t >= bounds_.after + 1) after_.add(t, grey, profile_.lines());
  }
  return strip_.size() >= 2 * kCoreUnknowns;
}

void strip_fit::start_levels() {
  const float* values = profile_.values();
  const double high =
      after_.n > 0 ? after_.grey / after_.n : values[start_.flat_end - 1];
  model_.low =
      before_.n > 0 ? before_.grey / before_.n : values[start_.flat_begin];
  model_.step = high - model_.low;
}

bool strip_fit::iterate(bool rising) {
  const auto wrong = [&] {
    return rising ? !(model_.step > 0) : !(model_.step < 0);
  };
  if (wrong()) return false;
  for (int i = 0; i < kMaxIterations; ++i) {
    const auto e = equations<kCoreUnknowns>();
    const auto y = forward(e.matrix, e.gradient);
    const double moved =
        move(backward<kCoreUnknowns>(e.matrix, y), bounds_, &model_);
    if (wrong()) return false;
    if (moved < kSettled) break;
  }
  return true;
}

// Variance of a pixel, from what the full model leaves.
double strip_fit::noise(const vector_n<kAllUnknowns>& y) const {
  double remaining = pixel_squares_;
  for (const double value : y) remaining -= value * value;
  const double freedom =
      static_cast<double>(strip_.size()) - static_cast<double>(kAllUnknowns);
  const double white =
      std::max(remaining / std::max(freedom, 1.0), kRoundingVariance);
  return white + rounding_alike(frame_, bounds_.half_width, white);
}

location strip_fit::finish() {
  const auto e = equations<kAllUnknowns>();
  const auto y = forward(e.matrix, e.gradient);
  // The position's row of the inverse: entry i of x times entry i of y is what
  // unknown i adds to the position when it is let in, and the square of x its
  // variance. The unknowns come in nested order, the core first.
  vector_n<kAllUnknowns> unit{};
  unit[kPosition] = 1;
  const auto x = forward(e.matrix, unit);
  const double scale = -model_.blur / model_.step;
  const double variance = scale * scale * noise(y);
  const double half = bounds_.half_width;

  location l;
  l.fitted = true;
  for (size_t i = 0; i < kCoreUnknowns; ++i) {
    l.variance += variance * x[i] * x[i];
    l.per_curvature -= x[i] * e.matrix[kCurvature][i] * half * half / 2;
  }
  for (size_t i = kCurvature; i < kAllUnknowns; ++i) {
    doubt& d = i == kCurvature ? l.curvature : l.illumination;
    d.shift += scale * x[i] * y[i];
    d.variance += variance * x[i] * x[i];
  }
  l.bent = scale * backward<kCurvature + 1>(e.matrix, y)[kCurvature] * 2 /
           (half * half);
  move(backward<kCoreUnknowns>(e.matrix, y), bounds_, &model_);
  l.u = bounds_.centre + model_.position;
  l.tilt = model_.tilt / half;
  l.blur = model_.blur;
  return l;
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
                         edge_start* s) const {
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

void locator::find_flats(const profile& p, edge_start* s) const {
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
                         const edge& found, double sigma, const arc& bend) {
  location detected;
  detected.u = found.u;
  edge_start s;
  if (!find_start(p, found, sigma, &s)) return detected;
  strip_fit fit(f, p, s, bend, &strip_);
  if (!fit.run(picture, found.amplitude > 0)) return detected;
  const location l = fit.finish();
  // A turned edge smears the profile, and the detector's peak may be anywhere
  // on it.
  const double farthest = std::max({1.0, 0.6 * sigma, 0.5 * fit.reach()});
  const bool plausible = fit.step() * found.amplitude > 0 &&
                         std::fabs(l.u - found.u) <= farthest &&
                         std::fabs(l.u) <= f.half_length;
  return plausible ? l : detected;
}

}  // namespace vexolab
