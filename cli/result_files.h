// SPDX-License-Identifier: MIT
#ifndef RENDAL_CLI_RESULT_FILES_H_
#define RENDAL_CLI_RESULT_FILES_H_

#include <filesystem>
#include <memory>
#include <string>

#include "cli/image_run.h"
#include "recipes/output_file.h"

namespace rendal {

// Empty: not wanted.
struct ResultPaths {
  std::filesystem::path csv;
  std::filesystem::path measurements;
  std::filesystem::path points;
  std::filesystem::path json;
  std::filesystem::path coco;
};

// The files that hold the results of all images. Rows are written as they come,
// so memory does not grow with the number of images; the files take their names
// in Commit(). Everything throws OutputError.
class ResultFiles {
 public:
  // `image_column`: tables begin with the image's name.
  ResultFiles(const ResultPaths& paths, bool image_column);

  void Add(const std::string& image, const ImageResult& result);
  void Commit();

 private:
  using File = std::unique_ptr<OutputFile>;

  File OpenTable(const std::filesystem::path& path, Cells columns) const;
  void AddRow(OutputFile& file, const std::string& image, Cells cells) const;
  void AddJson(const std::string& image, const ImageResult& result);
  void AddCoco(const std::string& image, const ImageResult& result);

  bool m_imageColumn;
  File m_csv, m_measurements, m_points, m_json, m_coco;
  bool m_anyJson = false;
  size_t m_annotations = 0;
  size_t m_images = 0;
  std::string m_cocoImages;
};

}  // namespace rendal

#endif  // RENDAL_CLI_RESULT_FILES_H_
