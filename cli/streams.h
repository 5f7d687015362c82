// SPDX-License-Identifier: MIT
#ifndef RENDAL_CLI_STREAMS_H_
#define RENDAL_CLI_STREAMS_H_

namespace rendal {

// Makes writing to standard streams that nobody reads an error instead of the
// program's end, and keeps files from taking the place of streams that are
// closed. Before anything else.
void PrepareStreams();

// Whether somebody looks at the standard error stream.
bool IsErrorTerminal();

// Throws OutputError if not all that was printed arrived.
void FlushStandardOutput();

}  // namespace rendal

#endif  // RENDAL_CLI_STREAMS_H_
