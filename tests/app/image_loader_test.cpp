// SPDX-License-Identifier: MIT
#include "app/view/image_loader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string_view>

#include "tests/app/image_bytes.h"
#include "tools/long_path.h"

namespace rendal {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using testing_images::Bytes;
using testing_images::CmykJpeg;
using testing_images::Png;
using testing_images::TemporaryFolder;
using testing_images::WriteBytes;
namespace fs = std::filesystem;

class ImageLoader : public testing::Test {
 protected:
  ImageLoader()
      : m_folder(
            testing::UnitTest::GetInstance()->current_test_info()->name()) {
    m_bench.m_language = kEnglish;
    m_view.viewWidth = 1000;
    m_view.viewHeight = 800;
  }

  Status Load(const fs::path& path) {
    CaptureStdout();
    const Status status = LoadImageFile(path, m_bench, m_view);
    m_console = GetCapturedStdout();
    return status;
  }
  Status LoadBytes(const Bytes& bytes, const std::string& name = "image") {
    WriteBytes(m_folder / name, bytes);
    return Load(m_folder / name);
  }
  Status LoadMat(const cv::Mat& image, const std::string& extension) {
    Bytes bytes;
    EXPECT_TRUE(cv::imencode(extension, image, bytes));
    return LoadBytes(bytes, "image" + extension);
  }
  int Grey(int x, int y) const {
    return m_bench.m_srcImage.at<unsigned char>(y, x);
  }

  void ExpectOpened(const Status& status, int width, int height) {
    EXPECT_EQ(status.tone, Tone::kNotice);
    EXPECT_EQ(status.text, "open image,width = " + std::to_string(width) +
                               ", height = " + std::to_string(height));
    EXPECT_EQ(m_bench.m_srcImage.size(), cv::Size(width, height));
    EXPECT_EQ(m_bench.m_srcImage.type(), CV_8UC1);
  }
  // What every file that is no image leaves.
  void ExpectNoImage(const Status& status) {
    EXPECT_EQ(status.tone, Tone::kNotice);
    EXPECT_EQ(status.text, "open image,width = 0, height = 0");
    EXPECT_TRUE(m_bench.m_srcImage.empty());
    EXPECT_NE(m_console.find("no image in "), std::string::npos) << m_console;
    EXPECT_EQ(m_bench.m_redraw, 1);
    EXPECT_EQ(m_bench.m_hideResults, 1);
  }

