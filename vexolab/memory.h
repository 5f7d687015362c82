// SPDX-License-Identifier: MIT
//
// The arrays that the library has handed out, by id.
#ifndef VEXOLAB_MEMORY_H_
#define VEXOLAB_MEMORY_H_

#include <vector>

namespace vexolab {

// Keeps `values` until release() and returns its id: at least 1, unlike every
// id in use, and not one of the last 2^31 - 1 handed out unless that many were.
// *data receives the address of the first value, which stays where it is.
// Throws std::bad_alloc.
int keep(std::vector<float> values, float** data);
int keep(std::vector<double> values, double** data);

// Frees the array; an id that names none is ignored.
void release(int id) noexcept;

// How many arrays are kept: for tests of leaks.
int kept_count() noexcept;

}  // namespace vexolab

#endif  // VEXOLAB_MEMORY_H_
