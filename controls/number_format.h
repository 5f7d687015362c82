// SPDX-License-Identifier: MIT
//
// The arithmetic of a numeric spin control, without any window: what text a
// value has, where one click leads, and where the control's own integer
// position stands.
#pragma once

#include <optional>
#include <string>

// How a value is written.
struct NumberFormat {
  // Digits after the decimal separator; -1: general format.
  int m_decimals = -1;
  // Remove trailing zeros, and the separator if nothing follows it.
  bool m_trimZeros = true;
  // The C locale's, at the time this was made.
  char m_separator = DecimalSeparator();

  static char DecimalSeparator();
};

// A range with its step. The step may have either sign; a minimum above the
// maximum is taken as it is.
struct NumberRange {
  double m_minimum = 0.0;
  double m_maximum = 100.0;
  double m_step = 1.0;
};

// The native control counts its position in 16 bits.
inline constexpr int kMostNativePositions = 32767;

// The text of `value`: "%g" without decimals; else a fixed format with that
// many digits, or the exponent form with that many where "%g" needs one. An
// exponent is never trimmed.
std::wstring FormatNumber(double value, const NumberFormat& format);

// The leading number of `text`; 0 if there is none.
double ParseNumber(const wchar_t* text);

// Steps across the range, at most kMostNativePositions. Requires a step other
// than 0.
int NativePositions(const NumberRange& range);

// The native position, 0 ... positions, that mirrors `value`; nothing if the
// range is empty.
std::optional<int> NativePosition(double value, const NumberRange& range,
                                  int positions);

// `value` after `delta` steps (negative: down). A step that leads beyond the
// end ahead stops there, or goes on at the other end if `wrap`. A value that
// was beyond the end behind comes back to that end, whatever the step. What is
// beyond an end by no more than 1e-9 (relative above 1) got there by rounding
// and is that end. Not a number: the minimum.
double StepNumber(double value, int delta, const NumberRange& range, bool wrap);
