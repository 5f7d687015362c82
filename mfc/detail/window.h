// SPDX-License-Identifier: MIT
//
// CCmdTarget and CWnd. Included by afxwin.h.
#pragma once

#include "../afxmsg_.h"
#include "gdi.h"

class CDataExchange;
class CWnd;

class CCmdTarget : public CObject {
 public:
  // Looks for a WM_COMMAND or WM_NOTIFY entry in the map of this class and its
  // bases.
  virtual BOOL OnCmdMsg(UINT id, int code, const MSG& message, LRESULT* result);

  static const AFX_MSGMAP* GetThisMessageMap() { return nullptr; }

 protected:
  virtual const AFX_MSGMAP* GetMessageMap() const { return nullptr; }
  const AFX_MSGMAP_ENTRY* FindEntry(UINT message, UINT code, UINT id) const;
};

// A window: either owns an m_hWnd that it created or subclassed (then it is in
// the permanent map until WM_NCDESTROY), or stands in for a foreign one for the
// length of a handler (FromHandle).
class CWnd : public CCmdTarget {
 public:
  CWnd() = default;
  ~CWnd() override;

  HWND m_hWnd = nullptr;

  HWND GetSafeHwnd() const { return m_hWnd; }
  operator HWND() const { return m_hWnd; }  // NOLINT
  static CWnd* FromHandle(HWND handle);
  static CWnd* FromHandlePermanent(HWND handle);
  BOOL Attach(HWND handle);
  HWND Detach();

  // Creation. If the window cannot be made, PostNcDestroy() is called as if it
  // had been destroyed.
  virtual BOOL Create(LPCTSTR class_name, LPCTSTR text, DWORD style,
                      const RECT& rect, CWnd* parent, UINT id,
                      void* context = nullptr);
  BOOL CreateEx(DWORD ex_style, LPCTSTR class_name, LPCTSTR text, DWORD style,
                const RECT& rect, CWnd* parent, UINT id,
                LPVOID parameter = nullptr);
  BOOL CreateEx(DWORD ex_style, LPCTSTR class_name, LPCTSTR text, DWORD style,
                int x, int y, int width, int height, HWND parent, HMENU id,
                LPVOID parameter = nullptr);
  BOOL SubclassWindow(HWND handle);
  BOOL SubclassDlgItem(UINT id, CWnd* parent);
  HWND UnsubclassWindow();
  virtual BOOL DestroyWindow();

  // Text
  void SetWindowText(LPCTSTR text) { ::SetWindowTextW(m_hWnd, text); }
  void GetWindowText(CString& text) const;
  int GetWindowText(LPTSTR text, int size) const {
    return ::GetWindowTextW(m_hWnd, text, size);
  }
  void SetFont(CFont* font, BOOL redraw = TRUE);
  CFont* GetFont() const;
  HICON SetIcon(HICON icon, BOOL big);

  // State and style
  DWORD GetStyle() const;
  DWORD GetExStyle() const;
  BOOL ModifyStyle(DWORD remove, DWORD add, UINT position_flags = 0);
  BOOL EnableWindow(BOOL enable = TRUE) {
    return ::EnableWindow(m_hWnd, enable);
  }
  BOOL IsWindowEnabled() const { return ::IsWindowEnabled(m_hWnd); }
  BOOL ShowWindow(int command) { return ::ShowWindow(m_hWnd, command); }
  BOOL IsWindowVisible() const { return ::IsWindowVisible(m_hWnd); }
  BOOL IsIconic() const { return ::IsIconic(m_hWnd); }
  CWnd* SetFocus() { return FromHandle(::SetFocus(m_hWnd)); }
  static CWnd* GetFocus() { return FromHandle(::GetFocus()); }
  BOOL SetForegroundWindow() { return ::SetForegroundWindow(m_hWnd); }
  void DragAcceptFiles(BOOL accept = TRUE) {
    ::DragAcceptFiles(m_hWnd, accept);
  }
  CMenu* GetSystemMenu(BOOL revert) const {
    return CMenu::FromHandle(::GetSystemMenu(m_hWnd, revert));
  }

