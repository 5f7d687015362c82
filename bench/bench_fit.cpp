// SPDX-License-Identifier: MIT
//
// bench_fit [--seed N] [--trials N]
//
// Fits to simulated points beside the image library's: accuracy with outliers
// as a multiple of the best possible (least squares on the good points alone),
// then microseconds a call, turn by turn in one run.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "tests/vexolab/fit_points.h"
#include "tests/vexolab/spoilt_points.h"
#include "vexolab/vexolab.h"

namespace {

using namespace spoilt_points;
using fit_points::packed;

using Cloud = std::vector<cv::Point2f>;

// One way to fit a shape: writes what do_fit() would.
struct Method {
  const char* name;
  std::function<void(const std::vector<double>&, const Cloud&, double*)> run;
};

Method ours(const char* name, int shape, int method, float factor) {
  return {name, [=](const std::vector<double>& p, const Cloud&, double* v) {
            do_fit(p.data(), static_cast<int>(p.size() / 2), shape, method,
                   factor, 20, 2, v);
          }};
}

Method peer_line(const char* name, int type) {
  return {name, [=](const std::vector<double>&, const Cloud& p, double* v) {
            cv::Vec4f line;
            cv::fitLine(p, line, type, 0, 0.01, 0.01);
            std::copy(line.val, line.val + 4, v);
          }};
}

Method peer_ellipse(const char* name, cv::RotatedRect (*fit)(cv::InputArray)) {
  return {name, [=](const std::vector<double>&, const Cloud& p, double* v) {
            const cv::RotatedRect e = fit(p);
            const double values[] = {e.center.x, e.center.y, -e.angle,
                                     e.size.width / 2, e.size.height / 2};
            std::copy(values, values + 5, v);
          }};
}

std::vector<Method> methods_of(int shape) {
  if (shape == VEXOLAB_LINE) {
    return {ours("do_fit, factor 2", shape, 7, 2),
            ours("do_fit, factor 0", shape, 7, 0),
            peer_line("fitLine, least squares", cv::DIST_L2),
            peer_line("fitLine, Huber", cv::DIST_HUBER),
            peer_line("fitLine, Welsch", cv::DIST_WELSCH)};
  }
  if (shape == VEXOLAB_CIRCLE) {
    return {ours("do_fit, factor 2", shape, 7, 2),
            ours("do_fit, factor 0", shape, 7, 0)};
  }
  return {ours("do_fit, factor 2", shape, 0, 2),
          ours("do_fit, factor 0", shape, 0, 0),
          peer_ellipse("fitEllipse", cv::fitEllipse),
          peer_ellipse("fitEllipseDirect", cv::fitEllipseDirect)};
}

Cloud cloud(const points& p) {
  Cloud result;
  for (const point& q : p) {
    result.emplace_back(static_cast<float>(q.x), static_cast<float>(q.y));
  }
  return result;
}

constexpr int kShapes[] = {VEXOLAB_LINE, VEXOLAB_CIRCLE, VEXOLAB_ELLIPSE};
const char* const kNames[] = {"line, 40 points", "circle, 100 points",
                              "ellipse 80 x 45, 100 points"};
constexpr int kPoints[] = {40, 100, 100};

struct Case {
  const char* name;
  outliers kind;
  double fraction;
};

const Case kCases[] = {
    {"none", outliers::kAnywhere, 0},
    {"20 % anywhere", outliers::kAnywhere, 0.2},
    {"40 % anywhere", outliers::kAnywhere, 0.4},
    {"20 % in a blob", outliers::kBlob, 0.2},
    {"40 % in a blob", outliers::kBlob, 0.4},
    {"20 % on a parallel edge", outliers::kOtherEdge, 0.2},
    {"30 % on a parallel edge", outliers::kOtherEdge, 0.3},
    {"40 % on a parallel edge", outliers::kOtherEdge, 0.4},
    {"30 % on a straight edge", outliers::kStraight, 0.3},
    {"40 % on a straight edge", outliers::kStraight, 0.4},
};

struct Score {
  double squares = 0;
  int lost = 0;

