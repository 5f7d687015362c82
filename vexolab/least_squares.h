// SPDX-License-Identifier: MIT
//
// Gauss-Newton for a handful of parameters, damped [Levenberg, Marquardt] only
// where a plain step fails.
#ifndef VEXOLAB_LEAST_SQUARES_H_
#define VEXOLAB_LEAST_SQUARES_H_

#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <algorithm>
#include <cmath>

#include "vexolab/shape_fit.h"

namespace vexolab {

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

  // One point of distance `residual` and its derivatives.
  void add(double weight, double residual, const double (&row)[kFreedom]) {
    for (int i = 0; i < kFreedom; ++i) {
      const double weighted = weight * row[i];
      for (int j = 0; j <= i; ++j) hessian(i, j) += weighted * row[j];
      gradient(i) += weighted * residual;
    }
    cost += weight * residual * residual;
  }

  bool step(double damping, Eigen::Matrix<double, kFreedom, 1>* delta) const {
    auto damped = hessian;
    damped.diagonal() *= 1 + damping;
    const Eigen::LLT<Eigen::Matrix<double, kFreedom, kFreedom>> factors(damped);
    if (factors.info() != Eigen::Success) return false;
    *delta = -factors.solve(gradient);
    return delta->allFinite();
  }
};

// Moves *shape to the nearest minimum. Shape has
//
//   kFreedom
//   normal_equations<kFreedom> linearise(points, weight)
//   bool move(step)              false: there is no such shape
//
// Ends with the first step below `last_step`, or when no step, however short,
// improves. Close to a minimum that fits well the next step would be as the
// square of the last one; of very many points, fewer steps are taken.
template <typename Shape>
void minimise(const point_set& points, const double* weight, double last_step,
              Shape* shape) {
  constexpr double kMostDamping = 1e8;
  const int most_steps = std::clamp(200000 / points.n, 3, 100);
  auto equations = shape->linearise(points, weight);
  double damping = 0;
  for (int i = 0; i < most_steps; ++i) {
    Eigen::Matrix<double, Shape::kFreedom, 1> delta;
    bool better = false;
    if (equations.step(damping, &delta)) {
      Shape moved = *shape;
      if (moved.move(delta)) {
        if (damping == 0 && delta.cwiseAbs().maxCoeff() <= last_step) {
          *shape = moved;
          return;
        }
        const auto next = moved.linearise(points, weight);
        better = next.cost <= equations.cost;
        if (better) {
          *shape = moved;
          equations = next;
        }
      }
    }
    if (better) {
      damping = damping > 1e-6 ? damping / 10 : 0;
    } else {
      damping = std::fmax(damping * 10, 1e-4);
      if (damping > kMostDamping) return;
    }
  }
}

}  // namespace vexolab

#endif  // VEXOLAB_LEAST_SQUARES_H_
