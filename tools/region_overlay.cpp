// SPDX-License-Identifier: MIT
#include "tools/region_overlay.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

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

// What the items hold together.
struct Extent {
  size_t count = 0;
  int32_t first_row = INT32_MAX;
  int32_t last_row = INT32_MIN;
  bool is_ordered = true;  // by row, one item behind the other
};

Extent ExtentOf(const std::vector<OverlayItem>& items) {
  Extent all;
  int32_t previous = INT32_MIN;
  for (const OverlayItem& item : items) {
    all.count += item.chords.size();
    for (const vexo::chord& c : item.chords) {
      all.first_row = std::min(all.first_row, c.row);
      all.last_row = std::max(all.last_row, c.row);
      all.is_ordered &= c.row >= previous;
      previous = c.row;
    }
  }
  return all;
}

// Hands every chord to `visit`, labelled with its item's number.
template <typename Visit>
void VisitLabelled(const std::vector<OverlayItem>& items, Visit visit) {
  for (size_t i = 0; i < items.size(); ++i) {
    const int32_t number = static_cast<int32_t>(i);
    for (const vexo::chord& c : items[i].chords) {
      visit(vexo::chord{c.col_begin, c.col_end, c.row, number});
    }
  }
}

// Sorts by 16 bits of the row, otherwise leaving the order as it is. `for_each`
// hands every chord to its argument, in order, as often as it is called.
template <typename ForEach>
std::vector<vexo::chord> SortByDigit(const Extent& extent, int shift,
                                     ForEach for_each) {
  constexpr uint32_t kLastDigit = (1u << 16) - 1;
  const uint32_t first = static_cast<uint32_t>(extent.first_row);
  const auto digit = [first, shift](const vexo::chord& c) {
    return ((static_cast<uint32_t>(c.row) - first) >> shift) & kLastDigit;
  };
  const uint32_t range = static_cast<uint32_t>(extent.last_row) - first;
  std::vector<size_t> next(std::min(range, kLastDigit) + 2);
  for_each([&](const vexo::chord& c) { ++next[digit(c) + 1]; });
  std::partial_sum(next.begin(), next.end(), next.begin());
  std::vector<vexo::chord> sorted(extent.count);
  for_each([&](const vexo::chord& c) { sorted[next[digit(c)]++] = c; });
  return sorted;
}

// The chords of all items by row, within a row in the items' order. A region
// comes in this order. Components do not: a radix sort whose first pass reads
// the items and whose second pass is needed for more than 65536 rows only.
std::vector<vexo::chord> ChordsByRow(const std::vector<OverlayItem>& items) {
  const Extent extent = ExtentOf(items);
  if (extent.is_ordered) {
    std::vector<vexo::chord> chords;
    chords.reserve(extent.count);
    VisitLabelled(items, [&](const vexo::chord& c) { chords.push_back(c); });
    return chords;
  }
  std::vector<vexo::chord> sorted =
      SortByDigit(extent, 0, [&](auto visit) { VisitLabelled(items, visit); });
  const uint32_t range = static_cast<uint32_t>(extent.last_row) -
                         static_cast<uint32_t>(extent.first_row);
  if (range >> 16 == 0) return sorted;
  return SortByDigit(extent, 16, [&sorted](auto visit) {
    for (const vexo::chord& c : sorted) visit(c);
  });
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
  std::vector<vexo::chord> chords = ChordsByRow(items);
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

std::vector<OverlayItem> ComponentItems(const ComponentSet& components) {
  std::vector<OverlayItem> items;
  items.reserve(components.size());
  for (size_t i = 0; i < components.size(); ++i) {
    items.push_back(MakeItem(PaletteColor(i), components[i]));
  }
  return items;
}

std::vector<FeatureRow> FeatureRows(const ComponentSet& components,
                                    size_t limit) {
  const size_t count = std::min(components.size(), limit);
  std::vector<FeatureRow> rows;
  rows.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    const vexo::region& c = components[i];
    rows.push_back({std::to_string(i + 1), std::to_string(c.area),
                    Fixed4(c.ra()), Fixed4(c.rb()), Fixed4(c.phi()),
                    Fixed4(c.rect_half_length1()),
                    Fixed4(c.rect_half_length2()), Fixed4(c.rect_angle()),
                    Fixed4(c.circularity())});
  }
  return rows;
}

std::string TabSeparated(std::span<const FeatureRow> rows) {
  std::string text;
  const auto add = [&text](const auto& cells) {
    for (const auto& cell : cells) {
      text += cell;
      text += '\t';
    }
    text.replace(text.size() - 1, 1, "\r\n");
  };
  add(kFeatureColumns);
  for (const FeatureRow& row : rows) add(row);
  return text;
}

}  // namespace rendal
