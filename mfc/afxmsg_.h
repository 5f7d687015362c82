// SPDX-License-Identifier: MIT
//
// Message maps.
//
// An entry holds a plain function made from a lambda that captures nothing: it
// unpacks the message, calls the member and stores the result. So no member
// pointer is ever reinterpreted, and since the lambda stands inside a member of
// the class it may call protected handlers.
#pragma once

#include "afx.h"

class CCmdTarget;

// Returns TRUE if the message is dealt with.
using AFX_PMSG = BOOL (*)(CCmdTarget* target, const MSG& message,
                          LRESULT* result);

struct AFX_MSGMAP_ENTRY {
  UINT nMessage;  // 0 ends the table
  UINT nCode;     // notification code, or 0
  UINT nID;       // first and last control id, or 0
  UINT nLastID;
  AFX_PMSG pfn;
};

struct AFX_MSGMAP {
  const AFX_MSGMAP* (*pfnGetBaseMap)();
  const AFX_MSGMAP_ENTRY* lpEntries;
};

// All WM_CTLCOLOR... messages share one entry; reflected messages are searched
// in the control's own map with this offset.
constexpr UINT WM_CTLCOLOR = 0x0019;
constexpr UINT WM_REFLECT_BASE = 0xBC00;

// Read as a table.
// clang-format off
#define DECLARE_MESSAGE_MAP()                     \
 protected:                                       \
  static const AFX_MSGMAP* GetThisMessageMap();   \
  const AFX_MSGMAP* GetMessageMap() const override;

#define BEGIN_MESSAGE_MAP(the_class, base_class)                          \
  const AFX_MSGMAP* the_class::GetMessageMap() const {                    \
    return GetThisMessageMap();                                           \
  }                                                                       \
  const AFX_MSGMAP* the_class::GetThisMessageMap() {                      \
    using ThisClass [[maybe_unused]] = the_class;                         \
    using TheBaseClass = base_class;                                      \
    static const AFX_MSGMAP_ENTRY entries[] = {

#define END_MESSAGE_MAP()                                                 \
      {0, 0, 0, 0, nullptr}};                                             \
    static const AFX_MSGMAP map = {[] {                                   \
      return TheBaseClass::GetThisMessageMap(); }, entries};              \
    return &map;                                                          \
  }

// `call` sees the target as pThis and the message as m.
#define AFX_CALL_(call)                                                   \
  [](CCmdTarget* target, [[maybe_unused]] const MSG& m,                   \
     [[maybe_unused]] LRESULT* result) -> BOOL {                          \
    auto* pThis = static_cast<ThisClass*>(target);                        \
    call;                                                                 \
    return TRUE;                                                          \
  }

// Window messages
#define ON_WM_CLOSE() {WM_CLOSE, 0, 0, 0, AFX_CALL_(pThis->OnClose())},
#define ON_WM_CONTEXTMENU()                                               \
  {WM_CONTEXTMENU, 0, 0, 0, AFX_CALL_(pThis->OnContextMenu(               \
      CWnd::FromHandle(reinterpret_cast<HWND>(m.wParam)),                 \
      CPoint(m.lParam)))},
#define ON_WM_CREATE()                                                    \
  {WM_CREATE, 0, 0, 0, AFX_CALL_(*result = pThis->OnCreate(               \
      reinterpret_cast<LPCREATESTRUCT>(m.lParam)))},
#define ON_WM_CTLCOLOR()                                                  \
  {WM_CTLCOLOR, 0, 0, 0, AFX_CALL_(*result = reinterpret_cast<LRESULT>(   \
      pThis->OnCtlColor(                                                  \
          CDC::FromHandle(reinterpret_cast<HDC>(m.wParam)),               \
          CWnd::FromHandle(reinterpret_cast<HWND>(m.lParam)),             \
          m.message - WM_CTLCOLORMSGBOX)))},
#define ON_WM_DRAWITEM()                                                  \
  {WM_DRAWITEM, 0, 0, 0, AFX_CALL_(*result = TRUE;                        \
      pThis->OnDrawItem(static_cast<int>(m.wParam),                       \
                        reinterpret_cast<LPDRAWITEMSTRUCT>(m.lParam)))},
#define ON_WM_DROPFILES()                                                 \
  {WM_DROPFILES, 0, 0, 0, AFX_CALL_(                                      \
      pThis->OnDropFiles(reinterpret_cast<HDROP>(m.wParam)))},
#define ON_WM_ERASEBKGND()                                                \
  {WM_ERASEBKGND, 0, 0, 0, AFX_CALL_(*result = pThis->OnEraseBkgnd(       \
      CDC::FromHandle(reinterpret_cast<HDC>(m.wParam))))},
#define ON_WM_LBUTTONDOWN() AFX_MOUSE_(WM_LBUTTONDOWN, OnLButtonDown)
#define ON_WM_RBUTTONDOWN() AFX_MOUSE_(WM_RBUTTONDOWN, OnRButtonDown)
#define AFX_MOUSE_(message_id, handler)                                   \
  {message_id, 0, 0, 0, AFX_CALL_(pThis->handler(                         \
      static_cast<UINT>(m.wParam), CPoint(m.lParam)))},
