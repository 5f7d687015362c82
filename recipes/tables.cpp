// SPDX-License-Identifier: MIT
#include "recipes/tables.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "recipes/number_text.h"

namespace rendal {
namespace {

using nlohmann::ordered_json;

const char* KindName(uint8_t kind) {
  constexpr const char* kNames[] = {"line", "circle", "band", "ellipse"};
  return kNames[kind];
}

bool IsLine(const Measurement& m) {
  const std::string_view kind = m.kind;
  return kind == "line" || kind == "find_line";
}

// Names and values of the fitted shape.
std::vector<std::pair<const char*, double>> ShapeValues(const Measurement& m) {
  if (!m.has_shape) return {};
  const double* const v = m.shape;
  if (IsLine(m)) {
    return {{"x", v[2]},
            {"y", v[3]},
            {"dx", v[0]},
            {"dy", v[1]},
            {"angle", LineAngle(v[0], v[1])}};
  }
  if (m.kind == std::string_view("circle")) {
    return {{"x", v[0]}, {"y", v[1]}, {"radius", v[2]}};
  }
  return {{"x", v[0]},
          {"y", v[1]},
          {"angle", v[2]},
          {"half_axis_1", v[3]},
          {"half_axis_2", v[4]}};
}

constexpr const char* kShapeColumns[] = {
    "x", "y", "dx", "dy", "angle", "radius", "half_axis_1", "half_axis_2"};

ordered_json ComponentsAsJson(const std::vector<FeatureValues>& components) {
  ordered_json list = ordered_json::array();
  for (size_t i = 0; i < components.size(); ++i) {
    ordered_json object = {{"id", i + 1}};
    for (size_t k = 0; k < kFeatures; ++k) {
      ordered_json& value = object[Features()[k].name];
      value = components[i][k];
      if (Features()[k].is_whole) value = value.get<int64_t>();
    }
    list.push_back(std::move(object));
  }
  return list;
}

ordered_json PointsAsJson(const Measurement& m) {
  ordered_json list = ordered_json::array();
  for (const EdgePoint& p : m.points) {
    ordered_json point = {{"x", p.x}, {"y", p.y}};
    if (m.has_shape) {
      point["distance"] = p.distance;
      point["used"] = p.used;
    } else if (m.kind == std::string_view("band")) {
      point["amplitude"] = p.amplitude;
    }
    list.push_back(std::move(point));
  }
  return list;
}

ordered_json AsJson(const Measurement& m) {
  ordered_json object = {{"step", m.step}, {"kind", m.kind}, {"code", m.code}};
  if (m.code < 0) object["error"] = vexolab_error_text(m.code);
  object["calipers"] = m.calipers;
  if (m.has_shape) {
    object["used"] = m.residuals.used;
    object["residual_rms"] = m.residuals.rms;
    object["residual_max"] = m.residuals.max;
    for (const auto& [name, value] : ShapeValues(m)) object[name] = value;
  }
  object["points"] = PointsAsJson(m);
  if (m.kind == std::string_view("find_line")) {
    ordered_json& segments = object["segments"] = ordered_json::array();
    for (const cv::Vec4i& s : m.segments) {
      segments.push_back({s[0], s[1], s[2], s[3]});
    }
    ordered_json& edges = object["edges"] = ordered_json::array();
    for (const EdgePoint& p : m.edges) {
      edges.push_back({{"caliper", p.caliper + 1},
                       {"x", p.x},
                       {"y", p.y},
                       {"amplitude", p.amplitude}});
    }
  }
  return object;
}

// File names need not be text.
std::string Dump(const ordered_json& json) {
  return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace

std::vector<FeatureValues> ValuesOf(const ComponentSet& components) {
  std::vector<FeatureValues> rows(components.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    std::transform(
        Features().begin(), Features().end(), rows[i].begin(),
        [&](const Feature& feature) { return feature.value(components[i]); });
  }
  return rows;
}

std::vector<Measurement> MeasurementsOf(size_t step, const StepReport& report) {
  std::vector<Measurement> list;
  if (report.measured && report.measured->done) {
    const MeasureReport& m = *report.measured;
    Measurement measurement = {
        step, KindName(m.roi.kind), m.code, m.calipers, m.points, false,
        {},   m.residuals,          {},     {}};
    measurement.has_shape = m.code == 0 && m.roi.kind != kToolBand;
    std::copy(std::begin(m.shape), std::end(m.shape), measurement.shape);
    list.push_back(std::move(measurement));
  }
  if (report.line && report.line->done) {
    const LineReport& l = *report.line;
    Measurement measurement = {step,       "find_line", l.code, l.calipers,
                               l.points,   false,       {},     l.residuals,
                               l.segments, l.edges};
    measurement.has_shape = l.code == 0 && !l.segments.empty();
    std::copy(std::begin(l.line), std::end(l.line), measurement.shape);
    list.push_back(std::move(measurement));
  }
  return list;
}

Cells ComponentColumns() {
  Cells names = {"id"};
  for (const Feature& feature : Features()) names.push_back(feature.name);
  return names;
}

Cells ComponentCells(size_t id, const FeatureValues& values) {
  Cells cells = {std::to_string(id)};
  for (const double value : values) cells.push_back(NumberText(value));
  return cells;
}

Cells MeasurementColumns() {
  Cells names = {"step",   "kind", "code",         "error",       "calipers",
                 "points", "used", "residual_rms", "residual_max"};
  names.insert(names.end(), std::begin(kShapeColumns), std::end(kShapeColumns));
  names.push_back("segments");
  return names;
}

Cells MeasurementCells(const Measurement& m) {
  Cells cells = {
      std::to_string(m.step),     m.kind,
      std::to_string(m.code),     m.code < 0 ? vexolab_error_text(m.code) : "",
      std::to_string(m.calipers), std::to_string(m.points.size())};
  cells.push_back(m.has_shape ? std::to_string(m.residuals.used) : "");
  cells.push_back(m.has_shape ? NumberText(m.residuals.rms) : "");
  cells.push_back(m.has_shape ? NumberText(m.residuals.max) : "");
  const auto values = ShapeValues(m);
  for (const std::string_view name : kShapeColumns) {
    const auto found =
        std::find_if(values.begin(), values.end(),
                     [name](const auto& value) { return value.first == name; });
    cells.push_back(found == values.end() ? "" : NumberText(found->second));
  }
  const bool finder = m.kind == std::string_view("find_line");
  cells.push_back(finder ? std::to_string(m.segments.size()) : "");
  return cells;
}

Cells PointColumns() {
  return {"step", "kind",      "point",    "caliper", "x",
          "y",    "amplitude", "distance", "used"};
}

std::vector<Cells> PointRows(const Measurement& m) {
  std::vector<Cells> rows;
  const bool band = m.kind == std::string_view("band");
  for (size_t i = 0; i < m.points.size(); ++i) {
    const EdgePoint& p = m.points[i];
    rows.push_back({std::to_string(m.step), m.kind, std::to_string(i + 1), "",
                    NumberText(p.x), NumberText(p.y),
                    band ? NumberText(p.amplitude) : "",
                    m.has_shape ? NumberText(p.distance) : "",
                    m.has_shape ? (p.used ? "1" : "0") : ""});
  }
  for (size_t i = 0; i < m.edges.size(); ++i) {
    const EdgePoint& p = m.edges[i];
    rows.push_back({std::to_string(m.step), "edge", std::to_string(i + 1),
                    std::to_string(p.caliper + 1), NumberText(p.x),
                    NumberText(p.y), NumberText(p.amplitude), "", ""});
  }
  return rows;
}

std::string CsvLine(const Cells& cells) {
  std::string line;
  for (size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) line += ',';
    if (cells[i].find_first_of(",\"\r\n") == std::string::npos) {
      line += cells[i];
      continue;
    }
    line += '"';
    for (const char c : cells[i]) line.append(c == '"' ? 2 : 1, c);
    line += '"';
  }
  return line + '\n';
}

std::string ComponentCsv(const ComponentSet& components) {
  std::string csv = CsvLine(ComponentColumns());
  const std::vector<FeatureValues> rows = ValuesOf(components);
  for (size_t i = 0; i < rows.size(); ++i) {
    csv += CsvLine(ComponentCells(i + 1, rows[i]));
  }
  return csv;
}

std::string ComponentJson(const ComponentSet& components) {
  return Dump({{"objects", ComponentsAsJson(ValuesOf(components))}}) + "\n";
}

std::string ImageJson(const std::string& image, int width, int height,
                      const std::vector<FeatureValues>* components,
                      const std::vector<Measurement>& measurements) {
  ordered_json object = {
      {"image", image}, {"width", width}, {"height", height}};
  if (components != nullptr) object["objects"] = ComponentsAsJson(*components);
  if (!measurements.empty()) {
    ordered_json& list = object["measurements"] = ordered_json::array();
    for (const Measurement& m : measurements) list.push_back(AsJson(m));
  }
  return Dump(object);
}

std::string FailedImageJson(const std::string& image,
                            const std::string& error) {
  return Dump({{"image", image}, {"error", error}});
}

}  // namespace rendal
