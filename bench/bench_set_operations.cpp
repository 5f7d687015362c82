// SPDX-License-Identifier: MIT
//
// Union, difference and intersection of a picture's region and the same region
// moved 5 columns and 2 rows, each in its own form: runs, masks, one bit a
// pixel. The last column is nanoseconds for each run that goes in.
#include <cstdio>
#include <opencv2/core.hpp>

#include "bench/bench.h"
#include "region/operations.h"

namespace {

struct Operation {
  const char* name;
  void (*ours)(vexo::region&, vexo::region&, vexo::region*);
  void (*cv)(const cv::Mat&, const cv::Mat&, cv::Mat*);
  PIX* (*lept)(PIX*, PIX*, PIX*);
  bool chords;
};

void cv_union(const cv::Mat& a, const cv::Mat& b, cv::Mat* out) {
  cv::bitwise_or(a, b, *out);
}
void cv_difference(const cv::Mat& a, const cv::Mat& b, cv::Mat* out) {
  cv::subtract(a, b, *out);  // of masks of 0 and 255
}
void cv_intersection(const cv::Mat& a, const cv::Mat& b, cv::Mat* out) {
  cv::bitwise_and(a, b, *out);
}

const Operation kOperations[] = {
    {"union2_y", vexo::union2_y, cv_union, pixOr, false},
    {"difference_y", vexo::difference_y, cv_difference, pixSubtract, false},
    {"intersection_y", vexo::intersection_y, cv_intersection, pixAnd, false},
    {"union2", vexo::union2, cv_union, pixOr, true},
    {"difference", vexo::difference, cv_difference, pixSubtract, true},
    {"intersection", vexo::intersection, cv_intersection, pixAnd, true},
};

cv::Mat moved(const cv::Mat& mask) {
  cv::Mat result = cv::Mat::zeros(mask.size(), CV_8U);
  const cv::Rect from(0, 0, mask.cols - 5, mask.rows - 2);
  const cv::Rect to(5, 2, mask.cols - 5, mask.rows - 2);
  mask(from).copyTo(result(to));
  return result;
}

vexo::region region_of(const cv::Mat& mask) {
  cv::Mat copy = mask.clone();
  vexo::region result;
  vexo::threshold_y(copy.data, copy.cols, copy.rows, 255, 255, &result);
  result.to_3();
  return result;
}

void measure(const Operation& op, const bench::Options& options,
             const std::vector<bench::Picture>& pictures) {
  std::printf("\n### %s\n\n", op.name);
  std::printf("| image | class |");
  for (const int n : options.threads)
    std::printf(" %d thread%s: ours ms | peer ms | ratio | ns per run |", n,
                n == 1 ? "" : "s");
  std::printf(" goal |\n|---|---|");
  for (size_t i = 0; i < options.threads.size(); ++i)
    std::printf("---|---|---|---|");
  std::printf("---|\n");
  for (const bench::Picture& p : pictures) {
    const cv::Mat mask = bench::mask_of(p);
    const cv::Mat other = moved(mask);
    const bench::Pix pix = bench::to_binary_pix(mask);
    const bench::Pix other_pix = bench::to_binary_pix(other);
    vexo::region first = region_of(mask), second = region_of(other);
    const double runs = static_cast<double>(first.run_count + second.run_count);
    cv::Mat expected;
    op.cv(mask, other, &expected);
    const bench::Pix expected_pix(op.lept(nullptr, pix.get(), other_pix.get()));
    bench::expect_equal(bench::to_mask(expected_pix.get()), expected, p.name);
    const double goal = p.density == 'S' ? 1.2 : 3;
    std::printf("| %s | %c |", p.name.c_str(), p.density);
    for (const int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region ours;
      op.ours(first, second, &ours);
      bench::expect_equal(op.chords ? bench::mask_of_chords(ours, mask.size())
                                    : bench::mask_of_runs(ours, mask.size()),
                          expected, p.name);
      const auto medians = bench::time_in_turns(
          {[&] { op.ours(first, second, &ours); },
           [&] { op.cv(mask, other, &expected); },
           [&] {
             bench::Pix out(op.lept(nullptr, pix.get(), other_pix.get()));
           }},
          options.budget_ms);
      const bool cv_wins = medians[1] < medians[2];
      const double peer = cv_wins ? medians[1] : medians[2];
      const double ns = 1e6 * medians[0] / runs;
      const char* bold = ns <= goal ? "**" : "";
      std::printf(" %.3g | %.3g %s | %.2f | %s%.2f%s |", medians[0], peer,
                  cv_wins ? "OpenCV" : "Leptonica", peer / medians[0], bold, ns,
                  bold);
      std::fflush(stdout);
    }
    std::printf(" %g ns |\n", goal);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Options options = bench::parse(argc, argv);
  const auto pictures = bench::pictures(options);
  for (const Operation& op : kOperations) measure(op, options, pictures);
}
