// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_OPERATIONS_H_
#define VEXO_REGION_OPERATIONS_H_

#include "region/region.h"

namespace vexo {

// Operations read one or more regions and write into a region of the caller's.
// Those ending in _y, and those that take const regions, work on the run
// arrays, the others on the chord array; the other form of a region is neither
// read nor written. They throw std::runtime_error with the text "malloc failed"
// or "realloc failed" and nothing else; a result may then be destroyed. What
// cannot be represented (more than 2147483647 chords) is "realloc failed", with
// the result untouched. Work is split over the hardware's threads; results are
// the same for every number of them, byte for byte.

// Threshold: the pixels whose grey value g satisfies min <= g <= max.
//
//   image    width * height bytes, rows top to bottom, no padding. Not written.
//   min, max any; min > max, and an image without pixels, give no runs.
//   Result   Ordered runs, the longest possible. width and height are set,
//            children dropped. threshold() fills the chord array and leaves the
//            run arrays alone; threshold_y() and threshold_y3() fill the run
//            arrays and leave the chord array alone.
//   Cost     O(pixels / 64 + runs) with wide vectors; no memory but the result.
//
// threshold_y() and threshold_y3() give the same runs. threshold_y() reads the
// image twice and writes every run to its place; threshold_y3() reads it once,
// block by block, and copies the runs together afterwards. It wins by a tenth
// where there are few runs to copy (below about 5 in 1000 pixels) and loses up
// to a half where there are many.
void threshold(unsigned char* image, int width, int height, int min, int max,
               region* result);
void threshold_y(unsigned char* image, int width, int height, int min, int max,
                 region* result);
void threshold_y3(unsigned char* image, int width, int height, int min, int max,
                  region* result);

// Connected components: one child of the result for each, with its runs and its
// features (see compute_features()).
//
//   neighbourhood  How many columns apart runs of neighbouring rows may lie: 0
//                  joins those that share a column (4-neighbourhood), 1 also
//                  those that touch at a corner (8-neighbourhood).
//   Requires       Runs of the input in row-major order.
//   Returns        The number of components, which is the result's child count;
//                  -1 if the input has children. Without runs, connection() and
//                  connection2() return 0 and connection_y() returns -1:
//                  deliberately different. In all these cases the result is
//                  left alone.
//   Children       In the order of their first runs. Those of connection() and
//                  connection2() have chords, those of connection_y() run
//                  arrays of exactly their length. Image size as the input.
//   Result         connection() and connection2() also give it the chords of
//                  the input, ordered by component and then as before, each
//                  labelled with the number of its component, from 1.
//   Cost           O(runs) and nearly one allocation for all children. They
//                  share it, and it lives as long as any of them or of their
//                  copies.
//
// All three label bands of rows side by side and join them at their seams.
// connection2() is connection() under its second name.
int connection(region& input, region* result, int neighbourhood);
int connection_y(const region& input, region* result, int neighbourhood);
int connection2(region& input, region* result, int neighbourhood);

// Hole filling: the input and every background area that does not reach the
// border of its bounding box. Areas that meet only at a corner are two
// (4-neighbourhood).
//
//   Requires   Runs of the input in row-major order, those of a row disjoint.
//   Result     Ordered runs, the longest possible; image size of the input. May
//              be the input.
//   Unchanged  If the input has no runs or has children.
//   Cost       O(runs); 8 bytes of scratch a run, 20 for fill_up(). No
//              background is built.
//
// fill_up_y2() is fill_up_y() under its second name.
void fill_up(region& input, region* result);
void fill_up_y(const region& input, region* result);
void fill_up_y2(const region& input, region* result);

void union2(region& first, region& second, region* result);
void difference(region& first, region& second, region* result);
void intersection(region& first, region& second, region* result);
void union2_y(region& first, region& second, region* result);
void difference_y(region& first, region& second, region* result);
void intersection_y(region& first, region& second, region* result);

// Sorts n runs by row, begin and end. Nothing happens for n < 2.
// Cost: O(n log n), O(n) when they are in order already; 16 bytes a run.
void sort_y(int* rows, int* col_begins, int* col_ends, int n);

void gen_se_circle(int radius, region* element);
void gen_se_rectangle(int width, int height, region* element);
void gen_se_cross(int width, int height, region* element);

void dilation1(region& source, region& element, region* output);
void erosion1(region& source, region& element, region* output);
void dilation2(const region& source, const region& element, region* output,
               int ref_col, int ref_row);
void erosion2(const region& source, const region& element, region* output,
              int ref_col, int ref_row);

void opening(const region& source, const region& element, region* output);
void opening1(region& source, region& element, region* output);
void closing(const region& source, const region& element, region* output);
void top_hat(const region& source, const region& element, region* output);
void bottom_hat(const region& source, const region& element, region* output);

void boundary(const region& source, region* output, const char* type);

// Fills the features of a region from its runs, or from its chords when it has
// no runs. Nothing happens when it has neither, or has children. Pixels count
// at their whole coordinates, x the column and y the row.
//
//   bbox, area         Bounding box; number of pixels A (2147483647 for more).
//   centre             Mean column and row.
//   ra, rb             0.5 sqrt(8 (s +- q)) from the second central moments,
//                      s = mxx + myy, q = sqrt((myy - mxx)^2 + 4 mxy^2): half
//                      axes of the ellipse with the same moments.
//   phi                Of its major axis, in degrees; 0 along a row, positive
//                      when rising to the right.
//   circularity        A / (pi d^2), at most 1, d the distance from the centre
//                      to the farthest pixel.
//   rect_half_length   Half the sides of the smallest rectangle around the
//   1 and 2            pixels' centres: along u and across it, where u points
//                      right or down-right; not ordered by length.
//   rect_angle         Direction of its longer side in degrees in (-90, 90],
//                      signed as phi.
//
// One pixel has only area, bounding box and centre. Two pixels have fixed
// values: circularity 1, half lengths 0.5 (0.707107 when diagonal) and 0, radii
// 1.0 (1.41421) and 0, both angles 0 (one run), -90 (one column), -45 or 45.
// Sums are exact while A times the square of the larger side stays below 1e18.
//
//   Requires   Runs in any order.
//   Cost       O(runs), for runs in no order O(runs log runs); 32 bytes of
//              scratch a row.
void compute_features(region* r);

}  // namespace vexo

#endif  // VEXO_REGION_OPERATIONS_H_
