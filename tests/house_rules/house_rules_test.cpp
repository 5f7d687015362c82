// SPDX-License-Identifier: MIT
//
// Rules that no compiler checks: which folder includes which, where characters
// beyond ASCII may stand, how long a file may be, the licence line.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "gtest/gtest.h"

namespace {

namespace fs = std::filesystem;

constexpr size_t kMaxLines = 600;

struct Source {
  std::string path;  // from the project's root, with forward slashes
  std::vector<std::string> lines;
};

bool StartsWith(const std::string& text, const std::string& start) {
  return text.rfind(start, 0) == 0;
}

bool StartsWithAny(const std::string& text,
                   const std::set<std::string>& starts) {
  return std::any_of(
      starts.begin(), starts.end(),
      [&](const std::string& start) { return StartsWith(text, start); });
}

std::vector<std::string> LinesOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

bool IsCode(const fs::path& path) {
  static const std::set<std::string> kinds = {".h",  ".cpp", ".c",    ".rc",
                                              ".sh", ".py",  ".cmake"};
  return kinds.count(path.extension().string()) ||
         path.filename() == "CMakeLists.txt";
}

// Everything that is written by hand; folders that begin with a dot, and what
// the two commands leave, are not.
std::vector<Source> ReadSources() {
  const fs::path root = RENDAL_SOURCE_DIR;
  std::vector<Source> sources;
  for (auto entry = fs::recursive_directory_iterator(root);
       entry != fs::recursive_directory_iterator(); ++entry) {
    const fs::path path = entry->path();
    const std::string name = path.filename().string();
    const bool product =
        entry.depth() == 0 && (name == "build" || name == "out");
    if (entry->is_directory() && (product || name.front() == '.')) {
      entry.disable_recursion_pending();
    } else if (entry->is_regular_file() && IsCode(path)) {
      sources.push_back(
          {path.lexically_relative(root).generic_string(), LinesOf(path)});
    }
  }
  return sources;
}

const std::vector<Source>& Sources() {
  static const std::vector<Source> sources = ReadSources();
  return sources;
}

// The folder a file belongs to, as far as includes go: the longest key that
// its path starts with. The values are what it may include of ours.
using Layers = std::map<std::string, std::set<std::string>>;

const std::set<std::string> kRegion = {"region/region.h",
                                       "region/operations.h"};

std::set<std::string> With(std::set<std::string> left,
                           const std::set<std::string>& right) {
  left.insert(right.begin(), right.end());
  return left;
}

const Layers& IncludesAllowed() {
  static const Layers layers = {
      {"region/", {"region/"}},
      {"vexolab/", {"vexolab/"}},
      {"tools/", With(kRegion, {"tools/", "vexolab/vexolab.h"})},
      {"recipes/", With(kRegion, {"recipes/", "tools/", "vexolab/vexolab.h"})},
      {"app/view/", With(kRegion, {"app/view/", "tools/"})},
      {"mfc/", {}},
      {"controls/", {"controls/"}},
      {"app/",
       With(kRegion, {"app/", "controls/", "recipes/", "tools/", "res/"})},
      {"cli/", With(kRegion, {"cli/", "recipes/", "app/view/", "tools/"})},
  };
  return layers;
}

// Headers of others, by the folders that may see them.
const Layers& SystemHeaders() {
  static const std::set<std::string> windows = {
      "app/",   "controls/", "mfc/",          "res/",
      "tests/", "bench/",    "cli/system.cpp"};
  static const Layers headers = {
      {"windows.h", windows},
      {"commctrl.h", windows},
      {"afx", windows},
      {"opencv2/highgui", {"app/", "tests/windows/"}},
      {"opencv2/",
       {"tools/", "app/", "cli/", "recipes/", "samples/", "tests/", "bench/",
        "fuzz/"}},
      {"Eigen/", {"vexolab/", "tests/vexolab/", "bench/"}},
  };
  return headers;
}

// What runs without a window although its folder has windows.
const std::set<std::string> kWindowFree = {"app/view/", "controls/number_"};

template <typename Map>
auto LongestMatch(const Map& map, const std::string& text) {
  auto best = map.end();
  for (auto entry = map.begin(); entry != map.end(); ++entry) {
    if (StartsWith(text, entry->first) &&
        (best == map.end() || entry->first.size() > best->first.size())) {
      best = entry;
    }
  }
  return best;
}

bool MayIncludeOurs(const std::string& path, const std::string& header) {
  const auto layer = LongestMatch(IncludesAllowed(), path);
  const auto target = LongestMatch(IncludesAllowed(), header);
  // Tests and benches look into everything; a header without a folder of ours
  // in front is a file's neighbour.
  if (layer == IncludesAllowed().end() || target == IncludesAllowed().end()) {
    return true;
  }
  return StartsWithAny(header, layer->second);
}

bool MayIncludeSystem(const std::string& path, const std::string& header) {
  const auto rule = LongestMatch(SystemHeaders(), header);
  if (rule == SystemHeaders().end()) return true;
  const bool image =
      StartsWith(header, "opencv2/") && !StartsWith(header, "opencv2/highgui");
  if (StartsWithAny(path, kWindowFree) && !image) return false;
  return StartsWithAny(path, rule->second);
}

bool MayInclude(const std::string& path, const std::string& line) {
  static const std::regex include(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])");
  std::smatch match;
  if (!std::regex_search(line, match, include)) return true;
  return match[1] == "\"" ? MayIncludeOurs(path, match[2])
                          : MayIncludeSystem(path, match[2]);
}

