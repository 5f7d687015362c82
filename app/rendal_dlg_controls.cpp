// SPDX-License-Identifier: MIT
//
// What the controls hold when the dialog opens.
#include <span>

#include "app/rendal_dlg.h"
#include "app/text.h"
#include "app/ui_text.h"
#include "app/view/view_globals.h"

namespace ui_text = rendal::ui_text;

namespace {

constexpr int kStatusFontHeight = 22;
constexpr int kDecimals = 2;
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kWhite = RGB(255, 255, 255);

void Fill(CComboBox& combo, std::span<const char* const> items,
          int selection = 0) {
  combo.ResetContent();
  for (const char* item : items) combo.AddString(rendal::FromUtf8(item));
  combo.SetCurSel(selection);
}

}  // namespace

void CRendalDlg::DoDataExchange(CDataExchange* exchange) {
  CDialogEx::DoDataExchange(exchange);
  DDX_Control(exchange, IDC_STATUS, m_status);
  DDX_Control(exchange, IDC_READOUT, m_readout);
  DDX_Control(exchange, IDC_LOAD_IMAGE, m_loadButton);
  DDX_Control(exchange, IDC_REGION_LIST, m_regionList);

  DDX_Control(exchange, IDC_LENGTH_SPIN, m_length);
  DDX_Control(exchange, IDC_WIDTH_SPIN, m_width);
  DDX_Control(exchange, IDC_AMPLITUDE_SPIN, m_amplitude);
  DDX_Control(exchange, IDC_SIGMA_SPIN, m_sigma);
  DDX_Control(exchange, IDC_REPS_SPIN, m_reps);
  DDX_Control(exchange, IDC_COUNT_SPIN, m_count);
  DDX_Control(exchange, IDC_MIN_GRAY_SPIN, m_minGray);
  DDX_Control(exchange, IDC_MAX_GRAY_SPIN, m_maxGray);
  DDX_Control(exchange, IDC_ELEMENT_WIDTH_SPIN, m_elementWidth);
  DDX_Control(exchange, IDC_ELEMENT_HEIGHT_SPIN, m_elementHeight);

  DDX_Control(exchange, IDC_FIND_LINE_DISPLAY, m_findLineDisplay);
  DDX_Control(exchange, IDC_DIRECTION, m_direction);
  DDX_Control(exchange, IDC_SELECTION, m_selection);
  DDX_Control(exchange, IDC_BOUNDARY_TYPE, m_boundaryType);
  DDX_Control(exchange, IDC_ELEMENT, m_element);
}

void CRendalDlg::BuildControls() {
  TakeViewSize();
  SetUpStatusLabels();
  SetUpSpins();
  FillCombos();
  CheckRadioButton(IDC_MODE_NONE, IDC_MODE_NONE, IDC_MODE_NONE);
  m_toolMode = rendal::kToolNone;
  m_regionList.Build();
  KeepTitleOnScreen();
}

// The view is as large as the host control turned out to be on this screen.
void CRendalDlg::TakeViewSize() {
  CWnd* host = GetDlgItem(IDC_VIEW);
  CRect place;
  host->GetWindowRect(&place);
  m_viewSize = {place.Width(), place.Height()};
  rendal::g_view = {};
  rendal::g_viewWidth = m_viewSize.width;
  rendal::g_viewHeight = m_viewSize.height;
  ScreenToClient(&place);
  host->MoveWindow(&place);
}

void CRendalDlg::SetUpStatusLabels() {
  for (CLabel* label : {&m_status, &m_readout}) {
    label->SetFontSize(kStatusFontHeight).SetFontBold(true);
  }
  m_readout.SetBkColor(kBlue).SetTextColor(kWhite).SetText(L"");
}

void CRendalDlg::SetUpSpins() {
  // clang-format off
  const struct {
    CNumSpinCtrl& spin; double min, max, step, value;
  } numbers[] = {
    {m_length,    0,   1000, 1,   40},
    {m_width,     0,   1000, 1,   20},
    {m_amplitude, 0,   255,  1,   20},
    {m_sigma,     0.4, 10,   0.1, 1},
    {m_reps,      0,   25,   0.5, 2},
  };
  const struct {
    CSpinButtonCtrl& spin; int min, max, position;
  } plain[] = {
    {m_count,         0, 1000, 0},
    {m_minGray,       0, 255,  128},
    {m_maxGray,       0, 255,  255},
    {m_elementWidth,  1, 100,  3},
    {m_elementHeight, 1, 100,  3},
  };
  // clang-format on
  for (const auto& [spin, min, max, step, value] : numbers) {
    spin.SetDecimalPlaces(kDecimals);
    spin.SetRangeAndDelta(min, max, step);
    spin.SetPos(value);
  }
  for (const auto& [spin, min, max, position] : plain) {
    spin.SetRange32(min, max);
    spin.SetPos32(position);
  }
}

void CRendalDlg::FillCombos() {
  Fill(m_selection, ui_text::kSelections);
  Fill(m_boundaryType, ui_text::kBoundaryTypes);
  Fill(m_findLineDisplay, ui_text::kFindLineDisplays,
       static_cast<int>(std::size(ui_text::kFindLineDisplays)) - 1);
}

// A circle has a radius and nothing else.
void CRendalDlg::UpdateElementControls() {
  const bool usesHeight = rendal::ElementUsesHeight(m_element.GetCurSel());
  SetDlgItemText(IDC_ELEMENT_WIDTH_LABEL,
                 usesHeight ? ui_text::kElementWidth.In(m_language)
                            : ui_text::kElementRadius);
  GetDlgItem(IDC_ELEMENT_HEIGHT_LABEL)->EnableWindow(usesHeight);
  GetDlgItem(IDC_ELEMENT_HEIGHT)->EnableWindow(usesHeight);
}
