// SPDX-License-Identifier: MIT
#include "cli/result_files.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace rendal {
namespace {

using nlohmann::ordered_json;

std::unique_ptr<OutputFile> Open(const std::filesystem::path& path) {
  return path.empty() ? nullptr : std::make_unique<OutputFile>(path);
}

std::string Dump(const ordered_json& json) {
  return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace

ResultFiles::ResultFiles(const ResultPaths& paths, bool image_column)
    : m_imageColumn(image_column),
      m_csv(OpenTable(paths.csv, ComponentColumns())),
      m_measurements(OpenTable(paths.measurements, MeasurementColumns())),
      m_points(OpenTable(paths.points, PointColumns())),
      m_json(Open(paths.json)),
      m_coco(Open(paths.coco)) {
  if (m_json) {
    m_json->Write("{\"version\":1,\"program\":\"rendal-cli " RENDAL_VERSION
                  "\",\"images\":[\n");
  }
  if (m_coco) {
    m_coco->Write("{\"info\":{\"description\":\"rendal-cli " RENDAL_VERSION
                  "\"},\n\"categories\":[{\"id\":1,\"name\":\"component\"}],\n"
                  "\"annotations\":[");
  }
}

ResultFiles::File ResultFiles::OpenTable(const std::filesystem::path& path,
                                         Cells columns) const {
  File file = Open(path);
  if (file) AddRow(*file, "image", std::move(columns));
  return file;
}

void ResultFiles::AddRow(OutputFile& file, const std::string& image,
                         Cells cells) const {
  if (m_imageColumn) cells.insert(cells.begin(), image);
  file.Write(CsvLine(cells));
}

void ResultFiles::Add(const std::string& image, const ImageResult& result) {
  if (m_json) AddJson(image, result);
  if (!result.error.empty()) return;
  if (m_csv) {
    for (size_t i = 0; i < result.components.size(); ++i) {
      AddRow(*m_csv, image, ComponentCells(i + 1, result.components[i]));
    }
  }
  for (const Measurement& m : result.measurements) {
    if (m_measurements) AddRow(*m_measurements, image, MeasurementCells(m));
    if (!m_points) continue;
    for (Cells& cells : PointRows(m)) AddRow(*m_points, image, cells);
  }
  if (m_coco) AddCoco(image, result);
}

void ResultFiles::AddJson(const std::string& image, const ImageResult& result) {
  if (m_anyJson) m_json->Write(",\n");
  m_anyJson = true;
  if (!result.error.empty()) {
    m_json->Write(FailedImageJson(image, result.error));
    return;
  }
  m_json->Write(ImageJson(image, result.width, result.height,
                          result.is_labelled ? &result.components : nullptr,
                          result.measurements));
}

void ResultFiles::AddCoco(const std::string& image, const ImageResult& result) {
  ++m_images;
  m_cocoImages +=
      (m_images > 1 ? ",\n" : "\n") + Dump({{"id", m_images},
                                            {"file_name", image},
                                            {"width", result.width},
                                            {"height", result.height}});
  for (const CocoMask& mask : result.masks) {
    ++m_annotations;
    const ordered_json annotation = {
        {"id", m_annotations}, {"image_id", m_images}, {"category_id", 1},
        {"iscrowd", 0},        {"area", mask.area},    {"bbox", mask.box}};
    std::string text = Dump(annotation);
    text.pop_back();
    m_coco->Write((m_annotations > 1 ? ",\n" : "\n") + text +
                  ",\"segmentation\":" + mask.segmentation + "}");
  }
}

void ResultFiles::Commit() {
  if (m_json) m_json->Write("\n]}\n");
  if (m_coco) m_coco->Write("],\n\"images\":[" + m_cocoImages + "]}\n");
  for (File* file : {&m_csv, &m_measurements, &m_points, &m_json, &m_coco}) {
    if (*file) (*file)->Commit();
  }
}

}  // namespace rendal