// Wording stands in tables and resources; tests of the window quote it.
bool MayHoldWording(const std::string& path) {
  return StartsWithAny(path, {"tools/status.cpp", "app/ui_text.h", "res/",
                              "tests/windows/", "tests/tools/status_test"});
}

TEST(HouseRules, SourcesAreFound) {
  EXPECT_GT(Sources().size(), 100u);
  std::set<std::string> seen;
  for (const Source& source : Sources()) seen.insert(source.path);
  EXPECT_TRUE(seen.count("region/region.h"));
  EXPECT_TRUE(seen.count("app/view/CMakeLists.txt"));
  EXPECT_TRUE(seen.count("tests/house_rules/house_rules_test.cpp"));
}

TEST(HouseRules, LayeringKnowsRightFromWrong) {
  EXPECT_TRUE(MayInclude("tools/a.cpp", "#include \"region/region.h\""));
  EXPECT_FALSE(MayInclude("tools/a.cpp", "#include \"region/internal/x.h\""));
  EXPECT_FALSE(MayInclude("region/a.cpp", "#include \"vexolab/vexolab.h\""));
  EXPECT_FALSE(MayInclude("region/a.cpp", "#include <opencv2/core.hpp>"));
  EXPECT_FALSE(MayInclude("tools/a.h", "  #  include <windows.h>"));
  EXPECT_FALSE(MayInclude("app/view/a.cpp", "#include <afxwin.h>"));
  EXPECT_FALSE(MayInclude("app/view/a.cpp", "#include \"app/console.h\""));
  EXPECT_FALSE(MayInclude("app/view/a.cpp", "#include <opencv2/highgui.hpp>"));
  EXPECT_FALSE(MayInclude("controls/number_x.cpp", "#include <afxwin.h>"));
  EXPECT_TRUE(MayInclude("app/a.cpp", "#include <opencv2/highgui.hpp>"));
  EXPECT_TRUE(MayInclude("tests/region/a.cpp", "#include \"region/a.h\""));
}

TEST(HouseRules, FoldersIncludeOnlyWhatStandsBelowThem) {
  for (const Source& source : Sources()) {
    for (const std::string& line : source.lines) {
      EXPECT_TRUE(MayInclude(source.path, line))
          << source.path << " may not say: " << line;
    }
  }
}

