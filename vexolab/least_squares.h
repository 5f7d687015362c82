// SPDX-License-Identifier: MIT
//
// Gauss-Newton for a handful of parameters, damped [Levenberg, Marquardt] only
// where a plain step fails.
#ifndef VEXOLAB_LEAST_SQUARES_H_
#define VEXOLAB_LEAST_SQUARES_H_

#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <array>
#include <cmath>

#include "vexolab/shape_fit.h"

namespace vexolab {

// Some points' weights, distances and derivatives of these, as arrays so that
// the compiler can take several points at once.
template <int kFreedom>
struct residual_block {
  static constexpr int kMost = 64;
  static constexpr int kLanes = 4;
  using values = std::array<double, kMost>;

  values weight, residual;
  std::array<values, kFreedom> row;
  int n = 0;

  // Points of no weight up to a multiple of kLanes.
  void pad() {
    for (; n % kLanes != 0; ++n) {
      weight[n] = residual[n] = 0;
      for (values& derivative : row) derivative[n] = 0;
    }
  }

  double sum_of_products(const values& a, const values& b) const {
    double sums[kLanes] = {};
    for (int i = 0; i < n; i += kLanes) {
      for (int k = 0; k < kLanes; ++k) sums[k] += a[i + k] * b[i + k];
    }
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
  }
};

// Half of the weighted sum of squares around a shape, to second order.
template <int kFreedom>
struct normal_equations {
  Eigen::Matrix<double, kFreedom, kFreedom> hessian;  // lower triangle
  Eigen::Matrix<double, kFreedom, 1> gradient;
  double cost;

  normal_equations() {
    hessian.setZero();
    gradient.setZero();
    cost = 0;
  }

  void add(residual_block<kFreedom>* block) {
    residual_block<kFreedom>& b = *block;
    b.pad();
    typename residual_block<kFreedom>::values weighted;
    for (int i = 0; i < kFreedom; ++i) {
      for (int k = 0; k < b.n; ++k) weighted[k] = b.weight[k] * b.row[i][k];
      for (int j = 0; j <= i; ++j) {
        hessian(i, j) += b.sum_of_products(weighted, b.row[j]);
      }
      gradient(i) += b.sum_of_products(weighted, b.residual);
    }
    for (int k = 0; k < b.n; ++k) weighted[k] = b.weight[k] * b.residual[k];
    cost += b.sum_of_products(weighted, b.residual);
  }

  bool step(double damping, Eigen::Matrix<double, kFreedom, 1>* delta) const {
    auto damped = hessian;
    damped.diagonal() *= 1 + damping;
    const Eigen::LLT<Eigen::Matrix<double, kFreedom, kFreedom>> factors(damped);
    if (factors.info() != Eigen::Success) return false;
    *delta = -factors.solve(gradient);
    return delta->allFinite();
  }

  // By how much the cost would fall if it were what the equations say.
  double promise(const Eigen::Matrix<double, kFreedom, 1>& delta,
                 double damping) const {
    const double damped =
        hessian.diagonal().dot(delta.cwiseProduct(delta)) * damping;
    return damped - gradient.dot(delta);
  }
};

// Moves *shape to the nearest minimum. Shape has
//
//   kFreedom
//   normal_equations<kFreedom> linearise(points, weight)
//   bool move(step)              false: there is no such shape
//
// Ends with the first undamped step below last_step, or when no step promises
// anything. Close to a minimum that fits well the next step would be as the
// square of the last one. The damping follows the quality of the steps [H.
// Nielsen, Damping parameter in Marquardt's method, 1999].
template <typename Shape>
void minimise(const point_set& points, const double* weight, const effort& most,
              Shape* shape) {
  constexpr double kFirstDamping = 1e-4;
  constexpr double kMostDamping = 1e8;
  constexpr double kNothing = 1e-15;  // as a part of the cost
  auto equations = shape->linearise(points, weight);
  double damping = 0, growth = 2;
  for (int i = 0; i < most.most_steps && damping < kMostDamping; ++i) {
    Eigen::Matrix<double, Shape::kFreedom, 1> delta;
    Shape moved = *shape;
    double gain = -1;  // achieved, as a part of what was promised
    if (equations.step(damping, &delta) && moved.move(delta)) {
      if (damping == 0 && delta.cwiseAbs().maxCoeff() <= most.last_step) {
        *shape = moved;
        return;
      }
      const double promised = equations.promise(delta, damping);
      if (!(promised > kNothing * equations.cost)) return;
      const auto next = moved.linearise(points, weight);
      gain = (equations.cost - next.cost) / promised;
      if (gain >= 0) {
        *shape = moved;
        equations = next;
      }
    }
    if (gain >= 0) {
      const double miss = 2 * gain - 1;
      damping *= std::fmax(1.0 / 3, 1 - miss * miss * miss);
      if (damping < 0.01 * kFirstDamping) damping = 0;
      growth = 2;
    } else {
      damping = damping > 0 ? damping * growth : kFirstDamping;
      growth *= 2;
    }
  }
}

}  // namespace vexolab

#endif  // VEXOLAB_LEAST_SQUARES_H_
