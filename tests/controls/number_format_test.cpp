// SPDX-License-Identifier: MIT
#include "controls/number_format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNotANumber = std::numeric_limits<double>::quiet_NaN();

const NumberRange kSigma{0.4, 10, 0.1};
const NumberRange kReps{0, 25, 0.5};
const NumberRange kLength{0, 1000, 1};

// ASCII only, so that failures can be read.
std::string Narrow(const std::wstring& text) {
  return std::string(text.begin(), text.end());
}

std::string Text(double value, int decimals, bool trim = true) {
  return Narrow(FormatNumber(value, {decimals, trim}));
}

// One click on a control whose buddy shows `text`.
std::string Click(const std::wstring& text, int delta, const NumberRange& range,
                  bool wrap = false) {
  return Text(StepNumber(ParseNumber(text.c_str()), delta, range, wrap), 2);
}

TEST(NumberFormat, TrailingZerosGo) {
  EXPECT_EQ(Text(1.0, 2), "1");
  EXPECT_EQ(Text(1.1, 2), "1.1");
  EXPECT_EQ(Text(0.4, 2), "0.4");
  EXPECT_EQ(Text(1.25, 2), "1.25");
}

TEST(NumberFormat, ZerosBeforeTheSeparatorStay) {
  EXPECT_EQ(Text(1000, 2), "1000");
  EXPECT_EQ(Text(100, 0), "100");
  EXPECT_EQ(Text(0, 2), "0");
}

TEST(NumberFormat, ZerosStayWithoutTrimming) {
  EXPECT_EQ(Text(1.0, 2, false), "1.00");
  EXPECT_EQ(Text(1.1, 3, false), "1.100");
  EXPECT_EQ(Text(2e20, 2, false), "2.00e+20");
}

TEST(NumberFormat, DefaultIsTheGeneralFormat) {
  EXPECT_EQ(NumberFormat{}.m_decimals, -1);
  EXPECT_TRUE(NumberFormat{}.m_trimZeros);
  EXPECT_EQ(Text(1.0 / 3, -1), "0.333333");
  EXPECT_EQ(Text(1234567, -1), "1.23457e+06");
  EXPECT_EQ(Text(0.1 + 0.2, -1), "0.3");
}

TEST(NumberFormat, DecimalsRound) {
  EXPECT_EQ(Text(2.345678, 2), "2.35");
  EXPECT_EQ(Text(0.999, 2), "1");
  EXPECT_EQ(Text(2.6, 0), "3");
  EXPECT_EQ(Text(-3.14159, 3), "-3.142");
}

TEST(NumberFormat, ExponentFormWhereTheGeneralFormatNeedsOne) {
  EXPECT_EQ(Text(123456, 2), "123456");
  EXPECT_EQ(Text(1234567, 2), "1.23e+06");
  EXPECT_EQ(Text(0.0001, 2), "0");
  EXPECT_EQ(Text(0.00001234, 2), "1.23e-05");
}

TEST(NumberFormat, OnlyTheMantissaIsTrimmed) {
  EXPECT_EQ(Text(1e20, 2), "1e+20");
  EXPECT_EQ(Text(1.5e20, 2), "1.5e+20");
  EXPECT_EQ(Text(1e10, 0), "1e+10");
  EXPECT_EQ(Text(-2e-10, 3), "-2e-10");
}

TEST(NumberFormat, EndlessAndUndefinedValuesHaveATextToo) {
  EXPECT_EQ(Text(kInfinity, 2), "inf");
  EXPECT_EQ(Text(-kInfinity, -1), "-inf");
  EXPECT_EQ(Text(std::abs(kNotANumber), 2), "nan");
}

TEST(NumberFormat, LargestValueFits) {
  const double largest = std::numeric_limits<double>::max();
  EXPECT_EQ(Text(largest, 2), "1.8e+308");
  EXPECT_EQ(Text(largest, 300).size(), std::string("1.e+308").size() + 300);
}

