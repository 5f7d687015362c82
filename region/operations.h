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

// How many threads an operation uses at most; 0, as at the start: as many as
// the hardware has. With 1 everything stays on the calling thread, so several
// callers can share a machine. Not to be called while an operation runs.
void limit_threads(int threads);

// Threshold: the pixels whose grey value g satisfies min <= g <= max.
//
//   image    width * height bytes, rows top to bottom, no padding. Not written.
//   min, max any; min > max, and an image without pixels, give no runs.
//   Result   Ordered runs, the longest possible. width and height are set,
//            children dropped. threshold() fills the chord array and leaves the
//            run arrays alone; threshold_y() and threshold_y3() fill the run
//            arrays and leave the chord array alone.
//   Cost     O(pixels / 64 + runs) with wide vectors; scratch of a few rows.
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
//                  those that touch at a corner (8-neighbourhood). Beyond 1 a
//                  run joins those below it as far as the first that ends
//                  where it ends or behind that.
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
//   Cost       O(runs); 8 bytes of scratch a run, 20 for fill_up(). Where runs
//              lie densely, the background in bits: O(rows * columns / 64).
//
// fill_up_y2() is fill_up_y() under its second name.
void fill_up(region& input, region* result);
void fill_up_y(const region& input, region* result);
void fill_up_y2(const region& input, region* result);

// Set operations: union, difference (first minus second), intersection.
//
//   Requires   Runs of both inputs in row-major order, those of a row disjoint;
//              they may touch.
//   Result     Ordered runs. Image size, features and children of the result
//              are left as they were. The result may be one of the inputs.
//              union2(), difference() and intersection() replace its chord
//              array: the union coalesces what overlaps or touches and keeps
//              the fourth words of the chords it starts from; the difference
//              keeps those of chords that stay whole; others are 0.
//              The _y forms replace its run arrays: every run is the longest
//              possible, whatever the inputs were.
//   Unchanged  If either input has children.
//   Cost       O(runs). The _y forms work on pieces of rows side by side, and
//              merge 16 runs a step, whatever the picture.
//
//      first   ##.####.#      union  difference  intersection
//      second  .###..##.   #########  #...##..#     .#.#..#..
void union2(region& first, region& second, region* result);
void difference(region& first, region& second, region* result);
void intersection(region& first, region& second, region* result);
void union2_y(region& first, region& second, region* result);
void difference_y(region& first, region& second, region* result);
void intersection_y(region& first, region& second, region* result);

// Sorts n runs by row, begin and end. Nothing happens for n < 2.
// Cost: O(n log n), O(n) when they are in order already; 16 bytes a run.
void sort_y(int* rows, int* col_begins, int* col_ends, int n);

// Structuring elements. Both forms of *element are replaced, its image size
// becomes unknown; nothing of an older element is left.
//
//   gen_se_circle     A disc around (0, 0), rows -radius..radius. Radii below 1
//                     count as 1 (the five-pixel plus); radius 2 has 21 pixels.
//                     The outline is that of a midpoint circle with its own
//                     rounding: symmetric in both axes and about the diagonal
//                     up to the octant's last point. Deliberate, and pinned by
//                     structuring_element_test.
//   gen_se_rectangle  Rows 0..height - 1, columns 0..width - 1.
//   gen_se_cross      The same extent: row height / 2 in full, of the others
//                     column width / 2.
//
// Widths and heights below 3 count as 2: deliberate.
void gen_se_circle(int radius, region* element);
void gen_se_rectangle(int width, int height, region* element);
void gen_se_cross(int width, int height, region* element);

