// SPDX-License-Identifier: MIT
//
// Every message of the status label, in both languages, with its tone. Tools
// return a Status and never show one.
#ifndef RENDAL_TOOLS_STATUS_H_
#define RENDAL_TOOLS_STATUS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace rendal {

enum class Tone {
  kSilent,   // leave the label as it is
  kError,    // red on white
  kSuccess,  // blue on white
  kNotice,   // white on blue
};

struct Status {
  Tone tone = Tone::kSilent;
  std::string text;  // UTF-8
  // The same in every language, by Workbench::m_language; empty where the text
  // has only the one wording.
  std::array<std::string, 2> translations{};

  // This status told in another language, as far as it can be.
  Status In(int32_t language) const;
};

// `language` is Workbench::m_language: 0 Chinese, 1 English. Any other value
// leaves the text empty.
namespace messages {

Status ImageOpened(int32_t language, int width, int height);
Status ChannelsNotSupported(int32_t language, int channels);
Status ImageTooLarge(int32_t language, uint64_t width, uint64_t height,
                     uint64_t most_pixels);
Status DisplayCleared();

// The blob tool's messages read the same in both languages.
Status BandReversed(int32_t language, int min_gray, int max_gray);
Status RegionEmpty(int32_t language);
Status NoBinarization(int32_t language, size_t history_length);
Status TooFewRegions(int32_t language, size_t history_length);
Status Done(int32_t language, std::string_view what);  // "<what> done"
Status ConnectionDone(int32_t language, int count);

Status RowsCopied(int32_t language, size_t rows);
Status ClipboardInUse(int32_t language);
Status NoComponents(int32_t language);
Status ComponentsExported(int32_t language, size_t components);
Status NoImage(int32_t language);
Status PictureSaved(int32_t language);
Status PictureKindUnknown(int32_t language, std::string_view extension);
Status Recording(int32_t language);
Status Recorded(int32_t language, size_t steps);
Status NothingRecorded(int32_t language);
Status RecipeSaved(int32_t language, size_t steps);
Status NoSuchFile(int32_t language, std::string_view name);

// What a tool that threw leaves in the label: the exception's own text.
Status Failed(const std::exception& error);

}  // namespace messages

// Runs a tool; an exception becomes a red status, so the dialog stays alive.
// Tools change the workbench only after everything that can throw, so what was
// there before is still there.
template <typename Tool>
Status Guarded(Tool&& tool) {
  try {
    return tool();
  } catch (const std::exception& error) {
    return messages::Failed(error);
  }
}

}  // namespace rendal

#endif  // RENDAL_TOOLS_STATUS_H_
