// SPDX-License-Identifier: MIT
//
// Morphology, each in its own form: runs, mask, one bit a pixel, and OpenCV's
// contributed run-length morphology. --rows TEXT keeps the rows whose title
// holds TEXT.
#include <algorithm>
#include <cstring>
#include <opencv2/imgproc.hpp>
#include <opencv2/ximgproc/run_length_morphology.hpp>

#include "bench/bench.h"
#include "bench/peers.h"
#include "region/operations.h"

namespace {

namespace rl = cv::ximgproc::rl;

// An element in everybody's form; odd sizes only, around its middle.
struct Element {
  std::string name;
  vexo::region runs;
  cv::Mat mask;
  cv::Mat run_length;
  bench::Sel sel;
  int brick = 0;  // side of a square, 0 for other shapes
};

Element element_of(const std::string& name, const vexo::region& runs) {
  Element e{name, runs, bench::mask_of_element(runs), {}, {}, 0};
  e.sel = bench::sel_of_element(e.mask);
  const int bottom = runs.rows[runs.run_count - 1];
  const int middle_row = (runs.rows[0] + bottom) / 2;
  const int left =
      *std::min_element(runs.col_begins, runs.col_begins + runs.run_count);
  const int middle_col = left + e.mask.cols / 2;
  std::vector<cv::Point3i> points;
  for (size_t i = 0; i < runs.run_count; ++i) {
    points.push_back({runs.col_begins[i] - middle_col,
                      runs.col_ends[i] - middle_col,
                      runs.rows[i] - middle_row});
  }
  rl::createRLEImage(points, e.run_length, e.mask.size());
  return e;
}

Element disc(int radius) {
  vexo::region runs;
  vexo::gen_se_circle(radius, &runs);
  return element_of("disc " + std::to_string(radius), runs);
}

Element square(int side) {
  vexo::region runs;
  vexo::gen_se_rectangle(side, side, &runs);
  Element e = element_of("rectangle " + std::to_string(side), runs);
  e.brick = side;
  return e;
}

Element cross(int side) {
  vexo::region runs;
  vexo::gen_se_cross(side, side, &runs);
  return element_of("cross " + std::to_string(side), runs);
}

struct Operation {
  const char* name;
  int cv_op;
  void (*ours)(const vexo::region&, const vexo::region&, vexo::region*);
  PIX* (*lept)(PIX*, PIX*, SEL*);
  PIX* (*lept_brick)(PIX*, PIX*, l_int32, l_int32);  // null: none
};

const Operation kDilation = {
    "dilation", cv::MORPH_DILATE,
    [](const vexo::region& a, const vexo::region& b, vexo::region* out) {
      vexo::dilation2(a, b, out, -1, -1);
    },
    pixDilate, pixDilateBrick};
const Operation kErosion = {
    "erosion", cv::MORPH_ERODE,
    [](const vexo::region& a, const vexo::region& b, vexo::region* out) {
      vexo::erosion2(a, b, out, -1, -1);
    },
    pixErode, pixErodeBrick};
const Operation kOpening = {"opening", cv::MORPH_OPEN, vexo::opening, pixOpen,
                            pixOpenBrick};

PIX* lept_closing(PIX*, PIX* in, SEL* sel) {
  return pixCloseSafe(nullptr, in, sel);
}
PIX* lept_closing_brick(PIX*, PIX* in, l_int32 w, l_int32 h) {
  return pixCloseSafeBrick(nullptr, in, w, h);
}
PIX* lept_top_hat(PIX*, PIX* in, SEL* sel) {
  bench::Pix opened(pixOpen(nullptr, in, sel));
  return pixSubtract(nullptr, in, opened.get());
}
PIX* lept_bottom_hat(PIX*, PIX* in, SEL* sel) {
  bench::Pix closed(pixCloseSafe(nullptr, in, sel));
  return pixSubtract(nullptr, closed.get(), in);
}
const Operation kClosing = {"closing", cv::MORPH_CLOSE, vexo::closing,
                            lept_closing, lept_closing_brick};
const Operation kTopHat = {"top hat", cv::MORPH_TOPHAT, vexo::top_hat,
                           lept_top_hat, nullptr};
const Operation kBottomHat = {"bottom hat", cv::MORPH_BLACKHAT,
                              vexo::bottom_hat, lept_bottom_hat, nullptr};

// What lies inside the image.
cv::Mat drawn(const vexo::region& r, cv::Size size) {
  cv::Mat mask = cv::Mat::zeros(size, CV_8U);
  for (size_t i = 0; i < r.run_count; ++i) {
    const int begin = std::max(r.col_begins[i], 0);
    const int end = std::min(r.col_ends[i], size.width - 1);
    if (r.rows[i] >= 0 && r.rows[i] < size.height && begin <= end)
      std::memset(mask.ptr(r.rows[i]) + begin, 255,
                  static_cast<size_t>(end - begin + 1));
  }
  return mask;
}

void cv_apply(const cv::Mat& in, int op, const Element& e, cv::Mat* out) {
  // Outside the image is background; the compositions need a frame for that,
  // which is given to them untimed.
  cv::morphologyEx(in, *out, op, e.mask, cv::Point(-1, -1), 1,
                   cv::BORDER_CONSTANT, cv::Scalar(0));
}

PIX* lept_apply(PIX* in, const Operation& op, const Element& e) {
  if (e.brick > 0 && op.lept_brick != nullptr)
    return op.lept_brick(nullptr, in, e.brick, e.brick);
  return op.lept(nullptr, in, e.sel.get());
}

void rl_apply(const cv::Mat& in, int op, const Element& e, cv::Mat* out) {
  rl::morphologyEx(in, *out, op, e.run_length, false);
}

// A source with its forms. Compositions of the mask forms take the frame's
// background, so their source gets a margin wider than the element.
struct Source {
  vexo::region runs;
  cv::Mat mask;
  bench::Pix pix;
  cv::Mat run_length;
};

Source source_of(const bench::Picture& p, int margin) {
  Source s;
  cv::copyMakeBorder(bench::mask_of(p), s.mask, margin, margin, margin, margin,
                     cv::BORDER_CONSTANT, 0);
  cv::Mat copy = s.mask.clone();
  vexo::threshold_y(copy.data, copy.cols, copy.rows, 255, 255, &s.runs);
  s.pix = bench::to_binary_pix(s.mask);
  rl::threshold(s.mask, s.run_length, 127, cv::THRESH_BINARY);
  return s;
}

void measure(const Operation& op, const Element& e,
             const std::vector<double>& goals, const bench::Options& options,
             const std::vector<bench::Picture>& pictures,
             const std::string& rows) {
  const std::string title = std::string(op.name) + ", " + e.name;
  if (title.find(rows) == std::string::npos) return;
  bench::Table table(title, options);
  const bool composed =
      op.cv_op != cv::MORPH_DILATE && op.cv_op != cv::MORPH_ERODE;
  for (const bench::Picture& p : pictures) {
    const Source s = source_of(p, composed ? e.mask.rows : 0);
    cv::Mat mask, run_length;
    for (const int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region ours;
      op.ours(s.runs, e.runs, &ours);
      const cv::Mat ours_mask = drawn(ours, s.mask.size());
      cv_apply(s.mask, op.cv_op, e, &mask);
      bench::expect_equal(ours_mask, mask, p.name + " (OpenCV)");
      const bench::Pix pix(lept_apply(s.pix.get(), op, e));
      bench::expect_equal(ours_mask, bench::to_mask(pix.get()),
                          p.name + " (Leptonica)");
      rl_apply(s.run_length, op.cv_op, e, &run_length);
      cv::Mat painted = cv::Mat::zeros(s.mask.size(), CV_8U);
      rl::paint(painted, run_length, cv::Scalar(255));
      bench::expect_equal(ours_mask, painted, p.name + " (run-length)");
      const auto medians = bench::time_in_turns(
          {[&] { op.ours(s.runs, e.runs, &ours); },
           [&] { cv_apply(s.mask, op.cv_op, e, &mask); },
           [&] { bench::Pix out(lept_apply(s.pix.get(), op, e)); },
           [&] { rl_apply(s.run_length, op.cv_op, e, &run_length); }},
          options.budget_ms);
      table.add(p, threads, medians,
                {"OpenCV", "Leptonica", "OpenCV run-length"}, goals);
    }
  }
}

void measure_boundary(const char* type, const Operation& op,
                      const bench::Options& options,
                      const std::vector<bench::Picture>& pictures,
                      const std::string& rows) {
  const std::string title = std::string(type) + " boundary";
  if (title.find(rows) == std::string::npos) return;
  const Element e = cross(3);
  bench::Table table(title, options);
  for (const bench::Picture& p : pictures) {
    const Source s = source_of(p, 0);
    cv::Mat mask;
    const auto cv_boundary = [&] {
      cv_apply(s.mask, op.cv_op, e, &mask);
      cv::bitwise_xor(mask, s.mask, mask);
    };
    const auto lept_boundary = [&] {
      bench::Pix out(lept_apply(s.pix.get(), op, e));
      pixXor(out.get(), out.get(), s.pix.get());
      return out;
    };
    for (const int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region ours;
      vexo::boundary(s.runs, &ours, type);
      cv_boundary();
      bench::expect_equal(drawn(ours, s.mask.size()), mask, p.name);
      bench::expect_equal(bench::to_mask(lept_boundary().get()), mask,
                          p.name + " (peers)");
      const auto medians =
          bench::time_in_turns({[&] { vexo::boundary(s.runs, &ours, type); },
                                cv_boundary, [&] { lept_boundary(); }},
                               options.budget_ms);
      table.add(p, threads, medians, {"OpenCV", "Leptonica"},
                {5, 1.5, 0.5, 0.4});
    }
  }
}

// Takes "--rows TEXT" out of the arguments.
std::string rows_asked_for(int* argc, char** argv) {
  for (int i = 1; i + 1 < *argc; ++i) {
    if (std::strcmp(argv[i], "--rows") != 0) continue;
    const std::string rows = argv[i + 1];
    std::copy(argv + i + 2, argv + *argc, argv + i);
    *argc -= 2;
    return rows;
  }
  return "";
}

}  // namespace

int main(int argc, char** argv) {
  const std::string rows = rows_asked_for(&argc, argv);
  const bench::Options options = bench::parse(argc, argv);
  const auto pictures = bench::pictures(options);
  const auto row = [&](const Operation& op, const Element& e,
                       const std::vector<double>& goals) {
    measure(op, e, goals, options, pictures, rows);
  };
  const Element disc10 = disc(10);
  for (const Operation& op : {kDilation, kErosion}) {
    row(op, disc(3), {3, 2, 1.2, 1});
    row(op, disc10, {4, 6, 6, 5});
    row(op, disc(30), {4, 8, 15, 20});
    row(op, square(3), {4, 1.2, 0.6, 0.4});
    row(op, square(15), {4, 2, 1.2, 1});
    row(op, square(51), {5, 4, 2, 1.5});
    row(op, cross(15), {4, 2, 1.2, 1});
  }
  for (const Operation& op : {kOpening, kClosing, kTopHat, kBottomHat})
    row(op, disc10, {4, 6, 6, 5});
  measure_boundary("inner", kErosion, options, pictures, rows);
  measure_boundary("outer", kDilation, options, pictures, rows);
}
