// SPDX-License-Identifier: MIT
#include "detail/dispatch.h"
#include "detail/handle_maps.h"

const CWnd CWnd::wndTop(HWND_TOP);
const CWnd CWnd::wndBottom(HWND_BOTTOM);
const CWnd CWnd::wndTopMost(HWND_TOPMOST);
const CWnd CWnd::wndNoTopMost(HWND_NOTOPMOST);

namespace {

CWnd* g_windowBeingCreated = nullptr;
HHOOK g_creationHook = nullptr;

bool IsInputMethodWindow(HWND handle) {
  wchar_t name[8] = L"";
  ::GetClassNameW(handle, name, 8);
  return ::lstrcmpiW(name, L"IME") == 0;
}

}  // namespace

LRESULT CALLBACK AfxCbtFilterHook(int code, WPARAM w, LPARAM l) {
  const auto handle = reinterpret_cast<HWND>(w);
  if (code == HCBT_CREATEWND && g_windowBeingCreated != nullptr &&
      !IsInputMethodWindow(handle)) {
    CWnd* window = g_windowBeingCreated;
    g_windowBeingCreated = nullptr;
    window->SubclassWindow(handle);
  }
  return ::CallNextHookEx(g_creationHook, code, w, l);
}

void AfxHookWindowCreate(CWnd* window) {
  g_windowBeingCreated = window;
  g_creationHook = ::SetWindowsHookExW(WH_CBT, AfxCbtFilterHook, nullptr,
                                       ::GetCurrentThreadId());
}

bool AfxUnhookWindowCreate() {
  ::UnhookWindowsHookEx(g_creationHook);
  const bool attached = g_windowBeingCreated == nullptr;
  g_windowBeingCreated = nullptr;
  return attached;
}

CWnd::~CWnd() {
  if (m_hWnd != nullptr && FromHandlePermanent(m_hWnd) == this) {
    // Virtual calls end here: a derived DestroyWindow() is not reached.
    CWnd::DestroyWindow();
  }
}

CWnd* CWnd::FromHandle(HWND handle) {
  return WindowMap().FromHandle(handle, [](HWND h) { return new CWnd(h); });
}

CWnd* CWnd::FromHandlePermanent(HWND handle) {
  return WindowMap().LookupPermanent(handle);
}

BOOL CWnd::Attach(HWND handle) {
  ASSERT(m_hWnd == nullptr);
  if (handle == nullptr) return FALSE;
  m_hWnd = handle;
  WindowMap().SetPermanent(handle, this);
  return TRUE;
}

HWND CWnd::Detach() {
  const HWND handle = m_hWnd;
  if (handle != nullptr) WindowMap().RemovePermanent(handle);
  m_hWnd = nullptr;
  return handle;
}

BOOL CWnd::Create(LPCTSTR class_name, LPCTSTR text, DWORD style,
                  const RECT& rect, CWnd* parent, UINT id, void* context) {
  return CreateEx(0, class_name, text, style | WS_CHILD, rect, parent, id,
                  context);
}

BOOL CWnd::CreateEx(DWORD ex_style, LPCTSTR class_name, LPCTSTR text,
                    DWORD style, const RECT& rect, CWnd* parent, UINT id,
                    LPVOID parameter) {
  return CreateEx(ex_style, class_name, text, style, rect.left, rect.top,
                  rect.right - rect.left, rect.bottom - rect.top,
                  parent != nullptr ? parent->m_hWnd : nullptr,
                  reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)),
                  parameter);
}

BOOL CWnd::CreateEx(DWORD ex_style, LPCTSTR class_name, LPCTSTR text,
                    DWORD style, int x, int y, int width, int height,
                    HWND parent, HMENU id, LPVOID parameter) {
  CREATESTRUCT request{
      parameter, AfxGetInstanceHandle(),   id,   parent,     height,  width, y,
      x,         static_cast<LONG>(style), text, class_name, ex_style};
  if (!PreCreateWindow(request)) {
    PostNcDestroy();
    return FALSE;
  }
  AfxHookWindowCreate(this);
  const HWND handle = ::CreateWindowExW(
      request.dwExStyle, request.lpszClass, request.lpszName,
      static_cast<DWORD>(request.style), request.x, request.y, request.cx,
      request.cy, request.hwndParent, request.hMenu, request.hInstance,
      request.lpCreateParams);
  // If the window got as far as its own destruction, that has called
  // PostNcDestroy() already and this object may be gone.
  if (!AfxUnhookWindowCreate()) PostNcDestroy();
  return handle != nullptr;
}

BOOL CWnd::SubclassWindow(HWND handle) {
  if (!Attach(handle)) return FALSE;
  const auto previous = reinterpret_cast<WNDPROC>(::SetWindowLongPtrW(
      handle, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(AfxWndProc)));
  ASSERT(previous != AfxWndProc);
  m_pfnSuper = previous;
  PreSubclassWindow();
  return TRUE;
}

