// SPDX-License-Identifier: MIT
//
// What the command line refuses, and what it leaves when something fails.
#include "recipes/recipe_json.h"
#include "tests/cli/command_line_run.h"

namespace rendal {
namespace {

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
  fs::create_directories(m_folder / "empty");
  const Arguments wrong[] = {
      {},
      {"polish"},
      {"blob", image},
      {"blob", image, "--gray", "0"},
      {"blob", image, "--gray", "0", "256"},
      {"blob", image, "--gray", "0", "255", "--csv", ""},
      {"measure", image, "--line", ""},
      {"blob", image, "--gray", "9", "8"},
      {"blob", image, "--gray", "0", "9", "--opening", "circle"},
      {"blob", image, "--gray", "0", "9", "--opening", "circle:0"},
      {"blob", image, "--gray", "0", "9", "--opening", "rect:3"},
      {"blob", image, "--gray", "0", "9", "--boundary", "both"},
      {"blob", image, "--gray", "0", "9", "--opening", "rect:3x0"},
      {"blob", image, "--gray", "0", "9", "--opening", "ring:3x3"},
      {"blob", image, "--gray", "0", "9", "--select", "area"},
      {"blob", image, "--gray", "0", "9", "--select", "area:5"},
      {"blob", image, "--gray", "0", "9", "--select", "1..2"},
      {"blob", image, "--gray", "0", "9", "--select", "1..2:area"},
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
      {"blob", image, "--gray", "0", "9", "--fill=false"},
      {"blob", image, "--gray", "0", "9", "--zoom", "nan"},
      {"blob", image, "--gray", "0", "9", "--zoom", "0"},
      {"blob", image, "--gray", "0", "9", "--select", "area:1..1e300"},
      {"blob", image, "--gray", "0", "9", "--select", "area:..5,area:6.."},
      {"blob", image, "--gray", "0", "9", "--opening", "circle:10001"},
      {"blob", image, "--gray", "0", "9", "--opening", "circle:2.5"},
      {"measure", image, "--line", "1,2,3,4", "--length", "nan"},
      {"measure", image, "--line", "1,2,3,4", "--sigma", "-1"},
      {"measure", image, "--line", "1,2,3,4", "--reps", "1,5"},
      {"measure", image, "--line", "1,2,3,1.1e7"},
      {"measure", image, "--line", "1,2,3,4", "--count", "10001"},
      {"find-lines", image, "--display", "4"},
      {"run", In("recipe"), In("empty")},
      // Would write over the image.
      {"run", In("recipe"), In("a.png"), "--out", In("")},
      {"blob", In("a.png"), "--gray", "0", "9", "--csv", In("a.png")},
      {"blob", In("a.png"), "--gray", "0", "9", "--save-recipe", In("a.png")},
      {"find-lines", In("a.png"), "--overlay", In("empty/../a.png")},
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

TEST_F(CommandLineTest, AFitThatFailsIsAFailure) {
  EXPECT_EQ(
      Run({"measure", Sample("parts.png"), "--line", "5,5,30,5", "--amplitude",
           "250", "--csv", In("m.csv"), "--json", In("m.json")}),
      kSomethingFailed);
  EXPECT_NE(m_error.find("steps[0]: line: "), std::string::npos) << m_error;
  EXPECT_NE(m_out.find("code          -3"), std::string::npos) << m_out;
  EXPECT_EQ(Table(Content("m.csv")).size(), 2u);
  const std::string json = Content("m.json");
  EXPECT_NE(json.find("\"code\":-3"), std::string::npos) << json;
  EXPECT_NE(json.find("\"error\":\"" +
                      std::string(vexolab_error_text(VEXOLAB_E_TOO_FEW)) + '"'),
            std::string::npos)
      << json;
}

TEST_F(CommandLineTest, ResultsNeverTakeTheRecipesPlace) {
  CountRecipe(R"({"csv": "recipe"})");
  const std::string before = Content("recipe");
  EXPECT_EQ(Run({"run", In("recipe"), Sample("parts.png"), "--out", In("")}),
            kUsageError);
  EXPECT_NE(m_error.find("would overwrite"), std::string::npos) << m_error;
  EXPECT_EQ(Content("recipe"), before);
}

// A file that is not there yet has many names, too.
TEST_F(CommandLineTest, TwoResultsNeverTakeOnePlace) {
  const fs::path before = fs::current_path();
  fs::current_path(m_folder);
  const int code = Run({"blob", Sample("parts.png"), "--gray", "0", "130",
                        "--csv", "a", "--json", "./a"});
  const int other = Run({"blob", Sample("parts.png"), "--gray", "0", "130",
                         "--coco", "a", "--save-recipe", In("a")});
  fs::current_path(before);
  EXPECT_EQ(code, kUsageError);
  EXPECT_EQ(other, kUsageError);
  EXPECT_EQ(Files(), 0u);
}

#if defined(_WIN32)
TEST_F(CommandLineTest, LettersOfAnotherCaseNameTheSameFile) {
  fs::copy_file(Sample("parts.png"), m_folder / PathOf("\xC3\xA4.png"));
  EXPECT_EQ(Run({"blob", In("\xC3\xA4.png"), "--gray", "0", "130", "--csv",
                 In("\xC3\x84.PNG")}),
            kUsageError);
}
#else
TEST_F(CommandLineTest, LinksNameTheFilesBehindThem) {
  fs::copy_file(Sample("parts.png"), m_folder / "a.png");
  fs::create_symlink("a.png", m_folder / "link");
  EXPECT_EQ(
      Run({"blob", In("a.png"), "--gray", "0", "130", "--csv", In("link")}),
      kUsageError);
  EXPECT_EQ(Content("a.png"), ContentOf(Sample("parts.png")));
}

TEST_F(CommandLineTest, OneDeviceTakesSeveralResults) {
  EXPECT_EQ(Run({"blob", Sample("parts.png"), "--gray", "0", "130", "--csv",
                 "/dev/null", "--json", "/dev/null"}),
            kAllFine)
      << m_error;
}
#endif

TEST_F(CommandLineTest, WhatIsRefusedLeavesNoFolder) {
  CountRecipe(R"({"csv": "a", "overlay": "{name}"})");
  EXPECT_EQ(Run({"run", In("recipe"), "a", "--out", In("out")}), kUsageError);
  EXPECT_EQ(Files(), 1u);
}

TEST_F(CommandLineTest, AFolderThatCannotBeMadeIsAFailure) {
  CountRecipe(R"({"csv": "a.csv"})");
  EXPECT_EQ(
      Run({"run", In("recipe"), Sample("parts.png"), "--out", In("recipe")}),
      kSomethingFailed);
  EXPECT_NE(m_error.find("cannot make the folder"), std::string::npos);
}

// 200 characters of a name fit, 400 do not.
TEST_F(CommandLineTest, APictureThatFailsLeavesNumbersAndTheOtherImages) {
  const std::string name(200, 'n');
  fs::copy_file(Sample("parts.png"), m_folder / (name + ".png"));
  CountRecipe(R"({"csv": "a.csv", "overlay": "{name}-)" +
              std::string(180, 'o') + "\"}");
  EXPECT_EQ(Run({"run", In("recipe"), In(name + ".png"), Sample("parts.png"),
                 "--out", In("")}),
            kSomethingFailed);
  EXPECT_EQ(
      m_error.rfind("rendal-cli: " + In(name + ".png") + ": cannot write ", 0),
      0u)
      << m_error;
  EXPECT_EQ(Table(Content("a.csv")).size(), 1 + 10 + 10u);
  EXPECT_TRUE(fs::exists(m_folder / ("parts-" + std::string(180, 'o'))));
  EXPECT_EQ(Files(), 4u);
}

TEST_F(CommandLineTest, PicturesOfLabelsNeedComponents) {
  Written("recipe", R"({"version": 1, "steps": [
      {"do": "threshold", "min": 0, "max": 130}],
      "outputs": {"labels": "{name}.png"}})");
  EXPECT_EQ(Run({"run", In("recipe"), Sample("parts.png"), "--out", In("")}),
            kAllFine);
  EXPECT_NE(m_error.find("no \"connection\", so no picture of labels"),
            std::string::npos)
      << m_error;
}

