// SPDX-License-Identifier: MIT
#include "tools/caliper_tool.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tools/console_text.h"
#include "tools/elapsed.h"
#include "tools/measurement_library.h"

namespace rendal {
namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr int kIterations = 20;
constexpr int kDoublesPerEdge = 3;  // x, y, amplitude
// A method of the fit, and the smallest factor that it works with.
constexpr int kShortTail = 0;
constexpr double kShortTailLeast = 2;

// How a kind of shape is fitted; `label` is what PrintElapsed prints.
struct FitKind {
  ShapeKind entry;
  int shape;
  int method;
  int least;
  const char* label;
};
constexpr FitKind kLineFit = {kFittedLine, VEXOLAB_LINE, 7, 2, "measure line"};
constexpr FitKind kCircleFit = {kFittedCircle, VEXOLAB_CIRCLE, 7, 3,
                                "measure circle"};
constexpr FitKind kEllipseFit = {kFittedEllipse, VEXOLAB_ELLIPSE, kShortTail, 3,
                                 "measure ellipse"};

struct Fit {
  double values[5] = {};

  ShapeEntry Entry(ShapeKind kind) const {
    ShapeEntry entry = {kind, {}};
    std::transform(std::begin(values), std::end(values), entry.values,
                   [](double value) { return static_cast<float>(value); });
    return entry;
  }
};

// One press: what every kind of measurement needs, and its record.
class Measurement {
 public:
  Measurement(const Workbench& workbench, const CaliperParameters& parameters)
      : m_library(workbench.m_measurementLibrary),
        m_parameters(parameters),
        m_image(workbench.ImageWithoutPadding()),
        m_memory(m_library),
        m_start(SteadyNanoseconds()) {}

  void Line(const float (&roi)[5]);
  void Circle(const float (&roi)[5]);
  void Ellipse(const float (&roi)[5]);
  void Band(const float (&roi)[5]);

  Result TakeResult() { return std::move(m_result); }
  MeasureReport TakeReport() { return std::move(m_report); }

 private:
  double FullWeightFactor(const FitKind& kind) const {
    return kind.method == kShortTail && m_parameters.reps > 0
               ? std::max(m_parameters.reps, kShortTailLeast)
               : m_parameters.reps;
  }

  // `generate` takes the two out pointers of a generator.
  template <typename Generate>
  Fit MeasureAndFit(const FitKind& kind, Generate generate);
  // An id, kept, or an error code, noted.
  void Keep(int id);
  void Note(int code);

