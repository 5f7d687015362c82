// SPDX-License-Identifier: MIT
//
// The peers' ways to components and to filled holes, each in its own form, and
// the comparison of their components with ours.
#ifndef RENDAL_BENCH_PEERS_H_
#define RENDAL_BENCH_PEERS_H_

#include <memory>
#include <opencv2/core.hpp>
#include <string>

#include "bench/bench.h"
#include "region/region.h"

namespace bench {

constexpr int kNeighbourhood = 1;
constexpr int kConnectivity = 8;

// OpenCV's labels with area, box and centroid, by its fastest algorithm.
struct CvLabels {
  cv::Mat labels, stats, centroids;
  void run(const cv::Mat& mask);
};

// Exits with 1 unless areas, boxes and centres are the same.
void expect_same_components(const vexo::region& ours, const CvLabels& peer,
                            const std::string& what);

// Leptonica's components with areas and centroids; the boxes come along.
// Returns their number.
int lept_components(PIX* binary);

// Leptonica's fastest way from grey to a band.
Pix lept_band(PIX* gray, int min, int max);

// Floods the background from a border of one pixel and inverts what is reached.
void cv_fill(const cv::Mat& mask, cv::Mat* padded, cv::Mat* filled);

Pix lept_fill(PIX* binary);

// A structuring element around its middle (odd sizes), as the peers take it.
cv::Mat mask_of_element(const vexo::region& element);
struct SelDestroyer {
  void operator()(SEL* sel) const { selDestroy(&sel); }
};
using Sel = std::unique_ptr<SEL, SelDestroyer>;
Sel sel_of_element(const cv::Mat& mask);

}  // namespace bench

#endif  // RENDAL_BENCH_PEERS_H_
