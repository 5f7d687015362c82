// SPDX-License-Identifier: MIT
//
// The dialog's wording: what its template does not say itself. The template
// (res/rendal.rc) carries the Chinese captions; the table below has the English
// ones of all that differ.
#ifndef RENDAL_APP_UI_TEXT_H_
#define RENDAL_APP_UI_TEXT_H_

#include <array>
#include <cstdint>

#include "res/resource.h"
#include "tools/region_overlay.h"
#include "tools/workbench.h"

namespace rendal::ui_text {

struct Text {
  const wchar_t* chinese;
  const wchar_t* english;

  const wchar_t* In(int32_t language) const {
    return language == kEnglish ? english : chinese;
  }
};

// Application
inline constexpr Text kAlreadyOpen = {L"Rendal.exe已经打开!",
                                      L"Rendal.exe is already open!"};
inline constexpr wchar_t kApplicationName[] = L"Rendal";
inline constexpr wchar_t kRegistryKey[] = L"应用程序向导生成的本地应用程序";
inline constexpr wchar_t kConsoleTitle[] = L"Debug Output";

// Main window. Arguments: year, month, day of the build.
inline constexpr Text kTitle = {L"测量    %d-%02d-%02d",
                                L"Measure    %d-%02d-%02d"};
inline constexpr Text kOpenTitle = {L"打开图像", L"Open image"};
// In English in both languages.
inline constexpr wchar_t kImageFilter[] =
    L"Image Files (*.bmp;*.jpg;*.tif;*.png)|*.bmp;*.jpg;*.tif;*.png|"
    L"All Files (*.*)|*.*||";

// Label of the element's first size: a radius while a circle is chosen.
inline constexpr wchar_t kElementRadius[] = L"R";
inline constexpr Text kElementWidth = {L"宽", L"Width"};

// Welcome window
inline constexpr wchar_t kWelcomeTitle[] = L"VEXOLAB";
inline constexpr Text kWelcome = {L"欢迎来到我的博客！\n\n",
                                  L"Welcome to my blog!\n\n"};

// System menu. The item that changes the language names the other one in its
// own words, for whoever cannot read this one.
inline constexpr Text kOtherLanguage = {L"English(&E)", L"中文(&C)"};

inline constexpr Text kSavePicture = {L"保存图像(&S)...\tCtrl+S",
                                      L"&Save picture...\tCtrl+S"};
inline constexpr Text kRecordRecipe = {L"录制(&T)", L"Recor&d recipe"};
inline constexpr Text kSaveRecipe = {L"保存(&V)...", L"Sa&ve recipe..."};
inline constexpr Text kRunRecipe = {L"运行(&U)...", L"R&un recipe..."};
inline constexpr Text kRecentFiles = {L"最近的文件(&R)", L"&Recent files"};

// Titles and kinds of files to be written or read
inline constexpr Text kSavePictureTitle = {L"保存图像", L"Save picture"};
inline constexpr Text kExportTitle = {L"导出连通域", L"Export components"};
inline constexpr Text kSaveRecipeTitle = {L"保存配方", L"Save recipe"};
inline constexpr Text kRunRecipeTitle = {L"运行配方", L"Run recipe"};
inline constexpr Text kReplaceFile = {L"文件已存在，要替换吗？",
                                      L"The file exists. Replace it?"};
// Patterns of one kind would make the system add that kind to every name.
inline constexpr wchar_t kPictureFilter[] = L"PNG, JPEG, BMP, TIFF|*.*||";
inline constexpr wchar_t kTableFilter[] = L"CSV, JSON|*.*||";
inline constexpr wchar_t kRecipeFilter[] = L"JSON (*.json)|*.json||";

// Menu of the region list
inline constexpr Text kExport = {L"导出(&E)...", L"&Export..."};
inline constexpr Text kCopyRows = {L"复制(&C)\tCtrl+C", L"&Copy\tCtrl+C"};

// About: the Chinese texts are in the template and the string table.
inline constexpr wchar_t kAboutMenuEnglish[] = L"&About Rendal...";
inline constexpr wchar_t kAboutCaptionEnglish[] = L"About Rendal";
inline constexpr wchar_t kAboutTextEnglish[] = L"Rendal, version 1.0";
inline constexpr wchar_t kOkEnglish[] = L"OK";

// Combo boxes
inline constexpr Text kDirections[] = {{L"正", L"positive"},
                                       {L"负", L"negative"}};
inline constexpr Text kElements[] = {
    {L"圆形", L"circle"}, {L"矩形", L"rectangle"}, {L"十字", L"cross"}};
// Tools take these as they stand.
inline constexpr const char* kSelections[] = {
    "first+", "first-", "first", "last+", "last-", "last", "strongest"};
inline constexpr const char* kBoundaryTypes[] = {"inner", "inner_filled",
                                                 "outer"};
inline constexpr const char* kFindLineDisplays[] = {"1", "2", "3"};

// Captions of an English dialog
struct Caption {
  int id;
  const wchar_t* english;
};

// clang-format off
inline constexpr Caption kCaptions[] = {
    {IDC_LOAD_IMAGE,           L"Load image"},
    {IDC_CALIPER_GROUP,        L"Caliper"},
    {IDC_LENGTH_LABEL,         L"Length"},
    {IDC_WIDTH_LABEL,          L"Width"},
    {IDC_AMPLITUDE_LABEL,      L"Ampl."},
    {IDC_COUNT_LABEL,          L"Count"},
    {IDC_DIRECTION_LABEL,      L"Dir."},
    {IDC_SELECTION_LABEL,      L"Select"},
    {IDC_MODE_NONE,            L"none"},
    {IDC_MODE_LINE,            L"line"},
    {IDC_MODE_CIRCLE,          L"circle"},
    {IDC_MODE_BAND,            L"line + ROI width"},
    {IDC_MODE_ELLIPSE,         L"ellipse"},
    {IDC_MEASURE,              L"Measure"},
    {IDC_CLEAR_DISPLAY,        L"Clear display"},
    {IDC_ELEMENT_LABEL,        L"Element"},
    {IDC_ELEMENT_HEIGHT_LABEL, L"Height"},
};
// clang-format on

// Widths of the region list's columns [px]
inline constexpr std::array<int, kFeatureColumns.size()> kRegionColumnWidths = {
    40, 80, 100, 100, 100, 100, 100, 100, 80};

}  // namespace rendal::ui_text

#endif  // RENDAL_APP_UI_TEXT_H_
