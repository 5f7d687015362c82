// SPDX-License-Identifier: MIT
#include "cli/command_line.h"

int main(int argc, char** argv) { return rendal::RunCommandLine(argc, argv); }
