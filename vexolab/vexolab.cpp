// SPDX-License-Identifier: MIT
//
// The C interface: checks of arguments, memory ids, and the fence that no
// exception passes.
#include "vexolab/vexolab.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <new>
#include <utility>
#include <vector>

#include "vexolab/edges.h"
#include "vexolab/fit.h"
#include "vexolab/frame.h"
#include "vexolab/measure.h"
#include "vexolab/memory.h"
#include "vexolab/rectangles.h"

namespace {

constexpr double kLargestNumber = 1e7;

// Below, smoothing does nothing; above, it costs time and finds nothing.
constexpr double kSmallestSigma = 0.4;
constexpr double kLargestSigma = 100;

bool usable(std::initializer_list<double> values) {
  return std::all_of(values.begin(), values.end(), [](double value) {
    return std::fabs(value) <= kLargestNumber;  // false for NaN
  });
}

template <typename Body>
int guarded(Body body) noexcept {
  try {
    return body();
  } catch (...) {
    // Nothing here throws but allocation, of memory or of vectors' lengths.
    return VEXOLAB_E_MEMORY;
  }
}

// Runs `fill`, which returns 0 or a code and appends to the vector it is given,
// and hands the vector out. *count = size / per_item.
template <typename T, typename Fill>
int hand_out(T** data, int* count, int per_item, Fill fill) noexcept {
  *data = nullptr;
  *count = 0;
  return guarded([&] {
    std::vector<T> values;
    if (const int code = fill(&values)) return code;
    const int n = static_cast<int>(values.size()) / per_item;
    const int id = vexolab::keep(std::move(values), data);
    *count = n;
    return id;
  });
}

// Checks what both measurements share; 0 or a code.
int check(const vexolab::image& picture, double sigma, double amplitude) {
  if (!picture.data || picture.width < 2 || picture.height < 2) {
    return VEXOLAB_E_ARGUMENT;
  }
  if (!usable({sigma, amplitude})) return VEXOLAB_E_NUMBER;
  return sigma > 0 ? 0 : VEXOLAB_E_ARGUMENT;
}

vexolab::detection detection_of(double sigma, double amplitude) {
  return {std::clamp(sigma, kSmallestSigma, kLargestSigma),
          std::max(amplitude, 0.0)};
}

int doubles_of(int shape) {
  switch (shape) {
    case VEXOLAB_LINE:
      return 4;
    case VEXOLAB_CIRCLE:
      return 3;
    case VEXOLAB_ELLIPSE:
      return 5;
    default:
      return 0;
  }
}

}  // namespace

int gen_measure_line(double x1, double y1, double x2, double y2, double length,
                     double width, int direction, int count, float** rectangles,
                     int* rectangle_count) {
  if (!rectangles || !rectangle_count) return VEXOLAB_E_ARGUMENT;
  return hand_out(rectangles, rectangle_count, 5,
                  [&](std::vector<float>* out) -> int {
                    if (!usable({x1, y1, x2, y2, length, width}))
                      return VEXOLAB_E_NUMBER;
                    return vexolab::rectangles_on_line(
                        x1, y1, x2, y2, {length, width, direction, count}, out);
                  });
}

int gen_measure_circle(double cx, double cy, double radius, double length,
                       double width, int direction, int count,
                       float** rectangles, int* rectangle_count) {
  if (!rectangles || !rectangle_count) return VEXOLAB_E_ARGUMENT;
  return hand_out(rectangles, rectangle_count, 5,
                  [&](std::vector<float>* out) -> int {
                    if (!usable({cx, cy, radius, length, width}))
                      return VEXOLAB_E_NUMBER;
                    return vexolab::rectangles_on_circle(
                        cx, cy, radius, {length, width, direction, count}, out);
                  });
}

int gen_measure_ellipse(double cx, double cy, double angle, double half_axis_1,
                        double half_axis_2, double length, double width,
                        int direction, int count, float** rectangles,
                        int* rectangle_count) {
  if (!rectangles || !rectangle_count) return VEXOLAB_E_ARGUMENT;
  return hand_out(
      rectangles, rectangle_count, 5, [&](std::vector<float>* out) -> int {
        if (!usable({cx, cy, angle, half_axis_1, half_axis_2, length, width})) {
          return VEXOLAB_E_NUMBER;
        }
        return vexolab::rectangles_on_ellipse(
            cx, cy, angle, half_axis_1, half_axis_2,
            {length, width, direction, count}, out);
      });
}