  TemporaryFolder m_folder;
  Workbench m_bench;
  ViewState m_view;
  std::string m_console;
};

TEST_F(ImageLoader, GreyImageIsKeptAsItIs) {
  cv::Mat image(80, 100, CV_8U);
  cv::randu(image, 0, 256);
  ExpectOpened(LoadMat(image, ".png"), 100, 80);
  EXPECT_EQ(cv::norm(m_bench.m_srcImage, image, cv::NORM_INF), 0);
}

TEST_F(ImageLoader, StatusIsChineseInLanguageZero) {
  m_bench.m_language = kChinese;
  EXPECT_EQ(LoadMat(cv::Mat(8, 9, CV_8U, cv::Scalar(1)), ".bmp").text,
            "\xE6\x89\x93\xE5\xBC\x80\xE5\x9B\xBE\xE7\x89\x87"
            ",width = 9, height = 8");
}

TEST_F(ImageLoader, ConsoleNamesThePathFirst) {
  LoadMat(cv::Mat(8, 9, CV_8U, cv::Scalar(1)), ".bmp");
  EXPECT_EQ(m_console,
            "src path = " + (m_folder / "image.bmp").string() + "\n");
}

TEST_F(ImageLoader, ColourBecomesGrey) {
  ExpectOpened(LoadMat(cv::Mat(3, 4, CV_8UC3, cv::Scalar(10, 200, 90)), ".png"),
               4, 3);
  EXPECT_EQ(Grey(0, 0), 145);  // .114 * 10 + .587 * 200 + .299 * 90
}

TEST_F(ImageLoader, FourChannelPngIsShownGrey) {
  ExpectOpened(
      LoadMat(cv::Mat(3, 4, CV_8UC4, cv::Scalar(10, 200, 90, 0)), ".png"), 4,
      3);
  EXPECT_EQ(Grey(3, 2), 145);
}

TEST_F(ImageLoader, PalettePngIsShownGrey) {
  // Two pixels: entries 1 (red 90, green 200, blue 10) and 0 (white).
  ExpectOpened(
      LoadBytes(Png(2, 1, 8, 3, {255, 255, 255, 90, 200, 10}, {0, 1, 0})), 2,
      1);
  EXPECT_EQ(Grey(0, 0), 145);
  EXPECT_EQ(Grey(1, 0), 255);
}

TEST_F(ImageLoader, OneBitPngIsBlackAndWhite) {
  ExpectOpened(LoadBytes(Png(8, 1, 1, 0, {}, {0, 0b10100000})), 8, 1);
  EXPECT_EQ(Grey(0, 0), 255);
  EXPECT_EQ(Grey(1, 0), 0);
}

TEST_F(ImageLoader, CmykJpegIsShownGrey) {
  ExpectOpened(LoadBytes(CmykJpeg({255, 255, 255, 200})), 8, 8);
  EXPECT_NEAR(Grey(4, 4), 200, 2);
  ExpectOpened(LoadBytes(CmykJpeg({255, 255, 255, 30})), 8, 8);
  EXPECT_NEAR(Grey(4, 4), 30, 2);
}

TEST_F(ImageLoader, ColourJpegAndTiffOpen) {
  ExpectOpened(
      LoadMat(cv::Mat(30, 40, CV_8UC3, cv::Scalar(70, 70, 70)), ".jpg"), 40,
      30);
  EXPECT_NEAR(Grey(20, 20), 70, 1);
  ExpectOpened(LoadMat(cv::Mat(30, 40, CV_8U, cv::Scalar(70)), ".tif"), 40, 30);
  EXPECT_EQ(Grey(20, 20), 70);
}

TEST_F(ImageLoader, SixteenBitsAreDividedBy257) {
  cv::Mat image =
      (cv::Mat_<uint16_t>(1, 6) << 0, 128, 129, 25700, 65406, 65535);
  ExpectOpened(LoadMat(image, ".png"), 6, 1);
  const int expected[6] = {0, 0, 1, 100, 254, 255};
  for (int x = 0; x < 6; ++x) EXPECT_EQ(Grey(x, 0), expected[x]) << x;
}

TEST_F(ImageLoader, SixteenBitColourIsShownGrey) {
  ExpectOpened(LoadMat(cv::Mat(2, 2, CV_16UC3,
                               cv::Scalar(10 * 257, 200 * 257, 90 * 257)),
                       ".png"),
               2, 2);
  EXPECT_EQ(Grey(1, 1), 145);
}

TEST_F(ImageLoader, EverySixteenBitValueIsRoundedToTheNearest) {
  cv::Mat image(256, 256, CV_16U);
  for (int i = 0; i < 65536; ++i) {
    image.at<uint16_t>(i / 256, i % 256) = static_cast<uint16_t>(i);
  }
  const cv::Mat grey = ToGrey8(image, nullptr);
  for (int i = 0; i < 65536; ++i) {
    ASSERT_EQ(grey.at<unsigned char>(i / 256, i % 256), (i + 128) / 257) << i;
  }
}

TEST_F(ImageLoader, FloatsAreStretchedAndTheConsoleSaysSo) {
  cv::Mat image = (cv::Mat_<float>(1, 5) << -1, 0, 1, 2, 3);
  ExpectOpened(LoadMat(image, ".tif"), 5, 1);
  const int expected[5] = {0, 64, 128, 191, 255};
  for (int x = 0; x < 5; ++x) EXPECT_EQ(Grey(x, 0), expected[x]) << x;
  EXPECT_NE(m_console.find("grey 0..255 shows values -1..3\n"),
            std::string::npos)
      << m_console;
}

TEST_F(ImageLoader, FloatColourIsStretchedAfterTheConversionToGrey) {
  cv::Mat image(1, 2, CV_32FC3, cv::Scalar(0.1, 0.1, 0.1));
  image.at<cv::Vec3f>(0, 1) = {0.5f, 0.5f, 0.5f};
  ExpectOpened(LoadMat(image, ".tif"), 2, 1);
  EXPECT_EQ(Grey(0, 0), 0);
  EXPECT_EQ(Grey(1, 0), 255);
}

// The decoder would take two samples of three from what memory holds.
TEST_F(ImageLoader, TiffOfLogarithmsWithFewerThanThreeSamplesIsNoImage) {
  constexpr int kLogarithms = 34676;
  const cv::Mat image(5, 4, CV_32FC3, cv::Scalar(0.1, 0.2, 0.3));
  Bytes bytes;
  ASSERT_TRUE(cv::imencode(".tif", image, bytes,
                           {cv::IMWRITE_TIFF_COMPRESSION, kLogarithms}));
  ExpectOpened(LoadBytes(bytes, "image.tif"), 4, 5);
  const Bytes three_samples = {0x15, 0x01, 3, 0, 1, 0, 0, 0, 3, 0};
  const auto entry = std::search(bytes.begin(), bytes.end(),
                                 three_samples.begin(), three_samples.end());
  ASSERT_NE(entry, bytes.end());
  for (const int samples : {0, 1, 2}) {
    entry[8] = static_cast<unsigned char>(samples);
    ExpectNoImage(LoadBytes(bytes, "image.tif"));
  }
  entry[0] = 0x16;
  ExpectNoImage(LoadBytes(bytes, "image.tif"));
}

TEST_F(ImageLoader, WhatIsNoNumberIsBlackAndInfinitiesAreTheEnds) {
  const float infinity = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const cv::Mat image =
      (cv::Mat_<float>(1, 5) << nan, -infinity, 10, 20, infinity);
  const cv::Mat grey = ToGrey8(image, nullptr);
  const int expected[5] = {0, 0, 0, 255, 255};
  for (int x = 0; x < 5; ++x) {
    EXPECT_EQ(grey.at<unsigned char>(0, x), expected[x]) << x;
  }
}

TEST_F(ImageLoader, OtherDepthsAreStretchedToo) {
  const double widest = std::numeric_limits<double>::max();
  const cv::Mat images[] = {cv::Mat_<int16_t>({1, 3}, {-300, 0, 300}),
                            cv::Mat_<int8_t>({1, 3}, {-100, 0, 100}),
                            cv::Mat_<int32_t>({1, 3}, {-3000000, 0, 3000000}),
                            cv::Mat_<double>({1, 3}, {-widest, 0, widest})};
  for (const cv::Mat& image : images) {
    SCOPED_TRACE(image.depth());
    const cv::Mat grey = ToGrey8(image, nullptr);
    EXPECT_EQ(grey.at<unsigned char>(0, 0), 0);
    EXPECT_EQ(grey.at<unsigned char>(0, 1), 128);
    EXPECT_EQ(grey.at<unsigned char>(0, 2), 255);
  }
}

TEST_F(ImageLoader, EqualValuesHaveNoRangeAndAreBlack) {
  ExpectOpened(LoadMat(cv::Mat(2, 2, CV_32F, cv::Scalar(7)), ".tif"), 2, 2);
  EXPECT_EQ(Grey(1, 1), 0);
}

TEST_F(ImageLoader, LoadingFitsTheViewAndResetsShapesAndResults) {
  m_view.zoom = 9;
  m_bench.m_hideResults = 0;
  m_bench.m_results.resize(1);
  m_bench.m_regionOverlay.Replace({OverlayItem{{0, 0, 255, 0}, {}, {}}});
  LoadMat(cv::Mat(3000, 4000, CV_8U, cv::Scalar(5)), ".png");
  EXPECT_EQ(m_view.zoom, 0.25f);
  EXPECT_EQ(m_view.minZoom, 0.125f);
  EXPECT_EQ(m_view.offsetX, 0);
  EXPECT_EQ(m_view.offsetY, 25);
  EXPECT_EQ(m_bench.m_redraw, 1);
  EXPECT_EQ(m_bench.m_hideResults, 1);
  // Blob regions and results stay.
  EXPECT_EQ(m_bench.m_regionOverlay.size(), 1u);
  EXPECT_EQ(m_bench.m_results.size(), 1u);
  const float expected[4][5] = {{1000, 1500, 3000, 1500, 0},
                                {2000, 1500, 750, 0, 0},
                                {1000, 1500, 3000, 1500, 0},
                                {2000, 1500, 0, 1000, 750}};
  ASSERT_EQ(m_bench.m_roiShapes.size(), 4u);
  for (int kind = 0; kind < 4; ++kind) {
    EXPECT_EQ(m_bench.m_roiShapes[kind].kind, kind);
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(m_bench.m_roiShapes[kind].values[i], expected[kind][i]);
    }
  }
}

