// SPDX-License-Identifier: MIT
#include "bench/bench.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "region/internal/parallel.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr char kSkimage[] = "usr/lib/python3/dist-packages/skimage/data/";
constexpr char kSamples[] = "usr/share/doc/opencv-doc/examples/data/";

fs::path photographs() {
  const char* cache = std::getenv("XDG_CACHE_HOME");
  const char* home = std::getenv("HOME");
  const fs::path base = cache != nullptr  ? fs::path(cache)
                        : home != nullptr ? fs::path(home) / ".cache"
                                          : fs::path(".");
  return base / "rendal" / "photographs";
}

cv::Mat read(const std::string& path) {
  cv::Mat gray =
      cv::imread((photographs() / path).string(), cv::IMREAD_GRAYSCALE);
  if (gray.empty()) fail(path + " is missing: run bench/photographs.sh first");
  return gray;
}

cv::Mat noise(cv::Size size, double sigma) {
  cv::RNG random(20240229);
  cv::Mat m(size, CV_16S);
  random.fill(m, cv::RNG::NORMAL, 0, sigma);
  return m;
}

cv::Mat enlarged_with_noise(const cv::Mat& gray, int factor, double sigma) {
  cv::Mat large, sum;
  cv::resize(gray, large, cv::Size(), factor, factor, cv::INTER_CUBIC);
  large.convertTo(sum, CV_16S);
  sum += noise(large.size(), sigma);
  sum.convertTo(large, CV_8U);
  return large;
}

cv::Mat uniform_noise(int side) {
  cv::RNG random(4711);
  cv::Mat m(side, side, CV_8U);
  random.fill(m, cv::RNG::UNIFORM, 0, 256);
  return m;
}

double runs_per_kilopixel(const Picture& p) {
  const cv::Mat mask = mask_of(p);
  double runs = 0;
  for (int r = 0; r < mask.rows; ++r) {
    const uchar* row = mask.ptr(r);
    for (int c = 0; c < mask.cols; ++c) {
      runs += row[c] != 0 && (c == 0 || row[c - 1] == 0);
    }
  }
  return 1000 * runs / static_cast<double>(mask.total());
}

template <class Runs>
cv::Mat draw(const Runs& runs, size_t count, cv::Size size) {
  cv::Mat mask = cv::Mat::zeros(size, CV_8U);
  for (size_t i = 0; i < count; ++i) {
    const auto [row, begin, end] = runs(i);
    if (row < 0 || row >= size.height || begin < 0 || end >= size.width) {
      fail("a run lies outside the image");
    }
    std::fill(mask.ptr(row) + begin, mask.ptr(row) + end + 1, uchar{255});
  }
  return mask;
}

bool g_cpu_clock = false;

double wall_ms() {
  using clock = std::chrono::steady_clock;
  return std::chrono::duration<double, std::milli>(
             clock::now().time_since_epoch())
      .count();
}

double cpu_ms() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return 1e3 * static_cast<double>(t.tv_sec) +
         1e-6 * static_cast<double>(t.tv_nsec);
}

double now_ms() { return g_cpu_clock ? cpu_ms() : wall_ms(); }

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<long>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

size_t class_index(char density) { return std::string("SMDX").find(density); }

}  // namespace

void fail(const std::string& what) {
  std::fprintf(stderr, "bench: %s\n", what.c_str());
  std::exit(1);
}

Options parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; i += 2) {
    const std::string name = argv[i];
    const std::string value = i + 1 < argc ? argv[i + 1] : "";
    if (name == "--filter") {
      options.filter = value;
    } else if (name == "--budget" && std::atoi(value.c_str()) > 0) {
      options.budget_ms = std::atoi(value.c_str());
    } else if (name == "--clock" && (value == "cpu" || value == "wall")) {
      g_cpu_clock = value == "cpu";
    } else if (name == "--threads" && std::atoi(value.c_str()) > 0) {
      options.threads.clear();
      std::istringstream list(value);
      for (std::string n; std::getline(list, n, ',');) {
        options.threads.push_back(std::max(1, std::atoi(n.c_str())));
      }
    } else {
      std::fprintf(stderr,
                   "usage: %s [--filter TEXT] [--threads N,...] "
                   "[--budget MS] [--clock wall|cpu]\n",
                   argv[0]);
      std::exit(2);
    }
  }
  return options;
}

