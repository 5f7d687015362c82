// SPDX-License-Identifier: MIT
#ifndef RENDAL_CLI_TEXT_REPORT_H_
#define RENDAL_CLI_TEXT_REPORT_H_

#include <string>

#include "cli/image_run.h"

namespace rendal {

// The results of one image for a reader: its components as an aligned table,
// its measurements as names and values, then their points.
std::string TextReport(const ImageResult& result);

// In one line: "3 components, 2 measurements".
std::string TextSummary(const ImageResult& result);

}  // namespace rendal

#endif  // RENDAL_CLI_TEXT_REPORT_H_
