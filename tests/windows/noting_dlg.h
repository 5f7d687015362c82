// SPDX-License-Identifier: MIT
//
// A dialog that notes which of its handlers ran, and the fixture that opens it.
// One inclusion per test program: the application object lives here.
#pragma once

#include <afxcmn.h>
#include <afxdialogex.h>
#include <afxwin.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "mfc/detail/handle_maps.h"
#include "tests/windows/dialogs.h"

using Lines = std::vector<std::string>;

inline Lines g_calls;

inline void Note(const std::string& call) { g_calls.push_back(call); }

// Records what the framework would show in a box that nobody closes.
class CTestApp : public CWinApp {
 public:
  CTestApp() : CWinApp(L"mfc test") {}
  int DoMessageBox(LPCTSTR prompt, UINT, UINT) override {
    Note("box:" + std::string(CStringA(prompt)));
    return IDOK;
  }
};

inline CTestApp g_testApp;

class CReflectingEdit : public CEdit {
 public:
  afx_msg HBRUSH CtlColor(CDC* dc, UINT type) {
    if (m_hue == 0) return nullptr;
    Note("CtlColor " + std::to_string(type));
    dc->SetTextColor(m_hue);
    return m_brush;
  }
  COLORREF m_hue = 0;
  CBrush m_brush{RGB(1, 2, 3)};

  void PreSubclassWindow() override { Note("PreSubclassWindow"); }
  void PostNcDestroy() override { Note("PostNcDestroy"); }
  DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(CReflectingEdit, CEdit)
ON_WM_CTLCOLOR_REFLECT()
END_MESSAGE_MAP()

class CReflectingSpin : public CSpinButtonCtrl {
 public:
  afx_msg void OnDeltaPos(NMHDR* header, LRESULT* result) {
    Note("delta " +
         std::to_string(reinterpret_cast<NMUPDOWN*>(header)->iDelta));
    *result = m_answer;
  }
  LRESULT m_answer = 0;
  DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(CReflectingSpin, CSpinButtonCtrl)
ON_NOTIFY_REFLECT(UDN_DELTAPOS, &CReflectingSpin::OnDeltaPos)
END_MESSAGE_MAP()

// A mixin after the framework's base must not disturb the casts.
struct Mixin {
  virtual ~Mixin() = default;
  int m_mixed = 42;
};

class CNotingDlg : public CDialogEx, public Mixin {
 public:
  explicit CNotingDlg(std::function<void(CNotingDlg&)> script = nullptr)
      : CDialogEx(IDD_PLAIN), m_script(std::move(script)) {}

  BOOL OnInitDialog() override {
    CDialogEx::OnInitDialog();
    Note("OnInitDialog");
    if (m_throwFromInit) throw std::runtime_error("init");
    if (m_script) SetTimer(99, 1, nullptr);
    return TRUE;
  }
  void DoDataExchange(CDataExchange* exchange) override {
    CDialogEx::DoDataExchange(exchange);
    DDX_Control(exchange, IDC_EDIT, m_edit);
    DDX_Control(exchange, IDC_SPIN, m_spin);
    DDX_Control(exchange, IDC_COMBO, m_combo);
    DDX_Control(exchange, IDC_LIST, m_list);
    if (m_exchangeNumber) {
      DDX_Text(exchange, IDC_EDIT, m_number);
    } else {
      DDX_Text(exchange, IDC_EDIT, m_text);
    }
  }
  BOOL DestroyWindow() override {
    Note("DestroyWindow");
    return CDialogEx::DestroyWindow();
  }
  BOOL PreTranslateMessage(MSG* message) override {
    if (message->message == WM_KEYDOWN) Note("PreTranslate");
    return CDialogEx::PreTranslateMessage(message);
  }

  CString m_text = L"\u5b57";
  int m_number = 7;
  bool m_exchangeNumber = false;
  bool m_throwFromInit = false;
  CReflectingEdit m_edit;
  CReflectingSpin m_spin;
  CComboBox m_combo;
  CListCtrl m_list;

