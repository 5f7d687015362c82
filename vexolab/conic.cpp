// SPDX-License-Identifier: MIT
#include "vexolab/conic.h"

#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <Eigen/Eigenvalues>
#include <cmath>
#include <utility>

namespace vexolab {
namespace {

// The conic seen from an origin moved by (x, y): q(. - (x, y)).
conic moved(const conic& q, double x, double y) {
  const auto [a, b, c, d, e, f] = q;
  return {a,
          b,
          c,
          d - 2 * a * x - b * y,
          e - b * x - 2 * c * y,
          f + a * x * x + b * x * y + c * y * y - d * x - e * y};
}

// Solves four equations in place, rows {coefficients, right side}.
bool solve4(double (&m)[4][5], double (&solution)[4]) {
  for (int k = 0; k < 4; ++k) {
    int pivot = k;
    for (int i = k + 1; i < 4; ++i) {
      if (std::fabs(m[i][k]) > std::fabs(m[pivot][k])) pivot = i;
    }
    if (m[pivot][k] == 0) return false;
    if (pivot != k) std::swap(m[pivot], m[k]);
    const double inverse = 1 / m[k][k];
    for (int i = k + 1; i < 4; ++i) {
      const double factor = m[i][k] * inverse;
      for (int j = k + 1; j < 5; ++j) m[i][j] -= factor * m[k][j];
    }
  }
  for (int k = 3; k >= 0; --k) {
    double sum = m[k][4];
    for (int j = k + 1; j < 4; ++j) sum -= m[k][j] * solution[j];
    solution[k] = sum / m[k][k];
  }
  return true;
}

using matrix3 = Eigen::Matrix3d;

// Weighted means of x^i y^j in a frame of its own: centred, unit spread.
struct conic_moments {
  matrix3 quartic, cubic;  // of (x^2, xy, y^2) with itself, with (x, y, 1)
  double xx, xy, yy;       // (x, y) with itself
  double origin_x, origin_y, unit;

  conic_moments(const point_set& p, const double* weight, const scatter& s)
      : origin_x(s.x),
        origin_y(s.y),
        unit(std::sqrt((s.xx + s.yy) / s.weight)) {
    double m40 = 0, m31 = 0, m22 = 0, m13 = 0, m04 = 0;
    double m30 = 0, m21 = 0, m12 = 0, m03 = 0;
    const double inverse = 1 / unit;
    for (int i = 0; i < p.n; ++i) {
      const double x = (p.x[i] - s.x) * inverse, y = (p.y[i] - s.y) * inverse;
      const double wxx = weight[i] * x * x, wyy = weight[i] * y * y;
      m40 += wxx * x * x;
      m31 += wxx * x * y;
      m22 += wxx * y * y;
      m13 += wyy * x * y;
      m04 += wyy * y * y;
      m30 += wxx * x;
      m21 += wxx * y;
      m12 += wyy * x;
      m03 += wyy * y;
    }
    const double scale = inverse * inverse / s.weight;
    xx = s.xx * scale;
    xy = s.xy * scale;
    yy = s.yy * scale;
    quartic << m40, m31, m22, m31, m22, m13, m22, m13, m04;
    quartic /= s.weight;
    cubic << m30, m21, 0, m21, m12, 0, m12, m03, 0;
    cubic /= s.weight;
    cubic.col(2) << xx, xy, yy;
  }
};

}  // namespace

// Scaled to a + c = 2, which every ellipse allows, and seen from the first
// point: (x^2 + y^2) + u (x^2 - y^2) + 2 v x y + d x + e y = 0, an ellipse for
// u^2 + v^2 < 1.
bool ellipse_through(const point_set& p, const int* index, conic* result) {
  const double x0 = p.x[index[0]], y0 = p.y[index[0]];
  double m[4][5], s[4];
  for (int i = 0; i < 4; ++i) {
    const double x = p.x[index[i + 1]] - x0, y = p.y[index[i + 1]] - y0;
    m[i][0] = (x - y) * (x + y);
    m[i][1] = 2 * x * y;
    m[i][2] = x;
    m[i][3] = y;
    m[i][4] = -(x * x + y * y);
  }
  if (!solve4(m, s) || !(s[0] * s[0] + s[1] * s[1] < 1)) return false;
  *result = moved({1 + s[0], 2 * s[1], 1 - s[0], s[2], s[3], 0}, x0, y0);
  return true;
}

bool direct_fit(const point_set& p, const double* weight, const scatter& s,
                conic* result) {
  if (s.is_thin()) return false;
  const conic_moments m(p, weight, s);
  // The linear terms follow from the quadratic ones: -reduction^T q.
  const double det = m.xx * m.yy - m.xy * m.xy;
  matrix3 inverse;
  inverse << m.yy / det, -m.xy / det, 0, -m.xy / det, m.xx / det, 0, 0, 0, 1;
  const matrix3 reduction = m.cubic * inverse;
  matrix3 left = m.quartic - reduction * m.cubic.transpose();
  matrix3 constraint;
  constraint << 0, 0, 2, 0, -1, 0, 2, 0, 0;
  // Largest mu of constraint q = mu left q. Exact points make `left` singular
  // in the very direction that is looked for, up to rounding: a trace of
  // identity keeps it positive and does not turn that direction.
  const double trace = left.trace();
  Eigen::LLT<matrix3> factors;
  for (double part = 1e-14; part < 1e-8; part *= 10) {
    left.diagonal().array() += part * trace;
    factors.compute(left);
    if (factors.info() == Eigen::Success) break;
  }
  if (factors.info() != Eigen::Success) return false;
  factors.matrixL().solveInPlace(constraint);
  factors.matrixU().solveInPlace<Eigen::OnTheRight>(constraint);
  const Eigen::SelfAdjointEigenSolver<matrix3> solver(constraint);
  if (solver.info() != Eigen::Success) return false;
  Eigen::Vector3d q = factors.matrixU().solve(solver.eigenvectors().col(2));
  q *= 2 / (q[0] + q[2]);
  const Eigen::Vector3d rest = -reduction.transpose() * q;
  *result = moved({q[0], q[1], q[2], rest[0] * m.unit, rest[1] * m.unit,
                   rest[2] * m.unit * m.unit},
                  m.origin_x, m.origin_y);
  return q.allFinite() && 4 * q[0] * q[2] > q[1] * q[1];
}

bool to_ellipse(const conic& equation, ellipse* result) {
  const auto [a, b, c, d, e, f] = equation;
  const double det = 4 * a * c - b * b;
  if (!(det > 0)) return false;
  const double cx = (b * e - 2 * c * d) / det;
  const double cy = (b * d - 2 * a * e) / det;
  const double level = -(f + (d * cx + e * cy) / 2);
  // The long axis belongs to the small eigenvalue, across the large one's.
  const axes form(a, b / 2, c);
  if (!(level > 0 && form.small > 0)) return false;
  *result = {cx,
             cy,
             -form.sn,
             form.cs,
             std::sqrt(level / form.small),
             std::sqrt(level / form.large)};
  return true;
}

}  // namespace vexolab
