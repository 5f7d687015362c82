// SPDX-License-Identifier: MIT
#include "tools/status.h"

#include <cstdarg>
#include <cstdio>

namespace rendal {

Status Status::In(int32_t language) const {
  Status status = *this;
  const auto index = static_cast<size_t>(language);
  if (index < translations.size() && !translations[index].empty()) {
    status.text = translations[index];
  }
  return status;
}

namespace messages {
namespace {

struct Wording {
  const char* chinese;
  const char* english;
};

// clang-format off
constexpr Wording kImageOpened = {
    "打开图片,width = %d, height = %d",
    "open image,width = %d, height = %d"};
constexpr Wording kChannelsNotSupported = {
    "打开图片,channels = %d not support",
    "open image,channels = %d not support"};
constexpr Wording kImageTooLarge = {
    "图片太大,width = %llu, height = %llu, 最多 %llu 像素",
    "image too large,width = %llu, height = %llu, at most %llu pixels"};
constexpr Wording kBandReversed   = {"MinGray = %d > MaxGray = %d",
                                     "MinGray = %d > MaxGray = %d"};
constexpr Wording kRegionEmpty    = {"region is empty",
                                     "region is empty"};
constexpr Wording kNoBinarization = {"no binarization yet, %d",
                                     "no binarization yet, %d"};
constexpr Wording kTooFewRegions  = {"The number of regions is less than 2, %d",
                                     "The number of regions is less than 2, %d"};
constexpr Wording kDone           = {"%s done",
                                     "%s done"};
constexpr Wording kConnectionDone = {
    "connection done, connected components =%d",
    "connection done, connected components =%d"};
constexpr Wording kRowsCopied     = {"已复制 %d 行",
                                     "rows copied: %d"};
constexpr Wording kClipboardInUse = {"剪贴板被其他程序占用",
                                     "clipboard in use by another program"};
constexpr Wording kNoComponents   = {"还没有连通域",
                                     "no components yet"};
constexpr Wording kExported       = {"已导出 %d 个连通域",
                                     "components exported: %d"};
constexpr Wording kNoImage        = {"还没有图像",
                                     "no image yet"};
constexpr Wording kPictureSaved   = {"图像已保存",
                                     "picture saved"};
constexpr Wording kPictureUnknown = {"不支持的图像格式: %s",
                                     "unknown kind of picture: %s"};
constexpr Wording kRecording      = {"正在录制",
                                     "recording"};
constexpr Wording kRecorded       = {"已录制 %d 步",
                                     "steps recorded: %d"};
constexpr Wording kNothingRecorded = {"还没有录制任何步骤",
                                      "nothing recorded yet"};
constexpr Wording kRecipeSaved    = {"已保存 %d 步",
                                     "steps saved: %d"};
constexpr Wording kNoSuchFile     = {"文件不存在: %s",
                                     "no such file: %s"};
// clang-format on

Status Format(Tone tone, int32_t language, const Wording* wording, ...) {
  Status status{tone, ""};
  const char* const formats[] = {wording->chinese, wording->english};
  for (size_t i = 0; i < status.translations.size(); ++i) {
    char text[1024];
    va_list arguments;
    va_start(arguments, wording);
    std::vsnprintf(text, sizeof text, formats[i], arguments);
    va_end(arguments);
    status.translations[i] = text;
  }
  return status.In(language);
}

}  // namespace

Status ImageOpened(int32_t language, int width, int height) {
  return Format(Tone::kNotice, language, &kImageOpened, width, height);
}

Status ChannelsNotSupported(int32_t language, int channels) {
  return Format(Tone::kNotice, language, &kChannelsNotSupported, channels);
}

Status ImageTooLarge(int32_t language, uint64_t width, uint64_t height,
                     uint64_t most_pixels) {
  using Printed = unsigned long long;
  return Format(Tone::kError, language, &kImageTooLarge, Printed{width},
                Printed{height}, Printed{most_pixels});
}

Status DisplayCleared() { return {Tone::kNotice, ""}; }

Status BandReversed(int32_t language, int min_gray, int max_gray) {
  return Format(Tone::kError, language, &kBandReversed, min_gray, max_gray);
}

Status RegionEmpty(int32_t language) {
  return Format(Tone::kError, language, &kRegionEmpty);
}

Status NoBinarization(int32_t language, size_t history_length) {
  return Format(Tone::kError, language, &kNoBinarization,
                static_cast<int>(history_length));
}

Status TooFewRegions(int32_t language, size_t history_length) {
  return Format(Tone::kError, language, &kTooFewRegions,
                static_cast<int>(history_length));
}

Status Done(int32_t language, std::string_view what) {
  return Format(Tone::kSuccess, language, &kDone, std::string(what).c_str());
}

Status ConnectionDone(int32_t language, int count) {
  return Format(Tone::kSuccess, language, &kConnectionDone, count);
}

Status RowsCopied(int32_t language, size_t rows) {
  return Format(Tone::kSuccess, language, &kRowsCopied, static_cast<int>(rows));
}

Status ClipboardInUse(int32_t language) {
  return Format(Tone::kError, language, &kClipboardInUse);
}

Status NoComponents(int32_t language) {
  return Format(Tone::kError, language, &kNoComponents);
}

Status ComponentsExported(int32_t language, size_t components) {
  return Format(Tone::kSuccess, language, &kExported,
                static_cast<int>(components));
}

Status NoImage(int32_t language) {
  return Format(Tone::kError, language, &kNoImage);
}

Status PictureSaved(int32_t language) {
  return Format(Tone::kSuccess, language, &kPictureSaved);
}

Status PictureKindUnknown(int32_t language, std::string_view extension) {
  return Format(Tone::kError, language, &kPictureUnknown,
                std::string(extension).c_str());
}

Status Recording(int32_t language) {
  return Format(Tone::kNotice, language, &kRecording);
}

Status Recorded(int32_t language, size_t steps) {
  return Format(Tone::kNotice, language, &kRecorded, static_cast<int>(steps));
}

Status NothingRecorded(int32_t language) {
  return Format(Tone::kError, language, &kNothingRecorded);
}

Status RecipeSaved(int32_t language, size_t steps) {
  return Format(Tone::kSuccess, language, &kRecipeSaved,
                static_cast<int>(steps));
}

Status NoSuchFile(int32_t language, std::string_view name) {
  return Format(Tone::kError, language, &kNoSuchFile,
                std::string(name).c_str());
}

Status Failed(const std::exception& error) {
  return {Tone::kError, error.what()};
}

}  // namespace messages
}  // namespace rendal
