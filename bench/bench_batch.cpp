// SPDX-License-Identifier: MIT
//
// The peer of "rendal-cli run": the same chain over a folder of images, written
// with OpenCV, and the maker of that folder. bench/batch.py runs both.
//
//   bench_batch make FOLDER COUNT bmp   photographs of 1600 x 1250, grey
//   bench_batch run FOLDER CSV THREADS
//   bench_batch read FOLDER THREADS     opens and decodes, no more
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <thread>
#include <vector>

#include "bench/bench.h"
#include "bench/peers.h"
#include "region/operations.h"

namespace {

namespace fs = std::filesystem;

const cv::Size kSize(1600, 1250);
constexpr int kMinGray = 128;
constexpr int kMaxGray = 255;
constexpr int kRadius = 10;

// A part of a photograph at a random place and scale, at times mirrored.
cv::Mat view_of(const cv::Mat& photograph, cv::RNG& random) {
  const double fit = std::min(1.0 * photograph.cols / kSize.width,
                              1.0 * photograph.rows / kSize.height);
  const double part = fit * random.uniform(0.6, 1.0);
  const cv::Size size(std::max(2, static_cast<int>(kSize.width * part)),
                      std::max(2, static_cast<int>(kSize.height * part)));
  const cv::Rect place(random.uniform(0, photograph.cols - size.width + 1),
                       random.uniform(0, photograph.rows - size.height + 1),
                       size.width, size.height);
  cv::Mat view;
  cv::resize(photograph(place), view, kSize, 0, 0, cv::INTER_CUBIC);
  if (random.uniform(0, 2) == 1) cv::flip(view, view, 1);
  return view;
}

void make(const fs::path& folder, int count, const std::string& format) {
  std::vector<cv::Mat> photographs;
  for (const char* name :
       {"coins", "parts", "board", "retina", "stars", "digits2m", "gravel4m"}) {
    bench::Options options;
    options.filter = name;
    for (const bench::Picture& p : bench::pictures(options)) {
      photographs.push_back(p.gray);
    }
  }
  cv::RNG random(20261121);
  for (int i = 0; i < count; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "%04d.", i);
    if (!cv::imwrite((folder / (name + format)).string(),
                     view_of(photographs[i % photographs.size()], random))) {
      bench::fail("cannot write the photographs");
    }
  }
}

// What the region list of a component holds, by OpenCV's own functions.
void append_features(const std::string& image, int label,
                     const bench::CvLabels& found, std::string* csv) {
  const int* const s = found.stats.ptr<int>(label);
  const double* const c = found.centroids.ptr<double>(label);
  const cv::Rect box(s[cv::CC_STAT_LEFT], s[cv::CC_STAT_TOP],
                     s[cv::CC_STAT_WIDTH], s[cv::CC_STAT_HEIGHT]);
  const cv::Mat mask = found.labels(box) == label;
  const cv::Moments m = cv::moments(mask, true);
  const double xx = m.mu20 / m.m00, xy = m.mu11 / m.m00, yy = m.mu02 / m.m00;
  const double q = std::sqrt((yy - xx) * (yy - xx) + 4 * xy * xy);
  const double ra = 0.5 * std::sqrt(8 * (xx + yy + q));
  const double rb = 0.5 * std::sqrt(std::max(0.0, 8 * (xx + yy - q)));
  std::vector<std::vector<cv::Point>> contours;
  cv::findContours(mask, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
  double farthest = 0;
  for (const cv::Point& p : contours[0]) {
    farthest =
        std::max(farthest, std::hypot(p.x + box.x - c[0], p.y + box.y - c[1]));
  }
  const cv::RotatedRect rectangle = cv::minAreaRect(contours[0]);
  char line[512];
  std::snprintf(
      line, sizeof line,
      "%s,%d,%d,%.17g,%.17g,%d,%d,%d,%d,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,"
      "%.17g\n",
      image.c_str(), label, s[cv::CC_STAT_AREA], c[0], c[1], box.x, box.y,
      box.x + box.width - 1, box.y + box.height - 1, ra, rb,
      0.5 * std::atan2(2 * xy, xx - yy) * 180 / CV_PI,
      rectangle.size.width / 2.0, rectangle.size.height / 2.0,
      1.0 * rectangle.angle,
      s[cv::CC_STAT_AREA] / (CV_PI * farthest * farthest));
  *csv += line;
}

std::string table_of(const fs::path& path, const cv::Mat& disc) {
  const cv::Mat gray = cv::imread(path.string(), cv::IMREAD_GRAYSCALE);
  cv::Mat mask, padded, filled, opened;
  cv::inRange(gray, kMinGray, kMaxGray, mask);
  bench::cv_fill(mask, &padded, &filled);
  cv::morphologyEx(filled, opened, cv::MORPH_OPEN, disc, cv::Point(-1, -1), 1,
                   cv::BORDER_CONSTANT, cv::Scalar(0));
  bench::CvLabels found;
  found.run(opened);
  std::string csv;
  for (int label = 1; label < found.stats.rows; ++label) {
    append_features(path.filename().string(), label, found, &csv);
  }
  return csv;
}

// work(path) for every file of the folder; the texts that it gives, in the
// order of the files, to `out`.
template <typename Work>
void for_each_file(const fs::path& folder, int threads, std::FILE* out,
                   Work work) {
  cv::setNumThreads(1);
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::atomic<size_t> next{0};
  std::mutex mutex;
  size_t written = 0;
  std::map<size_t, std::string> waiting;
  const auto work_through = [&] {
    for (size_t i = next++; i < files.size(); i = next++) {
      std::string text = work(files[i]);
      const std::lock_guard lock(mutex);
      waiting[i] = std::move(text);
      for (auto first = waiting.begin();
           first != waiting.end() && first->first == written;
           first = waiting.erase(first), ++written) {
        std::fwrite(first->second.data(), 1, first->second.size(), out);
      }
    }
  };
  std::vector<std::thread> helpers;
  for (int i = 1; i < threads; ++i) helpers.emplace_back(work_through);
  work_through();
  for (std::thread& helper : helpers) helper.join();
}

void run(const fs::path& folder, const fs::path& csv, int threads) {
  vexo::region element;
  vexo::gen_se_circle(kRadius, &element);
  const cv::Mat disc = bench::mask_of_element(element);
  std::FILE* const out = std::fopen(csv.string().c_str(), "wb");
  if (out == nullptr) bench::fail("cannot write the table");
  for_each_file(folder, threads, out,
                [&](const fs::path& path) { return table_of(path, disc); });
  std::fclose(out);
}

// What both do before anything else.
void read(const fs::path& folder, int threads) {
  for_each_file(folder, threads, stdout, [](const fs::path& path) {
    const cv::Mat gray = cv::imread(path.string(), cv::IMREAD_GRAYSCALE);
    if (gray.size() != kSize) bench::fail("a photograph cannot be read");
    return std::string();
  });
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 1 ? argv[1] : "";
  if (what == "make" && argc == 5) {
    make(argv[2], std::atoi(argv[3]), argv[4]);
  } else if (what == "run" && argc == 5) {
    run(argv[2], argv[3], std::max(1, std::atoi(argv[4])));
  } else if (what == "read" && argc == 4) {
    read(argv[2], std::max(1, std::atoi(argv[3])));
  } else {
    std::fprintf(stderr,
                 "usage: %s make FOLDER COUNT bmp|jpg|png | "
                 "run FOLDER CSV N | read FOLDER N\n",
                 argv[0]);
    return 2;
  }
}
