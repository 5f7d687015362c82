// SPDX-License-Identifier: MIT
#ifndef RENDAL_APP_LOAD_BUTTON_H_
#define RENDAL_APP_LOAD_BUTTON_H_

#include <afxwin.h>

// A push button painted with the brush that its parent answers to
// WM_CTLCOLORBTN. The system's own push buttons ask for that brush and then do
// not use it, so this one is owner-drawn (BS_OWNERDRAW in the template).
class CLoadButton : public CButton {
 protected:
  void DrawItem(LPDRAWITEMSTRUCT item) override;
};

#endif  // RENDAL_APP_LOAD_BUTTON_H_