std::vector<Picture> pictures(const Options& options) {
  const std::string skimage = kSkimage, samples = kSamples;
  struct Entry {
    const char* name;
    int min, max;
    std::function<cv::Mat()> make;
  };
  const std::vector<Entry> entries{
      {"coins", 108, 255, [&] { return read(skimage + "coins.png"); }},
      {"parts", 0, 111, [&] { return read(samples + "pca_test1.jpg"); }},
      {"board", 0, 105, [&] { return read(samples + "board.jpg"); }},
      {"retina", 60, 255, [&] { return read(skimage + "retina.jpg"); }},
      {"stars", 40, 255,
       [&] { return read(skimage + "hubble_deep_field.jpg"); }},
      {"gravel4m", 0, 117,
       [&] { return cv::repeat(read(skimage + "gravel.png"), 4, 4); }},
      {"grassband", 100, 130,
       [&] { return cv::repeat(read(skimage + "grass.png"), 4, 4); }},
      {"digits2m", 105, 255, [&] { return read(samples + "digits.png"); }},
      {"chess13m", 0, 127, [&] { return read(samples + "chessboard.png"); }},
      {"board20m", 0, 105,
       [&] { return enlarged_with_noise(read(samples + "board.jpg"), 8, 6); }},
      {"random4m", 128, 255, [&] { return uniform_noise(2048); }},
  };
  std::vector<Picture> all;
  for (const Entry& e : entries) {
    if (std::string(e.name).find(options.filter) == std::string::npos) continue;
    Picture p{e.name, '?', e.make(), e.min, e.max};
    const double density = runs_per_kilopixel(p);
    p.density = density <= 5 ? 'S' : density <= 50 ? 'M' : 'D';
    if (p.name.rfind("random", 0) == 0) p.density = 'X';
    std::printf("%s: %d x %d, %.1f runs per 1000 pixels\n", e.name, p.gray.cols,
                p.gray.rows, density);
    all.push_back(std::move(p));
  }
  return all;
}

void use_threads(int n) {
  vexo::internal::set_thread_limit(n);
  cv::setNumThreads(n);
}

cv::Mat mask_of(const Picture& picture) {
  cv::Mat mask;
  cv::inRange(picture.gray, picture.min, picture.max, mask);
  return mask;
}

cv::Mat mask_of_runs(const vexo::region& r, cv::Size size) {
  return draw(
      [&r](size_t i) {
        return std::tuple(r.rows[i], r.col_begins[i], r.col_ends[i]);
      },
      r.run_count, size);
}

cv::Mat mask_of_chords(const vexo::region& r, cv::Size size) {
  return draw(
      [&r](size_t i) {
        const vexo::chord& c = r.chords[i];
        return std::tuple(c.row, c.col_begin, c.col_end);
      },
      static_cast<size_t>(r.chord_count), size);
}

void expect_equal(const cv::Mat& ours, const cv::Mat& peer,
                  const std::string& what) {
  if (ours.size() != peer.size()) fail(what + ": sizes differ");
  cv::Mat difference;
  cv::compare(ours, peer, difference, cv::CMP_NE);
  const int pixels = cv::countNonZero(difference);
  if (pixels != 0)
    fail(what + ": " + std::to_string(pixels) + " pixels differ");
}

