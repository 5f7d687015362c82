// SPDX-License-Identifier: MIT
#include "cli/command_line.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <random>
#include <sstream>

#include "cli/image_list.h"
#include "cli/job.h"
#include "cli/masks.h"
#include "cli/progress.h"
#include "recipes/number_text.h"
#include "recipes/output_file.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

std::string ContentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Sample(const char* name) {
  return Utf8Of(fs::path(RENDAL_SAMPLES) / name);
}

std::vector<std::vector<std::string>> Table(const std::string& csv) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(csv);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, ',');) {
      rows.back().push_back(cell);
    }
  }
  return rows;
}

void ExpectSameTable(const std::string& csv, const std::string& golden) {
  const auto rows = Table(csv);
  const auto expected = Table(golden);
  ASSERT_EQ(rows.size(), expected.size());
  ASSERT_GT(rows.size(), 1u);
  EXPECT_EQ(rows[0], expected[0]);
  for (size_t r = 1; r < rows.size(); ++r) {
    ASSERT_EQ(rows[r].size(), expected[r].size());
    for (size_t c = 0; c < rows[r].size(); ++c) {
      const double value = *NumberFrom(expected[r][c]);
      // The last digit of an arc tangent is the system's.
      EXPECT_NEAR(*NumberFrom(rows[r][c]), value, 1e-9 * (1 + std::abs(value)))
          << expected[0][c] << " of row " << r;
    }
  }
}

class CommandLineTest : public testing::Test {
 protected:
  CommandLineTest() { fs::create_directories(m_folder); }
  ~CommandLineTest() override { fs::remove_all(m_folder); }

  // Runs the program; what it printed is in m_out and m_error.
  int Run(const Arguments& arguments) {
    std::vector<const char*> argv = {"rendal-cli"};
    for (const std::string& argument : arguments) {
      argv.push_back(argument.c_str());
    }
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = RunCommandLine(static_cast<int>(argv.size()), argv.data());
    m_out = testing::internal::GetCapturedStdout();
    m_error = testing::internal::GetCapturedStderr();
    return code;
  }

  std::string In(const std::string& name) const {
    return Utf8Of(m_folder / PathOf(name));
  }
  std::string Written(const std::string& name, const std::string& text) const {
    std::ofstream(m_folder / PathOf(name), std::ios::binary) << text;
    return In(name);
  }
  std::string Picture(const std::string& name, const cv::Mat& image) const {
    std::vector<unsigned char> bytes;
    cv::imencode(".png", image, bytes);
    return Written(name, {bytes.begin(), bytes.end()});
  }
  std::string Content(const std::string& name) const {
    return ContentOf(m_folder / PathOf(name));
  }
  std::string CountRecipe(const std::string& outputs) const {
    return Written("recipe", R"({"version": 1, "steps": [
        {"do": "threshold", "min": 0, "max": 130}, {"do": "connection"}],
        "outputs": )" + outputs + "}");
  }
  size_t Files() const {
    return std::distance(fs::directory_iterator(m_folder), {});
  }

  const fs::path m_folder =
      fs::temp_directory_path() /
      ("rendal-cli-" + std::to_string(std::random_device()()));
  std::string m_out, m_error;
};

TEST_F(CommandLineTest, ComponentsAreThoseOfTheGoldenTable) {
  ASSERT_EQ(Run({"blob", Sample("parts.png"), "--gray", "0", "130", "--quiet",
                 "--csv", In("a.csv")}),
            kAllFine);
  EXPECT_EQ(m_out + m_error, "");
  ExpectSameTable(Content("a.csv"),
                  ContentOf(fs::path(RENDAL_GOLDEN) / "parts.csv"));
}

