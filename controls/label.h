// SPDX-License-Identifier: MIT
//
// A static text with its own font and colours.
#pragma once

#include <afxwin.h>

// Shows its text in a font, text colour and background of its own, may blink,
// and opens its text with the shell when clicked. Setters can be chained and
// show at once, SetBkColor() excepted: its colour shows with the next repaint.
class CLabel : public CStatic {
 public:
  enum FlashKind { kFlashNone, kFlashText, kFlashBackground };

  CLabel();

  CLabel& SetText(LPCTSTR text);
  CLabel& SetTextColor(COLORREF color);
  CLabel& SetBkColor(COLORREF color);
  // The first font setter replaces the bold SimSun of the beginning by a font
  // in the stock GUI face.
  CLabel& SetFontBold(bool bold);
  // Height of the characters, in pixels.
  CLabel& SetFontSize(int height);
  // The cursor over the label; nullptr for the usual one.
  CLabel& SetLabelCursor(HCURSOR cursor);
  // Blinks with half the period shown and half hidden; kFlashNone stops and
  // brings the text back.
  CLabel& Flash(FlashKind kind, UINT half_period_ms = 500);

 protected:
  void PreSubclassWindow() override;

  afx_msg HBRUSH CtlColor(CDC* dc, UINT type);
  afx_msg void OnTimer(UINT_PTR id);
  afx_msg void OnLButtonDown(UINT flags, CPoint point);
  afx_msg BOOL OnSetCursor(CWnd* window, UINT hit_test, UINT message);
  DECLARE_MESSAGE_MAP()

 private:
  void RecreateFont();
  void Repaint();

  COLORREF m_textColor;
  CBrush m_background;
  CBrush m_blinkBackground;
  LOGFONT m_fontDescription{};
  CFont m_font;
  CString m_savedText;
  int m_blinkPhase = 0;
  FlashKind m_blinkKind = kFlashNone;
  HCURSOR m_cursor = nullptr;
};
