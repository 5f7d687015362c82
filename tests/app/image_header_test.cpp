// SPDX-License-Identifier: MIT
#include "app/view/image_header.h"

#include <gtest/gtest.h>

#include <array>
#include <opencv2/imgcodecs.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tests/app/image_bytes.h"

namespace rendal {
namespace {

using testing_images::Bytes;
using Size = std::optional<ClaimedSize>;

Bytes FromText(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

void AppendLittle(Bytes* to, uint64_t value, int size) {
  for (int i = 0; i < size; ++i, value >>= 8) {
    to->push_back(static_cast<unsigned char>(value));
  }
}

TEST(ClaimedSize, IsThatOfFilesAsTheyAreWritten) {
  for (const char* extension : {".png", ".bmp", ".jpg", ".tif"}) {
    for (const int type : {CV_8UC1, CV_8UC3}) {
      Bytes bytes;
      ASSERT_TRUE(cv::imencode(extension, cv::Mat(37, 300, type), bytes));
      EXPECT_EQ(ReadClaimedSize(bytes), (ClaimedSize{300, 37})) << extension;
    }
  }
}

TEST(ClaimedSize, IsThatOfRareFormatsAsTheyAreWritten) {
  const cv::Mat grey(37, 300, CV_8UC1, cv::Scalar(9));
  const cv::Mat colour(37, 300, CV_8UC3, cv::Scalar(9, 9, 9));
  const cv::Mat real(37, 300, CV_32FC1, cv::Scalar(9));
  const struct {
    const char* extension;
    const cv::Mat& image;
  } files[] = {{".pbm", grey}, {".pgm", grey},   {".ppm", colour},
               {".pam", grey}, {".pam", colour}, {".pfm", real},
               {".ras", grey}, {".ras", colour}, {".hdr", colour}};
  for (const auto& [extension, image] : files) {
    Bytes bytes;
    ASSERT_TRUE(cv::imencode(extension, image, bytes));
    EXPECT_EQ(ReadClaimedSize(bytes), (ClaimedSize{300, 37})) << extension;
    EXPECT_FALSE(HasCommonFormat(bytes));
  }
}

Size SizeIn(const std::string& text) { return ReadClaimedSize(FromText(text)); }

TEST(ClaimedSize, OfPortableMapsIsTakenAsTheDecoderTakesIt) {
  EXPECT_EQ(SizeIn("P5 60000 50000 255 "), (ClaimedSize{60000, 50000}));
  EXPECT_EQ(SizeIn("P2#c 1\n \t7 # 8\n#\n9\n"), (ClaimedSize{7, 9}));
  EXPECT_EQ(SizeIn("P6 12#34 56"), (ClaimedSize{12, 34}));
  for (const char* text :
       {"P5", "P5 ", "P5 7", "P5 7 ", "P5 7 8", "P5 x 8 ", "P5 -7 8 ",
        "P5 2147483648 8 ", "P5 7 99999999999999999999 ", "P8 7 8 ", "P5 #"}) {
    EXPECT_EQ(SizeIn(text), std::nullopt) << text;
  }
  EXPECT_EQ(SizeIn("PF\n7 8\n-1\n"), (ClaimedSize{7, 8}));
  EXPECT_EQ(SizeIn("PF\n7  8\n"), std::nullopt);
  EXPECT_EQ(SizeIn("PF\n7x 8\n"), std::nullopt);
  EXPECT_EQ(SizeIn("P7\nWIDTH 7\nHEIGHT 8\nWIDTH 9\nENDHDR\n"),
            (ClaimedSize{9, 8}));
  EXPECT_EQ(SizeIn("P7\nWIDTH 7\nENDHDR\n"), std::nullopt);
  EXPECT_EQ(SizeIn("P7\nWIDTH 7\nHEIGHT 8\n"), std::nullopt);
  EXPECT_EQ(SizeIn("P7\nWIDTH x\nHEIGHT 8\nENDHDR\n"), std::nullopt);
}

TEST(ClaimedSize, OfRadiancePicturesStandsBehindTheBlankLine) {
  const std::string begin = "#?RADIANCE\nEXPOSURE=1\n";
  const std::string format = "FORMAT=32-bit_rle_rgbe\n";
  EXPECT_EQ(SizeIn(begin + format + "\n-Y 8 +X 7\n"), (ClaimedSize{7, 8}));
  for (const std::string& text :
       {begin + "\n-Y 8 +X 7\n", begin + format + "-Y 8 +X 7\n",
        begin + format + "\n+X 7 -Y 8\n", begin + format + "\n-Y 8 +X 7",
        begin + format + "\n-Y -8 +X 7\n", begin + format + "\n-Y 8 -X 7\n",
        begin + format + "\n", begin + format}) {
    EXPECT_EQ(SizeIn(text), std::nullopt) << text;
  }
}

TEST(ClaimedSize, OfBitmapsFromTopToBottomAndOfTheOldestKind) {
  Bytes bitmap = FromText("BM");
  AppendLittle(&bitmap, 0, 12);
  Bytes oldest = bitmap;
  AppendLittle(&bitmap, 40, 4);
  AppendLittle(&bitmap, 70000, 4);
  AppendLittle(&bitmap, static_cast<uint32_t>(-50000), 4);
  EXPECT_EQ(ReadClaimedSize(bitmap), (ClaimedSize{70000, 50000}));
  AppendLittle(&oldest, 12, 4);
  AppendLittle(&oldest, 65535, 2);
  AppendLittle(&oldest, 65534, 2);
  EXPECT_EQ(ReadClaimedSize(oldest), (ClaimedSize{65535, 65534}));
}

TEST(ClaimedSize, OfTiffsInBothOrdersOfBytesAndWithLongOffsets) {
  // Width as a 16-bit, height as a 32-bit number.
  const Bytes big = {'M', 'M', 0, '*', 0, 0, 0,    8,    0, 2, 1, 0,
                     0,   3,   0, 0,   0, 1, 0xEA, 0x60, 0, 0, 1, 1,
                     0,   4,   0, 0,   0, 1, 0,    1,    0, 2};
  EXPECT_EQ(ReadClaimedSize(big), (ClaimedSize{60000, 65538}));
  Bytes wide = FromText("II+");
  AppendLittle(&wide, 0, 1);
  AppendLittle(&wide, 8, 4);
  AppendLittle(&wide, 16, 8);  // the directory
  AppendLittle(&wide, 2, 8);
  for (const uint64_t tag : {256, 257}) {
    AppendLittle(&wide, tag, 2);
    AppendLittle(&wide, 16, 2);
    AppendLittle(&wide, 1, 8);
    AppendLittle(&wide, uint64_t{1} << 33 | tag, 8);
  }
  EXPECT_EQ(ReadClaimedSize(wide), (ClaimedSize{(uint64_t{1} << 33) + 256,
                                                (uint64_t{1} << 33) + 257}));
}

TEST(ClaimedSize, OfJpegsIsFoundBehindOtherSegments) {
  const Bytes jpeg = {0xFF, 0xD8, 0xFF, 0xE1, 0,    6,    0xFF,
                      0xC0, 0,    0,    0xFF, 0xFF, 0xC2, 0,
                      8,    8,    0x12, 0x34, 0x56, 0x78, 1};
  EXPECT_EQ(ReadClaimedSize(jpeg), (ClaimedSize{0x5678, 0x1234}));
  // These three are no frames: tables, an extension, conditions.
  for (const int marker : {0xC4, 0xC8, 0xCC}) {
    Bytes tables = {
        0xFF, 0xD8, 0xFF, static_cast<unsigned char>(marker), 0, 9, 1, 2, 3, 4,
        5,    6,    7};
    tables.insert(tables.end(), jpeg.begin() + 10, jpeg.end());
    EXPECT_EQ(ReadClaimedSize(tables), (ClaimedSize{0x5678, 0x1234})) << marker;
  }
  const Bytes scan_first = {0xFF, 0xD8, 0xFF, 0xDA, 0, 2, 0xFF, 0xC0,
                            0,    8,    8,    0,    1, 0, 1};
  EXPECT_EQ(ReadClaimedSize(scan_first), std::nullopt);
}

TEST(ClaimedSize, IsNoneWhereTheHeaderIsCutOffAndInOtherFiles) {
  for (const char* extension : {".png", ".bmp", ".jpg", ".tif"}) {
    Bytes bytes;
    ASSERT_TRUE(cv::imencode(extension, cv::Mat(3, 3, CV_8UC1), bytes));
    for (size_t length = 0; length < bytes.size(); ++length) {
      const std::span part(bytes.data(), length);
      const auto size = ReadClaimedSize(part);
      EXPECT_TRUE(!size || *size == (ClaimedSize{3, 3})) << extension << length;
    }
    EXPECT_EQ(ReadClaimedSize(std::span(bytes.data(), 15)), std::nullopt);
  }
  EXPECT_EQ(ReadClaimedSize(FromText("no picture")), std::nullopt);
}

// A directory at 16, after eight bytes that an entry may point at.
Bytes ClassicTiff(uint64_t at_8, const std::vector<std::array<int, 3>>& tags) {
  Bytes bytes = FromText("II*");
  AppendLittle(&bytes, 0, 1);
  AppendLittle(&bytes, 16, 4);
  AppendLittle(&bytes, at_8, 8);
  AppendLittle(&bytes, tags.size(), 2);
  for (const auto& [tag, type, value] : tags) {
    AppendLittle(&bytes, static_cast<uint64_t>(tag), 2);
    AppendLittle(&bytes, static_cast<uint64_t>(type), 2);
    AppendLittle(&bytes, 1, 4);
    AppendLittle(&bytes, static_cast<uint64_t>(value), 4);
  }
  return bytes;
}

// What follows would let a file pass that the decoder then takes for a large
// one.
TEST(ClaimedSize, OfATiffIsTheFirstOfSeveral) {
  constexpr int kLong = 4;
  EXPECT_EQ(ReadClaimedSize(ClassicTiff(0, {{256, kLong, 60000},
                                            {256, kLong, 3},
                                            {257, kLong, 50000},
                                            {257, kLong, 3}})),
            (ClaimedSize{60000, 50000}));
}

TEST(ClaimedSize, OfATiffMayStandElsewhere) {
  constexpr int kLong8 = 16;
  EXPECT_EQ(
      ReadClaimedSize(ClassicTiff(60000, {{256, kLong8, 8}, {257, kLong8, 8}})),
      (ClaimedSize{60000, 60000}));
}

TEST(ClaimedSize, OfATiffMayBeBytes) {
  constexpr int kByte = 1;
  EXPECT_EQ(ReadClaimedSize(ClassicTiff(
                0, {{256, kByte, 0xABCD02}, {257, kByte, 0xABCD03}})),
            (ClaimedSize{2, 3}));
}

TEST(Dicom, IsToldByItsMarkBehindAnything) {
  for (const char* begin : {"", "BM", "\xFF\xD8", "P5\n"}) {
    Bytes bytes = FromText(begin);
    bytes.resize(128);
    EXPECT_FALSE(IsDicom(bytes));
    for (const char c : {'D', 'I', 'C', 'M'}) {
      EXPECT_FALSE(IsDicom(bytes));
      bytes.push_back(static_cast<unsigned char>(c));
    }
    EXPECT_TRUE(IsDicom(bytes));
    bytes.push_back(0);
    EXPECT_TRUE(IsDicom(bytes));
    bytes.insert(bytes.begin(), 0);
    EXPECT_FALSE(IsDicom(bytes));
  }
}

TEST(HasCommonFormat, IsToldAsTheDecodersTellIt) {
  EXPECT_TRUE(HasCommonFormat(FromText("\xFF\xD8\xFF")));
  EXPECT_FALSE(HasCommonFormat(FromText("\xFF\xD8\xC0")));
  EXPECT_TRUE(HasCommonFormat(FromText("BM")));
  EXPECT_FALSE(HasCommonFormat(FromText("B")));
}

TEST(TiffOfTooFewSamples, IsOneOfLogarithmsWithFewerThanThree) {
  constexpr int kShort = 3, kLong = 4;
  for (const int colours : {32843, 32844, 32845, 32846, 2}) {
    const bool logarithms = colours == 32844 || colours == 32845;
    for (const int type : {kShort, kLong}) {
      EXPECT_EQ(IsTiffOfTooFewSamples(ClassicTiff(0, {{262, type, colours}})),
                logarithms)
          << colours;
      for (const int samples : {0, 1, 2, 3, 4}) {
        EXPECT_EQ(IsTiffOfTooFewSamples(ClassicTiff(0, {{262, type, colours},
                                                        {262, type, 2},
                                                        {277, type, samples},
                                                        {277, type, 3}})),
                  logarithms && samples < 3)
            << colours << " " << samples;
      }
    }
  }
  EXPECT_FALSE(IsTiffOfTooFewSamples(ClassicTiff(0, {{256, kLong, 32844}})));
  EXPECT_FALSE(IsTiffOfTooFewSamples(FromText("II*")));
  EXPECT_FALSE(IsTiffOfTooFewSamples(FromText("BM")));
}

TEST(ClaimedSize, ExceedsWithoutOverflow) {
  constexpr uint64_t kHuge = ~uint64_t{0};
  EXPECT_TRUE((ClaimedSize{kHuge, kHuge}.Exceeds(kHuge)));
  EXPECT_TRUE((ClaimedSize{5, 21}.Exceeds(100)));
  EXPECT_FALSE((ClaimedSize{5, 20}.Exceeds(100)));
  EXPECT_FALSE((ClaimedSize{0, kHuge}.Exceeds(100)));
  EXPECT_TRUE((ClaimedSize{200, 1}.Exceeds(100)));
}

}  // namespace
}  // namespace rendal
