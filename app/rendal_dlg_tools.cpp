// SPDX-License-Identifier: MIT
//
// Handlers of the tools: read the controls, do the step.
#include <algorithm>

#include "app/rendal_dlg.h"
#include "app/text.h"
#include "app/ui_text.h"

namespace ui_text = rendal::ui_text;

namespace {

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kWhite = RGB(255, 255, 255);

struct LabelColors {
  COLORREF text;
  COLORREF background;
};

LabelColors ColorsOf(rendal::Tone tone) {
  switch (tone) {
    case rendal::Tone::kError:
      return {kRed, kWhite};
    case rendal::Tone::kSuccess:
      return {kBlue, kWhite};
    default:
      return {kWhite, kBlue};
  }
}

}  // namespace

void CRendalDlg::ShowStatus(const rendal::Status& status) {
  if (status.tone == rendal::Tone::kSilent) return;
  m_shownStatus = status;
  const LabelColors colors = ColorsOf(status.tone);
  m_status.ModifyStyle(0, SS_CENTERIMAGE);
  m_status.SetBkColor(colors.background)
      .SetTextColor(colors.text)
      .SetText(rendal::FromUtf8(status.text));
}

rendal::GrayBand CRendalDlg::ReadGrayBand() const {
  return {m_minGray.GetPos32(), m_maxGray.GetPos32()};
}

rendal::OperationParameters CRendalDlg::ReadOperationParameters() const {
  const int boundary = std::max(0, m_boundaryType.GetCurSel());
  return {{m_element.GetCurSel(), m_elementWidth.GetPos32(),
           m_elementHeight.GetPos32()},
          ui_text::kBoundaryTypes[boundary]};
}

void CRendalDlg::OnThreshold() {
  DoStep(rendal::ThresholdStep{ReadGrayBand()});
}

void CRendalDlg::OnConnection() {
  DoStep(rendal::ConnectionStep{rendal::ConnectionParameters{}});
}

void CRendalDlg::OnToggleGray() {
  const rendal::GrayBand band = rendal::ToggleGrayBand(ReadGrayBand());
  m_minGray.SetPos32(band.min);
  m_maxGray.SetPos32(band.max);
}

void CRendalDlg::ApplyOperation(rendal::RegionOperation operation) {
  DoStep(rendal::OperationStep{operation, ReadOperationParameters(),
                               rendal::RegionSource::kBinarisation});
}

void CRendalDlg::OnElementChanged() { UpdateElementControls(); }

rendal::CaliperParameters CRendalDlg::ReadCaliperParameters() const {
  CString selection;
  m_selection.GetLBText(m_selection.GetCurSel(), selection);
  return {m_length.GetPos(),
          m_width.GetPos(),
          m_amplitude.GetPos(),
          m_sigma.GetPos(),
          m_reps.GetPos(),
          m_count.GetPos32(),
          rendal::ScanDirection(m_direction.GetCurSel()),
          CStringA(selection).GetString()};
}

void CRendalDlg::OnMeasure() {
  const rendal::RoiShape* const roi = CurrentShape();
  if (roi != nullptr)
    DoStep(rendal::MeasureStep{*roi, ReadCaliperParameters()});
}

void CRendalDlg::OnFindLine() {
  DoStep(rendal::FindLineStep{m_findLineDisplay.GetCurSel()});
}
