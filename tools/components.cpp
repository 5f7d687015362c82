// SPDX-License-Identifier: MIT
#include "tools/components.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

namespace rendal {
namespace {

using vexo::region;

bool TouchesBorder(const region& component, int width, int height) {
  return component.bbox[0] <= 0 || component.bbox[1] <= 0 ||
         component.bbox[2] >= height - 1 || component.bbox[3] >= width - 1;
}

bool IsKept(const region& component, const Selection& selection, int width,
            int height) {
  if (selection.exclude_border && TouchesBorder(component, width, height)) {
    return false;
  }
  return std::all_of(selection.limits.begin(), selection.limits.end(),
                     [&](const FeatureLimits& limits) {
                       const double value =
                           Features()[limits.feature].value(component);
                       return value >= limits.min && value <= limits.max;
                     });
}

}  // namespace

ComponentSet::ComponentSet(std::shared_ptr<region> labelled)
    : m_labelled(std::move(labelled)),
      m_kept(static_cast<size_t>(std::max(m_labelled->child_count, 0))) {
  std::iota(m_kept.begin(), m_kept.end(), 0);
}

ComponentSet ComponentSet::With(std::vector<int32_t> kept) const {
  ComponentSet set;
  set.m_labelled = m_labelled;
  set.m_kept = std::move(kept);
  return set;
}

void ComponentSet::Unite(region* united) const {
  std::vector<vexo::chord> chords;
  for (size_t i = 0; i < size(); ++i) {
    ForEachRun((*this)[i], [&chords](int32_t row, int32_t begin, int32_t end) {
      chords.push_back({begin, end, row, 0});
    });
  }
  std::sort(chords.begin(), chords.end(), std::less<vexo::chord>());
  united->reserve(chords.size());
  for (size_t i = 0; i < chords.size(); ++i) {
    united->rows[i] = chords[i].row;
    united->col_begins[i] = chords[i].col_begin;
    united->col_ends[i] = chords[i].col_end;
  }
  united->run_count = chords.size();
}

std::optional<size_t> ComponentSet::At(int32_t column, int32_t row) const {
  for (size_t i = 0; i < size(); ++i) {
    const region& component = (*this)[i];
    const int32_t* const box = component.bbox;
    if (row < box[0] || column < box[1] || row > box[2] || column > box[3]) {
      continue;
    }
    bool found = false;
    ForEachRun(component, [&](int32_t r, int32_t begin, int32_t end) {
      found |= r == row && begin <= column && column <= end;
    });
    if (found) return i;
  }
  return std::nullopt;
}

const std::array<Feature, kFeatures>& Features() {
  // clang-format off
  static constexpr std::array<Feature, kFeatures> features = {{
      {"area",        [](const region& r) -> double { return r.area; }, true},
      {"x",           [](const region& r) { return r.center_col(); }, false},
      {"y",           [](const region& r) { return r.center_row(); }, false},
      {"x_min",       [](const region& r) -> double { return r.bbox[1]; }, true},
      {"y_min",       [](const region& r) -> double { return r.bbox[0]; }, true},
      {"x_max",       [](const region& r) -> double { return r.bbox[3]; }, true},
      {"y_max",       [](const region& r) -> double { return r.bbox[2]; }, true},
      {"ra",          [](const region& r) { return r.ra(); }, false},
      {"rb",          [](const region& r) { return r.rb(); }, false},
      {"phi",         [](const region& r) { return r.phi(); }, false},
      {"rect2_len1",  [](const region& r) { return r.rect_half_length1(); }, false},
      {"rect2_len2",  [](const region& r) { return r.rect_half_length2(); }, false},
      {"rect2_phi",   [](const region& r) { return r.rect_angle(); }, false},
      {"circularity", [](const region& r) { return r.circularity(); }, false},
  }};
  // clang-format on
  return features;
}

std::optional<size_t> FeatureByName(std::string_view name) {
  for (size_t i = 0; i < Features().size(); ++i) {
    if (name == Features()[i].name) return i;
  }
  return std::nullopt;
}

ComponentSet Selected(const ComponentSet& components,
                      const Selection& selection, int width, int height) {
  std::vector<int32_t> kept;
  for (size_t i = 0; i < components.size(); ++i) {
    if (IsKept(components[i], selection, width, height)) {
      kept.push_back(components.ChildOf(i));
    }
  }
  return components.With(std::move(kept));
}

}  // namespace rendal
