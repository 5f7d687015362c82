// SPDX-License-Identifier: MIT
//
// The region library on one page: make an image, binarise it, clean it, split
// it into parts and print what was found. Built and run against the installed
// package by the tests; the last line says whether everything came out right.
#include <cmath>
#include <cstdio>
#include <vector>

#include "region/operations.h"

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 200;

// Three bright washers (discs with a hole) on a dark, slightly dirty ground.
std::vector<unsigned char> washers() {
  std::vector<unsigned char> image(kWidth * kHeight, 40);
  const int centres[3][2] = {{60, 60}, {160, 120}, {250, 70}};
  for (int row = 0; row < kHeight; ++row)
    for (int col = 0; col < kWidth; ++col) {
      for (const auto& centre : centres) {
        const double r = std::hypot(col - centre[0], row - centre[1]);
        if (r >= 10 && r <= 30) image[row * kWidth + col] = 200;
      }
      if ((row * 37 + col * 11) % 997 == 0) image[row * kWidth + col] = 220;
    }
  return image;
}

}  // namespace

int main() {
  std::vector<unsigned char> image = washers();

  vexo::region bright;
  vexo::threshold_y(image.data(), kWidth, kHeight, 128, 255, &bright);

  vexo::region disc;
  vexo::gen_se_circle(2, &disc);
  vexo::region clean;
  vexo::opening(bright, disc, &clean);  // specks go, washers stay

  vexo::region parts;
  const int count = vexo::connection_y(clean, &parts, 1);
  std::printf("%d parts\n%8s %8s %8s %8s\n", count, "area", "col", "row",
              "circ.");
  for (int i = 0; i < count; ++i) {
    const vexo::region& part = *parts.children[i];
    std::printf("%8d %8.2f %8.2f %8.4f\n", part.area, part.center_col(),
                part.center_row(), part.circularity());
  }

  vexo::region filled;
  vexo::fill_up_y(clean, &filled);
  vexo::region holes;
  vexo::difference_y(filled, clean, &holes);
  const int hole_count = vexo::connection_y(holes, &parts, 0);
  std::printf("%d holes\n", hole_count);

  const bool right = count == 3 && hole_count == 3;
  std::printf("%s\n", right ? "as expected" : "NOT as expected");
  return right ? 0 : 1;
}
