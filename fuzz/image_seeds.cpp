// SPDX-License-Identifier: MIT
//
// image_seeds FOLDER: small image files of every form that the loader meets,
// for the fuzzer to start from.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "fuzz/tiff_bytes.h"
#include "tests/app/image_bytes.h"

namespace {

namespace fs = std::filesystem;
using fuzz::Bytes;
using fuzz::TiffBytes;

class Folder {
 public:
  explicit Folder(fs::path path) : m_path(std::move(path)) {
    fs::create_directories(m_path);
  }
  void Add(const Bytes& bytes) {
    std::ofstream file(m_path / ("seed" + std::to_string(m_count++)),
                       std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  int Count() const { return m_count; }

 private:
  fs::path m_path;
  int m_count = 0;
};

cv::Mat Pattern(int type) {
  cv::Mat image(11, 13, type);
  cv::randu(image, cv::Scalar::all(0), cv::Scalar::all(250));
  return image;
}

void AddEncoded(Folder* folder, const char* extension, int type,
                const std::vector<int>& options = {}) {
  Bytes bytes;
  if (!cv::imencode(extension, Pattern(type), bytes, options)) std::abort();
  folder->Add(bytes);
}

void AddWhatTheLibraryWrites(Folder* folder) {
  for (const int type : {CV_8U, CV_8UC3, CV_8UC4}) {
    AddEncoded(folder, ".bmp", type);
    AddEncoded(folder, ".png", type);
    AddEncoded(folder, ".png", type, {cv::IMWRITE_PNG_COMPRESSION, 0});
    AddEncoded(folder, ".tif", type);
  }
  for (const int type : {CV_16U, CV_16UC3, CV_16UC4}) {
    AddEncoded(folder, ".png", type);
    AddEncoded(folder, ".tif", type);
  }
  for (const int type : {CV_32F, CV_32FC3, CV_64F}) {
    AddEncoded(folder, ".tif", type);
  }
  AddEncoded(folder, ".png", CV_8U, {cv::IMWRITE_PNG_BILEVEL, 1});
  for (const int type : {CV_8U, CV_8UC3}) {
    AddEncoded(folder, ".jpg", type);
    AddEncoded(folder, ".jpg", type, {cv::IMWRITE_JPEG_PROGRESSIVE, 1});
    AddEncoded(folder, ".jpg", type, {cv::IMWRITE_JPEG_RST_INTERVAL, 1});
    AddEncoded(folder, ".jpg", type, {cv::IMWRITE_JPEG_OPTIMIZE, 1});
  }
  constexpr int kNone = 1, kLzw = 5, kDeflate = 8, kPackBits = 32773;
  for (const int compression : {kNone, kLzw, kDeflate, kPackBits}) {
    AddEncoded(folder, ".tif", CV_8U,
               {cv::IMWRITE_TIFF_COMPRESSION, compression});
  }
}

void AddPngs(Folder* folder) {
  using rendal::testing_images::Png;
  folder->Add(Png(8, 2, 1, 0, {}, {0, 0xA5, 0, 0x5A}));
  folder->Add(Png(4, 1, 2, 3, Bytes(12, 99), {0, 0x1B}));
  folder->Add(Png(3, 1, 8, 3, Bytes(768, 40), {0, 1, 2, 255}));
  folder->Add(Png(2, 1, 8, 4, {}, {0, 1, 2, 3, 4}));
  folder->Add(Png(2, 1, 16, 4, {}, {0, 1, 2, 3, 4, 5, 6, 7, 8}));
  folder->Add(Png(60000, 60000, 8, 0, {}, {0, 0}));
}

// A bitmap with a header of 40 bytes, a palette and rows as given.
Bytes Bmp(int width, int height, int bits, int compression, int colors,
          const Bytes& rows) {
  Bytes bytes = {'B', 'M'};
  const auto put = [&bytes](int value, int size) {
    for (int i = 0; i < size; ++i) {
      bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
  };
  const int start = 54 + 4 * colors;
  for (const int word :
       {start + static_cast<int>(rows.size()), 0, start, 40, width, height}) {
    put(word, 4);
  }
  put(1, 2);
  put(bits, 2);
  for (const int word :
       {compression, static_cast<int>(rows.size()), 0, 0, colors, 0}) {
    put(word, 4);
  }
  for (int i = 0; i < colors; ++i) put(i * 0x00010F05, 4);
  bytes.insert(bytes.end(), rows.begin(), rows.end());
  return bytes;
}

void AddBmps(Folder* folder) {
  constexpr int kPlain = 0, kRle8 = 1, kRle4 = 2;
  folder->Add(Bmp(9, 2, 1, kPlain, 2, Bytes(8, 0xA5)));
  folder->Add(Bmp(5, 2, 4, kPlain, 16, Bytes(8, 0x3C)));
  folder->Add(Bmp(5, -2, 8, kPlain, 256, Bytes(16, 0x3C)));
  folder->Add(Bmp(3, 2, 16, kPlain, 0, Bytes(16, 0x3C)));
  folder->Add(Bmp(3, 2, 32, kPlain, 0, Bytes(24, 0x3C)));
  // Runs, an absolute stretch, an end of line, a jump, an end.
  const Bytes runs = {3, 7, 0, 3, 1, 2, 3, 0, 0, 0,
                      2, 7, 0, 2, 1, 1, 2, 9, 0, 1};
  folder->Add(Bmp(8, 4, 8, kRle8, 16, runs));
  folder->Add(Bmp(8, 4, 4, kRle4, 16, runs));
}

std::vector<TiffBytes::Entry> Strip(int width, int height, uint32_t bits,
                                    uint32_t samples, uint32_t photometric,
                                    uint32_t at, uint32_t length) {
  using T = TiffBytes;
  return {{256, T::kShort, 1, static_cast<uint32_t>(width)},
          {257, T::kShort, 1, static_cast<uint32_t>(height)},
          {258, T::kShort, samples > 2 ? samples : 1, bits},
          {259, T::kShort, 1, 1},
          {262, T::kShort, 1, photometric},
          {273, T::kLong, 1, at},
          {277, T::kShort, 1, samples},
          {278, T::kShort, 1, static_cast<uint32_t>(height)},
          {279, T::kLong, 1, length}};
}

void AddTiffs(Folder* folder, bool big_endian) {
  using T = TiffBytes;
  constexpr uint32_t kBlackIsZero = 1, kRgb = 2, kPalette = 3, kInks = 5;
  {
    T pages(big_endian);
    const uint32_t grey = pages.Add(Bytes(12, 66));
    pages.Page(Strip(4, 3, 8, 1, kBlackIsZero, grey, 12));
    const uint32_t bilevel = pages.Add(Bytes(6, 0xA5));
    pages.Page(Strip(9, 3, 1, 1, kBlackIsZero, bilevel, 6));
    folder->Add(pages.Result());
  }
  for (const uint32_t bits : {1u, 4u, 16u, 32u}) {
    T plain(big_endian);
    const uint32_t at = plain.Add(Bytes(48, 66));
    plain.Page(Strip(4, 3, bits, 1, kBlackIsZero, at, 48));
    folder->Add(plain.Result());
  }
  {
    T palette(big_endian);
    const uint32_t at = palette.Add(Bytes(12, 3));
    const uint32_t colors = palette.AddShorts(std::vector<int>(768, 0x1234));
    auto entries = Strip(4, 3, 8, 1, kPalette, at, 12);
    entries.push_back({320, T::kShort, 768, colors});
    palette.Page(entries);
    folder->Add(palette.Result());
  }
  for (const auto& [samples, photometric] :
       {std::pair{4u, kInks}, {3u, kRgb}, {4u, kRgb}}) {
    T colored(big_endian);
    const uint32_t at = colored.Add(Bytes(48, 99));
    const uint32_t bits = colored.AddShorts(std::vector<int>(samples, 8));
    auto entries = Strip(4, 3, bits, samples, photometric, at, 12 * samples);
    entries.push_back({284, T::kShort, 1, 1});
    if (photometric == kInks) entries.push_back({332, T::kShort, 1, 1});
    colored.Page(entries);
    folder->Add(colored.Result());
  }
  for (const uint32_t bits : {8u, 16u}) {
    T tiled(big_endian);
    const uint32_t length = 256 * bits / 8;
    const uint32_t at = tiled.Add(Bytes(length, 99));
    tiled.Page({{256, T::kShort, 1, 13},
                {257, T::kShort, 1, 11},
                {258, T::kShort, 1, bits},
                {259, T::kShort, 1, 1},
                {262, T::kShort, 1, kBlackIsZero},
                {274, T::kShort, 1, 6},
                {277, T::kShort, 1, 1},
                {322, T::kShort, 1, 16},
                {323, T::kShort, 1, 16},
                {324, T::kLong, 1, at},
                {325, T::kLong, 1, length}});
    folder->Add(tiled.Result());
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: image_seeds FOLDER\n");
    return 2;
  }
  Folder folder(argv[1]);
  AddWhatTheLibraryWrites(&folder);
  AddPngs(&folder);
  AddBmps(&folder);
  for (const bool big_endian : {false, true}) AddTiffs(&folder, big_endian);
  folder.Add(rendal::testing_images::CmykJpeg({0, 60, 130, 255}));
  std::printf("%d seeds\n", folder.Count());
  return 0;
}
