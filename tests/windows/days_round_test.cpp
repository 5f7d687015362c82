// SPDX-License-Identifier: MIT
//
// The real Rendal.exe through a whole day's work. ./run.sh --round leaves the
// pictures of it.
#include "tests/windows/days_round.h"

#include "gtest/gtest.h"

namespace {

TEST(DaysRound, EveryStepIsSeenToComeTrue) { rendal_test::WorkDaysRound({}); }

}  // namespace
