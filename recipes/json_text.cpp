// SPDX-License-Identifier: MIT
#include "recipes/json_text.h"

#include <set>
#include <string>
#include <vector>

#include "recipes/recipe_json.h"

namespace rendal {
namespace {

using nlohmann::json;

// A recipe's lists of numbers are the fourth level.
constexpr size_t kDeepest = 16;

// Follows the parser; refuses a key that its object has already, and levels
// that only take memory.
class KeyCheck {
 public:
  void Follow(json::parse_event_t event, const json& parsed) {
    switch (event) {
      case json::parse_event_t::object_start:
      case json::parse_event_t::array_start:
        if (m_levels.size() == kDeepest) {
          throw RecipeError("", "no recipe: it is nested too deep");
        }
        m_levels.push_back({event == json::parse_event_t::array_start});
        break;
      case json::parse_event_t::key:
        m_levels.back().key = parsed.get<std::string>();
        if (!m_levels.back().keys.insert(m_levels.back().key).second) {
          throw RecipeError(Place(), "is given twice");
        }
        break;
      case json::parse_event_t::object_end:
      case json::parse_event_t::array_end:
        m_levels.pop_back();
        [[fallthrough]];
      case json::parse_event_t::value:
        if (!m_levels.empty()) ++m_levels.back().index;
        break;
    }
  }

 private:
  struct Level {
    bool is_list;
    size_t index = 0;
    std::string key = {};
    std::set<std::string> keys = {};
  };

  std::string Place() const {
    std::string place;
    for (const Level& level : m_levels) {
      if (level.is_list) {
        place += '[';
        place += std::to_string(level.index);
        place += ']';
      } else {
        if (!place.empty()) place += '.';
        place += level.key;
      }
    }
    return place;
  }

  std::vector<Level> m_levels;
};

}  // namespace

json ParseJson(std::string_view text) {
  KeyCheck keys;
  const auto check = [&keys](int, json::parse_event_t event, json& parsed) {
    keys.Follow(event, parsed);
    return true;
  };
  try {
    return json::parse(text.begin(), text.end(), check);
  } catch (const json::exception& error) {
    const std::string what = error.what();
    // Without the library's own "[json.exception...] ".
    const size_t end = what.find("] ");
    throw RecipeError(
        "",
        "no JSON: " + (end == std::string::npos ? what : what.substr(end + 2)));
  }
}

}  // namespace rendal
