// SPDX-License-Identifier: MIT
#include "recipes/recipe_json.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace rendal {
namespace {

// What reading a recipe says; nothing if it reads.
std::string ErrorOf(const std::string& text) {
  try {
    ReadRecipe(text);
  } catch (const RecipeError& error) {
    return error.what();
  }
  return {};
}

std::string WithSteps(const std::string& steps) {
  return R"({"version": 1, "steps": [)" + steps + "]}";
}

std::string WithOutputs(const std::string& outputs) {
  return R"({"version": 1, "steps": [{"do": "find_line"}], "outputs": )" +
         outputs + "}";
}

const char kThreshold[] = R"({"do": "threshold", "min": 0, "max": 100})";

Recipe EveryKindOfStep() {
  Recipe recipe;
  recipe.steps = {ThresholdStep{{0, 130}}, ThresholdStep{{90, 255}}};
  for (const char* name :
       {"fill_up", "union", "difference", "intersection", "dilation", "erosion",
        "opening", "closing", "top_hat", "bottom_hat", "boundary"}) {
    OperationStep step;
    step.operation = *OperationByName(name);
    step.source = RegionSource::kBinarisation;
    if (TakesElement(step.operation)) {
      step.parameters.element = {kCross, 5, 7};
    }
    if (step.operation == RegionOperation::kBoundary) {
      step.parameters.boundary_type = "inner_filled";
    }
    recipe.steps.push_back(step);
    if (InputsOf(step.operation) == 1) {
      step.source = RegionSource::kPrevious;
      recipe.steps.push_back(step);
    }
  }
  recipe.steps.push_back(ConnectionStep{{4, RegionSource::kBinarisation}});
  recipe.steps.push_back(ConnectionStep{{8, RegionSource::kPrevious}});
  recipe.steps.push_back(SelectStep{{{{0, 0.1, 1e9}, {13, -1.0 / 3}}, true}});
  const RoiShape shapes[] = {{kToolLine, {0.1f, 2, 1e7f, -4}},
                             {kToolCircle, {1.0f / 3, 2, 3}},
                             {kToolBand, {1, 2, 3, 4}},
                             {kToolEllipse, {1, 2, -179.99f, 4, 5e-7f}}};
  for (const RoiShape& shape : shapes) {
    MeasureStep step;
    step.roi = shape;
    step.parameters = {0.1, 1.0 / 3, 20, 0.4, 2.5, 12, -1, "strongest"};
    recipe.steps.push_back(step);
  }
  recipe.steps.push_back(FindLineStep{1});
  recipe.outputs = {"a.csv", "b.csv",        "c.csv",        "d.json", "e.json",
                    true,    "{name}_l.png", "{name}_o.png", 0.1};
  return recipe;
}

TEST(RecipeJson, EveryStepReadsBackAsItWasWritten) {
  const Recipe recipe = EveryKindOfStep();
  const Recipe again = ReadRecipe(WriteRecipe(recipe));
  ASSERT_EQ(again.steps.size(), recipe.steps.size());
  for (size_t i = 0; i < recipe.steps.size(); ++i) {
    EXPECT_TRUE(again.steps[i] == recipe.steps[i]) << "steps[" << i << "]";
  }
  EXPECT_TRUE(again.outputs == recipe.outputs);
  EXPECT_EQ(WriteRecipe(again), WriteRecipe(recipe));
}

TEST(RecipeJson, DefaultsAreThoseOfTheDialog) {
  const Recipe recipe = ReadRecipe(WithSteps(
      R"({"do": "measure", "line": [1, 2, 3, 4]}, {"do": "find_line"})"));
  const auto& measure = std::get<MeasureStep>(recipe.steps[0]);
  EXPECT_TRUE(measure.parameters == CaliperParameters{});
  EXPECT_EQ(std::get<FindLineStep>(recipe.steps[1]).display, kShowEdges);
  EXPECT_TRUE(recipe.outputs == Outputs{});
}

TEST(RecipeJson, WhatIsNotSaidIsTheDefault) {
  const Recipe recipe = ReadRecipe(WithSteps(
      std::string(kThreshold) + R"(, {"do": "boundary"}, {"do": "fill_up"},
                                    {"do": "connection"}, {"do": "select"})"));
  OperationStep boundary;
  boundary.operation = RegionOperation::kBoundary;
  boundary.parameters.boundary_type = "inner";
  boundary.source = RegionSource::kPrevious;
  EXPECT_TRUE(recipe.steps[1] == Step(boundary));
  EXPECT_EQ(std::get<OperationStep>(recipe.steps[2]).source,
            RegionSource::kPrevious);
  const ConnectionParameters connection = {8, RegionSource::kPrevious};
  EXPECT_TRUE(recipe.steps[3] == Step(ConnectionStep{connection}));
  EXPECT_TRUE(recipe.steps[4] == Step(SelectStep{}));
}

struct Refusal {
  std::string recipe;
  const char* error;
};

class RecipeRefused : public testing::TestWithParam<Refusal> {};

TEST_P(RecipeRefused, WithThePlace) {
  EXPECT_EQ(ErrorOf(GetParam().recipe), GetParam().error);
}

const Refusal kRefusals[] = {
    {R"({"steps": []})", "version: is missing"},
    {R"({"version": 2, "steps": []})", "version: only version 1 is known"},
    {R"({"version": 1})", "steps: is missing"},
    {R"({"version": 1, "steps": []})",
     "steps: must be a list of at least one step"},
    {R"([1])", "must be an object"},
    {R"({"version": 1, "steps": [{"do": "find_line"}], "step": 1})",
     "step: is not known here"},
    {R"({"version": 1, "version": 1})", "version: is given twice"},
    {WithSteps(R"({"do": "find_line"}, {"do": "measure",
                  "line": [1, 2, {"a": [], "a": 1}, 4]})"),
     "steps[1].line[2].a: is given twice"},
    {WithSteps(R"([], [[1, {}], {"do": 1, "do": 1}])"),
     "steps[1][1].do: is given twice"},
    {WithSteps(R"({"do": "run", "command": "x"})"),
     "steps[0].do: there is no tool \"run\""},
    {WithSteps(R"({})"), "steps[0].do: is missing"},
    {WithSteps(R"("threshold")"), "steps[0]: must be an object"},
    {WithSteps(R"({"do": "threshold", "min": 5, "max": 4})"),
     "steps[0].min: is above max"},
    {WithSteps(R"({"do": "threshold", "min": -1, "max": 4})"),
     "steps[0].min: must be a whole number from 0 to 255"},
    {WithSteps(R"({"do": "threshold", "min": 0.5, "max": 4})"),
     "steps[0].min: must be a whole number from 0 to 255"},
    {WithSteps(R"({"do": "threshold", "min": "0", "max": 4})"),
     "steps[0].min: must be a whole number from 0 to 255"},
    {WithSteps(R"({"do": "threshold", "min": 1e300, "max": 4})"),
     "steps[0].min: must be a whole number from 0 to 255"},
    {WithSteps(R"({"do": "fill_up"})"),
     "steps[0]: there is no \"threshold\" before it"},
    {WithSteps(std::string(kThreshold) + R"(, {"do": "union"})"),
     "steps[1]: there are no two \"threshold\" before it"},
    {WithSteps(std::string(kThreshold) + R"(, {"do": "select"})"),
     "steps[1]: there is no \"connection\" before it"},
    {WithSteps(std::string(kThreshold) +
               R"(, {"do": "fill_up"}, {"do": "opening",
                  "element": "circle", "radius": 0})"),
     "steps[2].radius: must be a whole number from 1 to 10000"},
    {WithSteps(std::string(kThreshold) +
               R"(, {"do": "opening", "element": "circle", "width": 3})"),
     "steps[1].radius: is missing"},
    {WithSteps(std::string(kThreshold) +
               R"(, {"do": "opening", "element": "circle", "radius": 3,
                  "width": 3})"),
     "steps[1].width: is not known here"},
    {WithSteps(std::string(kThreshold) +
               R"(, {"do": "opening", "element": "star"})"),
     "steps[1].element: must be one of \"circle\", \"rectangle\", \"cross\""},
    {WithSteps(std::string(kThreshold) +
               R"(, {"do": "connection", "neighbours": 6})"),
     "steps[1].neighbours: must be 4 or 8"},
    {WithSteps(std::string(kThreshold) +
               R"(, {"do": "connection"}, {"do": "select", "aria": [1, 2]})"),
     "steps[2].aria: is not known here"},
    {WithSteps(std::string(kThreshold) +
               R"(, {"do": "connection"}, {"do": "select", "area": [3, 2]})"),
     "steps[2].area: its least is above its most"},
    {WithSteps(std::string(kThreshold) +
               R"(, {"do": "connection"}, {"do": "select", "area": [3]})"),
     "steps[2].area: must be a list of the least and the most, either null"},
    {WithSteps(R"({"do": "measure"})"),
     "steps[0].line: is missing, and circle, ellipse and band are"},
    {WithSteps(R"({"do": "measure", "line": [1, 2, 3]})"),
     "steps[0].line: must be a list of 4 numbers"},
    {WithSteps(R"({"do": "measure", "line": [1, 2, 3, 1e8]})"),
     "steps[0].line[3]: must be a number from -10000000 to 10000000"},
    {WithSteps(R"({"do": "measure", "line": [1, 2, 3, 4],
                  "circle": [1, 2, 3]})"),
     "steps[0].circle: there is a line already"},
    {WithSteps(R"({"do": "measure", "line": [1, 2, 3, 4],
                  "selection": "second"})"),
     "steps[0].selection: must be one of \"first+\", \"first-\", \"first\", "
     "\"last+\", \"last-\", \"last\", \"strongest\""},
    {WithOutputs(R"({"csv": "../a.csv"})"),
     "outputs.csv: must be a plain file name, without a folder"},
    {WithOutputs(R"({"csv": "b\\a.csv"})"),
     "outputs.csv: must be a plain file name, without a folder"},
    {WithOutputs(R"({"json": ".."})"),
     "outputs.json: must be a plain file name, without a folder"},
    {WithOutputs(R"({"json": "C:a"})"),
     "outputs.json: must be a plain file name, without a folder"},
    {WithOutputs(R"({"json": "nul.json"})"),
     "outputs.json: must be a plain file name, without a folder"},
    {WithOutputs(R"({"csv": "com0.csv"})"),
     "outputs.csv: must be a plain file name, without a folder"},
    {WithOutputs(R"({"csv": "LPT\u00b9.csv"})"),
     "outputs.csv: must be a plain file name, without a folder"},
    {WithOutputs(R"({"json": ""})"),
     "outputs.json: must be a plain file name, without a folder"},
    {WithOutputs(R"({"labels": "a.png"})"),
     "outputs.labels: must hold {name}, which stands for the image"},
    {WithOutputs(R"({"labels": "/{name}.png"})"),
     "outputs.labels: must be a plain file name, without a folder"},
    {WithOutputs(R"({"csv": "a", "json": "a"})"),
     "outputs.json: another output has this name"},
    {WithOutputs(R"({"zoom": 0})"),
     "outputs.zoom: must be a number from 0.0078125 to 128"},
    {WithOutputs(R"({"csv": "a", "json": "A"})"),
     "outputs.json: another output has this name"},
    {WithOutputs(R"({"csv": "a", "points": "{name}"})"),
     "outputs.points: is one file for all images: no {name}"},
    {WithOutputs(R"({"rle": "packed"})"),
     "outputs.rle: must be one of \"uncompressed\", \"compressed\""},
    {WithOutputs("[]"), "outputs: must be an object"},
    {WithOutputs(R"({"exec": "a"})"), "outputs.exec: is not known here"},
};

