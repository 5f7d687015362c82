// SPDX-License-Identifier: MIT
//
// Grey image to runs, against the peer's grey image to mask.
#include <opencv2/imgproc.hpp>

#include "bench/bench.h"
#include "region/operations.h"

namespace {

using Form = void (*)(unsigned char*, int, int, int, int, vexo::region*);

void measure(const char* title, Form form, const bench::Options& options,
             const std::vector<bench::Picture>& pictures) {
  bench::Table table(title, options);
  for (const bench::Picture& p : pictures) {
    cv::Mat gray = p.gray.clone(), mask;
    vexo::region ours;
    const auto run_ours = [&] {
      form(gray.data, gray.cols, gray.rows, p.min, p.max, &ours);
    };
    const auto run_peer = [&] { cv::inRange(gray, p.min, p.max, mask); };
    for (int threads : options.threads) {
      bench::use_threads(threads);
      run_ours();
      run_peer();
      bench::expect_equal(form == vexo::threshold
                              ? bench::mask_of_chords(ours, gray.size())
                              : bench::mask_of_runs(ours, gray.size()),
                          mask, p.name);
      table.add(p, threads,
                bench::time_in_turns({run_ours, run_peer}, options.budget_ms),
                {"inRange"}, {2, 1.2, 0.8, 0.5});
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Options options = bench::parse(argc, argv);
  const auto pictures = bench::pictures(options);
  measure("threshold_y", vexo::threshold_y, options, pictures);
  measure("threshold", vexo::threshold, options, pictures);
  measure("threshold_y3", vexo::threshold_y3, options, pictures);
}