TEST_F(CommandLineTest, OperationsAreAppliedInTheOrderGiven) {
  ASSERT_EQ(Run({"blob",          Sample("parts.png"),
                 "--gray",        "0",
                 "130",           "--dilation",
                 "circle:2",      "--fill",
                 "--erosion",     "circle:2",
                 "--erosion",     "rect:3x4",
                 "--select",      "area:500..,circularity:0.5..",
                 "--border",      "exclude",
                 "--csv",         In("a.csv"),
                 "--save-recipe", In("r.json")}),
            kAllFine);
  ExpectSameTable(Content("a.csv"),
                  ContentOf(fs::path(RENDAL_GOLDEN) / "parts_chain.csv"));
  // As a recipe it gives the same, digit by digit.
  ASSERT_EQ(Run({"run", In("r.json"), Sample("parts.png"), "--csv", In("b.csv"),
                 "--out", Utf8Of(m_folder)}),
            kAllFine);
  const auto a = Table(Content("a.csv"));
  auto b = Table(Content("b.csv"));
  for (auto& row : b) row.erase(row.begin());
  EXPECT_EQ(a, b);
}

TEST_F(CommandLineTest, ATextOnTheScreenHasTheSameNumbers) {
  Run({"blob", Sample("parts.png"), "--gray", "0", "130"});
  EXPECT_NE(m_out.find("\n 1   8802    329.645875937287  "), std::string::npos)
      << m_out;
}

TEST_F(CommandLineTest, AnImageWithoutObjectsGivesATableWithoutRows) {
  const std::string image =
      Picture("black.png", cv::Mat(20, 30, CV_8U, cv::Scalar(0)));
  ASSERT_EQ(
      Run({"blob", image, "--gray", "10", "255", "--fill", "--opening",
           "circle:2", "--csv", In("a.csv"), "--json", In("a.json"), "--labels",
           In("l.png"), "--coco", In("c.json"), "--overlay", In("o.png")}),
      kAllFine);
  EXPECT_EQ(m_error, "");
  EXPECT_EQ(Table(Content("a.csv")).size(), 1u);
  EXPECT_NE(Content("a.json").find("\"objects\":[]"), std::string::npos);
  EXPECT_NE(Content("c.json").find("\"annotations\":[]"), std::string::npos);
  EXPECT_EQ(cv::countNonZero(cv::imread(In("l.png"), cv::IMREAD_UNCHANGED)), 0);
}

TEST_F(CommandLineTest, AMeasurementGivesShapeAndResiduals) {
  ASSERT_EQ(
      Run({"measure", Sample("parts.png"), "--circle", "150,140,35", "--select",
           "strongest", "--csv", In("m.csv"), "--points", In("p.csv")}),
      kAllFine);
  const auto rows = Table(Content("m.csv"));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0][1], "kind");
  EXPECT_EQ(rows[1][1], "circle");
  EXPECT_EQ(Table(Content("p.csv")).size() - 1, std::stoul(rows[1][5]));
}

TEST_F(CommandLineTest, AFitThatFailsIsAFailure) {
  EXPECT_EQ(Run({"measure", Sample("parts.png"), "--line", "5,5,30,5",
                 "--amplitude", "250", "--csv", In("m.csv")}),
            kSomethingFailed);
  EXPECT_NE(m_error.find("steps[0]: line: "), std::string::npos) << m_error;
  EXPECT_NE(m_out.find("code          -3"), std::string::npos) << m_out;
  EXPECT_EQ(Table(Content("m.csv")).size(), 2u);
}

TEST_F(CommandLineTest, NegativeCoordinatesAreNumbers) {
  EXPECT_EQ(Run({"measure", Sample("parts.png"), "--line", "-5,100,300,100",
                 "--direction", "-"}),
            kAllFine)
      << m_error;
}

TEST_F(CommandLineTest, InfoDescribesAnImage) {
  EXPECT_EQ(Run({"info", Sample("parts.png")}), kAllFine);
  EXPECT_EQ(m_out.rfind("width      640\nheight     480\n", 0), 0u) << m_out;
  EXPECT_EQ(Run({"info", In("no.png")}), kSomethingFailed);
  EXPECT_NE(m_error.find("there is no such file"), std::string::npos);
}

