// SPDX-License-Identifier: MIT
#include "app/image_window.h"

#include <opencv2/highgui/highgui_c.h>

namespace rendal {

namespace {

constexpr char kWindowName[] = "ImageShow";

HWND NativeWindow() {
  return static_cast<HWND>(::cvGetWindowHandle(kWindowName));
}

}  // namespace

void OpenImageWindow(CWnd& host, const cv::Mat& picture,
                     cv::MouseCallback on_mouse, void* user_data) {
  cv::namedWindow(kWindowName, cv::WINDOW_AUTOSIZE);
  cv::resizeWindow(kWindowName, picture.cols, picture.rows);
  const HWND window = NativeWindow();
  const HWND frame = ::GetParent(window);
  ::SetParent(window, host.GetSafeHwnd());
  ::ShowWindow(frame, SW_HIDE);
  cv::setMouseCallback(kWindowName, on_mouse, user_data);
  cv::imshow(kWindowName, picture);
}

void ShowInImageWindow(const cv::Mat& picture) {
  cv::imshow(kWindowName, picture);
  // Now, before whatever else waits to be painted.
  ::UpdateWindow(NativeWindow());
}

void CloseImageWindow() {
  if (NativeWindow() != nullptr) cv::destroyWindow(kWindowName);
}

}  // namespace rendal