  // Place
  void MoveWindow(int x, int y, int width, int height, BOOL repaint = TRUE) {
    ::MoveWindow(m_hWnd, x, y, width, height, repaint);
  }
  void MoveWindow(LPCRECT rect, BOOL repaint = TRUE);
  BOOL SetWindowPos(const CWnd* after, int x, int y, int width, int height,
                    UINT flags);
  static const CWnd wndTop;
  static const CWnd wndBottom;
  static const CWnd wndTopMost;
  static const CWnd wndNoTopMost;
  void GetClientRect(LPRECT rect) const { ::GetClientRect(m_hWnd, rect); }
  void GetWindowRect(LPRECT rect) const { ::GetWindowRect(m_hWnd, rect); }
  void ScreenToClient(LPPOINT point) const { ::ScreenToClient(m_hWnd, point); }
  void ScreenToClient(LPRECT rect) const;
  void ClientToScreen(LPPOINT point) const { ::ClientToScreen(m_hWnd, point); }
  void ClientToScreen(LPRECT rect) const;

  // Painting
  void Invalidate(BOOL erase = TRUE) {
    ::InvalidateRect(m_hWnd, nullptr, erase);
  }
  void UpdateWindow() { ::UpdateWindow(m_hWnd); }
  BOOL RedrawWindow(LPCRECT rect = nullptr, HRGN region = nullptr,
                    UINT flags = RDW_INVALIDATE | RDW_UPDATENOW | RDW_ERASE) {
    return ::RedrawWindow(m_hWnd, rect, region, flags);
  }
  void SetRedraw(BOOL redraw = TRUE) {
    ::SendMessageW(m_hWnd, WM_SETREDRAW, redraw, 0);
  }

  // Scroll bars that belong to the window
  void ShowScrollBar(UINT bar, BOOL show = TRUE) {
    ::ShowScrollBar(m_hWnd, bar, show);
  }
  BOOL SetScrollInfo(int bar, LPSCROLLINFO info, BOOL redraw = TRUE);
  BOOL GetScrollInfo(int bar, LPSCROLLINFO info, UINT mask = SIF_ALL);

  // Relatives
  CWnd* GetParent() const { return FromHandle(::GetParent(m_hWnd)); }
  CWnd* SetParent(CWnd* parent) {
    return FromHandle(::SetParent(m_hWnd, parent->GetSafeHwnd()));
  }
  CWnd* GetWindow(UINT command) const {
    return FromHandle(::GetWindow(m_hWnd, command));
  }
  static CWnd* GetDesktopWindow() { return FromHandle(::GetDesktopWindow()); }
  int GetDlgCtrlID() const { return ::GetDlgCtrlID(m_hWnd); }
  CWnd* GetDlgItem(int id) const {
    return FromHandle(::GetDlgItem(m_hWnd, id));
  }
  void SetDlgItemText(int id, LPCTSTR text) {
    ::SetDlgItemTextW(m_hWnd, id, text);
  }
  int GetDlgItemText(int id, CString& text) const;
  UINT IsDlgButtonChecked(int id) const {
    return ::IsDlgButtonChecked(m_hWnd, id);
  }
  void CheckDlgButton(int id, UINT state) {
    ::CheckDlgButton(m_hWnd, id, state);
  }
  void CheckRadioButton(int first, int last, int checked) {
    ::CheckRadioButton(m_hWnd, first, last, checked);
  }

