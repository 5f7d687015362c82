// SPDX-License-Identifier: MIT
#include "app/view/image_loader.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "app/view/steady_file.h"
#include "tools/console_text.h"
#include "tools/long_path.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

// The decoder of byte arrays counts in int.
constexpr uintmax_t kMostBytes = INT_MAX;
constexpr unsigned char kJpegEnd = 0xD9;
constexpr unsigned char kJpegScanStart = 0xDA;

std::string Utf8(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

// `what` follows "the file".
void Report(const char* what, LoadReport* report) {
  ConsolePrintf("the image file %s\n", what);
  report->trouble = what;
}

// The bytes of a regular file; none if it cannot be read.
Bytes ReadFile(const fs::path& path, LoadReport* report) {
  auto bytes = ReadSteadyFile([&]() -> std::unique_ptr<std::istream> {
    auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
    if (!*file) return nullptr;
    return file;
  });
  if (bytes) return std::move(*bytes);
  Report("changes while it is read", report);
  return {};
}

// Position after the last marker FF `code`; 0 if there is none.
size_t AfterLastMarker(const Bytes& bytes, unsigned char code) {
  for (size_t i = bytes.size(); i >= 2; --i) {
    if (bytes[i - 2] == 0xFF && bytes[i - 1] == code) return i;
  }
  return 0;
}

bool IsJpeg(const Bytes& bytes) {
  return bytes.size() > 2 && bytes[0] == 0xFF && bytes[1] == 0xD8 &&
         bytes[2] == 0xFF;
}

// A scan's data holds no other markers, so the image's own end can only follow
// the start of its last scan; earlier ends are a thumbnail's.
bool JpegIsCutOff(const Bytes& bytes) {
  return AfterLastMarker(bytes, kJpegEnd) <=
         AfterLastMarker(bytes, kJpegScanStart);
}

// The JPEG decoder leaves what it gets no data for as memory happens to be. End
// markers, more of them than the last header segment can swallow, make it fill
// the rest of the picture with grey or give up.
void CloseJpeg(Bytes* bytes) {
  constexpr size_t kLongestSegment = 65535;
  for (size_t i = 0; i <= kLongestSegment; i += 2) {
    bytes->push_back(0xFF);
    bytes->push_back(kJpegEnd);
  }
}

cv::Mat Decode(const fs::path& path, uint64_t most_pixels, LoadReport* report) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return {};
  if (fs::file_size(path, error) > kMostBytes && !error) {
    Report("is larger than 2 GB", report);
    return {};
  }
  Bytes bytes = ReadFile(path, report);
  if (bytes.empty()) return {};
  const auto claimed = ReadClaimedSize(bytes);
  if (claimed && claimed->Exceeds(most_pixels)) {
    report->too_large = claimed;
    return {};
  }
  if (!claimed && !HasCommonFormat(bytes)) return {};
  if (IsDicom(bytes) || IsTiffOfTooFewSamples(bytes)) return {};
  if (IsJpeg(bytes) && JpegIsCutOff(bytes)) {
    Report("is cut off", report);
    if (AfterLastMarker(bytes, kJpegScanStart) == 0) return {};
    CloseJpeg(&bytes);
  }
  return cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
}

// As the image library delivers it; empty if it is no image. Memory that ran
// out is the only thing that leaves as an exception.
cv::Mat ReadImage(const fs::path& path, uint64_t most_pixels,
                  LoadReport* report) {
  cv::Mat image;
  try {
    image = Decode(WithoutLengthLimit(path), most_pixels, report);
  } catch (const cv::Exception& error) {
    if (error.code == cv::Error::StsNoMem) throw;
    ConsolePrintf("image library: %s\n", error.err.c_str());
  }
  if (image.empty() && !report->too_large) {
    ConsolePrintf("no image in %s\n", Utf8(path).c_str());
  }
  report->channels = image.channels();
  report->bits = static_cast<int>(image.elemSize1()) * 8;
  report->is_float = image.depth() == CV_32F || image.depth() == CV_64F;
  return image;
}

