// SPDX-License-Identifier: MIT
#include <objbase.h>
#include <shobjidl.h>

#include <vector>

#include "afxdlgs.h"

namespace {

// COM for the length of one dialog, whether or not the thread has it already.
class ComApartment {
 public:
  ComApartment()
      : m_result(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ~ComApartment() {
    if (SUCCEEDED(m_result)) ::CoUninitialize();
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

 private:
  HRESULT m_result;
};

template <typename Interface>
class ComPointer {
 public:
  ComPointer() = default;
  ~ComPointer() {
    if (m_object != nullptr) m_object->Release();
  }
  ComPointer(const ComPointer&) = delete;
  ComPointer& operator=(const ComPointer&) = delete;
  Interface** Receive() { return &m_object; }
  Interface* operator->() const { return m_object; }

 private:
  Interface* m_object = nullptr;
};

// The text between the separators, without the empty ends.
std::vector<CString> SplitFilter(const CString& filter) {
  std::vector<CString> parts;
  int begin = 0;
  for (int end = filter.Find(L'|'); end > begin;
       end = filter.Find(L'|', begin)) {
    parts.push_back(filter.Mid(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

void SetFileTypes(IFileDialog* dialog, const CString& filter) {
  const std::vector<CString> parts = SplitFilter(filter);
  std::vector<COMDLG_FILTERSPEC> types;
  for (size_t i = 0; i + 1 < parts.size(); i += 2) {
    types.push_back({parts[i], parts[i + 1]});
  }
  if (!types.empty()) {
    dialog->SetFileTypes(static_cast<UINT>(types.size()), types.data());
  }
}

CString ChosenPath(IFileDialog* dialog) {
  ComPointer<IShellItem> item;
  LPWSTR text = nullptr;
  if (FAILED(dialog->GetResult(item.Receive())) ||
      FAILED(item->GetDisplayName(SIGDN_FILESYSPATH, &text))) {
    return {};
  }
  const CString path(text);
  ::CoTaskMemFree(text);
  return path;
}

}  // namespace

CFileDialog::CFileDialog(BOOL open, LPCTSTR default_extension,
                         LPCTSTR file_name, DWORD, LPCTSTR filter, CWnd* parent)
    : m_bOpenFileDialog(open),
      m_extension(default_extension),
      m_fileName(file_name),
      m_filter(filter),
      m_pParent(parent) {}

INT_PTR CFileDialog::DoModal() {
  const ComApartment apartment;
  ComPointer<IFileDialog> dialog;
  const CLSID& kind =
      m_bOpenFileDialog ? CLSID_FileOpenDialog : CLSID_FileSaveDialog;
  if (FAILED(::CoCreateInstance(kind, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IFileDialog,
                                reinterpret_cast<void**>(dialog.Receive())))) {
    return IDCANCEL;
  }
  SetFileTypes(dialog.operator->(), m_filter);
  if (!m_extension.IsEmpty()) dialog->SetDefaultExtension(m_extension);
  if (!m_fileName.IsEmpty()) dialog->SetFileName(m_fileName);
  if (m_ofn.lpstrTitle != nullptr) dialog->SetTitle(m_ofn.lpstrTitle);
  dialog->SetOptions(
      FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST | FOS_NOCHANGEDIR |
      (m_bOpenFileDialog ? FOS_FILEMUSTEXIST : FOS_OVERWRITEPROMPT));
  const CWnd* parent = m_pParent != nullptr ? m_pParent : AfxGetMainWnd();
  if (FAILED(dialog->Show(parent != nullptr ? parent->m_hWnd : nullptr))) {
    return IDCANCEL;
  }
  m_path = ChosenPath(dialog.operator->());
  return m_path.IsEmpty() ? IDCANCEL : IDOK;
}
