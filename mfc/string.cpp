// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdio>

#include "afx.h"

namespace {

// The C runtime's own formatter, for which %s in a wide format is wide text.
int FormattedLength(const wchar_t* format, va_list arguments) {
  return _vscwprintf(format, arguments);
}
int FormattedLength(const char* format, va_list arguments) {
  return _vscprintf(format, arguments);
}
void FormatInto(wchar_t* text, size_t size, const wchar_t* format,
                va_list arguments) {
  _vsnwprintf(text, size, format, arguments);
}
void FormatInto(char* text, size_t size, const char* format,
                va_list arguments) {
  _vsnprintf(text, size, format, arguments);
}

std::wstring ToOtherWidth(const char* text) {
  const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  if (size <= 0) return {};
  std::wstring result(size, L'\0');
  MultiByteToWideChar(CP_ACP, 0, text, -1, result.data(), size);
  result.pop_back();  // the terminator
  return result;
}

std::string ToOtherWidth(const wchar_t* text) {
  const int size =
      WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 0) return {};
  std::string result(size, '\0');
  WideCharToMultiByte(CP_ACP, 0, text, -1, result.data(), size, nullptr,
                      nullptr);
  result.pop_back();
  return result;
}

// String resources are wide; length 0 if there is no such string.
std::wstring ResourceString(UINT id) {
  const wchar_t* text = nullptr;
  const int length = ::LoadStringW(AfxGetResourceHandle(), id,
                                   reinterpret_cast<wchar_t*>(&text), 0);
  return length > 0 ? std::wstring(text, length) : std::wstring();
}

}  // namespace

template <typename Char>
std::basic_string<Char> CStringT<Char>::Convert(const YCHAR* text) {
  return text != nullptr ? ToOtherWidth(text) : std::basic_string<Char>();
}

template <typename Char>
void CStringT<Char>::FormatV(PCXSTR format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = FormattedLength(format, again);
  va_end(again);
  if (length < 0) return Empty();
  // The format may be this object's own text, so it is replaced last.
  std::basic_string<Char> text(length + 1, Char{});
  FormatInto(text.data(), text.size(), format, arguments);
  text.resize(length);
  m_text.swap(text);
}

template <typename Char>
void CStringT<Char>::Format(PCXSTR format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormatV(format, arguments);
  va_end(arguments);
}

template <typename Char>
BOOL CStringT<Char>::LoadString(UINT id) {
  const std::wstring text = ResourceString(id);
  if constexpr (std::is_same_v<Char, wchar_t>) {
    m_text = text;
  } else {
    m_text = ToOtherWidth(text.c_str());
  }
  return m_text.empty() ? FALSE : TRUE;
}

template <typename Char>
int CStringT<Char>::Find(PCXSTR text, int start) const {
  const auto at = m_text.find(text, std::max(start, 0));
  return at == m_text.npos ? -1 : static_cast<int>(at);
}

template <typename Char>
int CStringT<Char>::Find(Char character, int start) const {
  const auto at = m_text.find(character, std::max(start, 0));
  return at == m_text.npos ? -1 : static_cast<int>(at);
}

template <typename Char>
int CStringT<Char>::ReverseFind(Char character) const {
  const auto at = m_text.rfind(character);
  return at == m_text.npos ? -1 : static_cast<int>(at);
}

template <typename Char>
CStringT<Char> CStringT<Char>::Mid(int first, int count) const {
  const int begin = std::clamp(first, 0, GetLength());
  const int taken = std::clamp(count, 0, GetLength() - begin);
  return CStringT(GetString() + begin, taken);
}

template <typename Char>
CStringT<Char> CStringT<Char>::Right(int count) const {
  const int taken = std::clamp(count, 0, GetLength());
  return Mid(GetLength() - taken, taken);
}

template <typename Char>
typename CStringT<Char>::PXSTR CStringT<Char>::GetBuffer(int length) {
  if (length > GetLength()) m_text.resize(length);
  return m_text.data();
}

template <typename Char>
void CStringT<Char>::ReleaseBuffer(int length) {
  if (length >= 0) return m_text.resize(length);
  m_text.resize(std::char_traits<Char>::length(m_text.c_str()));
}

template class CStringT<wchar_t>;
template class CStringT<char>;
