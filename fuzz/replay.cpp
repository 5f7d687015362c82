// SPDX-License-Identifier: MIT
//
// Runs a fuzz target over kept inputs instead of generated ones, so that what
// the fuzzers once found stays found under every compiler. A file of kept
// inputs holds one input a line, in hexadecimal.
//
//   replay KEPT              run all of them; an error when there are none
//   replay KEPT --unpack DIR write them as files, the fuzzer's own form
//   replay KEPT --pack DIR   write KEPT anew from such files
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;
using Input = std::vector<uint8_t>;

Input from_hex(const std::string& line) {
  Input input;
  for (size_t i = 0; i + 1 < line.size(); i += 2)
    input.push_back(
        static_cast<uint8_t>(std::stoi(line.substr(i, 2), nullptr, 16)));
  return input;
}

std::string to_hex(const Input& input) {
  std::string line;
  char digits[3];
  for (const uint8_t byte : input) {
    std::snprintf(digits, sizeof digits, "%02x", byte);
    line += digits;
  }
  return line;
}

std::vector<Input> read_kept(const fs::path& path) {
  std::ifstream file(path);
  std::vector<Input> inputs;
  for (std::string line; std::getline(file, line);)
    inputs.push_back(from_hex(line));
  return inputs;
}

int replay(const fs::path& kept) {
  const std::vector<Input> inputs = read_kept(kept);
  for (const Input& input : inputs)
    LLVMFuzzerTestOneInput(input.data(), input.size());
  std::printf("%zu inputs replayed\n", inputs.size());
  return inputs.empty() ? 1 : 0;
}

int unpack(const fs::path& kept, const fs::path& folder) {
  fs::create_directories(folder);
  int number = 0;
  for (const Input& input : read_kept(kept)) {
    std::ofstream file(folder / std::to_string(number++), std::ios::binary);
    file.write(reinterpret_cast<const char*>(input.data()),
               static_cast<std::streamsize>(input.size()));
  }
  return 0;
}

int pack(const fs::path& kept, const fs::path& folder) {
  std::vector<std::string> lines;
  for (const auto& entry : fs::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    lines.push_back(to_hex(Input{std::istreambuf_iterator<char>(file), {}}));
  }
  std::sort(lines.begin(), lines.end());
  std::ofstream file(kept, std::ios::binary);
  for (const std::string& line : lines) file << line << '\n';
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 2 ? argv[2] : "";
  if (argc == 2) return replay(argv[1]);
  if (argc == 4 && mode == "--unpack") return unpack(argv[1], argv[3]);
  if (argc == 4 && mode == "--pack") return pack(argv[1], argv[3]);
  std::fprintf(stderr, "usage: replay KEPT [--unpack DIR | --pack DIR]\n");
  return 2;
}
