// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "pictures.h"
#include "random_regions.h"
#include "region/internal/vector_level.h"
#include "region/operations.h"

namespace {

using vexo::region;
using vexo_test::Picture;
using vexo_test::Random;
using vexo_test::Run;
using vexo_test::Runs;

constexpr double kPi = 3.141592653589793;

region with_features(const Runs& runs) {
  region r = vexo_test::region_of(runs);
  vexo::compute_features(&r);
  return r;
}

region with_features(const Picture& p) {
  return with_features(vexo_test::runs_in(p));
}

struct Pixel {
  double x, y;
};

std::vector<Pixel> pixels_of(const Runs& runs) {
  std::vector<Pixel> pixels;
  for (const Run& r : runs) {
    for (int c = r.begin; c <= r.end; ++c)
      pixels.push_back({double(c), double(r.row)});
  }
  return pixels;
}

std::vector<int> box_of(const region& r) {
  return {r.bbox[0], r.bbox[1], r.bbox[2], r.bbox[3]};
}

TEST(Features, SinglePixel) {
  const region r = with_features(Runs{{3, 7, 7}});
  EXPECT_EQ(r.area, 1);
  EXPECT_EQ(box_of(r), (std::vector<int>{3, 7, 3, 7}));
  EXPECT_EQ(r.center_col(), 7);
  EXPECT_EQ(r.center_row(), 3);
  EXPECT_EQ(r.circularity(), 0);
  for (int i = 2; i < 7; ++i) EXPECT_EQ(r.reals[i], 0) << i;
  EXPECT_EQ(r.reals[7], -1);
  EXPECT_EQ(r.more_reals[0], 0);
  EXPECT_EQ(r.more_reals[1], 0);
}

struct Pair {
  Runs runs;
  double angle, length, radius;
};

TEST(Features, TwoPixelsHaveFixedValues) {
  const Pair pairs[] = {{{{2, 4, 5}}, 0, 0.5, 1.0},
                        {{{2, 4, 4}, {3, 4, 4}}, -90, 0.5, 1.0},
                        {{{2, 4, 4}, {3, 5, 5}}, -45, 0.707107, 1.41421},
                        {{{2, 4, 4}, {3, 3, 3}}, 45, 0.707107, 1.41421}};
  for (const Pair& pair : pairs) {
    const region r = with_features(pair.runs);
    SCOPED_TRACE(pair.angle);
    EXPECT_EQ(r.area, 2);
    EXPECT_EQ(r.circularity(), 1.0);
    EXPECT_EQ(r.phi(), pair.angle);
    EXPECT_EQ(r.rect_angle(), pair.angle);
    EXPECT_EQ(r.rect_half_length1(), pair.length);
    EXPECT_EQ(r.rect_half_length2(), 0);
    EXPECT_EQ(r.ra(), pair.radius);
    EXPECT_EQ(r.rb(), 0);
    const auto pixels = pixels_of(pair.runs);
    EXPECT_EQ(r.center_col(), (pixels[0].x + pixels[1].x) / 2);
    EXPECT_EQ(r.center_row(), (pixels[0].y + pixels[1].y) / 2);
    EXPECT_EQ(r.reals[7], -1);
  }
}

TEST(Features, HorizontalRunOfFive) {
  const region r = with_features(Runs{{9, 10, 14}});
  EXPECT_EQ(r.phi(), 0);
  EXPECT_FALSE(std::signbit(r.phi()));
  EXPECT_EQ(r.rect_angle(), 0);
  EXPECT_NEAR(r.circularity(), 5 / (kPi * 4), 1e-15);
  EXPECT_EQ(r.rect_half_length1(), 2);
  EXPECT_EQ(r.rect_half_length2(), 0);
  EXPECT_EQ(r.rb(), 0);
}

TEST(Features, VerticalRunOfFive) {
  const region r = with_features(
      Runs{{0, 3, 3}, {1, 3, 3}, {2, 3, 3}, {3, 3, 3}, {4, 3, 3}});
  EXPECT_EQ(r.phi(), -90);
  EXPECT_EQ(r.rect_angle(), 90);
  EXPECT_EQ(r.rect_half_length1(), 2);
  EXPECT_EQ(r.rect_half_length2(), 0);
  EXPECT_EQ(r.rb(), 0);
}

TEST(Features, FilledSquareOfThree) {
  const region r = with_features(Picture{"###", "###", "###"});
  EXPECT_EQ(r.center_col(), 1);
  EXPECT_EQ(r.center_row(), 1);
  EXPECT_DOUBLE_EQ(r.ra(), 0.5 * std::sqrt(8 * 4.0 / 3));
  EXPECT_DOUBLE_EQ(r.rb(), 0.5 * std::sqrt(8 * 4.0 / 3));
  EXPECT_EQ(r.circularity(), 1.0);
  EXPECT_EQ(r.rect_half_length1(), 1);
  EXPECT_EQ(r.rect_half_length2(), 1);
}

TEST(Features, DiagonalHasNoSecondRadius) {
  const region r = with_features(Picture{"#...", ".#..", "..#.", "...#"});
  EXPECT_EQ(r.rb(), 0);
  EXPECT_EQ(r.phi(), -45);
  EXPECT_NEAR(r.rect_angle(), -45, 1e-12);
  EXPECT_NEAR(r.rect_half_length1(), 1.5 * std::sqrt(2), 1e-12);
  EXPECT_EQ(r.rect_half_length2(), 0);
}

TEST(Features, RisingToTheRightIsPositive) {
  Picture rising(20, std::string(20, '.'));
  for (int i = 0; i < 20; ++i) {
    for (int k = 0; k < 2; ++k) rising[i][(19 - i + k) % 20] = '#';
  }
  rising[0] = "..................##";
  const region r = with_features(rising);
  EXPECT_GT(r.phi(), 30);
  EXPECT_GT(r.rect_angle(), 30);
}

TEST(Features, SidesAreNotOrderedByLength) {
  const region tall =
      with_features(Runs{{0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {3, 0, 1}});
  EXPECT_EQ(tall.rect_half_length1(), 0.5);
  EXPECT_EQ(tall.rect_half_length2(), 1.5);
  EXPECT_EQ(tall.rect_angle(), 90);
}

TEST(Features, NothingHappensWithChildrenOrWithoutRuns) {
  region empty;
  vexo::compute_features(&empty);
  EXPECT_EQ(empty.area, -1);
  EXPECT_EQ(empty.reals[0], -1);
  region r = vexo_test::picture({"#.#"});
  ASSERT_EQ(vexo::connection(r, &r, 0), 2);
  vexo::compute_features(&r);
  EXPECT_EQ(r.area, -1);
  EXPECT_EQ(r.bbox[0], -1);
}

TEST(Features, RunsGoBeforeChords) {
  region r = vexo_test::region_of({{0, 0, 4}});
  r.chords[0].col_end = 9;
  vexo::compute_features(&r);
  EXPECT_EQ(r.area, 5);
  r.run_count = 0;
  vexo::compute_features(&r);
  EXPECT_EQ(r.area, 10);
}

TEST(Features, OrderOfRunsDoesNotMatter) {
  const Picture p{"..##..#", "#####..", ".##.###", "...##.."};
  Runs runs = vexo_test::runs_in(p);
  const region sorted = with_features(runs);
  std::reverse(runs.begin(), runs.end());
  std::swap(runs[0], runs[3]);
  const region shuffled = with_features(runs);
  // Before anything else the centre holds the first run; all is overwritten.
  for (int i = 0; i < 8; ++i)
    EXPECT_EQ(sorted.reals[i], shuffled.reals[i]) << i;
  EXPECT_EQ(sorted.circularity(), shuffled.circularity());
  EXPECT_EQ(sorted.rect_angle(), shuffled.rect_angle());
  EXPECT_EQ(box_of(sorted), box_of(shuffled));
}

TEST(Features, FarFromTheOriginNothingIsLost) {
  const Picture p{".##.", "####", "###.", ".#.."};
  const region near = with_features(p);
  for (int offset : {30000, 1000000000, -2000000000}) {
    Runs runs = vexo_test::runs_in(p);
    for (auto& run : runs) {
      run = {run.row + offset, run.begin + offset, run.end + offset};
    }
    const region far = with_features(runs);
    SCOPED_TRACE(offset);
    for (int i = 2; i < 7; ++i) EXPECT_EQ(near.reals[i], far.reals[i]) << i;
    EXPECT_EQ(near.rect_angle(), far.rect_angle());
    EXPECT_NEAR(near.circularity(), far.circularity(), 1e-6);
    EXPECT_NEAR(far.center_col() - offset, near.center_col(), 1e-6);
  }
}

// 2^32 pixels: a square of 65536, which no picture could hold.
TEST(Features, AreaBeyondItsFieldSaturatesAndTheRestStaysRight) {
  region r(65536);
  for (int i = 0; i < 65536; ++i) {
    r.rows[i] = i;
    r.col_begins[i] = 0;
    r.col_ends[i] = 65535;
  }
  r.run_count = 65536;
  vexo::compute_features(&r);
  EXPECT_EQ(r.area, 2147483647);
  EXPECT_EQ(r.center_col(), 32767.5);
  EXPECT_EQ(r.center_row(), 32767.5);
  const double variance = (65536.0 * 65536.0 - 1) / 12;
  EXPECT_NEAR(r.ra() / (0.5 * std::sqrt(16 * variance)), 1, 1e-9);
  EXPECT_NEAR(r.circularity(),
              65536.0 * 65536.0 / (kPi * 2 * 32767.5 * 32767.5), 1e-9);
  EXPECT_EQ(r.rect_half_length1(), 32767.5);
}

TEST(Features, WholeCoordinateRangeIsHandled) {
  const region r =
      with_features(Runs{{-2147483647 - 1, -2147483647 - 1, 2147483647},
                         {2147483647, -2147483647 - 1, 2147483647}});
  EXPECT_EQ(r.area, 2147483647);
  EXPECT_NEAR(r.center_col(), -0.5, 1e-3);
  EXPECT_NEAR(r.center_row(), -0.5, 1e-3);
  EXPECT_NEAR(r.rect_half_length1(), 2147483647.5, 1e-3);
  EXPECT_NEAR(r.rect_half_length2(), 2147483647.5, 1e-3);
}

// Few pixels so far apart that the sums of their squares need 66 bits.
TEST(Features, SumsBeyondWholeNumbersAreRight) {
  constexpr int kEnd = 2147483647;
  const region r = with_features(Runs{{-kEnd, -kEnd, -kEnd},
                                      {-kEnd, kEnd, kEnd},
                                      {kEnd, -kEnd, -kEnd},
                                      {kEnd, kEnd, kEnd}});
  EXPECT_EQ(r.center_col(), 0);
  EXPECT_EQ(r.center_row(), 0);
  EXPECT_NEAR(r.ra() / (2.0 * kEnd), 1, 1e-9);
  EXPECT_NEAR(r.rb() / (2.0 * kEnd), 1, 1e-9);
}

// Each side of an acute triangle carries a rectangle of twice its area.
TEST(Features, OfRectanglesOfTheSameAreaTheLeastTurnedIsTaken) {
  const region level = with_features(Runs{{0, 0, 4}, {3, 2, 2}});
  EXPECT_EQ(level.rect_angle(), 0);
  EXPECT_EQ(level.rect_half_length1(), 2);
  EXPECT_EQ(level.rect_half_length2(), 1.5);
  // Sides along (4, 1), (1, 4) and (1, -1): turned by 14, 76 and 45 degrees.
  const region turned = with_features(Runs{{0, 0, 0}, {1, 4, 4}, {4, 1, 1}});
  EXPECT_NEAR(turned.rect_angle(), -std::atan(0.25) * 180 / kPi, 1e-9);
  EXPECT_NEAR(turned.rect_half_length1(), std::sqrt(17) / 2, 1e-9);
  EXPECT_NEAR(turned.rect_half_length2(), 7.5 / std::sqrt(17), 1e-9);
}

// Moments pixel by pixel.
void expect_moments(const region& r, const std::vector<Pixel>& pixels) {
  const long double n = pixels.size();
  long double x = 0, y = 0, xx = 0, xy = 0, yy = 0, far2 = 0;
  for (const Pixel& p : pixels) x += p.x, y += p.y;
  x /= n;
  y /= n;
  for (const Pixel& p : pixels) {
    const long double dx = p.x - x, dy = p.y - y;
    xx += dx * dx / n;
    xy += dx * dy / n;
    yy += dy * dy / n;
    far2 = std::max(far2, dx * dx + dy * dy);
  }
  EXPECT_NEAR(r.center_col(), x, 1e-10);
  EXPECT_NEAR(r.center_row(), y, 1e-10);
  const long double q = std::sqrt((yy - xx) * (yy - xx) + 4 * xy * xy);
  EXPECT_NEAR(r.ra(), 0.5L * std::sqrt(8 * (xx + yy + q)), 1e-9);
  const long double rest = std::max(0.0L, xx + yy - q);
  EXPECT_NEAR(r.rb() * r.rb(), 2 * rest, 1e-9);
  EXPECT_NEAR(r.circularity(), std::min(1.0L, n / (kPi * far2)), 1e-9);
  if (q > 1e-6) {
    const double phi =
        static_cast<double>(std::atan2(2 * xy, xx - yy) * -0.5L * 180 / kPi);
    const double turn = std::abs(r.phi() - phi);
    EXPECT_NEAR(std::min(turn, std::abs(turn - 180)), 0, 1e-9);
  }
}

struct Extents {
  double along, across;
};

Extents extents(const std::vector<Pixel>& pixels, double ux, double uy) {
  double lo[2] = {1e300, 1e300}, hi[2] = {-1e300, -1e300};
  for (const Pixel& p : pixels) {
    const double t[2] = {p.x * ux + p.y * uy, p.y * ux - p.x * uy};
    for (int k = 0; k < 2; ++k) {
      lo[k] = std::min(lo[k], t[k]);
      hi[k] = std::max(hi[k], t[k]);
    }
  }
  return {hi[0] - lo[0], hi[1] - lo[1]};
}

// One side of the smallest rectangle lies on two pixels: tries every pair.
double smallest_area(const std::vector<Pixel>& pixels) {
  double best = 1e300;
  for (size_t i = 0; i < pixels.size(); ++i) {
    for (size_t k = 0; k < i; ++k) {
      const double dx = pixels[i].x - pixels[k].x;
      const double dy = pixels[i].y - pixels[k].y;
      const double length = std::hypot(dx, dy);
      const Extents e = extents(pixels, dx / length, dy / length);
      best = std::min(best, e.along * e.across);
    }
  }
  return best;
}

void expect_rectangle(const region& r, const std::vector<Pixel>& pixels) {
  const double w = 2 * r.rect_half_length1(), h = 2 * r.rect_half_length2();
  const double area = smallest_area(pixels);
  EXPECT_NEAR(w * h, area, 1e-9 * (1 + area));
  EXPECT_GT(r.rect_angle(), -90);
  EXPECT_LE(r.rect_angle(), 90);
  // Rows grow downwards.
  const double angle = -r.rect_angle() * kPi / 180;
  const Extents e = extents(pixels, std::cos(angle), std::sin(angle));
  EXPECT_NEAR(e.along, std::max(w, h), 1e-9 * (1 + e.along));
  EXPECT_NEAR(e.across, std::min(w, h), 1e-9 * (1 + e.along));
}

TEST(Features, AgreeWithPixelsAndBruteForceRectangles) {
  int checked = 0;
  for (uint64_t seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE(seed);
    const Runs runs = vexo_test::runs_in(vexo_test::random_picture(seed, 14));
    const auto pixels = pixels_of(runs);
    if (pixels.size() < 3) continue;
    for (bool chords : {false, true}) {
      region r = vexo_test::region_of(runs);
      if (chords) r.run_count = 0;
      vexo::compute_features(&r);
      ASSERT_EQ(r.area, static_cast<int32_t>(pixels.size()));
      expect_moments(r, pixels);
      if (seed % 4 == 0) expect_rectangle(r, pixels);
    }
    ++checked;
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(checked, 1000);
}

// Many corners: the way for large hulls.
TEST(Features, RectangleOfALargeTiltedEllipse) {
  Picture p(160, std::string(160, '.'));
  for (int y = 0; y < 160; ++y) {
    for (int x = 0; x < 160; ++x) {
      const double u = 0.8 * (x - 80) + 0.6 * (y - 80);
      const double v = -0.6 * (x - 80) + 0.8 * (y - 80);
      if (u * u / 4900 + v * v / 900 <= 1) p[y][x] = '#';
    }
  }
  Runs runs = vexo_test::runs_in(p);
  const region r = with_features(runs);
  std::vector<Pixel> ends;
  for (const auto& run : runs) {
    ends.push_back({double(run.begin), double(run.row)});
    ends.push_back({double(run.end), double(run.row)});
  }
  expect_rectangle(r, ends);
  expect_moments(r, pixels_of(runs));
  EXPECT_NEAR(r.ra(), 70, 0.5);
  EXPECT_NEAR(r.rb(), 30, 0.5);
  EXPECT_NEAR(r.phi(), -std::atan2(0.6, 0.8) * 180 / kPi, 0.5);
}

// Shapes of all kinds: gaps between rows, several runs a row, hulls of a few
// and of many corners, each also stretched until 16 bits do not hold it.
std::vector<Runs> shapes() {
  std::vector<Runs> all;
  for (uint64_t seed = 0; seed < 400; ++seed) {
    const int size = seed % 5 == 0 ? 150 : 20;
    Runs runs = vexo_test::runs_in(vexo_test::random_picture(seed, size));
    if (runs.empty()) continue;
    all.push_back(runs);
    for (Run& run : runs) {
      run = {run.row * 900, run.begin * 1100, run.end * 1100};
    }
    all.push_back(runs);
  }
  for (int radius : {3, 9, 40, 170}) {
    Runs disc;
    for (int y = -radius; y <= radius; ++y) {
      const int half = static_cast<int>(std::sqrt(radius * radius - y * y));
      disc.push_back({y, y / 3 - half, y / 3 + half});
    }
    all.push_back(disc);
  }
  return all;
}

bool same_features(const region& a, const region& b) {
  return a.area == b.area && std::memcmp(a.bbox, b.bbox, sizeof(a.bbox)) == 0 &&
         std::memcmp(a.reals, b.reals, sizeof(a.reals)) == 0 &&
         std::memcmp(a.more_reals, b.more_reals, sizeof(a.more_reals)) == 0;
}

TEST(Features, EveryVectorWidthGivesTheSameBytes) {
  using vexo::internal::vector_level;
  for (const Runs& runs : shapes()) {
    vexo::internal::set_vector_limit(vector_level::kPlain);
    const region plain = with_features(runs);
    vexo::internal::set_vector_limit(vector_level::kAvx2);
    const region avx2 = with_features(runs);
    vexo::internal::set_vector_limit(vector_level::kAvx512);
    const region avx512 = with_features(runs);
    ASSERT_TRUE(same_features(plain, avx2)) << runs.size();
    ASSERT_TRUE(same_features(plain, avx512)) << runs.size();
  }
}

TEST(Features, RectanglesOfWideRegionsAreTheSmallest) {
  int checked = 0;
  for (uint64_t seed = 0; seed < 100; ++seed) {
    Runs runs = vexo_test::runs_in(vexo_test::random_picture(seed, 14));
    std::vector<Pixel> ends;
    for (auto& run : runs) {
      run = {run.row * 70000, run.begin * 90000, run.end * 90000};
      ends.push_back({double(run.begin), double(run.row)});
      ends.push_back({double(run.end), double(run.row)});
    }
    if (runs.size() < 3) continue;
    expect_rectangle(with_features(runs), ends);
    checked += 1;
  }
  EXPECT_GT(checked, 50);
}

TEST(Features, OfOnePixelSeveralTimesEndWithARectangleOfNoSize) {
  using vexo::internal::vector_level;
  for (const vector_level level :
       {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
    vexo::internal::set_vector_limit(level);
    for (const int times : {3, 4, 20}) {
      const region r = with_features(Runs(times, vexo_test::Run{0, 3, 3}));
      EXPECT_EQ(r.area, times);
      EXPECT_EQ(r.reals[2], 0);
      EXPECT_EQ(r.reals[3], 0);
    }
  }
  vexo::internal::set_vector_limit(vector_level::kAvx512);
}

}  // namespace
