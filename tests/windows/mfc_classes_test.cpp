// SPDX-License-Identifier: MIT
#include <afxcontrolbars.h>
#include <afxdlgs.h>

#include "tests/windows/gui_objects.h"
#include "tests/windows/noting_dlg.h"

namespace {

class MfcClasses : public Mfc {};

TEST_F(MfcClasses, HandleGivesTheBoundObjectElseOneTemporary) {
  Run([](CNotingDlg& d) {
    EXPECT_EQ(d.GetDlgItem(IDC_EDIT), &d.m_edit);
    CWnd* label = d.GetDlgItem(IDC_LABEL);
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(d.GetDlgItem(IDC_LABEL), label);
    EXPECT_EQ(label->GetParent(), &d);
    EXPECT_EQ(CWnd::FromHandlePermanent(label->m_hWnd), nullptr);
    EXPECT_EQ(d.GetDlgItem(4711), nullptr);
  });
}

TEST_F(MfcClasses, TemporariesLiveUntilTheOutermostLoopIsIdle) {
  Run([](CNotingDlg& d) {
    const CWnd* label = d.GetDlgItem(IDC_LABEL);
    CNotingDlg inner([](CNotingDlg& i) { i.EndDialog(IDOK); });
    inner.DoModal();
    EXPECT_EQ(d.GetDlgItem(IDC_LABEL), label) << "dropped by a nested loop";
    EXPECT_GT(WindowMap().TemporaryCount(), 0u);
    d.m_atIdle = [&d] {
      Note("temporaries " + std::to_string(WindowMap().TemporaryCount()));
      d.EndDialog(IDOK);
    };
    d.SetTimer(98, 20, nullptr);
    d.m_keepOpen = true;
  });
  EXPECT_TRUE(Called("temporaries 0"));
}

TEST_F(MfcClasses, HeapWindowDeletesItself) {
  static int alive = 0;
  class CHeapWnd : public CWnd {
   public:
    CHeapWnd() { ++alive; }
    ~CHeapWnd() override { --alive; }
    void PostNcDestroy() override { delete this; }
  };
  const LPCTSTR name = AfxRegisterWndClass(0);
  auto* window = new CHeapWnd;
  ASSERT_TRUE(
      window->CreateEx(0, name, L"", WS_POPUP, CRect(0, 0, 9, 9), nullptr, 0));
  EXPECT_EQ(CWnd::FromHandlePermanent(*window), window);
  window->DestroyWindow();
  EXPECT_EQ(alive, 0);
  EXPECT_FALSE((new CHeapWnd)
                   ->CreateEx(0, L"no such class", L"", WS_POPUP,
                              CRect(0, 0, 9, 9), nullptr, 0));
  EXPECT_EQ(alive, 0);
}

TEST_F(MfcClasses, WindowOnTheStackIsDestroyedWithItsObject) {
  HWND handle = nullptr;
  {
    CWnd window;
    ASSERT_TRUE(window.CreateEx(0, AfxRegisterWndClass(0), L"", WS_POPUP,
                                CRect(0, 0, 9, 9), nullptr, 0));
    handle = window;
    EXPECT_TRUE(::IsWindow(handle));
  }
  EXPECT_FALSE(::IsWindow(handle));
}

TEST_F(MfcClasses, UnsubclassedControlHasItsOwnProcedureAgain) {
  Run([](CNotingDlg& d) {
    const HWND handle = ::GetDlgItem(d, IDC_FIRST);
    const auto before = ::GetWindowLongPtrW(handle, GWLP_WNDPROC);
    CButton button;
    ASSERT_TRUE(button.SubclassDlgItem(IDC_FIRST, &d));
    EXPECT_NE(::GetWindowLongPtrW(handle, GWLP_WNDPROC), before);
    EXPECT_EQ(button.UnsubclassWindow(), handle);
    EXPECT_EQ(::GetWindowLongPtrW(handle, GWLP_WNDPROC), before);
    EXPECT_FALSE(button.SubclassDlgItem(4711, &d));
  });
}

TEST_F(MfcClasses, StylesChangeOnlyWhenTheyDiffer) {
  Run([](CNotingDlg& d) {
    EXPECT_TRUE(d.ModifyStyle(WS_THICKFRAME, 0, SWP_FRAMECHANGED));
    EXPECT_EQ(d.GetStyle() & WS_THICKFRAME, 0u);
    EXPECT_FALSE(d.ModifyStyle(WS_THICKFRAME, 0));
  });
}

TEST_F(MfcClasses, RectanglesConvertBetweenScreenAndClient) {
  Run([](CNotingDlg& d) {
    CRect rect;
    d.m_edit.GetWindowRect(rect);
    CRect client = rect;
    d.ScreenToClient(client);
    d.m_edit.MoveWindow(client);
    CRect moved;
    d.m_edit.GetWindowRect(moved);
    EXPECT_EQ(moved, rect);
    d.ClientToScreen(client);
    EXPECT_EQ(client, rect);
  });
}

TEST_F(MfcClasses, ListKeepsColumnsAndLongTexts) {
  Run([](CNotingDlg& d) {
    const CString text(L'\u6d4b', 300);
    EXPECT_EQ(d.m_list.InsertColumn(0, L"id", LVCFMT_CENTER, 40), 0);
    EXPECT_EQ(d.m_list.InsertColumn(1, L"area", LVCFMT_CENTER, 80), 1);
    EXPECT_EQ(d.m_list.GetColumnWidth(1), 80);
    d.m_list.SetExtendedStyle(LVS_EX_GRIDLINES | LVS_EX_FULLROWSELECT);
    EXPECT_EQ(d.m_list.GetExtendedStyle(),
              DWORD{LVS_EX_GRIDLINES | LVS_EX_FULLROWSELECT});
    EXPECT_EQ(d.m_list.InsertItem(0, L"1"), 0);
    EXPECT_TRUE(d.m_list.SetItemText(0, 1, text));
    EXPECT_EQ(d.m_list.GetItemText(0, 0), L"1");
    EXPECT_EQ(d.m_list.GetItemText(0, 1), text);
    EXPECT_TRUE(d.m_list.DeleteAllItems());
    EXPECT_EQ(d.m_list.GetItemCount(), 0);
  });
}

TEST_F(MfcClasses, ComboGivesItsTextsBack) {
  Run([](CNotingDlg& d) {
    d.m_combo.AddString(L"\u5706\u5f62");
    d.m_combo.AddString(L"b");
    d.m_combo.SetCurSel(0);
    EXPECT_EQ(d.m_combo.GetCount(), 2);
    CString text;
    d.m_combo.GetLBText(d.m_combo.GetCurSel(), text);
    EXPECT_EQ(text, L"\u5706\u5f62");
    d.m_combo.ResetContent();
    EXPECT_EQ(d.m_combo.GetCurSel(), -1);
    d.m_combo.GetLBText(5, text);
    EXPECT_TRUE(text.IsEmpty());
  });
}

TEST_F(MfcClasses, SystemMenuTakesItems) {
  Run([](CNotingDlg& d) {
    CString about;
    ASSERT_TRUE(about.LoadString(IDS_GREETING));
    CMenu* menu = d.GetSystemMenu(FALSE);
    ASSERT_NE(menu, nullptr);
    menu->AppendMenu(MF_SEPARATOR);
    menu->AppendMenu(MF_STRING, 16, about);
    CString text;
    menu->GetMenuString(16, text, MF_BYCOMMAND);
    EXPECT_EQ(text, about);
  });
}

TEST_F(MfcClasses, ManyDialogsLeaveNoGraphicsObjects) {
  const auto round = [] {
    Run([](CNotingDlg& d) { d.RedrawWindow(); });
    AfxLockTempMaps();
    AfxUnlockTempMaps(TRUE);
  };
  for (int i = 0; i < 3; ++i) round();  // first use of fonts and brushes
  const size_t before = LiveGdiObjects();
  for (int i = 0; i < 20; ++i) round();
  EXPECT_EQ(LiveGdiObjects(), before);
}

// The file dialog is worked from a timer that runs in its own message loop.
HWND FileDialogWindow() {
  for (HWND window = nullptr;
       (window = ::FindWindowExW(nullptr, window, L"#32770", nullptr));) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process == ::GetCurrentProcessId() && ::IsWindowVisible(window) &&
        CWnd::FromHandlePermanent(window) == nullptr) {
      return window;
    }
  }
  return nullptr;
}

