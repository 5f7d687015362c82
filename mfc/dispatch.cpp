// SPDX-License-Identifier: MIT
#include "detail/dispatch.h"

#include "detail/handle_maps.h"

namespace {

// The message being handled, for CWnd::Default().
MSG g_currentMessage{};

class CurrentMessage {
 public:
  explicit CurrentMessage(const MSG& message) : m_saved(g_currentMessage) {
    g_currentMessage = message;
  }
  ~CurrentMessage() { g_currentMessage = m_saved; }
  CurrentMessage(const CurrentMessage&) = delete;
  CurrentMessage& operator=(const CurrentMessage&) = delete;

 private:
  MSG m_saved;
};

// A standard exception in the clothes of the framework's. Takes no memory of
// its own: there may be none.
class CStandardException : public CException {
 public:
  explicit CStandardException(const std::exception& exception)
      : m_exception(exception) {}
  BOOL GetErrorMessage(LPTSTR text, UINT size, UINT*) override {
    if (size == 0) return FALSE;
    const int length = ::MultiByteToWideChar(CP_ACP, 0, m_exception.what(), -1,
                                             text, static_cast<int>(size));
    text[length > 0 ? length - 1 : size - 1] = 0;
    return TRUE;
  }

 private:
  const std::exception& m_exception;
};

}  // namespace

LRESULT AfxReportException(CException* exception, const MSG& message) {
  CWinApp* app = AfxGetApp();
  if (app != nullptr) return app->ProcessWndProcException(exception, &message);
  exception->ReportError();
  return 0;
}

LRESULT AfxReportException(const std::exception& exception,
                           const MSG& message) {
  CStandardException wrapped(exception);
  return AfxReportException(&wrapped, message);
}

LRESULT AfxCallWndProc(CWnd* window, const MSG& message) {
  const CurrentMessage current(message);
  return AfxGuarded(message, [&] {
    return window->WindowProc(message.message, message.wParam, message.lParam);
  });
}

LRESULT CALLBACK AfxWndProc(HWND handle, UINT message, WPARAM w, LPARAM l) {
  CWnd* window = CWnd::FromHandlePermanent(handle);
  if (window == nullptr) return ::DefWindowProcW(handle, message, w, l);
  return AfxCallWndProc(window, MSG{handle, message, w, l, 0, {0, 0}});
}

LRESULT CWnd::Default() {
  return DefWindowProc(g_currentMessage.message, g_currentMessage.wParam,
                       g_currentMessage.lParam);
}

const MSG* CWnd::GetCurrentMessage() { return &g_currentMessage; }

const AFX_MSGMAP_ENTRY* CCmdTarget::FindEntry(UINT message, UINT code,
                                              UINT id) const {
  for (const AFX_MSGMAP* map = GetMessageMap(); map != nullptr;
       map = map->pfnGetBaseMap()) {
    for (const auto* entry = map->lpEntries; entry->nMessage != 0; ++entry) {
      if (entry->nMessage == message && entry->nCode == code &&
          entry->nID <= id && id <= entry->nLastID) {
        return entry;
      }
    }
  }
  return nullptr;
}

BOOL CCmdTarget::OnCmdMsg(UINT id, int code, const MSG& message,
                          LRESULT* result) {
  const auto* entry = FindEntry(message.message, static_cast<UINT>(code), id);
  return entry != nullptr ? entry->pfn(this, message, result) : FALSE;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM w, LPARAM l) {
  LRESULT result = 0;
  if (OnWndMsg(message, w, l, &result)) return result;
  return DefWindowProc(message, w, l);
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM w, LPARAM l) {
  if (m_pfnSuper == nullptr) return ::DefWindowProcW(m_hWnd, message, w, l);
  return ::CallWindowProcW(m_pfnSuper, m_hWnd, message, w, l);
}

BOOL CWnd::OnWndMsg(UINT message, WPARAM w, LPARAM l, LRESULT* result) {
  if (message == WM_COMMAND) {
    if (!OnCommand(w, l)) return FALSE;
    *result = 1;
    return TRUE;
  }
  if (message == WM_NOTIFY) {
    return l != 0 ? OnNotify(w, l, result) : FALSE;
  }
  const bool is_color =
      message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC;
  const auto* entry = FindEntry(is_color ? WM_CTLCOLOR : message, 0, 0);
  if (entry == nullptr) return FALSE;
  return entry->pfn(this, MSG{m_hWnd, message, w, l, 0, {0, 0}}, result);
}

BOOL CWnd::OnCommand(WPARAM w, LPARAM l) {
  const UINT id = LOWORD(w);
  const HWND control = reinterpret_cast<HWND>(l);
  LRESULT result = 0;
  if (control != nullptr && ReflectLastMsg(control, &result)) return TRUE;
  // Menus and accelerators have no control and differ in the code only.
  const int code = control != nullptr ? HIWORD(w) : CN_COMMAND;
  return OnCmdMsg(id, code, MSG{m_hWnd, WM_COMMAND, w, l, 0, {0, 0}}, &result);
}

BOOL CWnd::OnNotify(WPARAM w, LPARAM l, LRESULT* result) {
  const auto* header = reinterpret_cast<const NMHDR*>(l);
  if (ReflectLastMsg(header->hwndFrom, result)) return TRUE;
  return OnCmdMsg(static_cast<UINT>(header->idFrom),
                  static_cast<int>(header->code),
                  MSG{m_hWnd, WM_NOTIFY, w, l, 0, {0, 0}}, result);
}

BOOL CWnd::ReflectLastMsg(HWND handle, LRESULT* result) {
  CWnd* child = FromHandlePermanent(handle);
  return child != nullptr ? child->SendChildNotifyLastMsg(result) : FALSE;
}

BOOL CWnd::SendChildNotifyLastMsg(LRESULT* result) {
  const MSG& message = g_currentMessage;
  return OnChildNotify(message.message, message.wParam, message.lParam, result);
}

BOOL CWnd::OnChildNotify(UINT message, WPARAM w, LPARAM l, LRESULT* result) {
  UINT reflected = WM_REFLECT_BASE + message;
  UINT code = 0;
  if (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC) {
    reflected = WM_REFLECT_BASE + WM_CTLCOLOR;
  } else if (message == WM_NOTIFY) {
    code = reinterpret_cast<const NMHDR*>(l)->code;
  } else if (message == WM_COMMAND) {
    code = HIWORD(w);
  }
  const auto* entry = FindEntry(reflected, code, 0);
  if (entry == nullptr) return FALSE;
  return entry->pfn(this, MSG{m_hWnd, message, w, l, 0, {0, 0}}, result);
}

HBRUSH CWnd::OnCtlColor(CDC*, CWnd* window, UINT) {
  LRESULT result = 0;
  if (window != nullptr && window->SendChildNotifyLastMsg(&result)) {
    return reinterpret_cast<HBRUSH>(result);
  }
  return reinterpret_cast<HBRUSH>(Default());
}

void CWnd::OnDrawItem(int, LPDRAWITEMSTRUCT item) {
  LRESULT result = 0;
  if (!ReflectLastMsg(item->hwndItem, &result)) Default();
}

void CWnd::OnNcDestroy() {
  CWinApp* app = AfxGetApp();
  if (app != nullptr && app->m_pMainWnd == this) app->m_pMainWnd = nullptr;
  Default();
  UnsubclassWindow();
  PostNcDestroy();
}

// clang-format off
BEGIN_MESSAGE_MAP(CWnd, CCmdTarget)
  ON_WM_CTLCOLOR()
  ON_WM_DRAWITEM()
  ON_WM_NCDESTROY()
END_MESSAGE_MAP()
// clang-format on
