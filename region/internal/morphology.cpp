// SPDX-License-Identifier: MIT
#include "region/internal/morphology.h"

#include "region/internal/plain_morphology.h"

namespace vexo::internal {

run_buffer dilate(const run_view& source, const element_runs& element) {
  return plain_dilate(source, element);
}

run_buffer erode(const run_view& source, const element_runs& element) {
  return plain_erode(source, element);
}

}  // namespace vexo::internal
