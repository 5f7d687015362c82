// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/tools/counted_heap.h"
#include "tests/tools/every_button.h"
#include "tools/blob_tool.h"

namespace rendal {
namespace {

using counted_heap::live_blocks;
using every_button::PressEveryButton;
using every_button::Squares;

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