TEST_F(ImageLoader, LoadingKeepsTheInteractionAndTheHistory) {
  m_view.pointerX = 3;
  m_view.hoverY = 5;
  m_view.dragging = true;
  m_view.grabbed = 1 << 16 | 1;
  m_bench.m_regionHistory.resize(2);
  m_bench.m_toolMode = kToolBand;
  LoadMat(cv::Mat(30, 40, CV_8U, cv::Scalar(5)), ".png");
  EXPECT_EQ(m_view.pointerX, 3);
  EXPECT_EQ(m_view.hoverY, 5);
  EXPECT_TRUE(m_view.dragging);
  EXPECT_EQ(m_view.grabbed, 1 << 16 | 1);
  EXPECT_EQ(m_bench.m_regionHistory.size(), 2u);
  EXPECT_EQ(m_bench.m_toolMode, kToolBand);
}

TEST_F(ImageLoader, TwoChannelImageIsRefusedAndTheRestKept) {
  LoadMat(cv::Mat(3000, 4000, CV_8U, cv::Scalar(5)), ".png");
  m_view.zoom = 3;
  m_view.offsetX = 17;
  m_bench.m_redraw = -1;
  m_bench.m_hideResults = 0;
  m_bench.m_roiShapes[0].values[0] = 77;
  Bytes pam;
  testing_images::Append(&pam,
                         "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\n"
                         "TUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nabcd");
  const Status status = LoadBytes(pam, "image.pam");
  EXPECT_EQ(status.tone, Tone::kNotice);
  EXPECT_EQ(status.text, "open image,channels = 2 not support");
  EXPECT_EQ(m_view.zoom, 3);
  EXPECT_EQ(m_view.offsetX, 17);
  EXPECT_EQ(m_bench.m_redraw, -1);
  EXPECT_EQ(m_bench.m_hideResults, 0);
  EXPECT_EQ(m_bench.m_roiShapes[0].values[0], 77);
  EXPECT_EQ(m_bench.m_srcImage.channels(), 2);
  EXPECT_FALSE(m_bench.HasImage());
}

