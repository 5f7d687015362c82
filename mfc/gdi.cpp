// SPDX-License-Identifier: MIT
#include "afxwin.h"
#include "detail/handle_maps.h"

BOOL CGdiObject::Attach(HGDIOBJ handle) {
  ASSERT(m_hObject == nullptr);
  if (handle == nullptr) return FALSE;
  m_hObject = handle;
  GdiObjectMap().SetPermanent(handle, this);
  return TRUE;
}

HGDIOBJ CGdiObject::Detach() {
  const HGDIOBJ handle = m_hObject;
  if (handle != nullptr) GdiObjectMap().RemovePermanent(handle);
  m_hObject = nullptr;
  return handle;
}

BOOL CGdiObject::DeleteObject() {
  return m_hObject != nullptr ? ::DeleteObject(Detach()) : FALSE;
}

CGdiObject* CGdiObject::ObjectFromHandle(HGDIOBJ handle) {
  return GdiObjectMap().FromHandle(handle, [](HGDIOBJ h) -> CGdiObject* {
    CGdiObject* object = nullptr;
    switch (::GetObjectType(h)) {
      case OBJ_PEN:
      case OBJ_EXTPEN:
        object = new CPen;
        break;
      case OBJ_BRUSH:
        object = new CBrush;
        break;
      case OBJ_FONT:
        object = new CFont;
        break;
      case OBJ_BITMAP:
        object = new CBitmap;
        break;
      default:
        object = new CGdiObject;
    }
    object->m_hObject = h;
    return object;
  });
}

namespace {

// A handle value may come back for an object of another class after the first
// was freed behind our back: then the stale temporary is replaced.
template <typename Type, typename Lookup>
Type* TypedFromHandle(HGDIOBJ handle, Lookup lookup) {
  auto* object = dynamic_cast<Type*>(lookup(handle));
  if (object != nullptr || handle == nullptr) return object;
  GdiObjectMap().DropTemporary(handle);
  return dynamic_cast<Type*>(lookup(handle));
}

}  // namespace

CPen* CPen::FromHandle(HPEN handle) {
  return TypedFromHandle<CPen>(handle, ObjectFromHandle);
}
CBrush* CBrush::FromHandle(HBRUSH handle) {
  return TypedFromHandle<CBrush>(handle, ObjectFromHandle);
}
CFont* CFont::FromHandle(HFONT handle) {
  return TypedFromHandle<CFont>(handle, ObjectFromHandle);
}
CBitmap* CBitmap::FromHandle(HBITMAP handle) {
  return TypedFromHandle<CBitmap>(handle, ObjectFromHandle);
}

BOOL CBitmap::CreateCompatibleBitmap(CDC* dc, int width, int height) {
  return Attach(::CreateCompatibleBitmap(dc->m_hDC, width, height));
}

CDC::~CDC() { DeleteDC(); }

BOOL CDC::Attach(HDC handle) {
  ASSERT(m_hDC == nullptr);
  if (handle == nullptr) return FALSE;
  m_hDC = handle;
  DeviceContextMap().SetPermanent(handle, this);
  return TRUE;
}

HDC CDC::Detach() {
  const HDC handle = m_hDC;
  if (handle != nullptr) DeviceContextMap().RemovePermanent(handle);
  m_hDC = nullptr;
  return handle;
}

BOOL CDC::DeleteDC() { return m_hDC != nullptr ? ::DeleteDC(Detach()) : FALSE; }

BOOL CDC::CreateCompatibleDC(CDC* dc) {
  return Attach(::CreateCompatibleDC(dc != nullptr ? dc->m_hDC : nullptr));
}

CDC* CDC::FromHandle(HDC handle) {
  return DeviceContextMap().FromHandle(handle, [](HDC h) {
    auto* dc = new CDC;
    dc->m_hDC = h;
    return dc;
  });
}

CPen* CDC::SelectObject(CPen* pen) {
  return CPen::FromHandle(
      static_cast<HPEN>(::SelectObject(m_hDC, pen->m_hObject)));
}
CBrush* CDC::SelectObject(CBrush* brush) {
  return CBrush::FromHandle(
      static_cast<HBRUSH>(::SelectObject(m_hDC, brush->m_hObject)));
}
CFont* CDC::SelectObject(CFont* font) {
  return CFont::FromHandle(
      static_cast<HFONT>(::SelectObject(m_hDC, font->m_hObject)));
}
CBitmap* CDC::SelectObject(CBitmap* bitmap) {
  return CBitmap::FromHandle(
      static_cast<HBITMAP>(::SelectObject(m_hDC, bitmap->m_hObject)));
}

void CDC::FillSolidRect(LPCRECT rect, COLORREF color) {
  // An opaque empty text is the fastest solid fill; the background colour
  // stays set afterwards, as the framework documents.
  ::SetBkColor(m_hDC, color);
  ::ExtTextOutW(m_hDC, 0, 0, ETO_OPAQUE, rect, nullptr, 0, nullptr);
}

CSize CDC::GetTextExtent(const CString& text) const {
  SIZE size{};
  ::GetTextExtentPoint32W(m_hDC, text, text.GetLength(), &size);
  return size;
}

CPaintDC::CPaintDC(CWnd* window) : m_hWnd(window->m_hWnd) {
  Attach(::BeginPaint(m_hWnd, &m_ps));
}

CPaintDC::~CPaintDC() {
  ::EndPaint(m_hWnd, &m_ps);
  Detach();
}

CClientDC::CClientDC(CWnd* window) : m_hWnd(window->GetSafeHwnd()) {
  Attach(::GetDC(m_hWnd));
}

CClientDC::~CClientDC() { ::ReleaseDC(m_hWnd, Detach()); }

CMenu::~CMenu() { DestroyMenu(); }

BOOL CMenu::Attach(HMENU handle) {
  ASSERT(m_hMenu == nullptr);
  if (handle == nullptr) return FALSE;
  m_hMenu = handle;
  MenuMap().SetPermanent(handle, this);
  return TRUE;
}

HMENU CMenu::Detach() {
  const HMENU handle = m_hMenu;
  if (handle != nullptr) MenuMap().RemovePermanent(handle);
  m_hMenu = nullptr;
  return handle;
}

BOOL CMenu::DestroyMenu() {
  return m_hMenu != nullptr ? ::DestroyMenu(Detach()) : FALSE;
}

CMenu* CMenu::FromHandle(HMENU handle) {
  return MenuMap().FromHandle(handle, [](HMENU h) {
    auto* menu = new CMenu;
    menu->m_hMenu = h;
    return menu;
  });
}

BOOL CMenu::TrackPopupMenu(UINT flags, int x, int y, CWnd* owner,
                           LPCRECT rect) {
  return ::TrackPopupMenu(m_hMenu, flags, x, y, 0, owner->GetSafeHwnd(), rect);
}

int CMenu::GetMenuString(UINT item, CString& text, UINT flags) const {
  const int length = ::GetMenuStringW(m_hMenu, item, nullptr, 0, flags);
  ::GetMenuStringW(m_hMenu, item, text.GetBuffer(length + 1), length + 1,
                   flags);
  text.ReleaseBuffer();
  return length;
}
