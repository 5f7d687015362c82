// SPDX-License-Identifier: MIT
//
// TIFF files put together entry by entry, for forms that the image library
// does not write: tiles, palettes, inks, several pages, both byte orders.
#ifndef RENDAL_FUZZ_TIFF_BYTES_H_
#define RENDAL_FUZZ_TIFF_BYTES_H_

#include <cstdint>
#include <vector>

namespace fuzz {

using Bytes = std::vector<unsigned char>;

class TiffBytes {
 public:
  explicit TiffBytes(bool big_endian) : m_isBigEndian(big_endian) {
    m_bytes = big_endian ? Bytes{'M', 'M', 0, 42} : Bytes{'I', 'I', 42, 0};
    m_link = m_bytes.size();
    Put(0, 4);
  }

  // Data that entries point at; gives its place.
  uint32_t Add(const Bytes& data) {
    const auto at = static_cast<uint32_t>(m_bytes.size());
    m_bytes.insert(m_bytes.end(), data.begin(), data.end());
    if (m_bytes.size() % 2 != 0) m_bytes.push_back(0);
    return at;
  }
  uint32_t AddShorts(const std::vector<int>& values) {
    const auto at = static_cast<uint32_t>(m_bytes.size());
    for (const int value : values) Put(static_cast<uint64_t>(value), 2);
    return at;
  }

  enum Type { kShort = 3, kLong = 4 };
  struct Entry {
    int tag;  // ascending
    Type type;
    uint32_t count;
    uint32_t value;  // or the place of more than fits
  };
  void Page(const std::vector<Entry>& entries) {
    Overwrite(m_link, m_bytes.size());
    Put(entries.size(), 2);
    for (const Entry& entry : entries) {
      Put(static_cast<uint64_t>(entry.tag), 2);
      Put(entry.type, 2);
      Put(entry.count, 4);
      const bool half = entry.type == kShort && entry.count == 1;
      Put(entry.value, half ? 2 : 4);
      if (half) Put(0, 2);
    }
    m_link = m_bytes.size();
    Put(0, 4);
  }

  const Bytes& Result() const { return m_bytes; }

 private:
  void Put(uint64_t value, int size) {
    for (int i = 0; i < size; ++i) {
      const int shift = 8 * (m_isBigEndian ? size - 1 - i : i);
      m_bytes.push_back(static_cast<unsigned char>(value >> shift));
    }
  }
  void Overwrite(size_t at, uint64_t value) {
    Bytes rest;
    m_bytes.swap(rest);
    Put(value, 4);
    for (size_t i = 0; i < 4; ++i) rest[at + i] = m_bytes[i];
    m_bytes.swap(rest);
  }

  bool m_isBigEndian;
  Bytes m_bytes;
  size_t m_link;  // where the place of the next page belongs
};

}  // namespace fuzz

#endif  // RENDAL_FUZZ_TIFF_BYTES_H_
