// SPDX-License-Identifier: MIT
#include "recipes/tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <locale>
#include <random>

#include "recipes/number_text.h"
#include "recipes/output_file.h"
#include "recipes/recipe_json.h"
#include "tools/blob_tool.h"
#include "tools/console_text.h"
#include "tools/long_path.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;

TEST(NumberText, IsShortAndReadsBackExactly) {
  EXPECT_EQ(NumberText(0.1), "0.1");
  EXPECT_EQ(NumberText(100000), "100000");
  EXPECT_EQ(NumberText(2147483647), "2147483647");
  EXPECT_EQ(NumberText(-0.5), "-0.5");
  EXPECT_EQ(NumberText(1e300), "1e+300");
  EXPECT_EQ(NumberText(std::nan("")), "");
  EXPECT_EQ(NumberText(std::numeric_limits<double>::infinity()), "");
  std::mt19937_64 random(1);
  for (int i = 0; i < 1000; ++i) {
    const uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    EXPECT_EQ(NumberFrom(NumberText(value)), value);
  }
}

TEST(NumberText, OnlyWholeTextsAreNumbers) {
  EXPECT_EQ(NumberFrom("+1.5"), 1.5);
  for (const char* text : {"", "+", "1,5", "1.5 ", " 1", "nan", "inf", "1x",
                           "+-1", "0x10", "1e999"}) {
    EXPECT_FALSE(NumberFrom(text)) << text;
  }
}

TEST(NumberText, FloatsAreWrittenAsPeopleWroteThem) {
  EXPECT_EQ(ShortestDouble(0.1f), 0.1);
  for (const float value : {1.0f / 3, 1e-30f, 16777217.0f, -179.99f}) {
    EXPECT_EQ(static_cast<float>(ShortestDouble(value)), value);
  }
}

// Points for thousands, a comma for decimals.
class Commas : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Tables, NumbersHaveAPointInEveryLocale) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new Commas));
  FeatureValues values;
  values.fill(12345.5);
  const std::string csv = CsvLine(ComponentCells(1234, values));
  const std::vector<FeatureValues> rows = {values};
  const std::string json = ImageJson("a", 1000, 2000, &rows, {});
  std::locale::global(before);
  EXPECT_EQ(csv.rfind("1234,12345.5,12345.5,", 0), 0u) << csv;
  EXPECT_NE(json.find("\"width\":1000,"), std::string::npos) << json;
  EXPECT_NE(json.find("\"ra\":12345.5,"), std::string::npos) << json;
}

TEST(Tables, CellsThatNeedItAreQuoted) {
  EXPECT_EQ(CsvLine({"a", "b,c", "d\"e", "", "f\ng"}),
            "a,\"b,c\",\"d\"\"e\",,\"f\ng\"\n");
}

TEST(Tables, WithoutComponentsThereIsAHeaderAlone) {
  EXPECT_EQ(ComponentCsv(ComponentSet()),
            "id,area,x,y,x_min,y_min,x_max,y_max,ra,rb,phi,rect2_len1,"
            "rect2_len2,rect2_phi,circularity\n");
  EXPECT_EQ(ComponentJson(ComponentSet()), "{\"objects\":[]}\n");
}

std::string CellOf(const Measurement& m, const std::string& column) {
  const Cells names = MeasurementColumns();
  const Cells cells = MeasurementCells(m);
  return cells[std::find(names.begin(), names.end(), column) - names.begin()];
}

TEST(Tables, ShapesHaveTheirNumbersInTheirColumns) {
  Measurement m = {
      2, "ellipse", 0, 7, {}, true, {1, 2, 30, 5, 4}, {6, 0.25, 0.5}, {}, {}};
  EXPECT_EQ(CellOf(m, "x") + " " + CellOf(m, "y"), "1 2");
  EXPECT_EQ(CellOf(m, "angle"), "30");
  EXPECT_EQ(CellOf(m, "half_axis_1"), "5");
  EXPECT_EQ(CellOf(m, "half_axis_2"), "4");
  EXPECT_EQ(CellOf(m, "residual_rms"), "0.25");
  EXPECT_EQ(CellOf(m, "residual_max"), "0.5");
  EXPECT_EQ(CellOf(m, "radius") + CellOf(m, "dx") + CellOf(m, "segments"), "");
  m.kind = "circle";
  EXPECT_EQ(CellOf(m, "radius"), "30");
  EXPECT_EQ(CellOf(m, "angle"), "");
  m.kind = "line";
  m.shape[0] = 0;
  m.shape[1] = 1;
  EXPECT_EQ(CellOf(m, "dx") + " " + CellOf(m, "dy"), "0 1");
  EXPECT_EQ(CellOf(m, "angle"), NumberText(LineAngle(0, 1)));
  EXPECT_NE(LineAngle(0, 1), LineAngle(1, 0));
  EXPECT_EQ(CellOf(m, "x"), "30");
  EXPECT_EQ(CellOf(m, "y"), "5");
  m.has_shape = false;
  for (const char* column : {"used", "residual_rms", "x", "angle"}) {
    EXPECT_EQ(CellOf(m, column), "") << column;
  }
}

