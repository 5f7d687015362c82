// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "cli/commands.h"
#include "recipes/number_text.h"

namespace rendal {
namespace {

// Options that are operations, in the order of the help.
struct OperationOption {
  const char* option;
  RegionOperation operation;
  const char* help;
};
constexpr OperationOption kOperations[] = {
    {"--dilation", RegionOperation::kDilation, "Grow by an element"},
    {"--erosion", RegionOperation::kErosion, "Shrink by an element"},
    {"--opening", RegionOperation::kOpening, "Erosion, then dilation"},
    {"--closing", RegionOperation::kClosing, "Dilation, then erosion"},
    {"--top-hat", RegionOperation::kTopHat, "What an opening takes away"},
    {"--bottom-hat", RegionOperation::kBottomHat, "What a closing adds"},
};
const std::string kFill = "--fill";
const std::string kBoundary = "--boundary";
const std::string kOperationGroup = "Operations, in the order given";

int SizeOf(const std::string& option, const std::string& text,
           std::string_view size) {
  const std::optional<double> number = NumberFrom(size);
  if (!number || *number < 1 || *number > kLargestElement ||
      *number != static_cast<int>(*number)) {
    RefuseValue(
        option, text,
        "sizes are whole numbers from 1 to " + std::to_string(kLargestElement));
  }
  return static_cast<int>(*number);
}

// "circle:R", "rect:WxH" or "cross:WxH".
ElementChoice ElementOf(const std::string& option, const std::string& text) {
  const std::vector<std::string> parts = Split(text, ':');
  if (parts.size() == 2 && parts[0] == "circle") {
    const int radius = SizeOf(option, text, parts[1]);
    return {kCircle, radius, radius};
  }
  if (parts.size() == 2 && (parts[0] == "rect" || parts[0] == "cross")) {
    const std::vector<std::string> sizes = Split(parts[1], 'x');
    if (sizes.size() == 2) {
      return {parts[0] == "rect" ? kRectangle : kCross,
              SizeOf(option, text, sizes[0]), SizeOf(option, text, sizes[1])};
    }
  }
  RefuseValue(option, text, "an element is circle:R, rect:WxH or cross:WxH");
}

// "area:100..5000"; either end may be missing.
FeatureLimits LimitsOf(const std::string& text) {
  FeatureLimits limits;
  const size_t colon = text.find(':');
  const size_t dots = text.find("..");
  if (colon == std::string::npos || dots == std::string::npos || dots < colon) {
    RefuseValue("--select", text, "a condition is FEATURE:LEAST..MOST");
  }
  const auto feature = FeatureByName(text.substr(0, colon));
  if (!feature) {
    std::string names;
    for (const Feature& f : Features()) names += std::string(" ") + f.name;
    RefuseValue("--select", text, "features are" + names);
  }
  limits.feature = *feature;
  const auto read = [&text](const std::string& end, double* to) {
    if (end.empty()) return;
    const std::optional<double> number = NumberFrom(end);
    if (!number || std::abs(*number) > kLargestFeature) {
      RefuseValue("--select", text, "\"" + end + "\" is no number up to 1e15");
    }
    *to = *number;
  };
  read(text.substr(colon + 1, dots - colon - 1), &limits.min);
  read(text.substr(dots + 2), &limits.max);
  if (limits.min > limits.max) {
    RefuseValue("--select", text, "its least is above its most");
  }
  return limits;
}

// A feature's limits stand once in a selection: of several the narrower hold.
void AddLimits(const std::string& condition, Selection* selection) {
  const FeatureLimits limits = LimitsOf(condition);
  auto& all = selection->limits;
  const auto same =
      std::find_if(all.begin(), all.end(), [&](const FeatureLimits& other) {
        return other.feature == limits.feature;
      });
  if (same == all.end()) {
    all.push_back(limits);
    return;
  }
  same->min = std::max(same->min, limits.min);
  same->max = std::min(same->max, limits.max);
  if (same->min > same->max) {
    RefuseValue("--select", condition, "contradicts a condition before it");
  }
}

std::optional<Step> OperationOf(const std::string& option,
                                const std::string& value) {
  OperationStep step;
  if (option == kFill) return step;
  if (option == kBoundary) {
    step.operation = RegionOperation::kBoundary;
    step.parameters.boundary_type = value;
    return step;
  }
  for (const OperationOption& known : kOperations) {
    if (option != known.option) continue;
    step.operation = known.operation;
    step.parameters.element = ElementOf(option, value);
    return step;
  }
  return std::nullopt;
}

}  // namespace

void AddBlobCommand(CLI::App& app, BlobOptions& options) {
  CLI::App* const command = app.add_subcommand(
      "blob", "Binarise, transform, split into components, list them");
  command->add_option("IMAGE", options.image, "The image")->required();
  command
      ->add_option("--gray", options.gray,
                   "Grey values that count, both inclusive")
      ->required()
      ->expected(2)
      ->type_name("MIN MAX")
      ->transform(WholeNumber(0, 255));
  const std::string fill_help = "Fill holes";
  command->add_flag(kFill, fill_help)
      ->disable_flag_override()
      ->group(kOperationGroup);
  for (const OperationOption& operation : kOperations) {
    command->add_option(operation.option, operation.help)
        ->type_name("circle:R|rect:WxH|cross:WxH")
        ->take_all()
        ->allow_extra_args(false)
        ->group(kOperationGroup);
  }
  command->add_option(kBoundary, "Boundary pixels")
      ->type_name("inner|inner_filled|outer")
      ->check(CLI::IsMember({"inner", "inner_filled", "outer"}))
      ->take_all()
      ->allow_extra_args(false)
      ->group(kOperationGroup);
  command
      ->add_option("--connect", options.neighbours,
                   "Neighbours that join: 8 (default) or 4")
      ->check(CLI::IsMember({4, 8}))
      ->group("Components");
  command
      ->add_option("--select", options.select,
                   "Keep components by their features, as in "
                   "area:100..5000,circularity:0.8..")
      ->type_name("FEATURE:LEAST..MOST,...")
      ->take_all()
      ->allow_extra_args(false)
      ->group("Components");
  command
      ->add_option("--border", options.border,
                   "Components at the image's border: keep (default), exclude")
      ->check(CLI::IsMember({"keep", "exclude"}))
      ->group("Components");
  AddComponentOutputs(*command, options.common);
  AddSingleImageOptions(*command, options.common);
  command->footer(
      "Example:\n"
      "  rendal-cli blob parts.png --gray 0 130 --fill --opening circle:3 \\\n"
      "    --select area:500..,circularity:0.5.. --csv parts.csv\n\n"
      "Features: area, centre x and y, bounding box x_min to y_max [px]; ra, "
      "rb [px]\nand phi [degrees, counter-clockwise] of the ellipse with the "
      "same moments;\nrect2_len1, rect2_len2 [px, half sides] and rect2_phi of "
      "the smallest\nrectangle; circularity = area / (pi dmax^2), dmax from "
      "the centre to the\nfarthest pixel.");
}

std::vector<Step> BlobSteps(const CLI::App& command,
                            const BlobOptions& options) {
  if (options.gray[0] > options.gray[1]) {
    RefuseValue(
        "--gray",
        std::to_string(options.gray[0]) + " " + std::to_string(options.gray[1]),
        "its least is above its most");
  }
  std::vector<Step> steps = {ThresholdStep{{options.gray[0], options.gray[1]}}};
  std::map<const CLI::Option*, size_t> used;
  for (const CLI::Option* option : command.parse_order()) {
    const std::vector<std::string>& values = option->results();
    const size_t i = used[option]++;
    if (const auto step = OperationOf(option->get_name(),
                                      i < values.size() ? values[i] : "")) {
      steps.push_back(*step);
    }
  }
  steps.push_back(
      ConnectionStep{{options.neighbours, RegionSource::kPrevious}});
  Selection selection;
  selection.exclude_border = options.border == "exclude";
  for (const std::string& conditions : options.select) {
    for (const std::string& condition : Split(conditions, ',')) {
      AddLimits(condition, &selection);
    }
  }
  if (!(selection == Selection{})) steps.push_back(SelectStep{selection});
  return steps;
}

}  // namespace rendal
