// SPDX-License-Identifier: MIT
//
// Set operations on stretches of whole rows as sorted keys: no branch depends
// on the picture.
#ifndef VEXO_REGION_INTERNAL_SET_KEYS_H_
#define VEXO_REGION_INTERNAL_SET_KEYS_H_

#include <cstddef>
#include <cstdint>

#include "region/internal/run_keys.h"
#include "region/internal/views.h"

namespace vexo::internal {

enum class set_operation { unite, subtract, intersect };

class key_combination {
 public:
  explicit key_combination(set_operation operation)
      : operation_(operation), keys_(current_key_kernels()) {}

  // Combines two lists of at least one run each. Writes the result, with room
  // for kRunSlack entries more than both have, and returns its runs in *count.
  // False when a list is not canonical or too large for keys.
  bool combine(const run_view& a, const run_view& b, int32_t* rows,
               int32_t* begins, int32_t* ends, size_t* count);

 private:
  bool make_keys(const run_view& a, const run_view& b, const key_list& of_a,
                 const key_list& of_b);
  key_list merged(const key_list& a, const key_list& b) const;

  const set_operation operation_;
  const key_kernels& keys_;
  key_room room_;
  key_columns columns_;
  key_frame frame_;
};

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_SET_KEYS_H_
