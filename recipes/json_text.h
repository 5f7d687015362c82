// SPDX-License-Identifier: MIT
#ifndef RENDAL_RECIPES_JSON_TEXT_H_
#define RENDAL_RECIPES_JSON_TEXT_H_

#include <nlohmann/json.hpp>
#include <string_view>

namespace rendal {

// Text as JSON. Throws RecipeError for text that is none, with the line, and
// for a key that an object has twice, with its place.
nlohmann::json ParseJson(std::string_view text);

}  // namespace rendal

#endif  // RENDAL_RECIPES_JSON_TEXT_H_
