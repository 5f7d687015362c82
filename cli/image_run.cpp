// SPDX-License-Identifier: MIT
#include "cli/image_run.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "app/view/image_loader.h"
#include "app/view/view_painter.h"
#include "recipes/number_text.h"
#include "recipes/output_file.h"
#include "recipes/run_step.h"
#include "tools/console_text.h"
#include "tools/long_path.h"
#include "tools/status.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;

constexpr double kMostPicturePixels = 1 << 28;

void WritePng(const fs::path& path, const cv::Mat& picture) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(".png", picture, bytes)) {
    throw OutputError("cannot write " + Utf8Of(path) +
                      ": it cannot be encoded");
  }
  WriteOutput(path,
              {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

// The image library has an error of its own for it.
bool IsOutOfMemory(const std::exception& error) {
  const auto* const of_library = dynamic_cast<const cv::Exception*>(&error);
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr ||
         (of_library != nullptr && of_library->code == cv::Error::StsNoMem);
}

std::string TextOf(const std::exception& error) {
  return IsOutOfMemory(error) ? "out of memory" : error.what();
}

// Why a file cannot be worked on; nothing if it can.
std::string WhyNot(const fs::path& path, const Workbench& bench,
                   const LoadReport& report) {
  if (!report.trouble.empty()) return "the file " + report.trouble;
  if (bench.HasImage()) return {};
  if (report.too_large) {
    const auto [width, height] = *report.too_large;
    return messages::ImageTooLarge(kEnglish, width, height,
                                   bench.m_maxImagePixels)
        .text;
  }
  if (!bench.m_srcImage.empty()) {
    return "images of " + std::to_string(report.channels) +
           " channels are not supported";
  }
  std::error_code error;
  if (!fs::exists(path, error)) return "there is no such file";
  if (!fs::is_regular_file(path, error)) return "it is no file";
  if (!std::ifstream(WithoutLengthLimit(path), std::ios::binary)) {
    return "it cannot be read";
  }
  return "it is no image";
}

// The whole picture as the dialog draws it.
cv::Mat Overlay(Workbench& bench, double zoom) {
  ViewState view;
  view.zoom = static_cast<float>(zoom);
  // The middle of an enlarged pixel is its place, so the first one begins half
  // a pixel before that.
  view.offsetX = view.offsetY = std::max(view.zoom - 1, 0.0f) / 2;
  const double width = std::round(bench.m_srcImage.cols * zoom);
  const double height = std::round(bench.m_srcImage.rows * zoom);
  if (std::max(width, 1.0) * std::max(height, 1.0) > kMostPicturePixels) {
    throw std::runtime_error("the overlay would have " + NumberText(width) +
                             " x " + NumberText(height) +
                             " pixels: choose a smaller zoom");
  }
  view.viewWidth = std::max(static_cast<int>(width), 1);
  view.viewHeight = std::max(static_cast<int>(height), 1);
  bench.RequestRedraw();
  cv::Mat picture;
  RefreshView(bench, view, &picture);
  return picture;
}

class ImageRun {
 public:
  ImageRun(const ImageWishes& wishes, ImageResult* result)
      : m_wishes(wishes), m_result(*result) {
    m_bench.m_language = kEnglish;
    m_bench.m_isShown = !wishes.overlay.empty();
    m_bench.m_keepsEmptyRegions = true;
  }

  void Run(const std::vector<Step>& steps, const fs::path& image) {
    LoadReport report;
    ViewState view;
    LoadImageFile(image, m_bench, view, &report);
    m_result.error = WhyNot(image, m_bench, report);
    if (!m_result.error.empty()) return;
    if (!report.grey_values.empty()) {
      m_result.notes.push_back(report.grey_values);
    }
    m_result.width = m_bench.m_srcImage.cols;
    m_result.height = m_bench.m_srcImage.rows;
    for (size_t i = 0; i < steps.size(); ++i) DoStep(i, steps[i]);
    TakeComponents();
    WritePictures();
  }

 private:
  void DoStep(size_t number, const Step& step) {
    const StepReport report = RunStep(step, m_bench);
    const std::string place = "steps[" + std::to_string(number) + "]: ";
    if (report.status.tone == Tone::kError) {
      throw std::runtime_error(place + report.status.text);
    }
    for (Measurement& m : MeasurementsOf(number, report)) {
      if (m.code < 0) {
        m_result.failures.push_back(place + m.kind + ": " +
                                    vexolab_error_text(m.code));
      }
      m_result.measurements.push_back(std::move(m));
    }
  }

  void TakeComponents() {
    const ComponentSet& components = m_bench.m_components;
    m_result.is_labelled = !components.IsNull();
    if (!m_result.is_labelled) return;
    m_result.components = ValuesOf(components);
    if (m_wishes.coco) {
      m_result.masks = CocoMasks(components, m_result.width, m_result.height,
                                 m_wishes.compressed_rle);
    }
  }

  void WritePictures() {
    if (!m_wishes.labels.empty() && !m_result.is_labelled) {
      m_result.notes.push_back("no \"connection\", so no picture of labels");
    } else if (!m_wishes.labels.empty()) {
      WritePicture(m_wishes.labels, [this] {
        return LabelPicture(m_bench.m_components, m_result.width,
                            m_result.height);
      });
    }
    if (!m_wishes.overlay.empty()) {
      WritePicture(m_wishes.overlay,
                   [this] { return Overlay(m_bench, m_wishes.zoom); });
    }
  }

  template <typename Draw>
  void WritePicture(const fs::path& path, Draw draw) {
    try {
      WritePng(path, draw());
    } catch (const std::exception& error) {
      m_result.failures.push_back(IsOutOfMemory(error)
                                      ? "cannot write " + Utf8Of(path) +
                                            ": out of memory"
                                      : error.what());
    }
  }

  const ImageWishes& m_wishes;
  ImageResult& m_result;
  Workbench m_bench;
};

}  // namespace

ImageResult RunImage(const std::vector<Step>& steps, const fs::path& image,
                     const ImageWishes& wishes) {
  const ConsoleCapture console;
  ImageResult result;
  try {
    ImageRun(wishes, &result).Run(steps, image);
  } catch (const std::exception& error) {
    result = {};
    result.error = TextOf(error);
  }
  return result;
}

std::string DescribeImage(const fs::path& image, std::string* error) {
  const ConsoleCapture console;
  Workbench bench;
  ViewState view;
  LoadReport report;
  try {
    LoadImageFile(image, bench, view, &report);
    *error = WhyNot(image, bench, report);
  } catch (const std::exception& failure) {
    *error = TextOf(failure);
  }
  if (!error->empty()) return {};
  const cv::Mat& grey = bench.m_srcImage;
  double least = 0;
  double most = 0;
  cv::minMaxLoc(grey, &least, &most);
  cv::Scalar mean, deviation;
  cv::meanStdDev(grey, mean, deviation);
  std::string text = "width      " + std::to_string(grey.cols) +
                     "\nheight     " + std::to_string(grey.rows) +
                     "\nchannels   " + std::to_string(report.channels) +
                     "\nbits       " + std::to_string(report.bits) +
                     (report.is_float ? " (floating point)" : "") +
                     "\ngrey_min   " + NumberText(least) + "\ngrey_max   " +
                     NumberText(most) + "\ngrey_mean  " + NumberText(mean[0]) +
                     "\ngrey_sd    " + NumberText(deviation[0]) + "\n";
  if (!report.grey_values.empty()) {
    text += "note       " + report.grey_values + "\n";
  }
  return text;
}

}  // namespace rendal