TEST_F(CommandLineTest, LinesAreFound) {
  cv::Mat image(200, 60, CV_8U, cv::Scalar(220));
  image.colRange(30, 60).setTo(30);
  ASSERT_EQ(
      Run({"find-lines", Picture("edge.png", image), "--json", In("a.json")}),
      kAllFine);
  EXPECT_NE(m_out.find("kind          find_line\n"), std::string::npos);
  EXPECT_NE(m_out.find("\nsegment "), std::string::npos) << m_out;
  EXPECT_NE(Content("a.json").find("\"segments\":[["), std::string::npos);
}

TEST_F(CommandLineTest, OneBadImageDoesNotStopTheRest) {
  fs::create_directories(m_folder / "in");
  fs::copy_file(Sample("parts.png"), m_folder / "in" / "c.png");
  fs::copy_file(Sample("parts.png"), m_folder / "in" / "a.PNG");
  Written("in/b.jpg", "no image");
  Written("in/notes.txt", "not looked at");
  CountRecipe(R"({"csv": "all.csv", "json": "all.json",
                  "labels": "{name}_labels.png"})");
  EXPECT_EQ(Run({"run", In("recipe"), In("in"), "--out", In("out")}),
            kSomethingFailed);
  EXPECT_EQ(m_error, "rendal-cli: " + Utf8Of(m_folder / "in" / "b.jpg") +
                         ": it is no image\n");
  EXPECT_EQ(Table(Content("out/all.csv")).size(), 1 + 10 + 10u);
  EXPECT_EQ(Table(Content("out/all.csv"))[1][0],
            Utf8Of(m_folder / "in" / "a.PNG"));
  EXPECT_NE(Content("out/all.json").find("\"error\":\"it is no image\""),
            std::string::npos);
  EXPECT_TRUE(fs::exists(m_folder / "out" / "a_labels.png"));
  EXPECT_TRUE(fs::exists(m_folder / "out" / "c_labels.png"));
  EXPECT_FALSE(fs::exists(m_folder / "out" / "b_labels.png"));
}

TEST_F(CommandLineTest, ImageOfTooManyPixelsIsRefusedWithItsSize) {
  // The beginning of a bitmap of 60000 x 60000.
  std::string bitmap = "BM" + std::string(24, '\0');
  bitmap[14] = 40;
  for (const int at : {18, 22}) bitmap.replace(at, 2, "\x60\xEA");
  Written("big.bmp", bitmap);
  EXPECT_EQ(Run({"info", In("big.bmp")}), kSomethingFailed);
  EXPECT_EQ(m_error, "rendal-cli: " + In("big.bmp") +
                         ": image too large,width = 60000, height = 60000, at "
                         "most 500000000 pixels\n");
}

TEST_F(CommandLineTest, ResultsDoNotDependOnTheNumberOfThreads) {
  Arguments images;
  for (int i = 0; i < 8; ++i) {
    images.push_back(Sample(i % 2 == 0 ? "parts.png" : "coins.png"));
  }
  CountRecipe("{}");
  std::string first;
  for (const char* threads : {"1", "2", "7"}) {
    Arguments arguments = {"run",    In("recipe"), "--threads",
                           threads,  "--csv",      In("a.csv"),
                           "--coco", In("a.json"), "--quiet"};
    arguments.insert(arguments.begin() + 2, images.begin(), images.end());
    ASSERT_EQ(Run(arguments), kAllFine) << m_error;
    const std::string results = Content("a.csv") + Content("a.json");
    if (first.empty()) first = results;
    EXPECT_EQ(results, first) << threads;
  }
  EXPECT_GT(Table(Content("a.csv")).size(), 100u);
}

TEST_F(CommandLineTest, PathsInAnyScriptAreReadAndNamed) {
  const std::string name = "\xE9\x9B\xB6\xE4\xBB\xB6 1.png";
  fs::copy_file(Sample("parts.png"), m_folder / PathOf(name));
  CountRecipe(R"({"overlay": "{name}-\u6a94.png", "csv": "a.csv"})");
  ASSERT_EQ(Run({"run", In("recipe"), In(name), "--out", In("")}), kAllFine)
      << m_error;
  EXPECT_TRUE(fs::exists(
      m_folder / PathOf("\xE9\x9B\xB6\xE4\xBB\xB6 1-\xE6\xAA\x94.png")));
  EXPECT_NE(Content("a.csv").find(name), std::string::npos);
}