Pix to_gray_pix(const cv::Mat& gray) {
  Pix pix(pixCreate(gray.cols, gray.rows, 8));
  for (int r = 0; r < gray.rows; ++r) {
    l_uint32* line = pixGetData(pix.get()) + r * pixGetWpl(pix.get());
    for (int c = 0; c < gray.cols; ++c) {
      SET_DATA_BYTE(line, c, gray.at<uchar>(r, c));
    }
  }
  return pix;
}

Pix to_binary_pix(const cv::Mat& mask) {
  Pix pix(pixCreate(mask.cols, mask.rows, 1));
  for (int r = 0; r < mask.rows; ++r) {
    l_uint32* line = pixGetData(pix.get()) + r * pixGetWpl(pix.get());
    for (int c = 0; c < mask.cols; ++c) {
      if (mask.at<uchar>(r, c) != 0) SET_DATA_BIT(line, c);
    }
  }
  return pix;
}

cv::Mat to_mask(PIX* binary) {
  cv::Mat mask =
      cv::Mat::zeros(pixGetHeight(binary), pixGetWidth(binary), CV_8U);
  for (int r = 0; r < mask.rows; ++r) {
    l_uint32* line = pixGetData(binary) + r * pixGetWpl(binary);
    for (int c = 0; c < mask.cols; ++c) {
      if (GET_DATA_BIT(line, c)) mask.at<uchar>(r, c) = 255;
    }
  }
  return mask;
}

std::vector<double> time_in_turns(
    const std::vector<std::function<void()>>& candidates, int budget_ms) {
  constexpr int kMinRounds = 5, kMaxRounds = 2000;
  std::vector<std::vector<double>> times(candidates.size());
  for (const auto& run : candidates) run();  // warm caches and the heap
  const double start = now_ms();
  for (int round = 0; round < kMaxRounds; ++round) {
    if (round >= kMinRounds && now_ms() - start > budget_ms) break;
    for (size_t i = 0; i < candidates.size(); ++i) {
      const double begin = now_ms();
      candidates[i]();
      times[i].push_back(now_ms() - begin);
    }
  }
  std::vector<double> medians;
  for (auto& t : times) medians.push_back(median(std::move(t)));
  return medians;
}

Table::Table(const std::string& title, const Options& options)
    : threads_(options.threads), reached_(options.threads.size()) {
  std::printf("\n### %s\n\n| image | class |", title.c_str());
  for (const int n : threads_)
    std::printf(" %d thread%s: ours ms | peer ms | ratio |", n,
                n == 1 ? "" : "s");
  std::printf(" goal |\n|---|---|");
  for (size_t i = 0; i < threads_.size(); ++i) std::printf("---|---|---|");
  std::printf("---|\n");
}

void Table::add(const Picture& picture, int threads,
                const std::vector<double>& medians,
                const std::vector<std::string>& peers,
                const std::vector<double>& goals) {
  const auto best = std::min_element(medians.begin() + 1, medians.end());
  const auto index = static_cast<size_t>(best - medians.begin()) - 1;
  const double ratio = *best / medians[0];
  const double goal = goals[class_index(picture.density)];
  const char* bold = ratio >= goal ? "**" : "";
  if (threads == threads_.front()) {
    std::printf("| %s | %c |", picture.name.c_str(), picture.density);
    ++pictures_;
  }
  std::printf(" %.3g | %.3g %s | %s%.2f%s |", medians[0], *best,
              peers[index].c_str(), bold, ratio, bold);
  const auto column = std::find(threads_.begin(), threads_.end(), threads);
  reached_[static_cast<size_t>(column - threads_.begin())] += ratio >= goal;
  if (threads == threads_.back()) std::printf(" %g |\n", goal);
  std::fflush(stdout);
}

Table::~Table() {
  for (size_t i = 0; i < threads_.size(); ++i)
    std::printf("%s%d thread%s: %d of %d goals", i == 0 ? "\n" : "; ",
                threads_[i], threads_[i] == 1 ? "" : "s", reached_[i],
                pictures_);
  std::printf(".\n");
}

}  // namespace bench
