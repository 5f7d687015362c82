// SPDX-License-Identifier: MIT
//
// CSize, CPoint and CRect: the system's plain records with constructors and
// arithmetic.
#pragma once

#include <windows.h>

class CSize : public SIZE {
 public:
  CSize() : SIZE{0, 0} {}
  CSize(int width, int height) : SIZE{width, height} {}
  CSize(SIZE size) : SIZE(size) {}  // NOLINT(google-explicit-constructor)
  bool operator==(SIZE other) const { return cx == other.cx && cy == other.cy; }
};

class CPoint : public POINT {
 public:
  CPoint() : POINT{0, 0} {}
  CPoint(int px, int py) : POINT{px, py} {}
  CPoint(POINT point) : POINT(point) {}  // NOLINT(google-explicit-constructor)
  // Signed coordinates packed into a message parameter.
  explicit CPoint(LPARAM packed)
      : POINT{static_cast<short>(LOWORD(packed)),
              static_cast<short>(HIWORD(packed))} {}
  bool operator==(POINT other) const { return x == other.x && y == other.y; }
};

class CRect : public RECT {
 public:
  CRect() : RECT{0, 0, 0, 0} {}
  CRect(int l, int t, int r, int b) : RECT{l, t, r, b} {}
  CRect(const RECT& rect) : RECT(rect) {}  // NOLINT
  CRect(POINT corner, SIZE size)
      : RECT{corner.x, corner.y, corner.x + size.cx, corner.y + size.cy} {}

  operator LPRECT() { return this; }         // NOLINT
  operator LPCRECT() const { return this; }  // NOLINT

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  CSize Size() const { return {Width(), Height()}; }
  CPoint TopLeft() const { return {left, top}; }
  CPoint BottomRight() const { return {right, bottom}; }
  CPoint CenterPoint() const {
    return {(left + right) / 2, (top + bottom) / 2};
  }
  BOOL IsRectEmpty() const { return ::IsRectEmpty(this); }
  BOOL PtInRect(POINT point) const { return ::PtInRect(this, point); }
  void SetRect(int l, int t, int r, int b) { *this = CRect(l, t, r, b); }
  void InflateRect(int x, int y) { ::InflateRect(this, x, y); }
  void DeflateRect(int x, int y) { ::InflateRect(this, -x, -y); }
  void OffsetRect(int x, int y) { ::OffsetRect(this, x, y); }
  bool operator==(const RECT& other) const {
    return ::EqualRect(this, &other) != FALSE;
  }
};
