// SPDX-License-Identifier: MIT
#include "tests/windows/process_counters.h"

#include <psapi.h>
#include <winternl.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace rendal_test {
namespace {

using Handle = std::unique_ptr<std::remove_pointer_t<HANDLE>,
                               decltype([](HANDLE h) { ::CloseHandle(h); })>;

template <typename Function>
Function SystemFunction(const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(
      ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), name)));
}

// Where the count is not implemented, the system's own list is counted.
struct HandleEntry {
  void* object;
  ULONG_PTR process_id;
  ULONG_PTR handle;
  ULONG access;
  USHORT trace;
  USHORT type;
  ULONG attributes;
  ULONG reserved;
};

size_t HandlesInSystemList(DWORD process_id) {
  constexpr int kExtendedHandles = 64;
  constexpr NTSTATUS kTooSmall = static_cast<NTSTATUS>(0xC0000004);
  using Query = NTSTATUS(WINAPI*)(int, void*, ULONG, ULONG*);
  const auto query = SystemFunction<Query>("NtQuerySystemInformation");
  std::vector<char> buffer(1 << 18);
  NTSTATUS status;
  while ((status = query(kExtendedHandles, buffer.data(),
                         static_cast<ULONG>(buffer.size()), nullptr)) ==
         kTooSmall) {
    buffer.resize(buffer.size() * 2);
  }
  if (status != 0) throw std::runtime_error("handles cannot be counted");
  const auto count = *reinterpret_cast<const ULONG_PTR*>(buffer.data());
  const auto* entries = reinterpret_cast<const HandleEntry*>(
      buffer.data() + 2 * sizeof(ULONG_PTR));
  size_t found = 0;
  for (ULONG_PTR i = 0; i < count; ++i) {
    found += entries[i].process_id == process_id;
  }
  return found;
}

size_t HandlesOf(HANDLE process, DWORD process_id) {
  DWORD count = 0;
  if (::GetProcessHandleCount(process, &count) && count != 0) return count;
  return HandlesInSystemList(process_id);
}

// Where the count is not implemented, the process's table is read: 16384
// entries of 24 bytes, byte 14 the type, 0 for a free entry.
size_t GdiObjectsOf(HANDLE process) {
  const DWORD counted = ::GetGuiResources(process, GR_GDIOBJECTS);
  if (counted != 0) return counted;
  constexpr size_t kTablePointerInPeb = 0xF8;
  constexpr size_t kEntries = 16384, kEntryBytes = 24, kTypeOffset = 14;
  using Query = NTSTATUS(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
  PROCESS_BASIC_INFORMATION basic = {};
  SystemFunction<Query>("NtQueryInformationProcess")(process, 0, &basic,
                                                     sizeof basic, nullptr);
  const auto peb = reinterpret_cast<const char*>(basic.PebBaseAddress);
  const void* table = nullptr;
  std::vector<uint8_t> entries(kEntries * kEntryBytes);
  if (!::ReadProcessMemory(process, peb + kTablePointerInPeb, &table,
                           sizeof table, nullptr) ||
      !::ReadProcessMemory(process, table, entries.data(), entries.size(),
                           nullptr)) {
    throw std::runtime_error("graphics objects cannot be counted");
  }
  size_t live = 0;
  for (size_t i = 0; i < kEntries; ++i) {
    live += entries[i * kEntryBytes + kTypeOffset] != 0;
  }
  return live;
}

struct WindowCount {
  DWORD process_id;
  size_t count = 0;

  static BOOL CALLBACK VisitChild(HWND, LPARAM self) {
    ++reinterpret_cast<WindowCount*>(self)->count;
    return TRUE;
  }
  static BOOL CALLBACK VisitTop(HWND window, LPARAM self) {
    auto* counter = reinterpret_cast<WindowCount*>(self);
    DWORD owner = 0;
    ::GetWindowThreadProcessId(window, &owner);
    if (owner == counter->process_id) {
      ++counter->count;
      ::EnumChildWindows(window, VisitChild, self);
    }
    return TRUE;
  }
};

size_t WindowsOf(DWORD process_id) {
  WindowCount counter{process_id};
  ::EnumWindows(WindowCount::VisitTop, reinterpret_cast<LPARAM>(&counter));
  return counter.count;
}

size_t PrivateBytesOf(HANDLE process) {
  PROCESS_MEMORY_COUNTERS_EX memory = {};
  memory.cb = sizeof memory;
  if (!::GetProcessMemoryInfo(
          process, reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory),
          sizeof memory)) {
    throw std::runtime_error("memory cannot be counted");
  }
  // The one is private memory everywhere but where only the other is filled in.
  return memory.PrivateUsage != 0 ? memory.PrivateUsage : memory.PagefileUsage;
}

}  // namespace

ProcessCounters CountersOf(DWORD process_id) {
  const Handle process(::OpenProcess(
      PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, process_id));
  if (!process) throw std::runtime_error("the program cannot be asked");
  return {HandlesOf(process.get(), process_id), GdiObjectsOf(process.get()),
          WindowsOf(process_id), PrivateBytesOf(process.get())};
}

}  // namespace rendal_test
