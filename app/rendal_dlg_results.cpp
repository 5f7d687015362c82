// SPDX-License-Identifier: MIT
//
// The region list and the picture as results: which component is outlined, and
// what leaves the program.
#include <afxdlgs.h>

#include <opencv2/imgcodecs.hpp>

#include "app/clipboard.h"
#include "app/rendal_dlg.h"
#include "app/text.h"
#include "app/ui_text.h"
#include "app/view/view_commands.h"
#include "app/view/view_globals.h"
#include "recipes/output_file.h"
#include "recipes/tables.h"
#include "tools/long_path.h"

namespace ui_text = rendal::ui_text;
using rendal::g_view;

void CRendalDlg::ShowRows(const std::vector<rendal::FeatureRow>& rows) {
  m_regionList.Show(rows);
  rendal::Highlight(*this, g_view, {});
}

void CRendalDlg::HighlightNothing() {
  m_regionList.SelectOnly(std::nullopt);
  rendal::Highlight(*this, g_view, {});
}

// Rows that the operator selects are outlined, the last of them comes into
// sight.
void CRendalDlg::OnRegionListChanged(NMHDR* header, LRESULT* result) {
  *result = 0;
  const auto& change = *reinterpret_cast<NMLISTVIEW*>(header);
  const UINT changed = change.uOldState ^ change.uNewState;
  if (m_regionList.IsBeingSet() || (changed & LVIS_SELECTED) == 0) return;
  rendal::Highlight(*this, g_view, m_regionList.SelectedRows());
  if ((change.uNewState & LVIS_SELECTED) != 0 && change.iItem >= 0) {
    rendal::ShowComponent(*this, g_view, static_cast<size_t>(change.iItem));
  }
}

// A component beyond the list's rows is outlined all the same.
void CRendalDlg::OnViewClicked(int x, int y) {
  if (!ShowsComponents()) return;
  const auto component = rendal::ComponentAt(*this, g_view, x, y);
  m_regionList.SelectOnly(component);
  std::vector<int32_t> outlined;
  if (component) outlined.push_back(static_cast<int32_t>(*component));
  rendal::Highlight(*this, g_view, std::move(outlined));
}

void CRendalDlg::OnContextMenu(CWnd* window, CPoint point) {
  if (window->GetSafeHwnd() != m_regionList.GetSafeHwnd()) {
    CDialogEx::OnContextMenu(window, point);
    return;
  }
  if (point.x == -1 && point.y == -1) {  // by the keyboard
    CRect list;
    m_regionList.GetWindowRect(&list);
    point = {(list.left + list.right) / 2, (list.top + list.bottom) / 2};
  }
  CMenu menu;
  menu.CreatePopupMenu();
  const UINT state = m_regionList.GetItemCount() > 0 ? MF_STRING : MF_GRAYED;
  menu.AppendMenu(state, IDM_COPY_ROWS, ui_text::kCopyRows.In(m_language));
  menu.AppendMenu(m_components.IsNull() ? MF_GRAYED : MF_STRING, IDM_EXPORT,
                  ui_text::kExport.In(m_language));
  menu.TrackPopupMenu(TPM_LEFTALIGN | TPM_RIGHTBUTTON, point.x, point.y, this);
}

void CRendalDlg::OnCopyRows() {
  const std::vector<rendal::FeatureRow> rows = m_regionList.RowsToCopy();
  if (rows.empty()) return;
  const CString text = rendal::FromUtf8(rendal::TabSeparated(rows));
  ShowStatus(rendal::SetClipboardText(m_hWnd, text)
                 ? rendal::messages::RowsCopied(m_language, rows.size())
                 : rendal::messages::ClipboardInUse(m_language));
}

// Where a result goes; none when the operator thinks better of it.
std::optional<std::filesystem::path> CRendalDlg::AskWhereToSave(
    const ui_text::Text& title, const wchar_t* extension,
    const wchar_t* filter) {
  // Without an extension of its own: the system would add it to names whose
  // kind it does not know.
  CFileDialog dialog(FALSE, nullptr, nullptr,
                     OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT | OFN_NOCHANGEDIR,
                     filter, this);
  dialog.m_ofn.lpstrTitle = title.In(m_language);
  if (dialog.DoModal() != IDOK) return std::nullopt;
  std::filesystem::path path = dialog.GetPathName().GetString();
  if (path.has_extension()) return path;
  path.replace_extension(extension);
  // The system has asked about the name without it.
  std::error_code error;
  if (!std::filesystem::exists(rendal::WithoutLengthLimit(path), error)) {
    return path;
  }
  CString question = path.filename().c_str();
  question += L"\n";
  question += ui_text::kReplaceFile.In(m_language);
  constexpr UINT kKind = MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2;
  if (AfxMessageBox(question, kKind) == IDYES) return path;
  return std::nullopt;
}

void CRendalDlg::OnExport() {
  if (m_components.IsNull()) {
    ShowStatus(rendal::messages::NoComponents(m_language));
    return;
  }
  const auto path =
      AskWhereToSave(ui_text::kExportTitle, L"csv", ui_text::kTableFilter);
  if (!path) return;
  const bool isJson = ::_wcsicmp(path->extension().c_str(), L".json") == 0;
  rendal::WriteOutput(*path, isJson ? rendal::ComponentJson(m_components)
                                    : rendal::ComponentCsv(m_components));
  ShowStatus(
      rendal::messages::ComponentsExported(m_language, m_components.size()));
}

void CRendalDlg::OnSavePicture() {
  if (!HasImage()) {
    ShowStatus(rendal::messages::NoImage(m_language));
    return;
  }
  const auto path = AskWhereToSave(ui_text::kSavePictureTitle, L"png",
                                   ui_text::kPictureFilter);
  if (!path) return;
  const std::string extension = rendal::Utf8Of(path->extension());
  if (!cv::haveImageWriter(extension)) {
    ShowStatus(rendal::messages::PictureKindUnknown(m_language, extension));
    return;
  }
  Refresh();
  std::vector<unsigned char> bytes;
  cv::imencode(extension, m_viewImage, bytes);
  rendal::WriteOutput(
      *path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  ShowStatus(rendal::messages::PictureSaved(m_language));
}
