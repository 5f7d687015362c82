// SPDX-License-Identifier: MIT
//
// What differs from system to system.
#ifndef RENDAL_CLI_SYSTEM_H_
#define RENDAL_CLI_SYSTEM_H_

#include <filesystem>
#include <string>

namespace rendal {

// Makes writing to standard streams that nobody reads an error instead of the
// program's end, and keeps files from taking the place of streams that are
// closed. A Windows console shows names in any script until the program ends.
// Before anything else.
void PrepareStreams();

// Whether somebody looks at the standard error stream.
bool IsErrorTerminal();

// Throws OutputError if not all that was printed arrived.
void FlushStandardOutput();

// A path such that paths that the system takes for the same are equal: on
// Windows without the case of its letters.
std::filesystem::path::string_type WithoutCase(
    std::filesystem::path::string_type path);

#if defined(_WIN32)
// In UTF-8; half a surrogate pair becomes the replacement character.
std::string Utf8OfArgument(const std::wstring& argument);
#endif

}  // namespace rendal

#endif  // RENDAL_CLI_SYSTEM_H_
