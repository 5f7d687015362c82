// SPDX-License-Identifier: MIT
//
// Dialogs and the exchange of data with their controls. Included by afxwin.h.
#pragma once

#include "window.h"

class CDialog : public CWnd {
 public:
  CDialog() = default;
  explicit CDialog(UINT template_id, CWnd* parent = nullptr)
      : m_nIDTemplate(template_id), m_pParentWnd(parent) {}

  // Shows the dialog with a message loop of its own, its owner disabled;
  // returns what EndDialog() was given, or -1 if the dialog cannot be made.
  virtual INT_PTR DoModal();
  // Modeless; the caller shows and destroys it.
  BOOL Create(UINT template_id, CWnd* parent = nullptr);
  using CWnd::Create;
  void EndDialog(int result);

  virtual BOOL OnInitDialog();
  BOOL PreTranslateMessage(MSG* message) override;
  BOOL OnCmdMsg(UINT id, int code, const MSG& message,
                LRESULT* result) override;

 protected:
  virtual void OnOK();
  virtual void OnCancel();

  DECLARE_MESSAGE_MAP()

 private:
  BOOL CreateFromTemplate(HWND owner);
  void RunModalLoop();

  UINT m_nIDTemplate = 0;
  CWnd* m_pParentWnd = nullptr;
  bool m_isModal = false;
  bool m_hasEnded = false;
  INT_PTR m_nModalResult = -1;
};

// One pass over the controls, either way.
class CDataExchange {
 public:
  CDataExchange(CWnd* dialog, BOOL save_and_validate)
      : m_bSaveAndValidate(save_and_validate), m_pDlgWnd(dialog) {}

  BOOL m_bSaveAndValidate;  // TRUE: controls to members
  CWnd* m_pDlgWnd;

  // The control; ends the program's pass with an exception if there is none.
  HWND PrepareCtrl(int id);
  HWND PrepareEditCtrl(int id);
  // Gives the refused edit the focus and ends the pass; UpdateData() returns
  // FALSE.
  void Fail();

 private:
  HWND m_hWndLastControl = nullptr;
  bool m_isEdit = false;
};

// Binds `control` to the window; on later passes does nothing.
void AFXAPI DDX_Control(CDataExchange* exchange, int id, CWnd& control);
void AFXAPI DDX_Text(CDataExchange* exchange, int id, CString& text);
void AFXAPI DDX_Text(CDataExchange* exchange, int id, int& value);
