// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <vector>

#include "pictures.h"
#include "random_regions.h"
#include "region/internal/parallel.h"
#include "region/internal/vector_level.h"
#include "region/operations.h"

namespace {

using vexo::region;
using vexo::internal::vector_level;
using vexo_test::chords_of;
using vexo_test::Picture;
using vexo_test::Random;
using vexo_test::Run;
using vexo_test::Runs;
using vexo_test::runs_of;

struct Image {
  int width;
  int height;
  std::vector<unsigned char> pixels;

  Image(int w, int h, int value = 0)
      : width(w), height(h), pixels(size_t(w) * h, value) {}
  unsigned char& at(int row, int col) {
    return pixels[size_t(row) * width + col];
  }
};

using Form = void (*)(unsigned char*, int, int, int, int, region*);

Runs run(Form form, Image& image, int min, int max) {
  region r;
  form(image.pixels.data(), image.width, image.height, min, max, &r);
  EXPECT_EQ(r.width, image.width);
  EXPECT_EQ(r.height, image.height);
  EXPECT_EQ(r.child_count, 0);
  return form == vexo::threshold ? chords_of(r) : runs_of(r);
}

// Pixel by pixel.
Runs oracle(Image& image, int min, int max) {
  Picture p(image.height, std::string(image.width, '.'));
  for (int r = 0; r < image.height; ++r) {
    for (int c = 0; c < image.width; ++c) {
      if (image.at(r, c) >= min && image.at(r, c) <= max) p[r][c] = '#';
    }
  }
  return vexo_test::runs_in(p);
}

constexpr vector_level kLevels[] = {vector_level::kPlain, vector_level::kAvx2,
                                    vector_level::kAvx512};

class Threshold : public testing::TestWithParam<Form> {
 protected:
  ~Threshold() override {
    vexo::internal::set_thread_limit(0);
    vexo::internal::set_vector_limit(vector_level::kAvx512);
  }
};

TEST_P(Threshold, MinAboveMaxGivesNoRuns) {
  Image image(10, 10, 5);
  EXPECT_EQ(run(GetParam(), image, 6, 5), Runs{});
}

TEST_P(Threshold, FullBandGivesOneRunPerRow) {
  Image image(9, 40);
  Random random(1);
  for (auto& p : image.pixels) p = static_cast<unsigned char>(random.bits());
  Runs rows;
  for (int r = 0; r < 40; ++r) rows.push_back({r, 0, 8});
  EXPECT_EQ(run(GetParam(), image, 0, 255), rows);
  EXPECT_EQ(run(GetParam(), image, -7, 1000), rows);
}

TEST_P(Threshold, SinglePixelGivesARunOfOne) {
  Image image(200, 3);
  image.at(1, 77) = 9;
  EXPECT_EQ(run(GetParam(), image, 9, 9), (Runs{{1, 77, 77}}));
}

TEST_P(Threshold, RunReachingTheLastColumnEndsThere) {
  Image image(130, 2);
  for (int c = 60; c < 130; ++c) image.at(0, c) = 200;
  image.at(1, 0) = 200;
  EXPECT_EQ(run(GetParam(), image, 128, 255), (Runs{{0, 60, 129}, {1, 0, 0}}));
}

TEST_P(Threshold, EmptyImageGivesNoRuns) {
  for (auto [width, height] : {std::pair{0, 5}, {5, 0}, {-1, 5}, {5, -1}}) {
    unsigned char pixel = 0;
    region r;
    GetParam()(&pixel, width, height, 0, 255, &r);
    EXPECT_EQ(r.run_count, 0u);
    EXPECT_EQ(r.chord_count, 0);
    EXPECT_EQ(r.width, width);
    EXPECT_EQ(r.height, height);
  }
}

TEST_P(Threshold, AgreesWithPixelOracle) {
  for (uint64_t seed = 0; seed < vexo_test::cases(3000); ++seed) {
    SCOPED_TRACE(seed);
    const Picture p = vexo_test::random_picture(seed);
    Random random(seed + 77);
    const int min = random.between(0, 255);
    const int max = random.between(min, 255);
    Image image(static_cast<int>(p[0].size()), static_cast<int>(p.size()));
    for (int r = 0; r < image.height; ++r) {
      for (int c = 0; c < image.width; ++c) {
        int value = random.between(min, max);
        if (p[r][c] != '#') value = (max + 1 + value - min) % 256;
        image.at(r, c) = static_cast<unsigned char>(value);
      }
    }
    const Runs expected = oracle(image, min, max);
    for (vector_level level : kLevels) {
      vexo::internal::set_vector_limit(level);
      ASSERT_EQ(run(GetParam(), image, min, max), expected);
    }
  }
}

// Wide enough for several words a row, large enough for several threads.
TEST_P(Threshold, LargeImagesAgreeForEveryVectorWidthAndThreadCount) {
  for (int width : {63, 64, 65, 511, 512, 513, 4000, 17000}) {
    SCOPED_TRACE(width);
    Image image(width, 1200000 / width);
    Random random(static_cast<uint64_t>(width));
    for (size_t i = 0; i < image.pixels.size();) {
      const int value = random.between(0, 255);
      for (int n = random.between(1, 90); n > 0; --n) {
        if (i < image.pixels.size()) {
          image.pixels[i++] = static_cast<unsigned char>(value);
        }
      }
    }
    const Runs expected = oracle(image, 100, 180);
    for (vector_level level : kLevels) {
      vexo::internal::set_vector_limit(level);
      for (int threads : {1, 2, 7}) {
        vexo::internal::set_thread_limit(threads);
        ASSERT_TRUE(run(GetParam(), image, 100, 180) == expected);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, Threshold,
                         testing::Values(vexo::threshold, vexo::threshold_y,
                                         vexo::threshold_y3));

TEST(ThresholdChords, LeavesTheRunsAlone) {
  Image image(10, 10, 5);
  region r = vexo_test::region_of({{1, 2, 3}});
  const int32_t* rows = r.rows;
  vexo::threshold(image.pixels.data(), 10, 10, 5, 5, &r);
  EXPECT_EQ(r.run_count, 1u);
  EXPECT_EQ(r.rows, rows);
  EXPECT_EQ(runs_of(r), (Runs{{1, 2, 3}}));
  EXPECT_EQ(r.chord_count, 10);
}

TEST(ThresholdRuns, LeavesTheChordsAlone) {
  Image image(10, 10, 5);
  region r = vexo_test::region_of({{1, 2, 3}});
  const vexo::chord* chords = r.chords;
  vexo::threshold_y(image.pixels.data(), 10, 10, 5, 5, &r);
  EXPECT_EQ(r.chords, chords);
  EXPECT_EQ(chords_of(r), (Runs{{1, 2, 3}}));
  EXPECT_EQ(r.run_count, 10u);
}

}  // namespace
