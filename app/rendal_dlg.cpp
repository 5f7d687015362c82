// SPDX-License-Identifier: MIT
#include "app/rendal_dlg.h"

#include <algorithm>
#include <cstdio>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/highgui.hpp>

#include "app/about_dlg.h"
#include "app/console.h"
#include "app/image_window.h"
#include "app/text.h"
#include "app/ui_text.h"
#include "app/view/view_globals.h"
#include "controls/msg_window.h"
#include "tools/console_text.h"

namespace ui_text = rendal::ui_text;

namespace {

constexpr COLORREF kLoadButtonColor = RGB(0, 255, 0);
constexpr size_t kReservedRegions = 3;
constexpr int kWelcomeWidthPx = 300;
constexpr int kWelcomeHeightPx = 180;
constexpr UINT kWelcomeMs = 15000;

}  // namespace

// The index of the dialog.
// clang-format off
BEGIN_MESSAGE_MAP(CRendalDlg, CDialogEx)
  ON_WM_SYSCOMMAND()
  ON_WM_PAINT()
  ON_WM_QUERYDRAGICON()
  ON_BN_CLICKED(IDC_LOAD_IMAGE,    &CRendalDlg::OnLoadImage)
  ON_WM_MOUSEWHEEL()
  ON_WM_TIMER()
  ON_BN_CLICKED(IDC_MEASURE,       &CRendalDlg::OnMeasure)
  ON_BN_CLICKED(IDC_ZOOM_ONE,      &CRendalDlg::OnZoomOne)
  ON_BN_CLICKED(IDC_ZOOM_FIT,      &CRendalDlg::OnZoomFit)
  // Tool mode
  ON_BN_CLICKED(IDC_MODE_LINE,     &CRendalDlg::OnToolMode<rendal::kToolLine>)
  ON_BN_CLICKED(IDC_MODE_CIRCLE,   &CRendalDlg::OnToolMode<rendal::kToolCircle>)
  ON_BN_CLICKED(IDC_MODE_BAND,     &CRendalDlg::OnToolMode<rendal::kToolBand>)
  ON_BN_CLICKED(IDC_MODE_NONE,     &CRendalDlg::OnToolMode<rendal::kToolNone>)
  ON_BN_CLICKED(IDC_MODE_ELLIPSE,  &CRendalDlg::OnToolMode<rendal::kToolEllipse>)
  ON_BN_CLICKED(IDC_CLEAR_DISPLAY, &CRendalDlg::OnClearDisplay)
  ON_EN_CHANGE(IDC_WIDTH,          &CRendalDlg::OnWidthChanged)
  // Blob
  ON_BN_CLICKED(IDC_THRESHOLD,     &CRendalDlg::OnThreshold)
  ON_BN_CLICKED(IDC_CONNECTION,    &CRendalDlg::OnConnection)
  ON_BN_CLICKED(IDC_FILL_UP,       &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kFillUp>)
  ON_BN_CLICKED(IDC_TOGGLE_GRAY,   &CRendalDlg::OnToggleGray)
  ON_BN_CLICKED(IDC_UNION,         &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kUnion>)
  ON_BN_CLICKED(IDC_DIFFERENCE,    &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kDifference>)
  ON_BN_CLICKED(IDC_INTERSECTION,  &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kIntersection>)
  ON_BN_CLICKED(IDC_DILATION,      &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kDilation>)
  ON_BN_CLICKED(IDC_EROSION,       &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kErosion>)
  ON_BN_CLICKED(IDC_OPENING,       &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kOpening>)
  ON_BN_CLICKED(IDC_CLOSING,       &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kClosing>)
  ON_BN_CLICKED(IDC_TOP_HAT,       &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kTopHat>)
  ON_BN_CLICKED(IDC_BOTTOM_HAT,    &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kBottomHat>)
  ON_BN_CLICKED(IDC_BOUNDARY,      &CRendalDlg::OnRegionOperation<rendal::RegionOperation::kBoundary>)
  ON_CBN_SELCHANGE(IDC_ELEMENT,    &CRendalDlg::OnElementChanged)
  ON_WM_CTLCOLOR()
  // Buttons without a tool
  ON_BN_CLICKED(IDC_SPARE_1,       &CRendalDlg::OnUnused)
  ON_BN_CLICKED(IDC_HIDDEN_BUTTON, &CRendalDlg::OnUnused)
  ON_BN_CLICKED(IDC_HIT_OR_MISS,   &CRendalDlg::OnUnused)
  ON_BN_CLICKED(IDC_SKELETON,      &CRendalDlg::OnUnused)
  ON_WM_CLOSE()
  ON_BN_CLICKED(IDC_FIND_LINE,     &CRendalDlg::OnFindLine)
  ON_BN_CLICKED(IDC_CLEAR_CONSOLE, &CRendalDlg::OnClearConsole)
  // Beyond the buttons
  ON_WM_DROPFILES()
  ON_WM_CONTEXTMENU()
  ON_NOTIFY(LVN_ITEMCHANGED, IDC_REGION_LIST, &CRendalDlg::OnRegionListChanged)
  ON_COMMAND(IDM_COPY_ROWS,        &CRendalDlg::OnCopyRows)
  ON_COMMAND(IDM_EXPORT,           &CRendalDlg::OnExport)
  // In the system menu
  ON_COMMAND(IDM_SAVE_PICTURE,     &CRendalDlg::OnSavePicture)
  ON_COMMAND(IDM_RECORD_RECIPE,    &CRendalDlg::OnRecordRecipe)
  ON_COMMAND(IDM_SAVE_RECIPE,      &CRendalDlg::OnSaveRecipe)
  ON_COMMAND(IDM_RUN_RECIPE,       &CRendalDlg::OnRunRecipe)
  // Screens
  ON_MESSAGE(WM_DISPLAYCHANGE,     &CRendalDlg::OnScreensChanged)
  ON_MESSAGE(WM_SETTINGCHANGE,     &CRendalDlg::OnScreensChanged)
  ON_WM_SIZE()
