// SPDX-License-Identifier: MIT
//
// Hole filling, each in its own form: runs, mask, one bit a pixel.
#include "bench/bench.h"
#include "bench/peers.h"
#include "region/operations.h"

namespace {

using Form = void (*)(vexo::region&, vexo::region*);

void measure(const char* title, Form form, bool chords,
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
    cv::Mat padded, filled;
    for (int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region ours;
      form(input, &ours);
      bench::cv_fill(mask, &padded, &filled);
      const cv::Mat drawn = chords ? bench::mask_of_chords(ours, mask.size())
                                   : bench::mask_of_runs(ours, mask.size());
      bench::expect_equal(drawn, filled, p.name);
      bench::expect_equal(bench::to_mask(bench::lept_fill(pix.get()).get()),
                          filled, p.name + " (peers)");
      const auto medians =
          bench::time_in_turns({[&] {
                                  vexo::region result;
                                  form(input, &result);
                                },
                                [&] { bench::cv_fill(mask, &padded, &filled); },
                                [&] { bench::lept_fill(pix.get()); }},
                               options.budget_ms);
      table.add(p, threads, medians, {"OpenCV", "Leptonica"}, {8, 3, 1.5, 0.7});
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Options options = bench::parse(argc, argv);
  const auto pictures = bench::pictures(options);
  measure(
      "fill_up_y",
      [](vexo::region& in, vexo::region* out) { vexo::fill_up_y(in, out); },
      false, options, pictures);
  measure("fill_up", vexo::fill_up, true, options, pictures);
  measure(
      "fill_up_y2",
      [](vexo::region& in, vexo::region* out) { vexo::fill_up_y2(in, out); },
      false, options, pictures);
}
