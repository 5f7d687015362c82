// SPDX-License-Identifier: MIT
#include "tools/line_finder.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "tools/console_text.h"
#include "tools/measurement_library.h"

namespace rendal {
namespace {

// Edge detector
constexpr double kCannyLow = 200;
constexpr double kCannyHigh = 400;
constexpr int kCannyAperture = 3;

// Segments
constexpr double kDistanceStep = 1;
constexpr double kAngleStep = 0.017453292519943295;  // one degree
constexpr double kMaxGap = 20;

// Calipers along the segment
constexpr double kLength = 10;
constexpr double kWidth = 5;
constexpr int kDirection = 1;
constexpr int kAsManyAsFit = 0;

// First measurement: one edge per caliper, and a line through them
constexpr double kPointSigma = 1.0;
constexpr double kPointAmplitude = 50;
constexpr char kPointSelection[] = "first-";
constexpr int kFitMethod = 7;
constexpr float kFitFactor = 2;
constexpr int kFitIterations = 20;
constexpr int kFitLeast = 2;

// Second measurement: every edge of every caliper
constexpr double kEdgeSigma = 1.5;
constexpr double kEdgeAmplitude = 30;
constexpr int kDoublesPerEdge = 3;  // x, y, amplitude

std::vector<cv::Vec4i> FindSegments(const cv::Mat& image) {
  cv::Mat edges;
  cv::Canny(image, edges, kCannyLow, kCannyHigh, kCannyAperture, false);
  std::vector<cv::Vec4i> segments;
  cv::HoughLinesP(edges, segments, kDistanceStep, kAngleStep, image.cols / 4,
                  image.cols, kMaxGap);
  return segments;
}

// The edges of one caliper as the library hands them out.
struct Edges {
  const double* values = nullptr;
  int doubles = 0;

  cv::Point2f At(int i) const {
    return {static_cast<float>(values[i]), static_cast<float>(values[i + 1])};
  }
  double Amplitude(int i) const { return values[i + 2]; }
};

// The distance between the first rising and the first falling edge.
ShapeEntry DistanceEntry(const Edges& edges, int rising, int falling) {
  const double dx = edges.values[falling] - edges.values[rising];
  const double dy = edges.values[falling + 1] - edges.values[rising + 1];
  const cv::Point2f from = edges.At(rising);
  const cv::Point2f to = edges.At(falling);
  return {kNumber,
          {static_cast<float>(std::hypot(dx, dy)), from.x, from.y, to.x, to.y}};
}

// The measurements along one segment, and what of them is drawn.
class SegmentMeasurement {
 public:
  SegmentMeasurement(const Workbench& workbench, const cv::Vec4i& segment,
                     int display)
      : m_library(workbench.m_measurementLibrary),
        m_image(workbench.ImageWithoutPadding()),
        m_segment(segment),
        m_display(display) {}

  Result Run();
  LineReport TakeReport() { return std::move(m_report); }

 private:
  int GenerateRectangles(float** rectangles, int* count) const;
  bool FitLine();
  void MeasureEveryEdge();
  void MeasureEdgesOf(const MeasureRectangle& rectangle);
  void AddEdges(const Edges& edges);
  void Note(int code) {
    if (m_report.code == 0 && code < 0) m_report.code = code;
  }

