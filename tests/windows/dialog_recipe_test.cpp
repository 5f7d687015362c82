// SPDX-License-Identifier: MIT
//
// Rounds of work that the dialog records, saves and does again, and that give
// the same numbers without it.
#include <cstring>
#include <fstream>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "app/view/view_globals.h"
#include "cli/image_run.h"
#include "recipes/recipe_json.h"
#include "recipes/tables.h"
#include "tests/windows/main_dialog.h"
#include "tools/console_text.h"

namespace {

namespace fs = std::filesystem;
using rendal::FeatureValues;
using Table = std::vector<std::vector<std::wstring>>;

std::string TextOfFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Dark: a disc, a frame with a hole; an upright edge longer than the image is
// wide.
cv::Mat Part() {
  cv::Mat image(300, 200, CV_8UC1, cv::Scalar(30));
  image(cv::Rect(150, 0, 50, 300)).setTo(220);
  cv::circle(image, {70, 80}, 40, cv::Scalar(200), cv::FILLED, cv::LINE_AA);
  image(cv::Rect(20, 180, 60, 60)).setTo(180);
  image(cv::Rect(40, 200, 20, 20)).setTo(30);
  return 255 - image;
}

// What a round leaves to be compared.
struct Traces {
  cv::Mat picture;
  Table rows;
  std::string lines;  // of the console, without the times
  std::vector<FeatureValues> components;
  std::vector<rendal::Result> results;
};

class RecipeDialog : public MainDialogTest {
 public:
  RecipeDialog() { dialog.m_language = rendal::kEnglish; }
  void TestBody() override {}

  void Open(const fs::path& image, const Script& script) {
    dialog.m_startImage = image;
    Run([&] {
      Tick();
      script();
    });
  }
  void Command(UINT id) { ::SendMessageW(dialog.m_hWnd, WM_SYSCOMMAND, id, 0); }
  void WithFile(UINT command, const fs::path& path) {
    WithModal([&] { Command(command); },
              [&](HWND box) { AnswerFileDialog(box, path); });
  }
  bool IsChecked(UINT command) const {
    return (::GetMenuState(::GetSystemMenu(dialog.m_hWnd, FALSE), command,
                           MF_BYCOMMAND) &
            MF_CHECKED) != 0;
  }
  std::wstring Status() const { return TextOf(IDC_STATUS); }

  // Does something and takes what it left.
  Traces Take(const std::function<void()>& act) {
    const rendal::ConsoleCapture console;
    act();
    Tick();
    Traces traces;
    std::istringstream text(console.Text());
    for (std::string line; std::getline(text, line);) {
      // Times differ, and so do the library's ids, which it counts up.
      if (line.rfind("elasped time:", 0) == 0 || line.rfind("mem_id", 0) == 0)
        continue;
      traces.lines += line + '\n';
    }
    traces.picture = dialog.m_viewImage.clone();
    for (int row = 0; row < Rows(); ++row) {
      traces.rows.emplace_back();
      for (int column = 0; column < 9; ++column) {
        traces.rows.back().push_back(Cell(row, column));
      }
    }
    traces.components = rendal::ValuesOf(dialog.m_components);
    traces.results = dialog.m_results;
    return traces;
  }
  void PressRound() {
    ::SetWindowTextW(Control(IDC_WIDTH), L"12.5");
    Click(IDC_MODE_CIRCLE);
    dialog.m_roiShapes[rendal::kToolCircle] = {rendal::kToolCircle,
                                               {71.3f, 79.1f, 41, 0, 0}};
    Click(IDC_MEASURE);
    Click(IDC_FIND_LINE);
    SetBand(0, 155);
    Click(IDC_THRESHOLD);
    Click(IDC_FILL_UP);
    Select(IDC_ELEMENT, 1);
    SetSpin(IDC_ELEMENT_WIDTH_SPIN, 5);
    Click(IDC_DILATION);
    Click(IDC_CONNECTION);
  }