TEST_F(ImageLoader, OnePixelImageOpens) {
  ExpectOpened(LoadMat(cv::Mat(1, 1, CV_8U, cv::Scalar(42)), ".png"), 1, 1);
  EXPECT_EQ(Grey(0, 0), 42);
  EXPECT_EQ(m_view.offsetX, 499);
}

TEST_F(ImageLoader, ThinImagesOpen) {
  ExpectOpened(LoadMat(cv::Mat(30000, 1, CV_8U, cv::Scalar(42)), ".png"), 1,
               30000);
  EXPECT_EQ(m_view.fitZoom, 800.0f / 30000);
  EXPECT_EQ(m_view.offsetY, 0);
  ExpectOpened(LoadMat(cv::Mat(1, 30000, CV_8U, cv::Scalar(42)), ".png"), 30000,
               1);
}

TEST_F(ImageLoader, ImageOf400MegapixelsOpens) {
  Bytes bytes;
  {
    const cv::Mat image(20000, 20000, CV_8U, cv::Scalar(9));
    ASSERT_TRUE(
        cv::imencode(".png", image, bytes, {cv::IMWRITE_PNG_COMPRESSION, 1}));
  }
  ExpectOpened(LoadBytes(bytes), 20000, 20000);
  EXPECT_EQ(Grey(19999, 19999), 9);
  EXPECT_EQ(m_view.zoom, 0.04f);
}

