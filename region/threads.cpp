// SPDX-License-Identifier: MIT
#include "region/internal/parallel.h"
#include "region/operations.h"

namespace vexo {

void limit_threads(int threads) { internal::set_thread_limit(threads); }

}  // namespace vexo
