// SPDX-License-Identifier: MIT
#include "app/view/steady_file.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace rendal {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kReadings = 4;  // after the first
constexpr size_t kChunk = size_t{1} << 16;

std::streamsize Read(std::istream& file, unsigned char* to, size_t most) {
  file.read(reinterpret_cast<char*>(to), static_cast<std::streamsize>(most));
  return file.gcount();
}

Bytes ReadAll(std::istream& file) {
  file.seekg(0, std::ios::end);
  const std::streamoff size = file.tellg();
  file.seekg(0);
  if (!file || size <= 0) return {};
  Bytes bytes(static_cast<size_t>(size));
  bytes.resize(static_cast<size_t>(Read(file, bytes.data(), bytes.size())));
  return bytes;
}

bool Holds(std::istream& file, const Bytes& bytes) {
  Bytes chunk(kChunk);
  for (size_t at = 0;;) {
    const auto count =
        static_cast<size_t>(Read(file, chunk.data(), chunk.size()));
    if (count == 0) return at == bytes.size();
    if (count > bytes.size() - at ||
        std::memcmp(chunk.data(), bytes.data() + at, count) != 0) {
      return false;
    }
    at += count;
  }
}

}  // namespace

std::optional<Bytes> ReadSteadyFile(const OpenFile& open) {
  for (int i = 0; i < kReadings; ++i) {
    Bytes bytes;
    if (const auto file = open()) bytes = ReadAll(*file);
    if (bytes.empty()) return bytes;
    if (const auto again = open(); again && Holds(*again, bytes)) return bytes;
  }
  return std::nullopt;
}

}  // namespace rendal