TEST_F(CommandLineTest, AnOverlayBeyondMemoryIsRefused) {
  EXPECT_EQ(Run({"blob", Sample("parts.png"), "--gray", "0", "130", "--overlay",
                 In("o.png"), "--zoom", "128"}),
            kSomethingFailed);
  EXPECT_NE(m_error.find("81920 x 61440 pixels"), std::string::npos) << m_error;
  EXPECT_EQ(Files(), 0u);
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

TEST_F(CommandLineTest, WhatIsNoImageIsNamed) {
  const auto why = [this](const std::string& image) {
    EXPECT_EQ(Run({"info", image}), kSomethingFailed);
    EXPECT_EQ(m_error.rfind("rendal-cli: " + image + ": ", 0), 0u) << m_error;
    return m_error.substr(m_error.rfind(": ") + 2);
  };
  EXPECT_EQ(why(In("none.png")), "there is no such file\n");
  EXPECT_EQ(why(""), "there is no such file\n");
  EXPECT_EQ(why(Utf8Of(m_folder)), "it is no file\n");
  EXPECT_EQ(why(Written("empty.png", "")), "it is no image\n");
  const std::string huge = Written("huge.bmp", "BM");
  fs::resize_file(m_folder / "huge.bmp", uintmax_t{1} << 31);
  EXPECT_EQ(why(huge), "the file is larger than 2 GB\n");
}

TEST_F(CommandLineTest, AnImageThatIsCutOffFails) {
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", cv::imread(Sample("parts.png")), bytes);
  const std::string image =
      Written("a.jpg", {bytes.begin(), bytes.begin() + bytes.size() / 2});
  EXPECT_EQ(Run({"blob", image, "--gray", "0", "130"}), kSomethingFailed);
  // The image library may have its own word before.
  EXPECT_NE(m_error.find("rendal-cli: " + image + ": the file is cut off\n"),
            std::string::npos)
      << m_error;
  EXPECT_EQ(m_out, "");
}

TEST_F(CommandLineTest, AnImageWithOtherChannelsIsNamed) {
  const std::string image =
      Written("a.pam",
              "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\n"
              "TUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nabcd");
  EXPECT_EQ(Run({"info", image}), kSomethingFailed);
  EXPECT_NE(m_error.find("images of 2 channels are not supported"),
            std::string::npos)
      << m_error;
}

TEST_F(CommandLineTest, AFileTooLongForARecipeIsNotReadToItsEnd) {
  Written("recipe", std::string(kLongestRecipe + 100, ' '));
  EXPECT_EQ(Run({"run", In("recipe"), Sample("parts.png")}), kRecipeError);
  EXPECT_NE(m_error.find("too long"), std::string::npos) << m_error;
}

}  // namespace
}  // namespace rendal
