// SPDX-License-Identifier: MIT
#include "cli/path_check.h"

#include <stdexcept>
#include <system_error>
#include <unordered_set>

#include "cli/system.h"
#include "recipes/output_file.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;
using Key = fs::path::string_type;

// The same for all names of a file, whether it is there or not.
Key KeyOf(const fs::path& path) {
  std::error_code error;
  fs::path whole = fs::absolute(path, error);
  if (!error) whole = fs::weakly_canonical(whole, error);
  return WithoutCase((error ? path : whole).native());
}

class TakenPaths {
 public:
  void Keep(const fs::path& input) { m_keys.insert(KeyOf(input)); }

  void Take(const fs::path& result) {
    std::error_code error;
    if (result.empty() ||
        (fs::exists(result, error) && !fs::is_regular_file(result, error))) {
      return;
    }
    if (!m_keys.insert(KeyOf(result)).second) {
      throw std::invalid_argument(
          "a result would overwrite an image, the recipe or another result: " +
          Utf8Of(result));
    }
  }

 private:
  std::unordered_set<Key> m_keys;
};

}  // namespace

void RefuseOverwriting(const Job& job) {
  TakenPaths taken;
  if (!job.recipe.empty()) taken.Keep(job.recipe);
  for (const JobImage& image : job.images) taken.Keep(image.path);
  const ResultPaths& files = job.files;
  for (const fs::path* path : {&files.csv, &files.measurements, &files.points,
                               &files.json, &files.coco, &job.saved_recipe}) {
    taken.Take(*path);
  }
  for (const JobImage& image : job.images) {
    taken.Take(image.labels);
    taken.Take(image.overlay);
  }
}

}  // namespace rendal
