// SPDX-License-Identifier: MIT
#include "tests/windows/monkey.h"

#include <commctrl.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <stdexcept>
#include <vector>

#include "res/resource.h"
#include "tests/windows/operator.h"
#include "tests/windows/photographs.h"
#include "tests/windows/screen.h"

namespace rendal_test {
namespace {

namespace fs = std::filesystem;

constexpr int kLeastRests = 6;
constexpr int kMostBetweenRests = 5000;
constexpr size_t kToldEvents = 25;
constexpr int kPaintMs = 25;  // a tick of the refresh, and a little
constexpr int kAllTheWay = 40;
constexpr UINT kMessageBoxText = 0xFFFF;

// What may come and go between two rests: threads of the system's own, caches.
constexpr size_t kSlackHandles = 12;
constexpr size_t kSlackGdiObjects = 12;
constexpr size_t kSlackWindows = 4;
constexpr size_t kSlackBytes = 16u << 20;

constexpr int kButtons[] = {
    IDC_THRESHOLD,    IDC_CONNECTION,   IDC_FILL_UP,     IDC_UNION,
    IDC_DIFFERENCE,   IDC_INTERSECTION, IDC_DILATION,    IDC_EROSION,
    IDC_OPENING,      IDC_CLOSING,      IDC_TOP_HAT,     IDC_BOTTOM_HAT,
    IDC_BOUNDARY,     IDC_TOGGLE_GRAY,  IDC_HIT_OR_MISS, IDC_SKELETON,
    IDC_MEASURE,      IDC_MEASURE,      IDC_MEASURE,     IDC_CLEAR_DISPLAY,
    IDC_FIND_LINE,    IDC_ZOOM_ONE,     IDC_ZOOM_FIT,    IDC_MODE_NONE,
    IDC_MODE_LINE,    IDC_MODE_CIRCLE,  IDC_MODE_BAND,   IDC_MODE_ELLIPSE,
    IDC_MODE_LINE,    IDC_MODE_CIRCLE,  IDC_MODE_BAND,   IDC_MODE_ELLIPSE,
    IDC_SPARE_1,      IDC_SPARE_2,      IDC_SPARE_3,     IDC_HIDDEN_BUTTON,
    IDC_SAVE_FEATURES};
constexpr int kSpins[] = {IDC_LENGTH_SPIN,        IDC_WIDTH_SPIN,
                          IDC_AMPLITUDE_SPIN,     IDC_SIGMA_SPIN,
                          IDC_REPS_SPIN,          IDC_COUNT_SPIN,
                          IDC_MIN_GRAY_SPIN,      IDC_MAX_GRAY_SPIN,
                          IDC_ELEMENT_WIDTH_SPIN, IDC_ELEMENT_HEIGHT_SPIN};
constexpr int kEdits[] = {IDC_LENGTH,        IDC_WIDTH,    IDC_AMPLITUDE,
                          IDC_SIGMA,         IDC_REPS,     IDC_COUNT,
                          IDC_MIN_GRAY,      IDC_MAX_GRAY, IDC_ELEMENT_WIDTH,
                          IDC_ELEMENT_HEIGHT};
constexpr int kCombos[] = {IDC_DIRECTION, IDC_SELECTION, IDC_BOUNDARY_TYPE,
                           IDC_ELEMENT, IDC_FIND_LINE_DISPLAY};
const wchar_t* const kTexts[] = {
    L"",     L"0",     L"1",      L"3",   L"7.5",
    L"12",   L"40",    L"100",    L"255", L"256",
    L"1000", L"1,000", L"-5",     L"1e9", L"nan",
    L"1e-9", L"-1e99", L"0.4000", L"abc", L"99999999999999999999"};

// Pictures of many kinds and sizes, and files that are none.
class Album {
 public:
  explicit Album(uint32_t seed)
      : folder_(fs::temp_directory_path() /
                (L"monkey " + std::to_wstring(::GetCurrentProcessId()))) {
    fs::create_directories(folder_);
    for (const wchar_t* name :
         {L"coins.png", L"camera.png", L"rocket.jpg", L"page.png", L"horse.png",
          L"chessboard_GRAY_U16.tif", L"palette_color.png", L"multipage.tif",
          L"truncated.jpg", L"astronaut.png"}) {
      paths_.push_back(Photograph(name));
    }
    cv::Mat noise(200, 300, CV_8UC1);
    cv::RNG(seed).fill(noise, cv::RNG::UNIFORM, 0, 256);
    Add(L"noise.png", noise);
    Add(L"dot.png", cv::Mat(1, 1, CV_8UC1, cv::Scalar(200)));
    Add(L"row.png", noise.reshape(1, 1).colRange(0, 3000));
    Add(L"column.png", noise.reshape(1, 60000).rowRange(0, 3000));
    Add(L"white.png", cv::Mat(700, 1100, CV_8UC1, cv::Scalar(255)));
    Add(L"clear.png", cv::Mat(60, 80, CV_8UC4, cv::Scalar(9, 99, 199, 0)));
    Add(L"rocket.png", UprightRocket());
    paths_.push_back(folder_ / L"text.png");
    std::ofstream(paths_.back()) << "no picture at all\n";
    rest_ = folder_ / L"rest.png";
    WritePng(rest_, noise(cv::Rect(0, 0, 64, 48)));
  }
  ~Album() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  const std::vector<fs::path>& paths() const { return paths_; }
  const fs::path& rest() const { return rest_; }

