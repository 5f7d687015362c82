// SPDX-License-Identifier: MIT
//
// Runs a fuzz target over files instead of generated inputs, so that what the
// fuzzers once found stays found under every compiler. Ends with an error when
// it was given nothing to run.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  size_t files = 0;
  for (int i = 1; i < argc; ++i)
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()),
                             bytes.size());
      ++files;
    }
  std::printf("%zu inputs replayed\n", files);
  return files > 0 ? 0 : 1;
}
