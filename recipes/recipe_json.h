// SPDX-License-Identifier: MIT
//
// Recipes as JSON files; docs/recipes.md describes them.
#ifndef RENDAL_RECIPES_RECIPE_JSON_H_
#define RENDAL_RECIPES_RECIPE_JSON_H_

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "recipes/recipe.h"

namespace rendal {

inline constexpr int kRecipeVersion = 1;
// Bytes; a recorded step takes about 100.
inline constexpr size_t kLongestRecipe = size_t{16} << 20;

// What is wrong with a recipe and where: "steps[2].radius: must be ...".
class RecipeError : public std::runtime_error {
 public:
  RecipeError(const std::string& place, const std::string& what)
      : std::runtime_error(place.empty() ? what : place + ": " + what) {}
};

// Throws RecipeError for text that is no JSON or longer than kLongestRecipe,
// for fields that are missing, unknown, given twice, of a wrong type or out of
// range, for steps that nothing leads up to, and for file names that are more
// than names.
Recipe ReadRecipe(std::string_view text);

// The same of a file, of which it never reads more than kLongestRecipe and a
// byte. "cannot be read" where there is none.
Recipe ReadRecipeFile(const std::filesystem::path& path);

// Reads back as the same recipe.
std::string WriteRecipe(const Recipe& recipe);

// Throws RecipeError for a step whose input no step before it makes.
void CheckSteps(const std::vector<Step>& steps);

}  // namespace rendal

#endif  // RENDAL_RECIPES_RECIPE_JSON_H_
