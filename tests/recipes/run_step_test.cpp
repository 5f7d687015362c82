// SPDX-License-Identifier: MIT
//
// Replaying a step is pressing its button.
#include "recipes/run_step.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>

#include "app/view/image_loader.h"
#include "app/view/view_painter.h"
#include "recipes/recipe_json.h"
#include "recipes/tables.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

// A workbench with an image, and everything that an operator sees of it.
class Seat {
 public:
  Seat() {
    const ConsoleCapture console;
    m_view.viewWidth = 500;
    m_view.viewHeight = 400;
    LoadImageFile(std::filesystem::path(RENDAL_SAMPLES) / "parts.png", bench,
                  m_view);
  }

  cv::Mat Picture() {
    bench.RequestRedraw();
    cv::Mat picture;
    RefreshView(bench, m_view, &picture);
    return picture;
  }

  Workbench bench;

 private:
  ViewState m_view;
};

std::string WithoutTimes(const std::string& console) {
  return std::regex_replace(console, std::regex("time:[0-9.e-]+s"), "time");
}

// What a press showed.
struct Shown {
  Status status;
  std::optional<std::vector<FeatureRow>> rows;
};

struct Press {
  Step step;
  std::function<Shown(Workbench&)> press;
};

Shown PressMeasure(Workbench& bench, const RoiShape& roi,
                   const CaliperParameters& parameters) {
  bench.m_toolMode = roi.kind;
  bench.m_roiShapes[roi.kind] = roi;
  bench.m_bandWidth = parameters.width;
  Measure(bench, parameters);
  return {};
}

// A round of work as a dialog records it: operations start from the newest
// binarisation.
std::vector<Press> RoundOfWork() {
  std::vector<Press> round;
  for (const GrayBand band : {GrayBand{0, 200}, GrayBand{0, 130}}) {
    round.push_back({ThresholdStep{band}, [band](Workbench& bench) {
                       return Shown{Threshold(bench, band), {}};
                     }});
  }
  for (const char* name :
       {"fill_up", "union", "difference", "intersection", "dilation", "erosion",
        "opening", "closing", "top_hat", "bottom_hat", "boundary"}) {
    OperationStep step;
    step.operation = *OperationByName(name);
    step.parameters = {{kCircle, 4, 4}, "outer"};
    step.source = RegionSource::kBinarisation;
    round.push_back({step, [step](Workbench& bench) {
                       return Shown{ApplyRegionOperation(bench, step.operation,
                                                         step.parameters),
                                    {}};
                     }});
  }
  round.push_back(
      {ConnectionStep{{8, RegionSource::kBinarisation}}, [](Workbench& bench) {
         ConnectionReport report = Connection(bench);
         return Shown{report.status, report.rows};
       }});
  const RoiShape shapes[] = {{kToolLine, {60, 50, 60, 200.3f}},
                             {kToolCircle, {149.6f, 139.7f, 35.1f}},
                             {kToolBand, {30, 140, 300, 140.7f}},
                             {kToolEllipse, {330, 100, 33, 59, 60}}};
  for (const RoiShape& roi : shapes) {
    CaliperParameters parameters{30, 5.5, 20, 1.1, 2, 0, -1, "first"};
    round.push_back({MeasureStep{roi, parameters}, [=](Workbench& bench) {
                       return PressMeasure(bench, roi, parameters);
                     }});
  }
  round.push_back({FindLineStep{kShowEdges}, [](Workbench& bench) {
                     FindLine(bench, kShowEdges);
                     return Shown{};
                   }});
  return round;
}

TEST(RunStep, ReplayShowsWhatThePressesShowed) {
  Seat pressed;
  Seat replayed;
  const std::vector<Press> round = RoundOfWork();
  Recipe recipe;
  for (const Press& press : round) recipe.steps.push_back(press.step);
  recipe = ReadRecipe(WriteRecipe(recipe));
  for (size_t i = 0; i < round.size(); ++i) {
    ConsoleCapture pressed_console;
    const Shown shown = round[i].press(pressed.bench);
    ConsoleCapture replayed_console;
    const StepReport report = RunStep(recipe.steps[i], replayed.bench);
    SCOPED_TRACE(i);
    EXPECT_EQ(report.status.text, shown.status.text);
    EXPECT_EQ(report.status.tone, shown.status.tone);
    EXPECT_EQ(report.rows, shown.rows);
    EXPECT_EQ(WithoutTimes(replayed_console.Text()),
              WithoutTimes(pressed_console.Text()));
    EXPECT_NE(replayed_console.Text(), "");
    EXPECT_EQ(cv::norm(replayed.Picture(), pressed.Picture(), cv::NORM_INF), 0);
  }
}

TEST(RunStep, WithoutAnOnlookerNumbersAreTheSameBitForBit) {
  Seat shown;
  Seat unseen;
  unseen.bench.m_isShown = false;
  unseen.bench.m_keepsEmptyRegions = true;
  const ConsoleCapture console;
  size_t measured = 0;
  for (const Press& press : RoundOfWork()) {
    const StepReport a = RunStep(press.step, shown.bench);
    const StepReport b = RunStep(press.step, unseen.bench);
    const std::vector<Measurement> measured_a = MeasurementsOf(0, a);
    const std::vector<Measurement> measured_b = MeasurementsOf(0, b);
    ASSERT_EQ(measured_a.size(), measured_b.size());
    for (size_t i = 0; i < measured_a.size(); ++i, ++measured) {
      EXPECT_EQ(MeasurementCells(measured_a[i]),
                MeasurementCells(measured_b[i]));
      EXPECT_EQ(PointRows(measured_a[i]), PointRows(measured_b[i]));
    }
  }
  EXPECT_EQ(measured, 5u);
  EXPECT_EQ(ValuesOf(shown.bench.m_components).size(), 10u);
  EXPECT_EQ(ValuesOf(shown.bench.m_components),
            ValuesOf(unseen.bench.m_components));
}

TEST(RunStep, MeasurementsCarryPointsShapeAndResiduals) {
  Seat seat;
  const ConsoleCapture console;
  MeasureStep step;
  // The large gear's bore.
  step.roi = {kToolCircle, {150, 140, 35}};
  step.parameters.selection = "strongest";
  const StepReport report = RunStep(step, seat.bench);
  const Measurement m = MeasurementsOf(3, report).at(0);
  EXPECT_EQ(m.step, 3u);
  EXPECT_EQ(m.code, 0);
  ASSERT_TRUE(m.has_shape);
  EXPECT_NEAR(m.shape[0], 149.7, 1);
  EXPECT_NEAR(m.shape[1], 139.7, 1);
  EXPECT_GT(m.points.size(), 5u);
  EXPECT_GT(m.residuals.used, static_cast<int>(m.points.size()) / 2);
  EXPECT_LT(m.residuals.rms, 0.3);
  EXPECT_GE(m.residuals.max, m.residuals.rms);
}

TEST(RunStep, AFitThatFailsSaysWhy) {
  Seat seat;
  const ConsoleCapture console;
  MeasureStep step;
  step.roi = {kToolLine, {10, 10, 30, 10}};
  step.parameters.amplitude = 255;
  const Measurement m = MeasurementsOf(0, RunStep(step, seat.bench)).at(0);
  EXPECT_EQ(m.code, VEXOLAB_E_TOO_FEW);
  EXPECT_FALSE(m.has_shape);
  EXPECT_EQ(m.points.size(), 0u);
  EXPECT_GT(m.calipers, 0);
}

}  // namespace
}  // namespace rendal