 private:
  void Add(const wchar_t* name, const cv::Mat& picture) {
    paths_.push_back(folder_ / name);
    WritePng(paths_.back(), picture);
  }

  fs::path folder_;
  std::vector<fs::path> paths_;
  fs::path rest_;
};

class Monkey {
 public:
  explicit Monkey(uint32_t seed)
      : seed_(seed),
        random_(seed),
        album_(seed),
        program_(ProgramPath(), {}),
        window_(program_.id()) {}

  MonkeyReport Play(int events);

 private:
  using Act = void (Monkey::*)();
  struct Habit {
    int weight;
    const char* name;
    Act act;
  };
  static const Habit kHabits[];

  // 0 .. n - 1
  int Any(int n) {
    return static_cast<int>(random_() % static_cast<unsigned>(n));
  }
  template <typename List>
  auto AnyOf(const List& list) {
    return list[Any(static_cast<int>(std::size(list)))];
  }
  POINT AnyViewPixel(int beyond = 0);

  void DoSomething();
  void PressButton();
  void TurnWheel();
  void DragInView();
  void ClickInView();
  void ClickSpin();
  void TypeText();
  void TypeKeys();
  void ChooseItem();
  void ClickAnywhere();
  void ClearConsole();
  void LoadPicture();
  void CancelLoading();
  void OpenAbout();
  void SwitchLanguage();

  void Did(const std::string& what);
  void CloseModals();
  void Rest();
  void CheckGrowth() const;
  [[noreturn]] void Fail(const std::string& what) const;

