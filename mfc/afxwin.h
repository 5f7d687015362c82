// SPDX-License-Identifier: MIT
//
// Windows, dialogs, basic controls, drawing objects and the application.
#pragma once

#include "afx.h"
#include "afxmsg_.h"
#include "detail/application.h"
#include "detail/controls.h"
#include "detail/dialog.h"
#include "detail/gdi.h"
#include "detail/window.h"
