// SPDX-License-Identifier: MIT
#include "recipes/recipe_fields.h"

#include <cmath>
#include <utility>

#include "recipes/number_text.h"
#include "recipes/recipe_json.h"

namespace rendal {
namespace {

using nlohmann::json;

double NumberAt(const json& value, const std::string& place, double min,
                double max) {
  const double number = value.is_number() ? value.get<double>() : NAN;
  if (!(number >= min && number <= max)) {
    throw RecipeError(place, "must be a number from " + NumberText(min) +
                                 " to " + NumberText(max));
  }
  return number;
}

}  // namespace

RecipeFields::RecipeFields(const json& object, std::string place)
    : m_object(object), m_place(std::move(place)) {
  if (!object.is_object()) throw RecipeError(m_place, "must be an object");
}

std::string RecipeFields::PlaceOf(const std::string& key) const {
  return m_place.empty() ? key : m_place + "." + key;
}

const json* RecipeFields::Find(const std::string& key) {
  m_known.insert(key);
  const auto found = m_object.find(key);
  return found == m_object.end() ? nullptr : &*found;
}

const json& RecipeFields::Need(const std::string& key) {
  const json* const value = Find(key);
  if (value == nullptr) throw RecipeError(PlaceOf(key), "is missing");
  return *value;
}

int RecipeFields::Integer(const std::string& key, int min, int max,
                          std::optional<int> fallback) {
  const json* const value = Find(key);
  if (value == nullptr && fallback) return *fallback;
  const json& given = Need(key);
  // Written as 3.0 it is no less whole.
  const double number = given.is_number() ? given.get<double>() : NAN;
  if (!(number >= min && number <= max) || number != std::floor(number)) {
    throw RecipeError(PlaceOf(key), "must be a whole number from " +
                                        std::to_string(min) + " to " +
                                        std::to_string(max));
  }
  return static_cast<int>(number);
}

double RecipeFields::Number(const std::string& key, double min, double max,
                            double fallback) {
  const json* const value = Find(key);
  return value == nullptr ? fallback : NumberAt(*value, PlaceOf(key), min, max);
}

size_t RecipeFields::Choice(const std::string& key,
                            std::span<const char* const> choices,
                            std::optional<size_t> fallback) {
  const json* const value = Find(key);
  if (value == nullptr && fallback) return *fallback;
  const json& given = Need(key);
  std::string all;
  for (size_t i = 0; i < choices.size(); ++i) {
    const char* const choice = choices[i];
    if (given.is_string() && given.get_ref<const std::string&>() == choice) {
      return i;
    }
    all += std::string(i == 0 ? "" : ", ") + '"' + choice + '"';
  }
  throw RecipeError(PlaceOf(key), "must be one of " + all);
}

std::string RecipeFields::Text(const std::string& key) {
  const json& value = Need(key);
  if (!value.is_string()) throw RecipeError(PlaceOf(key), "must be a text");
  return value.get<std::string>();
}

std::vector<double> RecipeFields::Numbers(const std::string& key, size_t count,
                                          double min, double max) {
  const json& value = Need(key);
  if (!value.is_array() || value.size() != count) {
    throw RecipeError(PlaceOf(key), "must be a list of " +
                                        std::to_string(count) + " numbers");
  }
  std::vector<double> numbers;
  for (size_t i = 0; i < count; ++i) {
    numbers.push_back(NumberAt(
        value[i], PlaceOf(key) + "[" + std::to_string(i) + "]", min, max));
  }
  return numbers;
}

void RecipeFields::Range(const std::string& key, double* min, double* max) {
  const json& value = Need(key);
  if (!value.is_array() || value.size() != 2) {
    throw RecipeError(PlaceOf(key),
                      "must be a list of the least and the most, either null");
  }
  if (!value[0].is_null()) {
    *min = NumberAt(value[0], PlaceOf(key) + "[0]", -kLargestFeature,
                    kLargestFeature);
  }
  if (!value[1].is_null()) {
    *max = NumberAt(value[1], PlaceOf(key) + "[1]", -kLargestFeature,
                    kLargestFeature);
  }
  if (*min > *max) {
    throw RecipeError(PlaceOf(key), "its least is above its most");
  }
}

void RecipeFields::RefuseOthers() const {
  for (const auto& [key, value] : m_object.items()) {
    if (m_known.count(key) == 0) {
      throw RecipeError(PlaceOf(key), "is not known here");
    }
  }
}

}  // namespace rendal
