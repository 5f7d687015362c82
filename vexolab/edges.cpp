// SPDX-License-Identifier: MIT
#include "vexolab/edges.h"

#include <cmath>
#include <cstring>
#include <numbers>

namespace vexolab {
namespace {

// Below this an extremum is rounding of the interpolation, not grey levels.
constexpr double kSmallestAmplitude = 1e-3;

// The interpolated peak is never higher than this times its largest sample at
// the smallest sigma in use: weak extrema need no logarithms.
constexpr double kPeakOverSample = 2.0;

}  // namespace

peak peak_of(double before, double at, double after) {
  if (!(before * at > 0) || !(after * at > 0)) return {0, at, 0};
  const double left = std::log(before / at);
  const double right = std::log(after / at);
  const double bend = left + right;
  if (!(bend < -1e-9)) return {0, at, 0};
  const double offset = (left - right) / (2 * bend);
  if (std::fabs(offset) > 1) return {0, at, 0};
  return {offset, at * std::exp(-0.5 * bend * offset * offset), -1 / bend};
}

void find_edges(const profile& p, const derivative& d, double sigma,
                double threshold, std::vector<edge>* edges) {
  const double gain =
      std::sqrt(2 * std::numbers::pi * (sigma * sigma + kSamplingVariance));
  const double least = std::max(threshold, kSmallestAmplitude);
  const auto weakest = static_cast<float>(least / (gain * kPeakOverSample));
  int i = 1;
  while (i + 1 < d.size()) {
    const float height = std::fabs(d[i]);
    // Equal values form one plateau: its first one speaks for it.
    int end = i + 1;
    while (end < d.size() && d[end] == d[i]) ++end;
    const bool extremum = end < d.size() && height > std::fabs(d[i - 1]) &&
                          height > std::fabs(d[end]);
    if (extremum && height >= weakest) {
      const int middle = (i + end - 1) / 2;
      const peak top = peak_of(d[middle - 1], d[middle], d[middle + 1]);
      const double amplitude = top.height * gain;
      if (std::fabs(amplitude) >= least) {
        edges->push_back({middle, p.u(middle + 0.5 + top.offset), amplitude});
      }
    }
    i = end;
  }
}

bool parse_selection(const char* text, selection* result) {
  static constexpr struct {
    const char* text;
    selection meaning;
  } kSelections[] = {
      {"first", {choice::first, polarity::any}},
      {"first+", {choice::first, polarity::rising}},
      {"first-", {choice::first, polarity::falling}},
      {"last", {choice::last, polarity::any}},
      {"last+", {choice::last, polarity::rising}},
      {"last-", {choice::last, polarity::falling}},
      {"strongest", {choice::strongest, polarity::any}},
  };
  if (!text) return false;
  for (const auto& known : kSelections) {
    if (std::strcmp(text, known.text) == 0) {
      *result = known.meaning;
      return true;
    }
  }
  return false;
}

const edge* select(const std::vector<edge>& edges, const selection& s) {
  const edge* chosen = nullptr;
  for (const edge& e : edges) {
    if (s.sign == polarity::rising && e.amplitude < 0) continue;
    if (s.sign == polarity::falling && e.amplitude > 0) continue;
    const bool better = !chosen || s.which == choice::last ||
                        (s.which == choice::strongest &&
                         std::fabs(e.amplitude) > std::fabs(chosen->amplitude));
    if (better) chosen = &e;
  }
  return chosen;
}

}  // namespace vexolab
