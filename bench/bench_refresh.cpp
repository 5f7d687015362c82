// SPDX-License-Identifier: MIT
//
// Time of one refresh of the image view at the main dialog's view size, for a
// 20-megapixel image without an overlay and under 200,000 overlay runs, at
// zooms from far out to far in. Every picture is compared once with the plain
// rule, pixel by pixel, before it is timed.
//
//   bench_refresh        prints refresh/<overlay>/<zoom>: median, MAD [ms] and
//                        the view's Mpx/s; the goals stand in the last column.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "app/view/view_painter.h"

namespace {

using namespace rendal;
using Clock = std::chrono::steady_clock;

constexpr int kViewWidth = 1026;
constexpr int kViewHeight = 817;
constexpr int kImageWidth = 5472;
constexpr int kImageHeight = 3648;
constexpr int kOverlayRuns = 200'000;
constexpr int kRepeats = 41;

struct Scene {
  std::string name;
  double goal_ms;
  Workbench bench;
};

// Components of ten rows each, scattered, painted in palette colours.
std::vector<OverlayItem> ScatteredComponents(int runs) {
  std::mt19937 random(3);
  std::vector<OverlayItem> items(runs / 10);
  for (size_t i = 0; i < items.size(); ++i) {
    const auto& rgb = PaletteColor(i);
    items[i].color[0] = rgb[2];
    items[i].color[1] = rgb[1];
    items[i].color[2] = rgb[0];
    const int row = static_cast<int>(random() % (kImageHeight - 10));
    const int column = static_cast<int>(random() % (kImageWidth - 20));
    for (int k = 0; k < 10; ++k) {
      items[i].chords.push_back({column, column + 8 + k, row + k, 0});
    }
  }
  return items;
}

// All runs within `rows` rows around the image's middle.
std::vector<OverlayItem> CrowdedRows(int runs, int rows) {
  std::vector<OverlayItem> items(1);
  items[0].color[2] = 255;
  const int per_row = runs / rows;
  const double pitch = static_cast<double>(kImageWidth) / per_row;
  for (int r = 0; r < rows; ++r) {
    for (int k = 0; k < per_row; ++k) {
      const int begin = static_cast<int>(k * pitch);
      items[0].chords.push_back({begin, begin + static_cast<int>(pitch / 2),
                                 kImageHeight / 2 - rows / 2 + r, 0});
    }
  }
  return items;
}

std::vector<Scene> Scenes() {
  cv::Mat image(kImageHeight, kImageWidth, CV_8U);
  cv::randu(image, 0, 256);
  std::vector<Scene> scenes(4);
  scenes[0].name = "image";
  scenes[0].goal_ms = 3;
  scenes[1].name = "components_200k";
  scenes[1].bench.m_regionOverlay.Replace(ScatteredComponents(kOverlayRuns));
  scenes[2].name = "crowded_817_rows_200k";
  scenes[2].bench.m_regionOverlay.Replace(CrowdedRows(kOverlayRuns, 817));
  scenes[3].name = "crowded_100_rows_200k";
  scenes[3].bench.m_regionOverlay.Replace(CrowdedRows(kOverlayRuns, 100));
  for (size_t i = 1; i < scenes.size(); ++i) scenes[i].goal_ms = 8;
  for (Scene& scene : scenes) scene.bench.m_srcImage = image;
  return scenes;
}

ViewState ViewAt(float zoom) {
  ViewState view;
  view.viewWidth = kViewWidth;
  view.viewHeight = kViewHeight;
  view.zoom = zoom;
  view.offsetX = std::trunc((kViewWidth - kImageWidth * zoom) / 2);
  view.offsetY = std::trunc((kViewHeight - kImageHeight * zoom) / 2);
  return view;
}

// The rule itself, by a raster of the whole overlay.
bool FollowsTheRule(const Workbench& bench, const ViewState& view,
                    const cv::Mat& picture) {
  cv::Mat full;
  cv::merge(std::vector<cv::Mat>(3, bench.m_srcImage), full);
  for (const OverlayItem& item : bench.m_regionOverlay) {
    for (const vexo::chord& c : item.chords) {
      full.row(c.row).colRange(c.col_begin, c.col_end + 1) =
          cv::Scalar(item.color[0], item.color[1], item.color[2]);
    }
  }
  for (int v = 0; v < kViewHeight; ++v) {
    for (int u = 0; u < kViewWidth; ++u) {
      const int c =
          static_cast<int>(std::round((u - view.offsetX) / view.zoom));
      const int r =
          static_cast<int>(std::round((v - view.offsetY) / view.zoom));
      const bool in = c >= 0 && c < full.cols && r >= 0 && r < full.rows;
      if (picture.at<cv::Vec3b>(v, u) !=
          (in ? full.at<cv::Vec3b>(r, c) : cv::Vec3b())) {
        return false;
      }
    }
  }
  return true;
}

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + values.size() / 2,
                   values.end());
  return values[values.size() / 2];
}

void Measure(Scene& scene, float zoom) {
  const ViewState view = ViewAt(zoom);
  cv::Mat picture;
  scene.bench.RequestRedraw();
  RefreshView(scene.bench, view, &picture);
  if (!FollowsTheRule(scene.bench, view, picture)) {
    std::printf("refresh/%s/%g: WRONG PICTURE\n", scene.name.c_str(), zoom);
    std::exit(1);
  }
  std::vector<double> times;
  for (int i = 0; i < kRepeats; ++i) {
    scene.bench.RequestRedraw();
    const auto start = Clock::now();
    RefreshView(scene.bench, view, &picture);
    times.push_back(
        std::chrono::duration<double, std::milli>(Clock::now() - start)
            .count());
  }
  const double median = Median(times);
  for (double& t : times) t = std::abs(t - median);
  std::printf("%-40s %7.3f ms  MAD %6.3f  %8.1f Mpx/s  goal %g\n",
              ("refresh/" + scene.name + "/" + std::to_string(zoom)).c_str(),
              median, Median(times), kViewWidth * kViewHeight / median / 1e3,
              scene.goal_ms);
}

}  // namespace

int main() {
  for (Scene& scene : Scenes()) {
    for (const float zoom :
         {0.09375f, 0.1875f, 0.35f, 0.75f, 1.0f, 2.5f, 16.0f, 128.0f}) {
      Measure(scene, zoom);
    }
  }
}
