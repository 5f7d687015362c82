// SPDX-License-Identifier: MIT
#include "tests/windows/operator.h"

#include <commctrl.h>

#include <memory>
#include <stdexcept>

#include "res/resource.h"

namespace rendal_test {
namespace {

constexpr int kPollMs = 10;
constexpr UINT kMessageTimeoutMs = 10'000;
constexpr wchar_t kDialogClass[] = L"#32770";

std::wstring WindowText(HWND window) {
  const auto length = static_cast<size_t>(Send(window, WM_GETTEXTLENGTH));
  std::wstring text(length + 1, L'\0');
  const LRESULT got = Send(window, WM_GETTEXT, text.size(),
                           reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(got));
  return text;
}

std::wstring ClassOf(HWND window) {
  wchar_t name[64] = {};
  ::GetClassNameW(window, name, 64);
  return name;
}

DWORD ProcessOf(HWND window) {
  DWORD id = 0;
  ::GetWindowThreadProcessId(window, &id);
  return id;
}

struct WindowSearch {
  std::function<bool(HWND)> wanted;
  std::vector<HWND> found;

  static BOOL CALLBACK Visit(HWND window, LPARAM search) {
    auto* self = reinterpret_cast<WindowSearch*>(search);
    if (self->wanted(window)) self->found.push_back(window);
    return TRUE;
  }
};

std::vector<HWND> FindTopWindows(std::function<bool(HWND)> wanted) {
  WindowSearch search{std::move(wanted), {}};
  ::EnumWindows(&WindowSearch::Visit, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

std::vector<HWND> FindDescendants(HWND parent,
                                  std::function<bool(HWND)> wanted) {
  WindowSearch search{std::move(wanted), {}};
  ::EnumChildWindows(parent, &WindowSearch::Visit,
                     reinterpret_cast<LPARAM>(&search));
  return search.found;
}

// The dialog is known by its controls: its title changes with the language and
// the day of the build.
bool IsMainDialog(HWND window) {
  return ClassOf(window) == kDialogClass && ::GetDlgItem(window, IDC_VIEW) &&
         ::GetDlgItem(window, IDC_REGION_LIST);
}

// Memory inside another process, for messages that carry pointers.
class RemoteMemory {
 public:
  RemoteMemory(DWORD process_id, size_t size)
      : process_(::OpenProcess(
            PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE,
            process_id)) {
    if (process_) {
      address_ = static_cast<char*>(::VirtualAllocEx(
          process_, nullptr, size, MEM_COMMIT, PAGE_READWRITE));
    }
    if (!address_) {
      if (process_) ::CloseHandle(process_);
      throw std::runtime_error("no memory in the program's process");
    }
  }
  ~RemoteMemory() {
    ::VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
    ::CloseHandle(process_);
  }
  RemoteMemory(const RemoteMemory&) = delete;
  RemoteMemory& operator=(const RemoteMemory&) = delete;

  char* address() const { return address_; }

  void Write(size_t offset, const void* data, size_t size) const {
    if (!::WriteProcessMemory(process_, address_ + offset, data, size,
                              nullptr)) {
      throw std::runtime_error("cannot write to the program's process");
    }
  }
  void Read(size_t offset, void* data, size_t size) const {
    if (!::ReadProcessMemory(process_, address_ + offset, data, size,
                             nullptr)) {
      throw std::runtime_error("cannot read from the program's process");
    }
  }

 private:
  HANDLE process_;
  char* address_ = nullptr;
};

// Asks a list control for a text through a structure of its own process. The
// structure (LVITEMW or LVCOLUMNW) names the buffer, which follows it.
template <typename Structure>
std::wstring RemoteText(const RemoteMemory& memory, HWND list, UINT message,
                        WPARAM index, Structure request) {
  constexpr int kLength = 260;
  request.pszText =
      reinterpret_cast<wchar_t*>(memory.address() + sizeof(Structure));
  request.cchTextMax = kLength;
  memory.Write(0, &request, sizeof request);
  Send(list, message, index, reinterpret_cast<LPARAM>(memory.address()));
  wchar_t text[kLength] = {};
  memory.Read(sizeof(Structure), text, sizeof text);
  return text;
}

constexpr size_t kRemoteSize = 1024;

std::wstring QuotedCommandLine(const std::wstring& program,
                               const std::vector<std::wstring>& arguments) {
  // A window that opens under the pointer gets mouse moves, which end a drag.
  ::SetCursorPos(0, 0);
  std::wstring line = L"\"" + program + L"\"";
  for (const std::wstring& argument : arguments) {
    line += L" \"" + argument + L"\"";
  }
  return line;
}

}  // namespace

LRESULT Send(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  DWORD_PTR result = 0;
  if (!::SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL,
                             kMessageTimeoutMs, &result)) {
    throw std::runtime_error("the program's window does not answer");
  }
  return static_cast<LRESULT>(result);
}

std::string Utf8(const std::wstring& text) {
  const int wide = static_cast<int>(text.size());
  const int length = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), wide,
                                           nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(length), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, text.data(), wide, narrow.data(), length,
                        nullptr, nullptr);
  return narrow;
}