  const MeasurementLibrary& m_library;
  const cv::Mat m_image;
  const cv::Vec4i m_segment;
  const int m_display;
  Result m_result;
  LineReport m_report;
  int m_caliper = 0;
};

Result SegmentMeasurement::Run() {
  if (m_display == kShowSegment) {
    const cv::Vec4f ends = m_segment;
    m_result.shapes.push_back(
        {kSegment, {ends[0], ends[1], ends[2], ends[3], 0}});
  }
  if (FitLine()) MeasureEveryEdge();
  return std::move(m_result);
}

int SegmentMeasurement::GenerateRectangles(float** rectangles,
                                           int* count) const {
  return m_library.gen_measure_line(m_segment[0], m_segment[1], m_segment[2],
                                    m_segment[3], kLength, kWidth, kDirection,
                                    kAsManyAsFit, rectangles, count);
}

// False if there is no line through the points.
bool SegmentMeasurement::FitLine() {
  LibraryMemory memory(m_library);
  float* rectangles = nullptr;
  int rectangle_count = 0;
  const int rectangles_id =
      memory.Keep(GenerateRectangles(&rectangles, &rectangle_count));
  double* points = nullptr;
  int n = 0;
  const int points_id = memory.Keep(m_library.do_measure(
      m_image.data, m_image.cols, m_image.rows, kPointSigma, kPointAmplitude,
      kPointSelection, rectangles, rectangle_count, &points, &n));
  double line[4] = {};
  const int code =
      m_library.do_fit(points, n, VEXOLAB_LINE, kFitMethod, kFitFactor,
                       kFitIterations, kFitLeast, line);
  ThrowIfOutOfMemory(code);
  ConsolePrintf("num1 = %2d, num2 = %2d\n", rectangle_count, n);
  ConsolePrintf("mem_id = %3d, mem_id2 = %3d, err_code = %3d\n", rectangles_id,
                points_id, code);
  for (const int answer : {rectangles_id, points_id, code}) Note(answer);
  m_report.calipers = rectangle_count;
  for (int i = 0; points != nullptr && i < n; ++i) {
    m_report.points.push_back({points[i], points[n + i]});
  }
  if (code < 0) return false;
  std::copy(std::begin(line), std::end(line), m_report.line);
  m_report.residuals =
      MeasureResiduals(VEXOLAB_LINE, line, kFitFactor, &m_report.points);
  if (m_display == kShowCalipers) {
    m_result.rectangles = CopyRectangles(rectangles, rectangle_count);
    m_result.points = CopyPoints(points, n);
    const cv::Vec4f fit = cv::Vec4d(line);
    m_result.shapes.push_back(
        {kFittedLine, {fit[0], fit[1], fit[2], fit[3], 0}});
  }
  return true;
}

void SegmentMeasurement::MeasureEveryEdge() {
  LibraryMemory memory(m_library);
  float* data = nullptr;
  int count = 0;
  memory.Keep(GenerateRectangles(&data, &count));
  for (const MeasureRectangle& rectangle : CopyRectangles(data, count)) {
    MeasureEdgesOf(rectangle);
    ++m_caliper;
  }
}

void SegmentMeasurement::MeasureEdgesOf(const MeasureRectangle& rectangle) {
  LibraryMemory memory(m_library);
  double* values = nullptr;
  int doubles = 0;
  const auto [x, y, phi, along, across] = rectangle;
  memory.Keep(m_library.measure_pos_d(x, y, phi, along, across, m_image.data,
                                      m_image.cols, m_image.rows, kEdgeSigma,
                                      kEdgeAmplitude, &values, &doubles));
  AddEdges({values, doubles});
}

// The printed number is the edge's place among the doubles, from 1.
void SegmentMeasurement::AddEdges(const Edges& edges) {
  int rising = -1;
  int falling = -1;
  for (int i = 0; i + kDoublesPerEdge <= edges.doubles; i += kDoublesPerEdge) {
    ConsolePrintf("i = %3d, x = %9.4f, y = %9.4f, amp = %9.4f\n", i + 1,
                  edges.values[i], edges.values[i + 1], edges.Amplitude(i));
    if (rising < 0 && edges.Amplitude(i) > 0) rising = i;
    if (falling < 0 && edges.Amplitude(i) < 0) falling = i;
    m_report.edges.push_back(
        {edges.values[i], edges.values[i + 1], edges.Amplitude(i), m_caliper});
    if (m_display == kShowEdges) m_result.points.push_back(edges.At(i));
  }
  if (m_display == kShowEdges && rising >= 0 && falling >= 0) {
    m_result.shapes.push_back(DistanceEntry(edges, rising, falling));
  }
}

}  // namespace

LineReport FindLine(Workbench& workbench, int display) {
  LineReport report;
  if (!workbench.HasImage()) return report;
  std::vector<cv::Vec4i> segments = FindSegments(workbench.m_srcImage);
  ConsolePrintf("HoughLinesP found %d lines\n",
                static_cast<int>(segments.size()));
  if (!segments.empty()) {
    SegmentMeasurement measurement(workbench, segments.front(), display);
    Result result = measurement.Run();
    report = measurement.TakeReport();
    workbench.ShowResult(std::move(result));
  }
  report.done = true;
  report.segments = std::move(segments);
  return report;
}

}  // namespace rendal
