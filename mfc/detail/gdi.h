// SPDX-License-Identifier: MIT
//
// Drawing objects that own their handles, device contexts, menus. Included by
// afxwin.h.
#pragma once

#include "../afx.h"

class CWnd;

class CGdiObject : public CObject {
 public:
  ~CGdiObject() override { DeleteObject(); }

  HGDIOBJ m_hObject = nullptr;

  HGDIOBJ GetSafeHandle() const { return m_hObject; }
  BOOL Attach(HGDIOBJ handle);
  HGDIOBJ Detach();
  BOOL DeleteObject();
  int GetObject(int size, void* description) const {
    return ::GetObjectW(m_hObject, size, description);
  }

  void ForgetHandle() { m_hObject = nullptr; }

 protected:
  // The object that owns `handle`, else a temporary one of the fitting class.
  static CGdiObject* ObjectFromHandle(HGDIOBJ handle);
};

class CPen : public CGdiObject {
 public:
  CPen() = default;
  CPen(int style, int width, COLORREF color) { CreatePen(style, width, color); }
  BOOL CreatePen(int style, int width, COLORREF color) {
    return Attach(::CreatePen(style, width, color));
  }
  static CPen* FromHandle(HPEN handle);
  operator HPEN() const { return static_cast<HPEN>(m_hObject); }  // NOLINT
};

class CBrush : public CGdiObject {
 public:
  CBrush() = default;
  explicit CBrush(COLORREF color) { CreateSolidBrush(color); }
  BOOL CreateSolidBrush(COLORREF color) {
    return Attach(::CreateSolidBrush(color));
  }
  static CBrush* FromHandle(HBRUSH handle);
  operator HBRUSH() const { return static_cast<HBRUSH>(m_hObject); }  // NOLINT
};

class CFont : public CGdiObject {
 public:
  BOOL CreateFontIndirect(const LOGFONT* description) {
    return Attach(::CreateFontIndirectW(description));
  }
  BOOL CreateFont(int height, int width, int escapement, int orientation,
                  int weight, BYTE italic, BYTE underline, BYTE strike_out,
                  BYTE char_set, BYTE out_precision, BYTE clip_precision,
                  BYTE quality, BYTE pitch_and_family, LPCTSTR face) {
    return Attach(::CreateFontW(height, width, escapement, orientation, weight,
                                italic, underline, strike_out, char_set,
                                out_precision, clip_precision, quality,
                                pitch_and_family, face));
  }
  static CFont* FromHandle(HFONT handle);
  operator HFONT() const { return static_cast<HFONT>(m_hObject); }  // NOLINT
};

class CDC;

class CBitmap : public CGdiObject {
 public:
  BOOL CreateCompatibleBitmap(CDC* dc, int width, int height);
  static CBitmap* FromHandle(HBITMAP handle);
  operator HBITMAP() const {  // NOLINT
    return static_cast<HBITMAP>(m_hObject);
  }
};

class CDC : public CObject {
 public:
  CDC() = default;
  ~CDC() override;

  HDC m_hDC = nullptr;

  HDC GetSafeHdc() const { return m_hDC; }
  operator HDC() const { return m_hDC; }  // NOLINT
  BOOL Attach(HDC handle);
  HDC Detach();
  BOOL DeleteDC();
  BOOL CreateCompatibleDC(CDC* dc);
  static CDC* FromHandle(HDC handle);

  // Each returns the object selected before.
  CPen* SelectObject(CPen* pen);
  CBrush* SelectObject(CBrush* brush);
  CFont* SelectObject(CFont* font);
  CBitmap* SelectObject(CBitmap* bitmap);

  COLORREF SetTextColor(COLORREF color) { return ::SetTextColor(m_hDC, color); }
  COLORREF GetTextColor() const { return ::GetTextColor(m_hDC); }
  COLORREF SetBkColor(COLORREF color) { return ::SetBkColor(m_hDC, color); }
  int SetBkMode(int mode) { return ::SetBkMode(m_hDC, mode); }
  int GetBkMode() const { return ::GetBkMode(m_hDC); }

  COLORREF GetPixel(int x, int y) const { return ::GetPixel(m_hDC, x, y); }
  void FillRect(LPCRECT rect, CBrush* brush) {
    ::FillRect(m_hDC, rect, *brush);
  }
  void FillSolidRect(LPCRECT rect, COLORREF color);
  BOOL DrawIcon(int x, int y, HICON icon) {
    return ::DrawIcon(m_hDC, x, y, icon);
  }
  int DrawText(const CString& text, LPRECT rect, UINT format) {
    return ::DrawTextW(m_hDC, text, text.GetLength(), rect, format);
  }
  CSize GetTextExtent(const CString& text) const;
  BOOL BitBlt(int x, int y, int width, int height, CDC* source, int source_x,
              int source_y, DWORD operation) {
    return ::BitBlt(m_hDC, x, y, width, height, source->m_hDC, source_x,
                    source_y, operation);
  }

  void ForgetHandle() { m_hDC = nullptr; }
};

// Between BeginPaint and EndPaint.
class CPaintDC : public CDC {
 public:
  explicit CPaintDC(CWnd* window);
  ~CPaintDC() override;
  PAINTSTRUCT m_ps{};

 private:
  HWND m_hWnd;
};

class CClientDC : public CDC {
 public:
  explicit CClientDC(CWnd* window);
  ~CClientDC() override;

 private:
  HWND m_hWnd;
};

class CMenu : public CObject {
 public:
  CMenu() = default;
  ~CMenu() override;

  HMENU m_hMenu = nullptr;

  BOOL Attach(HMENU handle);
  HMENU Detach();
  BOOL CreatePopupMenu() { return Attach(::CreatePopupMenu()); }
  BOOL DestroyMenu();
  static CMenu* FromHandle(HMENU handle);

  BOOL AppendMenu(UINT flags, UINT_PTR id = 0, LPCTSTR text = nullptr) {
    return ::AppendMenuW(m_hMenu, flags, id, text);
  }
  BOOL ModifyMenu(UINT position, UINT flags, UINT_PTR id = 0,
                  LPCTSTR text = nullptr) {
    return ::ModifyMenuW(m_hMenu, position, flags, id, text);
  }
  BOOL RemoveMenu(UINT position, UINT flags) {
    return ::RemoveMenu(m_hMenu, position, flags);
  }
  UINT CheckMenuItem(UINT item, UINT flags) {
    return ::CheckMenuItem(m_hMenu, item, flags);
  }
  UINT EnableMenuItem(UINT item, UINT flags) {
    return static_cast<UINT>(::EnableMenuItem(m_hMenu, item, flags));
  }
  BOOL TrackPopupMenu(UINT flags, int x, int y, CWnd* owner,
                      LPCRECT rect = nullptr);
  UINT GetMenuItemCount() const { return ::GetMenuItemCount(m_hMenu); }
  UINT GetMenuItemID(int position) const {
    return ::GetMenuItemID(m_hMenu, position);
  }
  int GetMenuString(UINT item, CString& text, UINT flags) const;

  void ForgetHandle() { m_hMenu = nullptr; }
};
