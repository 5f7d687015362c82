// SPDX-License-Identifier: MIT
//
// Gauss-Newton for a handful of parameters, damped [Levenberg, Marquardt] only
// where a plain step fails.
#ifndef VEXOLAB_LEAST_SQUARES_H_
#define VEXOLAB_LEAST_SQUARES_H_

#include <Eigen/Cholesky>
#include <Eigen/Core>
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
// Ends when a step is below 1e-11 of the points' unit, where the next would be
// below rounding, or when no step, however short, improves.
template <typename Shape>
void minimise(const point_set& points, const double* weight, Shape* shape) {
  constexpr int kMostSteps = 100;
  constexpr double kSmallStep = 1e-11;
  constexpr double kMostDamping = 1e8;
  auto equations = shape->linearise(points, weight);
  double damping = 0;
  for (int i = 0; i < kMostSteps; ++i) {
    Eigen::Matrix<double, Shape::kFreedom, 1> delta;
    bool better = false;
    if (equations.step(damping, &delta)) {
      const double size = delta.cwiseAbs().maxCoeff();
      Shape moved = *shape;
      if (moved.move(delta)) {
        const auto next = moved.linearise(points, weight);
        better = next.cost <= equations.cost;
        if (better) {
          *shape = moved;
          equations = next;
        }
      }
      if (size < kSmallStep) return;
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