TEST(NumberFormat, SeparatorIsTheLocales) {
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  EXPECT_EQ(NumberFormat{}.m_separator, '.');
  for (const char* name : {"de_DE.UTF-8", "de_DE", "German"}) {
    if (std::setlocale(LC_NUMERIC, name) == nullptr) continue;
    EXPECT_EQ(NumberFormat{}.m_separator, ',');
    EXPECT_EQ(Text(1.50, 2), "1,5");
    EXPECT_EQ(ParseNumber(L"1,5"), 1.5);
  }
  std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(ParseNumber, TakesTheLeadingNumber) {
  EXPECT_EQ(ParseNumber(L"1.5"), 1.5);
  EXPECT_EQ(ParseNumber(L"  -2 px"), -2);
  EXPECT_EQ(ParseNumber(L"1e3"), 1000);
}

TEST(ParseNumber, IsZeroWithoutOne) {
  EXPECT_EQ(ParseNumber(L""), 0);
  EXPECT_EQ(ParseNumber(L"sigma"), 0);
  EXPECT_EQ(ParseNumber(L"."), 0);
}

TEST(NativePosition, HalfStepsToTwentyFiveMakeFiftyPositions) {
  EXPECT_EQ(NativePositions(kReps), 50);
  EXPECT_EQ(NativePosition(0, kReps, 50), 0);
  EXPECT_EQ(NativePosition(2, kReps, 50), 4);
  EXPECT_EQ(NativePosition(25, kReps, 50), 50);
}

TEST(NativePosition, CountOfStepsIsCutNotRounded) {
  // 9.6 / 0.1 is a little below 96.
  EXPECT_EQ(NativePositions(kSigma), static_cast<int>((10 - 0.4) / 0.1));
  EXPECT_EQ(NativePositions({0, 10, 4}), 2);
  EXPECT_EQ(NativePositions({0, 1, 4}), 0);
}

TEST(NativePosition, WideRangeHas32767Positions) {
  EXPECT_EQ(NativePositions({0, 32767, 1}), 32767);
  EXPECT_EQ(NativePositions({0, 32768, 1}), 32767);
  EXPECT_EQ(NativePositions({-1e9, 1e9, 0.001}), 32767);
  EXPECT_EQ(NativePositions({-kInfinity, kInfinity, 1}), 32767);
  EXPECT_EQ(NativePositions({-kInfinity, kInfinity, kInfinity}), 32767);
  EXPECT_EQ(NativePosition(1e9, {-1e9, 1e9, 0.001}, 32767), 32767);
  EXPECT_EQ(NativePosition(0, {-1e9, 1e9, 0.001}, 32767), 16384);
}

TEST(NativePosition, NegativeStepAndReversedRangeCountTheSame) {
  EXPECT_EQ(NativePositions({0, 10, -0.5}), 20);
  EXPECT_EQ(NativePositions({10, 0, 0.5}), 20);
}

TEST(NativePosition, ValuesOutsideAreAtTheEnds) {
  EXPECT_EQ(NativePosition(-3, kReps, 50), 0);
  EXPECT_EQ(NativePosition(1e300, kReps, 50), 50);
}

TEST(NativePosition, RoundsToTheNearestPosition) {
  EXPECT_EQ(NativePosition(0.24, kReps, 50), 0);
  EXPECT_EQ(NativePosition(0.25, kReps, 50), 1);
  EXPECT_EQ(NativePosition(0.74, kReps, 50), 1);
}

TEST(NativePosition, EmptyRangeAndUndefinedValueHaveNone) {
  EXPECT_FALSE(NativePosition(5, {5, 5, 1}, 0).has_value());
  EXPECT_FALSE(NativePosition(kNotANumber, kReps, 50).has_value());
}

TEST(StepNumber, OneClickUpFromOne) {
  EXPECT_EQ(Click(L"1", 1, kSigma), "1.1");
}

TEST(StepNumber, StepDownAtMinimumStays) {
  EXPECT_EQ(Click(L"0.4", -1, kSigma), "0.4");
  EXPECT_EQ(Click(L"0", -1, kReps), "0");
}

TEST(StepNumber, StepUpAtMaximumStays) {
  EXPECT_EQ(Click(L"10", 1, kSigma), "10");
  EXPECT_EQ(Click(L"25", 1, kReps), "25");
}

TEST(StepNumber, EveryValueOfTheRangeIsReachedAndTheEndsHold) {
  std::wstring text = L"0.4";
  for (int step = 1; step <= 96; ++step) {
    text = FormatNumber(StepNumber(ParseNumber(text.c_str()), 1, kSigma, false),
                        {2});
    char expected[16];
    std::snprintf(expected, sizeof(expected), "%g", (4 + step) / 10.0);
    ASSERT_EQ(Narrow(text), expected);
  }
  EXPECT_EQ(Click(text, 1, kSigma), "10");
  for (int step = 1; step <= 96; ++step) {
    text = FormatNumber(
        StepNumber(ParseNumber(text.c_str()), -1, kSigma, false), {2});
  }
  EXPECT_EQ(Narrow(text), "0.4");
  EXPECT_EQ(Click(text, -1, kSigma), "0.4");
}

TEST(StepNumber, WideRangeStillMovesByOneStep) {
  const NumberRange wide{-1e6, 1e6, 0.25};
  EXPECT_EQ(StepNumber(100, 1, wide, false), 100.25);
  EXPECT_EQ(StepNumber(100, -1, wide, false), 99.75);
}

TEST(StepNumber, SeveralStepsAtOnce) {
  EXPECT_EQ(StepNumber(10, 5, kLength, false), 15);
  EXPECT_EQ(StepNumber(10, -20, kLength, false), 0);
  EXPECT_EQ(StepNumber(990, 20, kLength, false), 1000);
}

TEST(StepNumber, NoStepLeavesTheValueAsItIs) {
  for (const double value : {-7.0, 0.4, 5.0, 10.0, 50.0}) {
    EXPECT_EQ(StepNumber(value, 0, kSigma, true), value);
  }
}

TEST(StepNumber, ValueBeyondAnEndComesBackToItInEitherDirection) {
  for (const int delta : {-1, 1}) {
    EXPECT_EQ(Click(L"50", delta, kSigma), "10") << delta;
    EXPECT_EQ(Click(L"10.05", delta, kSigma), "10") << delta;
    EXPECT_EQ(Click(L"-7", delta, kSigma), "0.4") << delta;
    EXPECT_EQ(Click(L"0.35", delta, kSigma), "0.4") << delta;
    EXPECT_EQ(Click(L"", delta, kSigma), "0.4") << delta;
    EXPECT_EQ(Click(L"inf", delta, kSigma), "10") << delta;
    EXPECT_EQ(Click(L"-inf", delta, kSigma), "0.4") << delta;
  }
}

TEST(StepNumber, WrapsAroundWhenAsked) {
  EXPECT_EQ(Click(L"0.4", -1, kSigma, true), "10");
  EXPECT_EQ(Click(L"10", 1, kSigma, true), "0.4");
  EXPECT_EQ(Click(L"9.9", 1, kSigma, true), "10");
  EXPECT_EQ(Click(L"0.5", -1, kSigma, true), "0.4");
}

TEST(StepNumber, WrappingLeavesTheEndBehindACorrection) {
  EXPECT_EQ(Click(L"50", -1, kSigma, true), "10");
  EXPECT_EQ(Click(L"-7", 1, kSigma, true), "0.4");
}

TEST(StepNumber, RoundingErrorsAtAnEndAreNoOvershoot) {
  // Ten steps of 0.1 up from 9 end a little beside 10.
  double value = 9;
  for (int i = 0; i < 10; ++i) value = StepNumber(value, 1, kSigma, true);
  EXPECT_NEAR(value, 10, 1e-9);
  EXPECT_EQ(StepNumber(10 - 0.1 + 5e-10, 1, kSigma, true), 10);
  EXPECT_EQ(StepNumber(10 - 0.1 + 1e-7, 1, kSigma, true), 0.4);
}

TEST(StepNumber, RoundingErrorsAtAnEndDoNotWrapAround) {
  // 0.3 - 0.1 is less than 0.2, 0.1 + 0.2 more than 0.3.
  EXPECT_EQ(StepNumber(0.3, -1, {0.2, 0.8, 0.1}, true), 0.2);
  EXPECT_EQ(StepNumber(0.1, 1, {0.1, 0.3, 0.2}, true), 0.3);
}

TEST(StepNumber, NoTraceOfRoundingIsLeftAtZero) {
  // 5 * 0.07 is a little above 0.35; the text would be -5.55e-17.
  EXPECT_EQ(Click(L"0.35", -5, {0, 7, 0.07}), "0");
}

TEST(StepNumber, ToleranceGrowsWithTheEnd) {
  const NumberRange huge{-1e12, 1e12, 1};
  EXPECT_EQ(StepNumber(1e12, 500, huge, true), 1e12);
  EXPECT_EQ(StepNumber(1e12, 2000, huge, true), -1e12);
}

TEST(StepNumber, UndefinedValueStartsAtTheMinimum) {
  EXPECT_EQ(StepNumber(kNotANumber, 1, kSigma, false), 0.4);
  EXPECT_EQ(StepNumber(kNotANumber, -1, kSigma, true), 0.4);
}

TEST(StepNumber, NothingLeavesTheRangeFromAnywhere) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> anywhere(-30, 60);
  std::uniform_int_distribution<int> deltas(-8, 8);
  for (int i = 0; i < 20000; ++i) {
    const double value = anywhere(random);
    const int delta = deltas(random);
    if (delta == 0) continue;
    for (const bool wrap : {false, true}) {
      const double stepped = StepNumber(value, delta, kReps, wrap);
      ASSERT_GE(stepped, 0) << value << " " << delta;
      ASSERT_LE(stepped, 25) << value << " " << delta;
    }
  }
}

}  // namespace
