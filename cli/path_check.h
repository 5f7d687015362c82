// SPDX-License-Identifier: MIT
#ifndef RENDAL_CLI_PATH_CHECK_H_
#define RENDAL_CLI_PATH_CHECK_H_

#include "cli/job.h"

namespace rendal {

// Throws std::invalid_argument if a result would take the place of an image, of
// the recipe or of another result. Pipes and devices can take several. Links to
// files count as the files; on Windows letters that differ only by case are the
// same.
void RefuseOverwriting(const Job& job);

}  // namespace rendal

#endif  // RENDAL_CLI_PATH_CHECK_H_
