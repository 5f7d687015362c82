// SPDX-License-Identifier: MIT
//
// The real Rendal.exe under a monkey's hands. ./run.sh --monkey SEED plays ten
// times as long, with any seed.
#include "tests/windows/monkey.h"

#include <cstdio>

#include "gtest/gtest.h"

namespace {

constexpr uint32_t kSeed = 5;
constexpr int kEvents = 2'000;

TEST(Monkey, DoesWhatItWantsAndTheProgramGoesOn) {
  std::printf("seed %u\n", kSeed);
  const rendal_test::MonkeyReport report =
      rendal_test::LetMonkeyPlay(kSeed, kEvents);
  int events = 0;
  for (const auto& [name, kind] : report.kinds) events += kind.events;
  EXPECT_EQ(events, kEvents);
  std::fputs(rendal_test::Told(report).c_str(), stdout);
}

}  // namespace
