// SPDX-License-Identifier: MIT
//
// What the buttons of the tools do, as steps of a recipe: done, recorded, saved
// and done again.
#include <afxdlgs.h>

#include <stdexcept>
#include <utility>

#include "app/rendal_dlg.h"
#include "app/text.h"
#include "app/ui_text.h"
#include "recipes/output_file.h"
#include "recipes/recipe_json.h"
#include "recipes/run_step.h"
#include "tools/long_path.h"

namespace ui_text = rendal::ui_text;

namespace {

// Numbers may have been typed that no recipe holds.
bool CanBeRead(const rendal::MeasureStep& step) {
  try {
    rendal::ReadRecipe(rendal::WriteRecipe({{step}, {}}));
    return true;
  } catch (const rendal::RecipeError&) {
    return false;
  }
}

bool DidSomething(const rendal::Step& step, const rendal::StepReport& report) {
  if (const auto* measure = std::get_if<rendal::MeasureStep>(&step)) {
    return report.measured && report.measured->done && CanBeRead(*measure);
  }
  return report.status.tone == rendal::Tone::kSuccess ||
         (report.line && report.line->done);
}

constexpr std::pair<int32_t, int> kModeRadios[] = {
    {rendal::kToolLine, IDC_MODE_LINE},
    {rendal::kToolCircle, IDC_MODE_CIRCLE},
    {rendal::kToolBand, IDC_MODE_BAND},
    {rendal::kToolEllipse, IDC_MODE_ELLIPSE},
    {rendal::kToolNone, IDC_MODE_NONE}};

// The label opens its text when it is clicked: what a file says never stands
// at its beginning.
rendal::Recipe ReadRecipeOf(const std::filesystem::path& file) {
  try {
    return rendal::ReadRecipeFile(file);
  } catch (const rendal::RecipeError& error) {
    throw std::runtime_error(rendal::ToUtf8(file.filename().wstring()) + ": " +
                             error.what());
  }
}

}  // namespace

// The one place where the dialog calls its tools. False when one refused.
bool CRendalDlg::DoStep(const rendal::Step& step) {
  const rendal::StepReport report = rendal::RunStep(step, *this);
  ShowStatus(report.status);
  if (report.rows) ShowRows(*report.rows);
  if (DidSomething(step, report)) Record(step);
  return report.status.tone != rendal::Tone::kError;
}

void CRendalDlg::Record(const rendal::Step& step) {
  if (m_isRecording) m_recorded.push_back(step);
  if (!std::holds_alternative<rendal::ThresholdStep>(step)) return;
  m_binarisations.push_back(step);
  if (m_binarisations.size() > rendal::kHistoryLength) {
    m_binarisations.erase(m_binarisations.begin());
  }
}

void CRendalDlg::OnRecordRecipe() {
  m_isRecording = !m_isRecording;
  if (m_isRecording) {
    m_recorded.clear();
    m_recordedFrom = m_binarisations;
    ShowStatus(rendal::messages::Recording(m_language));
  } else {
    ShowStatus(rendal::messages::Recorded(m_language, m_recorded.size()));
  }
  ShowSystemMenu();
}

// A recipe stands on its own: a round that went on from binarisations made
// before it begins with these.
std::vector<rendal::Step> CRendalDlg::RecordedSteps() const {
  try {
    rendal::CheckSteps(m_recorded);
    return m_recorded;
  } catch (const rendal::RecipeError&) {
    std::vector<rendal::Step> steps = m_recordedFrom;
    steps.insert(steps.end(), m_recorded.begin(), m_recorded.end());
    rendal::CheckSteps(steps);
    return steps;
  }
}

void CRendalDlg::OnSaveRecipe() {
  if (m_recorded.empty()) {
    ShowStatus(rendal::messages::NothingRecorded(m_language));
    return;
  }
  const std::vector<rendal::Step> steps = RecordedSteps();
  const auto path = AskWhereToSave(ui_text::kSaveRecipeTitle, L"json",
                                   ui_text::kRecipeFilter);
  if (!path) return;
  rendal::WriteOutput(*path, rendal::WriteRecipe({steps, {}}));
  ShowStatus(rendal::messages::RecipeSaved(m_language, steps.size()));
}

void CRendalDlg::OnRunRecipe() {
  if (!HasImage()) {
    ShowStatus(rendal::messages::NoImage(m_language));
    return;
  }
  CFileDialog dialog(TRUE, nullptr, nullptr, OFN_HIDEREADONLY | OFN_NOCHANGEDIR,
                     ui_text::kRecipeFilter, this);
  dialog.m_ofn.lpstrTitle = ui_text::kRunRecipeTitle.In(m_language);
  if (dialog.DoModal() == IDOK) RunRecipe(dialog.GetPathName().GetString());
}

// Up to the first step that a tool refuses; what it said stays in the label.
void CRendalDlg::RunRecipe(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::exists(rendal::WithoutLengthLimit(path), error)) {
    ShowStatus(rendal::messages::NoSuchFile(
        m_language, rendal::ToUtf8(path.filename().wstring())));
    return;
  }
  for (const rendal::Step& step : ReadRecipeOf(path).steps) {
    const bool isDone = DoStep(step);
    ShowParametersOf(step);
    if (!isDone) break;
  }
}

// A measurement in the dialog belongs to the mode that is chosen and to the
// band's width beside it.
void CRendalDlg::ShowParametersOf(const rendal::Step& step) {
  const auto* measure = std::get_if<rendal::MeasureStep>(&step);
  if (measure == nullptr) return;
  for (const auto& [mode, radio] : kModeRadios) {
    CheckDlgButton(radio, mode == m_toolMode ? BST_CHECKED : BST_UNCHECKED);
  }
  m_width.SetPos(measure->parameters.width);
}