#define ON_WM_MOUSEWHEEL()                                                \
  {WM_MOUSEWHEEL, 0, 0, 0, AFX_CALL_(*result = pThis->OnMouseWheel(       \
      LOWORD(m.wParam), static_cast<short>(HIWORD(m.wParam)),             \
      CPoint(m.lParam)))},
#define ON_WM_NCDESTROY()                                                 \
  {WM_NCDESTROY, 0, 0, 0, AFX_CALL_(pThis->OnNcDestroy())},
#define ON_WM_PAINT() {WM_PAINT, 0, 0, 0, AFX_CALL_(pThis->OnPaint())},
#define ON_WM_QUERYDRAGICON()                                             \
  {WM_QUERYDRAGICON, 0, 0, 0, AFX_CALL_(                                  \
      *result = reinterpret_cast<LRESULT>(pThis->OnQueryDragIcon()))},
#define ON_WM_SETCURSOR()                                                 \
  {WM_SETCURSOR, 0, 0, 0, AFX_CALL_(*result = pThis->OnSetCursor(         \
      CWnd::FromHandle(reinterpret_cast<HWND>(m.wParam)),                 \
      static_cast<short>(LOWORD(m.lParam)), HIWORD(m.lParam)))},
#define ON_WM_SIZE()                                                      \
  {WM_SIZE, 0, 0, 0, AFX_CALL_(pThis->OnSize(                             \
      static_cast<UINT>(m.wParam), LOWORD(m.lParam), HIWORD(m.lParam)))},
#define ON_WM_SYSCOMMAND()                                                \
  {WM_SYSCOMMAND, 0, 0, 0, AFX_CALL_(                                     \
      pThis->OnSysCommand(static_cast<UINT>(m.wParam), m.lParam))},
#define ON_WM_TIMER()                                                     \
  {WM_TIMER, 0, 0, 0, AFX_CALL_(pThis->OnTimer(m.wParam))},

// The cast picks the instance of a handler that is a template.
#define AFX_MEMBER_(member, result_type, ...)                             \
  (pThis->*static_cast<result_type (ThisClass::*)(__VA_ARGS__)>(member))

#define ON_MESSAGE(message_id, member)                                    \
  {message_id, 0, 0, 0, AFX_CALL_(                                        \
      *result = AFX_MEMBER_(member, LRESULT, WPARAM, LPARAM)(             \
          m.wParam, m.lParam))},

// Commands and control notifications
constexpr int CN_COMMAND = 0;
#define ON_COMMAND(id, member) ON_CONTROL(0, id, member)
#define ON_CONTROL(code, id, member)                                      \
  {WM_COMMAND, static_cast<WORD>(code), static_cast<WORD>(id),            \
   static_cast<WORD>(id), AFX_CALL_(AFX_MEMBER_(member, void)())},
#define ON_CONTROL_RANGE(code, first, last, member)                       \
  {WM_COMMAND, static_cast<WORD>(code), static_cast<WORD>(first),         \
   static_cast<WORD>(last), AFX_CALL_(                                    \
       AFX_MEMBER_(member, void, UINT)(LOWORD(m.wParam)))},
#define ON_BN_CLICKED(id, member) ON_CONTROL(BN_CLICKED, id, member)
#define ON_EN_CHANGE(id, member) ON_CONTROL(EN_CHANGE, id, member)
#define ON_CBN_SELCHANGE(id, member) ON_CONTROL(CBN_SELCHANGE, id, member)

#define ON_NOTIFY(code, id, member)                                       \
  {WM_NOTIFY, static_cast<UINT>(code), static_cast<WORD>(id),             \
   static_cast<WORD>(id), AFX_CALL_(                                      \
       AFX_MEMBER_(member, void, NMHDR*, LRESULT*)(                       \
           reinterpret_cast<NMHDR*>(m.lParam), result))},

// Reflected: the control handles what it sends to its parent.
#define ON_NOTIFY_REFLECT(code, member)                                   \
  {WM_REFLECT_BASE + WM_NOTIFY, static_cast<UINT>(code), 0, 0, AFX_CALL_( \
      AFX_MEMBER_(member, void, NMHDR*, LRESULT*)(                        \
          reinterpret_cast<NMHDR*>(m.lParam), result))},
// A null brush leaves the colour to the parent.
#define ON_WM_CTLCOLOR_REFLECT()                                          \
  {WM_REFLECT_BASE + WM_CTLCOLOR, 0, 0, 0, AFX_CALL_(                     \
      *result = reinterpret_cast<LRESULT>(pThis->CtlColor(                \
          CDC::FromHandle(reinterpret_cast<HDC>(m.wParam)),               \
          m.message - WM_CTLCOLORMSGBOX));                                \
      return *result != 0 ? TRUE : FALSE)},
// clang-format on
