// SPDX-License-Identifier: MIT
#include "cli/command_line.h"

#include <cmath>
#include <limits>
#include <locale>

#include "cli/image_list.h"
#include "cli/masks.h"
#include "cli/progress.h"
#include "recipes/number_text.h"
#include "recipes/recipe_json.h"
#include "tests/cli/command_line_run.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

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

class DecimalComma : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
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

// What the options of a command stand for.
class OptionsTest : public CommandLineTest {
 protected:
  std::vector<Step> StepsOf(Arguments arguments) {
    arguments.insert(arguments.end(), {"--save-recipe", In("r"), "--quiet"});
    EXPECT_NE(Run(arguments), kUsageError) << m_error;
    return ReadRecipe(Content("r")).steps;
  }
  static Step Operation(const char* name, ElementChoice element) {
    OperationStep step;
    step.operation = *OperationByName(name);
    step.parameters.element = element;
    return step;
  }
};

TEST_F(OptionsTest, OfBlob) {
  OperationStep boundary;
  boundary.operation = RegionOperation::kBoundary;
  boundary.parameters.boundary_type = "inner_filled";
  const size_t area = *FeatureByName("area");
  EXPECT_TRUE(
      (StepsOf({"blob",     Sample("parts.png"), "--gray",       "7",
                "130",      "--bottom-hat",      "circle:3",     "--top-hat",
                "rect:4x5", "--closing",         "cross:6x7",    "--opening",
                "circle:1", "--erosion",         "circle:2",     "--dilation",
                "rect:8x9", "--boundary",        "inner_filled", "--connect",
                "4",        "--select",          "area:..12.5",  "--border",
                "exclude"}) ==
       std::vector<Step>{
           ThresholdStep{{7, 130}}, Operation("bottom_hat", {kCircle, 3, 3}),
           Operation("top_hat", {kRectangle, 4, 5}),
           Operation("closing", {kCross, 6, 7}),
           Operation("opening", {kCircle, 1, 1}),
           Operation("erosion", {kCircle, 2, 2}),
           Operation("dilation", {kRectangle, 8, 9}), boundary,
           ConnectionStep{{4, RegionSource::kPrevious}},
           SelectStep{{{{area, -std::numeric_limits<double>::infinity(), 12.5}},
                       true}}}))
      << Content("r");
}

TEST_F(OptionsTest, OfMeasure) {
  const struct {
    const char* option;
    const char* numbers;
    RoiShape roi;
  } shapes[] = {{"--line", "1,2,3.5,4", {kToolLine, {1, 2, 3.5f, 4}}},
                {"--circle", "1,2,3", {kToolCircle, {1, 2, 3}}},
                {"--ellipse", "1,2,3,4,5", {kToolEllipse, {1, 2, 3, 4, 5}}},
                {"--band", "-1,2,3,4", {kToolBand, {-1, 2, 3, 4}}}};
  for (const auto& shape : shapes) {
    EXPECT_TRUE((StepsOf({"measure", Sample("parts.png"), shape.option,
                          shape.numbers}) ==
                 std::vector<Step>{MeasureStep{shape.roi, {}}}))
        << Content("r");
    EXPECT_TRUE((StepsOf({"measure",     Sample("parts.png"),
                          shape.option,  shape.numbers,
                          "--length",    "11.5",
                          "--width",     "12",
                          "--amplitude", "13",
                          "--sigma",     "1.4",
                          "--reps",      "1.5",
                          "--count",     "16",
                          "--direction", "-",
                          "--select",    "last"}) ==
                 std::vector<Step>{MeasureStep{
                     shape.roi, {11.5, 12, 13, 1.4, 1.5, 16, -1, "last"}}}))
        << Content("r");
  }
}

TEST_F(OptionsTest, OfFindLines) {
  EXPECT_TRUE((StepsOf({"find-lines", Sample("parts.png")}) ==
               std::vector<Step>{FindLineStep{kShowEdges}}));
  EXPECT_TRUE((StepsOf({"find-lines", Sample("parts.png"), "--display", "1"}) ==
               std::vector<Step>{FindLineStep{0}}));
}