BOOL CWnd::SubclassDlgItem(UINT id, CWnd* parent) {
  return SubclassWindow(::GetDlgItem(parent->m_hWnd, static_cast<int>(id)));
}

HWND CWnd::UnsubclassWindow() {
  const auto current =
      reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(m_hWnd, GWLP_WNDPROC));
  if (current == AfxWndProc && m_pfnSuper != nullptr) {
    ::SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC,
                        reinterpret_cast<LONG_PTR>(m_pfnSuper));
  }
  m_pfnSuper = nullptr;
  return Detach();
}

BOOL CWnd::DestroyWindow() {
  // The object may delete itself on the way: nothing of it is used afterwards.
  return m_hWnd != nullptr ? ::DestroyWindow(m_hWnd) : FALSE;
}

void CWnd::GetWindowText(CString& text) const {
  const int length = ::GetWindowTextLengthW(m_hWnd);
  ::GetWindowTextW(m_hWnd, text.GetBuffer(length + 1), length + 1);
  text.ReleaseBuffer();
}

int CWnd::GetDlgItemText(int id, CString& text) const {
  text.Empty();
  const HWND item = ::GetDlgItem(m_hWnd, id);
  if (item == nullptr) return 0;
  const int length = ::GetWindowTextLengthW(item);
  ::GetWindowTextW(item, text.GetBuffer(length + 1), length + 1);
  text.ReleaseBuffer();
  return text.GetLength();
}

void CWnd::SetFont(CFont* font, BOOL redraw) {
  const HGDIOBJ handle = font != nullptr ? font->m_hObject : nullptr;
  ::SendMessageW(m_hWnd, WM_SETFONT, reinterpret_cast<WPARAM>(handle), redraw);
}

CFont* CWnd::GetFont() const {
  return CFont::FromHandle(
      reinterpret_cast<HFONT>(::SendMessageW(m_hWnd, WM_GETFONT, 0, 0)));
}

HICON CWnd::SetIcon(HICON icon, BOOL big) {
  return reinterpret_cast<HICON>(
      ::SendMessageW(m_hWnd, WM_SETICON, big ? ICON_BIG : ICON_SMALL,
                     reinterpret_cast<LPARAM>(icon)));
}

DWORD CWnd::GetStyle() const {
  return static_cast<DWORD>(::GetWindowLongPtrW(m_hWnd, GWL_STYLE));
}

DWORD CWnd::GetExStyle() const {
  return static_cast<DWORD>(::GetWindowLongPtrW(m_hWnd, GWL_EXSTYLE));
}

// FALSE if nothing changes.
static BOOL ChangeStyle(HWND handle, int index, DWORD remove, DWORD add,
                        UINT position_flags) {
  const auto old_style = static_cast<DWORD>(::GetWindowLongPtrW(handle, index));
  const DWORD new_style = (old_style & ~remove) | add;
  if (new_style == old_style) return FALSE;
  ::SetWindowLongPtrW(handle, index, static_cast<LONG_PTR>(new_style));
  if (position_flags != 0) {
    ::SetWindowPos(handle, nullptr, 0, 0, 0, 0,
                   SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE |
                       position_flags);
  }
  return TRUE;
}

BOOL CWnd::ModifyStyle(DWORD remove, DWORD add, UINT position_flags) {
  return ChangeStyle(m_hWnd, GWL_STYLE, remove, add, position_flags);
}

void CWnd::MoveWindow(LPCRECT rect, BOOL repaint) {
  MoveWindow(rect->left, rect->top, rect->right - rect->left,
             rect->bottom - rect->top, repaint);
}

BOOL CWnd::SetWindowPos(const CWnd* after, int x, int y, int width, int height,
                        UINT flags) {
  return ::SetWindowPos(m_hWnd, after != nullptr ? after->m_hWnd : nullptr, x,
                        y, width, height, flags);
}

void CWnd::ScreenToClient(LPRECT rect) const {
  ::MapWindowPoints(nullptr, m_hWnd, reinterpret_cast<POINT*>(rect), 2);
}

void CWnd::ClientToScreen(LPRECT rect) const {
  ::MapWindowPoints(m_hWnd, nullptr, reinterpret_cast<POINT*>(rect), 2);
}

BOOL CWnd::SetScrollInfo(int bar, LPSCROLLINFO info, BOOL redraw) {
  info->cbSize = sizeof(*info);
  ::SetScrollInfo(m_hWnd, bar, info, redraw);
  return TRUE;
}

BOOL CWnd::GetScrollInfo(int bar, LPSCROLLINFO info, UINT mask) {
  info->cbSize = sizeof(*info);
  info->fMask = mask;
  return ::GetScrollInfo(m_hWnd, bar, info);
}
