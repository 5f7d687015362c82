// SPDX-License-Identifier: MIT
#include "vexolab/step_model.h"

#include <cstddef>

#include "vexolab/blurred_step.h"

namespace vexolab {
namespace {

constexpr int kLanes = static_cast<int>(pixel_strip::kLanes);

// One value for each of kLanes pixels. Loops over lanes have a constant length
// and independent turns: they become vector instructions. Sums are kept per
// lane and added at the end in a fixed order, so that the result is the same
// whatever the vectors' width.
struct lanes {
  float value[kLanes];
};

double sum_of(const lanes& a) {
  lanes s = a;
  for (int half = kLanes / 2; half > 0; half /= 2) {
    for (int l = 0; l < half; ++l) s.value[l] += s.value[l + half];
  }
  return s.value[0];
}

// The columns of the pixels at `from`, and their weighted residuals.
template <size_t N>
void fill_columns(const pixel_strip& strip, size_t from, const step_model& m,
                  lanes* columns, lanes* weighted, lanes* residual) {
  const float* t = strip.t() + from;
  const float* v = strip.v() + from;
  const float* grey = strip.grey() + from;
  const float* weight = strip.weight() + from;
  const auto low = static_cast<float>(m.low);
  const auto step = static_cast<float>(m.step);
  const auto position = static_cast<float>(m.position);
  const auto tilt = static_cast<float>(m.tilt);
  const auto inverse_blur = static_cast<float>(1 / m.blur);
  const auto kurtosis = static_cast<float>(m.kurtosis);
  for (int l = 0; l < kLanes; ++l) {
    const float distance = t[l] - position - tilt * v[l];
    const float z = distance * inverse_blur;
    const step_value s = blurred_step(z);
    const float shape = s.step - kurtosis * (z * z - 3.0f) * z * s.density;
    residual->value[l] = grey[l] - low - step * shape;
    columns[kLow].value[l] = 1.0f;
    columns[kStep].value[l] = shape;
    columns[kPosition].value[l] = s.density;
    columns[kTilt].value[l] = s.density * v[l];
    columns[kBlur].value[l] = s.density * z;
    if constexpr (N == kAllUnknowns) {
      columns[kCurvature].value[l] = s.density * v[l] * v[l];
      columns[kRampBefore].value[l] = distance * (1.0f - s.step);
      columns[kRampAfter].value[l] = distance * s.step;
    }
  }
  for (size_t i = 0; i < N; ++i) {
    for (int l = 0; l < kLanes; ++l) {
      weighted[i].value[l] = columns[i].value[l] * weight[l];
    }
  }
}

}  // namespace

template <size_t N>
step_equations<N> equations_of(const pixel_strip& strip, const step_model& m) {
  lanes products[N * (N + 1) / 2] = {};
  lanes gradient[N] = {};
  lanes squares = {};
  for (size_t from = 0; from < strip.padded_size(); from += kLanes) {
    lanes columns[N];
    lanes weighted[N];
    lanes residual;
    fill_columns<N>(strip, from, m, columns, weighted, &residual);
    size_t p = 0;
    for (size_t i = 0; i < N; ++i) {
      for (size_t j = 0; j <= i; ++j, ++p) {
        for (int l = 0; l < kLanes; ++l) {
          products[p].value[l] += weighted[i].value[l] * columns[j].value[l];
        }
      }
      for (int l = 0; l < kLanes; ++l) {
        gradient[i].value[l] += weighted[i].value[l] * residual.value[l];
      }
    }
    for (int l = 0; l < kLanes; ++l) {
      squares.value[l] +=
          weighted[kLow].value[l] * residual.value[l] * residual.value[l];
    }
  }
  step_equations<N> e;
  size_t p = 0;
  for (size_t i = 0; i < N; ++i) {
    for (size_t j = 0; j <= i; ++j, ++p) e.matrix[i][j] = sum_of(products[p]);
    e.gradient[i] = sum_of(gradient[i]);
  }
  e.squares = sum_of(squares);
  return e;
}

template <size_t N>
void add_flat_sides(const flat_side& before, const flat_side& after,
                    const step_model& m, step_equations<N>* e) {
  const double high = m.low + m.step;
  const double residual_before = before.grey - before.n * m.low;
  const double residual_after = after.grey - after.n * high;
  e->matrix[kLow][kLow] += before.n + after.n;
  e->matrix[kStep][kLow] += after.n;
  e->matrix[kStep][kStep] += after.n;
  e->gradient[kLow] += residual_before + residual_after;
  e->gradient[kStep] += residual_after;
  if constexpr (N == kAllUnknowns) {
    // Sums of the distance from the edge, t - position.
    const double a = m.position;
    const double d_before = before.t - a * before.n;
    const double d_after = after.t - a * after.n;
    e->matrix[kRampBefore][kLow] += d_before;
    e->matrix[kRampBefore][kRampBefore] +=
        before.t_squared - 2 * a * before.t + a * a * before.n;
    e->matrix[kRampAfter][kLow] += d_after;
    e->matrix[kRampAfter][kStep] += d_after;
    e->matrix[kRampAfter][kRampAfter] +=
        after.t_squared - 2 * a * after.t + a * a * after.n;
    e->gradient[kRampBefore] +=
        before.t_grey - a * before.grey - m.low * d_before;
    e->gradient[kRampAfter] += after.t_grey - a * after.grey - high * d_after;
  }
}

template step_equations<kCoreUnknowns> equations_of(const pixel_strip&,
                                                    const step_model&);
template step_equations<kAllUnknowns> equations_of(const pixel_strip&,
                                                   const step_model&);
template void add_flat_sides(const flat_side&, const flat_side&,
                             const step_model&, step_equations<kCoreUnknowns>*);
template void add_flat_sides(const flat_side&, const flat_side&,
                             const step_model&, step_equations<kAllUnknowns>*);

}  // namespace vexolab
