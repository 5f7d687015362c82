// SPDX-License-Identifier: MIT
#include "cli/image_list.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/system.h"
#include "recipes/output_file.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;

std::string LowerCase(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

// As the system compares names.
#if defined(_WIN32)
std::string AsMatched(std::string name) { return LowerCase(std::move(name)); }
#else
std::string AsMatched(std::string name) { return name; }
#endif

bool IsImageName(const fs::path& path) {
  static const std::set<std::string> kinds = {".bmp", ".jpg", ".jpeg",
                                              ".png", ".tif", ".tiff"};
  return kinds.count(LowerCase(Utf8Of(path.extension()))) != 0;
}

// The files of a folder for which keep(path) holds, by name.
template <typename Keep>
std::vector<fs::path> FilesOf(const fs::path& folder, Keep keep) {
  std::vector<fs::path> files;
  std::error_code error;
  for (auto entry = fs::directory_iterator(folder, error);
       !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code unreadable;
    if (entry->is_regular_file(unreadable) && keep(entry->path())) {
      files.push_back(entry->path());
    }
  }
  if (error) {
    throw std::invalid_argument("cannot read the folder " + Utf8Of(folder) +
                                ": " + error.message());
  }
  std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) {
    return a.u8string() < b.u8string();
  });
  return files;
}

std::vector<fs::path> ImagesOf(const std::string& argument) {
  const fs::path path = PathOf(argument);
  std::error_code error;
  if (fs::is_directory(path, error)) {
    std::vector<fs::path> files = FilesOf(path, IsImageName);
    if (files.empty()) {
      throw std::invalid_argument("there are no images in the folder " +
                                  argument);
    }
    return files;
  }
  const std::string pattern = AsMatched(Utf8Of(path.filename()));
  if (fs::exists(path, error) ||
      pattern.find_first_of("*?") == std::string::npos) {
    return {path};
  }
  const bool here = path.parent_path().empty();
  std::vector<fs::path> files =
      FilesOf(here ? "." : path.parent_path(), [&](const fs::path& file) {
        return MatchesPattern(AsMatched(Utf8Of(file.filename())), pattern);
      });
  if (files.empty()) throw std::invalid_argument("nothing matches " + argument);
  if (here) {
    for (fs::path& file : files) file = file.filename();
  }
  return files;
}

// The same for names that are one file on some system.
fs::path::string_type KeyOf(const std::string& name) {
  return WithoutCase(PathOf(LowerCase(name)).native());
}

}  // namespace

bool MatchesPattern(std::string_view name, std::string_view pattern) {
  // Past the character at a place.
  const auto next = [name](size_t at) {
    do {
      ++at;
    } while (at < name.size() && (name[at] & 0xC0) == 0x80);
    return at;
  };
  size_t n = 0;
  size_t p = 0;
  size_t star = std::string_view::npos;
  size_t after_star = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      after_star = n;
    } else if (p < pattern.size() &&
               (pattern[p] == '?' || pattern[p] == name[n])) {
      n = pattern[p] == '?' ? next(n) : n + 1;
      ++p;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = after_star = next(after_star);
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

std::vector<fs::path> ListImages(const std::vector<std::string>& arguments) {
  std::vector<fs::path> images;
  for (const std::string& argument : arguments) {
    const std::vector<fs::path> more = ImagesOf(argument);
    images.insert(images.end(), more.begin(), more.end());
  }
  return images;
}

std::vector<std::string> PictureNames(const std::vector<fs::path>& images) {
  std::set<fs::path::string_type> taken;
  std::map<fs::path::string_type, int> next_number;
  std::vector<std::string> names;
  for (const fs::path& image : images) {
    std::string name = Utf8Of(image.stem());
    if (taken.count(KeyOf(name)) != 0 && image.has_extension()) {
      name += '_';
      name += Utf8Of(image.extension()).substr(1);
    }
    const std::string base = name;
    while (!taken.insert(KeyOf(name)).second) {
      int& number = next_number.try_emplace(KeyOf(base), 2).first->second;
      name = base;
      name += '_';
      name += std::to_string(number++);
    }
    names.push_back(name);
  }
  return names;
}

}  // namespace rendal