TEST_F(CommandLineTest, OutputsAreMadeAsTheRecipeSays) {
  fs::copy_file(Sample("parts.png"), m_folder / "a.JPEG");
  CountRecipe(R"({"coco": "c.json", "rle": "compressed", "zoom": 0.5,
                  "overlay": "{name}-{name}.png", "points": "p.csv"})");
  ASSERT_EQ(Run({"run", In("recipe"), In(""), Sample("parts.png"), "--out",
                 In("out"), "--points", In("q.csv")}),
            kAllFine)
      << m_error;
  const std::string coco = Content("out/c.json");
  EXPECT_NE(coco.find("\"counts\":\""), std::string::npos);
  EXPECT_NE(coco.find("\"id\":11,\"image_id\":2,"), std::string::npos);
  EXPECT_EQ(cv::imread(In("out/a-a.png")).size(), cv::Size(320, 240));
  EXPECT_TRUE(fs::exists(m_folder / "out" / "parts-parts.png"));
  // The command line goes first.
  EXPECT_FALSE(fs::exists(m_folder / "out" / "p.csv"));
  EXPECT_TRUE(fs::exists(m_folder / "q.csv"));
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

TEST_F(CommandLineTest, InfoHasMeanAndDeviation) {
  cv::Mat image(4, 4, CV_8U, cv::Scalar(0));
  image.col(1).setTo(100);
  Run({"info", Picture("a.png", image)});
  EXPECT_NE(m_out.find("\ngrey_min   0\ngrey_max   100\ngrey_mean  25\n"
                       "grey_sd    43.3012"),
            std::string::npos)
      << m_out;
}

TEST_F(CommandLineTest, NotesSayHowGreyValuesWereScaledUnlessQuiet) {
  std::vector<unsigned char> bytes;
  cv::Mat image(9, 9, CV_32F, cv::Scalar(-1));
  image.col(3).setTo(2.5);
  cv::imencode(".tif", image, bytes);
  const std::string path = Written("a.tif", {bytes.begin(), bytes.end()});
  EXPECT_EQ(Run({"blob", path, "--gray", "200", "255"}), kAllFine);
  EXPECT_EQ(m_error,
            "rendal-cli: " + path + ": grey 0..255 shows values -1..2.5\n");
  EXPECT_EQ(Run({"blob", path, "--gray", "200", "255", "--quiet"}), kAllFine);
  EXPECT_EQ(m_error, "");
}

TEST_F(CommandLineTest, InfoSaysHowGreyValuesWereScaled) {
  std::vector<unsigned char> bytes;
  cv::Mat image(9, 9, CV_32F, cv::Scalar(-1));
  image.col(3).setTo(2.5);
  cv::imencode(".tif", image, bytes);
  Run({"info", Written("a.tif", {bytes.begin(), bytes.end()})});
  EXPECT_NE(m_out.find("\nbits       32 (floating point)\n"), std::string::npos)
      << m_out;
  EXPECT_NE(m_out.find("\nnote       grey 0..255 shows values -1..2.5\n"),
            std::string::npos)
      << m_out;
}

