// SPDX-License-Identifier: MIT
#include "bench/peers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace bench {

namespace {

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

std::vector<Blob> blobs_of(const CvLabels& labels) {
  std::vector<Blob> blobs;
  for (int k = 1; k < labels.stats.rows; ++k) {
    const int* s = labels.stats.ptr<int>(k);
    const double* c = labels.centroids.ptr<double>(k);
    const int left = s[cv::CC_STAT_LEFT], top = s[cv::CC_STAT_TOP];
    blobs.push_back({double(top), double(left),
                     double(top + s[cv::CC_STAT_HEIGHT] - 1),
                     double(left + s[cv::CC_STAT_WIDTH] - 1),
                     double(s[cv::CC_STAT_AREA]), c[0], c[1]});
  }
  return sorted(std::move(blobs));
}

}  // namespace

void CvLabels::run(const cv::Mat& mask) {
  cv::connectedComponentsWithStats(mask, labels, stats, centroids,
                                   kConnectivity, CV_32S, cv::CCL_SPAGHETTI);
}

void expect_same_components(const vexo::region& ours, const CvLabels& peer,
                            const std::string& what) {
  const auto our_blobs = blobs_of(ours), peer_blobs = blobs_of(peer);
  if (our_blobs.size() != peer_blobs.size()) fail(what + ": counts differ");
  for (size_t i = 0; i < our_blobs.size(); ++i) {
    for (size_t k = 0; k < our_blobs[i].size(); ++k) {
      if (std::abs(our_blobs[i][k] - peer_blobs[i][k]) > 1e-6) {
        fail(what + ": a component differs");
      }
    }
  }
}

int lept_components(PIX* binary) {
  PIXA* parts = nullptr;
  BOXA* boxes = pixConnComp(binary, &parts, kConnectivity);
  const int n = boxaGetCount(boxes);
  if (n > 0) {
    NUMA* areas = pixaCountPixels(parts);
    PTA* centres = pixaCentroids(parts);
    ptaDestroy(&centres);
    numaDestroy(&areas);
  }
  boxaDestroy(&boxes);
  pixaDestroy(&parts);
  return n;
}

Pix lept_band(PIX* gray, int min, int max) {
  if (min <= 0) return Pix(pixThresholdToBinary(gray, max + 1));
  if (max >= 255) {
    Pix below(pixThresholdToBinary(gray, min));
    pixInvert(below.get(), below.get());
    return below;
  }
  return Pix(pixGenerateMaskByBand(gray, min, max, 1, 0));
}

void cv_fill(const cv::Mat& mask, cv::Mat* padded, cv::Mat* filled) {
  cv::copyMakeBorder(mask, *padded, 1, 1, 1, 1, cv::BORDER_CONSTANT, 0);
  cv::floodFill(*padded, cv::Point(0, 0), 128, nullptr, 0, 0, 4);
  cv::compare((*padded)(cv::Rect(1, 1, mask.cols, mask.rows)), 128, *filled,
              cv::CMP_NE);
}

Pix lept_fill(PIX* binary) {
  Pix holes(pixHolesByFilling(binary, 4));
  pixOr(holes.get(), holes.get(), binary);
  return holes;
}

cv::Mat mask_of_element(const vexo::region& element) {
  const int top = element.rows[0];
  const int left = *std::min_element(element.col_begins,
                                     element.col_begins + element.run_count);
  const int right =
      *std::max_element(element.col_ends, element.col_ends + element.run_count);
  const int bottom = element.rows[element.run_count - 1];
  cv::Mat mask = cv::Mat::zeros(bottom - top + 1, right - left + 1, CV_8U);
  for (size_t i = 0; i < element.run_count; ++i) {
    mask.row(element.rows[i] - top)
        .colRange(element.col_begins[i] - left, element.col_ends[i] - left + 1)
        .setTo(1);
  }
  return mask;
}

Sel sel_of_element(const cv::Mat& mask) {
  Sel sel(selCreate(mask.rows, mask.cols, nullptr));
  selSetOrigin(sel.get(), mask.rows / 2, mask.cols / 2);
  for (int r = 0; r < mask.rows; ++r) {
    for (int c = 0; c < mask.cols; ++c) {
      if (mask.at<uchar>(r, c) != 0) selSetElement(sel.get(), r, c, SEL_HIT);
    }
  }
  return sel;
}

}  // namespace bench
