// SPDX-License-Identifier: MIT
#include "app/view/image_header.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>

namespace rendal {
namespace {

using Bytes = std::span<const unsigned char>;
using Size = std::optional<ClaimedSize>;

// Whole numbers of a file, by their place. What lies beyond its end reads as 0
// and is remembered.
class Reader {
 public:
  Reader(Bytes bytes, bool big_endian)
      : m_bytes(bytes), m_isBigEndian(big_endian) {}

  uint64_t Number(uint64_t at, int size) {
    if (at > m_bytes.size() ||
        m_bytes.size() - at < static_cast<size_t>(size)) {
      m_isBeyondEnd = true;
      return 0;
    }
    uint64_t value = 0;
    for (int i = 0; i < size; ++i) {
      const uint64_t place = m_isBigEndian ? i : size - 1 - i;
      value = value << 8 | m_bytes[at + place];
    }
    return value;
  }
  uint64_t Read16(uint64_t at) { return Number(at, 2); }
  uint64_t Read32(uint64_t at) { return Number(at, 4); }

  Size Result(uint64_t width, uint64_t height) const {
    if (m_isBeyondEnd) return std::nullopt;
    return ClaimedSize{width, height};
  }
  bool IsBeyondEnd() const { return m_isBeyondEnd; }

 private:
  Bytes m_bytes;
  bool m_isBigEndian;
  bool m_isBeyondEnd = false;
};

bool StartsWith(Bytes bytes, std::string_view text) {
  return bytes.size() >= text.size() &&
         std::equal(text.begin(), text.end(), bytes.begin(),
                    [](char c, unsigned char byte) {
                      return static_cast<unsigned char>(c) == byte;
                    });
}

Size PngSize(Bytes bytes) {
  Reader file(bytes, true);
  const uint64_t width = file.Read32(16);
  return file.Result(width, file.Read32(20));
}

// A negative height stands for rows from top to bottom.
Size BmpSize(Bytes bytes) {
  constexpr uint64_t kOldestHeader = 12;
  Reader file(bytes, false);
  if (file.Read32(14) == kOldestHeader) {
    const uint64_t width = file.Read16(18);
    return file.Result(width, file.Read16(20));
  }
  const auto magnitude = [&](uint64_t at) -> uint64_t {
    const auto value =
        static_cast<int32_t>(static_cast<uint32_t>(file.Read32(at)));
    return value < 0 ? -static_cast<int64_t>(value) : value;
  };
  const uint64_t width = magnitude(18);
  return file.Result(width, magnitude(22));
}

bool IsFrameStart(uint64_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 &&
         marker != 0xCC;
}

// From segment to segment up to the one that starts the frame.
Size JpegSize(Bytes bytes) {
  constexpr uint64_t kScanStart = 0xDA;
  Reader file(bytes, true);
  uint64_t at = 2;
  while (!file.IsBeyondEnd()) {
    // The decoder skips what stands between segments.
    while (at < bytes.size() && bytes[at] != 0xFF) ++at;
    while (at < bytes.size() && bytes[at] == 0xFF) ++at;
    const uint64_t marker = file.Number(at, 1);
    ++at;
    if (IsFrameStart(marker)) {
      const uint64_t height = file.Read16(at + 3);
      return file.Result(file.Read16(at + 5), height);
    }
    if (marker == kScanStart) break;
    const bool stands_alone =
        marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD9);
    if (!stands_alone) at += std::max<uint64_t>(file.Read16(at), 2);
  }
  return std::nullopt;
}

// One number of a TIFF directory, of any of the types of whole numbers.
uint64_t TiffValue(Reader& file, uint64_t entry, bool wide) {
  const uint64_t at = entry + (wide ? 12 : 8);
  switch (file.Read16(entry + 2)) {
    case 1:  // bytes
    case 6:
      return file.Number(at, 1);
    case 3:  // 16 bits
    case 8:
      return file.Read16(at);
    case 16:  // 64 bits, which stand elsewhere when they do not fit
    case 17:
    case 18:
      return file.Number(wide ? at : file.Read32(at), 8);
    default:
      return file.Read32(at);
  }
}

// The first directory of a TIFF, of the classic form or of the one with 64-bit
// offsets. A tag that is there twice counts as the decoder takes it: the first
// time.
struct TiffDirectory {
  Size size;
  uint64_t colours;  // the photometric interpretation
  uint64_t samples;  // of a pixel
};

TiffDirectory ReadTiff(Bytes bytes, bool big_endian, bool wide) {
  constexpr uint64_t kWidthTag = 256, kHeightTag = 257, kColoursTag = 262,
                     kSamplesTag = 277;
  constexpr uint64_t kMostEntries = 65535;
  Reader file(bytes, big_endian);
  const uint64_t directory = wide ? file.Number(8, 8) : file.Read32(4);
  const uint64_t count =
      wide ? file.Number(directory, 8) : file.Read16(directory);
  const uint64_t entry_size = wide ? 20 : 12;
  std::map<uint64_t, uint64_t> values;  // of tags
  uint64_t at = directory + (wide ? 8 : 2);
  for (uint64_t i = 0; i < std::min(count, kMostEntries); ++i) {
    const uint64_t tag = file.Read16(at);
    if (file.IsBeyondEnd()) break;
    if (tag == kWidthTag || tag == kHeightTag || tag == kColoursTag ||
        tag == kSamplesTag) {
      values.emplace(tag, TiffValue(file, at, wide));
    }
    at += entry_size;
  }
  return {file.Result(values[kWidthTag], values[kHeightTag]),
          values[kColoursTag], values[kSamplesTag]};
}

std::optional<TiffDirectory> ReadTiff(Bytes bytes) {
  using namespace std::string_view_literals;
  if (StartsWith(bytes, "II*\0"sv)) return ReadTiff(bytes, false, false);
  if (StartsWith(bytes, "MM\0*"sv)) return ReadTiff(bytes, true, false);
  if (StartsWith(bytes, "II+\0"sv)) return ReadTiff(bytes, false, true);
  if (StartsWith(bytes, "MM\0+"sv)) return ReadTiff(bytes, true, true);
  return std::nullopt;
}

}  // namespace

