// SPDX-License-Identifier: MIT
//
// What reads differently in the two languages: shown at start-up and again when
// the operator changes the language.
#include <algorithm>

#include "app/build_date.h"
#include "app/rendal_dlg.h"
#include "app/ui_text.h"
#include "controls/msg_window.h"

namespace ui_text = rendal::ui_text;

namespace {

// Fills a combo box anew; what was selected stays selected.
template <size_t count>
void Retell(CComboBox& combo, const ui_text::Text (&items)[count],
            int32_t language) {
  const int selection = std::max(0, combo.GetCurSel());
  combo.ResetContent();
  for (const ui_text::Text& item : items) combo.AddString(item.In(language));
  combo.SetCurSel(selection);
}

}  // namespace

void CRendalDlg::ExtendSystemMenu() {
  CMenu* menu = GetSystemMenu(FALSE);
  if (menu == nullptr) return;
  menu->AppendMenu(MF_SEPARATOR);
  menu->AppendMenu(MF_STRING, IDM_SAVE_PICTURE,
                   ui_text::kSavePicture.In(m_language));
  AppendRecentFiles(*menu);
  menu->AppendMenu(MF_SEPARATOR);
  menu->AppendMenu(m_isRecording ? MF_CHECKED : MF_STRING, IDM_RECORD_RECIPE,
                   ui_text::kRecordRecipe.In(m_language));
  menu->AppendMenu(MF_STRING, IDM_SAVE_RECIPE,
                   ui_text::kSaveRecipe.In(m_language));
  menu->AppendMenu(MF_STRING, IDM_RUN_RECIPE,
                   ui_text::kRunRecipe.In(m_language));
  menu->AppendMenu(MF_SEPARATOR);
  menu->AppendMenu(MF_STRING, IDM_LANGUAGE,
                   ui_text::kOtherLanguage.In(m_language));
  const CString about = AboutCommand();
  if (about.IsEmpty()) return;
  menu->AppendMenu(MF_SEPARATOR);
  menu->AppendMenu(MF_STRING, IDM_ABOUTBOX, about);
}

void CRendalDlg::AppendRecentFiles(CMenu& menu) {
  CMenu files;
  files.CreatePopupMenu();
  const std::vector<std::wstring>& paths = m_recentFiles->Paths();
  for (size_t i = 0; i < paths.size(); ++i) {
    const std::wstring text =
        L"&" + std::to_wstring(i + 1) + L"  " + rendal::MenuTextOf(paths[i]);
    files.AppendMenu(MF_STRING, IDM_RECENT_FIRST + i * IDM_SYSTEM_STEP,
                     text.c_str());
  }
  menu.AppendMenu(MF_POPUP | (paths.empty() ? MF_GRAYED : 0),
                  reinterpret_cast<UINT_PTR>(files.Detach()),
                  ui_text::kRecentFiles.In(m_language));
}

CString CRendalDlg::AboutCommand() const {
  CString about;
  about.LoadString(IDS_ABOUTBOX);
  if (about.IsEmpty() || m_language != rendal::kEnglish) return about;
  return ui_text::kAboutMenuEnglish;
}

void CRendalDlg::ShowLanguage() {
  ShowTitle();
  ShowSystemMenu();
  ShowCaptions();
  Retell(m_direction, ui_text::kDirections, m_language);
  Retell(m_element, ui_text::kElements, m_language);
  UpdateElementControls();
}

void CRendalDlg::ShowTitle() {
  const rendal::BuildDate date = rendal::ParseBuildDate(__DATE__);
  CString title;
  title.Format(ui_text::kTitle.In(m_language), date.year, date.month, date.day);
  SetWindowText(title);
}

// Back to the system's own items, then ours anew.
void CRendalDlg::ShowSystemMenu() {
  GetSystemMenu(TRUE);
  ExtendSystemMenu();
}

void CRendalDlg::ShowCaptions() {
  if (m_chineseCaptions.empty()) {
    for (const ui_text::Caption& caption : ui_text::kCaptions) {
      m_chineseCaptions.emplace_back();
      GetDlgItemText(caption.id, m_chineseCaptions.back());
    }
  }
  for (size_t i = 0; i < m_chineseCaptions.size(); ++i) {
    const ui_text::Caption& caption = ui_text::kCaptions[i];
    SetDlgItemText(caption.id, m_language == rendal::kEnglish
                                   ? caption.english
                                   : m_chineseCaptions[i].GetString());
  }
}

void CRendalDlg::TellWelcome() {
  auto* welcome = dynamic_cast<CMsgWindow*>(FromHandlePermanent(m_welcome));
  if (welcome == nullptr) return;
  CString homePage;
  homePage.LoadString(IDS_HOME_PAGE);
  welcome->SetContent(ui_text::kWelcomeTitle, ui_text::kWelcome.In(m_language),
                      homePage);
}

void CRendalDlg::SwitchLanguage() {
  m_language =
      m_language == rendal::kEnglish ? rendal::kChinese : rendal::kEnglish;
  ShowLanguage();
  TellWelcome();
  ShowStatus(m_shownStatus.In(m_language));
}
