// SPDX-License-Identifier: MIT
#include <algorithm>
#include <memory>
#include <new>

#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/internal/row_scan.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::row_bands;
using internal::row_scan;
using internal::run_buffer;
using internal::scan_input;

// Pixels below which a band is not worth a thread.
constexpr size_t kBandPixels = size_t{1} << 17;

// The whole image, or no rows of it when no pixel can be inside.
scan_input input_of(const unsigned char* image, int width, int height, int min,
                    int max) {
  const bool empty = image == nullptr || width < 1 || height < 1 || min > max ||
                     max < 0 || min > 255;
  return {image,
          static_cast<size_t>(std::max(width, 0)),
          0,
          empty ? 0 : height,
          static_cast<uint8_t>(std::clamp(min, 0, 255)),
          static_cast<uint8_t>(std::clamp(max, 0, 255))};
}

scan_input band_of(const scan_input& image, const row_bands& bands,
                   size_t band) {
  scan_input part = image;
  part.first_row = bands.begin(static_cast<int>(band));
  part.last_row = bands.end(static_cast<int>(band));
  part.pixels += static_cast<size_t>(part.first_row) * image.width;
  return part;
}

size_t bands_worth(const scan_input& image) {
  return internal::piece_count(image.rows() * image.width, kBandPixels);
}

// Two passes: the first counts the runs of every band, so that the second
// writes each run to its final place.
//
// make_room(total) prepares the result; write(scan, band, scratch, i) writes
// the runs of the band from run i on. All that can fail comes before make_room.
template <class MakeRoom, class Write>
void extract(const scan_input& image, MakeRoom make_room, Write write) {
  const row_bands bands(image.last_row, bands_worth(image));
  const auto n = static_cast<size_t>(bands.count());
  buffer<size_t> offsets(n + 1);
  const row_scan& scan = internal::current_row_scan();
  const size_t scratch_bytes = scan.scratch_bytes(image.width);
  buffer<char> scratch(n * scratch_bytes);
  internal::parallel_for(n, [&](size_t b) {
    offsets[b + 1] = scan.count(band_of(image, bands, b));
  });
  offsets[0] = 0;
  for (size_t b = 0; b < n; ++b) offsets[b + 1] += offsets[b];
  make_room(offsets[n]);
  internal::parallel_for(n, [&](size_t b) {
    write(scan, band_of(image, bands, b), scratch.data() + b * scratch_bytes,
          offsets[b]);
  });
}

// One pass over memory: counts a block of rows, makes room, and writes its runs
// while the pixels are still in the cache.
void extract_blocks(const scan_input& band, run_buffer* runs) {
  constexpr size_t kBlockPixels = size_t{1} << 18;
  const row_scan& scan = internal::current_row_scan();
  const buffer<char> scratch(scan.scratch_bytes(band.width));
  const size_t fitting = kBlockPixels / std::max<size_t>(band.width, 1);
  const auto rows = static_cast<int64_t>(std::clamp<size_t>(fitting, 1, 1024));
  scan_input block = band;
  for (int64_t row = band.first_row; row < band.last_row; row += rows) {
    block.first_row = static_cast<int32_t>(row);
    block.last_row =
        static_cast<int32_t>(std::min<int64_t>(row + rows, band.last_row));
    const size_t first = runs->size();
    runs->set_size(first + scan.count(block));
    runs->ensure(runs->size());
    scan.to_runs(
        block, scratch.data(),
        {runs->rows() + first, runs->begins() + first, runs->ends() + first});
    block.pixels += block.rows() * block.width;
  }
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
      input_of(image, width, height, min, max),
      [&](size_t total) { internal::resize_chords(result, total); },
      [&](const row_scan& scan, const scan_input& band, char* scratch,
          size_t i) { scan.to_chords(band, scratch, result->chords + i); });
  set_image(result, width, height);
}

void threshold_y(unsigned char* image, int width, int height, int min, int max,
                 region* result) {
  size_t runs = 0;
  extract(
      input_of(image, width, height, min, max),
      [&](size_t total) { result->reserve(runs = total); },
      [&](const row_scan& scan, const scan_input& band, char* scratch,
          size_t i) {
        scan.to_runs(
            band, scratch,
            {result->rows + i, result->col_begins + i, result->col_ends + i});
      });
  result->run_count = runs;
  set_image(result, width, height);
}

void threshold_y3(unsigned char* image, int width, int height, int min, int max,
                  region* result) {
  const scan_input input = input_of(image, width, height, min, max);
  const row_bands bands(input.last_row, bands_worth(input));
  const auto n = static_cast<size_t>(bands.count());
  const std::unique_ptr<run_buffer[]> pieces(new (std::nothrow) run_buffer[n]);
  if (pieces == nullptr) internal::throw_malloc_failed();
  internal::parallel_for(n, [&](size_t b) {
    extract_blocks(band_of(input, bands, b), &pieces[b]);
  });
  buffer<size_t> offsets(n + 1);
  offsets[0] = 0;
  for (size_t b = 0; b < n; ++b) offsets[b + 1] = offsets[b] + pieces[b].size();
  result->reserve(offsets[n]);
  internal::parallel_for(n, [&](size_t b) {
    const run_buffer& piece = pieces[b];
    std::copy_n(piece.rows(), piece.size(), result->rows + offsets[b]);
    std::copy_n(piece.begins(), piece.size(), result->col_begins + offsets[b]);
    std::copy_n(piece.ends(), piece.size(), result->col_ends + offsets[b]);
  });
  result->run_count = offsets[n];
  set_image(result, width, height);
}

}  // namespace vexo