 protected:
  afx_msg void OnFirst() { Note("first " + std::to_string(m_mixed)); }
  afx_msg void OnThrow() { throw std::runtime_error("no memory left"); }
  template <int kWhich>
  afx_msg void OnTemplated() {
    Note("templated " + std::to_string(kWhich));
  }
  afx_msg void OnRange(UINT id) { Note("range " + std::to_string(id)); }
  afx_msg void OnEdited() { Note("edited"); }
  afx_msg void OnSelected() { Note("selected"); }
  afx_msg LRESULT OnPrivate(WPARAM w, LPARAM l) {
    return static_cast<LRESULT>(w) + l;
  }
  afx_msg void OnTimer(UINT_PTR id) {
    Note("timer " + std::to_string(id));
    KillTimer(id);
    if (id == 99) m_script(*this);
    if (id == 98) m_atIdle();
    CDialogEx::OnTimer(id);
  }
  afx_msg BOOL OnMouseWheel(UINT flags, short delta, CPoint point) {
    Note("wheel " + std::to_string(flags) + " " + std::to_string(delta) + " " +
         std::to_string(point.x) + " " + std::to_string(point.y));
    return TRUE;
  }
  afx_msg HBRUSH OnCtlColor(CDC* dc, CWnd* window, UINT type) {
    const HBRUSH brush = CDialogEx::OnCtlColor(dc, window, type);
    return window->GetDlgCtrlID() == IDC_LABEL ? HBRUSH(m_labelBrush) : brush;
  }
  afx_msg void OnSysCommand(UINT id, LPARAM l) {
    if ((id & 0xFFF0) == 16) return Note("about");
    CDialogEx::OnSysCommand(id, l);
  }
  afx_msg HCURSOR OnQueryDragIcon() {
    return ::LoadIconW(nullptr, IDI_INFORMATION);
  }
  afx_msg void OnClose() {
    Note("close");
    EndDialog(IDCANCEL);
    CDialogEx::OnClose();
  }
  afx_msg void OnPaint() {
    if (m_throwFromPaint) throw std::bad_alloc();
    CDialogEx::OnPaint();
  }
  DECLARE_MESSAGE_MAP()

 public:
  bool m_throwFromPaint = false;
  bool m_keepOpen = false;
  std::function<void()> m_atIdle;

 private:
  std::function<void(CNotingDlg&)> m_script;
  CBrush m_labelBrush{RGB(0, 255, 0)};
};

constexpr UINT kPrivateMessage = WM_APP + 1;

// clang-format off
BEGIN_MESSAGE_MAP(CNotingDlg, CDialogEx)
  ON_WM_SYSCOMMAND()
  ON_WM_PAINT()
  ON_WM_QUERYDRAGICON()
  ON_WM_MOUSEWHEEL()
  ON_WM_TIMER()
  ON_WM_CTLCOLOR()
  ON_WM_CLOSE()
  ON_BN_CLICKED(IDC_FIRST, &CNotingDlg::OnFirst)
  ON_BN_CLICKED(IDC_SECOND, &CNotingDlg::OnThrow)
  ON_BN_CLICKED(2000, &CNotingDlg::OnTemplated<5>)
  ON_CONTROL_RANGE(BN_CLICKED, 2001, 2003, &CNotingDlg::OnRange)
  ON_EN_CHANGE(IDC_EDIT, &CNotingDlg::OnEdited)
  ON_CBN_SELCHANGE(IDC_COMBO, &CNotingDlg::OnSelected)
  ON_MESSAGE(kPrivateMessage, &CNotingDlg::OnPrivate)
END_MESSAGE_MAP()
// clang-format on

class Mfc : public ::testing::Test {
 protected:
  void SetUp() override { g_calls.clear(); }
  // Whatever a test did, nothing of it may stay.
  void TearDown() override {
    AfxLockTempMaps();
    AfxUnlockTempMaps(TRUE);
    EXPECT_EQ(WindowMap().PermanentCount(), 0u);
    EXPECT_EQ(WindowMap().TemporaryCount(), 0u);
    EXPECT_EQ(GdiObjectMap().PermanentCount(), 0u);
    EXPECT_EQ(DeviceContextMap().PermanentCount(), 0u);
  }
  // The calls noted since the last look.
  static Lines Calls() { return std::exchange(g_calls, {}); }
  static bool Called(const std::string& call) {
    return std::find(g_calls.begin(), g_calls.end(), call) != g_calls.end();
  }

  // Opens the dialog and runs the script inside its message loop.
  static INT_PTR Run(std::function<void(CNotingDlg&)> script) {
    CNotingDlg dialog([&](CNotingDlg& d) {
      g_calls.clear();
      script(d);
      if (!d.m_keepOpen) d.EndDialog(IDOK);
    });
    return dialog.DoModal();
  }
};

inline void Click(const CNotingDlg& dialog, int id) {
  ::SendMessageW(::GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

// One up or down arrow click of the spin control.
inline void ClickArrow(HWND spin, bool up) {
  RECT rect;
  ::GetClientRect(spin, &rect);
  const LPARAM at = MAKELPARAM(rect.right / 2, up ? 3 : rect.bottom - 3);
  ::SendMessageW(spin, WM_LBUTTONDOWN, MK_LBUTTON, at);
  ::SendMessageW(spin, WM_LBUTTONUP, 0, at);
}

// Lets everything that is posted be handled.
inline void PumpMessages() {
  MSG message;
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    ::DispatchMessageW(&message);
  }
}
