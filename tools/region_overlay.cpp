// SPDX-License-Identifier: MIT
#include "tools/region_overlay.h"

#include <algorithm>
#include <cstdio>

namespace rendal {
namespace {

// clang-format off
constexpr std::array<std::array<int32_t, 3>, kPaletteSize> kPalette = {{
    {255,   0,   0}, {255,   0, 255}, {  0, 191, 255}, {255, 140,   0},
    {202, 255, 112}, {139,  28,  98}, {250, 128, 114}, {  0, 250, 154},
    { 50, 205,  50}, {148,   0, 211}, {139,  35,  35}, {  0,   0, 255},
    {255, 105, 180}, {139, 105,  20}, {  0, 134, 139}, {208,  32, 144},
}};
// clang-format on

std::vector<vexo::chord> GatherChords(const std::vector<OverlayItem>& items) {
  size_t count = 0;
  for (const OverlayItem& item : items) count += item.chords.size();
  std::vector<vexo::chord> chords;
  chords.reserve(count);
  for (size_t i = 0; i < items.size(); ++i) {
    for (vexo::chord chord : items[i].chords) {
      chord.label = static_cast<int32_t>(i);
      chords.push_back(chord);
    }
  }
  return chords;
}

// Orders by row, otherwise leaving the order as it is: a radix sort over the
// digits that the rows actually use, so one or two passes for any image.
void SortByRow(std::vector<vexo::chord>* chords) {
  constexpr int kDigitBits = 11;
  constexpr uint32_t kDigits = 1u << kDigitBits;
  const auto by_row = [](const vexo::chord& a, const vexo::chord& b) {
    return a.row < b.row;
  };
  if (std::is_sorted(chords->begin(), chords->end(), by_row)) return;
  const auto [low, high] =
      std::minmax_element(chords->begin(), chords->end(), by_row);
  const uint32_t first = static_cast<uint32_t>(low->row);
  const uint32_t range = static_cast<uint32_t>(high->row) - first;
  std::vector<vexo::chord> sorted(chords->size());
  for (int shift = 0; shift < 32 && (range >> shift) != 0;
       shift += kDigitBits) {
    const auto digit = [first, shift](const vexo::chord& c) {
      return ((static_cast<uint32_t>(c.row) - first) >> shift) & (kDigits - 1);
    };
    std::array<size_t, kDigits + 1> next{};
    for (const vexo::chord& c : *chords) ++next[digit(c) + 1];
    for (uint32_t d = 0; d < kDigits; ++d) next[d + 1] += next[d];
    for (const vexo::chord& c : *chords) sorted[next[digit(c)]++] = c;
    chords->swap(sorted);
  }
}

OverlayItem MakeItem(const std::array<int32_t, 3>& rgb,
                     const vexo::region& region) {
  OverlayItem item{};
  item.color[0] = rgb[2];
  item.color[1] = rgb[1];
  item.color[2] = rgb[0];
  if (region.chord_count > 0) {
    item.chords.assign(region.chords, region.chords + region.chord_count);
  }
  return item;
}

std::string Fixed4(double value) {
  // Room for the largest double: 309 digits, sign, point and four decimals.
  char text[320];
  std::snprintf(text, sizeof text, "%.4f", value);
  return text;
}

}  // namespace

void RegionOverlay::Replace(std::vector<OverlayItem> items) {
  std::vector<vexo::chord> chords = GatherChords(items);
  SortByRow(&chords);
  std::vector<int32_t> rows;
  std::vector<size_t> begins;
  for (size_t i = 0; i < chords.size(); ++i) {
    if (i == 0 || chords[i].row != rows.back()) {
      rows.push_back(chords[i].row);
      begins.push_back(i);
    }
  }
  begins.push_back(chords.size());
  m_items.swap(items);
  m_chords.swap(chords);
  m_rows.swap(rows);
  m_rowBegins.swap(begins);
}

void RegionOverlay::clear() { *this = RegionOverlay(); }

RegionOverlay::RowChords RegionOverlay::Row(int32_t row) const {
  const auto found = std::lower_bound(m_rows.begin(), m_rows.end(), row);
  if (found == m_rows.end() || *found != row) return {};
  const size_t k = found - m_rows.begin();
  return RowChords(m_chords).subspan(m_rowBegins[k],
                                     m_rowBegins[k + 1] - m_rowBegins[k]);
}

const std::array<int32_t, 3>& PaletteColor(size_t number) {
  return kPalette[number % kPaletteSize];
}

std::vector<OverlayItem> SingleRegionItems(const vexo::region& region) {
  std::vector<OverlayItem> items;
  items.push_back(MakeItem({255, 0, 0}, region));
  return items;
}

std::vector<OverlayItem> ComponentItems(const vexo::region& components) {
  std::vector<OverlayItem> items;
  items.reserve(std::max(components.child_count, 0));
  for (int32_t i = 0; i < components.child_count; ++i) {
    items.push_back(MakeItem(PaletteColor(i), *components.children[i]));
  }
  return items;
}

std::vector<FeatureRow> FeatureRows(const vexo::region& components,
                                    size_t limit) {
  const size_t count =
      std::min<size_t>(std::max(components.child_count, 0), limit);
  std::vector<FeatureRow> rows;
  rows.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    const vexo::region& c = *components.children[i];
    rows.push_back({std::to_string(i + 1), std::to_string(c.area),
                    Fixed4(c.ra()), Fixed4(c.rb()), Fixed4(c.phi()),
                    Fixed4(c.rect_half_length1()),
                    Fixed4(c.rect_half_length2()), Fixed4(c.rect_angle()),
                    Fixed4(c.circularity())});
  }
  return rows;
}

}  // namespace rendal
