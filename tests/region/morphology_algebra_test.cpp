// SPDX-License-Identifier: MIT
//
// Laws of morphology that hold for every region and element.
#include <gtest/gtest.h>

#include "region/operations.h"
#include "region_cases.h"

namespace vexo_test {
namespace {

using vexo::region;

struct Case {
  Runs source, other;
  region element;
};

Case random_case(uint64_t seed) {
  Random random(seed);
  const Runs source = random_pixels(random).runs();
  const Runs other = random_pixels(random).runs();
  return {source, other, region_of(random_element(random))};
}

constexpr uint64_t kCases = 800;

Runs dilate(const Runs& source, const region& element) {
  region output;
  vexo::dilation2(region_of(source), element, &output, -1, -1);
  return runs_of(output);
}

Runs erode(const Runs& source, const region& element) {
  region output;
  vexo::erosion2(region_of(source), element, &output, -1, -1);
  return runs_of(output);
}

Runs unite(const Runs& a, const Runs& b) {
  region first = region_of(a), second = region_of(b), output;
  vexo::union2_y(first, second, &output);
  return runs_of(output);
}

Runs intersect(const Runs& a, const Runs& b) {
  region first = region_of(a), second = region_of(b), output;
  vexo::intersection_y(first, second, &output);
  return runs_of(output);
}

Runs subtract(const Runs& a, const Runs& b) {
  region first = region_of(a), second = region_of(b), output;
  vexo::difference_y(first, second, &output);
  return runs_of(output);
}

bool contains(const Runs& all, const Runs& part) {
  return subtract(part, all).empty();
}

Runs moved(Runs runs, int rows, int columns) {
  for (Run& run : runs) {
    run.row += rows;
    run.begin += columns;
    run.end += columns;
  }
  return runs;
}

// Large enough that no element reaches beyond it from any source.
Runs frame() {
  Runs rows;
  for (int row = -120; row <= 160; ++row) rows.push_back({row, -400, 500});
  return rows;
}
Runs inner_frame() {
  Runs rows;
  for (int row = -60; row <= 100; ++row) rows.push_back({row, -200, 300});
  return rows;
}

TEST(MorphologyAlgebra, ReferenceFormsAreDualInsideAFrame) {
  for (uint64_t seed = 0; seed < vexo_test::cases(kCases); ++seed) {
    SCOPED_TRACE(seed);
    Case c = random_case(seed);
    region source = region_of(c.source);
    region complement = region_of(subtract(frame(), c.source));
    region dilated, eroded;
    vexo::dilation1(source, c.element, &dilated);
    vexo::erosion1(complement, c.element, &eroded);
    ASSERT_EQ(intersect(chords_of(dilated), inner_frame()),
              subtract(inner_frame(), chords_of(eroded)));
  }
}

TEST(MorphologyAlgebra, ErosionAnswersDilation) {
  // a dilated lies in b exactly if a lies in b eroded.
  for (uint64_t seed = 0; seed < vexo_test::cases(kCases); ++seed) {
    SCOPED_TRACE(seed);
    const Case c = random_case(seed);
    const Runs dilated = dilate(c.source, c.element);
    ASSERT_TRUE(contains(erode(dilated, c.element), c.source));
    const Runs eroded = erode(c.source, c.element);
    if (!eroded.empty()) {
      ASSERT_TRUE(contains(c.source, dilate(eroded, c.element)));
    }
  }
}

TEST(MorphologyAlgebra, BothAreMonotonic) {
  for (uint64_t seed = 0; seed < vexo_test::cases(kCases); ++seed) {
    SCOPED_TRACE(seed);
    const Case c = random_case(seed);
    const Runs larger = unite(c.source, c.other);
    ASSERT_TRUE(
        contains(dilate(larger, c.element), dilate(c.source, c.element)));
    ASSERT_TRUE(contains(erode(larger, c.element), erode(c.source, c.element)));
  }
}

TEST(MorphologyAlgebra, BothMoveWithTheirSource) {
  for (uint64_t seed = 0; seed < vexo_test::cases(kCases); ++seed) {
    SCOPED_TRACE(seed);
    const Case c = random_case(seed);
    for (const auto& [rows, columns] :
         {std::pair{-7, 13}, std::pair{1000000, -2000000}}) {
      const Runs there = moved(c.source, rows, columns);
      ASSERT_EQ(dilate(there, c.element),
                moved(dilate(c.source, c.element), rows, columns));
      ASSERT_EQ(erode(there, c.element),
                moved(erode(c.source, c.element), rows, columns));
    }
  }
}

TEST(MorphologyAlgebra, DilationDistributesOverUnionErosionOverIntersection) {
  for (uint64_t seed = 0; seed < vexo_test::cases(kCases); ++seed) {
    SCOPED_TRACE(seed);
    const Case c = random_case(seed);
    ASSERT_EQ(dilate(unite(c.source, c.other), c.element),
              unite(dilate(c.source, c.element), dilate(c.other, c.element)));
    const Runs both = intersect(c.source, c.other);
    if (both.empty()) continue;
    ASSERT_EQ(erode(both, c.element),
              intersect(erode(c.source, c.element), erode(c.other, c.element)));
  }
}

TEST(MorphologyAlgebra, BothFormsAgreeForSymmetricElements) {
  for (uint64_t seed = 0; seed < vexo_test::cases(kCases); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    region source = region_of(random_pixels(random).runs());
    region element;
    const int size = 2 * random.between(1, 6) + 1;
    if (random.chance(33)) {
      vexo::gen_se_circle(size, &element);
    } else if (random.chance(50)) {
      vexo::gen_se_rectangle(size, 2 * random.between(1, 6) + 1, &element);
    } else {
      vexo::gen_se_cross(size, 2 * random.between(1, 6) + 1, &element);
    }
    region dilated, eroded;
    vexo::dilation1(source, element, &dilated);
    vexo::erosion1(source, element, &eroded);
    ASSERT_EQ(chords_of(dilated), dilate(runs_of(source), element));
    ASSERT_EQ(chords_of(eroded), erode(runs_of(source), element));
  }
}

}  // namespace
}  // namespace vexo_test
