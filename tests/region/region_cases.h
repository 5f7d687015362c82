// SPDX-License-Identifier: MIT
//
// Seeded regions and elements of every kind that the operations on two regions
// have to get right, and the way between regions and plain lists of runs.
#ifndef VEXO_TESTS_REGION_REGION_CASES_H_
#define VEXO_TESTS_REGION_REGION_CASES_H_

#include <cstdint>

#include "pixel_oracle.h"
#include "random_regions.h"
#include "region/operations.h"
#include "region/region.h"

namespace vexo_test {

inline vexo::region region_of(const PixelSet& pixels) {
  return region_of(pixels.runs());
}

// Rectangles, lines, noise, discs and rows of runs, anywhere around the origin;
// never empty.
inline PixelSet random_pixels(Random& d) {
  PixelSet result;
  const int top = d.between(-12, 12);
  const int left = d.between(-12, 12);
  const int height = d.chance(20) ? 1 : d.between(1, 24);
  const int width = d.chance(20) ? 1 : d.between(1, 90);
  const int kind = d.between(0, 4);
  const int percent = d.between(5, 95);
  for (int r = 0; r < height; ++r) {
    const bool gap_row = kind == 3 && d.chance(33);
    bool on = d.chance(50);
    for (int c = 0; c < width; ++c) {
      if (kind == 2 || kind == 3) on = d.chance(17) ? !on : on;
      const bool solid = kind == 0 && !(r % 7 == 3 && c % 9 == 4);
      const bool noise = kind == 1 && d.chance(percent);
      const int x = 2 * c - width;
      const int y = 2 * r - height;
      const bool disc = kind == 4 && x * x + y * y <= height * height;
      if (solid || noise || disc ||
          ((kind == 2 || kind == 3) && on && !gap_row))
        result.add(top + r, left + c);
    }
  }
  if (result.empty()) result.add(top, left);
  return result;
}

// What the builders make, odd and even; elements with gaps, several runs in a
// row and empty rows; elements far away from their own origin.
inline PixelSet random_element(Random& d) {
  vexo::region built;
  switch (d.between(0, 4)) {
    case 0:
      vexo::gen_se_circle(d.between(0, 7), &built);
      break;
    case 1:
      vexo::gen_se_rectangle(d.between(1, 12), d.between(1, 12), &built);
      break;
    case 2:
      vexo::gen_se_cross(d.between(1, 12), d.between(1, 12), &built);
      break;
    default:
      break;
  }
  if (built.run_count > 0) return pixels_of(runs_of(built));
  PixelSet result;
  const int top = d.between(-20, 20);
  const int left = d.between(-20, 20);
  const int height = d.between(1, 7);
  const int width = d.chance(12) ? d.between(60, 140) : d.between(1, 9);
  const int percent = d.between(10, 90);
  for (int r = 0; r < height; ++r) {
    for (int c = 0; c < width; ++c) {
      if (d.chance(percent)) result.add(top + r, left + c);
    }
  }
  if (result.empty()) result.add(top, left);
  return result;
}

}  // namespace vexo_test

#endif  // VEXO_TESTS_REGION_REGION_CASES_H_