TEST_F(CommandLineTest, AnOverlayIsTheWholePictureAtItsZoom) {
  Run({"blob", Sample("parts.png"), "--gray", "0", "130", "--overlay",
       In("o.png"), "--zoom", "0.5"});
  const cv::Mat picture = cv::imread(In("o.png"), cv::IMREAD_UNCHANGED);
  EXPECT_EQ(picture.size(), cv::Size(320, 240));
  // Component 1 is red, 2 magenta.
  EXPECT_EQ(picture.at<cv::Vec3b>(50, 140), cv::Vec3b(0, 0, 255));
  EXPECT_EQ(picture.at<cv::Vec3b>(35, 75), cv::Vec3b(255, 0, 255));
}

TEST_F(CommandLineTest, MoreLabelsThan16BitsHoldAreAnError) {
  cv::Mat image(520, 520, CV_8U, cv::Scalar(0));
  for (int r = 0; r < 520; r += 2) {
    for (int c = 0; c < 520; c += 2) image.at<unsigned char>(r, c) = 255;
  }
  EXPECT_EQ(Run({"blob", Picture("a.png", image), "--gray", "1", "255",
                 "--labels", In("l.png"), "--quiet"}),
            kSomethingFailed);
  EXPECT_NE(m_error.find("67600 components do not fit a 16-bit label picture"),
            std::string::npos)
      << m_error;
  EXPECT_EQ(Files(), 1u);
}

TEST_F(CommandLineTest, FilesThatCannotBeWrittenAreAFailure) {
  Written("file", "x");
  for (const char* option : {"--csv", "--json", "--labels", "--coco",
                             "--overlay", "--save-recipe"}) {
    EXPECT_EQ(Run({"blob", Sample("parts.png"), "--gray", "0", "130", option,
                   In("file/a")}),
              kSomethingFailed)
        << option;
    EXPECT_NE(m_error.find("cannot write " + In("file/a")), std::string::npos)
        << m_error;
  }
  EXPECT_EQ(Files(), 1u);
}

TEST_F(CommandLineTest, WrongUseIsRefusedBeforeAnythingIsDone) {
  const std::string image = Sample("parts.png");
  CountRecipe(R"({"labels": "{name}.png"})");
  fs::copy_file(image, m_folder / "a.png");
  const Arguments wrong[] = {
      {},
      {"polish"},
      {"blob", image},
      {"blob", image, "--gray", "0"},
      {"blob", image, "--gray", "0", "256"},
      {"blob", image, "--gray", "9", "8"},
      {"blob", image, "--gray", "0", "9", "--opening", "circle"},
      {"blob", image, "--gray", "0", "9", "--opening", "circle:0"},
      {"blob", image, "--gray", "0", "9", "--opening", "rect:3"},
      {"blob", image, "--gray", "0", "9", "--boundary", "both"},
      {"blob", image, "--gray", "0", "9", "--select", "aria:1..2"},
      {"blob", image, "--gray", "0", "9", "--select", "area:2..1"},
      {"blob", image, "--gray", "0", "9", "--select", "area:x..1"},
      {"blob", image, "--gray", "0", "9", "--connect", "6"},
      {"measure", image},
      {"measure", image, "--line", "1,2,3"},
      {"measure", image, "--line", "1,2,3,x"},
      {"measure", image, "--line", "1,2,3,4", "--circle", "1,2,3"},
      {"measure", image, "--line", "1,2,3,4", "--select", "second"},
      {"run", In("recipe")},
      {"run", In("recipe"), image, "--threads", "0"},
      {"run", In("recipe"), In("*.tif")},
      // Would write over the image.
      {"run", In("recipe"), In("a.png"), "--out", In("")},
      {"blob", In("a.png"), "--gray", "0", "9", "--csv", In("a.png")},
  };
  for (const Arguments& arguments : wrong) {
    std::string line;
    for (const std::string& argument : arguments) line += argument + ' ';
    EXPECT_EQ(Run(arguments), kUsageError) << line << m_error;
    EXPECT_NE(m_error, "") << line;
    EXPECT_EQ(m_out, "") << line;
  }
  EXPECT_EQ(ContentOf(image), Content("a.png"));
}

