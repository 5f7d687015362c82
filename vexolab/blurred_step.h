// SPDX-License-Identifier: MIT
//
// The image of a straight edge: the cumulative normal distribution and its
// density, in single precision and without branches or tables, so that loops
// over pixels become vector instructions on every compiler. The results do not
// depend on the vectors' width.
#ifndef VEXOLAB_BLURRED_STEP_H_
#define VEXOLAB_BLURRED_STEP_H_

#include <bit>
#include <cmath>
#include <cstdint>

namespace vexolab {

// exp(x) for x in [-80, 0]; below, exp(-80). Relative error below 2e-7.
inline float exp_of_negative(float x) {
  const float clamped = x < -80.0f ? -80.0f : x;
  const float t = clamped * 1.44269504f;
  // Adding 1.5 * 2^23 rounds to a whole number in the low bits.
  const float shifted = t + 12582912.0f;
  const auto exponent = std::bit_cast<int32_t>(shifted) - 0x4b400000;
  const float f = t - (shifted - 12582912.0f);
  // 2^f on [-1/2, 1/2] by its series.
  const float p =
      1.0f + f * (0.693147181f +
                  f * (0.240226507f +
                       f * (0.0555041087f +
                            f * (0.00961812911f +
                                 f * (0.00133335581f + f * 0.000154035304f)))));
  return p * std::bit_cast<float>((exponent + 127) << 23);
}

struct step_value {
  float step;     // Phi(z)
  float density;  // Phi'(z)
};

// Abramowitz and Stegun, Handbook of Mathematical Functions, 26.2.17: absolute
// error below 3e-7.
inline step_value blurred_step(float z) {
  const float density = 0.398942280f * exp_of_negative(-0.5f * z * z);
  const float t = 1.0f / (1.0f + 0.2316419f * std::fabs(z));
  const float tail =
      density * t *
      (0.319381530f +
       t * (-0.356563782f +
            t * (1.781477937f + t * (-1.821255978f + t * 1.330274429f))));
  return {0.5f + std::copysign(0.5f - tail, z), density};
}

}  // namespace vexolab

#endif  // VEXOLAB_BLURRED_STEP_H_
