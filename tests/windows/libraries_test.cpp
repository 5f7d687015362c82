// SPDX-License-Identifier: MIT
//
// The cross-built libraries do under Wine (or Windows) what the workbench
// expects of them: every file format it opens, threads, exceptions.
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/parallel_sort.h>

#include <algorithm>
#include <atomic>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "gtest/gtest.h"

namespace {

cv::Mat RandomImage(int type) {
  cv::Mat image(61, 47, type);
  cv::theRNG().state = 7;
  cv::randu(image, 0, 255);
  return image;
}

cv::Mat WrittenAndRead(const cv::Mat& image, const std::string& extension) {
  std::vector<unsigned char> bytes;
  EXPECT_TRUE(cv::imencode(extension, image, bytes));
  return cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
}

TEST(WindowsLibraries, LosslessFormatsComeBackAsTheyWere) {
  for (const int type : {CV_8UC1, CV_8UC3}) {
    const cv::Mat image = RandomImage(type);
    for (const char* extension : {".png", ".tif", ".bmp"}) {
      const cv::Mat back = WrittenAndRead(image, extension);
      ASSERT_EQ(back.type(), type) << extension;
      ASSERT_EQ(back.size(), image.size()) << extension;
      EXPECT_EQ(cv::norm(back, image, cv::NORM_INF), 0) << extension;
    }
  }
}

TEST(WindowsLibraries, SixteenBitsSurviveInPngAndTiff) {
  cv::Mat image(5, 300, CV_16UC1);
  cv::randu(image, 0, 65535);
  for (const char* extension : {".png", ".tif"}) {
    const cv::Mat back = WrittenAndRead(image, extension);
    ASSERT_EQ(back.type(), CV_16UC1) << extension;
    EXPECT_EQ(cv::norm(back, image, cv::NORM_INF), 0) << extension;
  }
}

TEST(WindowsLibraries, JpegKeepsASmoothImageWithinAFewLevels) {
  cv::Mat image(64, 64, CV_8UC1);
  for (int row = 0; row < image.rows; ++row) {
    image.row(row).setTo(4 * row);
  }
  const cv::Mat back = WrittenAndRead(image, ".jpg");
  ASSERT_EQ(back.size(), image.size());
  EXPECT_LE(cv::norm(back, image, cv::NORM_INF), 8);
}

TEST(WindowsLibraries, ImageLibraryRunsItsLoopsOnEveryThread) {
  EXPECT_EQ(cv::getNumThreads(), cv::getNumberOfCPUs());
  const cv::Mat image = RandomImage(CV_8UC1);
  cv::Mat large, one, many;
  cv::resize(image, large, cv::Size(2000, 1500), 0, 0, cv::INTER_LINEAR);
  cv::GaussianBlur(large, many, cv::Size(5, 5), 0);
  const int threads = cv::getNumThreads();
  cv::setNumThreads(1);
  cv::GaussianBlur(large, one, cv::Size(5, 5), 0);
  cv::setNumThreads(threads);
  EXPECT_EQ(cv::norm(one, many, cv::NORM_INF), 0);
}

TEST(WindowsLibraries, ParallelLoopVisitsEveryIndexOnce) {
  std::vector<std::atomic<int>> visits(100'000);
  tbb::parallel_for(size_t{0}, visits.size(),
                    [&](size_t index) { ++visits[index]; });
  EXPECT_TRUE(std::all_of(visits.begin(), visits.end(),
                          [](const auto& count) { return count == 1; }));
}

TEST(WindowsLibraries, ParallelSortSorts) {
  std::mt19937 random(3);
  std::vector<unsigned> numbers(200'000);
  std::generate(numbers.begin(), numbers.end(), random);
  tbb::parallel_sort(numbers.begin(), numbers.end());
  EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

TEST(WindowsLibraries, ExceptionLeavesAParallelLoop) {
  EXPECT_THROW(tbb::parallel_for(0, 1000,
                                 [](int index) {
                                   if (index == 500)
                                     throw std::runtime_error("stop");
                                 }),
               std::runtime_error);
}

}  // namespace