  using MainDialogTest::Click;
  using MainDialogTest::dialog;
  using MainDialogTest::SetBand;
  using MainDialogTest::SetSpin;
  using MainDialogTest::TextOf;
  using MainDialogTest::Tick;
  using MainDialogTest::WriteImage;
};

class DialogRecipe : public RecipeDialog {};

TEST_F(DialogRecipe, RecordedRoundGivesTheSameAgainAndOutsideTheWindow) {
  const fs::path image = WriteImage("part.png", Part());
  const fs::path file = image.parent_path() / L"\u914d\u65b9 1.json";
  Traces recorded;
  Open(image, [&] {
    Command(IDM_RECORD_RECIPE);
    EXPECT_TRUE(IsChecked(IDM_RECORD_RECIPE));
    EXPECT_EQ(Status(), L"recording");
    recorded = Take([&] { PressRound(); });
    Command(IDM_RECORD_RECIPE);
    EXPECT_FALSE(IsChecked(IDM_RECORD_RECIPE));
    EXPECT_EQ(Status(), L"steps recorded: 6");
    WithFile(IDM_SAVE_RECIPE, file);
    EXPECT_EQ(Status(), L"steps saved: 6");
  });
  ASSERT_EQ(recorded.rows.size(), 3u);
  ASSERT_NE(recorded.lines.find("connected components = 3"), std::string::npos)
      << recorded.lines;

  RecipeDialog fresh;
  fresh.Open(image, [&] {
    const Traces again =
        fresh.Take([&] { fresh.WithFile(IDM_RUN_RECIPE, file); });
    EXPECT_EQ(cv::norm(again.picture, recorded.picture, cv::NORM_INF), 0);
    EXPECT_EQ(again.rows, recorded.rows);
    EXPECT_EQ(again.lines, recorded.lines);
    EXPECT_EQ(again.components, recorded.components);
    EXPECT_EQ(fresh.Status(), L"connection done, connected components =3");
    EXPECT_EQ(fresh.TextOf(IDC_WIDTH), L"12.5");
    EXPECT_EQ(::IsDlgButtonChecked(fresh.dialog.m_hWnd, IDC_MODE_CIRCLE),
              static_cast<UINT>(BST_CHECKED));
    EXPECT_EQ(::IsDlgButtonChecked(fresh.dialog.m_hWnd, IDC_MODE_NONE),
              static_cast<UINT>(BST_UNCHECKED));
  });

  const std::vector<rendal::Step> steps =
      rendal::ReadRecipe(TextOfFile(file)).steps;
  const rendal::ImageResult outside = rendal::RunImage(steps, image, {});
  EXPECT_EQ(outside.error, "");
  ASSERT_EQ(outside.components.size(), recorded.components.size());
  for (size_t i = 0; i < outside.components.size(); ++i) {
    EXPECT_EQ(std::memcmp(&outside.components[i], &recorded.components[i],
                          sizeof(FeatureValues)),
              0)
        << i;
  }
  // The newest measurement is the line finder's.
  ASSERT_EQ(outside.measurements.size(), 2u);
  ASSERT_EQ(recorded.results.size(), 1u);
  size_t edge = 0;
  for (const rendal::EdgePoint& p : outside.measurements[1].edges) {
    ASSERT_LT(edge, recorded.results[0].points.size());
    EXPECT_EQ(recorded.results[0].points[edge].x, static_cast<float>(p.x));
    EXPECT_EQ(recorded.results[0].points[edge].y, static_cast<float>(p.y));
    ++edge;
  }
  EXPECT_GT(edge, 0u);
}

TEST_F(DialogRecipe, OnlyWhatChangedSomethingIsRecorded) {
  const fs::path image = WriteImage("part.png", Part());
  const fs::path file = image.parent_path() / "a.json";
  Open(image, [&] {
    Click(IDC_THRESHOLD);
    Command(IDM_SAVE_RECIPE);
    EXPECT_EQ(Status(), L"nothing recorded yet");
    Command(IDM_RECORD_RECIPE);
    SetBand(200, 100);
    Click(IDC_THRESHOLD);  // refused
    Click(IDC_UNION);      // one region is too few
    Click(IDC_MEASURE);    // no region of interest
    Click(IDC_TOGGLE_GRAY);
    Click(IDC_CLEAR_DISPLAY);
    SetBand(200, 255);
    Click(IDC_THRESHOLD);
    Click(IDC_DIFFERENCE);  // from the binarisation before the recording
    WithFile(IDM_SAVE_RECIPE, file);
    EXPECT_EQ(Status(), L"steps saved: 3");
  });
  const rendal::Recipe recipe = rendal::ReadRecipe(TextOfFile(file));
  ASSERT_EQ(recipe.steps.size(), 3u);
  EXPECT_EQ(std::get<rendal::ThresholdStep>(recipe.steps[0]).band,
            (rendal::GrayBand{128, 255}));
  EXPECT_EQ(std::get<rendal::ThresholdStep>(recipe.steps[1]).band,
            (rendal::GrayBand{200, 255}));
  EXPECT_EQ(std::get<rendal::OperationStep>(recipe.steps[2]).operation,
            rendal::RegionOperation::kDifference);
}

// One such press would make the whole file unreadable.
TEST_F(DialogRecipe, MeasuringByNumbersThatNoRecipeHoldsIsNotRecorded) {
  const fs::path image = WriteImage("part.png", Part());
  const fs::path file = image.parent_path() / "a.json";
  Open(image, [&] {
    Command(IDM_RECORD_RECIPE);
    Click(IDC_MODE_CIRCLE);
    const std::wstring usual = TextOf(IDC_LENGTH);
    for (const wchar_t* length : {L"-1", L"1e308", L"nan"}) {
      ::SetWindowTextW(Control(IDC_LENGTH), length);
      Click(IDC_MEASURE);
    }
    ::SetWindowTextW(Control(IDC_LENGTH), usual.c_str());
    Click(IDC_MEASURE);
    WithFile(IDM_SAVE_RECIPE, file);
    EXPECT_EQ(Status(), L"steps saved: 1");
  });
  EXPECT_EQ(rendal::ReadRecipe(TextOfFile(file)).steps.size(), 1u);
}

// The label opens its text when it is clicked.
TEST_F(DialogRecipe, WhatAFileSaysNeverBeginsTheStatus) {
  const fs::path image = WriteImage("part.png", Part());
  const fs::path file = image.parent_path() / "a.json";
  std::ofstream(file) << R"({"version": 1, "steps": [
      {"do": "threshold", "min": 1, "max": 2}], "https://example.org/?": 1})";
  Open(image, [&] {
    WithFile(IDM_RUN_RECIPE, file);
    EXPECT_EQ(Status(), L"a.json: https://example.org/?: is not known here");
  });
}

