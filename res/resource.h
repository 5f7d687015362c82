// SPDX-License-Identifier: MIT
//
// Identifiers of the resources and of the main dialog's controls. The numbers
// are part of the program's outside: scripts that drive the window use them.
#pragma once

#define IDC_STATIC (-1)

// Commands, dialogs, strings, icons
// In the system menu; the system keeps the low four bits of each for itself.
#define IDM_ABOUTBOX 16
#define IDM_LANGUAGE 32
#define IDM_SAVE_PICTURE 48
#define IDM_RECORD_RECIPE 64
#define IDM_SAVE_RECIPE 80
#define IDM_RUN_RECIPE 96
#define IDM_RECENT_FIRST 256
#define IDM_RECENT_LAST 368
#define IDM_SYSTEM_STEP 16
// Elsewhere
#define IDM_COPY_ROWS 2001
#define IDM_EXPORT 2002
#define IDD_ABOUTBOX 100
#define IDS_ABOUTBOX 101
#define IDS_HOME_PAGE 102
#define IDD_RENDAL_DIALOG 110
#define IDR_MAINFRAME 128
#define IDR_ACCELERATORS 129

// View and status row
#define IDC_VIEW 1000
#define IDC_LOAD_IMAGE 1001
#define IDC_STATUS 1002
#define IDC_ZOOM_ONE 1018
#define IDC_ZOOM_FIT 1019
#define IDC_READOUT 1021

// Line finder and the three buttons without a caption
#define IDC_SPARE_1 1020
#define IDC_FIND_LINE 1022
#define IDC_SPARE_2 1045
#define IDC_SPARE_3 1046
#define IDC_FIND_LINE_DISPLAY 1073

// Caliper: parameters
#define IDC_LENGTH 1003
#define IDC_WIDTH 1004
#define IDC_LENGTH_SPIN 1005
#define IDC_WIDTH_SPIN 1006
#define IDC_LENGTH_LABEL 1007
#define IDC_WIDTH_LABEL 1008
#define IDC_COUNT 1009
#define IDC_AMPLITUDE 1010
#define IDC_COUNT_SPIN 1011
#define IDC_COUNT_LABEL 1012
#define IDC_DIRECTION_LABEL 1013
#define IDC_DIRECTION 1014
#define IDC_SELECTION_LABEL 1024
#define IDC_SELECTION 1025
#define IDC_AMPLITUDE_SPIN 1026
#define IDC_AMPLITUDE_LABEL 1027
#define IDC_SIGMA 1028
#define IDC_SIGMA_SPIN 1029
#define IDC_SIGMA_LABEL 1030
#define IDC_REPS 1033
#define IDC_REPS_SPIN 1034
#define IDC_REPS_LABEL 1035

// Caliper: tool mode and commands
#define IDC_MODE_LINE 1015
#define IDC_MODE_CIRCLE 1016
#define IDC_MEASURE 1017
#define IDC_CLEAR_CONSOLE 1031
#define IDC_CLEAR_DISPLAY 1032
#define IDC_MODE_BAND 1036
#define IDC_MODE_NONE 1037
#define IDC_MODE_ELLIPSE 1072

// Blob: parameters
#define IDC_MIN_GRAY 1038
#define IDC_MIN_GRAY_SPIN 1039
#define IDC_MAX_GRAY 1040
#define IDC_MAX_GRAY_SPIN 1041
#define IDC_ELEMENT 1058
#define IDC_ELEMENT_WIDTH 1059
#define IDC_ELEMENT_WIDTH_SPIN 1060
#define IDC_ELEMENT_HEIGHT 1061
#define IDC_ELEMENT_HEIGHT_SPIN 1062
#define IDC_ELEMENT_WIDTH_LABEL 1063
#define IDC_ELEMENT_HEIGHT_LABEL 1064
#define IDC_BOUNDARY_TYPE 1070

// Blob: commands and list
#define IDC_THRESHOLD 1042
#define IDC_CONNECTION 1043
#define IDC_SAVE_FEATURES 1044
#define IDC_FILL_UP 1047
#define IDC_HIDDEN_BUTTON 1048
#define IDC_TOGGLE_GRAY 1049
#define IDC_REGION_LIST 1051
#define IDC_UNION 1052
#define IDC_DIFFERENCE 1053
#define IDC_INTERSECTION 1054
#define IDC_DILATION 1055
#define IDC_EROSION 1056
#define IDC_OPENING 1057
#define IDC_CLOSING 1065
#define IDC_TOP_HAT 1066
#define IDC_BOTTOM_HAT 1067
#define IDC_HIT_OR_MISS 1068
#define IDC_BOUNDARY 1069
#define IDC_SKELETON 1071

// Texts that only a change of language touches
#define IDC_CALIPER_GROUP 1101
#define IDC_ELEMENT_LABEL 1102
#define IDC_ABOUT_TEXT 1103
