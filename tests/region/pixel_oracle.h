// SPDX-License-Identifier: MIT
//
// Regions as plain sets of pixels, and the operations as their definitions
// read, pixel by pixel. Nothing here knows of runs, bits or bands: what the
// library computes is compared with this.
#ifndef VEXO_TESTS_REGION_PIXEL_ORACLE_H_
#define VEXO_TESTS_REGION_PIXEL_ORACLE_H_

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "pictures.h"

namespace vexo_test {

struct Pixel {
  int row;
  int col;
  friend auto operator<=>(const Pixel&, const Pixel&) = default;
};

// A set of pixels inside a window that grows as pixels are added.
class PixelSet {
 public:
  bool has(int row, int col) const {
    return inside(row, col) && cells_[index(row, col)] != 0;
  }
  void add(int row, int col) {
    if (!inside(row, col)) grow_to(row, col);
    cells_[index(row, col)] = 1;
  }
  std::vector<Pixel> pixels() const {
    std::vector<Pixel> result;
    for (int r = 0; r < height_; ++r) {
      for (int c = 0; c < width_; ++c) {
        if (has(row_ + r, col_ + c)) result.push_back({row_ + r, col_ + c});
      }
    }
    return result;
  }
  bool empty() const { return pixels().empty(); }

  // Longest possible runs in row-major order: the canonical form.
  Runs runs() const {
    Runs result;
    for (const Pixel& p : pixels()) {
      if (!result.empty() && result.back().row == p.row &&
          result.back().end == p.col - 1) {
        ++result.back().end;
      } else {
        result.push_back({p.row, p.col, p.col});
      }
    }
    return result;
  }

 private:
  bool inside(int row, int col) const {
    return row >= row_ && row < row_ + height_ && col >= col_ &&
           col < col_ + width_;
  }
  size_t index(int row, int col) const {
    return static_cast<size_t>(row - row_) * static_cast<size_t>(width_) +
           static_cast<size_t>(col - col_);
  }
  void grow_to(int row, int col) {
    constexpr int kMargin = 16;
    PixelSet larger;
    const bool fresh = width_ == 0;
    larger.row_ = fresh ? row - kMargin : std::min(row_, row - kMargin);
    larger.col_ = fresh ? col - kMargin : std::min(col_, col - kMargin);
    const int last_row =
        std::max(fresh ? row : row_ + height_, row + kMargin + 1);
    const int last_col =
        std::max(fresh ? col : col_ + width_, col + kMargin + 1);
    larger.height_ = last_row - larger.row_;
    larger.width_ = last_col - larger.col_;
    larger.cells_.assign(static_cast<size_t>(larger.height_) *
                             static_cast<size_t>(larger.width_),
                         0);
    for (const Pixel& p : pixels()) larger.add(p.row, p.col);
    *this = std::move(larger);
  }

