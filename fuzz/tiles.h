// SPDX-License-Identifier: MIT
//
// Large regions for the fuzzers: a small one repeated across and down, so far
// apart that no tile reaches the next. What is right for one is right for all.
#ifndef RENDAL_FUZZ_TILES_H_
#define RENDAL_FUZZ_TILES_H_

#include "fuzz/grid.h"
#include "fuzz/lists.h"
#include "region/region.h"

namespace fuzz {

// Reads how many tiles there are, and what is wrong with the lists; nothing
// happens for one tile without a flaw.
void check_tiles(Bytes& in, const Grid& first, const Grid& second,
                 const vexo::region& element);

}  // namespace fuzz

#endif  // RENDAL_FUZZ_TILES_H_
