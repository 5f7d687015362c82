// SPDX-License-Identifier: MIT
#include <cmath>

#include "cli/commands.h"

namespace rendal {

void AddMeasureCommand(CLI::App& app, MeasureOptions& options) {
  CLI::App* const command = app.add_subcommand(
      "measure", "Find edges along a shape and fit the shape to them");
  command->add_option("IMAGE", options.image, "The image")->required();
  CLI::Option_group* const shape = command->add_option_group("Shape");
  shape->require_option(1);
  shape->add_option("--line", options.line, "Calipers along a line")
      ->check(NotEmpty())
      ->type_name("X1,Y1,X2,Y2");
  shape->add_option("--circle", options.circle, "Calipers around a circle")
      ->check(NotEmpty())
      ->type_name("CX,CY,R");
  shape
      ->add_option("--ellipse", options.ellipse,
                   "Calipers around an ellipse; the angle in degrees, "
                   "counter-clockwise")
      ->check(NotEmpty())
      ->type_name("CX,CY,ANGLE,A,B");
  shape
      ->add_option("--band", options.band,
                   "One wide caliper along a line: all its edges")
      ->check(NotEmpty())
      ->type_name("X1,Y1,X2,Y2");
  CaliperParameters& p = options.parameters;
  const auto number = [command](const char* name, double& value,
                                const char* help) {
    AddNumber(*command, name, value, 0, kLargestLength, help)
        ->group("Calipers");
  };
  number("--length", p.length, "Of each caliper, along its scan [px]");
  number("--width", p.width, "Across its scan; of a band [px]");
  number("--amplitude", p.amplitude, "Smallest step that counts [grey levels]");
  number("--sigma", p.sigma, "Smoothing [px]");
  number("--reps", p.reps, "How far from the fit points still count [sigma]");
  command
      ->add_option("--count", p.count,
                   "Of calipers; 0: as many as fit side by side")
      ->transform(WholeNumber(0, kMostCalipers))
      ->capture_default_str()
      ->group("Calipers");
  command
      ->add_option("--direction", options.direction,
                   "Scan: + to the right of a line, outward; - the other way")
      ->check(CLI::IsMember({"+", "-"}))
      ->capture_default_str()
      ->group("Calipers");
  command
      ->add_option("--select", p.selection,
                   "Edge of each caliper: first, last, strongest; + dark to "
                   "bright, - bright to dark")
      ->check(CLI::IsMember(
          {"first+", "first-", "first", "last+", "last-", "last", "strongest"}))
      ->capture_default_str()
      ->group("Calipers");
  AddMeasurementOutputs(*command, options.common);
  AddSingleImageOptions(*command, options.common);
  command->footer(
      "Example:\n"
      "  rendal-cli measure parts.png --circle 195,196,70 --length 30 "
      "--select first-\n\n"
      "Lengths in pixels, pixel centres at whole numbers; angles in degrees,\n"
      "counter-clockwise on screen. used, residual_rms, residual_max: of the "
      "points\nwithin reps robust standard deviations of the fitted shape.");
}

std::vector<Step> MeasureSteps(const MeasureOptions& options) {
  const struct {
    const char* option;
    const std::string& text;
    ToolMode kind;
    size_t numbers;
  } shapes[] = {{"--line", options.line, kToolLine, 4},
                {"--circle", options.circle, kToolCircle, 3},
                {"--ellipse", options.ellipse, kToolEllipse, 5},
                {"--band", options.band, kToolBand, 4}};
  MeasureStep step;
  for (const auto& shape : shapes) {
    if (shape.text.empty()) continue;
    step.roi.kind = static_cast<uint8_t>(shape.kind);
    const std::vector<double> numbers =
        NumbersOf(shape.option, shape.text, shape.numbers);
    for (size_t i = 0; i < numbers.size(); ++i) {
      if (std::abs(numbers[i]) > kLargestLength) {
        RefuseValue(shape.option, shape.text, "numbers are at most 1e7");
      }
      step.roi.values[i] = static_cast<float>(numbers[i]);
    }
  }
  step.parameters = options.parameters;
  step.parameters.direction = options.direction == "+" ? +1 : -1;
  return {step};
}

void AddFindLinesCommand(CLI::App& app, FindLinesOptions& options) {
  CLI::App* const command = app.add_subcommand(
      "find-lines",
      "Find straight lines as long as the image is wide; measure the first");
  command->add_option("IMAGE", options.image, "The image")->required();
  command
      ->add_option("--display", options.display,
                   "What the overlay shows: 1 the segment, 2 the calipers, 3 "
                   "every edge")
      ->transform(WholeNumber(1, 3))
      ->capture_default_str();
  AddMeasurementOutputs(*command, options.common);
  AddSingleImageOptions(*command, options.common);
  command->footer(
      "Example:\n  rendal-cli find-lines edge.png --json edge.json");
}

}  // namespace rendal
