// SPDX-License-Identifier: MIT
//
// Image files: chosen, dropped, opened again; and the keys for all commands.
#include <afxdlgs.h>

#include "app/console.h"
#include "app/rendal_dlg.h"
#include "app/text.h"
#include "app/ui_text.h"
#include "app/view/image_loader.h"
#include "app/view/view_globals.h"
#include "tools/console_text.h"
#include "tools/long_path.h"

namespace ui_text = rendal::ui_text;
using rendal::g_view;

namespace {

std::vector<std::filesystem::path> PathsOf(HDROP drop) {
  constexpr UINT kCount = 0xFFFFFFFF;
  std::vector<std::filesystem::path> paths(
      ::DragQueryFileW(drop, kCount, nullptr, 0));
  for (UINT i = 0; i < paths.size(); ++i) {
    std::wstring text(::DragQueryFileW(drop, i, nullptr, 0) + 1, L'\0');
    text.resize(
        ::DragQueryFileW(drop, i, text.data(), static_cast<UINT>(text.size())));
    paths[i] = text;
  }
  return paths;
}

bool IsFile(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(rendal::WithoutLengthLimit(path),
                                          error);
}

// An open list of a combo box wants the keys for itself.
bool IsOpenComboBox(HWND window) {
  return ::SendMessageW(window, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

}  // namespace

void CRendalDlg::OnLoadImage() {
  CFileDialog dialog(TRUE, nullptr, nullptr, OFN_HIDEREADONLY | OFN_NOCHANGEDIR,
                     ui_text::kImageFilter, this);
  dialog.m_ofn.lpstrTitle = ui_text::kOpenTitle.In(m_language);
  if (dialog.DoModal() == IDOK) LoadFile(dialog.GetPathName().GetString());
}

void CRendalDlg::LoadFile(const std::filesystem::path& path) {
  rendal::console::EndSelection();
  ShowStatus(rendal::Guarded([&] {
    rendal::Status status = rendal::LoadImageFile(path, *this, g_view);
    if (HasImage() && status.tone != rendal::Tone::kError) {
      m_recentFiles->Add(path);
      ShowSystemMenu();
    }
    return status;
  }));
}

// What is there is loaded; what is not leaves the image that is shown.
bool CRendalDlg::LoadIfThere(const std::filesystem::path& path) {
  if (IsFile(path)) {
    LoadFile(path);
    return true;
  }
  ShowStatus(rendal::messages::NoSuchFile(
      m_language, rendal::ToUtf8(path.filename().wstring())));
  return false;
}

void CRendalDlg::OpenRecent(size_t index) {
  if (index >= m_recentFiles->Paths().size()) return;
  if (LoadIfThere(m_recentFiles->Paths()[index])) return;
  m_recentFiles->Remove(index);
  ShowSystemMenu();
}

// One image at a time: of several files the first is loaded.
void CRendalDlg::OnDropFiles(HDROP drop) {
  const std::vector<std::filesystem::path> paths = PathsOf(drop);
  ::DragFinish(drop);
  // Not below a dialog that is waiting for an answer.
  if (paths.empty() || !IsWindowEnabled()) return;
  LoadIfThere(paths[0]);
  for (size_t i = 1; i < paths.size(); ++i) {
    rendal::ConsolePrintf("file ignored: %s\n",
                          rendal::ToUtf8(paths[i].wstring()).c_str());
  }
}

BOOL CRendalDlg::PreTranslateMessage(MSG* message) {
  const bool isOwn =
      message->hwnd == m_hWnd || ::IsChild(m_hWnd, message->hwnd);
  if (isOwn && !IsOpenComboBox(message->hwnd) &&
      ::TranslateAcceleratorW(m_hWnd, m_accelerators, message)) {
    return TRUE;
  }
  return CDialogEx::PreTranslateMessage(message);
}