  const uint32_t seed_;
  std::mt19937 random_;
  const Album album_;
  Process program_;
  Operator window_;
  MonkeyReport report_;
  std::deque<std::string> last_;
  int done_ = 0;
};

const Monkey::Habit Monkey::kHabits[] = {
    {60, "button", &Monkey::PressButton},
    {30, "wheel", &Monkey::TurnWheel},
    {40, "drag", &Monkey::DragInView},
    {20, "click in the view", &Monkey::ClickInView},
    {30, "spin", &Monkey::ClickSpin},
    {20, "text", &Monkey::TypeText},
    {20, "keys", &Monkey::TypeKeys},
    {20, "item", &Monkey::ChooseItem},
    {20, "click anywhere", &Monkey::ClickAnywhere},
    {1, "console cleared", &Monkey::ClearConsole},
    {1, "load", &Monkey::LoadPicture},
    {1, "load cancelled", &Monkey::CancelLoading},
    {1, "about", &Monkey::OpenAbout},
    {1, "language", &Monkey::SwitchLanguage},
};

void Monkey::Did(const std::string& what) {
  last_.push_back(std::to_string(done_) + ": " + what);
  if (last_.size() > kToldEvents) last_.pop_front();
}

void Monkey::Fail(const std::string& what) const {
  std::string text = "monkey with seed " + std::to_string(seed_) + ", event " +
                     std::to_string(done_) + ": " + what;
  if (program_.HasEnded()) text += " (the program has ended)";
  for (const std::string& event : last_) text += "\n  " + event;
  throw std::runtime_error(text);
}

MonkeyReport Monkey::Play(int events) {
  try {
    window_.DismissWelcome();
    window_.Load(album_.paths().front().wstring());
    const int rests = std::max(kLeastRests, events / kMostBetweenRests);
    for (done_ = 0; done_ < events; ++done_) {
      if (done_ % std::max(1, events / rests) == 0) Rest();
      DoSomething();
    }
    Rest();
    CheckGrowth();
    window_.Close();
    if (program_.ExitCode() != 0) Fail("an exit code that is not 0");
  } catch (const std::exception& error) {
    const std::string what = error.what();
    if (what.starts_with("monkey")) throw;
    Fail(what);
  }
  return report_;
}

void Monkey::DoSomething() {
  int total = 0;
  for (const Habit& habit : kHabits) total += habit.weight;
  int pick = Any(total);
  const Habit* habit = kHabits;
  while (pick >= habit->weight) pick -= habit++->weight;
  const bool look = Any(8) == 0;

  const auto start = std::chrono::steady_clock::now();
  (this->*habit->act)();
  CloseModals();
  Send(window_.dialog(), WM_NULL);
  const std::chrono::duration<double> took =
      std::chrono::steady_clock::now() - start;
  if (program_.HasEnded()) Fail("a program that goes on");
  MonkeyReport::Kind& kind = report_.kinds[habit->name];
  ++kind.events;
  kind.seconds += took.count();
  if (took.count() > kind.slowest_s) {
    kind.slowest_s = took.count();
    kind.slowest = last_.back();
  }
  if (look) ::Sleep(kPaintMs);
}

POINT Monkey::AnyViewPixel(int beyond) {
  const SIZE size = window_.ViewSize();
  const int x = Any(size.cx + 2 * beyond) - beyond;
  const int y = Any(size.cy + 2 * beyond) - beyond;
  return {x, y};
}

std::string Told(POINT at) {
  return std::to_string(at.x) + ", " + std::to_string(at.y);
}

void Monkey::PressButton() {
  const int id = AnyOf(kButtons);
  Did("button " + std::to_string(id));
  window_.Click(id);
}

void Monkey::TurnWheel() {
  const POINT at = AnyViewPixel();
  const int notches = Any(4) == 0 ? kAllTheWay : 1 + Any(6);
  const int delta = Any(2) == 0 ? WHEEL_DELTA : -WHEEL_DELTA;
  Did("wheel " + std::to_string(notches * delta) + " at " + Told(at));
  for (int i = 0; i < notches; ++i) window_.Wheel(at, delta);
}

void Monkey::DragInView() {
  const POINT from = AnyViewPixel();
  const POINT to = AnyViewPixel(200);
  Did("drag " + Told(from) + " to " + Told(to));
  window_.Drag(from, to);
}

void Monkey::ClickInView() {
  constexpr UINT kMessages[] = {
      WM_LBUTTONDBLCLK, WM_RBUTTONDBLCLK, WM_MBUTTONDBLCLK, WM_RBUTTONDOWN,
      WM_RBUTTONUP,     WM_MBUTTONDOWN,   WM_LBUTTONUP,     WM_MOUSEMOVE};
  const POINT at = AnyViewPixel();
  const UINT message = AnyOf(kMessages);
  Did("mouse message " + std::to_string(message) + " at " + Told(at));
  Send(window_.ViewWindow(), message, 0, MAKELPARAM(at.x, at.y));
}

void Monkey::ClickSpin() {
  const int id = AnyOf(kSpins);
  const bool up = Any(2) == 0;
  const int clicks = 1 + Any(5);
  Did("spin " + std::to_string(id) + (up ? " up " : " down ") +
      std::to_string(clicks));
  RECT area = {};
  const HWND spin = window_.Control(id);
  ::GetClientRect(spin, &area);
  const LPARAM at = MAKELPARAM(area.right / 2, up ? 3 : area.bottom - 3);
  for (int i = 0; i < clicks; ++i) {
    Send(spin, WM_LBUTTONDOWN, MK_LBUTTON, at);
    Send(spin, WM_LBUTTONUP, 0, at);
  }
}

void Monkey::TypeText() {
  const int id = AnyOf(kEdits);
  const std::wstring text = AnyOf(kTexts);
  Did("text " + std::to_string(id) + " \"" + Utf8(text) + "\"");
  window_.Type(id, text);
}

void Monkey::TypeKeys() {
  constexpr wchar_t kKeys[] =
      L"0123456789012345678901234567890123456789"
      L"..--+e,ax \b\b\b\b";
  const int id = AnyOf(kEdits);
  const int count = 1 + Any(6);
  std::wstring keys;
  for (int i = 0; i < count; ++i) {
    keys += kKeys[Any(static_cast<int>(std::size(kKeys)) - 1)];
  }
  Did("keys " + std::to_string(id) + " \"" + Utf8(keys) + "\"");
  const HWND edit = window_.Control(id);
  if (Any(2) == 0) Send(edit, EM_SETSEL, 0, -1);
  for (const wchar_t key : keys) Send(edit, WM_CHAR, key, 1);
}

void Monkey::ChooseItem() {
  const int id = AnyOf(kCombos);
  const auto items = static_cast<int>(Send(window_.Control(id), CB_GETCOUNT));
  const int index = Any(std::max(items, 1));
  Did("item " + std::to_string(id) + " " + std::to_string(index));
  window_.Select(id, index);
}

// Whatever lies there gets the click; the load button has habits of its own.
void Monkey::ClickAnywhere() {
  RECT area = {};
  ::GetClientRect(window_.dialog(), &area);
  POINT at = {Any(area.right), Any(area.bottom)};
  Did("click at " + Told(at));
  HWND target = ::ChildWindowFromPointEx(
      window_.dialog(), at,
      CWP_SKIPINVISIBLE | CWP_SKIPDISABLED | CWP_SKIPTRANSPARENT);
  if (target == nullptr || target == window_.Control(IDC_LOAD_IMAGE)) return;
  ::MapWindowPoints(window_.dialog(), target, &at, 1);
  // Posted, both: a list waits in a loop of its own for the button's end.
  ::PostMessageW(target, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(at.x, at.y));
  ::PostMessageW(target, WM_LBUTTONUP, 0, MAKELPARAM(at.x, at.y));
}

void Monkey::ClearConsole() {
  Did("console cleared");
  window_.Click(IDC_CLEAR_CONSOLE);
}

void Monkey::LoadPicture() {
  const fs::path path = AnyOf(album_.paths());
  Did("load " + Utf8(path.wstring()));
  window_.Load(path.wstring());
}

void Monkey::CancelLoading() {
  Did("load cancelled");
  window_.Press(IDC_LOAD_IMAGE);
  window_.WaitForFileDialog();
}

void Monkey::OpenAbout() {
  Did("about");
  ::PostMessageW(window_.dialog(), WM_SYSCOMMAND, IDM_ABOUTBOX, 0);
  WaitUntil("the about box", [&] { return window_.FindModal() != nullptr; });
}

void Monkey::SwitchLanguage() {
  Did("language");
  window_.SwitchLanguage();
}

void Monkey::CloseModals() {
  WaitUntil("an end of what the window waits for", [&] {
    const HWND modal = window_.FindModal();
    if (modal == nullptr) return ::IsWindowEnabled(window_.dialog()) != FALSE;
    const WPARAM answer =
        ::GetDlgItem(modal, kMessageBoxText) ? IDOK : IDCANCEL;
    ::PostMessageW(modal, WM_COMMAND, answer, 0);
    return false;
  });
}

// Brings the program into one and the same state and counts.
void Monkey::Rest() {
  Did("rest");
  Send(window_.dialog(), WM_CANCELMODE);
  for (const int id : kCombos) {
    Send(window_.Control(id), CB_SHOWDROPDOWN, FALSE);
  }
  window_.Load(album_.rest().wstring());
  window_.Click(IDC_MODE_NONE);
  window_.SetSpin(IDC_MIN_GRAY_SPIN, 100);
  window_.SetSpin(IDC_MAX_GRAY_SPIN, 200);
  for (int i = 0; i < 2; ++i) window_.Click(IDC_THRESHOLD);
  window_.Click(IDC_CONNECTION);
  window_.Click(IDC_CLEAR_DISPLAY);
  window_.Click(IDC_ZOOM_FIT);
  ::Sleep(2 * kPaintMs);
  report_.rests.push_back(CountersOf(program_.id()));
}

// What leaks grows from rest to rest; what the system takes once, at whatever
// time, does not. The first rest comes before the program has warmed up.
void Monkey::CheckGrowth() const {
  const struct {
    const char* what;
    size_t ProcessCounters::*counter;
    size_t slack;
  } rows[] = {
      {"handles", &ProcessCounters::handles, kSlackHandles},
      {"graphics objects", &ProcessCounters::gdi_objects, kSlackGdiObjects},
      {"windows", &ProcessCounters::windows, kSlackWindows},
      {"bytes", &ProcessCounters::private_bytes, kSlackBytes}};
  for (const auto& [what, counter, slack] : rows) {
    std::vector<int64_t> steps;
    for (size_t i = 2; i < report_.rests.size(); ++i) {
      steps.push_back(static_cast<int64_t>(report_.rests[i].*counter) -
                      static_cast<int64_t>(report_.rests[i - 1].*counter));
    }
    const auto middle = steps.begin() + static_cast<int>(steps.size()) / 2;
    std::nth_element(steps.begin(), middle, steps.end());
    const int64_t growth = *middle * static_cast<int64_t>(steps.size());
    if (growth > static_cast<int64_t>(slack)) {
      Fail("no growth of " + std::string(what) + "; " +
           std::to_string(*middle) + " from rest to rest\n" + Told(report_));
    }
  }
}

}  // namespace

MonkeyReport LetMonkeyPlay(uint32_t seed, int events) {
  return Monkey(seed).Play(events);
}

std::string Told(const MonkeyReport& report) {
  std::string text;
  for (const auto& [name, kind] : report.kinds) {
    char line[100];
    std::snprintf(line, sizeof line,
                  "%5d %-18s %7.2f s, slowest %.3f s: ", kind.events,
                  name.c_str(), kind.seconds, kind.slowest_s);
    text += line + kind.slowest + "\n";
  }
  text += "at rest: handles, graphics objects, windows, KiB\n";
  for (const ProcessCounters& rest : report.rests) {
    text += std::to_string(rest.handles) + " " +
            std::to_string(rest.gdi_objects) + " " +
            std::to_string(rest.windows) + " " +
            std::to_string(rest.private_bytes >> 10) + "\n";
  }
  return text;
}

}  // namespace rendal_test
