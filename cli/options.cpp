// SPDX-License-Identifier: MIT
//
// What options of several commands have in common.
#include <cmath>
#include <optional>

#include "cli/commands.h"
#include "recipes/number_text.h"

namespace rendal {

void RefuseValue(const std::string& option, const std::string& value,
                 const std::string& why) {
  throw CLI::ValidationError(option, "\"" + value + "\": " + why);
}

std::vector<std::string> Split(std::string_view text, char mark) {
  std::vector<std::string> parts;
  for (size_t begin = 0;;) {
    const size_t end = text.find(mark, begin);
    parts.emplace_back(text.substr(begin, end - begin));
    if (end == std::string_view::npos) return parts;
    begin = end + 1;
  }
}

std::vector<double> NumbersOf(const std::string& option,
                              const std::string& text, size_t count) {
  std::vector<double> numbers;
  for (const std::string& part : Split(text, ',')) {
    const std::optional<double> number = NumberFrom(part);
    if (!number) RefuseValue(option, text, "\"" + part + "\" is no number");
    numbers.push_back(*number);
  }
  if (numbers.size() != count) {
    RefuseValue(option, text,
                std::to_string(count) +
                    " numbers with commas between them, not " +
                    std::to_string(numbers.size()));
  }
  return numbers;
}

CLI::Option* AddNumber(CLI::App& command, const std::string& option,
                       double& value, double min, double max,
                       const std::string& help) {
  const auto read = [=, &value](const std::string& text) {
    const std::optional<double> number = NumberFrom(text);
    if (!number || *number < min || *number > max) {
      RefuseValue(option, text,
                  "must be a number from " + NumberText(min) + " to " +
                      NumberText(max));
    }
    value = *number;
  };
  return command.add_option_function<std::string>(option, read, help)
      ->type_name("NUMBER")
      ->default_str(NumberText(value));
}

CLI::Validator WholeNumber(int min, int max) {
  const std::string range = std::to_string(min) + " to " + std::to_string(max);
  const auto rewrite = [=](std::string& text) -> std::string {
    const std::optional<double> number = NumberFrom(text);
    if (!number || *number != std::floor(*number) || *number < min ||
        *number > max) {
      return "Value " + text + " not in range " + range;
    }
    text = std::to_string(static_cast<int>(*number));
    return {};
  };
  return {rewrite,
          "INT in [" + std::to_string(min) + " - " + std::to_string(max) + "]"};
}

CLI::Validator NotEmpty() {
  const auto check = [](std::string& text) -> std::string {
    return text.empty() ? "it is empty" : "";
  };
  return {check, ""};
}

void AddResultFile(CLI::App& command, const std::string& option,
                   std::string& path, const std::string& help,
                   const std::string& kind) {
  command.add_option(option, path, help)
      ->check(NotEmpty())
      ->type_name(kind)
      ->group("Results");
}

void AddRunOptions(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--threads", options.threads,
                  "At most so many; all of the hardware by default")
      ->transform(WholeNumber(1, 1024))
      ->type_name("N");
  command.add_flag("--quiet", options.is_quiet, "Tell of errors only");
}

void AddComponentOutputs(CLI::App& command, CommonOptions& options) {
  AddResultFile(command, "--csv", options.csv, "Components as a table");
  AddResultFile(command, "--labels", options.labels,
                "16-bit picture: each pixel its component's id", "FILE.png");
  AddResultFile(command, "--coco", options.coco, "Components as masks",
                "FILE.json");
  command
      .add_option("--rle", options.rle,
                  "Form of these masks: uncompressed (default), compressed")
      ->check(CLI::IsMember({"uncompressed", "compressed"}))
      ->group("Results");
}

void AddMeasurementOutputs(CLI::App& command, CommonOptions& options) {
  AddResultFile(command, "--csv", options.measurements,
                "Measurements as a table");
  AddResultFile(command, "--points", options.points, "Edge points as a table");
}

void AddSingleImageOptions(CLI::App& command, CommonOptions& options) {
  AddResultFile(command, "--json", options.json, "Everything", "FILE.json");
  AddResultFile(command, "--overlay", options.overlay,
                "The picture as the workbench draws it", "FILE.png");
  AddNumber(command, "--zoom", options.zoom, 1 / kLargestZoom, kLargestZoom,
            "Of that picture")
      ->group("Results");
  AddResultFile(command, "--save-recipe", options.save_recipe,
                "These steps as a recipe for \"run\"", "FILE.json");
  AddRunOptions(command, options);
}

}  // namespace rendal
