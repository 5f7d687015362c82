// SPDX-License-Identifier: MIT
//
// Runs the program's own main dialog inside the test process: opened modally,
// worked on by a script from within its message loop, closed.
#pragma once

#include <afxcmn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "app/rendal_dlg.h"

// The dialog with its protected parts open.
class COpenDialog : public CRendalDlg {
 public:
  using CRendalDlg::CRendalDlg;
  using CRendalDlg::GetThisMessageMap;
};

class MainDialogTest : public testing::Test {
 protected:
  using Script = std::function<void()>;

  // The dialog gets settings of its own, which go when the test ends.
  static constexpr wchar_t kSettingsKey[] = L"Software\\Rendal tests";

  explicit MainDialogTest(
      std::unique_ptr<COpenDialog> window = std::make_unique<COpenDialog>())
      : m_dialog(std::move(window)) {
    m_dialog->m_settingsKey = kSettingsKey;
  }

  // Runs `script` once the dialog is up, then closes the dialog; returns what
  // DoModal() returned. Standard output, which the dialog sends to its console,
  // comes back before the script starts, so that failures are seen.
  INT_PTR Run(const Script& script);
  // The same with standard output left on the console. Expectations belong
  // after the run.
  INT_PTR RunOnConsole(const Script& script);

  // Handles messages until `condition` holds; false after 10 seconds.
  static bool PumpUntil(const std::function<bool()>& condition);
  static void PumpFor(int milliseconds);

  // Does `trigger`, which shows a modal window and returns when that is closed;
  // `act` gets the window as soon as it is visible and has to end it.
  void WithModal(const std::function<void()>& trigger,
                 const std::function<void(HWND)>& act);

  // Answers the next message box, by a button's id, and keeps its text.
  void AnswerMessageBox(int button, std::wstring* text);

  // Types a path into a file dialog and accepts it.
  static void AnswerFileDialog(HWND box, const std::filesystem::path& path);

  HWND Control(int id) const { return ::GetDlgItem(dialog.m_hWnd, id); }
  std::wstring TextOf(int id) const { return TextOf(Control(id)); }
  static std::wstring TextOf(HWND window);
  std::vector<std::wstring> ItemsOf(int combo) const;
  int SelectionOf(int combo) const;

  void Click(int id);
  // A key that goes to a window as the dialog's message loop hands it out.
  void Press(HWND window, UINT key, bool control = false);
  void Select(int combo, int index);
  void Tick();
  // Presses the up or down arrow of a spin with the mouse.
  void PressArrow(int spin, bool up);

  void SetSpin(int spin, int position);
  int SpinOf(int spin) const;
  // The gray band of the blob group.
  void SetBand(int min, int max);

  // A mouse message to the image window, in view pixels.
  void Mouse(UINT message, int x, int y, WPARAM buttons = 0);
  // Moves the cursor to a point of the dialog's client area and turns the
  // wheel there.
  void Wheel(int x, int y, int delta);
  HWND ImageWindow() const;

  // The welcome window; null if it does not show.
  static HWND WelcomeWindow();

  // The region list.
  int Rows() const;
  std::wstring Cell(int row, int column) const;

  // Brush and text colour that the dialog gives a static control.
  struct Colors {
    COLORREF text;
    COLORREF background;
    bool operator==(const Colors&) const = default;
  };
  Colors ColorsOf(int id) const;

  // Text on the console, rows up to the cursor, trailing blanks cut.
  static std::vector<std::wstring> ConsoleRows();

  // Writes a file into this test's folder, which goes when the test ends.
  std::filesystem::path WriteImage(const std::string& name,
                                   const cv::Mat& image);
  void TearDown() override;

  // A dialog that has loaded `image`, at its first tick.
  void RunWithImage(const cv::Mat& image, const Script& script);

 private:
  std::unique_ptr<COpenDialog> m_dialog;

 protected:
  COpenDialog& dialog = *m_dialog;

 private:
  INT_PTR RunModal(const Script& script);
  std::filesystem::path Folder() const;
};

// Blocks allocated on the process's default heap.
size_t LiveHeapBlocks();

// A grey image with `count` squares of the given side and grey value on black,
// in rows, all apart.
cv::Mat Squares(cv::Size size, int count, int side, int grey);
