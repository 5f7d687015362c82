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
// Ends with the first undamped step below `last_step`, or when no step promises
// anything. Close to a minimum that fits well the next step would be as the
// square of the last one; of very many points, fewer steps are taken. The
// damping follows the quality of the steps [H. Nielsen, Damping parameter in
// Marquardt's method, 1999].
template <typename Shape>
void minimise(const point_set& points, const double* weight, double last_step,
              Shape* shape) {
  constexpr double kFirstDamping = 1e-4;
  constexpr double kMostDamping = 1e8;
  constexpr double kNothing = 1e-15;  // as a part of the cost
  const int most_steps = std::clamp(200000 / points.n, 3, 200);
  auto equations = shape->linearise(points, weight);
  double damping = 0, growth = 2;
  for (int i = 0; i < most_steps && damping < kMostDamping; ++i) {
    Eigen::Matrix<double, Shape::kFreedom, 1> delta;
    Shape moved = *shape;
    double gain = -1;  // achieved, as a part of what was promised
    if (equations.step(damping, &delta) && moved.move(delta)) {
      if (damping == 0 && delta.cwiseAbs().maxCoeff() <= last_step) {
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
