// SPDX-License-Identifier: MIT
//
// The real Rendal.exe where its surroundings are not as it would have them:
// other starts, no standard output, no console, other screens, a dialog open.
#include <windows.h>

#include <functional>
#include <memory>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "res/resource.h"
#include "tests/windows/operator.h"
#include "tests/windows/scratch.h"

namespace rendal_test {
namespace {

// A function of the system's, which is at the same place in every process.
void* SystemFunction(const char* name) {
  void* const function = reinterpret_cast<void*>(
      ::GetProcAddress(::GetModuleHandleW(L"kernel32"), name));
  if (function == nullptr) throw std::runtime_error(name);
  return function;
}

// Runs one that takes no argument in another process.
void Call(HANDLE process, const char* name) {
  const HANDLE thread = ::CreateRemoteThread(
      process, nullptr, 0,
      reinterpret_cast<LPTHREAD_START_ROUTINE>(SystemFunction(name)), nullptr,
      0, nullptr);
  if (thread == nullptr) throw std::runtime_error(name);
  ::WaitForSingleObject(thread, kPatienceMs);
  ::CloseHandle(thread);
}

// Has one return 0 in another process from now on.
void MakeFail(HANDLE process, const char* name) {
  constexpr unsigned char kReturnZero[] = {0x31, 0xC0, 0xC3};
  SIZE_T written = 0;
  if (!::WriteProcessMemory(process, SystemFunction(name), kReturnZero,
                            sizeof kReturnZero, &written)) {
    throw std::runtime_error(name);
  }
}

class Surroundings : public testing::Test {
 protected:
  void Start(Streams streams = Streams::kNullDevice,
             const std::function<void(HANDLE)>& prepare = {}) {
    const auto image =
        folder_.WriteImage(L"a.png", ".png", cv::Mat(40, 60, CV_8UC1, 200));
    program_ = std::make_unique<Process>(
        ProgramPath(), std::vector<std::wstring>{image.wstring()}, streams,
        prepare);
    window_ = std::make_unique<Operator>(program_->id());
    WaitUntil("a status", [&] { return !window().Status().empty(); });
  }
  Operator& window() { return *window_; }

  // Tools that print, and the tool that has the console emptied.
  void ExpectToWork() {
    EXPECT_EQ(Utf8(window().StatusAfter(IDC_THRESHOLD)), "threshold done");
    window().Click(IDC_CLEAR_CONSOLE);
    EXPECT_EQ(Utf8(window().StatusAfter(IDC_CONNECTION)),
              "connection done, connected components =1");
  }
  void ExpectToEnd() {
    window().Close();
    EXPECT_EQ(program_->ExitCode(), 0u);
  }