TEST_F(ImageLoader, MorePixelsThanTheImageLibraryTakesAreNoImage) {
  // 40000 x 30000 is above its limit of 2^30 pixels.
  m_bench.m_maxImagePixels = uint64_t{1} << 40;
  ExpectNoImage(LoadBytes(Png(40000, 30000, 8, 0, {}, {0, 0})));
  EXPECT_NE(m_console.find("image library: "), std::string::npos) << m_console;
}

TEST_F(ImageLoader, FileThatClaimsTooManyPixelsIsRefusedAndNothingChanges) {
  LoadMat(cv::Mat(30, 40, CV_8U, cv::Scalar(5)), ".png");
  m_view.zoom = 3;
  m_bench.m_redraw = -1;
  const Status status = LoadBytes(Png(60000, 60000, 8, 0, {}, {0, 0}));
  EXPECT_EQ(status.tone, Tone::kError);
  EXPECT_EQ(status.text,
            "image too large,width = 60000, height = 60000, at most 500000000 "
            "pixels");
  EXPECT_EQ(m_bench.m_srcImage.size(), cv::Size(40, 30));
  EXPECT_EQ(m_view.zoom, 3);
  EXPECT_EQ(m_bench.m_redraw, -1);
}

TEST_F(ImageLoader, LimitOfPixelsHoldsForEveryFormatAndIsInclusive) {
  for (const char* extension : {".png", ".bmp", ".jpg", ".tif", ".pbm", ".pgm",
                                ".ppm", ".pam", ".pfm", ".hdr", ".ras"}) {
    SCOPED_TRACE(extension);
    const bool has_colour =
        std::string(extension) == ".hdr" || std::string(extension) == ".ppm";
    const cv::Mat image(50, 70, has_colour ? CV_8UC3 : CV_8U,
                        cv::Scalar(5, 5, 5));
    m_bench.m_maxImagePixels = 3500;
    ExpectOpened(LoadMat(image, extension), 70, 50);
    m_bench.m_maxImagePixels = 3499;
    EXPECT_EQ(LoadMat(image, extension).tone, Tone::kError);
  }
}

// Some builds of the image library would decode them, of any size.
TEST_F(ImageLoader, OtherFormatsAreNotRead) {
  using namespace std::string_view_literals;
  for (const std::string_view begin :
       {"RIFF\x1A\0\0\0WEBPVP8L"sv, "\0\0\0\x0CjP  \r\n\x87\n"sv,
        "\xFF\x4F\xFF\x51\0\x2F"sv, "\x76\x2F\x31\x01\2\0\0\0"sv,
        "GIF89a\1\0\1\0"sv}) {
    Bytes bytes(begin.begin(), begin.end());
    bytes.resize(500);
    ExpectNoImage(LoadBytes(bytes));
    EXPECT_EQ(m_console.find("image library"), std::string::npos) << m_console;
  }
}

TEST_F(ImageLoader, EmptyFileIsNoImage) { ExpectNoImage(LoadBytes({})); }

TEST_F(ImageLoader, TextFileIsNoImage) {
  Bytes text;
  testing_images::Append(&text, "This is not an image.\n");
  ExpectNoImage(LoadBytes(text, "letter.png"));
  EXPECT_EQ(m_console, "src path = " + (m_folder / "letter.png").string() +
                           "\nno image in " +
                           (m_folder / "letter.png").string() + "\n");
}

TEST_F(ImageLoader, VanishedPathIsNoImage) {
  ExpectNoImage(Load(m_folder / "gone.png"));
  ExpectNoImage(Load(m_folder / "no folder" / "gone.png"));
  ExpectNoImage(Load(fs::path()));
}

