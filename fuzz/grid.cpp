// SPDX-License-Identifier: MIT
#include "fuzz/grid.h"

namespace fuzz {
namespace {

constexpr Pixel kFour[] = {{0, 1}, {0, -1}, {1, 0}, {-1, 0}};
constexpr Pixel kDiagonal[] = {{1, 1}, {1, -1}, {-1, 1}, {-1, -1}};

// What `member` holds of the pixels reachable from `start` inside [box].
template <class Member>
Grid flood(Pixel start, const Box& box, bool diagonal, Member member) {
  Grid reached;
  std::vector<Pixel> open{start};
  reached.set(start.row, start.col);
  const auto visit = [&](int row, int col) {
    if (row < box.min_row || row > box.max_row || col < box.min_col ||
        col > box.max_col || reached.at(row, col) || !member(row, col))
      return;
    reached.set(row, col);
    open.push_back({row, col});
  };
  while (!open.empty()) {
    const Pixel p = open.back();
    open.pop_back();
    for (const Pixel& step : kFour) visit(p.row + step.row, p.col + step.col);
    if (diagonal)
      for (const Pixel& step : kDiagonal)
        visit(p.row + step.row, p.col + step.col);
  }
  return reached;
}

// The ground around `source` that reaches the rim of its box grown by one.
Grid outside(const Grid& source) {
  Box box = box_of(source);
  box.min_row -= 1;
  box.min_col -= 1;
  box.max_row += 1;
  box.max_col += 1;
  return flood({box.min_row, box.min_col}, box, false,
               [&](int row, int col) { return !source.at(row, col); });
}

}  // namespace

std::vector<Pixel> offsets(const Grid& element, int ref_row, int ref_col) {
  std::vector<Pixel> result;
  element.each([&](int row, int col) {
    result.push_back({row - ref_row, col - ref_col});
  });
  return result;
}

Grid dilate(const Grid& source, const std::vector<Pixel>& element) {
  Grid result;
  source.each([&](int row, int col) {
    for (const Pixel& b : element) result.set(row + b.row, col + b.col);
  });
  return result;
}

Grid erode(const Grid& source, const std::vector<Pixel>& element) {
  Grid result;
  if (element.empty()) return result;
  // p + b in source for every b: candidates are source - (the first b).
  source.each([&](int row, int col) {
    const int p_row = row - element[0].row;
    const int p_col = col - element[0].col;
    for (const Pixel& b : element)
      if (!source.at(p_row + b.row, p_col + b.col)) return;
    result.set(p_row, p_col);
  });
  return result;
}

Grid clip(const Grid& source, int width, int height) {
  Grid result;
  source.each([&](int row, int col) {
    if (row >= 0 && row < height && col >= 0 && col < width)
      result.set(row, col);
  });
  return result;
}

Grid fill_holes(const Grid& source) {
  // A hole is ground inside the box that cannot reach the box's own rim; ground
  // on the rim is always next to the ring that outside() starts from.
  if (!source.any()) return source;
  const Box box = box_of(source);
  const Grid ground = outside(source);
  Grid result;
  for (int row = box.min_row; row <= box.max_row; ++row)
    for (int col = box.min_col; col <= box.max_col; ++col)
      if (!ground.at(row, col)) result.set(row, col);
  return result;
}

std::vector<Grid> components(const Grid& source, bool diagonal) {
  std::vector<Grid> result;
  Grid rest = source;
  const Box box = box_of(source);
  source.each([&](int row, int col) {
    if (!rest.at(row, col)) return;
    result.push_back(flood({row, col}, box, diagonal,
                           [&](int r, int c) { return source.at(r, c); }));
    rest = rest - result.back();
  });
  return result;
}

Grid outer_contours(const Grid& source) {
  Grid result;
  for (const Grid& part : components(source, true)) {
    const Grid ground = outside(part);
    part.each([&](int row, int col) {
      for (const Pixel& step : kFour)
        if (ground.at(row + step.row, col + step.col)) result.set(row, col);
    });
  }
  return result;
}

}  // namespace fuzz
