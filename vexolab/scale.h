// SPDX-License-Identifier: MIT
//
// Standard deviation of distances among which many may be outliers.
#ifndef VEXOLAB_SCALE_H_
#define VEXOLAB_SCALE_H_

#include <algorithm>
#include <cmath>

namespace vexolab {

// The k-th smallest, k from 1; reorders.
inline double order_statistic(double* values, int n, int k) {
  std::nth_element(values, values + k - 1, values + n);
  return values[k - 1];
}

// From the distance within which half of the points lie; the correction is for
// few points [P. Rousseeuw, A. Leroy, Robust regression and outlier detection].
inline double first_sigma(double half_distance, int n, int freedom) {
  return 1.4826 * (1 + 5.0 / (n - freedom)) * half_distance;
}

// From the distances within 2.5 sigma (3 once the fit has settled), corrected
// for what the cut takes from a normal distribution, 1 - c phi(c) / (Phi(c) -
// 1/2), and for the freedom of the fit.
inline double next_sigma(const double* distance, int n, int freedom,
                         double sigma, bool settled) {
  const double cut = settled ? 3.0 : 2.5;
  const double kept = settled ? 0.973344 : 0.911253;
  double sum = 0;
  int count = 0;
  for (int i = 0; i < n; ++i) {
    const bool within = distance[i] <= cut * sigma;
    sum += within ? distance[i] * distance[i] : 0;
    count += within;
  }
  if (count <= freedom) return sigma;
  return std::sqrt(sum / ((count - freedom) * kept));
}

}  // namespace vexolab

#endif  // VEXOLAB_SCALE_H_
