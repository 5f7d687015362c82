// SPDX-License-Identifier: MIT
//
// Every allocation on the way of every button fails once, one after the other:
// ours, the measurement library's, what the image library takes by `new`, and
// its pixels.
#include <gtest/gtest.h>

#include <functional>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "app/view/image_loader.h"
#include "app/view/view_painter.h"
#include "tests/app/image_bytes.h"
#include "tests/tools/counted_heap.h"
#include "tests/tools/every_button.h"
#include "tools/blob_tool.h"
#include "tools/caliper_tool.h"
#include "tools/console_text.h"
#include "tools/line_finder.h"

// The image library loses pixels for whose header there is no memory.
#ifdef __SANITIZE_ADDRESS__
extern "C" __attribute__((visibility("default"))) const char*
__lsan_default_suppressions();
const char* __lsan_default_suppressions() { return "leak:cv::fastMalloc\n"; }
#endif

namespace rendal {
namespace {

using counted_heap::allocations_left;
using counted_heap::kNoLimit;
using counted_heap::only_one_fails;

// Taller than wide, with a straight edge from top to bottom, a hole and spots.
cv::Mat Part() {
  cv::Mat image(60, 40, CV_8U, cv::Scalar(20));
  image.colRange(0, 20).setTo(220);
  for (int y = 5; y < 60; y += 12) image(cv::Rect(28, y, 5, 6)).setTo(200);
  image(cv::Rect(6, 20, 5, 5)).setTo(20);
  return image;
}

struct Window {
  Workbench bench;
  ViewState view;
  cv::Mat picture;
};

// A button that was pressed: what the label then shows.
using Press = std::function<Status(Window&)>;

struct Button {
  std::string name;
  Press press;
};

Status Pressed() { return {Tone::kSuccess, "done"}; }

void AddBlobButtons(std::vector<Button>* buttons) {
  buttons->push_back({"threshold", [](Window& w) {
                        return Threshold(w.bench, {100, 255});
                      }});
  buttons->push_back(
      {"connection", [](Window& w) { return Connection(w.bench).status; }});
  for (const RegionOperation operation : every_button::kOperations) {
    buttons->push_back({NameOf(operation), [operation](Window& w) {
                          return ApplyRegionOperation(
                              w.bench, operation, {{kCircle, 2, 2}, "inner"});
                        }});
  }
}

// One shape of each kind across an edge.
std::vector<RoiShape> ShapesToMeasure() {
  return {{kToolLine, {19.5f, 10, 19.5f, 50, 0}},
          {kToolCircle, {20, 30, 15, 0, 0}},
          {kToolBand, {5, 45, 38, 45, 0}},
          {kToolEllipse, {20, 30, 0, 18, 14}}};
}

void AddMeasurements(std::vector<Button>* buttons) {
  for (const int mode : {kToolLine, kToolCircle, kToolBand, kToolEllipse}) {
    buttons->push_back(
        {"measure " + std::to_string(mode), [mode](Window& w) {
           w.bench.m_toolMode = mode;
           Measure(w.bench, {16, 5, 20, 1, 2, 0, 1, "strongest"});
           return Pressed();
         }});
  }
  for (const int display : {kShowSegment, kShowCalipers, kShowEdges}) {
    buttons->push_back(
        {"find line " + std::to_string(display), [display](Window& w) {
           FindLine(w.bench, display);
           return Pressed();
         }});
  }
}

Status Refresh(Window& w) {
  w.bench.m_redraw = 1;
  return RefreshView(w.bench, w.view, &w.picture) ? Pressed() : Status{};
}

template <typename T>
void Print(const std::vector<T>& values, std::ostringstream* out) {
  for (const T& value : values) *out << value << ' ';
}

// All that a press may change, in words. The picture is not among it: every
// refresh makes all of it.
std::string StateOf(const Window& w) {
  std::ostringstream out;
  const Workbench& b = w.bench;
  out << "image " << b.m_srcImage.size() << ' ' << cv::sum(b.m_srcImage)[0];
  out << "\nview " << w.view.zoom << ' ' << w.view.offsetX << ' '
      << w.view.offsetY << " hidden " << b.m_hideResults << "\nhistory";
  for (const vexo::region& r : b.m_regionHistory) {
    out << ' ' << r.run_count << '/' << r.chord_count;
  }
  out << "\nlast " << (b.m_lastRegion ? b.m_lastRegion->run_count : 0)
      << " components " << b.m_components.size() << "\noverlay";
  for (const OverlayItem& item : b.m_regionOverlay) {
    out << ' ' << item.chords.size();
  }
  for (const RoiShape& shape : b.m_roiShapes) {
    out << "\nshape";
    for (const float value : shape.values) out << ' ' << value;
  }
  for (const Result& result : b.m_results) {
    out << "\nresult " << result.rectangles.size() << " points ";
    Print(result.points, &out);
    for (const ShapeEntry& entry : result.shapes) {
      out << " entry " << int{entry.kind};
      for (const float value : entry.values) out << ' ' << value;
    }
  }
  return out.str();
}

class MemoryFailure : public testing::TestWithParam<std::tuple<int, bool>> {
 protected:
  // Each test in a folder of its own: they run side by side.
  MemoryFailure()
      : m_folder("memory-failure-" + std::to_string(std::get<0>(GetParam())) +
                 (std::get<1>(GetParam()) ? "-one" : "-all")) {
    // Its threads would take memory at times of their own.
    cv::setNumThreads(1);
    cv::imwrite(m_folder / "part.png", Part());
    AddBlobButtons(&m_buttons);
    AddMeasurements(&m_buttons);
    m_buttons.push_back({"load", [this](Window& w) { return Load(&w); }});
    m_buttons.push_back({"refresh", Refresh});
  }
  ~MemoryFailure() override { only_one_fails = false; }

