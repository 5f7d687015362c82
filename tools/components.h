// SPDX-License-Identifier: MIT
//
// The components of a binarisation with all their features, and what a
// selection keeps of them.
#ifndef RENDAL_TOOLS_COMPONENTS_H_
#define RENDAL_TOOLS_COMPONENTS_H_

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "region/region.h"

namespace rendal {

// The children of a labelled region, or some of them. Copies share the region;
// copy and destroy them on one thread.
class ComponentSet {
 public:
  ComponentSet() = default;
  // All children, in their order.
  explicit ComponentSet(std::shared_ptr<vexo::region> labelled);
  // Some of the children of the same region.
  ComponentSet With(std::vector<int32_t> kept) const;

  // Before the first labelling.
  bool IsNull() const { return m_labelled == nullptr; }
  size_t size() const { return m_kept.size(); }
  vexo::region& operator[](size_t i) const {
    return *m_labelled->children[m_kept[i]];
  }
  // Number of component i among the children.
  int32_t ChildOf(size_t i) const { return m_kept[i]; }

  // The one with a pixel there; none in the background.
  // Cost: the number of components, then of one's runs.
  std::optional<size_t> At(int32_t column, int32_t row) const;

  // Their pixels as one region, as ordered runs.
  void Unite(vexo::region* united) const;

 private:
  std::shared_ptr<vexo::region> m_labelled;
  std::vector<int32_t> m_kept;  // children, ascending
};

// visit(row, begin, end) for every run of a region, from its runs or else from
// its chords.
template <typename Visit>
void ForEachRun(const vexo::region& region, Visit visit) {
  for (size_t i = 0; i < region.run_count; ++i) {
    visit(region.rows[i], region.col_begins[i], region.col_ends[i]);
  }
  if (region.run_count > 0) return;
  for (int32_t i = 0; i < region.chord_count; ++i) {
    const vexo::chord& c = region.chords[i];
    visit(c.row, c.col_begin, c.col_end);
  }
}

// A number that every component has; region/operations.h defines them. One
// pixel alone has an area, a bounding box and a centre: the others are -1.
struct Feature {
  const char* name;
  double (*value)(const vexo::region& component);
  bool is_whole;  // a whole number
};

inline constexpr size_t kFeatures = 14;

//   area                    pixels
//   x, y                    centre: mean column, mean row [px]
//   x_min, y_min,           bounding box, inclusive [px]
//   x_max, y_max
//   ra, rb                  half axes of the ellipse with the same second
//                           moments [px]
//   phi                     direction of its longer axis [degrees], counter-
//                           clockwise on screen
//   rect2_len1, rect2_len2  half sides of the smallest rectangle [px]
//   rect2_phi               direction of its longer side [degrees]
//   circularity             area / (pi dmax^2), at most 1; dmax: from the
//                           centre to the farthest pixel
//
// In the order of tables.
const std::array<Feature, kFeatures>& Features();

// Its place in Features().
std::optional<size_t> FeatureByName(std::string_view name);

// Both ends inclusive; no limit by default.
struct FeatureLimits {
  size_t feature = 0;
  double min = -std::numeric_limits<double>::infinity();
  double max = std::numeric_limits<double>::infinity();
  bool operator==(const FeatureLimits&) const = default;
};

// Components are kept that lie within all limits.
struct Selection {
  std::vector<FeatureLimits> limits;
  // Leave out what has a pixel in the image's first or last row or column.
  bool exclude_border = false;
  bool operator==(const Selection&) const = default;
};

// Cost: proportional to components times limits.
ComponentSet Selected(const ComponentSet& components,
                      const Selection& selection, int width, int height);

}  // namespace rendal

#endif  // RENDAL_TOOLS_COMPONENTS_H_
