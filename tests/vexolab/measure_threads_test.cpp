// SPDX-License-Identifier: MIT
//
// Measuring on eight threads, again and again: the same bytes each time, and
// the same as on one thread. Rectangles are few, so that a call costs little
// more than its threads.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "tests/vexolab/synthetic_image.h"
#include "vexolab/measure.h"
#include "vexolab/parallel.h"
#include "vexolab/rectangles.h"

namespace vexolab {
namespace {

constexpr int kThreads = 8;
#if defined(_WIN32) || defined(__SANITIZE_THREAD__) || \
    defined(__SANITIZE_ADDRESS__)
constexpr int kRepeats = 100;  // a thread costs several times as much
#else
constexpr int kRepeats = 1000;
#endif

class MeasureThreads : public testing::Test {
 protected:
  ~MeasureThreads() override { forced_threads = 0; }
};

// All eight wait for each other: fewer threads would never get there.
TEST_F(MeasureThreads, AreAsManyAsAreForced) {
  forced_threads = kThreads;
  std::atomic<int> arrived{0};
  parallel_for(
      0,
      [&] {
        ++arrived;
        while (arrived < kThreads) std::this_thread::yield();
        return 0;
      },
      [](int, int, int) {});
  EXPECT_EQ(arrived, kThreads);
}

// A noisy disc, measured around its edge.
struct Scene {
  synthetic::grey_image picture;
  std::vector<float> rectangles;
};

Scene NoisyDisc() {
  synthetic::random r(1);
  synthetic::coverage c(101, 101);
  synthetic::add_ellipse({50, 50, 0, 36, 30}, 0.7, 1, &c);
  Scene scene = {synthetic::expose(c, {50, 150, 4, {}}, &r), {}};
  EXPECT_EQ(rectangles_on_ellipse(50, 50, 0, 36, 30, {12, 4, 1, 64},
                                  &scene.rectangles),
            0);
  return scene;
}

std::vector<double> Points(const Scene& scene) {
  selection which;
  EXPECT_TRUE(parse_selection("strongest", &which));
  std::vector<double> points;
  measure_rectangles(
      {scene.picture.data(), scene.picture.width, scene.picture.height},
      {1, 20}, which, scene.rectangles.data(),
      static_cast<int>(scene.rectangles.size() / 5), &points);
  return points;
}

TEST_F(MeasureThreads, GiveEqualBytes) {
  const Scene scene = NoisyDisc();
  forced_threads = 1;
  const std::vector<double> expected = Points(scene);
  ASSERT_GT(expected.size(), 100u);
  forced_threads = kThreads;
  for (int i = 0; i < kRepeats; ++i) {
    const std::vector<double> points = Points(scene);
    ASSERT_EQ(points.size(), expected.size());
    ASSERT_EQ(std::memcmp(points.data(), expected.data(),
                          points.size() * sizeof(double)),
              0)
        << "in repetition " << i;
  }
}

}  // namespace
}  // namespace vexolab
