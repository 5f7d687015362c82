// SPDX-License-Identifier: MIT
#include "cli/command_line.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <opencv2/core/utils/logger.hpp>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/commands.h"
#include "cli/image_list.h"
#include "recipes/number_text.h"
#include "recipes/output_file.h"
#include "recipes/recipe_json.h"

namespace rendal {

namespace fs = std::filesystem;

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
                    " numbers with commas between them, "
                    "not " +
                    std::to_string(numbers.size()));
  }
  return numbers;
}

void AddRunOptions(CLI::App& command, CommonOptions& options) {
  command
      .add_option("--threads", options.threads,
                  "At most so many; all of the hardware by default")
      ->check(CLI::Range(1, 1024))
      ->type_name("N");
  command.add_flag("--quiet", options.is_quiet, "Tell of errors only");
}

void AddComponentOutputs(CLI::App& command, CommonOptions& options) {
  command.add_option("--csv", options.csv, "Components as a table")
      ->type_name("FILE")
      ->group("Results");
  command
      .add_option("--labels", options.labels,
                  "16-bit picture: each pixel its component's id")
      ->type_name("FILE.png")
      ->group("Results");
  command.add_option("--coco", options.coco, "Components as masks")
      ->type_name("FILE.json")
      ->group("Results");
  command
      .add_option("--rle", options.rle,
                  "Form of these masks: uncompressed (default), compressed")
      ->check(CLI::IsMember({"uncompressed", "compressed"}))
      ->group("Results");
}

void AddMeasurementOutputs(CLI::App& command, CommonOptions& options) {
  command.add_option("--csv", options.measurements, "Measurements as a table")
      ->type_name("FILE")
      ->group("Results");
  command.add_option("--points", options.points, "Edge points as a table")
      ->type_name("FILE")
      ->group("Results");
}

void AddImageOutputs(CLI::App& command, CommonOptions& options) {
  command.add_option("--json", options.json, "Everything")
      ->type_name("FILE")
      ->group("Results");
  command
      .add_option("--overlay", options.overlay,
                  "The picture as the workbench draws it")
      ->type_name("FILE.png")
      ->group("Results");
  command.add_option("--zoom", options.zoom, "Of that picture")
      ->check(CLI::Range(1.0 / 128, 128.0))
      ->capture_default_str()
      ->group("Results");
  command
      .add_option("--save-recipe", options.save_recipe,
                  "These steps as a recipe for \"run\"")
      ->type_name("FILE")
      ->group("Results");
}

