// SPDX-License-Identifier: MIT
//
// What the commands share, and the commands that become steps of a recipe.
#ifndef RENDAL_CLI_COMMANDS_H_
#define RENDAL_CLI_COMMANDS_H_

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "cli/job.h"
#include "recipes/recipe.h"

namespace rendal {

// Options that several commands take, as they were given.
struct CommonOptions {
  std::string csv, measurements, points, json, coco;
  std::string labels, overlay;
  std::string rle = "uncompressed";
  double zoom = 1;
  std::string save_recipe;
  int threads = 0;
  bool is_quiet = false;
};

// A number, both ends inclusive, written with a point whatever the locale.
CLI::Option* AddNumber(CLI::App& command, const std::string& option,
                       double& value, double min, double max,
                       const std::string& help);
// Whole numbers of decimal digits, also with zeros before them. For
// transform(), since the parser would read those as octal.
CLI::Validator WholeNumber(int min, int max);
// Refuses what an empty variable of a script leaves.
CLI::Validator NotEmpty();
void AddResultFile(CLI::App& command, const std::string& option,
                   std::string& path, const std::string& help,
                   const std::string& kind = "FILE");
void AddRunOptions(CLI::App& command, CommonOptions& options);
void AddComponentOutputs(CLI::App& command, CommonOptions& options);
void AddMeasurementOutputs(CLI::App& command, CommonOptions& options);
// What the commands for one image have besides: --json, --overlay, --zoom,
// --save-recipe and the run options.
void AddSingleImageOptions(CLI::App& command, CommonOptions& options);

// The error of a value that no option of its own can check.
[[noreturn]] void RefuseValue(const std::string& option,
                              const std::string& value, const std::string& why);

// Text cut at every `mark`.
std::vector<std::string> Split(std::string_view text, char mark);

// Exactly so many numbers with commas between them.
std::vector<double> NumbersOf(const std::string& option,
                              const std::string& text, size_t count);

// "rendal-cli blob"
struct BlobOptions {
  std::string image;
  std::vector<int> gray;
  int neighbours = 8;
  std::vector<std::string> select;
  std::string border = "keep";
  CommonOptions common;
};
void AddBlobCommand(CLI::App& app, BlobOptions& options);
std::vector<Step> BlobSteps(const CLI::App& command,
                            const BlobOptions& options);

// "rendal-cli measure"
struct MeasureOptions {
  std::string image;
  std::string line, circle, ellipse, band;
  CaliperParameters parameters;
  std::string direction = "+";
  CommonOptions common;
};
void AddMeasureCommand(CLI::App& app, MeasureOptions& options);
std::vector<Step> MeasureSteps(const MeasureOptions& options);

// "rendal-cli find-lines"
struct FindLinesOptions {
  std::string image;
  int display = 3;
  CommonOptions common;
};
void AddFindLinesCommand(CLI::App& app, FindLinesOptions& options);

// "rendal-cli run"
struct RunOptions {
  std::string recipe;
  std::vector<std::string> images;
  std::string out = ".";
  CommonOptions common;
};
void AddRunCommand(CLI::App& app, RunOptions& options);
ExitCode RunRecipe(const RunOptions& options);

}  // namespace rendal

#endif  // RENDAL_CLI_COMMANDS_H_
