// SPDX-License-Identifier: MIT
//
// A recipe over images, in parallel.
#ifndef RENDAL_CLI_JOB_H_
#define RENDAL_CLI_JOB_H_

#include <filesystem>
#include <string>
#include <vector>

#include "cli/image_run.h"
#include "cli/result_files.h"

namespace rendal {

enum ExitCode : int {
  kAllFine = 0,
  kSomethingFailed = 1,  // an image, a fit or a file to be written
  kUsageError = 2,
  kRecipeError = 3,
  kInterrupted = 130,
};

// What goes to the standard output.
enum class TextForm {
  kNothing,
  kReport,   // everything
  kSummary,  // one line an image
};

struct JobImage {
  std::filesystem::path path;
  std::filesystem::path labels;   // empty: none
  std::filesystem::path overlay;  // empty: none
};

struct Job {
  std::vector<Step> steps;
  std::vector<JobImage> images;
  ResultPaths files;
  std::filesystem::path folder;        // made if missing; empty: none
  std::filesystem::path recipe;        // that the steps are from, or empty
  std::filesystem::path saved_recipe;  // written first; empty: none
  bool image_column = true;
  double zoom = 1;
  bool compressed_rle = false;
  TextForm text = TextForm::kReport;
  bool is_quiet = false;  // no progress, no notes
  int threads = 0;        // 0: as many as the hardware has
};

// Runs it and tells on the standard error stream what failed. Results are the
// same, and in the order of the images, for every number of threads. Each
// thread has one image at a time; with fewer images than threads the region
// operations share the others.
//
// After an interrupt (Ctrl-C) images that were begun are finished, the results
// so far are written, and the answer is kInterrupted; a second one ends the
// program at once.
//
// Throws std::invalid_argument if a result would overwrite an image, the recipe
// or another result, before anything is done.
ExitCode RunJob(const Job& job);

}  // namespace rendal

#endif  // RENDAL_CLI_JOB_H_
