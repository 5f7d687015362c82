// SPDX-License-Identifier: MIT
#include "recipes/recipe_json.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "recipes/json_text.h"
#include "recipes/number_text.h"
#include "recipes/recipe_fields.h"
#include "tools/long_path.h"

namespace rendal {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

// A region of interest: its key, its kind, how many numbers it has.
struct RoiKey {
  const char* key;
  ToolMode kind;
  size_t numbers;
};
constexpr RoiKey kRoiKeys[] = {{"line", kToolLine, 4},
                               {"circle", kToolCircle, 3},
                               {"ellipse", kToolEllipse, 5},
                               {"band", kToolBand, 4}};

constexpr const char* kSelections[] = {"first+", "first-", "first",    "last+",
                                       "last-",  "last",   "strongest"};

constexpr const char* kSources[] = {"previous", "threshold"};
constexpr const char* kElements[] = {"circle", "rectangle", "cross"};
constexpr const char* kBoundaryTypes[] = {"inner", "inner_filled", "outer"};
constexpr const char* kDirections[] = {"+", "-"};
constexpr const char* kBorders[] = {"keep", "exclude"};
constexpr const char* kRleForms[] = {"uncompressed", "compressed"};

RegionSource ReadSource(RecipeFields& fields) {
  return fields.Choice("from", kSources, 0) == 0 ? RegionSource::kPrevious
                                                 : RegionSource::kBinarisation;
}

ElementChoice ReadElement(RecipeFields& fields) {
  ElementChoice element;
  element.kind = static_cast<int>(fields.Choice("element", kElements));
  if (!ElementUsesHeight(element.kind)) {
    element.width = fields.Integer("radius", 1, kLargestElement);
    element.height = element.width;
  } else {
    element.width = fields.Integer("width", 1, kLargestElement);
    element.height = fields.Integer("height", 1, kLargestElement);
  }
  return element;
}

Step ReadThreshold(RecipeFields& fields) {
  ThresholdStep step;
  step.band.min = fields.Integer("min", 0, 255);
  step.band.max = fields.Integer("max", 0, 255);
  if (step.band.min > step.band.max) {
    throw RecipeError(fields.PlaceOf("min"), "is above max");
  }
  return step;
}

Step ReadOperation(RegionOperation operation, RecipeFields& fields) {
  OperationStep step;
  step.operation = operation;
  if (InputsOf(operation) == 1) {
    step.source = ReadSource(fields);
  } else {
    step.source = RegionSource::kBinarisation;
  }
  if (TakesElement(operation)) step.parameters.element = ReadElement(fields);
  if (operation == RegionOperation::kBoundary) {
    step.parameters.boundary_type =
        kBoundaryTypes[fields.Choice("type", kBoundaryTypes, 0)];
  }
  return step;
}

Step ReadConnection(RecipeFields& fields) {
  ConnectionStep step;
  step.parameters.neighbours = fields.Integer("neighbours", 4, 8, 8);
  if (step.parameters.neighbours != 4 && step.parameters.neighbours != 8) {
    throw RecipeError(fields.PlaceOf("neighbours"), "must be 4 or 8");
  }
  step.parameters.source = ReadSource(fields);
  return step;
}

Step ReadSelect(RecipeFields& fields) {
  SelectStep step;
  for (size_t i = 0; i < Features().size(); ++i) {
    const char* const name = Features()[i].name;
    if (!fields.Has(name)) continue;
    FeatureLimits limits;
    limits.feature = i;
    fields.Range(name, &limits.min, &limits.max);
    step.selection.limits.push_back(limits);
  }
  step.selection.exclude_border = fields.Choice("border", kBorders, 0) == 1;
  return step;
}

RoiShape ReadRoi(RecipeFields& fields) {
  RoiShape roi = {};
  const RoiKey* found = nullptr;
  for (const RoiKey& key : kRoiKeys) {
    if (!fields.Has(key.key)) continue;
    if (found != nullptr) {
      throw RecipeError(fields.PlaceOf(key.key),
                        std::string("there is a ") + found->key + " already");
    }
    found = &key;
    roi.kind = static_cast<uint8_t>(key.kind);
    const std::vector<double> numbers =
        fields.Numbers(key.key, key.numbers, -kLargestLength, kLargestLength);
    std::transform(numbers.begin(), numbers.end(), roi.values,
                   [](double v) { return static_cast<float>(v); });
  }
  if (found == nullptr) {
    throw RecipeError(fields.PlaceOf("line"),
                      "is missing, and circle, ellipse and band are");
  }
  return roi;
}

Step ReadMeasure(RecipeFields& fields) {
  MeasureStep step;
  step.roi = ReadRoi(fields);
  CaliperParameters& p = step.parameters;
  p.length = fields.Number("length", 0, kLargestLength, p.length);
  p.width = fields.Number("width", 0, kLargestLength, p.width);
  p.amplitude = fields.Number("amplitude", 0, kLargestLength, p.amplitude);
  p.sigma = fields.Number("sigma", 0, kLargestLength, p.sigma);
  p.reps = fields.Number("reps", 0, kLargestLength, p.reps);
  p.count = fields.Integer("count", 0, kMostCalipers, p.count);
  p.direction = ScanDirection(
      static_cast<int>(fields.Choice("direction", kDirections, 0)));
  p.selection = kSelections[fields.Choice("selection", kSelections, 0)];
  return step;
}

Step ReadStep(const json& value, const std::string& place) {
  RecipeFields fields(value, place);
  const std::string what = fields.Text("do");
  Step step;
  if (what == "threshold") {
    step = ReadThreshold(fields);
  } else if (const auto operation = OperationByName(what)) {
    step = ReadOperation(*operation, fields);
  } else if (what == "connection") {
    step = ReadConnection(fields);
  } else if (what == "select") {
    step = ReadSelect(fields);
  } else if (what == "measure") {
    step = ReadMeasure(fields);
  } else if (what == "find_line") {
    step = FindLineStep{fields.Integer("display", 1, 3, 3) - 1};
  } else {
    throw RecipeError(place + ".do", "there is no tool \"" + what + "\"");
  }
  fields.RefuseOthers();
  return step;
}

// Only of what is not beyond ASCII.
std::string UpperCase(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

// Names that mean a device on some system, whatever follows the first point.
bool IsReserved(const std::string& name) {
  std::string base = UpperCase(name.substr(0, name.find('.')));
  base.erase(base.find_last_not_of(' ') + 1);
  static const std::set<std::string> devices = {"CON", "PRN",    "AUX",
                                                "NUL", "CONIN$", "CONOUT$"};
  static const std::set<std::string> numbers = {
      "0", "1", "2", "3",      "4",      "5",     "6",
      "7", "8", "9", "\u00B9", "\u00B2", "\u00B3"};
  return devices.count(base) != 0 ||
         ((base.starts_with("COM") || base.starts_with("LPT")) &&
          numbers.count(base.substr(3)) != 0);
}

bool IsPlainName(const std::string& name) {
  constexpr size_t kLongest = 200;
  const auto is_bad = [](char c) {
    return static_cast<unsigned char>(c) < 32 ||
           std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos;
  };
  return !name.empty() && name.size() <= kLongest && name.front() != '.' &&
         name.back() != '.' && name.back() != ' ' && !IsReserved(name) &&
         std::none_of(name.begin(), name.end(), is_bad);
}

std::string ReadFileName(RecipeFields& fields, const char* key, bool pattern) {
  if (!fields.Has(key)) return {};
  std::string name = fields.Text(key);
  if (!IsPlainName(name)) {
    throw RecipeError(fields.PlaceOf(key),
                      "must be a plain file name, without a folder");
  }
  if ((name.find("{name}") != std::string::npos) != pattern) {
    throw RecipeError(fields.PlaceOf(key),
                      pattern ? "must hold {name}, which stands for the image"
                              : "is one file for all images: no {name}");
  }
  return name;
}

Outputs ReadOutputs(const json& value) {
  RecipeFields fields(value, "outputs");
  Outputs outputs;
  std::set<std::string> names;
  const auto read = [&](const char* key, std::string* name, bool pattern) {
    *name = ReadFileName(fields, key, pattern);
    // Some systems do not tell "a" from "A".
    if (!name->empty() && !names.insert(UpperCase(*name)).second) {
      throw RecipeError(fields.PlaceOf(key), "another output has this name");
    }
  };
  read("csv", &outputs.csv, false);
  read("measurements", &outputs.measurements, false);
  read("points", &outputs.points, false);
  read("json", &outputs.json, false);
  read("coco", &outputs.coco, false);
  read("labels", &outputs.labels, true);
  read("overlay", &outputs.overlay, true);
  outputs.compressed_rle = fields.Choice("rle", kRleForms, 0) == 1;
  outputs.zoom = fields.Number("zoom", 1.0 / kLargestZoom, kLargestZoom, 1);
  fields.RefuseOthers();
  return outputs;
}

void WriteSource(RegionSource source, ordered_json* object) {
  if (source == RegionSource::kBinarisation) (*object)["from"] = "threshold";
}

// One object for each kind of step.
struct StepWriter {
  ordered_json operator()(const ThresholdStep& step) const {
    return {
        {"do", "threshold"}, {"min", step.band.min}, {"max", step.band.max}};
  }
  ordered_json operator()(const OperationStep& step) const {
    ordered_json object = {{"do", NameOf(step.operation)}};
    if (InputsOf(step.operation) == 1) WriteSource(step.source, &object);
    if (TakesElement(step.operation)) {
      WriteElement(step.parameters.element, &object);
    }
    if (step.operation == RegionOperation::kBoundary) {
      object["type"] = step.parameters.boundary_type;
    }
    return object;
  }
  ordered_json operator()(const ConnectionStep& step) const {
    ordered_json object = {{"do", "connection"},
                           {"neighbours", step.parameters.neighbours}};
    WriteSource(step.parameters.source, &object);
    return object;
  }
  ordered_json operator()(const SelectStep& step) const {
    const auto limit = [](double value) {
      return std::isfinite(value) ? ordered_json(value) : ordered_json();
    };
    ordered_json object = {{"do", "select"}};
    for (const FeatureLimits& limits : step.selection.limits) {
      object[Features()[limits.feature].name] =
          ordered_json::array({limit(limits.min), limit(limits.max)});
    }
    if (step.selection.exclude_border) object["border"] = "exclude";
    return object;
  }
  ordered_json operator()(const MeasureStep& step) const {
    ordered_json object = {{"do", "measure"}};
    for (const RoiKey& key : kRoiKeys) {
      if (key.kind != step.roi.kind) continue;
      ordered_json& numbers = object[key.key];
      for (size_t i = 0; i < key.numbers; ++i) {
        numbers.push_back(ShortestDouble(step.roi.values[i]));
      }
    }
    const CaliperParameters& p = step.parameters;
    object["length"] = p.length;
    object["width"] = p.width;
    object["amplitude"] = p.amplitude;
    object["sigma"] = p.sigma;
    object["reps"] = p.reps;
    object["count"] = p.count;
    object["direction"] = p.direction > 0 ? "+" : "-";
    object["selection"] = p.selection;
    return object;
  }
  ordered_json operator()(const FindLineStep& step) const {
    return {{"do", "find_line"}, {"display", step.display + 1}};
  }

  static void WriteElement(const ElementChoice& element, ordered_json* object) {
    if (!ElementUsesHeight(element.kind)) {
      (*object)["element"] = "circle";
      (*object)["radius"] = element.width;
    } else {
      (*object)["element"] = element.kind == kCross ? "cross" : "rectangle";
      (*object)["width"] = element.width;
      (*object)["height"] = element.height;
    }
  }
};

ordered_json OutputsAsJson(const Outputs& outputs) {
  ordered_json object = ordered_json::object();
  const std::pair<const char*, const std::string&> names[] = {
      {"csv", outputs.csv},        {"measurements", outputs.measurements},
      {"points", outputs.points},  {"json", outputs.json},
      {"coco", outputs.coco},      {"labels", outputs.labels},
      {"overlay", outputs.overlay}};
  for (const auto& [key, name] : names) {
    if (!name.empty()) object[key] = name;
  }
  if (outputs.compressed_rle) object["rle"] = "compressed";
  if (outputs.zoom != 1) object["zoom"] = outputs.zoom;
  return object;
}

}  // namespace

void CheckSteps(const std::vector<Step>& steps) {
  size_t binarisations = 0;
  bool components = false;
  for (size_t i = 0; i < steps.size(); ++i) {
    const std::string place = "steps[" + std::to_string(i) + "]";
    if (std::holds_alternative<ThresholdStep>(steps[i])) ++binarisations;
    size_t needed = 0;
    if (const auto* step = std::get_if<OperationStep>(&steps[i])) {
      needed = InputsOf(step->operation);
    } else if (std::holds_alternative<ConnectionStep>(steps[i])) {
      needed = 1;
      components = true;
    } else if (std::holds_alternative<SelectStep>(steps[i]) && !components) {
      throw RecipeError(place, "there is no \"connection\" before it");
    }
    if (binarisations < needed) {
      throw RecipeError(place, needed == 2
                                   ? "there are no two \"threshold\" before it"
                                   : "there is no \"threshold\" before it");
    }
  }
}

Recipe ReadRecipeFile(const std::filesystem::path& path) {
  const std::filesystem::path whole = WithoutLengthLimit(path);
  std::error_code error;
  std::ifstream file(whole, std::ios::binary);
  if (!file || std::filesystem::is_directory(whole, error)) {
    throw RecipeError("", "cannot be read");
  }
  std::string text(kLongestRecipe + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (file.bad()) throw RecipeError("", "cannot be read");
  text.resize(static_cast<size_t>(file.gcount()));
  return ReadRecipe(text);
}

Recipe ReadRecipe(std::string_view text) {
  if (text.size() > kLongestRecipe)
    throw RecipeError("", "is no recipe: it is too long");
  const json document = ParseJson(text);
  RecipeFields fields(document, "");
  if (fields.Integer("version", 0, 1000000) != kRecipeVersion) {
    throw RecipeError("version", "only version 1 is known");
  }
  const json& steps = fields.Need("steps");
  if (!steps.is_array() || steps.empty()) {
    throw RecipeError("steps", "must be a list of at least one step");
  }
  Recipe recipe;
  for (size_t i = 0; i < steps.size(); ++i) {
    recipe.steps.push_back(
        ReadStep(steps[i], "steps[" + std::to_string(i) + "]"));
  }
  CheckSteps(recipe.steps);
  if (const json* outputs = fields.Find("outputs")) {
    recipe.outputs = ReadOutputs(*outputs);
  }
  if (fields.Find("comment") != nullptr) fields.Text("comment");
  fields.RefuseOthers();
  return recipe;
}

std::string WriteRecipe(const Recipe& recipe) {
  ordered_json steps = ordered_json::array();
  for (const Step& step : recipe.steps) {
    steps.push_back(std::visit(StepWriter(), step));
  }
  // One line a step.
  std::string text = "{\n  \"version\": 1,\n  \"steps\": [\n";
  for (size_t i = 0; i < steps.size(); ++i) {
    text += "    " + steps[i].dump() + (i + 1 < steps.size() ? ",\n" : "\n");
  }
  text += "  ]";
  const ordered_json outputs = OutputsAsJson(recipe.outputs);
  if (!outputs.empty()) text += ",\n  \"outputs\": " + outputs.dump();
  return text + "\n}\n";
}

}  // namespace rendal
