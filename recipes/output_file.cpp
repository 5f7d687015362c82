// SPDX-License-Identifier: MIT
#include "recipes/output_file.h"

#include <cerrno>
#include <random>
#include <system_error>

#include "tools/long_path.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;

// Those to files that are not there yet, too.
fs::path LinksFollowed(fs::path path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks && fs::is_symlink(path, error); ++i) {
    const fs::path target = path.parent_path() / fs::read_symlink(path, error);
    if (error) break;
    path = target;
  }
  const fs::path target = fs::weakly_canonical(path, error);
  return error ? path : target;
}

// A name in the same folder that nobody else has.
fs::path TemporaryBeside(const fs::path& target) {
  std::random_device random;
  std::string name = ".rendal-";
  for (int i = 0; i < 3; ++i) name += std::to_string(random());
  return target.parent_path() / (name + ".tmp");
}

[[noreturn]] void ThrowFor(const fs::path& path, const std::string& why) {
  throw OutputError("cannot write " + Utf8Of(path) + ": " + why);
}

}  // namespace

std::string Utf8Of(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

fs::path PathOf(std::string_view utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

OutputFile::OutputFile(const fs::path& path)
    : m_path(path), m_target(WithoutLengthLimit(LinksFollowed(path))) {
  std::error_code error;
  const fs::file_status status = fs::status(m_target, error);
  if (fs::is_directory(status)) ThrowFor(m_path, "it is a folder");
  const bool direct = fs::exists(status) && !fs::is_regular_file(status);
  if (!direct) m_temporary = TemporaryBeside(m_target);
  errno = 0;
  m_stream.open(direct ? m_target : m_temporary,
                std::ios::binary | std::ios::trunc);
  if (!m_stream) {
    m_temporary.clear();
    Fail();
  }
}

OutputFile::~OutputFile() {
  m_stream.close();
  if (m_temporary.empty()) return;
  std::error_code error;
  fs::remove(m_temporary, error);
}

void OutputFile::Fail() const {
  ThrowFor(m_path, errno != 0 ? std::generic_category().message(errno)
                              : "the system refuses");
}

void OutputFile::Write(std::string_view bytes) {
  errno = 0;
  m_stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!m_stream) Fail();
}

void OutputFile::Commit() {
  errno = 0;
  m_stream.close();
  if (!m_stream) Fail();
  if (m_temporary.empty()) return;
  std::error_code error;
  fs::rename(m_temporary, m_target, error);
  if (error) ThrowFor(m_path, error.message());
  m_temporary.clear();
}

void WriteOutput(const fs::path& path, std::string_view bytes) {
  OutputFile file(path);
  file.Write(bytes);
  file.Commit();
}

}  // namespace rendal
