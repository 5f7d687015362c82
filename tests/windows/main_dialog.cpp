// SPDX-License-Identifier: MIT
#include "tests/windows/main_dialog.h"

#include <io.h>

#include <cstdio>
#include <fstream>
#include <opencv2/imgcodecs.hpp>

namespace {

constexpr UINT kPollMs = 10;
constexpr DWORD kPatienceMs = 10000;

// What the next tick of a window-less timer does; true when it is done.
struct Pending {
  UINT_PTR timer = 0;
  std::function<bool()> step;
};
std::vector<Pending> g_pending;

void CALLBACK OnPoll(HWND, UINT, UINT_PTR timer, DWORD) {
  for (size_t i = 0; i < g_pending.size(); ++i) {
    if (g_pending[i].timer != timer) continue;
    const Pending pending = g_pending[i];
    // A step may pump messages: it must not meet itself again.
    g_pending.erase(g_pending.begin() + static_cast<ptrdiff_t>(i));
    ::KillTimer(nullptr, timer);
    if (!pending.step()) {
      g_pending.push_back(
          {::SetTimer(nullptr, 0, kPollMs, OnPoll), pending.step});
    }
    return;
  }
}

void PollUntilDone(const std::function<bool()>& step) {
  g_pending.push_back({::SetTimer(nullptr, 0, kPollMs, OnPoll), step});
}

// Where standard output went before the dialog sent it to the console.
class StandardOutput {
 public:
  StandardOutput() {
    std::fflush(stdout);
    // A console that came with the test process would be in the way of the
    // dialog's own.
    static const BOOL detached = ::FreeConsole();
    static_cast<void>(detached);
  }
  ~StandardOutput() {
    Restore();
    ::_close(m_saved);
  }
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  void Restore() {
    std::fflush(stdout);
    ::_dup2(m_saved, ::_fileno(stdout));
  }