  const MeasurementLibrary& m_library;
  const CaliperParameters& m_parameters;
  const cv::Mat m_image;
  Result m_result;
  MeasureReport m_report;
  LibraryMemory m_memory;
  int64_t m_start;
};

void Measurement::Note(int code) {
  ThrowIfOutOfMemory(code);
  if (m_report.code == 0 && code < 0) m_report.code = code;
}

void Measurement::Keep(int id) {
  m_memory.Keep(id);
  Note(id);
}

template <typename Generate>
Fit Measurement::MeasureAndFit(const FitKind& kind, Generate generate) {
  float* rectangles = nullptr;
  int rectangle_count = 0;
  Keep(generate(&rectangles, &rectangle_count));
  m_result.rectangles = CopyRectangles(rectangles, rectangle_count);

  double* points = nullptr;
  int n = 0;
  Keep(m_library.do_measure(m_image.data, m_image.cols, m_image.rows,
                            m_parameters.sigma, m_parameters.amplitude,
                            m_parameters.selection.c_str(), rectangles,
                            rectangle_count, &points, &n));
  m_result.points = CopyPoints(points, n);

  Fit fit;
  const int fit_code = m_library.do_fit(points, n, kind.shape, kind.method,
                                        static_cast<float>(m_parameters.reps),
                                        kIterations, kind.least, fit.values);
  PrintElapsed(m_start, kind.label);
  Note(fit_code);
  m_report.calipers = rectangle_count;
  for (int i = 0; points != nullptr && i < n; ++i) {
    m_report.points.push_back({points[i], points[n + i]});
  }
  if (fit_code >= 0) {
    std::copy(std::begin(fit.values), std::end(fit.values), m_report.shape);
    m_report.residuals = MeasureResiduals(
        kind.shape, fit.values, FullWeightFactor(kind), &m_report.points);
  }
  m_result.shapes.push_back(fit.Entry(kind.entry));
  return fit;
}

void Measurement::Line(const float (&roi)[5]) {
  const auto [d1, d2, x, y, unused] =
      MeasureAndFit(kLineFit, [&](float** rectangles, int* count) {
        return m_library.gen_measure_line(
            roi[0], roi[1], roi[2], roi[3], m_parameters.length,
            m_parameters.width, m_parameters.direction, m_parameters.count,
            rectangles, count);
      }).values;
  ConsolePrintf("line center = (%10.4f, %10.4f), angle = %8.4f\n", x, y,
                LineAngle(d1, d2));
}

void Measurement::Circle(const float (&roi)[5]) {
  const auto [x, y, radius, unused1, unused2] =
      MeasureAndFit(kCircleFit, [&](float** rectangles, int* count) {
        return m_library.gen_measure_circle(
            roi[0], roi[1], roi[2], m_parameters.length, m_parameters.width,
            m_parameters.direction, m_parameters.count, rectangles, count);
      }).values;
  ConsolePrintf("circle center = (%10.4f, %10.4f), radius = %10.4f\n", x, y,
                radius);
}

void Measurement::Ellipse(const float (&roi)[5]) {
  const auto [x, y, angle, size1, size2] =
      MeasureAndFit(kEllipseFit, [&](float** rectangles, int* count) {
        return m_library.gen_measure_ellipse(
            roi[0], roi[1], roi[2], roi[3], roi[4], m_parameters.length,
            m_parameters.width, m_parameters.direction, m_parameters.count,
            rectangles, count);
      }).values;
  ConsolePrintf(
      "ellipse center = (%10.4f, %10.4f), size = (%10.4f, %10.4f), "
      "angle = %10.4f\n",
      x, y, size1, size2, angle);
}

void Measurement::Band(const float (&roi)[5]) {
  float r[5] = {};
  m_library.ppw_to_rr(roi[0], roi[1], roi[2], roi[3], m_parameters.width, r);
  double* edges = nullptr;
  int doubles = 0;
  Keep(m_library.measure_pos_d(r[0], r[1], r[2], r[3], r[4], m_image.data,
                               m_image.cols, m_image.rows, m_parameters.sigma,
                               m_parameters.amplitude, &edges, &doubles));
  PrintElapsed(m_start, "measure pos");
  m_report.calipers = 1;
  for (int i = 0; i + kDoublesPerEdge <= doubles; i += kDoublesPerEdge) {
    m_result.points.emplace_back(static_cast<float>(edges[i]),
                                 static_cast<float>(edges[i + 1]));
    m_report.points.push_back({edges[i], edges[i + 1], edges[i + 2]});
    ConsolePrintf("i = %3d, x = %9.4f, y = %9.4f, amp = %9.4f\n",
                  i / kDoublesPerEdge + 1, edges[i], edges[i + 1],
                  edges[i + 2]);
  }
}

}  // namespace

double LineAngle(double direction1, double direction2) {
  double angle = std::atan2(direction1, direction2) * kDegreesPerRadian - 90;
  while (angle <= -180) angle += 360;
  while (angle > 180) angle -= 360;
  return angle;
}

MeasureReport Measure(Workbench& workbench,
                      const CaliperParameters& parameters) {
  const RoiShape* const roi = workbench.CurrentShape();
  if (!workbench.HasImage() || roi == nullptr) return {};
  if (roi->kind > kToolEllipse) {
    workbench.m_results.clear();
    return {};
  }
  Measurement measurement(workbench, parameters);
  switch (roi->kind) {
    case kToolLine:
      measurement.Line(roi->values);
      break;
    case kToolCircle:
      measurement.Circle(roi->values);
      break;
    case kToolBand:
      measurement.Band(roi->values);
      break;
    case kToolEllipse:
      measurement.Ellipse(roi->values);
      break;
  }
  MeasureReport report = measurement.TakeReport();
  report.done = true;
  report.roi = *roi;
  workbench.ShowResult(measurement.TakeResult());
  return report;
}

}  // namespace rendal
