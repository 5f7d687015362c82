// SPDX-License-Identifier: MIT
//
// A day's usual chain from the grey image: threshold, fill the holes, open by
// a disc, components with features. Each library in its own form throughout.
#include <opencv2/imgproc.hpp>

#include "bench/bench.h"
#include "bench/peers.h"
#include "region/operations.h"

namespace {

struct Disc {
  vexo::region runs;
  cv::Mat mask;
  bench::Sel sel;

  explicit Disc(int radius) {
    vexo::gen_se_circle(radius, &runs);
    mask = bench::mask_of_element(runs);
    sel = bench::sel_of_element(mask);
  }
};

void chain(cv::Mat& gray, const bench::Picture& p, const Disc& disc,
           vexo::region* result) {
  vexo::region runs, filled, opened;
  vexo::threshold_y(gray.data, gray.cols, gray.rows, p.min, p.max, &runs);
  vexo::fill_up_y(runs, &filled);
  vexo::opening(filled, disc.runs, &opened);
  vexo::connection_y(opened, result, bench::kNeighbourhood);
}

struct CvChain {
  cv::Mat mask, padded, filled, opened;
  bench::CvLabels labels;

  void run(const cv::Mat& gray, const bench::Picture& p, const Disc& disc) {
    cv::inRange(gray, p.min, p.max, mask);
    bench::cv_fill(mask, &padded, &filled);
    cv::morphologyEx(filled, opened, cv::MORPH_OPEN, disc.mask,
                     cv::Point(-1, -1), 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    labels.run(opened);
  }
};

int lept_chain(PIX* gray, const bench::Picture& p, const Disc& disc) {
  const bench::Pix band = bench::lept_band(gray, p.min, p.max);
  const bench::Pix filled = bench::lept_fill(band.get());
  const bench::Pix opened(pixOpen(nullptr, filled.get(), disc.sel.get()));
  return bench::lept_components(opened.get());
}

void measure(const bench::Options& options,
             const std::vector<bench::Picture>& pictures) {
  bench::Table table(
      "pipeline: threshold, fill, opening by disc 10, components", options);
  const Disc disc(10);
  for (const bench::Picture& p : pictures) {
    cv::Mat gray = p.gray.clone();
    const bench::Pix pix = bench::to_gray_pix(gray);
    CvChain peer;
    for (const int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region checked;
      chain(gray, p, disc, &checked);
      peer.run(gray, p, disc);
      bench::expect_same_components(checked, peer.labels, p.name);
      if (lept_chain(pix.get(), p, disc) != checked.child_count)
        bench::fail("Leptonica's count");
      const auto medians =
          bench::time_in_turns({[&] {
                                  vexo::region result;
                                  chain(gray, p, disc, &result);
                                },
                                [&] { peer.run(gray, p, disc); },
                                [&] { lept_chain(pix.get(), p, disc); }},
                               options.budget_ms);
      table.add(p, threads, medians, {"OpenCV", "Leptonica"}, {15, 8, 5, 3});
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Options options = bench::parse(argc, argv);
  measure(options, bench::pictures(options));
}
