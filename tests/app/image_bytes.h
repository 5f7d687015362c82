// SPDX-License-Identifier: MIT
//
// Image files that the image library does not write itself, put together byte
// by byte, and a folder for them.
#ifndef RENDAL_TESTS_APP_IMAGE_BYTES_H_
#define RENDAL_TESTS_APP_IMAGE_BYTES_H_

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "app/view/image_loader.h"
#include "tools/long_path.h"

namespace rendal::testing_images {

using Bytes = std::vector<unsigned char>;

// A folder of its own for every test, removed with all it holds.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::string& name)
      : m_path(std::filesystem::temp_directory_path() / ("rendal-" + name)) {
    std::error_code error;
    std::filesystem::remove_all(WithoutLengthLimit(m_path), error);
    std::filesystem::create_directories(m_path);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code error;
    std::filesystem::remove_all(WithoutLengthLimit(m_path), error);
  }

  std::filesystem::path operator/(const std::filesystem::path& name) const {
    return m_path / name;
  }

 private:
  std::filesystem::path m_path;
};

inline void WriteBytes(const std::filesystem::path& path, const Bytes& bytes) {
  std::ofstream file(WithoutLengthLimit(path), std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

inline void Append(Bytes* to, const std::string& text) {
  to->insert(to->end(), text.begin(), text.end());
}

inline void AppendBigEndian32(Bytes* to, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    to->push_back(static_cast<unsigned char>(value >> shift));
  }
}

inline uint32_t Crc32(const Bytes& bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (const unsigned char byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
      crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
  }
  return ~crc;
}

inline void AppendPngChunk(Bytes* png, const std::string& type,
                           const Bytes& data) {
  AppendBigEndian32(png, static_cast<uint32_t>(data.size()));
  Bytes body(type.begin(), type.end());
  body.insert(body.end(), data.begin(), data.end());
  png->insert(png->end(), body.begin(), body.end());
  AppendBigEndian32(png, Crc32(body));
}

// `rows` holds a filter byte 0 and the samples of every row, at most 65535
// bytes in all. Color types: 0 grey, 2 colour, 3 palette, 6 with alpha.
inline Bytes Png(uint32_t width, uint32_t height, int bits, int color_type,
                 const Bytes& palette, const Bytes& rows) {
  Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  Bytes header;
  AppendBigEndian32(&header, width);
  AppendBigEndian32(&header, height);
  for (const int value : {bits, color_type, 0, 0, 0}) {
    header.push_back(static_cast<unsigned char>(value));
  }
  AppendPngChunk(&png, "IHDR", header);
  if (!palette.empty()) AppendPngChunk(&png, "PLTE", palette);
  const size_t length = rows.size();
  // One stored block.
  Bytes stream = {0x78, 0x01, 0x01};
  for (const size_t word : {length, ~length}) {
    stream.push_back(static_cast<unsigned char>(word));
    stream.push_back(static_cast<unsigned char>(word >> 8));
  }
  stream.insert(stream.end(), rows.begin(), rows.end());
  uint32_t a = 1;
  uint32_t b = 0;
  for (const unsigned char byte : rows) {
    a = (a + byte) % 65521;
    b = (b + a) % 65521;
  }
  AppendBigEndian32(&stream, b << 16 | a);
  AppendPngChunk(&png, "IDAT", stream);
  AppendPngChunk(&png, "IEND", {});
  return png;
}

// An 8 x 8 JPEG of four inks, each plane of one value, as image editors write
// it: inverted, so 255 is no ink.
inline Bytes CmykJpeg(const std::array<int, 4>& inks) {
  Bytes jpeg = {0xFF, 0xD8, 0xFF, 0xEE, 0, 14};
  Append(&jpeg, "Adobe");
  jpeg.insert(jpeg.end(), {0, 100, 0, 0, 0, 0, 0});
  // All coefficients in steps of 8: a DC of v - 128 is a plane of value v.
  jpeg.insert(jpeg.end(), {0xFF, 0xDB, 0, 67, 0});
  jpeg.insert(jpeg.end(), 64, 8);
  jpeg.insert(jpeg.end(), {0xFF, 0xC0, 0, 20, 8, 0, 8, 0, 8, 4});
  for (unsigned char ink = 1; ink <= 4; ++ink) {
    jpeg.insert(jpeg.end(), {ink, 0x11, 0});
  }
  // DC: categories 0 to 11 in four bits each. AC: "end of block" is a 0.
  jpeg.insert(jpeg.end(), {0xFF, 0xC4, 0, 31, 0x00, 0, 0, 0, 12});
  jpeg.insert(jpeg.end(), 12, 0);
  for (unsigned char category = 0; category < 12; ++category) {
    jpeg.push_back(category);
  }
  jpeg.insert(jpeg.end(), {0xFF, 0xC4, 0, 20, 0x10, 1});
  jpeg.insert(jpeg.end(), 16, 0);
  jpeg.insert(jpeg.end(), {0xFF, 0xDA, 0, 14, 4});
  for (unsigned char ink = 1; ink <= 4; ++ink) {
    jpeg.insert(jpeg.end(), {ink, 0x00});
  }
  jpeg.insert(jpeg.end(), {0, 63, 0});
  std::string bits;
  const auto put = [&bits](int value, int count) {
    for (int i = count - 1; i >= 0; --i) {
      bits.push_back(value >> i & 1 ? '1' : '0');
    }
  };
  for (const int ink : inks) {
    const int dc = ink - 128;
    int category = 0;
    while (std::abs(dc) >> category != 0) ++category;
    put(category, 4);
    put(dc >= 0 ? dc : dc + (1 << category) - 1, category);
    put(0, 1);
  }
  while (bits.size() % 8 != 0) bits.push_back('1');
  for (size_t i = 0; i < bits.size(); i += 8) {
    const int byte = std::stoi(bits.substr(i, 8), nullptr, 2);
    jpeg.push_back(static_cast<unsigned char>(byte));
    if (byte == 0xFF) jpeg.push_back(0);
  }
  jpeg.insert(jpeg.end(), {0xFF, 0xD9});
  return jpeg;
}

}  // namespace rendal::testing_images

#endif  // RENDAL_TESTS_APP_IMAGE_BYTES_H_
