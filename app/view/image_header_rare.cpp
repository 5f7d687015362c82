// SPDX-License-Identifier: MIT
//
// Portable maps, Radiance pictures and Sun raster files. Each header is taken
// apart as the image library's decoder does it, so that no file claims one size
// here and another one there.
#include <algorithm>
#include <limits>
#include <string_view>

#include "app/view/image_header.h"

namespace rendal {
namespace {

using Size = std::optional<ClaimedSize>;
using Number = std::optional<uint64_t>;

constexpr uint64_t kMost = std::numeric_limits<int32_t>::max();

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' ||
         c == '\r';
}

// A text of nothing but digits.
Number NumberOf(std::string_view text) {
  if (text.empty()) return std::nullopt;
  uint64_t value = 0;
  for (const char c : text) {
    if (!IsDigit(c)) return std::nullopt;
    value = value * 10 + static_cast<uint64_t>(c - '0');
    if (value > kMost) return std::nullopt;
  }
  return value;
}

Size SizeOf(Number width, Number height) {
  if (!width || !height) return std::nullopt;
  return ClaimedSize{*width, *height};
}

// Cuts off what stands before the first character that `ends`, and that too.
template <class Ends>
std::string_view Take(std::string_view* text, Ends ends) {
  const auto end = std::find_if(text->begin(), text->end(), ends);
  const auto length = static_cast<size_t>(end - text->begin());
  const std::string_view taken = text->substr(0, length);
  text->remove_prefix(std::min(length + 1, text->size()));
  return taken;
}

// Behind blanks and comments. The character behind it goes, too, whatever it
// is.
Number TakeMapNumber(std::string_view* text) {
  while (!text->empty() && !IsDigit(text->front())) {
    if (text->front() == '#') {
      Take(text, [](char c) { return c == '\n' || c == '\r'; });
    } else if (IsSpace(text->front())) {
      text->remove_prefix(1);
    } else {
      return std::nullopt;
    }
  }
  if (std::all_of(text->begin(), text->end(), IsDigit)) return std::nullopt;
  return NumberOf(Take(text, [](char c) { return !IsDigit(c); }));
}

Size MapSize(std::string_view text) {
  const Number width = TakeMapNumber(&text);
  return SizeOf(width, TakeMapNumber(&text));
}

Size FloatMapSize(std::string_view text) {
  const Number width = NumberOf(Take(&text, IsSpace));
  return SizeOf(width, NumberOf(Take(&text, IsSpace)));
}

// Lines of a name and a value. Of names that are there twice the largest
// counts.
Size AnyMapSize(std::string_view text) {
  Number width, height;
  while (!text.empty()) {
    std::string_view line = Take(&text, [](char c) { return c == '\n'; });
    while (!line.empty() && IsSpace(line.back())) line.remove_suffix(1);
    const std::string_view name = Take(&line, IsSpace);
    if (name == "ENDHDR") return SizeOf(width, height);
    if (name != "WIDTH" && name != "HEIGHT") continue;
    const Number value = NumberOf(line);
    if (!value) return std::nullopt;
    Number& to = name == "WIDTH" ? width : height;
    to = std::max(to.value_or(0), *value);
  }
  return std::nullopt;
}

// Longer lines are more than one to the decoder.
std::string_view TakeRadianceLine(std::string_view* text) {
  constexpr size_t kLongest = 127;
  const size_t end = text->find('\n');
  const size_t length = std::min(
      {kLongest, end == text->npos ? kLongest : end + 1, text->size()});
  const std::string_view line = text->substr(0, length);
  text->remove_prefix(length);
  return line;
}

// "-Y 480 +X 640" behind the blank line behind the format.
Size RadianceSize(std::string_view text) {
  std::string_view line;
  do {
    line = TakeRadianceLine(&text);
    if (line.empty() || line == "\n") return std::nullopt;
  } while (line != "FORMAT=32-bit_rle_rgbe\n");
  if (TakeRadianceLine(&text) != "\n") return std::nullopt;
  line = TakeRadianceLine(&text);
  if (!line.starts_with("-Y ") || !line.ends_with('\n')) return std::nullopt;
  line = line.substr(3, line.size() - 4);
  const Number height = NumberOf(Take(&line, IsSpace));
  if (!line.starts_with("+X ")) return std::nullopt;
  return SizeOf(NumberOf(line.substr(3)), height);
}

Size RasterSize(std::span<const unsigned char> bytes) {
  if (bytes.size() < 12) return std::nullopt;
  const auto number = [&](size_t at) {
    uint64_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = value << 8 | bytes[at + i];
    return value;
  };
  return ClaimedSize{number(4), number(8)};
}

}  // namespace

Size ReadRareClaimedSize(std::span<const unsigned char> bytes) {
  // A header has no more, comments included.
  constexpr size_t kLongestHeader = size_t{1} << 20;
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()),
                              std::min(bytes.size(), kLongestHeader));
  if (text.starts_with("\x59\xA6\x6A\x95")) return RasterSize(bytes);
  if (text.starts_with("#?RGBE") || text.starts_with("#?RADIANCE")) {
    return RadianceSize(text);
  }
  if (text.starts_with("PF\n") || text.starts_with("Pf\n")) {
    return FloatMapSize(text.substr(3));
  }
  if (text.starts_with("P7\n")) return AnyMapSize(text.substr(3));
  if (text.size() > 2 && text[0] == 'P' && text[1] >= '1' && text[1] <= '6') {
    return MapSize(text.substr(2));
  }
  return std::nullopt;
}

}  // namespace rendal