// Dilation and erosion of a source A by an element B.
//
//   dilation2   { a + (b - ref) : a in A, b in B }
//   erosion2    { p : p + (b - ref) in A for every b in B }
//   erosion1    as erosion2
//   dilation1   { p : p + (b - ref) in A for some b in B }, that is by the
//               element mirrored through ref; cut to the image when its width
//               and height are known (above 0)
//
//   ref         (ref_col, ref_row) in the element's own coordinates. If either
//               is -1, and in opening() and its like, per axis min +
//               (max - min + 1) / 2 of the element's bounding box: the right or
//               lower of two middles. dilation1() and erosion1() take (min +
//               max) / 2, truncated toward 0: so even-sized elements lie one
//               pixel apart in the two forms. An element that has children is
//               used by them as it stands, ref (0, 0).
//   Forms       dilation2() and erosion2() read and write run arrays,
//               dilation1() and erosion1() chords.
//   Requires    Runs in row-major order, those of a row disjoint and not
//               touching. (Others are sorted and joined first, which takes
//               longer.)
//   Result      Ordered runs, the longest possible; image size of the source.
//               Only dilation1() clips: the others keep runs at negative
//               coordinates and beyond the image. The output may be the source
//               or the element.
//   Unchanged   If the source has children, or source or element no runs.
//   Throws      "realloc failed" if a coordinate leaves 32 bits, with the
//   output
//               untouched.
//   Cost        Per band of rows the cheapest of three forms. Keys, for few
//               runs and elements of up to three runs within a column of the
//               reference point: O(runs). Strips, for few runs: O(runs * rows
//               of the element / 16 + strips * rows of the element), for
//               elements of one run a row. Bits, for many: O(rows
//               * (columns / 512) * (rows of the element + log of its width))
//               and O(runs) to enter and leave; scratch for as many rows of
//               bits as the element is high. Elements of any shape are exact in
//               every form.
//
//      source      element (ref *)     dilation2
//      . . . .       .  #  .           . # . .
//      . # . .       #  *  #           # # # .
//      . . . .       .  #  .           . # . .
void dilation1(region& source, region& element, region* output);
void erosion1(region& source, region& element, region* output);
void dilation2(const region& source, const region& element, region* output,
               int ref_col, int ref_row);
void erosion2(const region& source, const region& element, region* output,
              int ref_col, int ref_row);

// Compositions, all around the reference point of the fast forms.
//
//   opening     erosion2, then dilation2, by the same element
//   opening1    the same pixels from chords to chords, for every element
//   closing     dilation2, then erosion2, by the mirrored element; then cut to
//               the image, unless its size is unknown or the output has
//               children
//   top_hat     source minus opening
//   bottom_hat  closing minus source
//
//   Result      As of dilation2(); image size of the source. The output may be
//               the source. An opening lies inside its source and needs no
//               clipping.
//   Unchanged   If the source has children, or source or element no runs. The
//               hats then take their difference with the output as it was: a
//               source without runs empties it in top_hat() and leaves its
//               pixels in bottom_hat(). With children nothing happens at all.
//   Throws      As dilation2().
//   Cost        That of the steps; all stay in runs.
void opening(const region& source, const region& element, region* output);
void opening1(region& source, region& element, region* output);
void closing(const region& source, const region& element, region* output);
void top_hat(const region& source, const region& element, region* output);
void bottom_hat(const region& source, const region& element, region* output);

// The boundary of a region, from run arrays to run arrays. Compared exactly,
// `type` is one of
//
//   "inner"         pixels of the region that have one of their four edge
//                   neighbours outside
//   "outer"         pixels outside that have one of these inside; not clipped,
//                   so row and column -1 are possible
//   "inner_filled"  of every 8-connected component the pixels that a walk
//   around
//                   it visits: those that share an edge with the background
//                   around the component, and so none along its holes. Appended
//                   after the runs that the output holds already.
//
//   Requires   As dilation2().
//   Result     Ordered runs, those of "inner_filled" after the older ones;
//   image
//              size of the source.
//   Unchanged  If the source has no runs or has children, for any other type,
//              and for a null pointer.
//   Throws     As dilation2().
//   Cost       O(runs) in all three; 12 bytes of scratch a run for
//              "inner_filled". Nothing depends on the number of pixels.
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
