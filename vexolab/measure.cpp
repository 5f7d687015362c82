// SPDX-License-Identifier: MIT
#include "vexolab/measure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "vexolab/curvature.h"
#include "vexolab/location.h"
#include "vexolab/parallel.h"
#include "vexolab/profile.h"
#include "vexolab/vexolab.h"

namespace vexolab {
namespace {

// How far above its noise a doubt must stand, squared: 4 is two standard
// deviations.
constexpr double kIlluminationCaution = 4;
constexpr double kCurvatureCaution = 8;

// Blur that is the same in all directions moves a curved edge toward its centre
// of curvature: by c s^2 / 2 (Verbeek and van Vliet 1994). The next order, for
// the curvature and the blur as they are measured on the blurred edge, is 5/12
// of (c s)^2 where the grey beside the edge is known. It is fitted from 6 to 12
// blurs on either side, takes up a part, and leaves 0.44 to 0.49.
// Where the curvature changes, blur averages that too.
constexpr double kNextOrder = 0.47;

double blur_displacement(const arc& bend, double blur) {
  const double cs = bend.curvature * blur;
  const double s2 = blur * blur;
  return 0.5 * cs * blur * (1 - kNextOrder * cs * cs) +
         0.125 * bend.second * s2 * s2;
}

// The dearer a doubt would be in noise, the more evidence it needs.
double illumination_caution(const location& l) {
  return kIlluminationCaution * (1 + l.illumination.variance / l.variance);
}

// A strip is no wider than where a curved edge has left its tangent by 1 px.
double effective_half_width(double half_width, double curvature) {
  if (curvature == 0) return half_width;
  return std::min(half_width, std::sqrt(2 / std::fabs(curvature)));
}

// A bend this clear, and at least this much at the strip's border, is worth
// measuring again with it; the rest is linear.
constexpr double kClearlyBent = 25;
constexpr double kBentPx = 0.15;
constexpr int kMostBends = 3;
// Beyond this the series for arcs do not hold.
constexpr double kLargestTurn = 0.6;
// Measured along another arc an edge is found again this near.
constexpr double kSameEdgePx = 2;

bool clearly_bent(const location& l, double half_width) {
  return l.curvature.shift * l.curvature.shift >
             kClearlyBent * l.curvature.variance &&
         std::fabs(l.bent) * half_width * half_width / 2 > kBentPx;
}

struct measured_edge {
  location at;
  arc bend;           // along which it was measured
  int resampled = 0;  // times; then the edges of the last find() are gone
};

// All that measuring one rectangle after another needs; one for each thread.
class rectangle_measurer {
 public:
  rectangle_measurer(const image& picture, const detection& how)
      : picture_(picture), how_(how), kernel_(how.sigma) {}

  // The edges of a rectangle that is begun, valid until the next call.
  const std::vector<edge>& begin(const frame& f, double curvature) {
    sampled_ = 0;
    gathered_before_ = locator_.pixels_gathered();
    return find(f, curvature);
  }

  // The edges of the same rectangle along another arc.
  const std::vector<edge>& find(const frame& f, double curvature) {
    edges_.clear();
    profile_.sample(picture_, narrowed(f, curvature), curvature);
    sampled_ += 1.0 * profile_.size() * profile_.lines();
    if (profile_.size() < 3) return edges_;
    derivative_.compute(profile_, kernel_);
    find_edges(profile_, derivative_, how_.sigma, how_.threshold, &edges_);
    if (!edges_.empty()) locator_.prepare(profile_);
    return edges_;
  }

  // Locates an edge of the last find(), along that arc or, if its pixels
  // clearly say so, along a circle: then the profile is sampled anew.
  measured_edge locate(const frame& f, const edge& found, const arc& bend) {
    edge e = found;
    measured_edge result;
    result.at.u = e.u;
    result.bend = bend;
    if (exhausted()) return result;
    result.at = locate_along(f, e, bend);
    while (result.resampled < kMostBends && !exhausted()) {
      const double half_width = narrowed(f, result.bend.curvature).half_width;
      if (!result.at.fitted || !clearly_bent(result.at, half_width)) break;
      const double limit = kLargestTurn / std::max(f.half_width, 1.0);
      const arc bent = {
          std::clamp(result.bend.curvature + result.at.bent, -limit, limit)};
      ++result.resampled;
      if (!find_again(f, bent.curvature, result.at.u, &e)) break;
      const location again = locate_along(f, e, bent);
      if (!again.fitted) break;
      result.at = again;
      result.bend = bent;
    }
    return result;
  }

  // Samples and pixels visited since the rectangle was begun.
  double work() const {
    return sampled_ + locator_.pixels_gathered() - gathered_before_;
  }

 private:
  bool exhausted() const { return work() > kMostWork; }

  static frame narrowed(frame f, double curvature) {
    f.half_width = effective_half_width(f.half_width, curvature);
    return f;
  }

