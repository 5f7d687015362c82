// SPDX-License-Identifier: MIT
//
// Union, difference and intersection of chords in their order. A chord of the
// union has the fourth word of the first chord that it is made of, an untouched
// one of the difference keeps its own; all others are 0.
#ifndef VEXO_REGION_INTERNAL_SET_CHORDS_H_
#define VEXO_REGION_INTERNAL_SET_CHORDS_H_

#include "region/internal/memory.h"
#include "region/internal/set_keys.h"
#include "region/internal/views.h"

namespace vexo::internal {

chord_buffer combine_chords(set_operation operation, const chord_view& first,
                            const chord_view& second);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_SET_CHORDS_H_
