// SPDX-License-Identifier: MIT
#ifndef RENDAL_RECIPES_OUTPUT_FILE_H_
#define RENDAL_RECIPES_OUTPUT_FILE_H_

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace rendal {

// "cannot write PATH: why".
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file that is there as a whole or not at all: it is written under another
// name in its folder and takes its own, and the place of an older file, in
// Commit(). Without that nothing of it stays behind. What exists and is no
// regular file (a pipe, a device) is written to directly.
//
// Every member throws OutputError when the system refuses, also for a disk that
// is full.
class OutputFile {
 public:
  explicit OutputFile(const std::filesystem::path& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(std::string_view bytes);
  void Commit();

 private:
  [[noreturn]] void Fail() const;

  std::filesystem::path m_path;       // as it was given
  std::filesystem::path m_target;     // links followed
  std::filesystem::path m_temporary;  // empty: written directly
  std::ofstream m_stream;
};

// A whole file at once.
void WriteOutput(const std::filesystem::path& path, std::string_view bytes);

// Text of a path, and a path of such text, in UTF-8.
std::string Utf8Of(const std::filesystem::path& path);
std::filesystem::path PathOf(std::string_view utf8);

}  // namespace rendal

#endif  // RENDAL_RECIPES_OUTPUT_FILE_H_
