// SPDX-License-Identifier: MIT
//
// Runs the command line inside the test, in a folder of its own.
#ifndef RENDAL_TESTS_CLI_COMMAND_LINE_RUN_H_
#define RENDAL_TESTS_CLI_COMMAND_LINE_RUN_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/job.h"
#include "recipes/output_file.h"

namespace rendal {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

inline std::string ContentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string Sample(const char* name) {
  return Utf8Of(fs::path(RENDAL_SAMPLES) / name);
}

inline std::vector<std::vector<std::string>> Table(const std::string& csv) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(csv);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, ',');) {
      rows.back().push_back(cell);
    }
  }
  return rows;
}

class CommandLineTest : public testing::Test {
 protected:
  CommandLineTest() { fs::create_directories(m_folder); }
  ~CommandLineTest() override { fs::remove_all(m_folder); }

  // Runs the program; what it printed is in m_out and m_error.
  int Run(const Arguments& arguments) {
    std::vector<const char*> argv = {"rendal-cli"};
    for (const std::string& argument : arguments) {
      argv.push_back(argument.c_str());
    }
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = RunCommandLine(static_cast<int>(argv.size()), argv.data());
    m_out = testing::internal::GetCapturedStdout();
    m_error = testing::internal::GetCapturedStderr();
    return code;
  }

  std::string In(const std::string& name) const {
    return Utf8Of(m_folder / PathOf(name));
  }
  std::string Written(const std::string& name, const std::string& text) const {
    std::ofstream(m_folder / PathOf(name), std::ios::binary) << text;
    return In(name);
  }
  std::string Picture(const std::string& name, const cv::Mat& image) const {
    std::vector<unsigned char> bytes;
    cv::imencode(".png", image, bytes);
    return Written(name, {bytes.begin(), bytes.end()});
  }
  std::string Content(const std::string& name) const {
    return ContentOf(m_folder / PathOf(name));
  }
  std::string CountRecipe(const std::string& outputs) const {
    return Written("recipe", R"({"version": 1, "steps": [
        {"do": "threshold", "min": 0, "max": 130}, {"do": "connection"}],
        "outputs": )" + outputs + "}");
  }
  size_t Files() const {
    return std::distance(fs::directory_iterator(m_folder), {});
  }

  const fs::path m_folder =
      fs::temp_directory_path() /
      ("rendal-cli-" + std::to_string(std::random_device()()));
  std::string m_out, m_error;
};

}  // namespace rendal

#endif  // RENDAL_TESTS_CLI_COMMAND_LINE_RUN_H_
