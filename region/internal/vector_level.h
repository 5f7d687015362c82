// SPDX-License-Identifier: MIT
//
// Which vector instructions may be used: what the processor has, found when the
// program runs, at most what tests and benches allow.
#ifndef VEXO_REGION_INTERNAL_VECTOR_LEVEL_H_
#define VEXO_REGION_INTERNAL_VECTOR_LEVEL_H_

#if defined(__x86_64__) && defined(__GNUC__)
#define VEXO_X86_VECTORS 1
#endif

namespace vexo::internal {

// kAvx512 stands for AVX-512 F, BW, DQ, VL, VBMI, VBMI2 and VPOPCNTDQ.
enum class vector_level { kPlain, kAvx2, kAvx512 };

vector_level current_vector_level();

// For tests and benches. A level that the processor lacks changes nothing.
void set_vector_limit(vector_level level);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_VECTOR_LEVEL_H_