TEST(HouseRules, SourcesAreAsciiButForTheWording) {
  for (const Source& source : Sources()) {
    if (MayHoldWording(source.path)) continue;
    for (size_t number = 0; number < source.lines.size(); ++number) {
      const std::string& line = source.lines[number];
      EXPECT_TRUE(std::all_of(line.begin(), line.end(),
                              [](char letter) {
                                return letter > 0 && letter != '\t' &&
                                       letter != '\r';
                              }))
          << source.path << ":" << number + 1
          << " has a tab, a carriage return or a character beyond ASCII";
    }
  }
}

TEST(HouseRules, FilesHaveAtMostSixHundredLines) {
  for (const Source& source : Sources()) {
    EXPECT_LE(source.lines.size(), kMaxLines) << source.path;
  }
}

TEST(HouseRules, FirstLineIsTheLicence) {
  for (const Source& source : Sources()) {
    const size_t first =
        !source.lines.empty() && StartsWith(source.lines[0], "#!") ? 1 : 0;
    ASSERT_GT(source.lines.size(), first) << source.path << " is empty";
    EXPECT_TRUE(std::regex_match(
        source.lines[first],
        std::regex(R"((//|#|/\*) SPDX-License-Identifier: MIT( \*/)?)")))
        << source.path;
  }
}

// A fault of tests/mutation: where it goes and what it takes the place of.
struct Fault {
  std::string path;
  std::string text;
};

std::vector<Fault> FaultsOf(const fs::path& table) {
  std::vector<Fault> faults;
  for (const std::string& line : LinesOf(table)) {
    if (StartsWith(line, "@ ")) {
      faults.push_back({line.substr(2, line.rfind(' ') - 2), ""});
    } else if (StartsWith(line, "- ")) {
      std::string& text = faults.back().text;
      text += (text.empty() ? "" : "\n") + line.substr(2);
    }
  }
  return faults;
}

size_t Occurrences(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos;
       at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST(HouseRules, EveryFaultOfTheMutationCheckHasOnePlace) {
  const fs::path root = RENDAL_SOURCE_DIR;
  for (const char* folder :
       {"region", "vexolab", "tools", "view", "controls"}) {
    const std::vector<Fault> faults =
        FaultsOf(root / "tests" / "mutation" / (std::string(folder) + ".txt"));
    EXPECT_GE(faults.size(), 10u) << folder;
    for (const Fault& fault : faults) {
      std::string source;
      for (const std::string& line : LinesOf(root / fault.path)) {
        source += line + "\n";
      }
      EXPECT_EQ(Occurrences(source, fault.text), 1u)
          << folder << ": " << fault.path << ": " << fault.text;
    }
  }
}

// `Suite.Name`, `Suite.*` or `Suite.Start...` of the page.
TEST(HouseRules, QualityPageNamesTestsThatExist) {
  const fs::path root = RENDAL_SOURCE_DIR;
  std::string tests;
  for (const Source& source : ReadSources()) {
    if (!StartsWith(source.path, "tests/")) continue;
    for (const std::string& line : source.lines) tests += line + "\n";
  }
  const std::regex name("`([A-Z][A-Za-z]+)\\.([A-Za-z0-9]+)?([*.]*)`");
  int names = 0;
  for (const std::string& line : LinesOf(root / "docs" / "quality.md")) {
    for (std::sregex_iterator m(line.begin(), line.end(), name), end; m != end;
         ++m, ++names) {
      const std::string suite = (*m)[1], test = (*m)[2];
      const bool is_whole = (*m)[3].length() == 0;
      const std::regex known("TEST(_F|_P)?\\(" + suite + ",\\s+" + test +
                             (is_whole ? "\\)" : ""));
      EXPECT_TRUE(std::regex_search(tests, known) ||
                  tests.find(suite + "." + test) != std::string::npos ||
                  (suite == "Cli" && tests.find(test) != std::string::npos))
          << m->str();
    }
  }
  EXPECT_GE(names, 30);
}

}  // namespace
