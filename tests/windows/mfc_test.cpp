// SPDX-License-Identifier: MIT
#include "tests/windows/noting_dlg.h"

namespace {

TEST_F(Mfc, ModalDialogEndsWithTheResultGiven) {
  CNotingDlg dialog([](CNotingDlg& d) { d.EndDialog(77); });
  EXPECT_EQ(dialog.DoModal(), 77);
  EXPECT_EQ(dialog.m_hWnd, nullptr);
}

TEST_F(Mfc, ModalDialogCanRunAgain) {
  CNotingDlg dialog([](CNotingDlg& d) { d.EndDialog(5); });
  EXPECT_EQ(dialog.DoModal(), 5);
  EXPECT_EQ(dialog.DoModal(), 5);
}

TEST_F(Mfc, ControlsAreBoundBeforeInitAndReleasedAfterDestroy) {
  CNotingDlg dialog([](CNotingDlg& d) { d.EndDialog(IDOK); });
  dialog.DoModal();
  EXPECT_EQ(Calls(), (Lines{"PreSubclassWindow", "edited", "OnInitDialog",
                            "timer 99", "DestroyWindow", "PostNcDestroy"}));
}

TEST_F(Mfc, DialogWithoutTemplateReturnsMinusOne) {
  class CLostDlg : public CDialogEx {
   public:
    CLostDlg() : CDialogEx(9999) {}
    void PostNcDestroy() override { Note("PostNcDestroy"); }
  };
  CLostDlg dialog;
  EXPECT_EQ(dialog.DoModal(), -1);
  EXPECT_EQ(dialog.m_hWnd, nullptr);
  EXPECT_EQ(Calls(), Lines{"PostNcDestroy"});
}

TEST_F(Mfc, EndDialogInsideInitEndsWithoutALoop) {
  class CShortDlg : public CDialogEx {
   public:
    CShortDlg() : CDialogEx(IDD_PLAIN) {}
    BOOL OnInitDialog() override {
      CDialogEx::OnInitDialog();
      EndDialog(12);
      return TRUE;
    }
  };
  CShortDlg dialog;
  EXPECT_EQ(dialog.DoModal(), 12);
}

TEST_F(Mfc, CloseBoxEndsWithCancel) {
  CNotingDlg dialog([](CNotingDlg& d) { d.PostMessage(WM_CLOSE); });
  EXPECT_EQ(dialog.DoModal(), IDCANCEL);
}

TEST_F(Mfc, EscapeAndReturnEndWithCancelAndOk) {
  for (const auto& [key, result] :
       {std::pair{VK_ESCAPE, IDCANCEL}, std::pair{VK_RETURN, IDOK}}) {
    CNotingDlg dialog([key](CNotingDlg& d) {
      d.m_edit.SetFocus();
      d.m_edit.PostMessage(WM_KEYDOWN, key, 0);
    });
    EXPECT_EQ(dialog.DoModal(), result);
    EXPECT_TRUE(Called("PreTranslate"));
  }
}

TEST_F(Mfc, OwnerIsDisabledWhileADialogIsOpen) {
  Run([](CNotingDlg& outer) {
    CNotingDlg inner([&](CNotingDlg& d) {
      EXPECT_FALSE(outer.IsWindowEnabled());
      EXPECT_TRUE(d.IsWindowVisible());
      d.EndDialog(IDOK);
    });
    g_testApp.m_pMainWnd = &outer;
    EXPECT_EQ(inner.DoModal(), IDOK);
    EXPECT_TRUE(outer.IsWindowEnabled());
  });
  EXPECT_EQ(g_testApp.m_pMainWnd, nullptr) << "forgotten when destroyed";
}

TEST_F(Mfc, QuitMessageEndsTheLoopAndStays) {
  CNotingDlg dialog([](CNotingDlg&) { ::PostQuitMessage(3); });
  EXPECT_EQ(dialog.DoModal(), -1);
  MSG message{};
  EXPECT_TRUE(::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
  EXPECT_EQ(message.wParam, 3u);
}

TEST_F(Mfc, OwnerIsEnabledAgainWhenTheLoopIsQuit) {
  Run([](CNotingDlg& outer) {
    g_testApp.m_pMainWnd = &outer;
    CNotingDlg inner([](CNotingDlg&) { ::PostQuitMessage(0); });
    EXPECT_EQ(inner.DoModal(), -1);
    EXPECT_TRUE(outer.IsWindowEnabled());
    MSG quit{};
    ::PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
  });
}

TEST_F(Mfc, ButtonReachesItsHandlerThroughAMixinBase) {
  Run([](CNotingDlg& d) {
    Click(d, IDC_FIRST);
    EXPECT_EQ(Calls(), Lines{"first 42"});
  });
}

TEST_F(Mfc, CommandsReachTemplatedAndRangeHandlers) {
  Run([](CNotingDlg& d) {
    for (const int id : {2000, 2001, 2003, 2004}) d.SendMessage(WM_COMMAND, id);
    EXPECT_EQ(Calls(), (Lines{"templated 5", "range 2001", "range 2003"}));
  });
}

TEST_F(Mfc, EditAndComboNotificationsReachTheDialog) {
  Run([](CNotingDlg& d) {
    d.m_edit.SetWindowText(L"12");
    d.SendMessage(WM_COMMAND, MAKEWPARAM(IDC_COMBO, CBN_SELCHANGE),
                  reinterpret_cast<LPARAM>(d.m_combo.m_hWnd));
    EXPECT_EQ(Calls(), (Lines{"edited", "selected"}));
  });
}

TEST_F(Mfc, PrivateMessageReturnsItsHandlersResult) {
  Run([](CNotingDlg& d) {
    EXPECT_EQ(d.SendMessage(kPrivateMessage, 30, 12), 42);
  });
}

TEST_F(Mfc, WheelCarriesSignedDeltaAndPosition) {
  Run([](CNotingDlg& d) {
    d.SendMessage(WM_MOUSEWHEEL, MAKEWPARAM(MK_SHIFT, -120),
                  MAKELPARAM(-5, 300));
    EXPECT_EQ(Calls(), Lines{"wheel 4 -120 -5 300"});
  });
}

TEST_F(Mfc, SystemCommandIsHandledOrPassedOn) {
  Run([](CNotingDlg& d) {
    d.SendMessage(WM_SYSCOMMAND, 16);
    EXPECT_EQ(Calls(), Lines{"about"});
    d.PostMessage(WM_SYSCOMMAND, SC_CLOSE);
    PumpMessages();
    EXPECT_EQ(Calls(), Lines{"close"});
  });
}

TEST_F(Mfc, DragIconComesFromTheHandler) {
  Run([](CNotingDlg& d) {
    EXPECT_EQ(d.SendMessage(WM_QUERYDRAGICON),
              reinterpret_cast<LRESULT>(::LoadIconW(nullptr, IDI_INFORMATION)));
  });
}

TEST_F(Mfc, ParentColorsItsControls) {
  Run([](CNotingDlg& d) {
    CClientDC dc(&d);
    const auto brush = reinterpret_cast<HGDIOBJ>(
        d.SendMessage(WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc.m_hDC),
                      reinterpret_cast<LPARAM>(::GetDlgItem(d, IDC_LABEL))));
    LOGBRUSH description{};
    ::GetObjectW(brush, sizeof(description), &description);
    EXPECT_EQ(description.lbColor, RGB(0, 255, 0));
  });
}

TEST_F(Mfc, ControlColorsItselfOrLeavesItToTheParent) {
  Run([](CNotingDlg& d) {
    CClientDC dc(&d);
    const auto ask = [&] {
      return reinterpret_cast<HGDIOBJ>(
          d.SendMessage(WM_CTLCOLOREDIT, reinterpret_cast<WPARAM>(dc.m_hDC),
                        reinterpret_cast<LPARAM>(d.m_edit.m_hWnd)));
    };
    EXPECT_NE(ask(), d.m_edit.m_brush.m_hObject);
    d.m_edit.m_hue = RGB(9, 8, 7);
    g_calls.clear();
    EXPECT_EQ(ask(), d.m_edit.m_brush.m_hObject);
    EXPECT_EQ(Calls(), Lines{"CtlColor 1"});
    EXPECT_EQ(dc.GetTextColor(), RGB(9, 8, 7));
  });
}

TEST_F(Mfc, ReflectedNotificationDecidesWhetherTheSpinMoves) {
  Run([](CNotingDlg& d) {
    d.m_spin.SetRange32(0, 10);
    d.m_spin.SetPos(4);
    g_calls.clear();
    ClickArrow(d.m_spin, true);
    EXPECT_EQ(Calls(), (Lines{"delta 1", "edited"}));
    EXPECT_EQ(d.m_spin.GetPos32(), 5);
    d.m_spin.m_answer = 1;
    ClickArrow(d.m_spin, false);
    EXPECT_EQ(Calls(), Lines{"delta -1"});
    EXPECT_EQ(d.m_spin.GetPos32(), 5);
  });
}

TEST_F(Mfc, ThrowingHandlerLeavesTheDialogAlive) {
  Run([](CNotingDlg& d) {
    Click(d, IDC_SECOND);
    EXPECT_EQ(Calls(), Lines{"box:no memory left"});
    Click(d, IDC_FIRST);
    EXPECT_EQ(Calls(), Lines{"first 42"});
  });
}

TEST_F(Mfc, ThrowingInitLeavesTheDialogAlive) {
  CNotingDlg dialog([](CNotingDlg&) {});
  dialog.m_throwFromInit = true;
  ::SetTimer(nullptr, 0, 50, [](HWND, UINT, UINT_PTR timer, DWORD) {
    ::KillTimer(nullptr, timer);
    for (HWND window = nullptr;
         (window = ::FindWindowExW(nullptr, window, L"#32770", nullptr));) {
      if (CWnd::FromHandlePermanent(window))
        ::PostMessageW(window, WM_CLOSE, 0, 0);
    }
  });
  EXPECT_EQ(dialog.DoModal(), IDCANCEL);
  EXPECT_TRUE(Called("box:init"));
}

TEST_F(Mfc, ThrowingPaintIsNotPaintedOverAndOver) {
  Run([](CNotingDlg& d) {
    d.m_throwFromPaint = true;
    d.Invalidate();
    PumpMessages();  // would not come back
    d.m_throwFromPaint = false;
    EXPECT_EQ(Calls(), Lines{"box:std::bad_alloc"});
  });
}

TEST_F(Mfc, ThrownObjectIsDeletedOnceReported) {
  static int alive = 0;
  class CCounted : public CException {
   public:
    CCounted() { ++alive; }
    ~CCounted() override { --alive; }
  };
  class CThrowingDlg : public CDialogEx {
   public:
    CThrowingDlg() : CDialogEx(IDD_PLAIN) {}
    LRESULT WindowProc(UINT message, WPARAM w, LPARAM l) override {
      if (message == kPrivateMessage) throw new CCounted;
      return CDialogEx::WindowProc(message, w, l);
    }
  };
  CThrowingDlg dialog;
  ASSERT_TRUE(dialog.Create(IDD_PLAIN));
  EXPECT_EQ(dialog.SendMessage(kPrivateMessage), 0);
  EXPECT_EQ(Calls(), Lines{"box:Unknown error."});
  EXPECT_EQ(alive, 0);
  dialog.DestroyWindow();
}

TEST_F(Mfc, TextIsExchangedBothWays) {
  Run([](CNotingDlg& d) {
    CString shown;
    d.m_edit.GetWindowText(shown);
    EXPECT_EQ(shown, L"\u5b57");
    d.m_edit.SetWindowText(L"new");
    EXPECT_TRUE(d.UpdateData(TRUE));
    EXPECT_EQ(d.m_text, L"new");
  });
}

TEST_F(Mfc, RefusedNumberKeepsTheMemberAndTheDialogOpen) {
  Run([](CNotingDlg& d) {
    d.m_exchangeNumber = true;
    d.m_edit.SetWindowText(L"x12");
    g_calls.clear();
    EXPECT_FALSE(d.UpdateData(TRUE));
    EXPECT_EQ(d.m_number, 7);
    EXPECT_EQ(Calls(), Lines{"box:Please enter an integer."});
    EXPECT_EQ(CWnd::GetFocus(), &d.m_edit);
    d.SendMessage(WM_COMMAND, IDOK);
    EXPECT_TRUE(d.IsWindowVisible()) << "OK must not close it";
    d.m_edit.SetWindowText(L"-12");
    EXPECT_TRUE(d.UpdateData(TRUE));
    EXPECT_EQ(d.m_number, -12);
  });
}

TEST_F(Mfc, BindingAMissingControlIsReported) {
  class CWrongDlg : public CDialogEx {
   public:
    CWrongDlg() : CDialogEx(IDD_PLAIN) {}
    void DoDataExchange(CDataExchange* exchange) override {
      DDX_Control(exchange, 4711, m_control);
    }
    CEdit m_control;
  };
  CWrongDlg dialog;
  ASSERT_TRUE(dialog.Create(IDD_PLAIN));
  EXPECT_EQ(Calls(), Lines{"box:Unknown error."});
  EXPECT_EQ(dialog.m_control.m_hWnd, nullptr);
  dialog.DestroyWindow();
}

}  // namespace