TEST_F(ImageLoader, FolderIsNoImage) { ExpectNoImage(Load(m_folder / "")); }

TEST_F(ImageLoader, FileThatIsNoImageReplacesTheImageBefore) {
  LoadMat(cv::Mat(30, 40, CV_8U, cv::Scalar(5)), ".png");
  ExpectNoImage(LoadBytes({}));
  EXPECT_EQ(m_view.zoom, 1);
}

cv::Mat Noise(int width, int height) {
  cv::Mat image(height, width, CV_8UC3);
  cv::randu(image, cv::Scalar::all(0), cv::Scalar::all(256));
  return image;
}

Bytes FirstPart(const Bytes& whole, size_t length) {
  return Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
}

TEST_F(ImageLoader, CutOffFilesAreNoImage) {
  for (const char* extension : {".png", ".bmp", ".tif"}) {
    Bytes whole;
    ASSERT_TRUE(cv::imencode(extension, Noise(50, 60), whole));
    for (const size_t percent : {3u, 20u, 50u, 90u, 99u}) {
      SCOPED_TRACE(std::string(extension) + " " + std::to_string(percent));
      ExpectNoImage(LoadBytes(FirstPart(whole, whole.size() * percent / 100)));
    }
  }
}

TEST_F(ImageLoader, JpegCutOffInItsPictureIsGreyBelow) {
  Bytes bytes;
  cv::imencode(".jpg", Noise(64, 640), bytes);
  LoadBytes(bytes);
  const cv::Mat whole = m_bench.m_srcImage;
  EXPECT_EQ(m_console.find("cut off"), std::string::npos) << m_console;
  ExpectOpened(LoadBytes(FirstPart(bytes, bytes.size() / 2)), 64, 640);
  EXPECT_NE(m_console.find("the image file is cut off\n"), std::string::npos);
  const cv::Mat& part = m_bench.m_srcImage;
  EXPECT_EQ(
      cv::norm(part.rowRange(0, 200), whole.rowRange(0, 200), cv::NORM_INF), 0);
  double low = 0;
  double high = 0;
  cv::minMaxLoc(part.rowRange(450, 640), &low, &high);
  EXPECT_LE(high - low, 2);
}

// Wherever the file ends, the same picture comes of it each time.
TEST_F(ImageLoader, JpegCutOffAnywhereHasADefinedOutcome) {
  Bytes bytes;
  cv::imencode(".jpg", Noise(24, 24), bytes);
  for (size_t length = 1; length < bytes.size(); length += 11) {
    SCOPED_TRACE(length);
    const Bytes part = FirstPart(bytes, length);
    LoadBytes(part);
    const cv::Mat first = m_bench.m_srcImage.clone();
    const cv::Mat dirt(400, 400, CV_8U, cv::Scalar(length % 251));
    LoadBytes(part);
    ASSERT_EQ(first.size(), m_bench.m_srcImage.size());
    if (!first.empty()) {
      ASSERT_EQ(first.size(), cv::Size(24, 24));
      ASSERT_EQ(cv::norm(first, m_bench.m_srcImage, cv::NORM_INF), 0);
    }
  }
}

TEST_F(ImageLoader, JpegCutOffBeforeItsPictureIsNoImage) {
  Bytes bytes;
  cv::imencode(".jpg", Noise(24, 24), bytes);
  const unsigned char scan_start[] = {0xFF, 0xDA};
  const auto scan = std::search(bytes.begin(), bytes.end(), scan_start,
                                scan_start + sizeof scan_start);
  ASSERT_NE(scan, bytes.end());
  ExpectNoImage(LoadBytes(Bytes(bytes.begin(), scan)));
  EXPECT_NE(m_console.find("the image file is cut off\n"), std::string::npos);
}

TEST_F(ImageLoader, JpegWithBytesAfterItsEndIsWhole) {
  Bytes bytes;
  cv::imencode(".jpg", Noise(24, 24), bytes);
  bytes.insert(bytes.end(), 500, 'x');
  ExpectOpened(LoadBytes(bytes), 24, 24);
  EXPECT_EQ(m_console.find("cut off"), std::string::npos) << m_console;
}

