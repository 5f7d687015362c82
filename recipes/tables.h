// SPDX-License-Identifier: MIT
//
// Results as text: CSV and JSON, with numbers that read back exactly. CSV is
// comma-separated, one line a row, ended by a line feed, a header line first;
// what is not there is an empty cell. In JSON it is null or missing.
#ifndef RENDAL_RECIPES_TABLES_H_
#define RENDAL_RECIPES_TABLES_H_

#include <array>
#include <string>
#include <vector>

#include "recipes/run_step.h"
#include "tools/components.h"

namespace rendal {

// Of one component, in the order of Features().
using FeatureValues = std::array<double, kFeatures>;
std::vector<FeatureValues> ValuesOf(const ComponentSet& components);

// What a step measured, for tables.
struct Measurement {
  size_t step = 0;   // from 0
  const char* kind;  // "line", "circle", "band", "ellipse", "find_line"
  int code = 0;      // of the library
  int calipers = 0;
  std::vector<EdgePoint> points;
  bool has_shape = false;
  double shape[5] = {};  // as do_fit gives it
  Residuals residuals;
  // Of the line finder: what it found, and every edge along the first segment.
  std::vector<cv::Vec4i> segments;
  std::vector<EdgePoint> edges;
};

// None for steps that measure nothing.
std::vector<Measurement> MeasurementsOf(size_t step, const StepReport& report);

// Column names and cells of a table. A column of text may hold anything.
using Cells = std::vector<std::string>;

// id, then the features. `id` counts from 1.
Cells ComponentColumns();
Cells ComponentCells(size_t id, const FeatureValues& values);

//   step            from 0
//   kind            line, circle, band, ellipse, find_line
//   code, error     0 and nothing, or the library's error and its text
//   calipers        that were laid
//   points          that were found
//   used            of these: see Residuals
//   residual_rms,   [px]
//   residual_max
//   x, y            centre of the fitted shape [px]
//   dx, dy, angle   direction of a line; angle of a line or an ellipse
//                   [degrees, counter-clockwise on screen]
//   radius          of a circle [px]
//   half_axis_1, 2  of an ellipse [px]
//   segments        that the line finder found
Cells MeasurementColumns();
Cells MeasurementCells(const Measurement& measurement);

//   step, kind      as above; kind is "edge" for what the line finder's second
//                   measurement found
//   point           from 1
//   caliper         from 1; edges only
//   x, y            [px]
//   amplitude       [grey levels]; bands and edges only
//   distance, used  from the fitted shape [px]; 1 or 0
Cells PointColumns();
std::vector<Cells> PointRows(const Measurement& measurement);

// Cells as a line of CSV.
std::string CsvLine(const Cells& cells);

// Whole tables, for one image.
std::string ComponentCsv(const ComponentSet& components);
std::string ComponentJson(const ComponentSet& components);

// What an image gave, as one object of JSON without a line feed. `components`
// may be null when nothing was labelled.
std::string ImageJson(const std::string& image, int width, int height,
                      const std::vector<FeatureValues>* components,
                      const std::vector<Measurement>& measurements);
// The same of one that failed.
std::string FailedImageJson(const std::string& image, const std::string& error);

}  // namespace rendal

#endif  // RENDAL_RECIPES_TABLES_H_
