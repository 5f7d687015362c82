// SPDX-License-Identifier: MIT
//
// The real Rendal.exe is closed: at any moment, at work, while it waits for an
// answer, by its console. It ends in order each time.
#include <windows.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <string>

#include "gtest/gtest.h"
#include "res/resource.h"
#include "tests/windows/operator.h"
#include "tests/windows/scratch.h"

namespace rendal_test {
namespace {

namespace fs = std::filesystem;

cv::Mat Noise(int width, int height) {
  cv::Mat noise(height, width, CV_8UC1);
  cv::RNG(1).fill(noise, cv::RNG::UNIFORM, 0, 256);
  return noise;
}

class EndOfProgram : public testing::Test {
 protected:
  void Start(const std::vector<std::wstring>& arguments = {}) {
    window_.reset();
    program_ = std::make_unique<Process>(ProgramPath(), arguments);
  }
  Operator& window() {
    if (!window_) window_ = std::make_unique<Operator>(program_->id());
    return *window_;
  }
  HWND MainWindow() {
    HWND found = nullptr;
    WaitUntil("the main window", [&] {
      found = FindMainWindow(program_->id());
      return found != nullptr;
    });
    return found;
  }
  void PostClose(HWND window) { ::PostMessageW(window, WM_CLOSE, 0, 0); }
  HWND WaitForModal() {
    WaitUntil("a dialog", [&] { return window().FindModal() != nullptr; });
    return window().FindModal();
  }

  void Command(UINT id) {
    ::PostMessageW(window().dialog(), WM_SYSCOMMAND, id, 0);
  }
  bool IsInMenu() {
    GUITHREADINFO thread = {};
    thread.cbSize = sizeof thread;
    ::GetGUIThreadInfo(::GetWindowThreadProcessId(window().dialog(), nullptr),
                       &thread);
    return (thread.flags & GUI_INMENUMODE) != 0;
  }
  HWND WaitForPopUp() {
    HWND found = nullptr;
    WaitUntil("the pop-up", [&] {
      for (const HWND top : TopWindows(program_->id())) {
        if (::GetWindowLongW(top, GWL_EXSTYLE) & WS_EX_NOACTIVATE) found = top;
      }
      return found != nullptr;
    });
    return found;
  }
  // As the system tells of it: on a thread of its own in the program.
  void TellConsoleEvent(DWORD event) {
    const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(::GetProcAddress(
            ::GetModuleHandleW(L"kernelbase"), "CtrlRoutine")));
    ASSERT_NE(routine, nullptr);
    // The system's libraries lie at the same place in every process.
    const HANDLE thread = ::CreateRemoteThread(
        program_->handle(), nullptr, 0, routine,
        reinterpret_cast<void*>(ULONG_PTR{event}), 0, nullptr);
    ASSERT_NE(thread, nullptr);
    ::WaitForSingleObject(thread, 500);
    ::CloseHandle(thread);
  }
  // The window's thread, which does not answer until it is released.
  HANDLE Halt() {
    const HANDLE thread =
        ::OpenThread(THREAD_SUSPEND_RESUME, FALSE,
                     ::GetWindowThreadProcessId(window().dialog(), nullptr));
    ::SuspendThread(thread);
    return thread;
  }

  Scratch folder_;
  std::unique_ptr<Process> program_;
  std::unique_ptr<Operator> window_;
};

TEST_F(EndOfProgram, DuringStartUpIsInOrder) {
  Start();
  const HWND window = MainWindow();
  for (int i = 0; i < 3; ++i) PostClose(window);
  EXPECT_EQ(program_->ExitCode(), 0u);
}

// The clicks are there first: the window closes behind them.
TEST_F(EndOfProgram, BehindToolsOnABigPictureIsInOrder) {
  Start({folder_.WriteImage(L"big.bmp", ".bmp", Noise(2000, 1500)).wstring()});
  WaitUntil("a status", [&] { return !window().Status().empty(); });
  for (int i = 0; i < 3; ++i) {
    for (const int button :
         {IDC_THRESHOLD, IDC_CONNECTION, IDC_CLOSING, IDC_FILL_UP}) {
      window().Press(button);
    }
  }
  PostClose(window().dialog());
  window().Press(IDC_THRESHOLD);  // too late
  EXPECT_EQ(program_->ExitCode(), 0u);
}

TEST_F(EndOfProgram, WithAnyDialogOpenIsInOrder) {
  const fs::path image = folder_.WriteImage(L"a.png", ".png", Noise(60, 40));
  const std::function<void()> openings[] = {
      [&] { window().Press(IDC_LOAD_IMAGE); }, [&] { Command(IDM_ABOUTBOX); }};
  for (const auto& open : openings) {
    Start({image.wstring()});
    open();
    WaitForModal();
    PostClose(window().dialog());
    EXPECT_EQ(program_->ExitCode(), 0u) << &open - openings;
  }
}

// A question above the dialog that asks where to save.
TEST_F(EndOfProgram, WithAQuestionAboveADialogIsInOrder) {
  const fs::path image = folder_.WriteImage(L"a.png", ".png", Noise(60, 40));
  const auto size = fs::file_size(image);
  Start({image.wstring()});
  WaitUntil("a status", [&] { return !window().Status().empty(); });
  Command(IDM_SAVE_PICTURE);
  const HWND save = WaitForModal();
  window().EnterPath(save, image.wstring());
  WaitUntil("the question", [&] { return !::IsWindowEnabled(save); });
  PostClose(window().dialog());
  EXPECT_EQ(program_->ExitCode(), 0u);
  EXPECT_EQ(fs::file_size(image), size) << "not overwritten";
}

TEST_F(EndOfProgram, WithAMenuOpenIsInOrder) {
  Start();
  ::PostMessageW(window().dialog(), WM_SYSCOMMAND, SC_KEYMENU, ' ');
  WaitUntil("the menu", [&] { return IsInMenu(); });
  PostClose(window().dialog());
  EXPECT_EQ(program_->ExitCode(), 0u);
}

// The pop-up in the corner goes by a click and with its owner.
TEST_F(EndOfProgram, WhileThePopUpIsClickedIsInOrder) {
  Start();
  const HWND pop_up = WaitForPopUp();
  const auto click = [&] {
    ::PostMessageW(pop_up, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(5, 5));
  };
  click();
  PostClose(window().dialog());
  click();
  EXPECT_EQ(program_->ExitCode(), 0u);
}

// Keys do nothing; its end closes the window, on the window's own thread.
TEST_F(EndOfProgram, ByTheConsoleIsInOrder) {
  Start();
  window().DismissWelcome();
  for (const DWORD event : {CTRL_C_EVENT, CTRL_BREAK_EVENT}) {
    TellConsoleEvent(event);
  }
  EXPECT_EQ(Utf8(window().StatusAfter(IDC_CONNECTION)),
            "no binarization yet, 0");
  const HANDLE thread = Halt();
  TellConsoleEvent(CTRL_CLOSE_EVENT);
  EXPECT_FALSE(program_->HasEnded());
  ::ResumeThread(thread);
  ::CloseHandle(thread);
  EXPECT_EQ(program_->ExitCode(), 0u);
}

}  // namespace
}  // namespace rendal_test
