// SPDX-License-Identifier: MIT
//
// CString: the framework's text class over the standard one.
//
// Unlike the framework's, an object cannot be passed through "..." (that is not
// portable C++): write Format(_T("%s"), name.GetString()).
#pragma once

#include <windows.h>

#include <cstdarg>
#include <string>

template <typename Char>
class CStringT {
 public:
  using XCHAR = Char;
  using PCXSTR = const Char*;
  using PXSTR = Char*;
  // The other width: converted by the process's code page.
  using YCHAR = std::conditional_t<std::is_same_v<Char, char>, wchar_t, char>;

  CStringT() = default;
  CStringT(PCXSTR text) {  // NOLINT(google-explicit-constructor)
    if (text != nullptr) m_text = text;
  }
  CStringT(PCXSTR text, int length) : m_text(text, length) {}
  CStringT(Char character, int count) : m_text(count, character) {}
  explicit CStringT(const YCHAR* text) : m_text(Convert(text)) {}
  explicit CStringT(const CStringT<YCHAR>& text)
      : m_text(Convert(text.GetString())) {}

  int GetLength() const { return static_cast<int>(m_text.size()); }
  bool IsEmpty() const { return m_text.empty(); }
  void Empty() { m_text.clear(); }
  PCXSTR GetString() const { return m_text.c_str(); }
  operator PCXSTR() const { return m_text.c_str(); }  // NOLINT
  Char operator[](int index) const { return m_text.at(index); }

  // Formats like the C runtime's wide printf: %s is text of this width.
  void Format(PCXSTR format, ...);
  void FormatV(PCXSTR format, va_list arguments);
  // Loads a string resource; FALSE and empty if there is none.
  BOOL LoadString(UINT id);

  CStringT& operator+=(PCXSTR text) {
    m_text += text;
    return *this;
  }
  CStringT& operator+=(const CStringT& text) {
    m_text += text.m_text;
    return *this;
  }
  CStringT& operator+=(Char character) {
    m_text += character;
    return *this;
  }
  friend CStringT operator+(CStringT a, const CStringT& b) { return a += b; }
  friend CStringT operator+(CStringT a, PCXSTR b) { return a += b; }
  friend CStringT operator+(PCXSTR a, const CStringT& b) {
    return CStringT(a) += b;
  }

  friend bool operator==(const CStringT& a, const CStringT& b) {
    return a.m_text == b.m_text;
  }
  friend bool operator==(const CStringT& a, PCXSTR b) { return a.m_text == b; }

  // -1 if not found.
  int Find(PCXSTR text, int start = 0) const;
  int Find(Char character, int start = 0) const;
  int ReverseFind(Char character) const;
  // Out-of-range positions and counts are cut to what there is.
  CStringT Left(int count) const { return Mid(0, count); }
  CStringT Right(int count) const;
  CStringT Mid(int first) const { return Mid(first, GetLength()); }
  CStringT Mid(int first, int count) const;

  // Room for `length` characters and a terminator; call ReleaseBuffer() after
  // writing, with the new length or -1 for "up to the terminator".
  PXSTR GetBuffer(int length);
  void ReleaseBuffer(int length = -1);

 private:
  static std::basic_string<Char> Convert(const YCHAR* text);

  std::basic_string<Char> m_text;
};

using CStringW = CStringT<wchar_t>;
using CStringA = CStringT<char>;
using CString = CStringW;

extern template class CStringT<wchar_t>;
extern template class CStringT<char>;
