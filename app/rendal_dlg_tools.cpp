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

// The number that a spin stands at. Whatever has been typed beside it, what is
// used is shown.
int PositionOf(CSpinButtonCtrl& spin) {
  const int position = spin.GetPos32();
  spin.SetPos32(position);
  return position;
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

rendal::GrayBand CRendalDlg::ReadGrayBand() {
  return {PositionOf(m_minGray), PositionOf(m_maxGray)};
}

rendal::OperationParameters CRendalDlg::ReadOperationParameters() {
  const int boundary = std::max(0, m_boundaryType.GetCurSel());
  return {{m_element.GetCurSel(), PositionOf(m_elementWidth),
           PositionOf(m_elementHeight)},
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

rendal::CaliperParameters CRendalDlg::ReadCaliperParameters() {
  CString selection;
  m_selection.GetLBText(m_selection.GetCurSel(), selection);
  return {m_length.GetPos(),
          m_width.GetPos(),
          m_amplitude.GetPos(),
          m_sigma.GetPos(),
          m_reps.GetPos(),
          PositionOf(m_count),
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
