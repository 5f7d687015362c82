// SPDX-License-Identifier: MIT
#include "tools/elapsed.h"

#include <gtest/gtest.h>

#include <chrono>
#include <iomanip>
#include <iostream>
#include <thread>

#include "tests/tools/console_times.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

constexpr int64_t kMillisecond = 1'000'000;

TEST(Elapsed, PrintsLabelSecondsAndAnEmptyLine) {
  CaptureStdout();
  int64_t start = SteadyNanoseconds();
  PrintElapsed(start, "threshold");
  EXPECT_EQ(WithoutTimes(GetCapturedStdout()),
            "threshold\nelasped time:Ts\n\n");
}

TEST(Elapsed, PrintsSixSignificantDigits) {
  CaptureStdout();
  // A stamp of three hours and some ago: the microseconds since are noise
  // beyond the sixth digit.
  int64_t start = SteadyNanoseconds() - 12345'678 * kMillisecond;
  PrintElapsed(start, "x");
  EXPECT_EQ(GetCapturedStdout(), "x\nelasped time:12345.7s\n\n");
}

TEST(Elapsed, FormatOfTheStreamDoesNotChangeTheNumber) {
  CaptureStdout();
  int64_t start = SteadyNanoseconds() - 12345'678 * kMillisecond;
  std::cout << std::fixed << std::setprecision(1);
  PrintElapsed(start, "x");
  std::cout << std::defaultfloat << std::setprecision(6);
  EXPECT_EQ(GetCapturedStdout(), "x\nelasped time:12345.7s\n\n");
}

TEST(Elapsed, ReturnsTheSecondsThatItPrints) {
  CaptureStdout();
  int64_t start = SteadyNanoseconds();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const double seconds = PrintElapsed(start, "x");
  EXPECT_GE(seconds, 0.020);
  EXPECT_NEAR(std::stod(GetCapturedStdout().substr(15)), seconds,
              seconds * 1e-5);
}

TEST(Elapsed, SecondCallInARowStartsAfterTheFirstPrint) {
  CaptureStdout();
  int64_t start = SteadyNanoseconds() - 5000 * kMillisecond;
  const double first = PrintElapsed(start, "x");
  const double second = PrintElapsed(start, "x");
  GetCapturedStdout();
  EXPECT_GE(first, 5);
  EXPECT_LT(second, 1);
  EXPECT_GE(second, 0);
}

TEST(ConsoleText, AddsNothingToTheFormattedText) {
  CaptureStdout();
  ConsolePrintf("a %d", 1);
  ConsolePrintf("%s", std::string(1000, 'b').c_str());
  ConsolePrintf("%s", "");
  EXPECT_EQ(GetCapturedStdout(), "a 1" + std::string(1000, 'b'));
}

TEST(ConsoleCapture, TakesWhatItsOwnThreadPrints) {
  CaptureStdout();
  std::string inner;
  ConsoleCapture outer;
  ConsolePrintf("a");
  {
    ConsoleCapture capture;
    int64_t start = SteadyNanoseconds() - 12345'678 * kMillisecond;
    PrintElapsed(start, "x");
    std::thread([] { ConsolePrintf("other"); }).join();
    inner = capture.Text();
  }
  ConsolePrintf("b");
  EXPECT_EQ(inner, "x\nelasped time:12345.7s\n\n");
  EXPECT_EQ(outer.Text(), "ab");
  EXPECT_EQ(GetCapturedStdout(), "other");
}

}  // namespace
}  // namespace rendal
