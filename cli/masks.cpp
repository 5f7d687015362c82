// SPDX-License-Identifier: MIT
#include "cli/masks.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace rendal {
namespace {

// The rows of a component, column by column, each column's ascending.
class ColumnRows {
 public:
  explicit ColumnRows(const vexo::region& component)
      : m_first(component.bbox[1]),
        m_ends(static_cast<size_t>(component.bbox[3] - m_first) + 2) {
    ForEachRun(component, [this](int32_t, int32_t begin, int32_t end) {
      for (int32_t c = begin; c <= end; ++c) ++m_ends[c - m_first + 1];
    });
    std::partial_sum(m_ends.begin(), m_ends.end(), m_ends.begin());
    m_rows.resize(m_ends.back());
    std::vector<size_t> next = m_ends;
    ForEachRun(component, [&](int32_t row, int32_t begin, int32_t end) {
      for (int32_t c = begin; c <= end; ++c) m_rows[next[c - m_first]++] = row;
    });
  }

  // visit(column, row) in column-major order.
  template <typename Visit>
  void ForEach(Visit visit) const {
    for (size_t c = 0; c + 1 < m_ends.size(); ++c) {
      for (size_t i = m_ends[c]; i < m_ends[c + 1]; ++i) {
        visit(m_first + static_cast<int32_t>(c), m_rows[i]);
      }
    }
  }

 private:
  int32_t m_first;
  std::vector<size_t> m_ends;  // column c's rows are m_ends[c]..m_ends[c + 1]
  std::vector<int32_t> m_rows;
};

}  // namespace

cv::Mat LabelPicture(const ComponentSet& components, int width, int height) {
  if (components.size() > kMostLabels) {
    throw std::runtime_error(std::to_string(components.size()) +
                             " components do not fit a 16-bit label picture");
  }
  cv::Mat picture(height, width, CV_16U, cv::Scalar(0));
  for (size_t i = 0; i < components.size(); ++i) {
    ForEachRun(components[i], [&](int32_t row, int32_t begin, int32_t end) {
      uint16_t* const to = picture.ptr<uint16_t>(row);
      std::fill(to + begin, to + end + 1, static_cast<uint16_t>(i + 1));
    });
  }
  return picture;
}

std::vector<uint32_t> ColumnRunLengths(const vexo::region& component, int width,
                                       int height) {
  std::vector<uint32_t> lengths;
  int64_t end = 0;  // one past the pixels counted so far
  ColumnRows(component).ForEach([&](int32_t column, int32_t row) {
    const int64_t at = int64_t{column} * height + row;
    if (at != end || lengths.empty()) {
      lengths.push_back(static_cast<uint32_t>(at - end));
      lengths.push_back(0);
    }
    ++lengths.back();
    end = at + 1;
  });
  const int64_t all = int64_t{width} * height;
  if (end < all) lengths.push_back(static_cast<uint32_t>(all - end));
  return lengths;
}

std::string CompressedRunLengths(const std::vector<uint32_t>& lengths) {
  constexpr int kFirstLetter = 48;
  std::string text;
  for (size_t i = 0; i < lengths.size(); ++i) {
    int64_t value = lengths[i];
    if (i > 2) value -= lengths[i - 2];
    for (bool more = true; more;) {
      int group = static_cast<int>(value & 0x1F);
      value >>= 5;
      // The highest bit of the last group is the sign.
      more = (group & 0x10) != 0 ? value != -1 : value != 0;
      if (more) group |= 0x20;
      text += static_cast<char>(group + kFirstLetter);
    }
  }
  return text;
}

std::vector<CocoMask> CocoMasks(const ComponentSet& components, int width,
                                int height, bool compressed) {
  std::vector<CocoMask> masks;
  for (size_t i = 0; i < components.size(); ++i) {
    const vexo::region& c = components[i];
    const std::vector<uint32_t> lengths = ColumnRunLengths(c, width, height);
    nlohmann::ordered_json segmentation = {{"size", {height, width}}};
    if (compressed) {
      segmentation["counts"] = CompressedRunLengths(lengths);
    } else {
      segmentation["counts"] = lengths;
    }
    masks.push_back({segmentation.dump(),
                     {c.bbox[1], c.bbox[0], c.bbox[3] - c.bbox[1] + 1,
                      c.bbox[2] - c.bbox[0] + 1},
                     c.area});
  }
  return masks;
}

}  // namespace rendal