TEST_F(DialogRecipe, WhatIsNoRecipeIsToldAndChangesNothing) {
  const fs::path image = WriteImage("part.png", Part());
  const fs::path file = image.parent_path() / "a.json";
  std::ofstream(file) << R"({"version": 1, "steps": [{"do": "dance"}]})";
  Run([&] {
    Command(IDM_RUN_RECIPE);
    EXPECT_EQ(Status(), L"no image yet");
  });
  Open(image, [&] {
    Click(IDC_THRESHOLD);
    WithFile(IDM_RUN_RECIPE, file);
    EXPECT_NE(Status().find(L"steps[0]"), std::wstring::npos) << "place";
    EXPECT_EQ(ColorsOf(IDC_STATUS).text, RGB(255, 0, 0));
    EXPECT_EQ(dialog.m_regionHistory.size(), 1u);
  });
}

// Of 64 GB, which no one could wait for.
TEST_F(DialogRecipe, FileThatIsTooLongIsToldWithoutReadingIt) {
  const fs::path image = WriteImage("part.png", Part());
  const fs::path file = image.parent_path() / "a.json";
  std::ofstream(file) << "{";
  fs::resize_file(file, uintmax_t{64} << 30);
  Open(image, [&] {
    WithFile(IDM_RUN_RECIPE, file);
    EXPECT_NE(Status().find(L"it is too long"), std::wstring::npos) << Status();
    EXPECT_EQ(ColorsOf(IDC_STATUS).text, RGB(255, 0, 0));
  });
}

TEST_F(DialogRecipe, StepThatFailsEndsTheRun) {
  const fs::path image = WriteImage("part.png", Part());
  const fs::path file = image.parent_path() / "a.json";
  std::ofstream(file) << R"({"version": 1, "steps": [
      {"do": "threshold", "min": 1, "max": 2},
      {"do": "threshold", "min": 100, "max": 255}]})";
  Open(image, [&] {
    WithFile(IDM_RUN_RECIPE, file);
    EXPECT_EQ(Status(), L"region is empty");
    EXPECT_TRUE(dialog.m_regionHistory.empty());
  });
}

}  // namespace