  Status Load(Window* w) const {
    return LoadImageFile(m_folder / "part.png", w->bench, w->view);
  }

  // As after some work: an image, two binarisations, an overlay and a result.
  void Prepare(Window* w) const {
    w->bench.m_language = kEnglish;
    w->bench.m_parallelMode = std::get<0>(GetParam());
    w->view.viewWidth = 80;
    w->view.viewHeight = 70;
    Load(w);
    w->bench.m_roiShapes = ShapesToMeasure();
    Threshold(w->bench, {0, 150});
    Threshold(w->bench, {100, 255});
    w->bench.ShowResult({{{1, 2, 3, 4, 5}}, {{6, 7}}, {}});
    Connection(w->bench);
  }

  // Whether a press did all of its work, though some memory was missing, or
  // said that it did not.
  void ExpectReported(const Button& button, const Status& status,
                      const Window& w, const std::string& before) const;
  void PressUntilMemorySuffices(const Button& button) const;

  testing_images::TemporaryFolder m_folder;
  std::vector<Button> m_buttons;
};

void MemoryFailure::ExpectReported(const Button& button, const Status& status,
                                   const Window& w,
                                   const std::string& before) const {
  // The image library takes what memory its decoders lack for a bad file.
  if (button.name == "load" && w.bench.m_srcImage.empty()) {
    EXPECT_EQ(status.text, "open image,width = 0, height = 0");
    return;
  }
  EXPECT_EQ(status.tone, Tone::kError);
  EXPECT_FALSE(status.text.empty());
  EXPECT_EQ(StateOf(w), before);
}

// Lets memory run out after ever more allocations, until there is enough.
void MemoryFailure::PressUntilMemorySuffices(const Button& button) const {
  Window undisturbed;
  Prepare(&undisturbed);
  Guarded([&] { return button.press(undisturbed); });
  const std::string done = StateOf(undisturbed);
  int failures = 0;
  for (int allowed = 0; !HasFailure(); ++allowed) {
    SCOPED_TRACE(allowed);
    Window w;
    Prepare(&w);
    const std::string before = StateOf(w);
    allocations_left = allowed;
    const Status status = Guarded([&] { return button.press(w); });
    const bool sufficed = allocations_left > 0;
    allocations_left = kNoLimit;
    if (sufficed) {
      EXPECT_NE(status.tone, Tone::kError) << status.text;
      break;
    }
    // With fewer threads the work is done as well.
    if (status.tone != Tone::kError && StateOf(w) == done) continue;
    ++failures;
    ExpectReported(button, status, w, before);
    const Status next = Guarded([&] { return button.press(w); });
    EXPECT_NE(next.tone, Tone::kError) << next.text;
    EXPECT_EQ(StateOf(w), done);
  }
  EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(BothModes, MemoryFailure,
                         testing::Combine(testing::Values(0, 1),
                                          testing::Bool()));

TEST_P(MemoryFailure, LeavesEverythingAsItWasAndTheNextPressWorks) {
  const ConsoleCapture quiet;
  only_one_fails = std::get<1>(GetParam());
  for (const Button& button : m_buttons) {
    SCOPED_TRACE(button.name);
    PressUntilMemorySuffices(button);
  }
}

}  // namespace
}  // namespace rendal
