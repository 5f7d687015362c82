// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/tools/counted_heap.h"
#include "tests/tools/every_button.h"
#include "tools/blob_tool.h"

namespace rendal {
namespace {

using counted_heap::allocations_left;
using every_button::kOperations;
using every_button::PressEveryButton;
using every_button::Squares;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

class BlobToolFailure : public testing::TestWithParam<int> {
 protected:
  BlobToolFailure() {
    m_bench.m_parallelMode = GetParam();
    m_bench.m_srcImage = Squares();
  }
  Workbench m_bench;
};

INSTANTIATE_TEST_SUITE_P(BothModes, BlobToolFailure, testing::Values(0, 1));

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
    allocations_left = counted_heap::kNoLimit;
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

TEST_P(BlobToolFailure, MemoryThatRunsOutLeavesHistoryAndOverlayAlone) {
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

}  // namespace
}  // namespace rendal
