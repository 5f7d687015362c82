// SPDX-License-Identifier: MIT
#include <cstdio>
#include <filesystem>

#include "cli/commands.h"
#include "cli/image_list.h"
#include "recipes/output_file.h"
#include "recipes/recipe_json.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;

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
  job.recipe = PathOf(options.recipe);
  job.folder = folder;
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

}  // namespace

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
  CommonOptions& common = options.common;
  AddResultFile(*command, "--csv", common.csv, "All components of all images");
  AddResultFile(*command, "--measurements", common.measurements,
                "All measurements");
  AddResultFile(*command, "--points", common.points, "All edge points");
  AddResultFile(*command, "--json", common.json, "Everything", "FILE.json");
  AddResultFile(*command, "--coco", common.coco, "Components as masks",
                "FILE.json");
  AddRunOptions(*command, common);
  command->footer(
      "Examples:\n"
      "  rendal-cli run coins.json photographs --out results\n"
      "  rendal-cli run coins.json \"night/*.png\" --csv all.csv --threads "
      "4\n\n"
      "docs/recipes.md describes recipes.");
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
  return RunJob(RecipeJob(recipe, options));
}

}  // namespace rendal
