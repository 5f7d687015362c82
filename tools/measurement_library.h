// SPDX-License-Identifier: MIT
//
// The measurement library as the tools call it: a table of its functions, so
// that tests can put their own in its place, and what its callers share.
#ifndef RENDAL_TOOLS_MEASUREMENT_LIBRARY_H_
#define RENDAL_TOOLS_MEASUREMENT_LIBRARY_H_

#include <array>
#include <opencv2/core.hpp>
#include <vector>

#include "vexolab/vexolab.h"

namespace rendal {

// Centre x, centre y, angle, half length along and across the scan.
using MeasureRectangle = std::array<float, 5>;

// The functions of vexolab/vexolab.h, which says what they take and give.
struct MeasurementLibrary {
  decltype(&::gen_measure_line) gen_measure_line;
  decltype(&::gen_measure_circle) gen_measure_circle;
  decltype(&::gen_measure_ellipse) gen_measure_ellipse;
  decltype(&::do_measure) do_measure;
  decltype(&::do_fit) do_fit;
  decltype(&::ppw_to_rr) ppw_to_rr;
  decltype(&::measure_pos_d) measure_pos_d;
  decltype(&::clear_mems) clear_mems;
};

// The library that the program is linked with.
const MeasurementLibrary& LinkedMeasurementLibrary();

// Throws std::bad_alloc for VEXOLAB_E_MEMORY; any other answer is the caller's.
void ThrowIfOutOfMemory(int answer);

// Ids of library memory, released in the order in which they came, also when
// the tool throws in between. At most two at a time.
class LibraryMemory {
 public:
  explicit LibraryMemory(const MeasurementLibrary& library)
      : m_library(library) {}
  ~LibraryMemory() { Release(); }
  LibraryMemory(const LibraryMemory&) = delete;
  LibraryMemory& operator=(const LibraryMemory&) = delete;

  // Returns the id. Throws std::bad_alloc for VEXOLAB_E_MEMORY.
  int Keep(int id) {
    ThrowIfOutOfMemory(id);
    return m_ids[m_count++] = id;
  }
  void Release() {
    for (int i = 0; i < m_count; ++i) m_library.clear_mems(m_ids[i]);
    m_count = 0;
  }

 private:
  const MeasurementLibrary& m_library;
  int m_ids[2] = {};
  int m_count = 0;
};

// Copies of what the library handed out. Nothing for a null array.
std::vector<MeasureRectangle> CopyRectangles(const float* rectangles,
                                             int count);
// The n x first, then the n y.
std::vector<cv::Point2f> CopyPoints(const double* points, int n);

}  // namespace rendal

#endif  // RENDAL_TOOLS_MEASUREMENT_LIBRARY_H_
