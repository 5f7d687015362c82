// SPDX-License-Identifier: MIT
//
// Reads the fields of one JSON object and refuses what it does not know.
#ifndef RENDAL_RECIPES_RECIPE_FIELDS_H_
#define RENDAL_RECIPES_RECIPE_FIELDS_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace rendal {

// Every function that reads a field throws RecipeError, with the field's place
// (as "steps[2].radius"), for a value of another type or range.
class RecipeFields {
 public:
  // The object must outlive this.
  RecipeFields(const nlohmann::json& object, std::string place);

  bool Has(const std::string& key) const { return m_object.contains(key); }
  // Null if the field is missing.
  const nlohmann::json* Find(const std::string& key);
  const nlohmann::json& Need(const std::string& key);

  // Without a fallback the field must be there.
  int Integer(const std::string& key, int min, int max,
              std::optional<int> fallback = {});
  // Both ends inclusive.
  double Number(const std::string& key, double min, double max,
                double fallback);
  // Text as one of the choices; the number of the choice.
  size_t Choice(const std::string& key, std::span<const char* const> choices,
                std::optional<size_t> fallback = {});
  std::string Text(const std::string& key);
  // Exactly so many numbers.
  std::vector<double> Numbers(const std::string& key, size_t count, double min,
                              double max);
  // A limit from, to; null for none.
  void Range(const std::string& key, double* min, double* max);

  // Refuses fields that were not asked for.
  void RefuseOthers() const;

  std::string PlaceOf(const std::string& key) const;

 private:
  const nlohmann::json& m_object;
  std::string m_place;
  std::set<std::string> m_known;
};

}  // namespace rendal

#endif  // RENDAL_RECIPES_RECIPE_FIELDS_H_