  int row_ = 0;
  int col_ = 0;
  int height_ = 0;
  int width_ = 0;
  std::vector<unsigned char> cells_;
};

inline PixelSet pixels_of(const Runs& list) {
  PixelSet result;
  for (const Run& r : list) {
    for (int c = r.begin; c <= r.end; ++c) result.add(r.row, c);
  }
  return result;
}

// --- Sets ------------------------------------------------------------------

inline PixelSet oracle_union(const PixelSet& a, const PixelSet& b) {
  PixelSet result = a;
  for (const Pixel& p : b.pixels()) result.add(p.row, p.col);
  return result;
}

inline PixelSet oracle_intersection(const PixelSet& a, const PixelSet& b) {
  PixelSet result;
  for (const Pixel& p : a.pixels()) {
    if (b.has(p.row, p.col)) result.add(p.row, p.col);
  }
  return result;
}

inline PixelSet oracle_difference(const PixelSet& a, const PixelSet& b) {
  PixelSet result;
  for (const Pixel& p : a.pixels()) {
    if (!b.has(p.row, p.col)) result.add(p.row, p.col);
  }
  return result;
}

// Columns 0..width - 1 of rows 0..height - 1.
inline PixelSet oracle_clip(const PixelSet& a, int width, int height) {
  PixelSet result;
  for (const Pixel& p : a.pixels()) {
    if (p.row >= 0 && p.row < height && p.col >= 0 && p.col < width)
      result.add(p.row, p.col);
  }
  return result;
}

// --- Morphology; elements are seen from their reference point ---------------

// The element's pixels as steps away from (ref_row, ref_col).
inline PixelSet seen_from(const PixelSet& element, int ref_row, int ref_col) {
  PixelSet result;
  for (const Pixel& p : element.pixels())
    result.add(p.row - ref_row, p.col - ref_col);
  return result;
}

inline PixelSet oracle_reflect(const PixelSet& element) {
  PixelSet result;
  for (const Pixel& p : element.pixels()) result.add(-p.row, -p.col);
  return result;
}

inline PixelSet oracle_dilate(const PixelSet& source, const PixelSet& element) {
  const std::vector<Pixel> steps = element.pixels();
  PixelSet result;
  for (const Pixel& a : source.pixels()) {
    for (const Pixel& b : steps) result.add(a.row + b.row, a.col + b.col);
  }
  return result;
}

inline PixelSet oracle_erode(const PixelSet& source, const PixelSet& element) {
  const std::vector<Pixel> steps = element.pixels();
  PixelSet result;
  for (const Pixel& a : source.pixels()) {
    // Where the element's first pixel lies on a.
    const Pixel at{a.row - steps[0].row, a.col - steps[0].col};
    const bool fits =
        std::all_of(steps.begin(), steps.end(), [&](const Pixel& b) {
          return source.has(at.row + b.row, at.col + b.col);
        });
    if (fits) result.add(at.row, at.col);
  }
  return result;
}

// Reference points by the two rules, from the smallest and the largest row or
// column of an element.
inline int upper_middle(int min, int max) { return min + (max - min + 1) / 2; }
inline int lower_middle(int min, int max) { return (min + max) / 2; }

template <typename Middle>
PixelSet centred(const PixelSet& element, Middle middle) {
  const std::vector<Pixel> all = element.pixels();
  const auto [left, right] = std::minmax_element(
      all.begin(), all.end(),
      [](const Pixel& a, const Pixel& b) { return a.col < b.col; });
  return seen_from(element, middle(all.front().row, all.back().row),
                   middle(left->col, right->col));
}

// --- Boundary ----------------------------------------------------------------

inline PixelSet oracle_inner_boundary(const PixelSet& source) {
  PixelSet result;
  for (const Pixel& p : source.pixels()) {
    if (!source.has(p.row - 1, p.col) || !source.has(p.row + 1, p.col) ||
        !source.has(p.row, p.col - 1) || !source.has(p.row, p.col + 1))
      result.add(p.row, p.col);
  }
  return result;
}

inline PixelSet oracle_outer_boundary(const PixelSet& source) {
  constexpr Pixel kEdges[] = {{-1, 0}, {0, -1}, {0, 1}, {1, 0}};
  PixelSet result;
  for (const Pixel& p : source.pixels()) {
    for (const Pixel& step : kEdges) {
      if (!source.has(p.row + step.row, p.col + step.col))
        result.add(p.row + step.row, p.col + step.col);
    }
  }
  return result;
}

// The pixels reached from `start` in 4 or 8 directions while `free` says so.
template <typename Free>
PixelSet flood(Pixel start, int directions, Free free) {
  constexpr Pixel kSteps[] = {{-1, 0},  {0, -1}, {0, 1},  {1, 0},
                              {-1, -1}, {-1, 1}, {1, -1}, {1, 1}};
  PixelSet reached;
  std::vector<Pixel> open{start};
  reached.add(start.row, start.col);
  while (!open.empty()) {
    const Pixel p = open.back();
    open.pop_back();
    for (int d = 0; d < directions; ++d) {
      const Pixel q{p.row + kSteps[d].row, p.col + kSteps[d].col};
      if (reached.has(q.row, q.col) || !free(q)) continue;
      reached.add(q.row, q.col);
      open.push_back(q);
    }
  }
  return reached;
}

inline std::vector<PixelSet> oracle_components(const PixelSet& source) {
  std::vector<PixelSet> result;
  PixelSet seen;
  for (const Pixel& p : source.pixels()) {
    if (seen.has(p.row, p.col)) continue;
    result.push_back(
        flood(p, 8, [&](Pixel q) { return source.has(q.row, q.col); }));
    seen = oracle_union(seen, result.back());
  }
  return result;
}

// One component's pixels that share an edge with the background around it.
inline PixelSet oracle_contour(const PixelSet& component) {
  const std::vector<Pixel> all = component.pixels();
  const auto [left, right] = std::minmax_element(
      all.begin(), all.end(),
      [](const Pixel& a, const Pixel& b) { return a.col < b.col; });
  const Pixel low{all.front().row - 1, left->col - 1};
  const Pixel high{all.back().row + 1, right->col + 1};
  const PixelSet outside = flood(low, 4, [&](Pixel q) {
    return q.row >= low.row && q.row <= high.row && q.col >= low.col &&
           q.col <= high.col && !component.has(q.row, q.col);
  });
  PixelSet result;
  for (const Pixel& p : all) {
    if (outside.has(p.row - 1, p.col) || outside.has(p.row + 1, p.col) ||
        outside.has(p.row, p.col - 1) || outside.has(p.row, p.col + 1))
      result.add(p.row, p.col);
  }
  return result;
}

// One component's contour by walking around it: from the last Pixel in
// row-major order, at each Pixel the neighbours in the order of the eight
// direction codes (0 east, then clockwise), beginning three codes behind the
// direction of the last step. Ends when the start is reached from the neighbour
// that comes last in the order seen from the start.
inline PixelSet oracle_walked_contour(const PixelSet& component) {
  constexpr Pixel kSteps[] = {{0, 1},  {1, 1},   {1, 0},  {1, -1},
                              {0, -1}, {-1, -1}, {-1, 0}, {-1, 1}};
  const auto neighbour = [&](Pixel p, int code) {
    return Pixel{p.row + kSteps[code].row, p.col + kSteps[code].col};
  };
  const auto is_set = [&](Pixel p) { return component.has(p.row, p.col); };
  const Pixel start = component.pixels().back();
  PixelSet visited;
  visited.add(start.row, start.col);
  int closing = 7;
  while (closing > 0 && !is_set(neighbour(start, closing))) --closing;
  if (closing == 0) return visited;
  Pixel p = start;
  int direction = 0;
  for (;;) {
    int code = direction;
    while (!is_set(neighbour(p, code))) code = (code + 1) % 8;
    p = neighbour(p, code);
    direction = (code + 5) % 8;
    if (p == start && code == (closing ^ 4)) return visited;
    visited.add(p.row, p.col);
  }
}

template <typename Contour>
PixelSet oracle_contours(const PixelSet& source, Contour contour) {
  PixelSet result;
  for (const PixelSet& component : oracle_components(source))
    result = oracle_union(result, contour(component));
  return result;
}

}  // namespace vexo_test

#endif  // VEXO_TESTS_REGION_PIXEL_ORACLE_H_