TEST_F(CommandLineTest, PatternsWithoutAFolderMeanTheCurrentOne) {
  const fs::path before = fs::current_path();
  fs::copy_file(Sample("parts.png"), m_folder / "b.png");
  fs::copy_file(Sample("parts.png"), m_folder / "a.png");
  CountRecipe(R"({"csv": "t.csv"})");
  fs::current_path(m_folder);
  const int code = Run({"run", "recipe", "?.png"});
  fs::current_path(before);
  EXPECT_EQ(code, kAllFine) << m_error;
  EXPECT_EQ(m_out, "a.png: 10 components\nb.png: 10 components\n");
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

TEST_F(CommandLineTest, MoreThreadsThanThereAreIsNoTrouble) {
  EXPECT_EQ(Run({"blob", Sample("parts.png"), "--gray", "0", "130", "--fill",
                 "--threads", "1024", "--csv", In("a.csv")}),
            kAllFine);
  EXPECT_EQ(m_error, "");
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

// Each pixel of the image covers as much of the overlay as every other.
TEST_F(CommandLineTest, AnEnlargedOverlayHasNoMargin) {
  cv::Mat image(4, 6, CV_8U, cv::Scalar(255));
  image.col(0).setTo(100);
  image.row(3).setTo(100);
  for (const double zoom : {1.5, 2.0, 3.0, 4.0, 7.0, 128.0}) {
    ASSERT_EQ(Run({"blob", Picture("a.png", image), "--gray", "0", "0",
                   "--overlay", In("o.png"), "--zoom", std::to_string(zoom)}),
              kAllFine)
        << m_error;
    const cv::Mat o = cv::imread(In("o.png"), cv::IMREAD_GRAYSCALE);
    ASSERT_EQ(o.size(), cv::Size(cvRound(6 * zoom), cvRound(4 * zoom)));
    EXPECT_GE(cv::countNonZero(o == 255) + cv::countNonZero(o == 100),
              static_cast<int>(o.total()))
        << zoom;
    const int edge = static_cast<int>(zoom);
    EXPECT_NEAR(cv::countNonZero(o.row(0) == 100), zoom, 0.5) << zoom;
    EXPECT_NEAR(cv::countNonZero(o.col(o.cols - 1) == 100), zoom, 0.5) << zoom;
    EXPECT_EQ(o.at<unsigned char>(0, edge), 255) << zoom;
  }
}

TEST_F(CommandLineTest, WholeNumbersAreDecimal) {
  ASSERT_EQ(Run({"blob", Sample("parts.png"), "--gray", "010", "090",
                 "--threads", "08", "--save-recipe", In("r.json")}),
            kAllFine)
      << m_error;
  EXPECT_NE(Content("r.json").find("\"min\":10,\"max\":90"), std::string::npos)
      << Content("r.json");
  for (const char* wrong : {"0x10", "1e999", "10.5", "", "256", "-1", "ten"}) {
    EXPECT_EQ(Run({"blob", Sample("parts.png"), "--gray", wrong, "255"}),
              kUsageError)
        << wrong;
  }
}

TEST_F(CommandLineTest, HelpAndVersionAreFine) {
  EXPECT_EQ(Run({"--version"}), kAllFine);
  EXPECT_EQ(m_out, "rendal-cli 1.0.0\n");
  for (const Arguments& arguments : {Arguments{"--help"},
                                     {"blob", "--help"},
                                     {"measure", "--help"},
                                     {"find-lines", "--help"},
                                     {"info", "--help"},
                                     {"run", "--help"}}) {
    EXPECT_EQ(Run(arguments), kAllFine);
    EXPECT_NE(m_out.find("Example"), std::string::npos) << m_out;
  }
}

TEST_F(CommandLineTest, OfSeveralConditionsForAFeatureTheNarrowerHold) {
  ASSERT_EQ(Run({"blob", Sample("parts.png"), "--gray", "0", "130", "--select",
                 "area:500..8000", "--select", "area:1000..", "--csv",
                 In("a.csv"), "--save-recipe", In("r.json")}),
            kAllFine);
  EXPECT_NE(Content("r.json").find("\"area\":[1000.0,8000.0]"),
            std::string::npos)
      << Content("r.json");
  for (const auto& row : Table(Content("a.csv"))) {
    if (row[0] == "id") continue;
    EXPECT_GE(std::stoi(row[1]), 1000);
    EXPECT_LE(std::stoi(row[1]), 8000);
  }
}

TEST_F(CommandLineTest, OptionsAndTablesHaveAPointInEveryLocale) {
  const Arguments measure = {"measure",      Sample("parts.png"), "--circle",
                             "150.5,140,35", "--sigma",           "1.5",
                             "--select",     "strongest"};
  ASSERT_EQ(Run(measure), kAllFine);
  const std::string before = m_out;
  const std::locale classic = std::locale::global(
      std::locale(std::locale::classic(), new DecimalComma));
  EXPECT_EQ(Run(measure), kAllFine) << m_error;
  std::locale::global(classic);
  EXPECT_EQ(m_out, before);
  // These decimals count.
  Run({"measure", Sample("parts.png"), "--circle", "150,140,35", "--sigma", "1",
       "--select", "strongest"});
  EXPECT_NE(m_out, before);
}

TEST_F(CommandLineTest, ImagesOfOneNameInTwoFoldersKeepTheirPictures) {
  const cv::Mat black(20, 30, CV_8U, cv::Scalar(0));
  fs::create_directories(m_folder / "a");
  fs::create_directories(m_folder / "b");
  fs::copy_file(Sample("parts.png"), m_folder / "a" / "x.png");
  Picture("b/x.png", black);
  CountRecipe(R"({"labels": "{name}.png"})");
  ASSERT_EQ(Run({"run", In("recipe"), In("a"), In("b/*.png"), "--out",
                 In("out"), "--threads", "2"}),
            kAllFine)
      << m_error;
  const auto size_of = [this](const char* name) {
    return cv::imread(In(name), cv::IMREAD_UNCHANGED).size();
  };
  EXPECT_EQ(size_of("out/x.png"), cv::Size(640, 480));
  EXPECT_EQ(size_of("out/x_png.png"), black.size());
}

TEST(ImageList, PatternsMatchAsShellsDo) {
  EXPECT_TRUE(MatchesPattern("a1.png", "a?.*"));
  EXPECT_TRUE(MatchesPattern("a.b.png", "*.png"));
  EXPECT_TRUE(MatchesPattern("abab", "*ab"));
  EXPECT_TRUE(MatchesPattern("", "*"));
  // One character, not one byte.
  EXPECT_TRUE(
      MatchesPattern("\xE5\x9B\xBE"
                     "1.png",
                     "?1.png"));
  EXPECT_FALSE(MatchesPattern("\xE5\x9B\xBE.png", "???.png"));
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
