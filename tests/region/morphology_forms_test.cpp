// SPDX-License-Identifier: MIT
//
// The forms in which dilation and erosion are carried out, against each other
// and against the pixels: strips, bits of every vector width, plain; one thread
// and many.
#include <gtest/gtest.h>

#include "region/internal/bit_rows.h"
#include "region/internal/morphology.h"
#include "region/internal/parallel.h"
#include "region/operations.h"
#include "region_cases.h"

namespace vexo_test {
namespace {

using vexo::region;
using vexo::internal::morphology_form;
using vexo::internal::vector_width;

// What a test sets is undone when it ends.
class MorphologyForms : public testing::Test {
 protected:
  ~MorphologyForms() override {
    vexo::internal::set_morphology_form(morphology_form::cheapest);
    vexo::internal::set_vector_limit(vector_width::bits512);
    vexo::internal::set_thread_limit(0);
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
  for (uint64_t seed = 0; seed < 2500; ++seed) {
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
         {morphology_form::strips, morphology_form::bits,
          morphology_form::plain, morphology_form::cheapest}) {
      SCOPED_TRACE(static_cast<int>(form));
      vexo::internal::set_morphology_form(form);
      const Results results = results_of(source, element);
      ASSERT_EQ(results.dilated, dilated);
      ASSERT_EQ(results.eroded, eroded);
    }
  }
}

}  // namespace
}  // namespace vexo_test