  location locate_along(const frame& f, const edge& e, const arc& bend) {
    return locator_.locate(picture_, narrowed(f, bend.curvature), profile_, e,
                           how_.sigma, bend);
  }

  // The edge of the same polarity nearest to u along another arc.
  bool find_again(const frame& f, double curvature, double u, edge* e) {
    const bool rising = e->amplitude > 0;
    bool found = false;
    for (const edge& other : find(f, curvature)) {
      if ((other.amplitude > 0) != rising) continue;
      if (std::fabs(other.u - u) > kSameEdgePx) continue;
      if (found && std::fabs(other.u - u) > std::fabs(e->u - u)) continue;
      *e = other;
      found = true;
    }
    return found;
  }

  image picture_;
  detection how_;
  gaussian_kernel kernel_;
  profile profile_;
  derivative derivative_;
  locator locator_;
  std::vector<edge> edges_;
  double sampled_ = 0, gathered_before_ = 0;
};

// The place of an edge whose curvature is `c`, after all corrections.
double corrected(const measured_edge& m, double c, double half_length) {
  const location& l = m.at;
  double u = l.u;
  if (l.fitted) {
    arc bend = m.bend;
    bend.curvature = c;
    const double known = (c - m.bend.curvature) * l.per_curvature;
    const doubt rest = {l.curvature.shift - known, l.curvature.variance};
    u += known + admitted(rest, kCurvatureCaution);
    u += admitted(l.illumination, illumination_caution(l));
    u -= blur_displacement(bend, l.blur);
  }
  return std::clamp(u, -half_length, half_length);
}

bool measurable(const float* r) {
  for (int i = 0; i < 5; ++i) {
    if (!std::isfinite(r[i])) return false;
  }
  return r[3] > 0 && r[3] <= VEXOLAB_MAX_HALF_LENGTH && r[4] >= 0 &&
         r[4] <= VEXOLAB_MAX_HALF_LENGTH;
}

}  // namespace

double samples_of(const image& picture, double sigma, double half_length,
                  double half_width) {
  const double diagonal = std::hypot(picture.width, picture.height);
  const double length = std::min(2 * half_length, diagonal);
  const double width = std::min(2 * half_width, diagonal);
  return (length + 1) * (width + 1 + std::min(sigma, length));
}

double samples_of(const image& picture, double sigma, const float* rectangles,
                  int n) {
  double sum = 0;
  for (int i = 0; i < n; ++i) {
    const float* r = rectangles + 5 * static_cast<ptrdiff_t>(i);
    if (measurable(r)) sum += samples_of(picture, sigma, r[3], r[4]);
  }
  return sum;
}

void measure_rectangles(const image& picture, const detection& how,
                        const selection& which, const float* rectangles, int n,
                        std::vector<double>* points) {
  std::vector<frame> frames;
  for (int i = 0; i < n; ++i) {
    const float* r = rectangles + 5 * static_cast<ptrdiff_t>(i);
    if (measurable(r)) frames.push_back(frame_of(r[0], r[1], r[2], r[3], r[4]));
  }
  const std::vector<arc> drawn = arcs_of_rectangles(frames);
  const auto count = frames.size();
  std::vector<measured_edge> edges(count);
  std::vector<measured_point> found(count);
  parallel_for(
      static_cast<int>(count), [&] { return rectangle_measurer(picture, how); },
      [&](rectangle_measurer& measurer, int begin, int end) {
        for (auto i = static_cast<size_t>(begin); i < static_cast<size_t>(end);
             ++i) {
          const frame& f = frames[i];
          const edge* e = select(measurer.begin(f, drawn[i].curvature), which);
          if (!e) continue;
          edges[i] = measurer.locate(f, *e, drawn[i]);
          const double u = edges[i].at.u;
          found[i] = {true, f.image_x(u, 0), f.image_y(u, 0),
                      edges[i].bend.curvature};
        }
      });
  const std::vector<double> curvatures =
      curvature_of_points(frames, drawn, found);
  std::vector<double> ys;
  for (size_t i = 0; i < count; ++i) {
    if (!found[i].found) continue;
    const frame& f = frames[i];
    const double u = corrected(edges[i], curvatures[i], f.half_length);
    points->push_back(f.image_x(u, 0));
    ys.push_back(f.image_y(u, 0));
  }
  points->insert(points->end(), ys.begin(), ys.end());
}

double measure_all_edges(const image& picture, const detection& how,
                         const frame& f, std::vector<double>* triples) {
  rectangle_measurer measurer(picture, how);
  const std::vector<edge> edges = measurer.begin(f, 0);
  for (const edge& e : edges) {
    const measured_edge m = measurer.locate(f, e, {});
    // Another edge's arc is not this one's.
    if (m.resampled > 0) measurer.find(f, 0);
    const double u = corrected(m, m.bend.curvature, f.half_length);
    triples->insert(triples->end(),
                    {f.image_x(u, 0), f.image_y(u, 0), e.amplitude});
  }
  return measurer.work();
}

}  // namespace vexolab
