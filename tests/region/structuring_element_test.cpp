// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "pictures.h"
#include "region/operations.h"

namespace vexo_test {
namespace {

using vexo::region;

Runs circle(int radius) {
  region element;
  vexo::gen_se_circle(radius, &element);
  EXPECT_EQ(runs_of(element), chords_of(element));
  return runs_of(element);
}

Runs rectangle(int width, int height) {
  region element;
  vexo::gen_se_rectangle(width, height, &element);
  EXPECT_EQ(runs_of(element), chords_of(element));
  return runs_of(element);
}

Runs cross(int width, int height) {
  region element;
  vexo::gen_se_cross(width, height, &element);
  EXPECT_EQ(runs_of(element), chords_of(element));
  return runs_of(element);
}

int pixels(const Runs& runs) {
  int sum = 0;
  for (const Run& run : runs) sum += run.end - run.begin + 1;
  return sum;
}

TEST(Circle, RadiusOneOrLessIsTheFivePixelPlus) {
  const Runs plus{{-1, 0, 0}, {0, -1, 1}, {1, 0, 0}};
  for (const int radius : {1, 0, -1, -1000}) EXPECT_EQ(circle(radius), plus);
}

TEST(Circle, RadiusTwoHasTwentyOnePixels) {
  EXPECT_EQ(
      circle(2),
      (Runs{{-2, -1, 1}, {-1, -2, 2}, {0, -2, 2}, {1, -2, 2}, {2, -1, 1}}));
  EXPECT_EQ(pixels(circle(2)), 21);
}

// The loop of the builder as it is told: points of an octant, mirrored, then
// written into the table of half-widths in list order.
Runs told_circle(int r) {
  std::vector<std::pair<double, double>> points{{0, r}};
  double x = 0;
  double y = r;
  double d = 3 - 2.0 * r;
  while (x < y) {
    if (d >= 0) {
      d = d + 4 * x - 4 * y + 14;
      y = y - 1;
    } else {
      d = d + 4 * x + 6;
    }
    x = x + 1;
    points.push_back({x, y});
  }
  for (int i = static_cast<int>(points.size()) - 2; i >= 0; --i)
    points.push_back({points[i].second, points[i].first});
  std::vector<int> half(r + 1, 0);
  for (const auto& [a, b] : points)
    half[static_cast<size_t>(b)] = static_cast<int>(a);
  Runs result;
  for (int k = r; k >= 1; --k) result.push_back({-k, -half[k], half[k]});
  for (int k = 0; k <= r; ++k) result.push_back({k, -half[k], half[k]});
  return result;
}

TEST(Circle, FollowsTheMidpointLoop) {
  for (int radius = 1; radius <= 400; ++radius)
    ASSERT_EQ(circle(radius), told_circle(radius)) << radius;
}

TEST(Rectangle, SidesBelowThreeBecomeTwo) {
  for (const int side : {-5, 0, 1, 2})
    EXPECT_EQ(rectangle(side, side), (Runs{{0, 0, 1}, {1, 0, 1}}));
  EXPECT_EQ(rectangle(3, 1), (Runs{{0, 0, 2}, {1, 0, 2}}));
  EXPECT_EQ(rectangle(1, 3), (Runs{{0, 0, 1}, {1, 0, 1}, {2, 0, 1}}));
  EXPECT_EQ(rectangle(4, 3), (Runs{{0, 0, 3}, {1, 0, 3}, {2, 0, 3}}));
}

TEST(Cross, WidthAndHeightTwo) {
  for (const int side : {-5, 0, 1, 2})
    EXPECT_EQ(cross(side, side), (Runs{{0, 1, 1}, {1, 0, 1}}));
}

TEST(Cross, FiveByFiveHasItsBarAndItsStemInTheMiddle) {
  EXPECT_EQ(cross(5, 5),
            (Runs{{0, 2, 2}, {1, 2, 2}, {2, 0, 4}, {3, 2, 2}, {4, 2, 2}}));
}

TEST(Cross, EvenSizesSitRightOfAndBelowTheMiddle) {
  EXPECT_EQ(
      cross(4, 6),
      (Runs{{0, 2, 2}, {1, 2, 2}, {2, 2, 2}, {3, 0, 3}, {4, 2, 2}, {5, 2, 2}}));
}

TEST(StructuringElement, NothingOfAnOlderElementIsLeft) {
  region element;
  vexo::gen_se_rectangle(50, 5000, &element);
  vexo::gen_se_circle(1, &element);
  EXPECT_EQ(runs_of(element).size(), 3u);
  EXPECT_EQ(chords_of(element), runs_of(element));
  vexo::gen_se_cross(9, 9, &element);
  EXPECT_EQ(chords_of(element).size(), 9u);
  EXPECT_EQ(chords_of(element), runs_of(element));
}

TEST(StructuringElement, CarriesNoImageSize) {
  region element = region_of(Runs{{0, 0, 0}}, 20, 10);
  vexo::gen_se_rectangle(3, 3, &element);
  EXPECT_EQ(element.width, -1);
  EXPECT_EQ(element.height, -1);
}

TEST(StructuringElement, LeavesNothingOfWhatTheRegionWas) {
  region bars = picture(lines({"###", "...", "###"}));
  region element;
  ASSERT_EQ(vexo::connection_y(bars, &element, 0), 2);
  vexo::gen_se_rectangle(3, 3, &element);
  EXPECT_EQ(element.child_count, 0);
  EXPECT_EQ(element.children, nullptr);
}

}  // namespace
}  // namespace vexo_test
