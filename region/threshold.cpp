// SPDX-License-Identifier: MIT
#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::row_bands;

// One entry a grey value: whether it lies in the band.
struct band_table {
  bool inside[256];

  band_table(int min, int max) {
    for (int g = 0; g < 256; ++g) inside[g] = min <= g && g <= max;
  }
};

struct image_view {
  const unsigned char* pixels;
  int width;
  int height;

  const unsigned char* row(int r) const {
    return pixels + static_cast<size_t>(r) * static_cast<size_t>(width);
  }
};

// Calls emit(begin, end) for the runs of one row, from left to right.
template <class Emit>
void scan_row(const unsigned char* row, int width, const band_table& table,
              Emit emit) {
  bool inside = false;
  int begin = 0;
  for (int c = 0; c < width; ++c) {
    const bool now = table.inside[row[c]];
    if (now == inside) continue;
    if (inside) emit(begin, c - 1);
    begin = c;
    inside = now;
  }
  if (inside) emit(begin, width - 1);
}

size_t count_runs(const image_view& image, int first, int last,
                  const band_table& table) {
  size_t n = 0;
  for (int r = first; r < last; ++r) {
    scan_row(image.row(r), image.width, table, [&](int, int) { ++n; });
  }
  return n;
}

// Both forms in two passes: the first counts the runs of every band, so that
// the second writes each run to its final place.
//
// make_room(total) prepares the result; write(i, row, begin, end) stores run i.
template <class MakeRoom, class Write>
void extract(const image_view& image, int min, int max, MakeRoom make_room,
             Write write) {
  const band_table table(min, max);
  const row_bands bands(image.height);
  buffer<size_t> offsets(bands.count() + 1);
  internal::parallel_for(bands.count(), [&](size_t b) {
    offsets[b + 1] = count_runs(image, bands.begin(b), bands.end(b), table);
  });
  offsets[0] = 0;
  for (int b = 0; b < bands.count(); ++b) offsets[b + 1] += offsets[b];
  make_room(offsets[bands.count()]);
  internal::parallel_for(bands.count(), [&](size_t b) {
    size_t i = offsets[b];
    for (int r = bands.begin(b); r < bands.end(b); ++r) {
      scan_row(image.row(r), image.width, table,
               [&](int begin, int end) { write(i++, r, begin, end); });
    }
  });
}

image_view view_of(const unsigned char* image, int width, int height) {
  const bool empty = image == nullptr || width < 1 || height < 1;
  return empty ? image_view{image, 0, 0} : image_view{image, width, height};
}

void set_image(region* result, int width, int height) {
  internal::drop_children(result);
  result->width = width;
  result->height = height;
}

}  // namespace

void threshold(unsigned char* image, int width, int height, int min, int max,
               region* result) {
  extract(
      view_of(image, width, height), min, max,
      [&](size_t total) { internal::resize_chords(result, total); },
      [&](size_t i, int row, int begin, int end) {
        result->chords[i] = {begin, end, row, 0};
      });
  set_image(result, width, height);
}

void threshold_y(unsigned char* image, int width, int height, int min, int max,
                 region* result) {
  size_t runs = 0;
  extract(
      view_of(image, width, height), min, max,
      [&](size_t total) { result->reserve(runs = total); },
      [&](size_t i, int row, int begin, int end) {
        result->rows[i] = row;
        result->col_begins[i] = begin;
        result->col_ends[i] = end;
      });
  result->run_count = runs;
  set_image(result, width, height);
}

void threshold_y3(unsigned char* image, int width, int height, int min, int max,
                  region* result) {
  threshold_y(image, width, height, min, max, result);
}

}  // namespace vexo
