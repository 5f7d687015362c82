// SPDX-License-Identifier: MIT
#include <algorithm>

#include "region/internal/memory.h"
#include "region/internal/parallel.h"
#include "region/internal/row_scan.h"
#include "region/operations.h"

namespace vexo {
namespace {

using internal::buffer;
using internal::row_bands;
using internal::row_scan;
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

// Two passes: the first counts the runs of every band, so that the second
// writes each run to its final place.
//
// make_room(total) prepares the result; write(scan, band, scratch, i) writes
// the runs of the band from run i on. All that can fail comes before make_room.
template <class MakeRoom, class Write>
void extract(const scan_input& image, MakeRoom make_room, Write write) {
  const size_t worth = image.rows() * image.width / kBandPixels;
  const row_bands bands(image.last_row, worth);
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
  threshold_y(image, width, height, min, max, result);
}

}  // namespace vexo