END_MESSAGE_MAP()
// clang-format on

CRendalDlg::CRendalDlg(CWnd* parent)
    : CDialogEx(IDD, parent),
      m_hIcon(AfxGetApp()->LoadIcon(IDR_MAINFRAME)),
      m_accelerators(::LoadAcceleratorsW(AfxGetResourceHandle(),
                                         MAKEINTRESOURCEW(IDR_ACCELERATORS))) {
  m_loadBrush.CreateSolidBrush(kLoadButtonColor);
}

BOOL CRendalDlg::OnInitDialog() {
  CDialogEx::OnInitDialog();
  m_isClosing = false;
  m_recentFiles = std::make_unique<rendal::RecentFiles>(m_settingsKey);
  ExtendSystemMenu();
  SetIcon(m_hIcon, TRUE);
  SetIcon(m_hIcon, FALSE);
  rendal::console::Open(m_hWnd);
  ShowLanguage();
  // Of one size, whatever the template says. (A window that is created with a
  // sizing frame is cut to the screen; this one may be larger.)
  ModifyStyle(WS_THICKFRAME, 0);
  BuildControls();
  m_roiShapes = rendal::InitialShapes();
  UpdateElementControls();
  m_regionHistory.reserve(kReservedRegions);
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  CreateImageWindow();
  // Writing the defaults counted as a change of the width.
  m_redraw = 0;
  StartRefresh();
  ShowWelcome();
  NameIgnoredOptions();
  DragAcceptFiles();
  LoadStartImage();
  return TRUE;
}

void CRendalDlg::ShowWelcome() {
  auto* welcome = new CMsgWindow;  // deletes itself, also if this fails
  if (!welcome->Create(this, ui_text::kWelcomeTitle, kWelcomeWidthPx,
                       kWelcomeHeightPx)) {
    return;
  }
  m_welcome = welcome->GetSafeHwnd();
  TellWelcome();
  welcome->Show(kWelcomeMs);
}

void CRendalDlg::NameIgnoredOptions() {
  for (const std::wstring& option : m_ignoredOptions) {
    rendal::ConsolePrintf("option ignored: %s\n",
                          rendal::ToUtf8(option).c_str());
  }
}

void CRendalDlg::LoadStartImage() {
  if (m_startImage.empty()) return;
  LoadFile(m_startImage);
  std::fflush(stdout);
}

// The caller of every command handler. A tool that throws ends in the status
// label; the console gets what the handler printed.
BOOL CRendalDlg::OnCommand(WPARAM wParam, LPARAM lParam) {
  // Accelerators have the code 1, but no control either.
  const bool isCommand = HIWORD(wParam) == 0 || lParam == 0;
  if (isCommand && IsWaitingForAnswer()) return TRUE;
  if (isCommand) rendal::console::EndSelection();
  BOOL handled = TRUE;
  ShowStatus(rendal::Guarded([&] {
    handled = CDialogEx::OnCommand(wParam, lParam);
    return rendal::Status{};
  }));
  std::fflush(stdout);
  if (HIWORD(wParam) == 0) RefreshSoon();
  return handled;
}

// Return in an edit box must not end the program.
void CRendalDlg::OnOK() {}

void CRendalDlg::OnSysCommand(UINT id, LPARAM lParam) {
  // The system keeps the low four bits for itself.
  const UINT command = id & 0xFFF0;
  if (command < SC_SIZE && IsWaitingForAnswer()) return;
  if (command == IDM_ABOUTBOX) {
    CAboutDlg(m_language, this).DoModal();
  } else if (command == IDM_LANGUAGE) {
    SwitchLanguage();
  } else if (command >= IDM_SAVE_PICTURE && command <= IDM_RUN_RECIPE) {
    SendMessage(WM_COMMAND, command);
  } else if (command >= IDM_RECENT_FIRST && command <= IDM_RECENT_LAST) {
    OpenRecent((command - IDM_RECENT_FIRST) / IDM_SYSTEM_STEP);
    std::fflush(stdout);
  } else {
    CDialogEx::OnSysCommand(id, lParam);
  }
}

void CRendalDlg::OnPaint() {
  if (!IsIconic()) {
    CDialogEx::OnPaint();
    return;
  }
  CPaintDC dc(this);
  SendMessage(WM_ICONERASEBKGND, reinterpret_cast<WPARAM>(dc.GetSafeHdc()), 0);
  CRect client;
  GetClientRect(&client);
  const int x = (client.Width() - ::GetSystemMetrics(SM_CXICON) + 1) / 2;
  const int y = (client.Height() - ::GetSystemMetrics(SM_CYICON) + 1) / 2;
  dc.DrawIcon(x, y, m_hIcon);
}

HCURSOR CRendalDlg::OnQueryDragIcon() { return static_cast<HCURSOR>(m_hIcon); }

HBRUSH CRendalDlg::OnCtlColor(CDC* dc, CWnd* control, UINT kind) {
  const HBRUSH brush = CDialogEx::OnCtlColor(dc, control, kind);
  if (control->GetDlgCtrlID() == IDC_LOAD_IMAGE) return m_loadBrush;
  return brush;
}

BOOL CRendalDlg::DestroyWindow() {
  m_regionHistory.clear();
  rendal::CloseImageWindow();
  return CDialogEx::DestroyWindow();
}

void CRendalDlg::OnUnused() {}

void CRendalDlg::OnClearConsole() { rendal::console::Clear(); }