 private:
  int m_saved = ::_dup(::_fileno(stdout));
};

HWND VisibleModalOf(HWND owner) {
  struct Search {
    HWND owner;
    HWND found;
  } search = {owner, nullptr};
  ::EnumThreadWindows(
      ::GetCurrentThreadId(),
      [](HWND window, LPARAM data) -> BOOL {
        auto* wanted = reinterpret_cast<Search*>(data);
        wchar_t name[16] = L"";
        ::GetClassNameW(window, name, 16);
        const bool isModal = std::wstring(name) == L"#32770" &&
                             window != wanted->owner &&
                             ::IsWindowVisible(window);
        if (isModal) wanted->found = window;
        return !isModal;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

}  // namespace

INT_PTR MainDialogTest::RunModal(const Script& script) {
  PollUntilDone([&] {
    if (dialog.m_hWnd == nullptr || !::IsWindowVisible(dialog.m_hWnd)) {
      return false;
    }
    script();
    if (dialog.m_hWnd != nullptr) dialog.EndDialog(IDCANCEL);
    return true;
  });
  return dialog.DoModal();
}

INT_PTR MainDialogTest::Run(const Script& script) {
  StandardOutput output;
  return RunModal([&] {
    output.Restore();
    script();
  });
}

INT_PTR MainDialogTest::RunOnConsole(const Script& script) {
  const StandardOutput output;
  return RunModal(script);
}

bool MainDialogTest::PumpUntil(const std::function<bool()>& condition) {
  const DWORD start = ::GetTickCount();
  while (!condition()) {
    if (::GetTickCount() - start > kPatienceMs) return false;
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      ::TranslateMessage(&message);
      ::DispatchMessageW(&message);
    }
    ::Sleep(1);
  }
  return true;
}

void MainDialogTest::PumpFor(int milliseconds) {
  const DWORD start = ::GetTickCount();
  PumpUntil([&] {
    return ::GetTickCount() - start >= static_cast<DWORD>(milliseconds);
  });
}

void MainDialogTest::WithModal(const std::function<void()>& trigger,
                               const std::function<void(HWND)>& act) {
  const HWND owner = dialog.m_hWnd;
  PollUntilDone([owner, act] {
    const HWND modal = VisibleModalOf(owner);
    if (modal == nullptr) return false;
    act(modal);
    return true;
  });
  trigger();
}

void MainDialogTest::AnswerMessageBox(int button, std::wstring* text) {
  constexpr int kText = 0xFFFF;
  const HWND owner = dialog.m_hWnd;
  PollUntilDone([owner, button, text] {
    const HWND box = VisibleModalOf(owner);
    const HWND label = box != nullptr ? ::GetDlgItem(box, kText) : nullptr;
    if (label == nullptr) return false;
    *text = TextOf(label);
    ::PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    return true;
  });
}

void MainDialogTest::AnswerFileDialog(HWND box,
                                      const std::filesystem::path& path) {
  PumpFor(300);
  HWND edit = nullptr;
  ::EnumChildWindows(
      box,
      [](HWND child, LPARAM result) -> BOOL {
        wchar_t kind[16] = L"";
        ::GetClassNameW(child, kind, 16);
        if (std::wstring(kind) == L"Edit" && ::IsWindowVisible(child)) {
          *reinterpret_cast<HWND*>(result) = child;
        }
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&edit));
  ::SendMessageW(edit, WM_SETTEXT, 0,
                 reinterpret_cast<LPARAM>(path.wstring().c_str()));
  ::PostMessageW(box, WM_COMMAND, IDOK, 0);
}

std::wstring MainDialogTest::TextOf(HWND window) {
  std::wstring text(static_cast<size_t>(::GetWindowTextLengthW(window)) + 1,
                    L'\0');
  text.resize(static_cast<size_t>(
      ::GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

std::vector<std::wstring> MainDialogTest::ItemsOf(int combo) const {
  std::vector<std::wstring> items(
      static_cast<size_t>(::SendMessageW(Control(combo), CB_GETCOUNT, 0, 0)));
  for (size_t i = 0; i < items.size(); ++i) {
    wchar_t text[64] = L"";
    ::SendMessageW(Control(combo), CB_GETLBTEXT, i,
                   reinterpret_cast<LPARAM>(text));
    items[i] = text;
  }
  return items;
}

int MainDialogTest::SelectionOf(int combo) const {
  return static_cast<int>(::SendMessageW(Control(combo), CB_GETCURSEL, 0, 0));
}

void MainDialogTest::Click(int id) {
  ::SendMessageW(Control(id), BM_CLICK, 0, 0);
}

void MainDialogTest::Press(HWND window, UINT key, bool control) {
  BYTE state[256] = {};
  ::GetKeyboardState(state);
  const BYTE before = state[VK_CONTROL];
  state[VK_CONTROL] = control ? 0x80 : 0;
  ::SetKeyboardState(state);
  const UINT scanCode = ::MapVirtualKeyW(key, MAPVK_VK_TO_VSC);
  MSG message = {window, WM_KEYDOWN,
                 key,    static_cast<LPARAM>(scanCode << 16 | 1),
                 0,      {0, 0}};
  EXPECT_TRUE(dialog.PreTranslateMessage(&message));
  state[VK_CONTROL] = before;
  ::SetKeyboardState(state);
  PumpFor(1);  // the characters that came of it
}

void MainDialogTest::Select(int combo, int index) {
  ::SendMessageW(Control(combo), CB_SETCURSEL, static_cast<WPARAM>(index), 0);
  ::SendMessageW(dialog.m_hWnd, WM_COMMAND, MAKEWPARAM(combo, CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(Control(combo)));
}

void MainDialogTest::Tick() { ::SendMessageW(dialog.m_hWnd, WM_TIMER, 1, 0); }

void MainDialogTest::PressArrow(int spin, bool up) {
  RECT area;
  ::GetClientRect(Control(spin), &area);
  const LPARAM point = MAKELPARAM(area.right / 2, up ? 3 : area.bottom - 3);
  ::SendMessageW(Control(spin), WM_LBUTTONDOWN, MK_LBUTTON, point);
  ::SendMessageW(Control(spin), WM_LBUTTONUP, 0, point);
}

void MainDialogTest::SetSpin(int spin, int position) {
  ::SendMessageW(Control(spin), UDM_SETPOS32, 0, position);
}

int MainDialogTest::SpinOf(int spin) const {
  return static_cast<int>(::SendMessageW(Control(spin), UDM_GETPOS32, 0, 0));
}

void MainDialogTest::SetBand(int min, int max) {
  SetSpin(IDC_MIN_GRAY_SPIN, min);
  SetSpin(IDC_MAX_GRAY_SPIN, max);
}

HWND MainDialogTest::ImageWindow() const {
  return ::GetWindow(Control(IDC_VIEW), GW_CHILD);
}

void MainDialogTest::Mouse(UINT message, int x, int y, WPARAM buttons) {
  ::SendMessageW(ImageWindow(), message, buttons, MAKELPARAM(x, y));
}

void MainDialogTest::Wheel(int x, int y, int delta) {
  POINT point = {x, y};
  ::ClientToScreen(dialog.m_hWnd, &point);
  ::SetCursorPos(point.x, point.y);
  ::SendMessageW(dialog.m_hWnd, WM_MOUSEWHEEL, MAKEWPARAM(0, delta),
                 MAKELPARAM(point.x, point.y));
}

HWND MainDialogTest::WelcomeWindow() {
  HWND found = nullptr;
  ::EnumThreadWindows(
      ::GetCurrentThreadId(),
      [](HWND window, LPARAM result) -> BOOL {
        constexpr LONG kNotice =
            WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE;
        if ((::GetWindowLongW(window, GWL_EXSTYLE) & kNotice) == kNotice &&
            ::IsWindowVisible(window)) {
          *reinterpret_cast<HWND*>(result) = window;
        }
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&found));
  return found;
}

int MainDialogTest::Rows() const {
  return ListView_GetItemCount(Control(IDC_REGION_LIST));
}

std::wstring MainDialogTest::Cell(int row, int column) const {
  wchar_t text[64] = L"";
  LVITEMW item = {};
  item.iSubItem = column;
  item.pszText = text;
  item.cchTextMax = 64;
  ::SendMessageW(Control(IDC_REGION_LIST), LVM_GETITEMTEXTW,
                 static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
  return text;
}

MainDialogTest::Colors MainDialogTest::ColorsOf(int id) const {
  const HDC dc = ::GetDC(Control(id));
  const auto brush = reinterpret_cast<HBRUSH>(::SendMessageW(
      dialog.m_hWnd, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc),
      reinterpret_cast<LPARAM>(Control(id))));
  LOGBRUSH description = {};
  ::GetObjectW(brush, sizeof description, &description);
  const Colors colors = {::GetTextColor(dc), description.lbColor};
  ::ReleaseDC(Control(id), dc);
  return colors;
}

std::vector<std::wstring> MainDialogTest::ConsoleRows() {
  const HANDLE screen = ::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  ::GetConsoleScreenBufferInfo(screen, &info);
  std::vector<std::wstring> rows;
  for (SHORT y = 0; y <= info.dwCursorPosition.Y; ++y) {
    std::wstring row(static_cast<size_t>(info.dwSize.X), L' ');
    DWORD read = 0;
    ::ReadConsoleOutputCharacterW(
        screen, row.data(), static_cast<DWORD>(row.size()), {0, y}, &read);
    row.resize(read);
    row.erase(row.find_last_not_of(L' ') + 1);
    rows.push_back(row);
  }
  ::CloseHandle(screen);
  return rows;
}

std::filesystem::path MainDialogTest::Folder() const {
  return std::filesystem::temp_directory_path() /
         ("rendal_test_" + std::to_string(::GetCurrentProcessId()));
}

std::filesystem::path MainDialogTest::WriteImage(const std::string& name,
                                                 const cv::Mat& image) {
  std::vector<uint8_t> bytes;
  cv::imencode(".png", image, bytes);
  std::filesystem::create_directories(Folder());
  const std::filesystem::path path =
      Folder() / std::u8string(name.begin(), name.end());
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  return path;
}

void MainDialogTest::TearDown() {
  std::error_code ignored;
  std::filesystem::remove_all(Folder(), ignored);
  ::RegDeleteTreeW(HKEY_CURRENT_USER, kSettingsKey);
}

void MainDialogTest::RunWithImage(const cv::Mat& image, const Script& script) {
  dialog.m_startImage = WriteImage("image.png", image);
  Run([&] {
    Tick();
    script();
  });
}

size_t LiveHeapBlocks() {
  const HANDLE heap = ::GetProcessHeap();
  size_t blocks = 0;
  ::HeapLock(heap);
  PROCESS_HEAP_ENTRY entry = {};
  while (::HeapWalk(heap, &entry)) {
    if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) ++blocks;
  }
  ::HeapUnlock(heap);
  return blocks;
}

cv::Mat Squares(cv::Size size, int count, int side, int grey) {
  cv::Mat image = cv::Mat::zeros(size, CV_8UC1);
  const int pitch = side + 2;
  const int perRow = (size.width - 1) / pitch;
  for (int i = 0; i < count; ++i) {
    const cv::Rect square(1 + i % perRow * pitch, 1 + i / perRow * pitch, side,
                          side);
    image(square).setTo(grey);
  }
  return image;
}
