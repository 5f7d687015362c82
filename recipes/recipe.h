// SPDX-License-Identifier: MIT
//
// A round of work: what the buttons did, one after the other, with the
// parameters that they read, and which files its results go to.
#ifndef RENDAL_RECIPES_RECIPE_H_
#define RENDAL_RECIPES_RECIPE_H_

#include <string>
#include <variant>
#include <vector>

#include "tools/blob_tool.h"
#include "tools/caliper_tool.h"
#include "tools/components.h"
#include "tools/line_finder.h"

namespace rendal {

// The largest of each that a recipe may hold, and the command line take.
inline constexpr double kLargestLength = 1e7;  // coordinates, parameters
inline constexpr double kLargestFeature = 1e15;
inline constexpr int kLargestElement = 10000;
inline constexpr int kMostCalipers = 10000;
inline constexpr double kLargestZoom = 128;  // and its inverse the smallest

struct ThresholdStep {
  GrayBand band;
  bool operator==(const ThresholdStep&) const = default;
};

struct OperationStep {
  RegionOperation operation = RegionOperation::kFillUp;
  OperationParameters parameters;
  RegionSource source = RegionSource::kPrevious;
  bool operator==(const OperationStep&) const = default;
};

struct ConnectionStep {
  ConnectionParameters parameters{8, RegionSource::kPrevious};
  bool operator==(const ConnectionStep&) const = default;
};

struct SelectStep {
  Selection selection;
  bool operator==(const SelectStep&) const = default;
};

struct MeasureStep {
  RoiShape roi = {};
  CaliperParameters parameters;
  bool operator==(const MeasureStep&) const = default;
};

struct FindLineStep {
  int display = kShowEdges;
  bool operator==(const FindLineStep&) const = default;
};

using Step = std::variant<ThresholdStep, OperationStep, ConnectionStep,
                          SelectStep, MeasureStep, FindLineStep>;

// Names of files in the folder of a run's results; empty: not wanted. Those of
// pictures hold "{name}", which stands for the image.
struct Outputs {
  std::string csv;           // all components of all images
  std::string measurements;  // CSV, one row for each measurement
  std::string points;        // CSV, one row for each edge point
  std::string json;          // everything
  std::string coco;          // components as masks
  bool compressed_rle = false;
  std::string labels;   // a picture for each image: its components' ids
  std::string overlay;  // a picture for each image, as the dialog draws it
  double zoom = 1;      // of the overlay
  bool operator==(const Outputs&) const = default;
};

struct Recipe {
  std::vector<Step> steps;
  Outputs outputs;
  bool operator==(const Recipe&) const = default;
};

}  // namespace rendal

#endif  // RENDAL_RECIPES_RECIPE_H_
