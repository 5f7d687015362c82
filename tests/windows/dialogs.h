// SPDX-License-Identifier: MIT
//
// Ids of the dialogs that the window tests open.
#pragma once

#define IDD_PLAIN 200
#define IDD_SPIN 201
#define IDD_LABEL 202

#define IDC_FIRST 1001
#define IDC_SECOND 1002
#define IDC_EDIT 1003
#define IDC_SPIN 1004
#define IDC_COMBO 1005
#define IDC_LIST 1006
#define IDC_LABEL 1007
#define IDC_OTHER_LABEL 1008

#define IDS_GREETING 300
