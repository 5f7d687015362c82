// SPDX-License-Identifier: MIT
//
// The forms in which dilation and erosion are carried out, against each other
// and against the pixels: strips, bits of every vector width, plain,
// candidates; one thread and many.
#include <gtest/gtest.h>

#include "region/internal/morphology.h"
#include "region/internal/parallel.h"
#include "region/internal/row_scan.h"
#include "region/operations.h"
#include "region_cases.h"

namespace vexo_test {
namespace {

using vexo::region;
using vexo::internal::morphology_form;
using vexo::internal::vector_level;

// What a test sets is undone when it ends.
class MorphologyForms : public testing::Test {
 protected:
  ~MorphologyForms() override {
    vexo::internal::set_morphology_form(morphology_form::cheapest);
    vexo::internal::set_vector_limit(vector_level::kAvx512);
    vexo::internal::set_thread_limit(0);
    vexo::internal::set_hand_over_cost(-1);
  }
};

struct Results {
  Runs dilated, eroded, opened, closed;
  friend bool operator==(const Results&, const Results&) = default;
};

Results results_of(const region& source, const region& element) {
  region dilated, eroded, opened, closed;
  vexo::dilation2(source, element, &dilated, -1, -1);
  vexo::erosion2(source, element, &eroded, -1, -1);
  vexo::opening(source, element, &opened);
  vexo::closing(source, element, &closed);
  return {runs_of(dilated), runs_of(eroded), runs_of(opened), runs_of(closed)};
}

TEST_F(MorphologyForms, AllAgreeWithThePixelOracle) {
  for (uint64_t seed = 0; seed < vexo_test::cases(2500); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const PixelSet shape = random_element(random);
    const PixelSet steps = centred(shape, upper_middle);
    PixelSet pixels = random_pixels(random);
    if (random.chance(50)) pixels = oracle_dilate(pixels, shape);
    const region source = region_of(pixels);
    const region element = region_of(shape);
    const Runs dilated = oracle_dilate(pixels, steps).runs();
    const Runs eroded = oracle_erode(pixels, steps).runs();
    for (const morphology_form form :
         {morphology_form::keys, morphology_form::strips, morphology_form::bits,
          morphology_form::plain, morphology_form::candidates,
          morphology_form::cheapest}) {
      SCOPED_TRACE(static_cast<int>(form));
      vexo::internal::set_morphology_form(form);
      const Results results = results_of(source, element);
      ASSERT_EQ(results.dilated, dilated);
      ASSERT_EQ(results.eroded, eroded);
    }
  }
}

constexpr morphology_form kForms[] = {
    morphology_form::cheapest, morphology_form::keys,
    morphology_form::strips,   morphology_form::bits,
    morphology_form::plain,    morphology_form::candidates};

// Larger than any vector, several bands high, with rows and columns of nothing.
region large_region(uint64_t seed) {
  Random random(seed);
  const int height = random.between(300, 700);
  const int width = random.between(1, 1700);
  const int shift = random.between(-3000, 3000);
  const int kind = random.between(0, 3);
  Runs runs;
  for (int row = 0; row < height; ++row) {
    if (row % 97 > 90 && kind != 3) continue;
    int column = random.between(0, 20);
    while (column < width) {
      const int length = kind == 0   ? random.between(1, 4)
                         : kind == 1 ? random.between(1, 200)
                         : kind == 2 ? 30 + row % 13
                                     : random.between(60, 64);
      runs.push_back({row + shift, column + shift, column + shift + length});
      column += length + 2 +
                (kind == 0   ? random.between(0, 5)
                 : kind == 2 ? row % 7
                             : 61);
    }
  }
  if (runs.empty()) runs.push_back({shift, shift, shift});
  return region_of(runs);
}

TEST_F(MorphologyForms, AllFormsAndVectorWidthsAgreeOnLargeRegions) {
  for (uint64_t seed = 0; seed < vexo_test::large_cases(40); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const region source = large_region(seed);
    const region element = region_of(random_element(random));
    vexo::internal::set_morphology_form(morphology_form::plain);
    const Results expected = results_of(source, element);
    ASSERT_TRUE(is_canonical(expected.dilated));
    ASSERT_TRUE(is_canonical(expected.eroded));
    for (const morphology_form form : kForms) {
      vexo::internal::set_morphology_form(form);
      for (const vector_level level :
           {vector_level::kPlain, vector_level::kAvx2, vector_level::kAvx512}) {
        vexo::internal::set_vector_limit(level);
        ASSERT_TRUE(results_of(source, element) == expected)
            << static_cast<int>(form) << " " << static_cast<int>(level);
      }
    }
  }
}

TEST_F(MorphologyForms, EveryNumberOfThreadsGivesTheSame) {
  vexo::internal::set_hand_over_cost(0);
  for (uint64_t seed = 0; seed < vexo_test::cases(40); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed + 1000);
    const region source = large_region(seed);
    const region element = region_of(random_element(random));
    vexo::internal::set_thread_limit(1);
    const Results expected = results_of(source, element);
    for (const int threads : {2, 3, 8}) {
      vexo::internal::set_thread_limit(threads);
      ASSERT_TRUE(results_of(source, element) == expected) << threads;
    }
  }
}

TEST_F(MorphologyForms, AllAgreeOnTwelveMegapixels) {
  Runs runs;
  Random random(7);
  for (int row = 0; row < 3000; ++row) {
    // Dense above, sparse below: both kinds of bands.
    const int most = row < 1500 ? 20 : 900;
    for (int column = 0; column < 4000;) {
      const int end = std::min(3999, column + random.between(0, most));
      runs.push_back({row, column, end});
      column = end + 2 + random.between(0, most);
    }
  }
  const region source = region_of(runs, 4000, 3000);
  region element;
  vexo::gen_se_circle(5, &element);
  vexo::internal::set_morphology_form(morphology_form::plain);
  const Results expected = results_of(source, element);
  for (const morphology_form form : kForms) {
    vexo::internal::set_morphology_form(form);
    ASSERT_TRUE(results_of(source, element) == expected)
        << static_cast<int>(form);
  }
}

TEST_F(MorphologyForms, CarelessRunsGiveWhatTheirPixelsGive) {
  const region careful = region_of({{0, 0, 9}, {1, 0, 9}, {2, 3, 9}});
  const Runs careless[] = {
      {{0, 0, 4}, {0, 5, 9}, {1, 0, 9}, {2, 3, 9}},              // touching
      {{0, 0, 6}, {0, 2, 9}, {1, 0, 9}, {2, 3, 9}},              // overlapping
      {{0, 5, 9}, {0, 0, 4}, {1, 0, 9}, {2, 3, 9}},              // columns
      {{2, 3, 9}, {0, 0, 9}, {1, 0, 9}},                         // rows
      {{0, 0, 9}, {1, 0, 9}, {1, 50, 40}, {2, 3, 9}, {2, 4, 3}}  // inverted
  };
  region element;
  vexo::gen_se_circle(1, &element);
  for (const morphology_form form : kForms) {
    vexo::internal::set_morphology_form(form);
    const Results expected = results_of(careful, element);
    region contour;
    vexo::boundary(careful, &contour, "inner_filled");
    for (const Runs& runs : careless) {
      const region source = region_of(runs);
      EXPECT_TRUE(results_of(source, element) == expected);
      region same;
      vexo::boundary(source, &same, "inner_filled");
      EXPECT_EQ(runs_of(same), runs_of(contour));
    }
  }
}

TEST_F(MorphologyForms, RowsAndColumnsFarApartCostNothing) {
  const region source = region_of({{-2000000000, -2000000000, -1999999990},
                                   {-1999999999, -2000000000, -1999999990},
                                   {0, 5, 5},
                                   {1999999999, 1999999000, 1999999999}});
  region element;
  vexo::gen_se_rectangle(3, 3, &element);
  Runs dilated;
  for (int row = -2000000001; row <= -1999999998; ++row)
    dilated.push_back({row, -2000000001, -1999999989});
  for (int row = -1; row <= 1; ++row) dilated.push_back({row, 4, 6});
  for (int row = 1999999998; row <= 2000000000; ++row)
    dilated.push_back({row, 1999998999, 2000000000});
  for (const morphology_form form : kForms) {
    vexo::internal::set_morphology_form(form);
    const Results results = results_of(source, element);
    EXPECT_EQ(results.dilated, dilated);
    EXPECT_EQ(results.eroded, Runs{});
    EXPECT_EQ(results.closed, runs_of(source));
  }
}

TEST_F(MorphologyForms, RowsFarApartAreSeparateBands) {
  for (const auto& [gap, height] :
       {std::pair(60, 3), std::pair(100000000, 3), std::pair(100000000, 501)}) {
    const region source = region_of({{0, 5, 9}, {gap, 5, 9}});
    region element;
    vexo::gen_se_rectangle(3, height, &element);
    for (const morphology_form form : kForms) {
      vexo::internal::set_morphology_form(form);
      const Results results = results_of(source, element);
      EXPECT_EQ(results.dilated.size(), 2u * static_cast<size_t>(height));
      EXPECT_EQ(results.closed, runs_of(source));
    }
  }
}

TEST_F(MorphologyForms, ElementsWithRowsFarApart) {
  const region source = region_of({{0, 0, 9}, {3000, 0, 9}, {3001, 4, 4}});
  const region element = region_of({{0, 0, 1}, {3000, 0, 3}});
  for (const morphology_form form : kForms) {
    vexo::internal::set_morphology_form(form);
    region eroded, dilated;
    vexo::erosion2(source, element, &eroded, 0, 0);
    vexo::dilation2(source, element, &dilated, 0, 0);
    EXPECT_EQ(runs_of(eroded), (Runs{{0, 0, 6}}));
    EXPECT_EQ(runs_of(dilated), (Runs{{0, 0, 10},
                                      {3000, 0, 12},
                                      {3001, 4, 5},
                                      {6000, 0, 12},
                                      {6001, 4, 7}}));
  }
}

}  // namespace
}  // namespace vexo_test
