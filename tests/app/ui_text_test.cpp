// SPDX-License-Identifier: MIT
#include "app/ui_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace rendal::ui_text {
namespace {

bool IsAscii(const std::wstring& text) {
  return std::all_of(text.begin(), text.end(),
                     [](wchar_t letter) { return letter < 0x80; });
}

std::vector<Text> Texts() {
  std::vector<Text> texts = {
      kAlreadyOpen,     kTitle,          kOpenTitle,        kElementWidth,
      kWelcome,         kRecentFiles,    kSavePicture,      kRecordRecipe,
      kSaveRecipe,      kRunRecipe,      kSavePictureTitle, kExportTitle,
      kSaveRecipeTitle, kRunRecipeTitle, kExport,           kCopyRows};
  texts.insert(texts.end(), std::begin(kDirections), std::end(kDirections));
  texts.insert(texts.end(), std::begin(kElements), std::end(kElements));
  return texts;
}

TEST(UiText, EveryTextIsThereInBothLanguages) {
  for (const Text& text : Texts()) {
    EXPECT_FALSE(IsAscii(text.In(kChinese))) << text.english;
    EXPECT_TRUE(IsAscii(text.In(kEnglish))) << text.english;
    EXPECT_FALSE(std::wstring(text.In(kEnglish)).empty());
  }
}

TEST(UiText, LanguagesOtherThanTheTwoAreChinese) {
  EXPECT_STREQ(kElementWidth.In(2), kElementWidth.chinese);
  EXPECT_STREQ(kElementWidth.In(-1), kElementWidth.chinese);
}

// Whoever cannot read the language that is on has to find it.
TEST(UiText, CommandForTheOtherLanguageSpeaksThatLanguage) {
  EXPECT_TRUE(IsAscii(kOtherLanguage.In(kChinese)));
  EXPECT_FALSE(IsAscii(kOtherLanguage.In(kEnglish)));
}

TEST(UiText, CaptionsAreEnglishAndOnePerControl) {
  std::set<int> ids;
  for (const Caption& caption : kCaptions) {
    EXPECT_TRUE(ids.insert(caption.id).second) << caption.id;
    EXPECT_TRUE(IsAscii(caption.english)) << caption.id;
    EXPECT_STRNE(caption.english, L"") << caption.id;
  }
}

}  // namespace
}  // namespace rendal::ui_text
