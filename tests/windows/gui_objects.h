// SPDX-License-Identifier: MIT
//
// Counts what a window test may leave behind.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

// Graphics objects alive in this process.
inline size_t LiveGdiObjects() {
  const DWORD counted = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
  if (counted != 0) return counted;
  // Where the call is not implemented, the table it would count is read: 16384
  // entries of 24 bytes, byte 14 the type, 0 for a free entry.
  constexpr size_t kTablePointerInPeb = 0xF8;
  constexpr size_t kEntries = 16384, kEntryBytes = 24, kTypeOffset = 14;
  const auto peb = static_cast<uintptr_t>(__readgsqword(0x60));
  const auto* table =
      *reinterpret_cast<const uint8_t* const*>(peb + kTablePointerInPeb);
  size_t live = 0;
  for (size_t i = 0; i < kEntries; ++i) {
    if (table[i * kEntryBytes + kTypeOffset] != 0) ++live;
  }
  return live;
}
