// SPDX-License-Identifier: MIT
//
// The sample images, from file to listed components.
#include <gtest/gtest.h>

#include "app/view/image_loader.h"
#include "tools/blob_tool.h"

namespace rendal {
namespace {

// Status of "connection" after loading a sample and one threshold.
std::string ComponentsOf(const char* name, GrayBand band) {
  Workbench bench;
  ViewState view;
  view.viewWidth = 1026;
  view.viewHeight = 817;
  testing::internal::CaptureStdout();
  LoadImageFile(std::filesystem::path(RENDAL_SAMPLES) / name, bench, view);
  Threshold(bench, band);
  const std::string status = Connection(bench).status.text;
  testing::internal::GetCapturedStdout();
  return status;
}

TEST(Samples, PartsAreTen) {
  EXPECT_EQ(ComponentsOf("parts.png", {0, 130}),
            "connection done, connected components =10");
}

TEST(Samples, CoinsAreTwenty) {
  EXPECT_EQ(ComponentsOf("coins.png", {90, 255}),
            "connection done, connected components =20");
}

// 11 in the first line, 16, 18 and 14 in the others; a colon counts twice.
TEST(Samples, LabelHasItsCharacters) {
  EXPECT_EQ(ComponentsOf("text.png", {0, 110}),
            "connection done, connected components =59");
}

}  // namespace
}  // namespace rendal
