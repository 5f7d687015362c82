// SPDX-License-Identifier: MIT
//
// The message map is part of the program's outside: which control does what,
// in which order the handlers are found.
#include <gtest/gtest.h>

#include <vector>

#include "tests/windows/main_dialog.h"

namespace {

struct Entry {
  UINT message;
  UINT code;
  UINT id;
  bool operator==(const Entry&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Entry& entry) {
  return out << std::hex << entry.message << '/' << entry.code << std::dec
             << '/' << entry.id;
}

Entry Clicked(UINT id) { return {WM_COMMAND, BN_CLICKED, id}; }

TEST(MessageMap, HasEveryHandlerInItsOrder) {
  const std::vector<Entry> expected = {
      {WM_SYSCOMMAND, 0, 0},
      {WM_PAINT, 0, 0},
      {WM_QUERYDRAGICON, 0, 0},
      Clicked(1001),
      {WM_MOUSEWHEEL, 0, 0},
      {WM_TIMER, 0, 0},
      Clicked(1017),
      Clicked(1018),
      Clicked(1019),
      Clicked(1015),
      Clicked(1016),
      Clicked(1036),
      Clicked(1037),
      Clicked(1072),
      Clicked(1032),
      {WM_COMMAND, EN_CHANGE, 1004},
      Clicked(1042),
      Clicked(1043),
      Clicked(1047),
      Clicked(1049),
      Clicked(1052),
      Clicked(1053),
      Clicked(1054),
      Clicked(1055),
      Clicked(1056),
      Clicked(1057),
      Clicked(1065),
      Clicked(1066),
      Clicked(1067),
      Clicked(1069),
      {WM_COMMAND, CBN_SELCHANGE, 1058},
      {WM_CTLCOLOR, 0, 0},
      Clicked(1020),
      Clicked(1048),
      Clicked(1068),
      Clicked(1071),
      {WM_CLOSE, 0, 0},
      Clicked(1022),
      Clicked(1031),
      {WM_DROPFILES, 0, 0},
      {WM_CONTEXTMENU, 0, 0},
      {WM_NOTIFY, static_cast<UINT>(LVN_ITEMCHANGED), 1051},
      {WM_COMMAND, 0, IDM_COPY_ROWS},
      {WM_COMMAND, 0, IDM_EXPORT},
      {WM_COMMAND, 0, IDM_SAVE_PICTURE},
      {WM_COMMAND, 0, IDM_RECORD_RECIPE},
      {WM_COMMAND, 0, IDM_SAVE_RECIPE},
      {WM_COMMAND, 0, IDM_RUN_RECIPE},
      {WM_DISPLAYCHANGE, 0, 0},
      {WM_SETTINGCHANGE, 0, 0},
      {WM_SIZE, 0, 0},
  };
  std::vector<Entry> actual;
  const AFX_MSGMAP* map = COpenDialog::GetThisMessageMap();
  for (const auto* entry = map->lpEntries; entry->nMessage != 0; ++entry) {
    actual.push_back({entry->nMessage, entry->nCode, entry->nID});
  }
  EXPECT_EQ(actual, expected);
}

}  // namespace
