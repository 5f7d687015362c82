// SPDX-License-Identifier: MIT
#include "tests/windows/screen.h"

#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

#include "tests/windows/operator.h"

namespace rendal_test {
namespace {

constexpr int kStillMs = 100;

RECT PlaceOf(HWND window) {
  RECT place = {0, 0, ::GetSystemMetrics(SM_CXSCREEN),
                ::GetSystemMetrics(SM_CYSCREEN)};
  if (window != nullptr) ::GetWindowRect(window, &place);
  return place;
}

bool SamePixels(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() && cv::norm(a, b, cv::NORM_L1) == 0;
}

}  // namespace

cv::Mat ScreenOf(HWND window) { return ScreenPart(PlaceOf(window)); }

cv::Mat ScreenPart(const RECT& place) {
  const int width = place.right - place.left;
  const int height = place.bottom - place.top;
  BITMAPINFO format = {};
  format.bmiHeader.biSize = sizeof format.bmiHeader;
  format.bmiHeader.biWidth = width;
  format.bmiHeader.biHeight = -height;  // top to bottom
  format.bmiHeader.biPlanes = 1;
  format.bmiHeader.biBitCount = 32;
  const HDC screen = ::GetDC(nullptr);
  const HDC memory = ::CreateCompatibleDC(screen);
  void* bits = nullptr;
  const HBITMAP bitmap =
      ::CreateDIBSection(memory, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
  cv::Mat picture;
  if (bitmap != nullptr) {
    const HGDIOBJ before = ::SelectObject(memory, bitmap);
    ::BitBlt(memory, 0, 0, width, height, screen, place.left, place.top,
             SRCCOPY);
    ::GdiFlush();
    cv::cvtColor(cv::Mat(height, width, CV_8UC4, bits), picture,
                 cv::COLOR_BGRA2BGR);
    ::SelectObject(memory, before);
    ::DeleteObject(bitmap);
  }
  ::DeleteDC(memory);
  ::ReleaseDC(nullptr, screen);
  if (picture.empty()) throw std::runtime_error("the screen cannot be read");
  return picture;
}

void SaveScreen(HWND window, const std::filesystem::path& path) {
  cv::Mat last = ScreenOf(window);
  WaitUntil("a window that stands still", [&] {
    ::Sleep(kStillMs);
    const cv::Mat next = ScreenOf(window);
    const bool still = SamePixels(last, next);
    last = next;
    return still;
  });
  WritePng(path, last);
}

void BringToTop(HWND window) {
  ::SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  ::SetForegroundWindow(window);
}

void WritePng(const std::filesystem::path& path, const cv::Mat& image) {
  std::vector<unsigned char> bytes;
  cv::imencode(".png", image, bytes);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + Utf8(path.wstring()));
}

}  // namespace rendal_test