CString g_typedPath;
int g_pressed = IDOK;

BOOL CALLBACK TypeIntoVisibleEdit(HWND window, LPARAM) {
  wchar_t name[16];
  ::GetClassNameW(window, name, 16);
  if (::lstrcmpiW(name, L"Edit") != 0 || !::IsWindowVisible(window)) {
    return TRUE;
  }
  ::SetWindowTextW(window, g_typedPath);
  return FALSE;
}

void CALLBACK WorkFileDialog(HWND, UINT, UINT_PTR timer, DWORD) {
  const HWND window = FileDialogWindow();
  if (window == nullptr) return;
  ::KillTimer(nullptr, timer);
  ::EnumChildWindows(window, TypeIntoVisibleEdit, 0);
  ::PostMessageW(window, WM_COMMAND, g_pressed, 0);
}

TEST_F(MfcClasses, FileDialogGivesTheChosenPathOrCancel) {
  wchar_t own_path[MAX_PATH];
  ::GetModuleFileNameW(nullptr, own_path, MAX_PATH);
  const LPCTSTR filter = L"Programs (*.exe)|*.exe|All Files (*.*)|*.*||";
  const DWORD flags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
  for (const int pressed : {IDCANCEL, IDOK}) {
    g_typedPath = own_path;
    g_pressed = pressed;
    ::SetTimer(nullptr, 0, 300, WorkFileDialog);
    CFileDialog dialog(TRUE, nullptr, nullptr, flags, filter);
    EXPECT_EQ(dialog.DoModal(), pressed);
    EXPECT_EQ(dialog.GetPathName(), pressed == IDOK ? own_path : L"");
  }
}

TEST_F(MfcClasses, VisualManagerIsTheClassSetLast) {
  CMFCVisualManager::SetDefaultManager(RUNTIME_CLASS(CMFCVisualManagerWindows));
  EXPECT_STREQ(CMFCVisualManager::GetDefaultManager()->m_lpszClassName,
               "CMFCVisualManagerWindows");
}

}  // namespace
