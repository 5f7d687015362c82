// SPDX-License-Identifier: MIT
//
// Reads the input as a recipe. Whatever the bytes are, it is refused with a
// reason or accepted; no other exception leaves the reader, and no reading
// takes longer than a second. What is accepted
//
//   - names no file outside the folder of the results,
//   - has steps that can be run one after the other,
//   - reads back, once written, as the same recipe.
//
// A broken promise aborts.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "recipes/recipe_json.h"

namespace {

using rendal::Recipe;

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "recipe_fuzz: %s\n", what);
  std::abort();
}

// None if it is refused. Any other exception ends the program.
std::optional<Recipe> read(std::string_view text) {
  try {
    return rendal::ReadRecipe(text);
  } catch (const rendal::RecipeError& error) {
    require(*error.what() != '\0', "a refusal without a reason");
    return std::nullopt;
  }
}

// As little is asked of a name as keeps it in its folder on every system.
void check_name(const std::string& name) {
  if (name.empty()) return;
  require(name != "." && name != ".." && name != "NUL",
          "a name that is no file's");
  require(name.find_first_of("/\\:") == std::string::npos,
          "a name with a folder");
  require(name.find('\0') == std::string::npos, "a name that ends early");
}

void check_outputs(const rendal::Outputs& outputs) {
  for (const std::string* name :
       {&outputs.csv, &outputs.measurements, &outputs.points, &outputs.json,
        &outputs.coco, &outputs.labels, &outputs.overlay}) {
    check_name(*name);
  }
  require(outputs.zoom >= 1.0 / 128 && outputs.zoom <= 128, "a zoom too far");
}

void check_round_trip(const Recipe& recipe) {
  const std::string written = rendal::WriteRecipe(recipe);
  const std::optional<Recipe> again = read(written);
  require(again.has_value(), "what was written is refused");
  require(*again == recipe, "what was written reads as another recipe");
  require(rendal::WriteRecipe(*again) == written, "written twice it differs");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // A copy of its own size, so that a read behind the end is seen.
  const std::string text(data, data + size);
  const std::clock_t start = std::clock();
  if (const std::optional<Recipe> recipe = read(text)) {
    require(!recipe->steps.empty(), "a recipe without steps");
    rendal::CheckSteps(recipe->steps);
    check_outputs(recipe->outputs);
    check_round_trip(*recipe);
  }
  const double taken =
      static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  require(taken < 1, "reading took too long");
  return 0;
}