INSTANTIATE_TEST_SUITE_P(Refusals, RecipeRefused, testing::ValuesIn(kRefusals));

TEST(RecipeJson, NamesThatOnlyBeginAsADeviceAreNames) {
  for (const char* name : {"come.csv", "comb.csv", "com10.csv", "lpt.csv"}) {
    EXPECT_EQ(ErrorOf(WithOutputs("{\"csv\": \"" + std::string(name) + "\"}")),
              "")
        << name;
  }
}

TEST(RecipeJson, NamesThatLeaveTheFolderOrMeanADeviceAreRefused) {
  for (const char* name :
       {".",        "..",     ".hidden",  "a.",     "a ",         "/a",
        "a/b",      "a\\\\b", "C:a",      "a*",     "a?",         "a|b",
        "<a",       "a>",     "a\\u0000", "a\\nb",  "CON",        "con.csv",
        "Nul .csv", "COM1",   "lpt9.x.y", "CONIN$", "conout$.csv"}) {
    EXPECT_EQ(ErrorOf(WithOutputs(std::string(R"({"csv": ")") + name + "\"}")),
              "outputs.csv: must be a plain file name, without a folder")
        << name;
  }
  for (const char* name : {"a", "a b", "con1", "com10.csv", "nul_a", "..a"}) {
    EXPECT_EQ(ErrorOf(WithOutputs(std::string(R"({"csv": ")") + name + "\"}")),
              std::string(name) == "..a"
                  ? "outputs.csv: must be a plain file name, without a folder"
                  : "")
        << name;
  }
  EXPECT_EQ(
      ErrorOf(WithOutputs(R"({"csv": ")" + std::string(200, 'a') + "\"}")), "");
  EXPECT_NE(
      ErrorOf(WithOutputs(R"({"csv": ")" + std::string(201, 'a') + "\"}")), "");
}