namespace {

struct InfoOptions {
  std::string image;
};

struct RunOptions {
  std::string recipe;
  std::vector<std::string> images;
  std::string out = ".";
  CommonOptions common;
};

void AddInfoCommand(CLI::App& app, InfoOptions& options) {
  CLI::App* const command =
      app.add_subcommand("info", "Size, format and grey values of an image");
  command->add_option("IMAGE", options.image, "The image")->required();
}

void AddRunCommand(CLI::App& app, RunOptions& options) {
  CLI::App* const command =
      app.add_subcommand("run", "Work through a recipe on one image or many");
  command->add_option("RECIPE", options.recipe, "A recipe file")->required();
  command
      ->add_option("IMAGE|FOLDER|GLOB", options.images,
                   "Images, folders of images, patterns with * and ?")
      ->required();
  command
      ->add_option("--out", options.out,
                   "Folder of the files that the recipe names; made if missing")
      ->type_name("FOLDER")
      ->capture_default_str()
      ->group("Results");
  const auto file = [command](const char* name, std::string& value,
                              const char* help) {
    command->add_option(name, value, help)->type_name("FILE")->group("Results");
  };
  file("--csv", options.common.csv, "All components of all images");
  file("--measurements", options.common.measurements, "All measurements");
  file("--points", options.common.points, "All edge points");
  file("--json", options.common.json, "Everything");
  file("--coco", options.common.coco, "Components as masks");
  AddRunOptions(*command, options.common);
  command->footer(
      "Examples:\n"
      "  rendal-cli run coins.json photographs --out results\n"
      "  rendal-cli run coins.json \"night/*.png\" --csv all.csv --threads "
      "4\n\n"
      "docs/recipes.md describes recipes.");
}

// A job of one image, from the options of a command.
Job SingleJob(const std::string& image, std::vector<Step> steps,
              const CommonOptions& options) {
  Job job;
  job.steps = std::move(steps);
  job.images = {
      {PathOf(image), PathOf(options.labels), PathOf(options.overlay)}};
  job.files = {PathOf(options.csv), PathOf(options.measurements),
               PathOf(options.points), PathOf(options.json),
               PathOf(options.coco)};
  job.image_column = false;
  job.zoom = options.zoom;
  job.compressed_rle = options.rle == "compressed";
  job.text = options.is_quiet ? TextForm::kNothing : TextForm::kReport;
  job.is_quiet = options.is_quiet;
  job.threads = options.threads;
  return job;
}

ExitCode RunSingle(const std::string& image, const std::vector<Step>& steps,
                   const CommonOptions& options) {
  if (!options.save_recipe.empty()) {
    WriteOutput(PathOf(options.save_recipe), WriteRecipe({steps, {}}));
  }
  return RunJob(SingleJob(image, steps, options));
}

Recipe ReadRecipeFile(const fs::path& path) {
  std::error_code error;
  std::ifstream file(path, std::ios::binary);
  if (!file || fs::is_directory(path, error)) {
    throw RecipeError("", "cannot be read");
  }
  return ReadRecipe(std::string((std::istreambuf_iterator<char>(file)),
                                std::istreambuf_iterator<char>()));
}

std::string WithName(std::string pattern, const std::string& name) {
  constexpr std::string_view kMark = "{name}";
  for (size_t at = pattern.find(kMark); at != std::string::npos;
       at = pattern.find(kMark, at + name.size())) {
    pattern.replace(at, kMark.size(), name);
  }
  return pattern;
}

// A file that an option names, or else the recipe, or none.
fs::path FileFor(const std::string& option, const fs::path& folder,
                 const std::string& name) {
  if (!option.empty()) return PathOf(option);
  return name.empty() ? fs::path() : folder / PathOf(name);
}

Job RecipeJob(const Recipe& recipe, const RunOptions& options) {
  const Outputs& outputs = recipe.outputs;
  const CommonOptions& common = options.common;
  const fs::path folder = PathOf(options.out);
  const std::vector<fs::path> images = ListImages(options.images);
  const std::vector<std::string> names = PictureNames(images);
  Job job;
  job.steps = recipe.steps;
  for (size_t i = 0; i < images.size(); ++i) {
    job.images.push_back(
        {images[i], FileFor("", folder, WithName(outputs.labels, names[i])),
         FileFor("", folder, WithName(outputs.overlay, names[i]))});
  }
  job.files = {FileFor(common.csv, folder, outputs.csv),
               FileFor(common.measurements, folder, outputs.measurements),
               FileFor(common.points, folder, outputs.points),
               FileFor(common.json, folder, outputs.json),
               FileFor(common.coco, folder, outputs.coco)};
  job.zoom = outputs.zoom;
  job.compressed_rle = outputs.compressed_rle;
  job.is_quiet = common.is_quiet;
  job.threads = common.threads;
  const ResultPaths& files = job.files;
  const bool has_table =
      !files.csv.empty() || !files.json.empty() || !files.measurements.empty();
  job.text = common.is_quiet ? TextForm::kNothing
             : has_table     ? TextForm::kSummary
                             : TextForm::kReport;
  return job;
}

ExitCode RunRecipe(const RunOptions& options) {
  Recipe recipe;
  try {
    recipe = ReadRecipeFile(PathOf(options.recipe));
  } catch (const RecipeError& error) {
    std::fprintf(stderr, "rendal-cli: %s: %s\n", options.recipe.c_str(),
                 error.what());
    return kRecipeError;
  }
  const Job job = RecipeJob(recipe, options);
  std::error_code error;
  fs::create_directories(PathOf(options.out), error);
  if (error) {
    throw OutputError("cannot make the folder " + options.out + ": " +
                      error.message());
  }
  return RunJob(job);
}

ExitCode RunInfo(const std::string& image) {
  std::string error;
  const std::string text = DescribeImage(PathOf(image), &error);
  if (!error.empty()) {
    std::fprintf(stderr, "rendal-cli: %s: %s\n", image.c_str(), error.c_str());
    return kSomethingFailed;
  }
  std::fputs(text.c_str(), stdout);
  return std::fflush(stdout) == 0 ? kAllFine : kSomethingFailed;
}

// All commands with their options.
class CommandLine {
 public:
  CommandLine()
      : m_app(
            "Machine vision on run-length regions: the tools of the Rendal "
            "workbench\nwithout its window.",
            "rendal-cli") {
    m_app.set_version_flag("--version", "rendal-cli " RENDAL_VERSION);
    m_app.require_subcommand(1);
    // A path may begin with a slash on Windows, too.
    m_app.allow_windows_style_options(false);
    AddBlobCommand(m_app, m_blob);
    AddMeasureCommand(m_app, m_measure);
    AddFindLinesCommand(m_app, m_findLines);
    AddInfoCommand(m_app, m_info);
    AddRunCommand(m_app, m_run);
    m_app.footer(
        "Examples:\n"
        "  rendal-cli blob coins.png --gray 90 255 --fill\n"
        "  rendal-cli measure gauge.png --line 100,200,400,200\n"
        "  rendal-cli run recipe.json folder --out results\n\n"
        "Exit codes: 0 all fine; 1 an image, a fit or a result file failed; 2 "
        "usage;\n3 recipe; 130 interrupted, with the results so far written.");
  }

  int Parse(int argc, const char* const* argv) {
    try {
      m_app.parse(argc, argv);
      return Run();
    } catch (const CLI::ParseError& error) {
      // Help and version come as errors, too.
      return m_app.exit(error) == 0 ? kAllFine : kUsageError;
    }
  }

 private:
  bool Is(const char* command) const { return m_app.got_subcommand(command); }

  ExitCode Run() {
    try {
      if (Is("blob")) {
        return RunSingle(m_blob.image,
                         BlobSteps(*m_app.get_subcommand("blob"), m_blob),
                         m_blob.common);
      }
      if (Is("measure")) {
        return RunSingle(m_measure.image, MeasureSteps(m_measure),
                         m_measure.common);
      }
      if (Is("find-lines")) {
        return RunSingle(m_findLines.image,
                         {FindLineStep{m_findLines.display - 1}},
                         m_findLines.common);
      }
      return Is("info") ? RunInfo(m_info.image) : RunRecipe(m_run);
    } catch (const CLI::ParseError&) {
      throw;
    } catch (const OutputError& error) {
      std::fprintf(stderr, "rendal-cli: %s\n", error.what());
      return kSomethingFailed;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "rendal-cli: %s\n", error.what());
      return kUsageError;
    }
  }

  CLI::App m_app;
  BlobOptions m_blob;
  MeasureOptions m_measure;
  FindLinesOptions m_findLines;
  InfoOptions m_info;
  RunOptions m_run;
};

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  return CommandLine().Parse(argc, argv);
}

}  // namespace rendal
