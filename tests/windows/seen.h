// SPDX-License-Identifier: MIT
//
// What an operator would see come true, looked for on the screen. Every wait
// ends in a std::runtime_error that says what was seen instead.
#ifndef RENDAL_TESTS_WINDOWS_SEEN_H_
#define RENDAL_TESTS_WINDOWS_SEEN_H_

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "tests/windows/photographs.h"
#include "tests/windows/twin.h"

namespace rendal_test {

// Colours as the screen shows them: blue, green, red.
const cv::Vec3b kSeenRed(0, 0, 255);        // regions, scan arrows
const cv::Vec3b kSeenBlue(255, 0, 0);       // fitted shapes
const cv::Vec3b kSeenGreen(0, 255, 0);      // measure rectangles
const cv::Vec3b kSeenMagenta(255, 0, 255);  // edge points
const cv::Vec3b kSeenYellow(0, 255, 255);   // region of interest
const cv::Vec3b kSeenCyan(255, 255, 0);     // its handles
const cv::Vec3b kSeenWhite(255, 255, 255);  // segments, numbers

void Require(bool holds, const std::string& what);

int CountOf(const cv::Mat& picture, const cv::Vec3b& color);

// What the view shows now.
cv::Mat ViewOf(const Operator& window);

// Waits until the view shows the twin's image under the twin's zoom, with
// `paint` (of the image's size, blue-green-red; black: the image's own grey)
// over it. Pixels of the image nearer than `margin` to its border, and of the
// background, are not looked at if `margin` is above 0.
void RequirePicture(const Twin& twin, const cv::Mat& paint, int margin,
                    const std::string& what);
void RequireImage(const Twin& twin, const std::string& what);
// The same with `color` where the mask is not 0.
void RequireMask(const Twin& twin, const cv::Mat& mask, int margin,
                 const std::string& what, const cv::Vec3b& color = kSeenRed);

// Waits until the view shows at least `least` pixels of each colour, and none
// of the others.
void RequireColors(const Twin& twin, const std::vector<cv::Vec3b>& shown,
                   const std::vector<cv::Vec3b>& absent, int least,
                   const std::string& what);

// The blue pixels of the view lie within 1 view pixel of the circle (in image
// coordinates), and cover most of its outline.
void RequireCircle(const Twin& twin, const Circle& circle,
                   const std::string& what);

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_SEEN_H_
