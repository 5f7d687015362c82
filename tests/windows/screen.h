// SPDX-License-Identifier: MIT
//
// What the screen shows, as an operator sees it.
#ifndef RENDAL_TESTS_WINDOWS_SCREEN_H_
#define RENDAL_TESTS_WINDOWS_SCREEN_H_

#include <windows.h>

#include <filesystem>
#include <opencv2/core.hpp>

namespace rendal_test {

// The pixels of a window or of the whole screen (null), blue-green-red. What
// lies over the window is seen, too.
cv::Mat ScreenOf(HWND window);

// The same of a part of the screen.
cv::Mat ScreenPart(const RECT& place);

// Waits until the window stands still and writes it as PNG.
void SaveScreen(HWND window, const std::filesystem::path& path);

// Puts the window above all others.
void BringToTop(HWND window);

void WritePng(const std::filesystem::path& path, const cv::Mat& image);

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_SCREEN_H_
