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
// of curvature: by c s^2 / 2 (Verbeek and van Vliet 1994). The second term was
// found by measuring discs of 8 to 20 px radius.
double blur_displacement(double curvature, double blur) {
  const double cs = curvature * blur;
  return 0.5 * cs * blur * (1 - cs * cs);
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

// All that measuring one rectangle after another needs; one for each thread.
class rectangle_measurer {
 public:
  rectangle_measurer(const image& picture, const detection& how)
      : picture_(picture), how_(how), kernel_(how.sigma) {}

  // The edges of the rectangle, valid until the next call.
  const std::vector<edge>& find(const frame& f, double curvature) {
    edges_.clear();
    profile_.sample(picture_, f, curvature);
    if (profile_.size() < 3) return edges_;
    derivative_.compute(profile_, kernel_);
    find_edges(profile_, derivative_, how_.sigma, how_.threshold, &edges_);
    if (!edges_.empty()) locator_.prepare(profile_);
    return edges_;
  }

  location locate(const frame& f, const edge& e, double curvature) {
    return locator_.locate(picture_, f, profile_, e, how_.sigma, curvature);
  }

 private:
  image picture_;
  detection how_;
  gaussian_kernel kernel_;
  profile profile_;
  derivative derivative_;
  locator locator_;
  std::vector<edge> edges_;
};

bool measurable(const float* r) {
  for (int i = 0; i < 5; ++i) {
    if (!std::isfinite(r[i])) return false;
  }
  return r[3] > 0 && r[3] <= VEXOLAB_MAX_HALF_LENGTH && r[4] >= 0 &&
         r[4] <= VEXOLAB_MAX_HALF_LENGTH;
}

}  // namespace

void measure_rectangles(const image& picture, const detection& how,
                        const selection& which, const float* rectangles, int n,
                        std::vector<double>* points) {
  std::vector<frame> frames;
  for (int i = 0; i < n; ++i) {
    const float* r = rectangles + 5 * static_cast<ptrdiff_t>(i);
    if (measurable(r)) frames.push_back(frame_of(r[0], r[1], r[2], r[3], r[4]));
  }
  const std::vector<double> drawn = curvature_of_rectangles(frames);
  const auto count = frames.size();
  std::vector<location> locations(count);
  std::vector<measured_point> found(count);
  std::vector<double> assumed(count);
  parallel_for(
      static_cast<int>(count), [&] { return rectangle_measurer(picture, how); },
      [&](rectangle_measurer& measurer, int begin, int end) {
        for (auto i = static_cast<size_t>(begin); i < static_cast<size_t>(end);
             ++i) {
          frame f = frames[i];
          f.half_width = effective_half_width(f.half_width, drawn[i]);
          const edge* e = select(measurer.find(f, drawn[i]), which);
          if (!e) continue;
          assumed[i] = drawn[i];
          locations[i] = measurer.locate(f, *e, assumed[i]);
          const double u = locations[i].u;
          found[i] = {true, f.image_x(u, 0), f.image_y(u, 0)};
        }
      });
  const std::vector<double> curvatures =
      curvature_of_points(frames, drawn, assumed, found);
  std::vector<double> ys;
  for (size_t i = 0; i < count; ++i) {
    if (!found[i].found) continue;
    const location& l = locations[i];
    double u = l.u;
    if (l.fitted) {
      const double c = curvatures[i];
      u += (c - assumed[i]) * l.per_curvature;
      u += admitted(l.illumination, illumination_caution(l));
      u -= blur_displacement(c, l.blur);
    }
    const double limit = frames[i].half_length;
    u = std::clamp(u, -limit, limit);
    points->push_back(frames[i].image_x(u, 0));
    ys.push_back(frames[i].image_y(u, 0));
  }
  points->insert(points->end(), ys.begin(), ys.end());
}

void measure_all_edges(const image& picture, const detection& how,
                       const frame& f, std::vector<double>* triples) {
  rectangle_measurer measurer(picture, how);
  for (const edge& e : measurer.find(f, 0)) {
    const location l = measurer.locate(f, e, 0);
    double u = l.u;
    if (l.fitted) {
      u += admitted(l.illumination, illumination_caution(l));
      u += admitted(l.curvature, kCurvatureCaution);
    }
    u = std::clamp(u, -f.half_length, f.half_length);
    triples->insert(triples->end(),
                    {f.image_x(u, 0), f.image_y(u, 0), e.amplitude});
  }
}

}  // namespace vexolab
