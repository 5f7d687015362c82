// SPDX-License-Identifier: MIT
//
// Counts the heap blocks that live after presses of every button. The program
// replaces the global allocation functions and is linked with malloc and its
// relatives wrapped, so that what regions allocate is counted too.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>

#include "tools/blob_tool.h"

namespace {

std::atomic<long> live_blocks{0};
// Allocations that still succeed; the next one fails.
std::atomic<long> allocations_left{std::numeric_limits<long>::max()};

bool MayAllocate() {
  return allocations_left.fetch_sub(1, std::memory_order_relaxed) > 0;
}

}  // namespace

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void __real_free(void* block);

void* __wrap_malloc(size_t size) {
  void* const block = MayAllocate() ? __real_malloc(size) : nullptr;
  if (block != nullptr) ++live_blocks;
  return block;
}

void* __wrap_calloc(size_t count, size_t size) {
  void* const block = MayAllocate() ? __real_calloc(count, size) : nullptr;
  if (block != nullptr) ++live_blocks;
  return block;
}

void* __wrap_realloc(void* block, size_t size) {
  if (!MayAllocate()) return nullptr;
  void* const moved = __real_realloc(block, size);
  if (block == nullptr && moved != nullptr) ++live_blocks;
  if (block != nullptr && moved == nullptr && size == 0) --live_blocks;
  return moved;
}

void __wrap_free(void* block) {
  if (block != nullptr) --live_blocks;
  __real_free(block);
}
}

void* operator new(size_t size) {
  void* const block = __wrap_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { __wrap_free(block); }
void operator delete[](void* block) noexcept { __wrap_free(block); }
void operator delete(void* block, size_t) noexcept { __wrap_free(block); }
void operator delete[](void* block, size_t) noexcept { __wrap_free(block); }

namespace rendal {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

cv::Mat Squares() {
  cv::Mat image(60, 90, CV_8U, cv::Scalar(0));
  for (int i = 0; i < 12; ++i) {
    image(cv::Rect(8 + 14 * (i % 6), 10 + 25 * (i / 6), 9, 12)).setTo(200);
  }
  image(cv::Rect(10, 13, 3, 3)).setTo(0);
  return image;
}

constexpr RegionOperation kOperations[] = {
    RegionOperation::kFillUp,     RegionOperation::kUnion,
    RegionOperation::kDifference, RegionOperation::kIntersection,
    RegionOperation::kDilation,   RegionOperation::kErosion,
    RegionOperation::kOpening,    RegionOperation::kClosing,
    RegionOperation::kTopHat,     RegionOperation::kBottomHat,
    RegionOperation::kBoundary};

void PressEveryButton(Workbench& bench) {
  CaptureStdout();
  Threshold(bench, {100, 255});
  Threshold(bench, {0, 150});
  Threshold(bench, {100, 255});
  Connection(bench);
  for (const RegionOperation operation : kOperations) {
    for (const char* type : {"inner", "inner_filled", "outer"}) {
      ApplyRegionOperation(bench, operation, {{kCircle, 2, 2}, type});
    }
  }
  GetCapturedStdout();
}

class BlobToolMemory : public testing::TestWithParam<int> {
 protected:
  BlobToolMemory() {
    m_bench.m_parallelMode = GetParam();
    m_bench.m_srcImage = Squares();
  }
  Workbench m_bench;
};

INSTANTIATE_TEST_SUITE_P(BothModes, BlobToolMemory, testing::Values(0, 1));

TEST_P(BlobToolMemory, ThousandPressesOfEveryButtonLeaveNoBlockBehind) {
  // What streams, threads and caches keep for good is made by then.
  for (int i = 0; i < 20; ++i) PressEveryButton(m_bench);
  const long before = live_blocks;
  for (int i = 0; i < 1000; ++i) PressEveryButton(m_bench);
  EXPECT_LT(live_blocks - before, 100);
}

// Presses with ever more allocations allowed until nothing fails any more.
template <typename Tool>
int PressUntilMemorySuffices(Workbench& bench, Tool tool) {
  const size_t history = bench.m_regionHistory.size();
  const size_t chords = bench.m_regionOverlay[0].chords.size();
  for (int allowed = 0;; ++allowed) {
    bench.m_redraw = -1;
    allocations_left = allowed;
    const Status status = Guarded(tool);
    const bool sufficed = allocations_left > 0;
    allocations_left = std::numeric_limits<long>::max();
    if (sufficed) {
      EXPECT_EQ(status.tone, Tone::kSuccess) << status.text;
      return allowed;
    }
    // Memory may have run out where nobody minds, such as in a stream.
    if (status.tone == Tone::kSuccess) return allowed;
    EXPECT_EQ(status.tone, Tone::kError);
    EXPECT_FALSE(status.text.empty());
    EXPECT_EQ(bench.m_regionHistory.size(), history);
    EXPECT_EQ(bench.m_regionOverlay.size(), 1u);
    EXPECT_EQ(bench.m_regionOverlay[0].chords.size(), chords);
    EXPECT_EQ(bench.m_redraw, -1);
  }
}

TEST_P(BlobToolMemory, MemoryThatRunsOutLeavesHistoryAndOverlayAlone) {
  PressEveryButton(m_bench);
  CaptureStdout();
  Threshold(m_bench, {100, 255});
  for (const RegionOperation operation : kOperations) {
    SCOPED_TRACE(static_cast<int>(operation));
    EXPECT_GT(PressUntilMemorySuffices(
                  m_bench,
                  [&] { return ApplyRegionOperation(m_bench, operation, {}); }),
              0);
  }
  EXPECT_GT(PressUntilMemorySuffices(m_bench,
                                     [&] {
                                       return Threshold(m_bench, {100, 255});
                                     }),
            0);
  EXPECT_GT(PressUntilMemorySuffices(
                m_bench, [&] { return Connection(m_bench).status; }),
            0);
  const std::string text = GetCapturedStdout();
  if (HasFailure()) std::printf("%s", text.c_str());
}

TEST_P(BlobToolMemory, CountSeesASingleRegion) {
  const long before = live_blocks;
  {
    const vexo::region region;
    EXPECT_GT(live_blocks, before);
  }
  EXPECT_EQ(live_blocks, before);
}

}  // namespace
}  // namespace rendal
