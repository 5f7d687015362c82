// SPDX-License-Identifier: MIT
//
// A notification window in the corner of the screen.
#pragma once

#include <afxwin.h>

// Slides up in the bottom-right corner of the work area, on top of all windows
// and without taking the focus; goes by itself after a time or with a click.
// Lives on the heap: make it with new and never delete it, the window does so
// when it is destroyed (also when Create() fails).
class CMsgWindow : public CWnd {
 public:
  CMsgWindow() = default;

  // The size is the whole window's, in pixels.
  BOOL Create(CWnd* parent, LPCTSTR caption, int width = 300, int height = 180);
  using CWnd::Create;
  // A bold first line, a text that wraps, and what a left click opens (none if
  // empty).
  void SetContent(LPCTSTR title, LPCTSTR text, LPCTSTR link);
  // 0 or less: until clicked.
  void Show(int milliseconds);

 protected:
  void PostNcDestroy() override;

  afx_msg void OnPaint();
  afx_msg BOOL OnEraseBkgnd(CDC* dc);
  afx_msg void OnTimer(UINT_PTR id);
  afx_msg void OnLButtonDown(UINT flags, CPoint point);
  afx_msg void OnRButtonDown(UINT flags, CPoint point);
  DECLARE_MESSAGE_MAP()

 private:
  void Draw(CDC* dc, const CRect& client);
  // Slides out and destroys the window, and with it this object.
  void Close(DWORD animation_ms);

  CString m_title;
  CString m_text;
  CString m_link;
  int m_width = 300;
  int m_height = 180;
};