std::wstring Wide(const std::string& utf8) {
  const int narrow = static_cast<int>(utf8.size());
  const int length =
      ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), narrow, nullptr, 0);
  std::wstring wide(static_cast<size_t>(length), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), narrow, wide.data(), length);
  return wide;
}

void WaitUntil(const std::string& what, const std::function<bool()>& condition,
               int patience_ms) {
  const ULONGLONG end =
      ::GetTickCount64() + static_cast<ULONGLONG>(patience_ms);
  while (!condition()) {
    if (::GetTickCount64() > end) {
      throw std::runtime_error(what + ": not within " +
                               std::to_string(patience_ms / 1000) + " s");
    }
    ::Sleep(kPollMs);
  }
}

std::wstring ProgramPath() {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::wstring self = path;
  return self.substr(0, self.find_last_of(L'\\') + 1) + L"Rendal.exe";
}

std::vector<HWND> TopWindows(DWORD process_id) {
  return FindTopWindows([process_id](HWND window) {
    return ::IsWindowVisible(window) && ProcessOf(window) == process_id;
  });
}

HWND FindMainWindow(DWORD process_id) {
  const std::vector<HWND> found = FindTopWindows([process_id](HWND window) {
    return ProcessOf(window) == process_id && IsMainDialog(window);
  });
  return found.empty() ? nullptr : found.front();
}

// To be closed by the caller, unless it is none.
static HANDLE OpenStream(Streams streams) {
  SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
  HANDLE reader = nullptr, writer = nullptr;
  switch (streams) {
    case Streams::kNothing:
      return nullptr;
    case Streams::kBrokenPipe:
      ::CreatePipe(&reader, &writer, &inheritable, 0);
      ::CloseHandle(reader);
      return writer;
    case Streams::kNullDevice:
      break;
  }
  return ::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                       OPEN_EXISTING, 0, nullptr);
}

Process::Process(const std::wstring& program,
                 const std::vector<std::wstring>& arguments, Streams streams,
                 const std::function<void(HANDLE)>& prepare) {
  std::wstring line = QuotedCommandLine(program, arguments);
  const HANDLE stream = OpenStream(streams);
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  // Wine's C runtime can only reopen a standard stream that was there before.
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = startup.hStdOutput = startup.hStdError = stream;
  // Detached: the program opens a console of its own.
  const BOOL started =
      ::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                       DETACHED_PROCESS | CREATE_SUSPENDED, nullptr, nullptr,
                       &startup, &information_);
  if (stream != nullptr) ::CloseHandle(stream);
  if (!started) {
    throw std::runtime_error("cannot start " + Utf8(program));
  }
  if (prepare) prepare(information_.hProcess);
  ::ResumeThread(information_.hThread);
}

Process::~Process() {
  if (!HasEnded()) {
    ::TerminateProcess(information_.hProcess, 99);
    ::WaitForSingleObject(information_.hProcess, kPatienceMs);
  }
  ::CloseHandle(information_.hThread);
  ::CloseHandle(information_.hProcess);
}

bool Process::HasEnded() const {
  return ::WaitForSingleObject(information_.hProcess, 0) == WAIT_OBJECT_0;
}

DWORD Process::ExitCode() {
  WaitUntil("the program's end", [this] { return HasEnded(); });
  DWORD code = 0;
  ::GetExitCodeProcess(information_.hProcess, &code);
  return code;
}

Operator::Operator(DWORD process_id) {
  WaitUntil("the program's main window", [&] {
    const std::vector<HWND> found = FindTopWindows([&](HWND window) {
      return (process_id == 0 || ProcessOf(window) == process_id) &&
             ::IsWindowVisible(window) && IsMainDialog(window);
    });
    if (found.empty()) return false;
    dialog_ = found.front();
    return true;
  });
  process_id_ = ProcessOf(dialog_);
  // Start-up is over when the dialog handles messages again.
  Send(dialog_, WM_NULL);
}