TEST_F(ImageLoader, FileThatStopsAfterItsHeaderIsNoImage) {
  const Bytes png = Png(100, 100, 8, 0, {}, Bytes(100 * 101, 0));
  ExpectNoImage(LoadBytes(Bytes(png.begin(), png.begin() + 40)));
}

TEST_F(ImageLoader, ChinesePathOpens) {
  // "coin" in Chinese, as a folder and as a file.
  const fs::path name(std::u8string(u8"\u786C\u5E01"));
  fs::create_directories(m_folder / name);
  Bytes bytes;
  cv::imencode(".png", cv::Mat(8, 9, CV_8U, cv::Scalar(1)), bytes);
  const fs::path path =
      m_folder / name / fs::path(std::u8string(u8"\u786C\u5E01.png"));
  WriteBytes(path, bytes);
  ExpectOpened(Load(path), 9, 8);
  EXPECT_NE(m_console.find("\xE7\xA1\xAC\xE5\xB8\x81.png\n"), std::string::npos)
      << m_console;
}

TEST_F(ImageLoader, PathOfThreeHundredCharactersOpens) {
  const std::string level(100, 'a');
  const fs::path folder = m_folder / level / level;
  fs::create_directories(WithoutLengthLimit(folder));
  const fs::path path = folder / (level + ".png");
  ASSERT_GT(path.string().size(), 300u);
  Bytes bytes;
  cv::imencode(".png", cv::Mat(8, 9, CV_8U, cv::Scalar(1)), bytes);
  WriteBytes(path, bytes);
  ExpectOpened(Load(path), 9, 8);
}

TEST_F(ImageLoader, NameLongerThanTheFileSystemTakesIsNoImage) {
  ExpectNoImage(Load(m_folder / std::string(5000, 'x')));
}

// Fails for every image above a size.
class SmallMemory : public cv::MatAllocator {
 public:
  SmallMemory() { cv::Mat::setDefaultAllocator(this); }
  ~SmallMemory() override {
    cv::Mat::setDefaultAllocator(cv::Mat::getStdAllocator());
  }

  cv::UMatData* allocate(int dims, const int* sizes, int type, void* data,
                         size_t* step, cv::AccessFlag flags,
                         cv::UMatUsageFlags usage) const override {
    if (data == nullptr && sizes[0] > 100) {
      CV_Error(cv::Error::StsNoMem, "Failed to allocate");
    }
    return cv::Mat::getStdAllocator()->allocate(dims, sizes, type, data, step,
                                                flags, usage);
  }
  bool allocate(cv::UMatData* data, cv::AccessFlag flags,
                cv::UMatUsageFlags usage) const override {
    return cv::Mat::getStdAllocator()->allocate(data, flags, usage);
  }
  void deallocate(cv::UMatData* data) const override {
    cv::Mat::getStdAllocator()->deallocate(data);
  }
};

TEST_F(ImageLoader, MemoryThatRunsOutKeepsTheImageBefore) {
  LoadMat(cv::Mat(30, 40, CV_8U, cv::Scalar(5)), ".png");
  m_view.zoom = 3;
  Bytes bytes;
  cv::imencode(".png", cv::Mat(300, 10, CV_8U, cv::Scalar(5)), bytes);
  WriteBytes(m_folder / "large.png", bytes);
  CaptureStdout();
  const SmallMemory memory;
  const Status status = Guarded(
      [&] { return LoadImageFile(m_folder / "large.png", m_bench, m_view); });
  GetCapturedStdout();
  EXPECT_EQ(status.tone, Tone::kError);
  EXPECT_NE(status.text.find("Failed to allocate"), std::string::npos);
  EXPECT_EQ(m_bench.m_srcImage.size(), cv::Size(40, 30));
  EXPECT_EQ(m_view.zoom, 3);
}

}  // namespace
}  // namespace rendal