// One row at a time as double precision, so that a large image needs no second
// copy of itself.
template <typename Visit>
void ForEachRow(const cv::Mat& image, Visit visit) {
  cv::Mat values;
  for (int r = 0; r < image.rows; ++r) {
    image.row(r).convertTo(values, CV_64F);
    visit(r, values.ptr<double>());
  }
}

// Smallest and largest finite value of a one-channel image; 0, 0 when there is
// none.
std::pair<double, double> FiniteRange(const cv::Mat& image) {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  ForEachRow(image, [&](int, const double* row) {
    for (int c = 0; c < image.cols; ++c) {
      if (!std::isfinite(row[c])) continue;
      low = std::min(low, row[c]);
      high = std::max(high, row[c]);
    }
  });
  if (low > high) return {0, 0};
  return {low, high};
}

unsigned char Stretch(double value, double low, double high) {
  if (!(value > low)) return 0;  // also what is no number
  if (value >= high) return 255;
  // Halved so that the widest ranges do not overflow.
  const double part = (value / 2 - low / 2) / (high / 2 - low / 2);
  return static_cast<unsigned char>(std::lround(part * 255));
}

cv::Mat StretchRange(const cv::Mat& grey, std::string* note) {
  const auto range = FiniteRange(grey);
  const double low = range.first;
  const double high = range.second;
  cv::Mat result(grey.size(), CV_8U);
  ForEachRow(grey, [&](int r, const double* row) {
    unsigned char* const to = result.ptr(r);
    for (int c = 0; c < grey.cols; ++c) to[c] = Stretch(row[c], low, high);
  });
  if (note != nullptr) {
    char text[96];
    std::snprintf(text, sizeof text, "grey 0..255 shows values %g..%g", low,
                  high);
    *note = text;
  }
  return result;
}

cv::Mat SingleChannel(const cv::Mat& image) {
  if (image.channels() == 1) return image;
  cv::Mat color = image;
  // The conversion knows 8 and 16 bits and single precision.
  if (image.depth() != CV_8U && image.depth() != CV_16U) {
    image.convertTo(color, CV_32F);
  }
  cv::Mat grey;
  cv::cvtColor(
      color, grey,
      image.channels() == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
  return grey;
}

}  // namespace

cv::Mat ToGrey8(const cv::Mat& image, std::string* note) {
  const cv::Mat grey = SingleChannel(image);
  if (grey.depth() == CV_8U) return grey;
  if (grey.depth() != CV_16U) return StretchRange(grey, note);
  cv::Mat result;
  grey.convertTo(result, CV_8U, 1.0 / 257);
  return result;
}

Status LoadImageFile(const fs::path& path, Workbench& workbench,
                     ViewState& view, LoadReport* report) {
  LoadReport unused;
  if (report == nullptr) report = &unused;
  ConsolePrintf("src path = %s\n", Utf8(path).c_str());
  cv::Mat image = ReadImage(path, workbench.m_maxImagePixels, report);
  if (report->too_large) {
    const auto [width, height] = *report->too_large;
    return messages::ImageTooLarge(workbench.m_language, width, height,
                                   workbench.m_maxImagePixels);
  }
  const int channels = image.channels();
  if (channels != 1 && channels != 3 && channels != 4) {
    workbench.m_srcImage = image;
    return messages::ChannelsNotSupported(workbench.m_language, channels);
  }
  if (!image.empty()) {
    std::string& note = report->grey_values;
    image = ToGrey8(image, &note);
    if (!note.empty()) ConsolePrintf("%s\n", note.c_str());
  }
  Status status =
      messages::ImageOpened(workbench.m_language, image.cols, image.rows);
  std::vector<RoiShape> shapes = ShapesForImage(image.cols, image.rows);
  // Nothing below throws.
  workbench.m_srcImage = image;
  workbench.m_roiShapes.swap(shapes);
  view.FitTo(image.size());
  workbench.RequestRedraw();
  workbench.m_hideResults = 1;
  return status;
}

}  // namespace rendal