TEST_F(CommandLineTest, WrongRecipesAreNamedWithTheirPlace) {
  Written("recipe", R"({"version": 1, "steps": [{"do": "union"}]})");
  EXPECT_EQ(Run({"run", In("recipe"), Sample("parts.png")}), kRecipeError);
  EXPECT_EQ(m_error, "rendal-cli: " + In("recipe") +
                         ": steps[0]: there are no two \"threshold\" before "
                         "it\n");
  EXPECT_EQ(Run({"run", In("none"), Sample("parts.png")}), kRecipeError);
  EXPECT_EQ(Run({"run", In(""), Sample("parts.png")}), kRecipeError);
}

TEST_F(CommandLineTest, HelpAndVersionAreFine) {
  EXPECT_EQ(Run({"--version"}), kAllFine);
  EXPECT_EQ(m_out, "rendal-cli 1.0.0\n");
  for (const Arguments& arguments : {Arguments{"--help"},
                                     {"blob", "--help"},
                                     {"measure", "--help"},
                                     {"run", "--help"}}) {
    EXPECT_EQ(Run(arguments), kAllFine);
    EXPECT_NE(m_out.find("Example"), std::string::npos) << m_out;
  }
}

TEST(ImageList, PatternsMatchAsShellsDo) {
  EXPECT_TRUE(MatchesPattern("a1.png", "a?.*"));
  EXPECT_TRUE(MatchesPattern("a.b.png", "*.png"));
  EXPECT_TRUE(MatchesPattern("abab", "*ab"));
  EXPECT_TRUE(MatchesPattern("", "*"));
  EXPECT_FALSE(MatchesPattern("a.png", "*.jpg"));
  EXPECT_FALSE(MatchesPattern("ab", "a"));
  EXPECT_FALSE(MatchesPattern("a", "a?"));
}

TEST(ImageList, PicturesHaveNamesOfTheirOwn) {
  EXPECT_EQ(
      PictureNames({"x/a.png", "x/a.jpg", "y/A.png", "y/a.jpg", "a"}),
      (std::vector<std::string>{"a", "a_jpg", "A_png", "a_jpg_2", "a_2"}));
}

// Counts worked out by hand for "rows of a letter L".
TEST(Masks, RunLengthsGoDownTheColumns) {
  cv::Mat image(4, 3, CV_8U, cv::Scalar(0));
  image(cv::Rect(1, 0, 1, 3)).setTo(255);
  image(cv::Rect(1, 2, 2, 1)).setTo(255);
  Workbench bench;
  bench.m_srcImage = image;
  const ConsoleCapture console;
  Threshold(bench, {1, 255});
  Connection(bench);
  EXPECT_EQ(ColumnRunLengths(bench.m_components[0], 3, 4),
            (std::vector<uint32_t>{4, 3, 3, 1, 1}));
  // Without background before it the first length is 0, at the end none.
  bench.m_srcImage.setTo(255);
  Threshold(bench, {1, 255});
  Connection(bench);
  EXPECT_EQ(ColumnRunLengths(bench.m_components[0], 3, 4),
            (std::vector<uint32_t>{0, 12}));
}

TEST(Progress, TellsRateAndTimeLeft) {
  EXPECT_EQ(Progress::Line(0, 1000, 0), "0/1000 images");
  EXPECT_EQ(Progress::Line(100, 1000, 2), "100/1000 images, 50.0/s, 18 s left");
}

}  // namespace
}  // namespace rendal
