// SPDX-License-Identifier: MIT
#include "tests/vexolab/synthetic_image.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace synthetic {
namespace {

constexpr double kReach = 6.5;  // standard deviations after which all is flat

double density(double z) {
  return std::exp(-0.5 * z * z) / std::sqrt(2 * std::numbers::pi);
}
double cumulative(double z) {
  return 0.5 * std::erfc(-z / std::numbers::sqrt2);
}

// First and second antiderivative of cumulative(z / sigma).
double once(double d, double sigma) {
  const double z = d / sigma;
  return sigma * (z * cumulative(z) + density(z));
}
double twice(double d, double sigma) {
  const double z = d / sigma;
  return 0.5 * sigma * sigma * ((z * z + 1) * cumulative(z) + z * density(z));
}

// A blurred half plane at signed distance d from a pixel's centre, averaged
// over the pixel: boxes of the two widths along the normal.
double covered_by_half_plane(double d, double w1, double w2, double sigma) {
  if (w1 < w2) std::swap(w1, w2);
  if (w2 < 1e-5) {
    return (once(d + w1 / 2, sigma) - once(d - w1 / 2, sigma)) / w1;
  }
  const double outer = (w1 + w2) / 2;
  const double inner = (w1 - w2) / 2;
  return (twice(d + outer, sigma) - twice(d + inner, sigma) -
          twice(d - inner, sigma) + twice(d - outer, sigma)) /
         (w1 * w2);
}

// The point spread function with the pixel's box, along one axis: its density
// and its integral, tabulated.
class pixel_kernel {
 public:
  explicit pixel_kernel(double sigma) : reach_(kReach * sigma + 0.5) {
    const int n = static_cast<int>(2 * reach_ * kPerPixel) + 3;
    for (int i = 0; i < n; ++i) {
      const double x = -reach_ + i / kPerPixel;
      integral_.push_back(once(x + 0.5, sigma) - once(x - 0.5, sigma));
      density_.push_back(cumulative((x + 0.5) / sigma) -
                         cumulative((x - 0.5) / sigma));
    }
  }

  double reach() const { return reach_; }
  double integral(double x) const {
    if (x <= -reach_) return 0;
    if (x >= reach_) return 1;
    return look_up(integral_, x);
  }
  double density(double x) const {
    return std::fabs(x) >= reach_ ? 0 : look_up(density_, x);
  }

 private:
  static constexpr double kPerPixel = 1024;

  double look_up(const std::vector<double>& table, double x) const {
    const double place = (x + reach_) * kPerPixel;
    const auto i = static_cast<size_t>(place);
    const double rest = place - static_cast<double>(i);
    return table[i] + rest * (table[i + 1] - table[i]);
  }

  double reach_;
  std::vector<double> integral_;
  std::vector<double> density_;
};

// x^T M x = 1 in pixel coordinates (y down) relative to the centre.
struct quadric {
  double xx;
  double xy;
  double yy;
};

quadric quadric_of(const disc_shape& e) {
  const double angle = e.angle * std::numbers::pi / 180;
  const double c = std::cos(angle);
  const double s = -std::sin(angle);
  const double a = 1 / (e.a * e.a);
  const double b = 1 / (e.b * e.b);
  return {c * c * a + s * s * b, c * s * (a - b), s * s * a + c * c * b};
}

// Nodes and weights of Gauss and Legendre's rule on [-1, 1].
struct rule {
  std::vector<double> node;
  std::vector<double> weight;