Size ReadClaimedSize(Bytes bytes) {
  using namespace std::string_view_literals;
  if (StartsWith(bytes, "\x89PNG\r\n\x1A\n"sv)) return PngSize(bytes);
  if (StartsWith(bytes, "BM"sv)) return BmpSize(bytes);
  if (StartsWith(bytes, "\xFF\xD8\xFF"sv)) return JpegSize(bytes);
  if (const auto tiff = ReadTiff(bytes)) return tiff->size;
  return ReadRareClaimedSize(bytes);
}

bool IsTiffOfTooFewSamples(Bytes bytes) {
  constexpr uint64_t kLogLuminance = 32844, kLogLuminanceAndColour = 32845;
  const auto tiff = ReadTiff(bytes);
  return tiff &&
         (tiff->colours == kLogLuminance ||
          tiff->colours == kLogLuminanceAndColour) &&
         tiff->samples < 3;
}

bool IsDicom(Bytes bytes) {
  constexpr size_t kPreamble = 128;
  return bytes.size() > kPreamble &&
         StartsWith(bytes.subspan(kPreamble), "DICM");
}

bool HasCommonFormat(Bytes bytes) {
  using namespace std::string_view_literals;
  constexpr std::string_view kBegins[] = {"\x89PNG\r\n\x1A\n"sv,
                                          "BM"sv,
                                          "\xFF\xD8\xFF"sv,
                                          "II*\0"sv,
                                          "MM\0*"sv,
                                          "II+\0"sv,
                                          "MM\0+"sv};
  return std::any_of(
      std::begin(kBegins), std::end(kBegins),
      [&](std::string_view begin) { return StartsWith(bytes, begin); });
}

}  // namespace rendal
