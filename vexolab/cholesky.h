// SPDX-License-Identifier: MIT
//
// Cholesky factors of small normal matrices, nested: the leading k rows solve
// the problem of the first k unknowns alone.
#ifndef VEXOLAB_CHOLESKY_H_
#define VEXOLAB_CHOLESKY_H_

#include <array>
#include <cmath>
#include <cstddef>

namespace vexolab {

template <size_t N>
using vector_n = std::array<double, N>;

// Row-major; only the lower triangle is read or written.
template <size_t N>
using matrix_n = std::array<std::array<double, N>, N>;

// Replaces the matrix by L with L L^T = matrix; L's diagonal is kept inverted.
// An unknown that the data do not determine (a pivot below 1e-10 of its own
// diagonal) is taken out: its row and inverted pivot are 0, so every solution
// leaves it at 0.
template <size_t N>
void factorise(matrix_n<N>* m) {
  matrix_n<N>& a = *m;
  for (size_t j = 0; j < N; ++j) {
    double pivot = a[j][j];
    for (size_t k = 0; k < j; ++k) pivot -= a[j][k] * a[j][k];
    const bool determined = pivot > 1e-10 * a[j][j] && a[j][j] > 0;
    if (!determined) {
      for (size_t k = 0; k < j; ++k) a[j][k] = 0;
    }
    const double inverse = determined ? 1 / std::sqrt(pivot) : 0.0;
    a[j][j] = inverse;
    for (size_t i = j + 1; i < N; ++i) {
      double sum = a[i][j];
      for (size_t k = 0; k < j; ++k) sum -= a[i][k] * a[j][k];
      a[i][j] = sum * inverse;
    }
  }
}

// L^-1 b for the factor left by factorise().
template <size_t N>
vector_n<N> forward(const matrix_n<N>& l, const vector_n<N>& b) {
  vector_n<N> y;
  for (size_t i = 0; i < N; ++i) {
    double sum = b[i];
    for (size_t k = 0; k < i; ++k) sum -= l[i][k] * y[k];
    y[i] = sum * l[i][i];
  }
  return y;
}

// The unknowns of the leading K rows: (L_K)^-T y.
template <size_t K, size_t N>
vector_n<K> backward(const matrix_n<N>& l, const vector_n<N>& y) {
  vector_n<K> x;
  for (size_t i = K; i-- > 0;) {
    double sum = y[i];
    for (size_t k = i + 1; k < K; ++k) sum -= l[k][i] * x[k];
    x[i] = sum * l[i][i];
  }
  return x;
}

}  // namespace vexolab

#endif  // VEXOLAB_CHOLESKY_H_
