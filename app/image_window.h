// SPDX-License-Identifier: MIT
//
// The image library's window "ImageShow" as the dialog's image view: the only
// place where the program touches that library's windows.
#ifndef RENDAL_APP_IMAGE_WINDOW_H_
#define RENDAL_APP_IMAGE_WINDOW_H_

#include <afxwin.h>

#include <opencv2/core.hpp>
#include <opencv2/highgui.hpp>

namespace rendal {

// Creates the window in the size of `picture`, makes it a child of `host` at
// its top-left corner, shows the picture and sends the mouse to `on_mouse`.
void OpenImageWindow(CWnd& host, const cv::Mat& picture,
                     cv::MouseCallback on_mouse, void* user_data);

// Shows a picture of the same size.
void ShowInImageWindow(const cv::Mat& picture);

// Destroys the window and the library's hidden frame; nothing without one.
void CloseImageWindow();

}  // namespace rendal

#endif  // RENDAL_APP_IMAGE_WINDOW_H_