void ppw_to_rr(double x1, double y1, double x2, double y2, double width,
               float* rectangle) {
  if (!rectangle) return;
  std::fill_n(rectangle, 5, 0.0f);
  if (!usable({x1, y1, x2, y2, width})) return;
  vexolab::rectangle_between(x1, y1, x2, y2, width, rectangle);
}

int do_measure(const unsigned char* image, int width, int height, double sigma,
               double amplitude, const char* selection, const float* rectangles,
               int rectangle_count, double** points, int* n) {
  if (!points || !n) return VEXOLAB_E_ARGUMENT;
  return hand_out(points, n, 2, [&](std::vector<double>* out) -> int {
    const vexolab::image picture = {image, width, height};
    if (const int code = check(picture, sigma, amplitude)) return code;
    vexolab::selection which;
    if (!vexolab::parse_selection(selection, &which) || rectangle_count < 0 ||
        (!rectangles && rectangle_count > 0)) {
      return VEXOLAB_E_ARGUMENT;
    }
    if (rectangle_count > VEXOLAB_MAX_RECTANGLES) return VEXOLAB_E_LIMIT;
    const vexolab::detection how = detection_of(sigma, amplitude);
    if (vexolab::samples_of(picture, how.sigma, rectangles, rectangle_count) >
        VEXOLAB_MAX_SAMPLES) {
      return VEXOLAB_E_LIMIT;
    }
    vexolab::measure_rectangles(picture, how, which, rectangles,
                                rectangle_count, out);
    return 0;
  });
}

int measure_pos_d(double x, double y, double phi, double l1, double l2,
                  const unsigned char* image, int width, int height,
                  double sigma, double amplitude, double** points, int* count) {
  if (!points || !count) return VEXOLAB_E_ARGUMENT;
  return hand_out(points, count, 1, [&](std::vector<double>* out) -> int {
    const vexolab::image picture = {image, width, height};
    if (const int code = check(picture, sigma, amplitude)) return code;
    if (!usable({x, y, phi, l1, l2})) return VEXOLAB_E_NUMBER;
    if (!(l1 > 0) || !(l2 >= 0)) return VEXOLAB_E_ARGUMENT;
    if (l1 > VEXOLAB_MAX_HALF_LENGTH || l2 > VEXOLAB_MAX_HALF_LENGTH) {
      return VEXOLAB_E_LIMIT;
    }
    const vexolab::detection how = detection_of(sigma, amplitude);
    if (vexolab::samples_of(picture, how.sigma, l1, l2) >
        VEXOLAB_MAX_SAMPLES_ALL_EDGES) {
      return VEXOLAB_E_LIMIT;
    }
    vexolab::measure_all_edges(picture, how,
                               vexolab::frame_of(x, y, phi, l1, l2), out);
    return 0;
  });
}

int do_fit(const double* points, int n, int shape, int method, float factor,
           int iterations, int least, double* result) {
  const int code = guarded([&] {
    return vexolab::fit(points, n, shape, method, factor, iterations, least,
                        result);
  });
  if (code < 0 && result) std::fill_n(result, doubles_of(shape), 0.0);
  return code;
}

void clear_mems(int id) { vexolab::release(id); }

const char* vexolab_error_text(int code) {
  if (code >= 0) return "ok";
  switch (code) {
    case VEXOLAB_E_ARGUMENT:
      return "invalid argument";
    case VEXOLAB_E_NUMBER:
      return "a number is not finite or too large";
    case VEXOLAB_E_TOO_FEW:
      return "too few points";
    case VEXOLAB_E_DEGENERATE:
      return "degenerate geometry";
    case VEXOLAB_E_MEMORY:
      return "out of memory";
    case VEXOLAB_E_LIMIT:
      return "a limit is exceeded";
    default:
      return "unknown error";
  }
}
