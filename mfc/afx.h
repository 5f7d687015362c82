// SPDX-License-Identifier: MIT
//
// Base of the framework stand-in: system headers, diagnostics, run-time class
// information and exceptions.
//
// This folder stands in for the Microsoft Foundation Classes where the compiler
// has none. Header, class, member and macro names are the framework's own, so
// the same application sources compile against either; what is declared here is
// only what this program uses. See docs/architecture.md.
#pragma once

#ifndef UNICODE
#error "the stand-in is Unicode only: compile with UNICODE and _UNICODE"
#endif

// The system headers need this order.
// clang-format off
#include <windows.h>
#include <commctrl.h>
#include <commdlg.h>
#include <shellapi.h>
#include <tchar.h>
// clang-format on

#include <cstdint>

#include "afxstr.h"
#include "atltypes.h"

#define afx_msg
#define AFXAPI __stdcall

#ifdef NDEBUG
#define ASSERT(condition) ((void)0)
#else
// Reports a broken precondition to the debugger and ends the program.
void AFXAPI AfxAssertFailedLine(const char* file, int line);
#define ASSERT(condition) \
  ((condition) ? (void)0 : AfxAssertFailedLine(__FILE__, __LINE__))
#endif

class CObject;

// Run-time class information, as far as handing over a class goes.
struct CRuntimeClass {
  const char* m_lpszClassName;
  CObject* (*m_pfnCreateObject)();

  CObject* CreateObject() const { return m_pfnCreateObject(); }
};

#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

#define DECLARE_DYNCREATE(class_name)           \
 public:                                        \
  static const CRuntimeClass class##class_name; \
  static CObject* CreateObject() { return new class_name; }

#define IMPLEMENT_DYNCREATE(class_name, base_name)      \
  const CRuntimeClass class_name::class##class_name = { \
      #class_name, &class_name::CreateObject};

class CObject {
 public:
  virtual ~CObject() = default;
  CObject(const CObject&) = delete;
  CObject& operator=(const CObject&) = delete;

 protected:
  CObject() = default;
};

// Thrown by pointer, as everywhere in the framework; whoever catches one calls
// Delete().
class CException : public CObject {
 public:
  void Delete() { delete this; }
  // Copies at most `size` - 1 characters and a terminator into `text`.
  virtual BOOL GetErrorMessage(LPTSTR text, UINT size, UINT* help = nullptr);
  // Shows the message in a message box; returns the button pressed.
  virtual int ReportError(UINT type = MB_OK, UINT message_id = 0);
};

class CUserException : public CException {};
class CInvalidArgException : public CException {};
[[noreturn]] void AFXAPI AfxThrowUserException();
[[noreturn]] void AFXAPI AfxThrowInvalidArgException();

HINSTANCE AFXAPI AfxGetInstanceHandle();
inline HINSTANCE AfxGetResourceHandle() { return AfxGetInstanceHandle(); }
