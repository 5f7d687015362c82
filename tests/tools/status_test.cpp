// SPDX-License-Identifier: MIT
#include "tools/status.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace rendal {
namespace {

constexpr int kNeitherLanguage = 2;

void ExpectStatus(const Status& status, Tone tone, const std::string& text) {
  EXPECT_EQ(status.tone, tone);
  EXPECT_EQ(status.text, text);
}

TEST(Status, OpenedImageIsANoticeInTheChosenLanguage) {
  // The first two characters are dakai, "open", the next two tupian, "picture".
  ExpectStatus(messages::ImageOpened(0, 640, 480), Tone::kNotice,
               "\xE6\x89\x93\xE5\xBC\x80\xE5\x9B\xBE\xE7\x89\x87"
               ",width = 640, height = 480");
  ExpectStatus(messages::ImageOpened(1, 640, 480), Tone::kNotice,
               "open image,width = 640, height = 480");
}

TEST(Status, UnsupportedChannelsAreANoticeInTheChosenLanguage) {
  ExpectStatus(messages::ChannelsNotSupported(0, 2), Tone::kNotice,
               "\xE6\x89\x93\xE5\xBC\x80\xE5\x9B\xBE\xE7\x89\x87"
               ",channels = 2 not support");
  ExpectStatus(messages::ChannelsNotSupported(1, 2), Tone::kNotice,
               "open image,channels = 2 not support");
}

TEST(Status, ImageTooLargeIsAnErrorInTheChosenLanguage) {
  // Tupian tai da, "picture too large"; zui duo, "at most"; xiangsu, "pixels".
  ExpectStatus(messages::ImageTooLarge(0, 60000, 50000, 500000000),
               Tone::kError,
               "\xE5\x9B\xBE\xE7\x89\x87\xE5\xA4\xAA\xE5\xA4\xA7"
               ",width = 60000, height = 50000, "
               "\xE6\x9C\x80\xE5\xA4\x9A 500000000 "
               "\xE5\x83\x8F\xE7\xB4\xA0");
  ExpectStatus(messages::ImageTooLarge(1, 60000, 50000, 500000000),
               Tone::kError,
               "image too large,width = 60000, height = 50000, at most "
               "500000000 pixels");
}

TEST(Status, NewsOfResultsAreToldInBothLanguages) {
  ExpectStatus(messages::RowsCopied(1, 12), Tone::kSuccess, "rows copied: 12");
  ExpectStatus(messages::ClipboardInUse(1), Tone::kError,
               "clipboard in use by another program");
  ExpectStatus(messages::NoSuchFile(1, "a%d.png"), Tone::kError,
               "no such file: a%d.png");
  for (const Status& status :
       {messages::RowsCopied(0, 12), messages::ClipboardInUse(0),
        messages::NoComponents(0), messages::ComponentsExported(0, 2),
        messages::NoImage(0), messages::PictureSaved(0),
        messages::PictureKindUnknown(0, ".x"), messages::Recording(0),
        messages::Recorded(0, 3), messages::NothingRecorded(0),
        messages::RecipeSaved(0, 3),
        messages::NoSuchFile(0, "a.png")}) {
    EXPECT_GE(static_cast<unsigned char>(status.text[0]), 0x80);
    EXPECT_LT(static_cast<unsigned char>(status.In(1).text[0]), 0x80);
  }
}

TEST(Status, BlobMessagesReadTheSameInBothLanguages) {
  for (const int language : {0, 1}) {
    SCOPED_TRACE(language);
    ExpectStatus(messages::BandReversed(language, 200, 100), Tone::kError,
                 "MinGray = 200 > MaxGray = 100");
    ExpectStatus(messages::RegionEmpty(language), Tone::kError,
                 "region is empty");
    ExpectStatus(messages::NoBinarization(language, 0), Tone::kError,
                 "no binarization yet, 0");
    ExpectStatus(messages::TooFewRegions(language, 1), Tone::kError,
                 "The number of regions is less than 2, 1");
    ExpectStatus(messages::Done(language, "threshold"), Tone::kSuccess,
                 "threshold done");
    ExpectStatus(messages::ConnectionDone(language, 24), Tone::kSuccess,
                 "connection done, connected components =24");
  }
}

TEST(Status, OtherLanguagesLeaveTheTextEmpty) {
  ExpectStatus(messages::ImageOpened(kNeitherLanguage, 1, 1), Tone::kNotice,
               "");
  ExpectStatus(messages::BandReversed(kNeitherLanguage, 2, 1), Tone::kError,
               "");
  ExpectStatus(messages::Done(kNeitherLanguage, "union2"), Tone::kSuccess, "");
  ExpectStatus(messages::ConnectionDone(-1, 3), Tone::kSuccess, "");
}

TEST(Status, IsToldAgainInTheOtherLanguage) {
  const Status chinese = messages::ImageOpened(0, 640, 480);
  const Status english = messages::ImageOpened(1, 640, 480);
  EXPECT_EQ(chinese.In(1).text, english.text);
  EXPECT_EQ(chinese.In(1).In(0).text, chinese.text);
  EXPECT_EQ(english.In(0).tone, Tone::kNotice);
  EXPECT_EQ(english.In(kNeitherLanguage).text, english.text);
  const Status failed = messages::Failed(std::runtime_error("no memory"));
  EXPECT_EQ(failed.In(1).text, "no memory");
  EXPECT_EQ(messages::DisplayCleared().In(1).text, "");
}

TEST(Status, ClearedDisplayIsAnEmptyNotice) {
  ExpectStatus(messages::DisplayCleared(), Tone::kNotice, "");
}

TEST(Status, ExceptionOfAToolBecomesARedLineWithItsText) {
  ExpectStatus(
      Guarded([]() -> Status { throw std::runtime_error("malloc failed"); }),
      Tone::kError, "malloc failed");
}

TEST(Status, GuardedPassesOnWhatTheToolReturns) {
  ExpectStatus(Guarded([] { return messages::Done(1, "opening"); }),
               Tone::kSuccess, "opening done");
}

}  // namespace
}  // namespace rendal