TEST(Tables, EdgesAndPointsCountFromOne) {
  Measurement m = {4, "find_line", 0, 3, {}, true, {}, {}, {}, {}};
  m.points = {{7, 8, 0, 0, 0.5, true}, {9, 8, 0, 0, 3, false}};
  m.edges = {{1, 2, 30, 0, 0, false}, {3, 4, -5.5, 2, 0, false}};
  EXPECT_EQ(
      PointRows(m),
      (std::vector<Cells>{{"4", "find_line", "1", "", "7", "8", "", "0.5", "1"},
                          {"4", "find_line", "2", "", "9", "8", "", "3", "0"},
                          {"4", "edge", "1", "1", "1", "2", "30", "", ""},
                          {"4", "edge", "2", "3", "3", "4", "-5.5", "", ""}}));
  const std::string json = ImageJson("a", 1, 1, nullptr, {m});
  EXPECT_NE(json.find(R"({"caliper":1,"x":1.0,"y":2.0,"amplitude":30.0})"),
            std::string::npos)
      << json;
  EXPECT_NE(json.find(R"("distance":0.5,"used":true)"), std::string::npos)
      << json;
}

TEST(Tables, ComponentsCountFromOne) {
  cv::Mat image(3, 9, CV_8U, cv::Scalar(0));
  image.col(2).setTo(255);
  image.col(6).setTo(255);
  Workbench bench;
  bench.m_srcImage = image;
  const ConsoleCapture console;
  Threshold(bench, {1, 255});
  Connection(bench);
  const std::string csv = ComponentCsv(bench.m_components);
  EXPECT_NE(csv.find("\n1,3,2,1,"), std::string::npos) << csv;
  EXPECT_NE(csv.find("\n2,3,6,1,"), std::string::npos) << csv;
  const std::string json = ComponentJson(bench.m_components);
  EXPECT_NE(json.find("[{\"id\":1,\"area\":3,\"x\":2.0,"), std::string::npos)
      << json;
}

TEST(Tables, NamesThatAreNoTextDoNotBreakJson) {
  EXPECT_NE(FailedImageJson("a\xFF.png", "x").find("\"error\":\"x\""),
            std::string::npos);
}

class OutputFileTest : public testing::Test {
 protected:
  OutputFileTest() { fs::create_directories(m_folder); }
  ~OutputFileTest() override { fs::remove_all(m_folder); }

  static std::string ContentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  size_t Files() const {
    return std::distance(fs::directory_iterator(m_folder), {});
  }

  const fs::path m_folder =
      fs::temp_directory_path() /
      ("rendal-output-" + std::to_string(std::random_device()()));
};

TEST_F(OutputFileTest, OldContentStaysUntilTheNewOneIsComplete) {
  WriteOutput(m_folder / "a.csv", "old");
  {
    OutputFile file(m_folder / "a.csv");
    file.Write("new");
    EXPECT_EQ(ContentOf(m_folder / "a.csv"), "old");
    file.Commit();
  }
  EXPECT_EQ(ContentOf(m_folder / "a.csv"), "new");
  EXPECT_EQ(Files(), 1u);
}

TEST_F(OutputFileTest, WhatIsNotCommittedLeavesNothing) {
  {
    OutputFile file(m_folder / "a.csv");
    file.Write("new");
  }
  EXPECT_EQ(Files(), 0u);
}

TEST_F(OutputFileTest, NamesInAnyScriptAreWritten) {
  const fs::path path = m_folder / PathOf("\xE9\x9B\xB6\xE4\xBB\xB6.csv");
  WriteOutput(path, "x");
  EXPECT_EQ(ContentOf(path), "x");
}

TEST_F(OutputFileTest, RefusalsNameTheFile) {
  WriteOutput(m_folder / "file", "x");
  for (const fs::path& path :
       {m_folder, m_folder / "file" / "a.csv", m_folder / "no" / "a.csv"}) {
    try {
      WriteOutput(path, "x");
      ADD_FAILURE() << path;
    } catch (const OutputError& error) {
      EXPECT_EQ(std::string(error.what())
                    .rfind("cannot write " + Utf8Of(path) + ": ", 0),
                0u)
          << error.what();
    }
  }
  EXPECT_EQ(Files(), 1u);
}

TEST_F(OutputFileTest, PathsOf300CharactersAreWritten) {
  const std::string name(100, 'd');
  const fs::path file = m_folder / name / name / name / "a";
  fs::path folder = WithoutLengthLimit(file).parent_path();
  fs::create_directories(folder);
  WriteOutput(file, "old");
  WriteOutput(file, "new");
  EXPECT_EQ(ContentOf(folder / "a"), "new");
  EXPECT_THROW(ReadRecipeFile(file), RecipeError);
  EXPECT_TRUE(fs::remove(folder / "a"));
  // Nothing else is in there.
  for (int i = 0; i < 3; ++i, folder = folder.parent_path()) {
    EXPECT_TRUE(fs::remove(folder));
  }
}

#if !defined(_WIN32)
TEST_F(OutputFileTest, AFullDiskIsAnErrorAndTheDeviceStays) {
  EXPECT_THROW(WriteOutput("/dev/full", "x"), OutputError);
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(OutputFileTest, LinksAreFollowed) {
  WriteOutput(m_folder / "real", "old");
  fs::create_symlink("real", m_folder / "link");
  WriteOutput(m_folder / "link", "new");
  EXPECT_TRUE(fs::is_symlink(m_folder / "link"));
  EXPECT_EQ(ContentOf(m_folder / "real"), "new");
}

TEST_F(OutputFileTest, LinksToFilesThatAreNotThereYetAreFollowed) {
  fs::create_symlink("real", m_folder / "link");
  fs::create_symlink("link", m_folder / "link to it");
  WriteOutput(m_folder / "link to it", "new");
  EXPECT_TRUE(fs::is_symlink(m_folder / "link to it"));
  EXPECT_TRUE(fs::is_symlink(m_folder / "link"));
  EXPECT_EQ(ContentOf(m_folder / "real"), "new");
}
#endif

}  // namespace
}  // namespace rendal
