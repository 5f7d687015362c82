// SPDX-License-Identifier: MIT
//
// Counts what a window test may leave behind.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

// Graphics objects alive in this process.
inline size_t LiveGdiObjects() {
  const DWORD counted = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
  if (counted != 0) return counted;
  // Where the call is not implemented, the table it would count is read: 16384
  // entries of 24 bytes, byte 14 the type, 0 for a free entry.
  constexpr size_t kTablePointerInPeb = 0xF8;
  constexpr size_t kEntries = 16384, kEntryBytes = 24, kTypeOffset = 14;
  using CurrentPeb = const uint8_t*(WINAPI*)();
  const auto current_peb = reinterpret_cast<CurrentPeb>(reinterpret_cast<void*>(
      ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")));
  const uint8_t* table = nullptr;
  std::memcpy(&table, current_peb() + kTablePointerInPeb, sizeof(table));
  size_t live = 0;
  for (size_t i = 0; i < kEntries; ++i) {
    if (table[i * kEntryBytes + kTypeOffset] != 0) ++live;
  }
  return live;
}
