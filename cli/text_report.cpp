// SPDX-License-Identifier: MIT
#include "cli/text_report.h"

#include <algorithm>
#include <vector>

namespace rendal {
namespace {

std::string Padded(const std::string& text, size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

// Columns to the right, two blanks apart.
std::string AlignedTable(const std::vector<Cells>& rows) {
  std::vector<size_t> widths(rows.front().size());
  for (const Cells& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], row[i].size());
    }
  }
  std::string text;
  for (const Cells& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) {
      if (i > 0) text += "  ";
      text += Padded(row[i], widths[i]);
    }
    text += '\n';
  }
  return text;
}

std::string ComponentText(const ImageResult& result) {
  std::vector<Cells> rows = {ComponentColumns()};
  for (size_t i = 0; i < result.components.size(); ++i) {
    rows.push_back(ComponentCells(i + 1, result.components[i]));
  }
  return AlignedTable(rows);
}

std::string MeasurementText(const Measurement& m) {
  const Cells names = MeasurementColumns();
  const Cells values = MeasurementCells(m);
  std::string text;
  for (size_t i = 0; i < names.size(); ++i) {
    if (values[i].empty()) continue;
    text +=
        names[i] + std::string(14 - names[i].size(), ' ') + values[i] + '\n';
  }
  for (const cv::Vec4i& s : m.segments) {
    text += "segment       " + std::to_string(s[0]) + "," +
            std::to_string(s[1]) + "," + std::to_string(s[2]) + "," +
            std::to_string(s[3]) + '\n';
  }
  std::vector<Cells> rows = PointRows(m);
  if (rows.empty()) return text;
  rows.insert(rows.begin(), PointColumns());
  return text + '\n' + AlignedTable(rows);
}

std::string Counted(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

std::string TextReport(const ImageResult& result) {
  std::string text;
  if (result.is_labelled) text += ComponentText(result);
  for (const Measurement& m : result.measurements) {
    if (!text.empty()) text += '\n';
    text += MeasurementText(m);
  }
  return text;
}

std::string TextSummary(const ImageResult& result) {
  if (!result.error.empty()) return result.error;
  std::string text;
  if (result.is_labelled) {
    text += Counted(result.components.size(), "component");
  }
  if (!result.measurements.empty()) {
    if (!text.empty()) text += ", ";
    text += Counted(result.measurements.size(), "measurement");
  }
  return text.empty() ? "done" : text;
}

}  // namespace rendal
