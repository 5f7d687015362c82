// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_VIEW_IMAGE_HEADER_H_
#define RENDAL_APP_VIEW_IMAGE_HEADER_H_

#include <cstdint>
#include <optional>
#include <span>

namespace rendal {

struct ClaimedSize {
  uint64_t width = 0;
  uint64_t height = 0;

  // Whether these are more than so many pixels; no product overflows.
  bool Exceeds(uint64_t pixels) const {
    return width > 0 && height > pixels / width;
  }
  bool operator==(const ClaimedSize&) const = default;
};

// The size that the header of a file claims, whether its pixels follow or not:
// of a PNG, BMP, JPEG or TIFF (its first page); of a portable map (P1 to P7,
// PF, Pf), a Radiance picture, a Sun raster file. Nothing for other files and
// where the bytes end before the header does. Reads the header only.
std::optional<ClaimedSize> ReadClaimedSize(
    std::span<const unsigned char> bytes);

// Whether it has the mark of DICOM, behind whatever it begins with. Where the
// image library knows that format, its decoder may get such a file, and ends the
// program for some.
bool IsDicom(std::span<const unsigned char> bytes);

// Whether it begins as a PNG, BMP, JPEG or TIFF.
bool HasCommonFormat(std::span<const unsigned char> bytes);

// Whether the first page of a TIFF holds logarithms of luminance, which are
// decoded as three samples of a pixel, but claims fewer: the decoder takes the
// others from what memory happens to hold.
bool IsTiffOfTooFewSamples(std::span<const unsigned char> bytes);

// The part of ReadClaimedSize() for the formats that are seldom seen. A header
// that their decoders might understand in another way counts as none.
std::optional<ClaimedSize> ReadRareClaimedSize(
    std::span<const unsigned char> bytes);

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_IMAGE_HEADER_H_
