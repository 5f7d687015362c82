// SPDX-License-Identifier: MIT
//
// How regions reach the screen and the region list: coloured overlay items with
// an index by rows, the palette of components, and the formatted feature rows.
#ifndef RENDAL_TOOLS_REGION_OVERLAY_H_
#define RENDAL_TOOLS_REGION_OVERLAY_H_

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "region/region.h"
#include "tools/components.h"

namespace rendal {

// A region as the image view paints it. Owns a copy of the region's chords.
struct OverlayItem {
  double color[4];      // blue, green, red, 0
  int32_t reserved[4];  // always 0
  std::vector<vexo::chord> chords;
};

// The overlay items, in painting order: later items over earlier ones. They
// change as a whole only, which keeps the index by rows true: the cost of a
// picture follows the rows it shows, not the number of chords.
class RegionOverlay {
 public:
  // The chords of one row, in painting order; `label` is the item's number.
  using RowChords = std::span<const vexo::chord>;

  // Takes the items and indexes them. If memory runs out the overlay keeps
  // what it held. Cost: linear in the number of chords.
  void Replace(std::vector<OverlayItem> items);

  void clear();
  bool empty() const { return m_items.empty(); }
  size_t size() const { return m_items.size(); }
  const OverlayItem& operator[](size_t i) const { return m_items[i]; }
  auto begin() const { return m_items.begin(); }
  auto end() const { return m_items.end(); }

  // The chords of an image row; empty when there are none. Cost: logarithmic in
  // the number of rows.
  RowChords Row(int32_t row) const;

 private:
  std::vector<OverlayItem> m_items;
  std::vector<vexo::chord> m_chords;  // by row, then in painting order
  std::vector<int32_t> m_rows;        // distinct rows, ascending
  std::vector<size_t> m_rowBegins;    // one more than m_rows
};

inline constexpr int kPaletteSize = 16;

// Colour of component `number` (from 0): red, green, blue.
const std::array<int32_t, 3>& PaletteColor(size_t number);

// One red item with all chords of the region.
std::vector<OverlayItem> SingleRegionItems(const vexo::region& region);

// One item per component, in order, coloured from the palette.
std::vector<OverlayItem> ComponentItems(const ComponentSet& components);

inline constexpr std::array<const char*, 9> kFeatureColumns = {
    "id",         "area",       "ra",        "rb",         "phi",
    "rect2_len1", "rect2_len2", "rect2_phi", "circularity"};

// One text for each of these columns.
using FeatureRow = std::array<std::string, kFeatureColumns.size()>;

inline constexpr size_t kMaxFeatureRows = 100;

// The features of the first `limit` components as the region list shows them:
// whole numbers as they are, the rest with four decimals. Only formats what
// the components carry.
std::vector<FeatureRow> FeatureRows(const ComponentSet& components,
                                    size_t limit);

// The column names and the rows as spreadsheets take them from the clipboard:
// tabs between the cells, a carriage return and line feed behind every line.
std::string TabSeparated(std::span<const FeatureRow> rows);

}  // namespace rendal

#endif  // RENDAL_TOOLS_REGION_OVERLAY_H_
