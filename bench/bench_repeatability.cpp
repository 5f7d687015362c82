// SPDX-License-Identifier: MIT
//
// bench_repeatability [FOLDER]
//
// Repeatability on frames of a real camera: scenes that stand still are
// measured in every frame by the calipers and by what the image library
// offers, and the spread of the results is printed. The frames come from
//
//   setup/sample_images.sh visp-images-data
//
// which prints the FOLDER (the default is where it unpacks to).
//
// A scene that stands still shows noise only, not what the pixel grid does to
// a method, for it does the same in every frame. For that, see the straight
// edge, where interleaved quarters of the points are compared, and how far the
// target's dots are from a plane grid.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "vexolab/vexolab.h"

namespace {

using Values = std::vector<double>;  // of one shape in one frame
using Frames = std::vector<cv::Mat>;

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "bench_repeatability: %s\n", what.c_str());
  std::exit(1);
}

Frames read_frames(const std::string& folder, int first, int last) {
  Frames frames;
  for (int i = first; i <= last; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "/image.%04d.pgm", i);
    frames.push_back(cv::imread(folder + name, cv::IMREAD_GRAYSCALE));
    if (frames.back().empty()) fail("cannot read " + folder + name);
  }
  return frames;
}

std::string default_folder() {
  const char* cache = std::getenv("XDG_CACHE_HOME");
  const char* home = std::getenv("HOME");
  return (cache && *cache ? std::string(cache)
                          : std::string(home ? home : "") + "/.cache") +
         "/rendal/images-visp-images-data";
}

// The folder of the frames within the package, wherever that puts it.
std::string find_images(const std::string& folder) {
  if (!std::filesystem::is_directory(folder)) {
    fail("no folder " + folder +
         "; run setup/sample_images.sh visp-images-data first");
  }
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_directory() && entry.path().filename() == "ellipse-1") {
      return entry.path().parent_path().string();
    }
  }
  fail("no frames below " + folder);
}

// ---- Spread -----------------------------------------------------------------

// Standard deviation of value k, from the differences of neighbouring frames:
// light and scene may drift over seconds.
double spread(const std::vector<Values>& frames, size_t k, double turn = 0) {
  double sum = 0;
  for (size_t i = 1; i < frames.size(); ++i) {
    double d = frames[i][k] - frames[i - 1][k];
    if (turn > 0) d = std::remainder(d, turn);
    sum += d * d;
  }
  return std::sqrt(sum / 2 / static_cast<double>(frames.size() - 1));
}

double together(double a, double b) { return std::sqrt((a * a + b * b) / 2); }

// ---- Peers ------------------------------------------------------------------

using Points = std::vector<cv::Point2f>;

// Edge pixels for which `near` holds.
Points canny_points(const cv::Mat& frame,
                    const std::function<bool(double, double)>& near) {
  cv::Mat edges;
  cv::Canny(frame, edges, 100, 200);
  Points result;
  for (int y = 2; y < edges.rows - 2; ++y) {
    for (int x = 2; x < edges.cols - 2; ++x) {
      if (edges.at<unsigned char>(y, x) && near(x, y)) {
        result.emplace_back(static_cast<float>(x), static_cast<float>(y));
      }
    }
  }
  return result;
}

cv::Mat binary(const cv::Mat& frame) {
  cv::Mat result;
  cv::threshold(frame, result, 0, 255, cv::THRESH_OTSU);
  return result;
}

