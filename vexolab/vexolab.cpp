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

#include "vexolab/fit.h"
#include "vexolab/memory.h"
#include "vexolab/rectangles.h"

namespace {

constexpr double kLargestNumber = 1e7;

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
