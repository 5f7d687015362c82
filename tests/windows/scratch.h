// SPDX-License-Identifier: MIT
//
// Files of a test's own.
#ifndef RENDAL_TESTS_WINDOWS_SCRATCH_H_
#define RENDAL_TESTS_WINDOWS_SCRATCH_H_

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "gtest/gtest.h"

namespace rendal_test {

// A folder that goes with the test, named in Chinese.
class Scratch {
 public:
  Scratch()
      : path_(std::filesystem::temp_directory_path() /
              (L"\u56fe\u50cf " + std::to_wstring(::GetCurrentProcessId()))) {
    std::filesystem::create_directories(path_);
  }
  ~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::filesystem::path Write(const std::wstring& name,
                              const std::vector<unsigned char>& bytes) const {
    const std::filesystem::path path = path_ / name;
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path;
  }
  std::filesystem::path WriteImage(const std::wstring& name,
                                   const std::string& extension,
                                   const cv::Mat& image) const {
    return Write(name, Encoded(extension, image));
  }
  static std::vector<unsigned char> Encoded(const std::string& extension,
                                            const cv::Mat& image) {
    std::vector<unsigned char> bytes;
    EXPECT_TRUE(cv::imencode(extension, image, bytes));
    return bytes;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_SCRATCH_H_