std::vector<std::vector<cv::Point>> contours(const cv::Mat& frame) {
  std::vector<std::vector<cv::Point>> result;
  cv::findContours(binary(frame), result, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
  return result;
}

// ---- Ellipses ---------------------------------------------------------------

struct Ellipse {
  double cx, cy, angle, r1, r2;

  // Rough distance to the contour, along the ray from the centre.
  double beside(double x, double y) const {
    const double t = angle * CV_PI / 180;
    const double u = std::cos(t) * (x - cx) - std::sin(t) * (y - cy);
    const double v = std::sin(t) * (x - cx) + std::cos(t) * (y - cy);
    const double scale = std::hypot(u / r1, v / r2);
    return scale > 0 ? std::hypot(u, v) * (1 - 1 / scale) : r1;
  }
};

Ellipse from(const cv::RotatedRect& r) {
  Ellipse e{r.center.x, r.center.y, -r.angle, r.size.width / 2.0,
            r.size.height / 2.0};
  if (e.r1 < e.r2) {
    std::swap(e.r1, e.r2);
    e.angle += 90;
  }
  return e;
}

struct Caliper {
  double length, width;
  int count;     // of rectangles, 0: side by side
  float factor;  // of do_fit
};

Values measured_ellipse(const cv::Mat& frame, const Ellipse& drawn,
                        const Caliper& caliper) {
  float* rectangles = nullptr;
  double* points = nullptr;
  int count = 0, n = 0;
  const int a = gen_measure_ellipse(drawn.cx, drawn.cy, drawn.angle, drawn.r1,
                                    drawn.r2, caliper.length, caliper.width, 1,
                                    caliper.count, &rectangles, &count);
  const int b = do_measure(frame.data, frame.cols, frame.rows, 1, 40, "first-",
                           rectangles, count, &points, &n);
  Values v(5);
  const int code =
      do_fit(points, n, VEXOLAB_ELLIPSE, 0, caliper.factor, 20, 3, v.data());
  if (code != 0) fail(vexolab_error_text(code));
  clear_mems(a);
  clear_mems(b);
  return v;
}

Values canny_ellipse(const cv::Mat& frame, const Ellipse& drawn, double band) {
  const Ellipse e =
      from(cv::fitEllipse(canny_points(frame, [&](double x, double y) {
        return std::fabs(drawn.beside(x, y)) < band;
      })));
  return {e.cx, e.cy, e.angle, e.r1, e.r2};
}

// Centre and area radius of the contour around (cx, cy).
Values moments_ellipse(const cv::Mat& frame, const Ellipse& drawn) {
  for (const auto& contour : contours(frame)) {
    const cv::Moments m = cv::moments(contour);
    if (m.m00 < drawn.r1 * drawn.r2) continue;
    const double x = m.m10 / m.m00, y = m.m01 / m.m00;
    if (std::hypot(x - drawn.cx, y - drawn.cy) > 2) continue;
    const double r = std::sqrt(m.m00 / CV_PI);
    return {x, y, 0, r, r};
  }
  fail("no contour at a dot");
}

// ---- Lines ------------------------------------------------------------------

struct Segment {
  double x1, y1, x2, y2;
};

// Where the line crosses the middle of the drawn segment, across it, and its
// angle in degrees.
Values as_line(const Segment& s, double vx, double vy, double cx, double cy) {
  const double length = std::hypot(s.x2 - s.x1, s.y2 - s.y1);
  const double tx = (s.x2 - s.x1) / length, ty = (s.y2 - s.y1) / length;
  const double dx = (s.x1 + s.x2) / 2 - cx, dy = (s.y1 + s.y2) / 2 - cy;
  return {(vx * dy - vy * dx) / (vx * tx + vy * ty),
          std::atan((tx * vy - ty * vx) / (tx * vx + ty * vy)) * 180 / CV_PI};
}

// Every fourth point of `all`, from `first` on: x, then y.
std::vector<double> quarter(const std::vector<cv::Point2d>& all, size_t first) {
  std::vector<double> result;
  for (size_t i = first; i < all.size(); i += 4) result.push_back(all[i].x);
  for (size_t i = first; i < all.size(); i += 4) result.push_back(all[i].y);
  return result;
}

// From calipers so narrow that each quarter sees the edge all along, as with
// the peers' points: a real edge is not straight to a tenth of a pixel.
std::vector<cv::Point2d> measured_points(const cv::Mat& frame,
                                         const Segment& s) {
  float* rectangles = nullptr;
  double* points = nullptr;
  int count = 0, n = 0;
  const int a = gen_measure_line(s.x1, s.y1, s.x2, s.y2, 20, 2, 1, 0,
                                 &rectangles, &count);
  const int b = do_measure(frame.data, frame.cols, frame.rows, 1, 30,
                           "strongest", rectangles, count, &points, &n);
  std::vector<cv::Point2d> result;
  for (int i = 0; i < n; ++i) result.emplace_back(points[i], points[n + i]);
  clear_mems(a);
  clear_mems(b);
  return result;
}

// In order along the segment.
std::vector<cv::Point2d> canny_line_points(const cv::Mat& frame,
                                           const Segment& s) {
  const double length = std::hypot(s.x2 - s.x1, s.y2 - s.y1);
  const double tx = (s.x2 - s.x1) / length, ty = (s.y2 - s.y1) / length;
  const Points points = canny_points(frame, [&](double x, double y) {
    const double u = (x - s.x1) * tx + (y - s.y1) * ty;
    const double v = (y - s.y1) * tx - (x - s.x1) * ty;
    return u >= 0 && u <= length && std::fabs(v) < 10;
  });
  std::vector<cv::Point2d> result(points.begin(), points.end());
  std::sort(result.begin(), result.end(), [&](cv::Point2d a, cv::Point2d b) {
    return a.x * tx + a.y * ty < b.x * tx + b.y * ty;
  });
  return result;
}

Values do_fit_line(const std::vector<double>& points, const Segment& s) {
  double v[4];
  const int code = do_fit(points.data(), static_cast<int>(points.size() / 2),
                          VEXOLAB_LINE, 7, 2, 20, 2, v);
  if (code != 0) fail(vexolab_error_text(code));
  return as_line(s, v[0], v[1], v[2], v[3]);
}

Values peer_line(const std::vector<double>& points, const Segment& s,
                 int type) {
  const size_t n = points.size() / 2;
  Points list;
  for (size_t i = 0; i < n; ++i) {
    list.emplace_back(static_cast<float>(points[i]),
                      static_cast<float>(points[n + i]));
  }
  cv::Vec4f line;
  cv::fitLine(list, line, type, 0, 0.01, 0.01);
  return as_line(s, line[0], line[1], line[2], line[3]);
}

// ---- Scenes -----------------------------------------------------------------

template <typename Measure>
std::vector<Values> over(const Frames& frames, Measure measure) {
  std::vector<Values> result;
  for (const cv::Mat& frame : frames) result.push_back(measure(frame));
  return result;
}

void print_ellipse(const char* method, const std::vector<Values>& v) {
  std::printf("| %-36s | %.4f | %.4f | %.4f | %.5f |\n", method,
              together(spread(v, 0), spread(v, 1)), spread(v, 3), spread(v, 4),
              spread(v, 2, 180));
}

// A bright ellipse, cut by the border of the image.
void large_ellipse(const std::string& images) {
  const Frames frames = read_frames(images + "/ellipse-1", 1, 11);
  std::vector<cv::Point> largest;
  for (const auto& contour : contours(frames[0])) {
    if (contour.size() > largest.size()) largest = contour;
  }
  std::erase_if(largest, [&](const cv::Point& p) {
    return p.x < 3 || p.y < 3 || p.x > frames[0].cols - 4 ||
           p.y > frames[0].rows - 4;
  });
  const Ellipse drawn = from(cv::fitEllipse(largest));
  std::printf(
      "\nLarge ellipse (%.0f x %.0f px, cut by the border), %zu frames:"
      "\n\n| | centre, px | r1, px | r2, px | angle, deg |\n"
      "|---|---|---|---|---|\n",
      drawn.r1, drawn.r2, frames.size());
  for (const float factor : {2.0f, 3.0f, 0.0f}) {
    char name[40];
    std::snprintf(name, sizeof name, "calipers 16 x 6, do_fit factor %.0f",
                  factor);
    print_ellipse(name, over(frames, [&](const cv::Mat& f) {
                    return measured_ellipse(f, drawn, {16, 6, 0, factor});
                  }));
  }
  print_ellipse("Canny + fitEllipse", over(frames, [&](const cv::Mat& f) {
                  return canny_ellipse(f, drawn, 8);
                }));
}

// The dots of the calibration target in the first frame.
std::vector<Ellipse> find_dots(const cv::Mat& frame, const cv::Rect& target) {
  std::vector<Ellipse> dots;
  for (const auto& contour : contours(frame)) {
    const double area = cv::contourArea(contour);
    if (contour.size() < 6 || area < 12 || area > 200) continue;
    const Ellipse e = from(cv::fitEllipse(contour));
    if (!target.contains(cv::Point(cvRound(e.cx), cvRound(e.cy)))) continue;
    if (e.r2 > 0.6 * e.r1) dots.push_back(e);
  }
  return dots;
}

// A way to find a dot in a frame: centre in the first two values, axes in the
// last two.
struct DotMethod {
  const char* name;
  std::function<Values(const cv::Mat&, const Ellipse&)> run;
};

const DotMethod kDotMethods[] = {
    {"calipers 7 x 2, 24, do_fit factor 2",
     [](const cv::Mat& f, const Ellipse& dot) {
       return measured_ellipse(f, dot, {7, 2, 24, 2});
     }},
    {"findContours + moments", moments_ellipse},
    {"Canny + fitEllipse",
     [](const cv::Mat& f, const Ellipse& dot) {
       return canny_ellipse(f, dot, 3);
     }},
};

// How far the dots are from the nearest picture of a plane grid, per
// coordinate; the 8 parameters of that picture are taken into account.
double off_the_grid(const std::vector<cv::Point2d>& centres,
                    const std::vector<cv::Point2d>& grid) {
  const cv::Mat h = cv::findHomography(grid, centres, 0);
  std::vector<cv::Point2d> pictured;
  cv::perspectiveTransform(grid, pictured, h);
  double sum = 0;
  for (size_t i = 0; i < centres.size(); ++i) {
    sum += std::pow(cv::norm(centres[i] - pictured[i]), 2);
  }
  return std::sqrt(sum / (2.0 * static_cast<double>(centres.size()) - 8));
}

// Places on the grid of dots around a square, four to a side, of which the
// corners are roughly known.
std::vector<cv::Point2d> grid_of(const std::vector<Ellipse>& dots,
                                 const std::vector<cv::Point2d>& corners) {
  const std::vector<cv::Point2d> square{{0, 0}, {3, 0}, {3, 3}, {0, 3}};
  const cv::Mat h = cv::findHomography(corners, square, 0);
  std::vector<cv::Point2d> places, centres;
  for (const Ellipse& dot : dots) centres.emplace_back(dot.cx, dot.cy);
  cv::perspectiveTransform(centres, places, h);
  for (cv::Point2d& p : places) p = {std::round(p.x), std::round(p.y)};
  return places;
}

void dot_target(const std::string& images) {
  const Frames still = read_frames(images + "/cube", 1, 16);
  const std::vector<Ellipse> dots =
      find_dots(still[0], cv::Rect(185, 75, 65, 62));
  if (dots.size() != 12) fail("not the twelve dots of the target");
  const std::vector<cv::Point2d> grid =
      grid_of(dots, {{193, 87}, {240, 83}, {243, 128}, {196, 132}});
  std::printf(
      "\nTarget of %zu dots (radius %.1f px), %zu frames:\n\n"
      "| | centre, px | mean radius, px | off the grid, px |\n"
      "|---|---|---|---|\n",
      dots.size(), std::sqrt(dots[0].r1 * dots[0].r2), still.size());
  for (const DotMethod& method : kDotMethods) {
    double centre = 0, radius = 0, off = 0;
    std::vector<std::vector<cv::Point2d>> centres(still.size());
    for (const Ellipse& dot : dots) {
      std::vector<Values> v =
          over(still, [&](const cv::Mat& f) { return method.run(f, dot); });
      for (size_t i = 0; i < v.size(); ++i) {
        centres[i].emplace_back(v[i][0], v[i][1]);
        v[i].push_back(std::sqrt(v[i][3] * v[i][4]));
      }
      centre += std::pow(together(spread(v, 0), spread(v, 1)), 2);
      radius += std::pow(spread(v, 5), 2);
    }
    for (const auto& list : centres) {
      off += std::pow(off_the_grid(list, grid), 2);
    }
    std::printf("| %-36s | %.4f | %.4f | %.4f |\n", method.name,
                std::sqrt(centre / 12), std::sqrt(radius / 12),
                std::sqrt(off / static_cast<double>(still.size())));
  }
}

// Standard deviation of a fit to all points, from fits to the four interleaved
// quarters of them in every frame.
template <typename Find, typename Fit>
void print_line(const char* method, const Frames& frames, Find find, Fit fit) {
  double sum[2] = {0, 0};
  for (const cv::Mat& frame : frames) {
    const std::vector<cv::Point2d> points = find(frame);
    std::vector<Values> v;
    for (size_t k = 0; k < 4; ++k) v.push_back(fit(quarter(points, k)));
    for (size_t value = 0; value < 2; ++value) {
      double mean = 0;
      for (const Values& one : v) mean += one[value] / 4;
      for (const Values& one : v) {
        sum[value] += (one[value] - mean) * (one[value] - mean) / 3;
      }
    }
  }
  const double n = 4.0 * static_cast<double>(frames.size());
  std::printf("| %-36s | %.4f | %.5f |\n", method, std::sqrt(sum[0] / n),
              std::sqrt(sum[1] / n));
}

void straight_edge(const std::string& images) {
  const Frames frames = read_frames(images + "/line", 1, 5);
  const Segment s{129, 20, 300, 230};
  const auto calipers = [&](const cv::Mat& f) { return measured_points(f, s); };
  const auto canny = [&](const cv::Mat& f) { return canny_line_points(f, s); };
  std::printf(
      "\nStraight edge (270 px), %zu frames:\n\n"
      "| | offset, px | angle, deg |\n|---|---|---|\n",
      frames.size());
  using List = std::vector<double>;
  print_line("calipers 20 x 2, do_fit factor 2", frames, calipers,
             [&](const List& p) { return do_fit_line(p, s); });
  print_line("Canny + fitLine, least squares", frames, canny,
             [&](const List& p) { return peer_line(p, s, cv::DIST_L2); });
  print_line("Canny + fitLine, Huber", frames, canny,
             [&](const List& p) { return peer_line(p, s, cv::DIST_HUBER); });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) {
    std::fprintf(stderr, "usage: %s [FOLDER]\n", argv[0]);
    return 2;
  }
  const std::string images = find_images(argc > 1 ? argv[1] : default_folder());
  large_ellipse(images);
  dot_target(images);
  straight_edge(images);
}