  explicit rule(int n) {
    for (int i = 0; i < n; ++i) {
      double x = std::cos(std::numbers::pi * (i + 0.75) / (n + 0.5));
      double slope = 1;
      for (int step = 0; step < 50; ++step) {
        double p = 1;
        double before = 0;
        for (int k = 1; k <= n; ++k) {
          const double next = ((2 * k - 1) * x * p - (k - 1) * before) / k;
          before = p;
          p = next;
        }
        slope = n * (x * p - before) / (x * x - 1);
        const double move = p / slope;
        x -= move;
        if (std::fabs(move) < 1e-15) break;
      }
      node.push_back(x);
      weight.push_back(2 / ((1 - x * x) * slope * slope));
    }
  }
};

// Integral over the ellipse of the kernel around (x, y), both relative to its
// centre: lines of constant y in closed form, over them by a rule. In t with
// y = top * sin t the ends of the chords are smooth.
double covered_by_ellipse(const quadric& q, double x, double y,
                          const pixel_kernel& kernel, const rule& r) {
  const double determinant = q.xx * q.yy - q.xy * q.xy;
  const double top = std::sqrt(q.xx / determinant);
  const double longest = 1 / std::sqrt(q.xx);
  const double low = std::clamp((y - kernel.reach()) / top, -1.0, 1.0);
  const double high = std::clamp((y + kernel.reach()) / top, -1.0, 1.0);
  if (!(low < high)) return 0;
  const double from = std::asin(low);
  const double to = std::asin(high);
  double sum = 0;
  for (size_t i = 0; i < r.node.size(); ++i) {
    const double t = from + (to - from) * (r.node[i] + 1) / 2;
    const double yy = top * std::sin(t);
    const double middle = -q.xy * yy / q.xx;
    const double half = longest * std::cos(t);
    sum += r.weight[i] * top * std::cos(t) * kernel.density(yy - y) *
           (kernel.integral(middle + half - x) -
            kernel.integral(middle - half - x));
  }
  return sum * (to - from) / 2;
}

// About how far (x, y) lies outside the ellipse.
double distance_from(const quadric& q, double x, double y) {
  const double gx = q.xx * x + q.xy * y;
  const double gy = q.xy * x + q.yy * y;
  const double value = gx * x + gy * y;
  const double gradient = 2 * std::hypot(gx, gy);
  return gradient > 0 ? (value - 1) / gradient : -1e9;
}

}  // namespace

void add_half_plane(double x, double y, double angle, double psf, double part,
                    coverage* c) {
  const double radians = angle * std::numbers::pi / 180;
  const double nx = std::cos(radians);
  const double ny = -std::sin(radians);
  const double reach = kReach * psf + 1;
  for (int j = 0; j < c->height; ++j) {
    for (int i = 0; i < c->width; ++i) {
      const double d = (i - x) * nx + (j - y) * ny;
      if (d > -reach) {
        c->at(i, j) +=
            part * (d > reach ? 1.0
                              : covered_by_half_plane(d, std::fabs(nx),
                                                      std::fabs(ny), psf));
      }
    }
  }
}

void add_ellipse(const disc_shape& shape, double psf, double part,
                 coverage* c) {
  const quadric q = quadric_of(shape);
  // The same with the axes exchanged: for pixels where the contour runs along
  // the lines.
  const quadric turned = {q.yy, q.xy, q.xx};
  const pixel_kernel kernel(psf);
  const rule nodes(psf < 0.6 ? 40 : 32);
  const double reach = 1.6 * kernel.reach() + 1;
  for (int j = 0; j < c->height; ++j) {
    for (int i = 0; i < c->width; ++i) {
      const double x = i - shape.x;
      const double y = j - shape.y;
      const double d = distance_from(q, x, y);
      if (d > reach) continue;
      double covered = 1;
      if (d > -reach) {
        const double gx = q.xx * x + q.xy * y;
        const double gy = q.xy * x + q.yy * y;
        covered = std::fabs(gx) > std::fabs(gy)
                      ? covered_by_ellipse(q, x, y, kernel, nodes)
                      : covered_by_ellipse(turned, y, x, kernel, nodes);
      }
      c->at(i, j) += part * covered;
    }
  }
}

grey_image expose(const coverage& c, const exposure& e, random* r) {
  grey_image g = {c.width, c.height, {}};
  g.pixels.reserve(c.part.size());
  for (int j = 0; j < c.height; ++j) {
    for (int i = 0; i < c.width; ++i) {
      double grey = e.dark + e.step * c.at(i, j);
      if (e.illumination) grey *= e.illumination(i, j);
      if (e.noise > 0) grey += e.noise * r->normal();
      g.pixels.push_back(
          static_cast<unsigned char>(std::clamp(grey + 0.5, 0.0, 255.0)));
    }
  }
  return g;
}

}  // namespace synthetic
