// SPDX-License-Identifier: MIT
//
// Random numbers that are the same with every compiler and library.
#ifndef TESTS_VEXOLAB_RANDOM_H_
#define TESTS_VEXOLAB_RANDOM_H_

#include <cmath>
#include <cstdint>
#include <numbers>

namespace synthetic {

// splitmix64 (Steele, Lea, Flood 2014).
class random {
 public:
  // Neighbouring seeds give unrelated numbers: the seed goes through the same
  // mixing as they do.
  explicit random(uint64_t seed) : state_(seed) { state_ = bits(); }

  uint64_t bits() {
    uint64_t z = state_ += 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
  }

  // In [low, high).
  double uniform(double low, double high) {
    return low + (high - low) * static_cast<double>(bits() >> 11) * 0x1p-53;
  }

  int below(int n) {
    return static_cast<int>(bits() % static_cast<uint64_t>(n));
  }

  double normal() {
    const double radius = std::sqrt(-2 * std::log(1 - uniform(0, 1)));
    return radius * std::cos(uniform(0, 2 * std::numbers::pi));
  }

 private:
  uint64_t state_;
};

}  // namespace synthetic

#endif  // TESTS_VEXOLAB_RANDOM_H_
