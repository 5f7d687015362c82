// SPDX-License-Identifier: MIT
#ifndef RENDAL_CLI_COMMAND_LINE_H_
#define RENDAL_CLI_COMMAND_LINE_H_

namespace rendal {

// The program: reads the arguments (UTF-8), does what they say, and answers
// with an ExitCode.
int RunCommandLine(int argc, const char* const* argv);

}  // namespace rendal

#endif  // RENDAL_CLI_COMMAND_LINE_H_
