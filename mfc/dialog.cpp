// SPDX-License-Identifier: MIT
#include "detail/dispatch.h"

namespace {

// The dialog procedure below ours: it only initialises. Everything else is
// handled before the system's dialog code sees it, so results are returned
// directly.
INT_PTR CALLBACK AfxDlgProc(HWND handle, UINT message, WPARAM w, LPARAM l) {
  if (message != WM_INITDIALOG) return FALSE;
  auto* dialog = dynamic_cast<CDialog*>(CWnd::FromHandlePermanent(handle));
  if (dialog == nullptr) return FALSE;
  return AfxGuarded(MSG{handle, message, w, l, 0, {0, 0}},
                    [&] { return dialog->OnInitDialog(); });
}

int g_modalLoops = 0;

class ModalLoopDepth {
 public:
  ModalLoopDepth() { ++g_modalLoops; }
  ~ModalLoopDepth() { --g_modalLoops; }
  ModalLoopDepth(const ModalLoopDepth&) = delete;
  ModalLoopDepth& operator=(const ModalLoopDepth&) = delete;
  bool IsOutermost() const { return g_modalLoops == 1; }
};

bool IsInput(UINT message) {
  return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
         (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
}

// The common controls must have registered their classes before a template
// names one.
void RegisterCommonControls() {
  static const bool done = [] {
    const INITCOMMONCONTROLSEX all{sizeof(all), ICC_WIN95_CLASSES};
    return ::InitCommonControlsEx(&all) != FALSE;
  }();
  static_cast<void>(done);
}

// The window whose input a modal dialog takes away.
HWND OwnerFor(const CWnd* parent) {
  const HWND window = parent != nullptr            ? parent->m_hWnd
                      : AfxGetMainWnd() != nullptr ? AfxGetMainWnd()->m_hWnd
                                                   : nullptr;
  return window != nullptr ? ::GetAncestor(window, GA_ROOT) : nullptr;
}

// From the window that got the message up to the dialog itself.
bool IsTranslatedOnTheWayUp(CWnd* dialog, MSG* message) {
  for (HWND handle = message->hwnd; handle != nullptr;
       handle = ::GetParent(handle)) {
    CWnd* window = CWnd::FromHandlePermanent(handle);
    if (window != nullptr && window->PreTranslateMessage(message)) return true;
    if (handle == dialog->m_hWnd) return false;
  }
  return false;
}

}  // namespace

BOOL CDialog::CreateFromTemplate(HWND owner) {
  RegisterCommonControls();
  AfxHookWindowCreate(this);
  const HWND handle = ::CreateDialogParamW(AfxGetResourceHandle(),
                                           MAKEINTRESOURCEW(m_nIDTemplate),
                                           owner, AfxDlgProc, 0);
  if (!AfxUnhookWindowCreate()) PostNcDestroy();
  return handle != nullptr;
}

BOOL CDialog::Create(UINT template_id, CWnd* parent) {
  m_nIDTemplate = template_id;
  m_pParentWnd = parent;
  return CreateFromTemplate(parent != nullptr ? parent->m_hWnd : nullptr);
}

INT_PTR CDialog::DoModal() {
  const HWND owner = OwnerFor(m_pParentWnd);
  m_nModalResult = -1;
  m_hasEnded = false;
  m_isModal = true;
  const bool disable_owner = owner != nullptr && ::IsWindowEnabled(owner);
  if (disable_owner) ::EnableWindow(owner, FALSE);
  const BOOL created = CreateFromTemplate(owner);
  if (created) {
    RunModalLoop();
    ::SetWindowPos(m_hWnd, nullptr, 0, 0, 0, 0,
                   SWP_HIDEWINDOW | SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE |
                       SWP_NOZORDER);
  }
  // The owner first, so that the activation goes to it when we vanish.
  if (disable_owner) ::EnableWindow(owner, TRUE);
  if (created) {
    if (owner != nullptr && ::GetActiveWindow() == m_hWnd) {
      ::SetActiveWindow(owner);
    }
    DestroyWindow();
  }
  m_isModal = false;
  return m_nModalResult;
}

void CDialog::RunModalLoop() {
  if (!m_hasEnded && !IsWindowVisible()) {
    ::ShowWindow(m_hWnd, SW_SHOWNORMAL);
    ::UpdateWindow(m_hWnd);
  }
  const ModalLoopDepth depth;
  MSG message{};
  while (!m_hasEnded && ::IsWindow(m_hWnd)) {
    if (!::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      if (depth.IsOutermost()) {
        AfxLockTempMaps();
        AfxUnlockTempMaps(TRUE);
      }
      ::WaitMessage();
      continue;
    }
    if (message.message == WM_QUIT) {
      // For the loops further out as well.
      ::PostQuitMessage(static_cast<int>(message.wParam));
      break;
    }
    if (IsTranslatedOnTheWayUp(this, &message)) continue;
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
}

void CDialog::EndDialog(int result) {
  if (m_isModal) {
    m_nModalResult = result;
    m_hasEnded = true;
    // Wakes the loop if the call did not come from it.
    ::PostMessageW(m_hWnd, WM_NULL, 0, 0);
  }
  ::EndDialog(m_hWnd, result);
}

BOOL CDialog::OnInitDialog() {
  UpdateData(FALSE);
  return TRUE;  // the system gives the first control the focus
}

BOOL CDialog::PreTranslateMessage(MSG* message) {
  return IsInput(message->message) && ::IsDialogMessageW(m_hWnd, message);
}

BOOL CDialog::OnCmdMsg(UINT id, int code, const MSG& message, LRESULT* result) {
  if (CWnd::OnCmdMsg(id, code, message, result)) return TRUE;
  CWinApp* app = AfxGetApp();
  return app != nullptr ? app->OnCmdMsg(id, code, message, result) : FALSE;
}

void CDialog::OnOK() {
  if (UpdateData(TRUE)) EndDialog(IDOK);
}

void CDialog::OnCancel() { EndDialog(IDCANCEL); }

// clang-format off
BEGIN_MESSAGE_MAP(CDialog, CWnd)
  ON_COMMAND(IDOK, &CDialog::OnOK)
  ON_COMMAND(IDCANCEL, &CDialog::OnCancel)
END_MESSAGE_MAP()
// clang-format on

BOOL CWnd::UpdateData(BOOL save_and_validate) {
  CDataExchange exchange(this, save_and_validate);
  try {
    DoDataExchange(&exchange);
    return TRUE;
  } catch (CUserException* exception) {
    exception->Delete();
    return FALSE;
  }
}

HWND CDataExchange::PrepareCtrl(int id) {
  m_hWndLastControl = ::GetDlgItem(m_pDlgWnd->m_hWnd, id);
  m_isEdit = false;
  if (m_hWndLastControl == nullptr) AfxThrowInvalidArgException();
  return m_hWndLastControl;
}

HWND CDataExchange::PrepareEditCtrl(int id) {
  PrepareCtrl(id);
  m_isEdit = true;
  return m_hWndLastControl;
}

void CDataExchange::Fail() {
  if (m_bSaveAndValidate && m_hWndLastControl != nullptr) {
    ::SetFocus(m_hWndLastControl);
    if (m_isEdit) ::SendMessageW(m_hWndLastControl, EM_SETSEL, 0, -1);
  }
  AfxThrowUserException();
}

void AFXAPI DDX_Control(CDataExchange* exchange, int id, CWnd& control) {
  if (control.m_hWnd != nullptr) return;
  control.SubclassWindow(exchange->PrepareCtrl(id));
}

void AFXAPI DDX_Text(CDataExchange* exchange, int id, CString& text) {
  const HWND edit = exchange->PrepareEditCtrl(id);
  if (!exchange->m_bSaveAndValidate) {
    ::SetWindowTextW(edit, text);
    return;
  }
  const int length = ::GetWindowTextLengthW(edit);
  ::GetWindowTextW(edit, text.GetBuffer(length + 1), length + 1);
  text.ReleaseBuffer();
}

void AFXAPI DDX_Text(CDataExchange* exchange, int id, int& value) {
  CString text;
  if (!exchange->m_bSaveAndValidate) {
    text.Format(L"%d", value);
    DDX_Text(exchange, id, text);
    return;
  }
  DDX_Text(exchange, id, text);
  BOOL ok = FALSE;
  const UINT number =
      ::GetDlgItemInt(exchange->m_pDlgWnd->m_hWnd, id, &ok, TRUE);
  if (!ok) {
    AfxMessageBox(L"Please enter an integer.", MB_OK | MB_ICONEXCLAMATION);
    exchange->Fail();
  }
  value = static_cast<int>(number);
}
