// SPDX-License-Identifier: MIT
//
// Draws the images of this folder: parts under a back light, coins, a gauge and
// printed text, with uneven light, blur and camera noise. Seeded, so that every
// run makes the same images.
//
//   make_samples FOLDER
#include <cmath>
#include <cstdio>
#include <numbers>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

namespace {

constexpr double kPi = std::numbers::pi;
// Shapes are drawn this much larger and shrunk, for smooth edges.
constexpr int kOversampling = 4;

cv::Mat Canvas(int width, int height, int grey) {
  return cv::Mat(height * kOversampling, width * kOversampling, CV_8U,
                 cv::Scalar(grey));
}

cv::Point At(double x, double y) {
  return {cvRound(x * kOversampling), cvRound(y * kOversampling)};
}

int Length(double pixels) { return cvRound(pixels * kOversampling); }

void Disc(cv::Mat& canvas, double x, double y, double radius, int grey) {
  cv::circle(canvas, At(x, y), Length(radius), cv::Scalar(grey), cv::FILLED);
}

void Ring(cv::Mat& canvas, double x, double y, double radius, double width,
          int grey) {
  cv::circle(canvas, At(x, y), Length(radius), cv::Scalar(grey), Length(width));
}

void Stroke(cv::Mat& canvas, double x, double y, double x2, double y2,
            double width, int grey) {
  cv::line(canvas, At(x, y), At(x2, y2), cv::Scalar(grey), Length(width));
}

// What a camera makes of it: light that falls off towards a corner, the lens's
// blur, and noise.
cv::Mat Photograph(const cv::Mat& canvas, double falloff, double blur,
                   double noise, uint64_t seed) {
  cv::Mat image;
  cv::resize(canvas, image, {}, 1.0 / kOversampling, 1.0 / kOversampling,
             cv::INTER_AREA);
  image.convertTo(image, CV_32F);
  for (int r = 0; r < image.rows; ++r) {
    for (int c = 0; c < image.cols; ++c) {
      image.at<float>(r, c) *=
          static_cast<float>(1 - falloff *
                                     (static_cast<double>(r) / image.rows +
                                      static_cast<double>(c) / image.cols) /
                                     2);
    }
  }
  cv::GaussianBlur(image, image, {}, blur);
  cv::RNG random(seed);
  cv::Mat grain(image.size(), CV_32F);
  random.fill(grain, cv::RNG::NORMAL, 0, noise);
  image += grain;
  image.convertTo(image, CV_8U);
  return image;
}

// A gear with `teeth` teeth and a bore.
void Gear(cv::Mat& canvas, double x, double y, double radius, int teeth,
          double turn, int grey, int background) {
  std::vector<cv::Point> outline;
  for (int i = 0; i < teeth * 4; ++i) {
    const double t = turn + 2 * kPi * (i + 0.5 * (i % 2)) / (teeth * 4);
    const double r = i % 4 < 2 ? radius : radius * 0.86;
    outline.push_back(At(x + r * std::cos(t), y + r * std::sin(t)));
  }
  cv::fillPoly(canvas, std::vector<std::vector<cv::Point>>{outline},
               cv::Scalar(grey));
  Disc(canvas, x, y, radius * 0.3, background);
}

// Dark parts on a bright back light.
cv::Mat Parts() {
  constexpr int kLight = 225;
  constexpr int kPart = 45;
  cv::Mat canvas = Canvas(640, 480, kLight);
  Gear(canvas, 150, 140, 95, 18, 0.1, kPart, kLight);
  Gear(canvas, 330, 100, 60, 12, 0.3, kPart, kLight);
  for (int i = 0; i < 3; ++i) {
    const double x = 450 + 70 * i;
    const double y = 90 + 30 * i;
    Disc(canvas, x, y, 27, kPart);
    Disc(canvas, x, y, 14, kLight);
  }
  // A bracket with three bores.
  const std::vector<cv::Point> bracket = {At(70, 290),  At(330, 290),
                                          At(330, 345), At(135, 345),
                                          At(135, 440), At(70, 440)};
  cv::fillPoly(canvas, std::vector<std::vector<cv::Point>>{bracket},
               cv::Scalar(kPart));
  Disc(canvas, 102, 410, 14, kLight);
  Disc(canvas, 102, 318, 14, kLight);
  Disc(canvas, 290, 318, 16, kLight);
  // Pins.
  for (int i = 0; i < 4; ++i) {
    Stroke(canvas, 400 + 50 * i, 290 + 8 * i, 430 + 50 * i, 425 - 5 * i, 14,
           kPart);
  }
  return Photograph(canvas, 0.12, 0.9, 2.5, 1);
}

// Bright coins with rims and relief on dark cloth.
cv::Mat Coins() {
  cv::Mat canvas = Canvas(600, 450, 58);
  cv::RNG random(5);
  const double radii[] = {46, 38, 42, 34};
  for (int i = 0; i < 20; ++i) {
    const double x = 70 + 115 * (i % 5) + random.uniform(-8.0, 8.0);
    const double y = 62 + 108 * (i / 5) + random.uniform(-6.0, 6.0);
    const double radius = radii[(i * 7 + i / 5) % 4];
    const int grey = random.uniform(150, 200);
    Disc(canvas, x, y, radius, grey);
    Ring(canvas, x, y, radius - 4, 2.5, grey - 35);
    Ring(canvas, x - 1, y - 1, radius - 1.5, 1.5, grey + 35);
    // A head in relief, and its shadow.
    Disc(canvas, x + 2, y - 2, radius * 0.36, grey - 28);
    Disc(canvas, x, y - 4, radius * 0.34, grey + 22);
    cv::ellipse(canvas, At(x, y + radius * 0.5),
                {Length(radius * 0.42), Length(radius * 0.22)}, 0, 180, 360,
                cv::Scalar(grey + 18), cv::FILLED);
  }
  return Photograph(canvas, 0.25, 1.1, 4, 2);
}

// A pressure gauge: scale, figures and needle.
cv::Mat Gauge() {
  cv::Mat canvas = Canvas(480, 480, 120);
  Disc(canvas, 240, 240, 215, 40);
  Disc(canvas, 240, 240, 200, 235);
  for (int i = 0; i <= 50; ++i) {
    const double t = (135 + 270.0 * i / 50) / 180 * kPi;
    const bool major = i % 10 == 0;
    const double from = major ? 152 : 166;
    Stroke(canvas, 240 + from * std::cos(t), 240 + from * std::sin(t),
           240 + 182 * std::cos(t), 240 + 182 * std::sin(t), major ? 4 : 1.8,
           25);
    if (!major) continue;
    const std::string figure = std::to_string(i / 5);
    const double shift = figure.size() * 8;
    cv::putText(
        canvas, figure,
        At(240 + 125 * std::cos(t) - shift, 240 + 125 * std::sin(t) + 10),
        cv::FONT_HERSHEY_SIMPLEX, 0.8 * kOversampling, cv::Scalar(25),
        Length(2), cv::LINE_AA);
  }
  const double t = (135 + 270 * 0.63) / 180 * kPi;
  Stroke(canvas, 240 - 40 * std::cos(t), 240 - 40 * std::sin(t),
         240 + 158 * std::cos(t), 240 + 158 * std::sin(t), 5, 15);
  Disc(canvas, 240, 240, 14, 15);
  Disc(canvas, 240, 240, 4, 160);
  return Photograph(canvas, 0.15, 0.8, 2.5, 3);
}

// A label in several sizes, slightly turned.
cv::Mat Text() {
  cv::Mat canvas = Canvas(600, 320, 228);
  const char* const lines[] = {"LOT 47-1138 B", "2026-11-21  08:45",
                               "TORQUE 12.5 Nm +/- 0.3",
                               "check: 9 Q 4 7 R X 2"};
  const double sizes[] = {1.6, 1.2, 0.9, 0.75};
  for (int i = 0; i < 4; ++i) {
    cv::putText(canvas, lines[i], At(45, 78 + 66 * i), cv::FONT_HERSHEY_DUPLEX,
                sizes[i] * kOversampling, cv::Scalar(35), Length(2.2),
                cv::LINE_AA);
  }
  const cv::Mat turn = cv::getRotationMatrix2D(
      cv::Point2f(canvas.cols / 2.0f, canvas.rows / 2.0f), 2.5, 1);
  cv::warpAffine(canvas, canvas, turn, canvas.size(), cv::INTER_LINEAR,
                 cv::BORDER_REPLICATE);
  return Photograph(canvas, 0.35, 0.8, 3, 4);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_samples FOLDER\n");
    return 2;
  }
  const struct {
    const char* name;
    cv::Mat (*draw)();
  } samples[] = {{"parts.png", Parts},
                 {"coins.png", Coins},
                 {"gauge.png", Gauge},
                 {"text.png", Text}};
  for (const auto& sample : samples) {
    const std::string path = std::string(argv[1]) + "/" + sample.name;
    if (!cv::imwrite(path, sample.draw(), {cv::IMWRITE_PNG_COMPRESSION, 9})) {
      std::fprintf(stderr, "make_samples: cannot write %s\n", path.c_str());
      return 1;
    }
  }
}