  // Messages and timers
  LRESULT SendMessage(UINT message, WPARAM w = 0, LPARAM l = 0) const {
    return ::SendMessageW(m_hWnd, message, w, l);
  }
  BOOL PostMessage(UINT message, WPARAM w = 0, LPARAM l = 0) {
    return ::PostMessageW(m_hWnd, message, w, l);
  }
  UINT_PTR SetTimer(UINT_PTR id, UINT period_ms, TIMERPROC callback) {
    return ::SetTimer(m_hWnd, id, period_ms, callback);
  }
  BOOL KillTimer(UINT_PTR id) { return ::KillTimer(m_hWnd, id); }
  BOOL AnimateWindow(DWORD duration_ms, DWORD flags) {
    return ::AnimateWindow(m_hWnd, duration_ms, flags);
  }

  // Data exchange: FALSE if a value was refused.
  BOOL UpdateData(BOOL save_and_validate = TRUE);
  virtual void DoDataExchange(CDataExchange*) {}

  virtual BOOL PreTranslateMessage(MSG*) { return FALSE; }

  // The result of the reflected message, if the child handles it itself.
  BOOL SendChildNotifyLastMsg(LRESULT* result);
  void ForgetHandle() { m_hWnd = nullptr; }

 protected:
  // Called when the handle is attached, before the first message is handled.
  virtual void PreSubclassWindow() {}
  // The last call on the object; heap windows delete themselves here.
  virtual void PostNcDestroy() {}
  virtual BOOL PreCreateWindow(CREATESTRUCT&) { return TRUE; }

  virtual LRESULT WindowProc(UINT message, WPARAM w, LPARAM l);
  virtual BOOL OnWndMsg(UINT message, WPARAM w, LPARAM l, LRESULT* result);
  virtual LRESULT DefWindowProc(UINT message, WPARAM w, LPARAM l);
  virtual BOOL OnCommand(WPARAM w, LPARAM l);
  virtual BOOL OnNotify(WPARAM w, LPARAM l, LRESULT* result);
  virtual BOOL OnChildNotify(UINT message, WPARAM w, LPARAM l, LRESULT* result);
  // Passes the message being handled on to the procedure below.
  LRESULT Default();
  static const MSG* GetCurrentMessage();

  // Default handlers, for handlers to call as their base.
  afx_msg void OnClose() { Default(); }
  afx_msg void OnContextMenu(CWnd*, CPoint) { Default(); }
  afx_msg int OnCreate(LPCREATESTRUCT) { return static_cast<int>(Default()); }
  afx_msg HBRUSH OnCtlColor(CDC* dc, CWnd* window, UINT type);
  afx_msg void OnDrawItem(int id, LPDRAWITEMSTRUCT item);
  afx_msg void OnDropFiles(HDROP) { Default(); }
  afx_msg BOOL OnEraseBkgnd(CDC*) { return static_cast<BOOL>(Default()); }
  afx_msg void OnLButtonDown(UINT, CPoint) { Default(); }
  afx_msg void OnRButtonDown(UINT, CPoint) { Default(); }
  afx_msg BOOL OnMouseWheel(UINT, short, CPoint) {
    return static_cast<BOOL>(Default());
  }
  afx_msg void OnNcDestroy();
  afx_msg void OnSize(UINT, int, int) { Default(); }
  afx_msg void OnPaint() { Default(); }
  afx_msg HCURSOR OnQueryDragIcon() {
    return reinterpret_cast<HCURSOR>(Default());
  }
  afx_msg BOOL OnSetCursor(CWnd*, UINT, UINT) {
    return static_cast<BOOL>(Default());
  }
  afx_msg void OnSysCommand(UINT, LPARAM) { Default(); }
  afx_msg void OnTimer(UINT_PTR) { Default(); }

  DECLARE_MESSAGE_MAP()

 private:
  explicit CWnd(HWND handle) : m_hWnd(handle) {}
  BOOL ReflectLastMsg(HWND child, LRESULT* result);

  WNDPROC m_pfnSuper = nullptr;  // the procedure below a subclassed window's

  friend LRESULT AfxCallWndProc(CWnd*, const MSG&);
  friend LRESULT CALLBACK AfxCbtFilterHook(int, WPARAM, LPARAM);
};
