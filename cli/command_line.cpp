// SPDX-License-Identifier: MIT
#include "cli/command_line.h"

#include <cstdio>
#include <opencv2/core/utils/logger.hpp>
#include <stdexcept>
#include <utility>

#include "cli/commands.h"
#include "cli/licences.h"
#include "cli/system.h"
#include "recipes/output_file.h"

namespace rendal {
namespace {

struct InfoOptions {
  std::string image;
};

void AddInfoCommand(CLI::App& app, InfoOptions& options) {
  CLI::App* const command =
      app.add_subcommand("info", "Size, format and grey values of an image");
  command->add_option("IMAGE", options.image, "The image")->required();
  command->footer("Example:\n  rendal-cli info coins.png");
}

// A job of one image, from the options of a command.
ExitCode RunSingle(const std::string& image, std::vector<Step> steps,
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
  job.saved_recipe = PathOf(options.save_recipe);
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
  FlushStandardOutput();
  return kAllFine;
}

// Ends the parsing of arguments: no command is wanted.
struct LicencesWanted {};

ExitCode PrintLicences() {
  const LicenceTexts licences = TextsOf(kLicences);
  std::fputs(licences.text.c_str(), stdout);
  FlushStandardOutput();
  if (licences.missing.empty()) return kAllFine;
  std::fprintf(stderr, "rendal-cli: built without the licence texts of %s\n",
               licences.missing.c_str());
  return kSomethingFailed;
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
    m_app.add_flag_callback(
        "--licences", [] { throw LicencesWanted(); },
        "Print the licence texts of this program and of all it is made of");
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

  ExitCode Do(int argc, const char* const* argv) {
    try {
      m_app.parse(argc, argv);
      return Run();
    } catch (const LicencesWanted&) {
      return PrintLicences();
    } catch (const CLI::ParseError& error) {
      // Help and version come as errors, too.
      if (m_app.exit(error) != 0) return kUsageError;
      FlushStandardOutput();
      return kAllFine;
    }
  }

 private:
  bool Is(const char* command) const { return m_app.got_subcommand(command); }

  ExitCode Run() {
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
  const auto failed = [](const std::exception& error, ExitCode code) {
    std::fprintf(stderr, "rendal-cli: %s\n", error.what());
    return code;
  };
  try {
    return CommandLine().Do(argc, argv);
  } catch (const std::invalid_argument& error) {
    return failed(error, kUsageError);
  } catch (const std::exception& error) {
    return failed(error, kSomethingFailed);
  }
}

}  // namespace rendal