HWND Operator::Control(int id) const {
  const HWND control = ::GetDlgItem(dialog_, id);
  if (!control) {
    throw std::runtime_error("the window has no control " + std::to_string(id));
  }
  return control;
}

std::wstring Operator::Caption() const { return WindowText(dialog_); }

std::wstring Operator::TextOf(int id) const { return WindowText(Control(id)); }

std::wstring Operator::Status() const { return TextOf(IDC_STATUS); }

void Operator::Press(int id) const {
  const HWND button = Control(id);
  if (!::IsWindowEnabled(button)) {
    throw std::runtime_error("the button " + std::to_string(id) +
                             " is disabled");
  }
  ::PostMessageW(button, BM_CLICK, 0, 0);
}

void Operator::Click(int id) const { Send(Control(id), BM_CLICK); }

void Operator::Select(int id, int index) const {
  const HWND combo = Control(id);
  if (Send(combo, CB_SETCURSEL, static_cast<WPARAM>(index)) != index) {
    throw std::runtime_error("the combo box " + std::to_string(id) +
                             " has no item " + std::to_string(index));
  }
  Send(dialog_, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE),
       reinterpret_cast<LPARAM>(combo));
}

void Operator::Type(int id, const std::wstring& text) const {
  Send(Control(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

SIZE Operator::ViewSize() const {
  RECT place = {};
  ::GetWindowRect(Control(IDC_VIEW), &place);
  return {place.right - place.left, place.bottom - place.top};
}

void Operator::Drag(POINT from, POINT to) const {
  const HWND image = ViewWindow();
  const LPARAM start = MAKELPARAM(from.x, from.y);
  const LPARAM end = MAKELPARAM(to.x, to.y);
  Send(image, WM_MOUSEMOVE, 0, start);
  Send(image, WM_LBUTTONDOWN, MK_LBUTTON, start);
  Send(image, WM_MOUSEMOVE, MK_LBUTTON, end);
  Send(image, WM_LBUTTONUP, 0, end);
}

HWND Operator::ViewWindow() const {
  return ::GetWindow(Control(IDC_VIEW), GW_CHILD);
}

// The program asks for the pointer's place itself, whatever the message says.
void Operator::Wheel(POINT at, int delta) const {
  ::ClientToScreen(ViewWindow(), &at);
  ::SetCursorPos(at.x, at.y);
  Send(dialog_, WM_MOUSEWHEEL, MAKEWPARAM(0, delta), MAKELPARAM(at.x, at.y));
}

void Operator::SetSpin(int id, int position) const {
  Send(Control(id), UDM_SETPOS32, 0, position);
  WaitUntil("spin " + std::to_string(id) + " at " + std::to_string(position),
            [&] { return SpinPosition(id) == position; });
}

int Operator::SpinPosition(int id) const {
  return static_cast<int>(Send(Control(id), UDM_GETPOS32));
}

void Operator::ClearStatus() const {
  Press(IDC_CLEAR_DISPLAY);
  WaitUntil("an empty status label", [this] { return Status().empty(); });
}

std::wstring Operator::StatusAfter(int button_id) const {
  ClearStatus();
  Press(button_id);
  WaitUntil("a status after pressing " + std::to_string(button_id),
            [this] { return !Status().empty(); });
  // The message may come before the handler's last steps.
  Send(dialog_, WM_NULL);
  return Status();
}

HWND Operator::FindModal() const {
  const std::vector<HWND> found = FindTopWindows([this](HWND window) {
    return ::IsWindowVisible(window) && ClassOf(window) == kDialogClass &&
           ::GetWindow(window, GW_OWNER) == dialog_;
  });
  return found.empty() ? nullptr : found.front();
}

HWND Operator::WaitForFileDialog() const {
  HWND dialog = nullptr;
  WaitUntil("the file-open dialog", [&] {
    dialog = FindModal();
    return dialog != nullptr;
  });
  return dialog;
}

// The only visible edit is the file name's; it comes some time after the
// dialog, and takes a text once the shell view behind it is there.
void Operator::EnterPath(HWND file_dialog, const std::wstring& path) const {
  WaitUntil("the path in the file dialog", [&] {
    const std::vector<HWND> edits =
        FindDescendants(file_dialog, [](HWND window) {
          return ::IsWindowVisible(window) && ClassOf(window) == L"Edit";
        });
    if (edits.empty()) return false;
    ::Sleep(300);
    Send(edits.front(), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    return WindowText(edits.front()) == path;
  });
  ::PostMessageW(file_dialog, WM_COMMAND, IDOK, 0);
}

std::wstring Operator::Load(const std::wstring& path) const {
  ClearStatus();
  Press(IDC_LOAD_IMAGE);
  const HWND open = WaitForFileDialog();
  EnterPath(open, path);
  WaitUntil("the end of the file-open dialog",
            [open] { return !::IsWindow(open); });
  WaitUntil("a status after loading", [this] { return !Status().empty(); });
  Send(dialog_, WM_NULL);
  return Status();
}

std::vector<std::vector<std::wstring>> Operator::Rows() const {
  const HWND list = Control(IDC_REGION_LIST);
  const RemoteMemory memory(process_id_, kRemoteSize);
  const auto rows = static_cast<int>(Send(list, LVM_GETITEMCOUNT));
  const size_t columns = ColumnTitles().size();
  std::vector<std::vector<std::wstring>> table;
  for (int row = 0; row < rows; ++row) {
    std::vector<std::wstring> cells;
    for (size_t column = 0; column < columns; ++column) {
      LVITEMW item = {};
      item.iSubItem = static_cast<int>(column);
      cells.push_back(RemoteText(memory, list, LVM_GETITEMTEXTW,
                                 static_cast<WPARAM>(row), item));
    }
    table.push_back(std::move(cells));
  }
  return table;
}

std::vector<std::wstring> Operator::ColumnTitles() const {
  const HWND list = Control(IDC_REGION_LIST);
  const auto header = reinterpret_cast<HWND>(Send(list, LVM_GETHEADER));
  const auto count = static_cast<int>(Send(header, HDM_GETITEMCOUNT));
  const RemoteMemory memory(process_id_, kRemoteSize);
  std::vector<std::wstring> titles;
  for (int column = 0; column < count; ++column) {
    LVCOLUMNW request = {};
    request.mask = LVCF_TEXT;
    titles.push_back(RemoteText(memory, list, LVM_GETCOLUMNW,
                                static_cast<WPARAM>(column), request));
  }
  return titles;
}

std::wstring Operator::ConsoleText() const {
  // A process has one console: ours, if any, is left for the program's.
  ::FreeConsole();
  if (!::AttachConsole(process_id_)) {
    throw std::runtime_error("the program has no console");
  }
  const HANDLE screen = ::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
  std::wstring text;
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (::GetConsoleScreenBufferInfo(screen, &info)) {
    for (SHORT row = 0; row <= info.dwCursorPosition.Y; ++row) {
      std::wstring line(static_cast<size_t>(info.dwSize.X), L' ');
      DWORD got = 0;
      ::ReadConsoleOutputCharacterW(
          screen, line.data(), static_cast<DWORD>(line.size()), {0, row}, &got);
      line.resize(line.find_last_not_of(L' ', got) + 1);
      text += line + L'\n';
    }
  }
  ::CloseHandle(screen);
  ::FreeConsole();
  while (text.ends_with(L"\n\n")) text.pop_back();
  return text == L"\n" ? L"" : text;
}

std::wstring Operator::ConsoleTextWith(const std::wstring& awaited) const {
  std::wstring text;
  WaitUntil("the console with: " + Utf8(awaited), [&] {
    text = ConsoleText();
    std::wstring joined = text;
    std::erase(joined, L'\n');
    return joined.find(awaited) != std::wstring::npos;
  });
  return text;
}

void Operator::SwitchLanguage() const {
  Send(dialog_, WM_SYSCOMMAND, IDM_LANGUAGE, 0);
}

void Operator::ClearConsole() const {
  Press(IDC_CLEAR_CONSOLE);
  WaitUntil("an empty console", [this] { return ConsoleText().empty(); });
}

void Operator::DismissWelcome() const {
  // The only window of the program that never takes the focus.
  const auto find = [this] {
    return FindTopWindows([this](HWND window) {
      return ::IsWindowVisible(window) && ProcessOf(window) == process_id_ &&
             (::GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_NOACTIVATE);
    });
  };
  for (const HWND window : find()) {
    // The right button: the left one follows the window's link.
    ::PostMessageW(window, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(5, 5));
  }
  WaitUntil("the welcome window's end", [&] { return find().empty(); });
}

void Operator::Close() const {
  ::PostMessageW(dialog_, WM_CLOSE, 0, 0);
  WaitUntil("the main window's end", [this] { return !::IsWindow(dialog_); });
}

}  // namespace rendal_test
