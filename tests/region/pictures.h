// SPDX-License-Identifier: MIT
//
// Regions written as pictures, and read back as pictures, so that a failing
// test can be understood by looking at it.
#ifndef VEXO_TESTS_REGION_PICTURES_H_
#define VEXO_TESTS_REGION_PICTURES_H_

#include <cstdint>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "region/region.h"

namespace vexo_test {

// Rows of '#' (inside) and anything else (outside).
using Picture = std::vector<std::string>;

struct Run {
  int row, begin, end;
  friend bool operator==(const Run& a, const Run& b) {
    return std::tie(a.row, a.begin, a.end) == std::tie(b.row, b.begin, b.end);
  }
  friend std::ostream& operator<<(std::ostream& out, const Run& r) {
    return out << '{' << r.row << ", " << r.begin << ", " << r.end << '}';
  }
};
using Runs = std::vector<Run>;

inline Picture lines(Picture picture) { return picture; }

inline Runs runs_in(const Picture& picture) {
  Runs runs;
  for (int row = 0; row < static_cast<int>(picture.size()); ++row) {
    const std::string& line = picture[row];
    for (size_t c = 0; c < line.size(); ++c) {
      if (line[c] != '#') continue;
      const size_t begin = c;
      while (c + 1 < line.size() && line[c + 1] == '#') ++c;
      runs.push_back({row, static_cast<int>(begin), static_cast<int>(c)});
    }
  }
  return runs;
}

// A region with these runs in the run arrays and in the chord array.
inline vexo::region region_of(const Runs& runs, int width = -1,
                              int height = -1) {
  vexo::region r(static_cast<int>(runs.size()));
  for (const Run& run : runs) {
    r.rows[r.run_count] = run.row;
    r.col_begins[r.run_count] = run.begin;
    r.col_ends[r.run_count] = run.end;
    ++r.run_count;
  }
  r.to_3();
  r.width = width;
  r.height = height;
  return r;
}

// The same, from a picture, which is the image as well.
inline vexo::region picture(const Picture& lines) {
  const int width = lines.empty() ? 0 : static_cast<int>(lines[0].size());
  return region_of(runs_in(lines), width, static_cast<int>(lines.size()));
}

inline Runs runs_of(const vexo::region& r) {
  Runs runs;
  for (size_t i = 0; i < r.run_count; ++i) {
    runs.push_back({r.rows[i], r.col_begins[i], r.col_ends[i]});
  }
  return runs;
}

inline Runs chords_of(const vexo::region& r) {
  Runs runs;
  for (int32_t i = 0; i < r.chord_count; ++i) {
    const vexo::chord& c = r.chords[i];
    runs.push_back({c.row, c.col_begin, c.col_end});
  }
  return runs;
}

// What lies in rows 0..height - 1 and columns 0..width - 1 is drawn.
inline Picture to_picture(const Runs& runs, int width, int height) {
  Picture lines(height, std::string(width, '.'));
  for (const Run& run : runs) {
    for (int c = run.begin; c <= run.end; ++c) {
      if (run.row >= 0 && run.row < height && c >= 0 && c < width) {
        lines[run.row][c] = '#';
      }
    }
  }
  return lines;
}

// From the run arrays.
inline Picture to_picture(const vexo::region& r, int width, int height) {
  return to_picture(runs_of(r), width, height);
}

// From the chord array.
inline Picture chords_to_picture(const vexo::region& r, int width, int height) {
  return to_picture(chords_of(r), width, height);
}

// Sorted by row and column, one row's runs neither overlapping nor touching.
inline bool is_canonical(const Runs& runs) {
  for (size_t i = 0; i < runs.size(); ++i) {
    if (runs[i].begin > runs[i].end) return false;
    if (i == 0 || runs[i - 1].row < runs[i].row) continue;
    if (runs[i - 1].row > runs[i].row) return false;
    if (runs[i - 1].end + 1 >= runs[i].begin) return false;
  }
  return true;
}

}  // namespace vexo_test

#endif  // VEXO_TESTS_REGION_PICTURES_H_
