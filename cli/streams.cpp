// SPDX-License-Identifier: MIT
#include "cli/streams.h"

#include <cstdio>

#include "recipes/output_file.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#endif

namespace rendal {

#if defined(_WIN32)

void PrepareStreams() {}

bool IsErrorTerminal() { return _isatty(2) != 0; }

#else

void PrepareStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  // The first file that is opened gets the lowest number that is free. What
  // takes it here refuses what the stream is for.
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) != -1) continue;
    if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) {
      return;
    }
  }
}

bool IsErrorTerminal() { return isatty(STDERR_FILENO) != 0; }

#endif

void FlushStandardOutput() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    throw OutputError("cannot write to the standard output");
  }
}

}  // namespace rendal