  Scratch folder_;
  std::unique_ptr<Process> program_;
  std::unique_ptr<Operator> window_;
};

// Whichever comes first: one window, and as many messages as others.
TEST_F(Surroundings, OfManyStartsAtOnceOneOpens) {
  std::vector<std::unique_ptr<Process>> starts;
  for (int i = 0; i < 4; ++i) {
    starts.push_back(
        std::make_unique<Process>(ProgramPath(), std::vector<std::wstring>{}));
  }
  size_t windows = 0, messages = 0;
  WaitUntil("all of them", [&] {
    windows = messages = 0;
    for (const auto& start : starts) {
      if (FindMainWindow(start->id()) != nullptr) ++windows;
      for (const HWND top : TopWindows(start->id())) {
        if (::GetDlgItem(top, 0xFFFF) != nullptr) ++messages;
      }
    }
    return windows + messages >= starts.size();
  });
  EXPECT_EQ(windows, 1u);
  EXPECT_EQ(messages, starts.size() - 1);
  for (const auto& start : starts) {
    for (const HWND top : TopWindows(start->id())) {
      if (::GetDlgItem(top, 0xFFFF) != nullptr) {
        ::PostMessageW(top, WM_COMMAND, IDOK, 0);
        EXPECT_EQ(start->ExitCode(), 0u);
      }
    }
  }
  for (const auto& start : starts) {
    if (FindMainWindow(start->id()) == nullptr) continue;
    EXPECT_FALSE(start->HasEnded());
    Operator(start->id()).Close();
    EXPECT_EQ(start->ExitCode(), 0u);
  }
}

TEST_F(Surroundings, WithoutStandardStreamsItWorks) {
  for (const Streams streams : {Streams::kNothing, Streams::kBrokenPipe}) {
    SCOPED_TRACE(static_cast<int>(streams));
    Start(streams);
    ExpectToWork();
    ExpectToEnd();
  }
}

TEST_F(Surroundings, WithoutItsConsoleItWorks) {
  Start();
  Call(program_->handle(), "FreeConsole");
  EXPECT_THROW(window().ConsoleText(), std::exception);
  ExpectToWork();
  ExpectToEnd();
}

TEST_F(Surroundings, WhereNoConsoleOpensItWorks) {
  Start(Streams::kNullDevice, [](HANDLE process) {
    // Of a process that has not begun, the first thread loads the libraries.
    Call(process, "GetTickCount");
    MakeFail(process, "AllocConsole");
  });
  EXPECT_THROW(window().ConsoleText(), std::exception);
  ExpectToWork();
  ExpectToEnd();
}

// The screens that the system tells of are those that there are; so the window
// goes, and not the screen.
TEST_F(Surroundings, WindowBeyondTheScreensComesBack) {
  Start();
  const HWND dialog = window().dialog();
  const auto place = [&] {
    RECT area = {};
    ::GetWindowRect(dialog, &area);
    return area;
  };
  const auto move = [&](LONG x, LONG y) {
    ::SetWindowPos(dialog, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    WaitUntil("the window there",
              [&] { return place().left == x && place().top == y; });
  };
  RECT work = {};
  ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
  for (const UINT message : {WM_DISPLAYCHANGE, WM_SETTINGCHANGE}) {
    for (const POINT there : {POINT{5000, 100}, POINT{-4000, -4000}}) {
      move(there.x, there.y);
      Send(dialog, message);
      EXPECT_GE(place().left, work.left);
      EXPECT_GE(place().top, work.top);
      EXPECT_LT(place().left + 100, work.right);
      EXPECT_LT(place().top + 30, work.bottom);
    }
  }
  // Where the title can be dragged, the operator wants it.
  move(work.right - 300, work.bottom - 100);
  const RECT before = place();
  Send(dialog, WM_DISPLAYCHANGE);
  EXPECT_EQ(place().left, before.left);
  EXPECT_EQ(place().top, before.top);
}

// The refresh goes on below an open dialog; nothing else starts there.
TEST_F(Surroundings, BelowAnOpenDialogThePictureLivesAndNoToolDoes) {
  Start();
  window().Press(IDC_LOAD_IMAGE);
  const HWND open = window().WaitForFileDialog();
  const std::wstring before = window().TextOf(IDC_READOUT);
  Send(window().ViewWindow(), WM_MOUSEMOVE, 0, MAKELPARAM(20, 20));
  WaitUntil("a new read-out",
            [&] { return window().TextOf(IDC_READOUT) != before; });

  const std::wstring status = window().Status();
  for (const int button : {IDC_LOAD_IMAGE, IDC_THRESHOLD, IDC_MEASURE}) {
    window().Click(button);
  }
  for (const UINT command :
       {IDM_ABOUTBOX, IDM_LANGUAGE, IDM_SAVE_PICTURE, IDM_RECORD_RECIPE}) {
    Send(window().dialog(), WM_SYSCOMMAND, command);
    Send(window().dialog(), WM_COMMAND, command);
  }
  EXPECT_EQ(window().Status(), status);
  EXPECT_EQ(window().FindModal(), open);
  ::PostMessageW(open, WM_COMMAND, IDCANCEL, 0);
  WaitUntil("the window's turn", [&] {
    return !::IsWindow(open) && ::IsWindowEnabled(window().dialog());
  });
  EXPECT_EQ(window().FindModal(), nullptr);
  EXPECT_EQ(Utf8(window().StatusAfter(IDC_CONNECTION)),
            "no binarization yet, 0");
  ExpectToWork();
  ExpectToEnd();
}

}  // namespace
}  // namespace rendal_test
