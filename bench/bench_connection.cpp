// SPDX-License-Identifier: MIT
//
// Components with every feature, against the peers' components with area,
// bounding box and centroid: from the runs (from the peers' own binary forms),
// and from the grey image ("blobs").
#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "bench/bench.h"
#include "region/operations.h"

namespace {

constexpr int kNeighbourhood = 1;
constexpr int kConnectivity = 8;

// min row, min col, max row, max col, area, centre col, centre row
using Blob = std::array<double, 7>;

std::vector<Blob> sorted(std::vector<Blob> blobs) {
  std::sort(blobs.begin(), blobs.end());
  return blobs;
}

std::vector<Blob> blobs_of(const vexo::region& r) {
  std::vector<Blob> blobs;
  for (int k = 0; k < r.child_count; ++k) {
    const vexo::region& c = *r.children[k];
    blobs.push_back({double(c.bbox[0]), double(c.bbox[1]), double(c.bbox[2]),
                     double(c.bbox[3]), double(c.area), c.center_col(),
                     c.center_row()});
  }
  return sorted(std::move(blobs));
}

std::vector<Blob> blobs_of(const cv::Mat& stats, const cv::Mat& centroids) {
  std::vector<Blob> blobs;
  for (int k = 1; k < stats.rows; ++k) {
    const int* s = stats.ptr<int>(k);
    const double* c = centroids.ptr<double>(k);
    const int left = s[cv::CC_STAT_LEFT], top = s[cv::CC_STAT_TOP];
    blobs.push_back({double(top), double(left),
                     double(top + s[cv::CC_STAT_HEIGHT] - 1),
                     double(left + s[cv::CC_STAT_WIDTH] - 1),
                     double(s[cv::CC_STAT_AREA]), c[0], c[1]});
  }
  return sorted(std::move(blobs));
}

void expect_same_blobs(const std::vector<Blob>& ours,
                       const std::vector<Blob>& peers,
                       const std::string& what) {
  if (ours.size() != peers.size()) bench::fail(what + ": counts differ");
  for (size_t i = 0; i < ours.size(); ++i) {
    for (size_t k = 0; k < ours[i].size(); ++k) {
      if (std::abs(ours[i][k] - peers[i][k]) > 1e-6) {
        bench::fail(what + ": a component differs");
      }
    }
  }
}

struct CvLabels {
  cv::Mat labels, stats, centroids;
  void run(const cv::Mat& mask) {
    cv::connectedComponentsWithStats(mask, labels, stats, centroids,
                                     kConnectivity, CV_32S, cv::CCL_SPAGHETTI);
  }
};

// Leptonica's components with areas and centroids; the boxes come along.
int lept_components(PIX* binary) {
  PIXA* parts = nullptr;
  BOXA* boxes = pixConnComp(binary, &parts, kConnectivity);
  NUMA* areas = pixaCountPixels(parts);
  PTA* centres = pixaCentroids(parts);
  const int n = boxaGetCount(boxes);
  ptaDestroy(&centres);
  numaDestroy(&areas);
  boxaDestroy(&boxes);
  pixaDestroy(&parts);
  return n;
}

// Leptonica's fastest way from grey to a band.
bench::Pix lept_band(PIX* gray, int min, int max) {
  if (min <= 0) return bench::Pix(pixThresholdToBinary(gray, max + 1));
  if (max >= 255) {
    bench::Pix below(pixThresholdToBinary(gray, min));
    pixInvert(below.get(), below.get());
    return below;
  }
  return bench::Pix(pixGenerateMaskByBand(gray, min, max, 1, 0));
}

using Connect = int (*)(vexo::region&, vexo::region*, int);

int connect_runs(vexo::region& input, vexo::region* result, int n) {
  return vexo::connection_y(input, result, n);
}

void measure_components(const char* title, Connect connect,
                        const bench::Options& options,
                        const std::vector<bench::Picture>& pictures) {
  bench::Table table(title);
  for (const bench::Picture& p : pictures) {
    cv::Mat gray = p.gray.clone();
    const cv::Mat mask = bench::mask_of(p);
    const bench::Pix pix = bench::to_binary_pix(mask);
    vexo::region input;
    vexo::threshold_y(gray.data, gray.cols, gray.rows, p.min, p.max, &input);
    input.to_3();
    CvLabels cv_labels;
    for (int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region checked;
      const int n = connect(input, &checked, kNeighbourhood);
      cv_labels.run(mask);
      expect_same_blobs(blobs_of(checked),
                        blobs_of(cv_labels.stats, cv_labels.centroids), p.name);
      if (lept_components(pix.get()) != n) bench::fail("Leptonica's count");
      const auto medians = bench::time_in_turns(
          {[&] {
             vexo::region result;
             connect(input, &result, kNeighbourhood);
           },
           [&] { cv_labels.run(mask); }, [&] { lept_components(pix.get()); }},
          options.budget_ms);
      table.add(p, threads, medians, {"OpenCV", "Leptonica"}, {25, 8, 4, 3});
    }
  }
}

void measure_blobs(const bench::Options& options,
                   const std::vector<bench::Picture>& pictures) {
  bench::Table table("blobs: threshold_y, connection_y");
  for (const bench::Picture& p : pictures) {
    cv::Mat gray = p.gray.clone(), mask;
    const bench::Pix pix = bench::to_gray_pix(gray);
    CvLabels cv_labels;
    const auto run_ours = [&](vexo::region* result) {
      vexo::region runs;
      vexo::threshold_y(gray.data, gray.cols, gray.rows, p.min, p.max, &runs);
      return vexo::connection_y(runs, result, kNeighbourhood);
    };
    const auto run_cv = [&] {
      cv::inRange(gray, p.min, p.max, mask);
      cv_labels.run(mask);
    };
    const auto run_lept = [&] {
      return lept_components(lept_band(pix.get(), p.min, p.max).get());
    };
    for (int threads : options.threads) {
      bench::use_threads(threads);
      vexo::region checked;
      const int n = run_ours(&checked);
      run_cv();
      expect_same_blobs(blobs_of(checked),
                        blobs_of(cv_labels.stats, cv_labels.centroids), p.name);
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
