// SPDX-License-Identifier: MIT
//
// What the benchmarks share: pictures, peers' forms of them, timing turn by
// turn, and the table that comes out.
#ifndef RENDAL_BENCH_BENCH_H_
#define RENDAL_BENCH_BENCH_H_

#include <leptonica/allheaders.h>

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "region/region.h"

namespace bench {

// Density classes by runs per 1000 pixels: S up to 5, M up to 50, D above, X
// noise.
struct Picture {
  std::string name;
  char density;
  cv::Mat gray;
  int min;  // the grey band
  int max;
};

struct Options {
  std::string filter;              // part of a picture's name; empty: all
  std::vector<int> threads{1, 2};  // --threads 1,2
  int budget_ms = 200;             // per measured row; --budget
};

// --filter TEXT, --threads N[,N], --budget MS, --clock wall|cpu. Exits with 2
// on anything else. The cpu clock counts what this process was given, on all
// its threads: for one thread on a machine that does other work as well.
Options parse(int argc, char** argv);

// Photographs from the folder that photographs.sh fills, and seeded noise.
// Exits with 1 when the photographs are not there.
std::vector<Picture> pictures(const Options& options);

// Threads for ours and for the peers.
void use_threads(int n);

// The pixels of the band as a mask of 0 and 255, by the peer's own operation.
cv::Mat mask_of(const Picture& picture);

// The runs as a mask, from the run arrays or from the chord array.
cv::Mat mask_of_runs(const vexo::region& r, cv::Size size);
cv::Mat mask_of_chords(const vexo::region& r, cv::Size size);

// Prints what differs and exits with 1 unless the masks are equal.
void expect_equal(const cv::Mat& ours, const cv::Mat& peer,
                  const std::string& what);
[[noreturn]] void fail(const std::string& what);

struct PixDestroyer {
  void operator()(PIX* pix) const { pixDestroy(&pix); }
};
using Pix = std::unique_ptr<PIX, PixDestroyer>;

Pix to_gray_pix(const cv::Mat& gray);
Pix to_binary_pix(const cv::Mat& mask);
cv::Mat to_mask(PIX* binary);

// Medians in milliseconds of the candidates, timed turn by turn until the
// budget is used up, at least 5 rounds.
std::vector<double> time_in_turns(
    const std::vector<std::function<void()>>& candidates, int budget_ms);

// Markdown table, a line for each picture: class, then ours, best peer and
// ratio for each number of threads, goal. How many pictures reach the goal
// follows, for each number of threads.
class Table {
 public:
  Table(const std::string& title, const Options& options);
  // A picture's numbers of threads come one after the other, as in the
  // options. Goals for S, M, D, X; peer names go with the medians after ours.
  void add(const Picture& picture, int threads,
           const std::vector<double>& medians,
           const std::vector<std::string>& peers,
           const std::vector<double>& goals);
  ~Table();

 private:
  std::vector<int> threads_;
  std::vector<int> reached_;
  int pictures_ = 0;
};

}  // namespace bench

#endif  // RENDAL_BENCH_BENCH_H_
