// SPDX-License-Identifier: MIT
//
// Works a running Rendal.exe from outside, as an operator does: finds its
// window, presses its buttons, answers its file-open dialog, reads its labels,
// its region list and its console. Everything goes by window messages, so no
// keyboard focus and no screen coordinates are involved.
//
// What does not come true within its time is thrown as std::runtime_error with
// a text that says what was waited for and what was seen instead.
#ifndef RENDAL_TESTS_WINDOWS_OPERATOR_H_
#define RENDAL_TESTS_WINDOWS_OPERATOR_H_

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace rendal_test {

constexpr int kPatienceMs = 20'000;

std::string Utf8(const std::wstring& text);
std::wstring Wide(const std::string& utf8);

// A message to another process's window. Throws if the window does not answer
// within 10 s.
LRESULT Send(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0);

// Returns when `condition` holds; throws "<what>: not within ... s" otherwise.
void WaitUntil(const std::string& what, const std::function<bool()>& condition,
               int patience_ms = kPatienceMs);

// The program's file, beside the one that is running.
std::wstring ProgramPath();

// The visible top-level windows of one process.
std::vector<HWND> TopWindows(DWORD process_id);

// The main window of a process as soon as it exists, shown or not; else null.
HWND FindMainWindow(DWORD process_id);

// What a process finds on its standard streams.
enum class Streams {
  kNullDevice,
  kNothing,     // handles that are none
  kBrokenPipe,  // whose reader has ended
};

// A process that is started without a console, and ended with this object if it
// has not ended itself.
class Process {
 public:
  // `prepare` gets the process before its first instruction runs.
  Process(const std::wstring& program,
          const std::vector<std::wstring>& arguments,
          Streams streams = Streams::kNullDevice,
          const std::function<void(HANDLE)>& prepare = {});
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  DWORD id() const { return information_.dwProcessId; }
  HANDLE handle() const { return information_.hProcess; }
  bool HasEnded() const;
  // Waits for the end.
  DWORD ExitCode();

 private:
  PROCESS_INFORMATION information_ = {};
};

// The main window of a running program.
class Operator {
 public:
  // Waits for the main window of the process; 0: of the first that shows up.
  explicit Operator(DWORD process_id = 0);

  HWND dialog() const { return dialog_; }
  DWORD process_id() const { return process_id_; }
  HWND Control(int id) const;

  std::wstring Caption() const;
  std::wstring TextOf(int id) const;
  std::wstring Status() const;
  // Posts a click; returns without waiting for what the button does.
  void Press(int id) const;
  // Clicks a button and returns when its handler has. For buttons that open no
  // window.
  void Click(int id) const;
  // Selects an item of a combo box, which tells the dialog.
  void Select(int id, int index) const;
  // Replaces the text of an edit box, which tells the dialog.
  void Type(int id, const std::wstring& text) const;
  // Sets a spin's position; its edit follows.
  void SetSpin(int id, int position) const;
  int SpinPosition(int id) const;

  // The image view, and a drag in it with the left button; view pixels.
  SIZE ViewSize() const;
  void Drag(POINT from, POINT to) const;
  // One notch of the wheel, with the screen's pointer over that view pixel.
  void Wheel(POINT at, int delta) const;
  // The window that shows the image.
  HWND ViewWindow() const;

  // Clear display: empties the status label, so that the next message is seen
  // to be new.
  void ClearStatus() const;
  // Presses a button and returns the message that it leaves in the status
  // label.
  std::wstring StatusAfter(int button_id) const;
  // Load image: presses the button, enters the path in the file-open dialog,
  // presses Open. Returns the status.
  std::wstring Load(const std::wstring& path) const;
  // Types a path into a file dialog and accepts it.
  void EnterPath(HWND file_dialog, const std::wstring& path) const;
  // The file-open dialog, which must be showing.
  HWND WaitForFileDialog() const;
  // The dialog of any kind that the main window waits for; null if none shows.
  HWND FindModal() const;

  // The region list, cells by row and column; and its column titles.
  std::vector<std::vector<std::wstring>> Rows() const;
  std::vector<std::wstring> ColumnTitles() const;

  // What the diagnostic console shows, without trailing blanks. It follows
  // the program with a delay: wait for what must come.
  std::wstring ConsoleText() const;
  // The same, once it contains `awaited` (in which line ends of the console's
  // width do not count).
  std::wstring ConsoleTextWith(const std::wstring& awaited) const;
  // Empties the console, as its button does.
  void ClearConsole() const;

  // Chooses the system menu's item that changes the language.
  void SwitchLanguage() const;

  // Closes the welcome window if it shows.
  void DismissWelcome() const;
  // Closes the main window and with it the program.
  void Close() const;

 private:
  DWORD process_id_ = 0;
  HWND dialog_ = nullptr;
};

}  // namespace rendal_test

#endif  // RENDAL_TESTS_WINDOWS_OPERATOR_H_