  void add(double error) {
    // A fit that found nothing at all counts as 100 px off.
    const double bounded = error <= 100 ? error : 100;
    squares += bounded * bounded;
    lost += !(error <= 0.5);
  }
};

void print_case(int shape, const Case& c, const std::vector<Method>& methods,
                uint64_t seed, int trials) {
  synthetic::random r(seed);
  const int n = kPoints[shape];
  std::vector<Score> scores(methods.size());
  Score best;
  for (int trial = 0; trial < trials; ++trial) {
    const known_shape truth = any_shape(shape, &r);
    const spoilt p =
        spoil(truth, n, static_cast<int>(c.fraction * n + 0.5), c.kind, &r);
    double v[5] = {};
    const std::vector<double> inliers = packed(p.inliers);
    do_fit(inliers.data(), static_cast<int>(p.inliers.size()), shape, 7, 0, 0,
           2, v);
    best.add(error_of(truth, v));
    const std::vector<double> all = packed(p.all);
    const Cloud all_cloud = cloud(p.all);
    for (size_t i = 0; i < methods.size(); ++i) {
      std::fill(v, v + 5, 0.0);
      methods[i].run(all, all_cloud, v);
      scores[i].add(error_of(truth, v));
    }
  }
  std::printf("| %-23s |", c.name);
  for (const Score& score : scores) {
    std::printf(" %.2f (%.1f) |", std::sqrt(score.squares / best.squares),
                100.0 * score.lost / trials);
  }
  std::printf("\n");
}

void print_header(const char* first, const std::vector<Method>& methods) {
  std::printf("| %s |", first);
  for (const Method& method : methods) std::printf(" %s |", method.name);
  std::printf("\n|---|");
  for (size_t i = 0; i < methods.size(); ++i) std::printf("---|");
  std::printf("\n");
}

void print_accuracy(uint64_t seed, int trials) {
  std::printf(
      "Noise %.2f px; RMS error over that of least squares on the good "
      "points (trials off by more than 0.5 px, %%), %d trials:\n",
      kNoise, trials);
  for (const int shape : kShapes) {
    const std::vector<Method> methods = methods_of(shape);
    std::printf("\n%s:\n\n", kNames[shape]);
    print_header("outliers", methods);
    for (const Case& c : kCases) {
      print_case(shape, c, methods, ++seed, trials);
    }
  }
}

void print_time(int shape, int n, uint64_t seed) {
  constexpr int kRounds = 60, kLists = 20;
  synthetic::random r(seed);
  const std::vector<Method> methods = methods_of(shape);
  std::vector<std::vector<double>> lists;
  std::vector<Cloud> clouds;
  for (int i = 0; i < kLists; ++i) {
    const spoilt p =
        spoil(any_shape(shape, &r), n, n / 10, outliers::kBeside, &r);
    lists.push_back(packed(p.all));
    clouds.push_back(cloud(p.all));
  }
  std::vector<std::vector<double>> times(methods.size());
  for (int round = 0; round < kRounds; ++round) {
    for (size_t m = 0; m < methods.size(); ++m) {
      const auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < kLists; ++i) {
        double v[5];
        methods[m].run(lists[i], clouds[i], v);
      }
      const std::chrono::duration<double, std::micro> taken =
          std::chrono::steady_clock::now() - start;
      times[m].push_back(taken.count() / kLists);
    }
  }
  print_header("points", methods);
  std::printf("| %d |", n);
  for (std::vector<double>& list : times) {
    std::nth_element(list.begin(), list.begin() + kRounds / 2, list.end());
    std::printf(" %.1f |", list[kRounds / 2]);
  }
  std::printf("\n\n");
}

void print_times(uint64_t seed) {
  const char* const names[] = {"line", "circle", "ellipse"};
  std::printf("\nMicroseconds a call, median, one outlier in ten:\n");
  for (const int shape : kShapes) {
    std::printf("\n%s:\n\n", names[shape]);
    print_time(shape, shape == VEXOLAB_LINE ? 20 : 30, seed);
    print_time(shape, 100, seed);
    print_time(shape, 1000, seed);
  }
}

}  // namespace

int main(int argc, char** argv) {
  uint64_t seed = 1;
  int trials = 1000;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--seed") == 0 && i + 1 < argc) {
      seed = std::strtoull(argv[++i], nullptr, 10);
    } else if (std::strcmp(argv[i], "--trials") == 0 && i + 1 < argc) {
      trials = std::max(1, std::atoi(argv[++i]));
    } else {
      std::fprintf(stderr, "usage: %s [--seed N] [--trials N]\n", argv[0]);
      return 2;
    }
  }
  cv::setNumThreads(1);
  print_accuracy(seed * 1000, trials);
  print_times(seed);
}
