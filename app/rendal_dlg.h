// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_RENDAL_DLG_H_
#define RENDAL_APP_RENDAL_DLG_H_

#include <afxcmn.h>
#include <afxdialogex.h>
#include <afxwin.h>

#include <filesystem>
#include <memory>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "app/load_button.h"
#include "app/recent_files.h"
#include "app/region_list.h"
#include "controls/label.h"
#include "controls/num_spin_ctrl.h"
#include "recipes/recipe.h"
#include "res/resource.h"
#include "tools/blob_tool.h"
#include "tools/caliper_tool.h"
#include "tools/status.h"
#include "tools/workbench.h"

namespace rendal::ui_text {
struct Text;
}

// The program's only main window: image view, caliper group, blob group, status
// row. What the tools share is the Workbench part; this class adds the window.
//
//   rendal_dlg.cpp           message map, start-up and end, system commands
//   rendal_dlg_window.cpp    closing, and the place on the screen
//   rendal_dlg_controls.cpp  ranges and defaults of the controls
//   rendal_dlg_language.cpp  what reads differently in the two languages
//   rendal_dlg_tools.cpp     handlers that call tools/
//   rendal_dlg_view.cpp      image window and handlers that call app/view/
//   rendal_dlg_files.cpp     image files, and keys
//   rendal_dlg_results.cpp   what of the results is outlined, copied, written
//   rendal_dlg_recipe.cpp    steps: done, recorded, done again
//
// Handlers read controls, call a tool and show its status. None of them draws;
// the refresh timer does.
class CRendalDlg : public CDialogEx, public rendal::Workbench {
 public:
  enum { IDD = IDD_RENDAL_DIALOG };

  explicit CRendalDlg(CWnd* parent = nullptr);

  BOOL DestroyWindow() override;
  BOOL PreTranslateMessage(MSG* message) override;

  cv::Mat m_viewImage;                 // what the image view shows
  std::filesystem::path m_startImage;  // loaded after start-up, if not empty
  std::vector<std::wstring> m_ignoredOptions;  // named on the console
  // The user's settings, below HKEY_CURRENT_USER.
  std::wstring m_settingsKey = L"Software\\Rendal";

 protected:
  void DoDataExchange(CDataExchange* exchange) override;
  BOOL OnInitDialog() override;
  BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
  void OnOK() override;

 private:
  // System
  afx_msg void OnSysCommand(UINT id, LPARAM lParam);
  afx_msg void OnPaint();
  afx_msg HCURSOR OnQueryDragIcon();
  afx_msg HBRUSH OnCtlColor(CDC* dc, CWnd* control, UINT kind);
  afx_msg void OnClose();
  afx_msg LRESULT OnScreensChanged(WPARAM wParam, LPARAM lParam);
  afx_msg void OnSize(UINT type, int width, int height);

  // Files
  afx_msg void OnLoadImage();
  afx_msg void OnDropFiles(HDROP drop);

  // View
  afx_msg BOOL OnMouseWheel(UINT flags, short delta, CPoint point);
  afx_msg void OnTimer(UINT_PTR id);
  afx_msg void OnZoomOne();
  afx_msg void OnZoomFit();
  template <rendal::ToolMode mode>
  afx_msg void OnToolMode() {
    SetToolMode(mode);
  }
  afx_msg void OnClearDisplay();
  afx_msg void OnWidthChanged();

  // Tools
  afx_msg void OnMeasure();
  afx_msg void OnFindLine();
  afx_msg void OnThreshold();
  afx_msg void OnConnection();
  afx_msg void OnToggleGray();
  template <rendal::RegionOperation operation>
  afx_msg void OnRegionOperation() {
    ApplyOperation(operation);
  }
  afx_msg void OnElementChanged();
  // Results
  afx_msg void OnRegionListChanged(NMHDR* header, LRESULT* result);
  afx_msg void OnContextMenu(CWnd* window, CPoint point);
  afx_msg void OnCopyRows();
  afx_msg void OnExport();
  afx_msg void OnSavePicture();

  // Recipes
  afx_msg void OnRecordRecipe();
  afx_msg void OnSaveRecipe();
  afx_msg void OnRunRecipe();

  afx_msg void OnClearConsole();
  afx_msg void OnUnused();

  DECLARE_MESSAGE_MAP()

 private:
  // Start-up, in this order
  void ExtendSystemMenu();
  void ShowLanguage();
  void BuildControls();
  void CreateImageWindow();
  void StartRefresh();
  void ShowWelcome();
  void NameIgnoredOptions();
  void LoadStartImage();

  void TakeViewSize();
  void SetUpStatusLabels();
  void SetUpSpins();
  void FillCombos();
  void KeepTitleOnScreen();
  void ComeBackIntoReach();
  void GoOnClosing();
  bool IsWaitingForAnswer() const;
  void UpdateElementControls();

  void SwitchLanguage();
  void ShowTitle();
  void ShowSystemMenu();
  void ShowCaptions();
  void TellWelcome();
  CString AboutCommand() const;

  void AppendRecentFiles(CMenu& menu);

  void LoadFile(const std::filesystem::path& path);
  bool LoadIfThere(const std::filesystem::path& path);
  void OpenRecent(size_t index);
  void ShowRows(const std::vector<rendal::FeatureRow>& rows);
  void HighlightNothing();
  void OnViewClicked(int x, int y);
  std::optional<std::filesystem::path> AskWhereToSave(
      const rendal::ui_text::Text& title, const wchar_t* extension,
      const wchar_t* filter);
  bool DoStep(const rendal::Step& step);
  void Record(const rendal::Step& step);
  std::vector<rendal::Step> RecordedSteps() const;
  void RunRecipe(const std::filesystem::path& path);
  void ShowParametersOf(const rendal::Step& step);
  void SetToolMode(rendal::ToolMode mode);
  void ApplyOperation(rendal::RegionOperation operation);
  void Refresh();
  void RefreshSoon();
  static void OnViewMouse(int event, int x, int y, int flags, void* dialog);

  rendal::GrayBand ReadGrayBand();
  rendal::OperationParameters ReadOperationParameters();
  rendal::CaliperParameters ReadCaliperParameters();
  void ShowStatus(const rendal::Status& status);

  bool m_isClosing = false;
  bool m_isRecording = false;
  std::vector<rendal::Step> m_recorded;
  std::vector<rendal::Step> m_binarisations;  // that the history holds
  std::vector<rendal::Step>
      m_recordedFrom;  // the same at the recording's start

  HICON m_hIcon;
  HACCEL m_accelerators;  // a resource: freed with the program
  std::unique_ptr<rendal::RecentFiles> m_recentFiles;
  CBrush m_loadBrush;
  std::vector<CString> m_chineseCaptions;  // the template's
  rendal::Status m_shownStatus;
  HWND m_welcome = nullptr;  // closes itself

  CLabel m_status;
  CLabel m_readout;
  CLoadButton m_loadButton;
  CRegionList m_regionList;

  CNumSpinCtrl m_length;
  CNumSpinCtrl m_width;
  CNumSpinCtrl m_amplitude;
  CNumSpinCtrl m_sigma;
  CNumSpinCtrl m_reps;
  CSpinButtonCtrl m_count;
  CSpinButtonCtrl m_minGray;
  CSpinButtonCtrl m_maxGray;
  CSpinButtonCtrl m_elementWidth;
  CSpinButtonCtrl m_elementHeight;

  CComboBox m_findLineDisplay;
  CComboBox m_direction;
  CComboBox m_selection;
  CComboBox m_boundaryType;
  CComboBox m_element;
};

#endif  // RENDAL_APP_RENDAL_DLG_H_
