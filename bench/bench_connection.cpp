// SPDX-License-Identifier: MIT
//
// Components with every feature, against the peers' components with area,
// bounding box and centroid: from the runs (from the peers' own binary forms),
// and from the grey image ("blobs").
#include <opencv2/imgproc.hpp>

#include "bench/bench.h"
#include "bench/peers.h"
#include "region/operations.h"

namespace {

using Connect = int (*)(vexo::region&, vexo::region*, int);

int connect_runs(vexo::region& input, vexo::region* result, int n) {
  return vexo::connection_y(input, result, n);
}

void measure_components(const char* title, Connect connect,
                        const bench::Options& options,
                        const std::vector<bench::Picture>& pictures) {
  bench::Table table(title, options);
  for (const bench::Picture& p : pictures) {
    cv::Mat gray = p.gray.clone();
    const cv::Mat mask = bench::mask_of(p);
    const bench::Pix pix = bench::to_binary_pix(mask);
    vexo::region input;
    vexo::threshold_y(gray.data, gray.cols, gray.rows, p.min, p.max, &input);
    input.to_3();
    bench::CvLabels cv_labels;
    for (int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region checked;
      const int n = connect(input, &checked, bench::kNeighbourhood);
      cv_labels.run(mask);
      bench::expect_same_components(checked, cv_labels, p.name);
      if (bench::lept_components(pix.get()) != n)
        bench::fail("Leptonica's count");
      const auto medians = bench::time_in_turns(
          {[&] {
             vexo::region result;
             connect(input, &result, bench::kNeighbourhood);
           },
           [&] { cv_labels.run(mask); },
           [&] { bench::lept_components(pix.get()); }},
          options.budget_ms);
      table.add(p, threads, medians, {"OpenCV", "Leptonica"}, {25, 8, 4, 3});
    }
  }
}

void measure_blobs(const bench::Options& options,
                   const std::vector<bench::Picture>& pictures) {
  bench::Table table("blobs: threshold_y, connection_y", options);
  for (const bench::Picture& p : pictures) {
    cv::Mat gray = p.gray.clone(), mask;
    const bench::Pix pix = bench::to_gray_pix(gray);
    bench::CvLabels cv_labels;
    const auto run_ours = [&](vexo::region* result) {
      vexo::region runs;
      vexo::threshold_y(gray.data, gray.cols, gray.rows, p.min, p.max, &runs);
      return vexo::connection_y(runs, result, bench::kNeighbourhood);
    };
    const auto run_cv = [&] {
      cv::inRange(gray, p.min, p.max, mask);
      cv_labels.run(mask);
    };
    const auto run_lept = [&] {
      return bench::lept_components(
          bench::lept_band(pix.get(), p.min, p.max).get());
    };
    for (int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region checked;
      const int n = run_ours(&checked);
      run_cv();
      bench::expect_same_components(checked, cv_labels, p.name);
      if (run_lept() != n) bench::fail("Leptonica's count");
      const auto medians = bench::time_in_turns({[&] {
                                                   vexo::region result;
                                                   run_ours(&result);
                                                 },
                                                 run_cv, run_lept},
                                                options.budget_ms);
      table.add(p, threads, medians, {"OpenCV", "Leptonica"}, {15, 8, 4, 3});
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Options options = bench::parse(argc, argv);
  const auto pictures = bench::pictures(options);
  measure_components("components: connection_y", connect_runs, options,
                     pictures);
  measure_components("components: connection", vexo::connection, options,
                     pictures);
  measure_components("components: connection2", vexo::connection2, options,
                     pictures);
  measure_blobs(options, pictures);
}
