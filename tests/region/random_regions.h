// SPDX-License-Identifier: MIT
//
// Seeded random pictures: the same seed gives the same picture everywhere.
#ifndef VEXO_TESTS_REGION_RANDOM_REGIONS_H_
#define VEXO_TESTS_REGION_RANDOM_REGIONS_H_

#include <algorithm>
#include <cstdint>
#include <string>

#include "pictures.h"

namespace vexo_test {

// How many of `all` seeded cases to run. The thread sanitizer makes each ten
// times slower and looks at threads, which every case has alike.
constexpr uint64_t cases(uint64_t all) {
#ifdef __SANITIZE_THREAD__
  return (all + 9) / 10;
#else
  return all;
#endif
}

// Every sanitizer makes large pictures slow: their memory is its work. Smaller
// ones and fewer of them go the same ways.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// The same of cases that are large.
constexpr uint64_t large_cases(uint64_t all) {
  return kSanitized ? (all + 3) / 4 : all;
}

// The generator is ours, since the distributions of the standard library differ
// between its implementations.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed * 0x9e3779b97f4a7c15u + 1) {}

  uint64_t bits() {  // splitmix64
    uint64_t z = state_ += 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
  }
  // first..last, both included
  int between(int first, int last) {
    const auto range = static_cast<uint64_t>(int64_t{last} - first + 1);
    return static_cast<int>(first + static_cast<int64_t>(bits() % range));
  }
  // true in `percent` of 100 cases
  bool chance(int percent) { return between(0, 99) < percent; }

 private:
  uint64_t state_;
};

namespace random_detail {

inline void noise(Random& random, int percent, Picture& p) {
  for (std::string& line : p) {
    for (char& pixel : line) pixel = random.chance(percent) ? '#' : '.';
  }
}

inline void rectangles(Random& random, bool erase, Picture& p) {
  const int height = static_cast<int>(p.size());
  const int width = static_cast<int>(p[0].size());
  for (int n = random.between(1, 12); n > 0; --n) {
    const int r0 = random.between(-3, height - 1);
    const int c0 = random.between(-3, width - 1);
    const int r1 = r0 + random.between(0, height / 2 + 2);
    const int c1 = c0 + random.between(0, width / 2 + 2);
    const char pixel = erase && n % 2 == 0 ? '.' : '#';
    for (int r = std::max(r0, 0); r <= r1 && r < height; ++r) {
      for (int c = std::max(c0, 0); c <= c1 && c < width; ++c) p[r][c] = pixel;
    }
  }
}

inline void periodic(Random& random, Picture& p) {
  const int dx = random.between(0, 4);
  const int dy = random.between(0, 4);
  const int period = random.between(2, 6);
  for (size_t r = 0; r < p.size(); ++r) {
    for (size_t c = 0; c < p[r].size(); ++c) {
      p[r][c] = (c * dx + r * dy) % period == 0 ? '#' : '.';
    }
  }
}

inline void walk(Random& random, Picture& p) {
  int r = random.between(0, static_cast<int>(p.size()) - 1);
  int c = random.between(0, static_cast<int>(p[0].size()) - 1);
  for (int n = random.between(1, 600); n > 0; --n) {
    p[r][c] = '#';
    r = std::clamp(r + random.between(-1, 1), 0,
                   static_cast<int>(p.size()) - 1);
    c = std::clamp(c + random.between(-1, 1), 0,
                   static_cast<int>(p[0].size()) - 1);
  }
}

}  // namespace random_detail

// Sparse and dense noise, stripes, checkerboards, rectangles with holes, and
// wandering lines; shapes touch every border. 1 x n and n x 1 are among them.
inline Picture random_picture(uint64_t seed, int most = 70) {
  Random random(seed);
  int width = random.between(1, most);
  int height = random.between(1, most);
  if (seed % 11 == 0) width = 1;
  if (seed % 13 == 0) height = 1;
  if (seed % 3 == 0) {
    width = std::min(width, 12);
    height = std::min(height, 12);
  }
  Picture p(height, std::string(width, '.'));
  switch (random.between(0, 5)) {
    case 0:
      random_detail::noise(random, random.between(1, 15), p);
      break;
    case 1:
      random_detail::noise(random, random.between(30, 97), p);
      break;
    case 2:
      random_detail::periodic(random, p);
      break;
    case 3:
      random_detail::rectangles(random, true, p);
      break;
    case 4:
      random_detail::walk(random, p);
      break;
    default:
      random_detail::rectangles(random, false, p);
      break;
  }
  return p;
}

}  // namespace vexo_test

#endif  // VEXO_TESTS_REGION_RANDOM_REGIONS_H_