TEST(RecipeJson, AByteOrderMarkIsNoPartOfTheText) {
  const std::string recipe = WithSteps(R"({"do": "find_line"})");
  EXPECT_EQ(ErrorOf("\xEF\xBB\xBF" + recipe), "");
  EXPECT_NE(ErrorOf("\xEF\xBB" + recipe), "");
  EXPECT_NE(ErrorOf("\xFF\xFE" + recipe), "");
}

TEST(RecipeJson, LimitsOfASelectionMayBeOpen) {
  const Recipe recipe =
      ReadRecipe(WithSteps(std::string(kThreshold) + R"(, {"do": "connection"},
                {"do": "select", "area": [null, 9], "x": [-1e15, null]})"));
  const auto& limits = std::get<SelectStep>(recipe.steps[2]).selection.limits;
  ASSERT_EQ(limits.size(), 2u);
  EXPECT_EQ(limits[0].min, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(limits[0].max, 9);
  EXPECT_EQ(limits[1].min, -1e15);
  EXPECT_EQ(limits[1].max, std::numeric_limits<double>::infinity());
}

TEST(RecipeJson, TextThatIsNoJsonIsRefusedWithItsLine) {
  const std::string error = ErrorOf("{\"version\": 1,\n\"steps\": [}");
  EXPECT_EQ(error.rfind("no JSON: ", 0), 0u) << error;
  EXPECT_NE(error.find("line 2"), std::string::npos) << error;
  EXPECT_NE(ErrorOf(""), "");
  EXPECT_NE(ErrorOf(std::string("{\0}", 3)), "");
  EXPECT_NE(ErrorOf(std::string(200000, '[')), "");
  EXPECT_EQ(ErrorOf(std::string(16, '[') + std::string(16, ']')),
            "must be an object");
  for (const size_t deep : {size_t{17}, size_t{200000}}) {
    EXPECT_EQ(ErrorOf(std::string(deep, '[') + std::string(deep, ']')),
              "no recipe: it is nested too deep");
  }
  EXPECT_NE(ErrorOf(WithSteps("1e999")), "");
  // Neither half a character nor half a pair of them.
  EXPECT_NE(ErrorOf(WithOutputs("{\"csv\": \"\xC3(\"}")), "");
  EXPECT_NE(ErrorOf(WithOutputs(R"({"csv": "\ud800"})")), "");
  EXPECT_EQ(ErrorOf(std::string(kLongestRecipe + 1, ' ')),
            "is no recipe: it is too long");
}

}  // namespace
}  // namespace rendal
