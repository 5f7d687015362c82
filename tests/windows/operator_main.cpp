// SPDX-License-Identifier: MIT
//
// rendal_operator: one step of an operator's work on a running Rendal.exe, for
// scripts. Texts go to stdout as UTF-8; a step that does not come true is said
// on stderr and ends with 1.
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "res/resource.h"
#include "tests/windows/days_round.h"
#include "tests/windows/monkey.h"
#include "tests/windows/operator.h"
#include "tests/windows/responsiveness.h"

namespace {

using rendal_test::Operator;
using rendal_test::Utf8;

constexpr char kUsage[] =
    "usage: rendal_operator STEP\n"
    "  wait                waits for the main window, closes the welcome\n"
    "  load PATH           loads an image through the file-open dialog\n"
    "  loaded              waits for an image given on the command line\n"
    "  band MIN MAX        sets the band of grey values\n"
    "  threshold           presses \"threshold\"\n"
    "  connection          presses \"connection\"\n"
    "  rows                prints the region list\n"
    "  click ID            clicks a button\n"
    "  select ID INDEX     selects an item of a combo box\n"
    "  type ID TEXT        replaces the text of an edit box\n"
    "  drag X Y X2 Y2      drags in the image view, in view pixels\n"
    "  console TEXT        prints the console's text once it has TEXT\n"
    "  language            changes the language by the system menu\n"
    "  close               ends the program\n"
    "  round FOLDER        starts the program and works it for a whole day;\n"
    "                      pictures and texts are left in the folder\n"
    "  monkey SEED EVENTS  starts the program and does random things\n"
    "  responsiveness      starts the program and times clicks\n"
    "  desktop             keeps Wine's desktop until it is ended\n";

void Print(const std::wstring& text) { std::puts(Utf8(text).c_str()); }

[[noreturn]] void Fail(const std::string& what, const std::wstring& seen) {
  throw std::runtime_error(what + ": the status reads \"" + Utf8(seen) + "\"");
}

// "..., width = 384, height = 303", in either language.
void CheckLoaded(const std::wstring& status) {
  int width = 0, height = 0;
  const size_t numbers = status.find(L"width = ");
  if (numbers == std::wstring::npos ||
      std::swscanf(status.c_str() + numbers, L"width = %d, height = %d", &width,
                   &height) != 2 ||
      width <= 0 || height <= 0) {
    Fail("the image was not loaded", status);
  }
  Print(status);
}

void Load(const std::wstring& path) { CheckLoaded(Operator().Load(path)); }

void WaitUntilLoaded() {
  const Operator program;
  rendal_test::WaitUntil("a status after loading",
                         [&] { return !program.Status().empty(); });
  CheckLoaded(program.Status());
}

void SetBand(int min, int max) {
  const Operator program;
  program.SetSpin(IDC_MIN_GRAY_SPIN, min);
  program.SetSpin(IDC_MAX_GRAY_SPIN, max);
}

void Threshold() {
  const std::wstring status = Operator().StatusAfter(IDC_THRESHOLD);
  if (status != L"threshold done") Fail("threshold", status);
  Print(status);
}

void Connect() {
  const Operator program;
  const std::wstring status = program.StatusAfter(IDC_CONNECTION);
  int count = 0;
  if (std::swscanf(status.c_str(), L"connection done, connected components =%d",
                   &count) != 1) {
    Fail("connection", status);
  }
  const size_t rows = program.Rows().size();
  if (rows != static_cast<size_t>(count < 100 ? count : 100)) {
    throw std::runtime_error("connection: " + std::to_string(count) +
                             " components, but " + std::to_string(rows) +
                             " rows in the region list");
  }
  Print(status);
}

void PrintLine(const std::vector<std::wstring>& cells) {
  std::wstring line;
  for (const std::wstring& cell : cells) {
    line += (line.empty() ? L"" : L"\t") + cell;
  }
  Print(line);
}

void PrintRows() {
  const Operator program;
  PrintLine(program.ColumnTitles());
  for (const auto& row : program.Rows()) PrintLine(row);
}

// Wine starts a desktop for the first program with windows and ends it a second
// after the last, still holding that program's output. While this waits, one
// desktop serves all.
[[noreturn]] void KeepDesktop() {
  GetDesktopWindow();
  for (;;) Sleep(INFINITE);
}

void PlayMonkey(const std::wstring& seed, const std::wstring& events) {
  const rendal_test::MonkeyReport report = rendal_test::LetMonkeyPlay(
      static_cast<uint32_t>(std::stoul(seed)), std::stoi(events));
  std::fputs(Told(report).c_str(), stdout);
}

bool Run(const std::vector<std::wstring>& words) {
  const std::wstring step = words.empty() ? L"" : words[0];
  if (step == L"wait" && words.size() == 1) {
    Operator().DismissWelcome();
  } else if (step == L"load" && words.size() == 2) {
    Load(words[1]);
  } else if (step == L"loaded" && words.size() == 1) {
    WaitUntilLoaded();
  } else if (step == L"band" && words.size() == 3) {
    SetBand(std::stoi(words[1]), std::stoi(words[2]));
  } else if (step == L"threshold" && words.size() == 1) {
    Threshold();
  } else if (step == L"connection" && words.size() == 1) {
    Connect();
  } else if (step == L"rows" && words.size() == 1) {
    PrintRows();
  } else if (step == L"click" && words.size() == 2) {
    Operator().Click(std::stoi(words[1]));
  } else if (step == L"select" && words.size() == 3) {
    Operator().Select(std::stoi(words[1]), std::stoi(words[2]));
  } else if (step == L"type" && words.size() == 3) {
    Operator().Type(std::stoi(words[1]), words[2]);
  } else if (step == L"drag" && words.size() == 5) {
    Operator().Drag({std::stoi(words[1]), std::stoi(words[2])},
                    {std::stoi(words[3]), std::stoi(words[4])});
  } else if (step == L"console" && words.size() == 2) {
    Print(Operator().ConsoleTextWith(words[1]));
  } else if (step == L"language" && words.size() == 1) {
    Operator().SwitchLanguage();
  } else if (step == L"close" && words.size() == 1) {
    Operator().Close();
  } else if (step == L"round" && words.size() == 2) {
    rendal_test::WorkDaysRound(words[1]);
  } else if (step == L"monkey" && words.size() == 3) {
    PlayMonkey(words[1], words[2]);
  } else if (step == L"responsiveness" && words.size() == 1) {
    rendal_test::MeasureResponsiveness();
  } else if (step == L"desktop" && words.size() == 1) {
    KeepDesktop();
  } else {
    return false;
  }
  return true;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  _setmode(_fileno(stdout), _O_BINARY);
  try {
    if (Run({argv + 1, argv + argc})) return 0;
    std::fputs(kUsage, stderr);
    return 2;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
