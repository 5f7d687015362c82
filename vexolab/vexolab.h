/* SPDX-License-Identifier: MIT
 *
 * Sub-pixel edge measurement with calipers, and robust fits, as eight plain C
 * functions (and one for the texts of the error codes).
 *
 *   A measurement in three calls:
 *
 *     float* rects;  int n_rects;  double* points;  int n;  double line[4];
 *     int a = gen_measure_line(x1, y1, x2, y2, 10, 5, 1, 0, &rects, &n_rects);
 *     int b = do_measure(image, width, height, 1.0, 50.0, "first-", rects,
 *                        n_rects, &points, &n);
 *     int e = do_fit(points, n, 0, 7, 2.0f, 20, 2, line);
 *     clear_mems(a);
 *     clear_mems(b);
 *
 * Coordinates  x is the column, y the row (down). Pixel (i, j) is centred at
 *              whole numbers and holds the mean over its unit square.
 * Angles       degrees, counter-clockwise positive on screen.
 * Image        8-bit grey, row-major, width bytes a row, no padding; at least
 *              2 x 2. Never modified, never kept.
 * Rectangle    five floats: centre x, centre y, angle phi, half length l1 along
 *              the scan direction d = (cos phi, -sin phi), half length l2 along
 *              the cross direction e = (sin phi, cos phi). Edges are looked for
 *              along d and averaged along e.
 * Direction    +1: rectangles scan to the right-hand side of the direction of
 *              travel as seen on screen. Circles and ellipses are travelled
 *              counter-clockwise, so +1 is outward. -1: the other way.
 * Memory       An array handed out belongs to the library until
 *              clear_mems(id) and stays valid until then, whatever else is
 *              called.
 * Errors       Negative codes below. A failed generator or measurement sets
 *              its array pointer to NULL and its count to 0. If one of the two
 *              out pointers itself is NULL nothing is written.
 * Threads      Every function may be called from several threads at once.
 *              Results are bit-identical on repetition and on any number of
 *              threads. No exception leaves the library.
 */
#ifndef VEXOLAB_VEXOLAB_H_
#define VEXOLAB_VEXOLAB_H_

#if defined(VEXOLAB_STATIC)
#define VEXOLAB_API
#elif defined(_WIN32)
#if defined(VEXOLAB_BUILD)
#define VEXOLAB_API __declspec(dllexport)
#else
#define VEXOLAB_API __declspec(dllimport)
#endif
#else
#define VEXOLAB_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum {
  VEXOLAB_E_ARGUMENT = -1,   /* NULL, or a value outside what is documented */
  VEXOLAB_E_NUMBER = -2,     /* not finite, or its magnitude above 1e7 */
  VEXOLAB_E_TOO_FEW = -3,    /* fewer points than the fit needs */
  VEXOLAB_E_DEGENERATE = -4, /* geometry that determines nothing */
  VEXOLAB_E_MEMORY = -5,     /* out of memory */
  VEXOLAB_E_LIMIT = -6       /* more than VEXOLAB_MAX_... */
};

#define VEXOLAB_MAX_RECTANGLES 10000
#define VEXOLAB_MAX_HALF_LENGTH 20000 /* of a rectangle, px */
#define VEXOLAB_MAX_POINTS 1000000
#define VEXOLAB_MAX_SAMPLES 10000000          /* of one do_measure */
#define VEXOLAB_MAX_SAMPLES_ALL_EDGES 2000000 /* of one measure_pos_d */

/* Shapes of do_fit. */
enum { VEXOLAB_LINE = 0, VEXOLAB_CIRCLE = 1, VEXOLAB_ELLIPSE = 2 };

/* Systematic error (root mean square over sub-pixel phase and angle) of an
 * edge point on a straight, noise-free edge of 150 grey levels whose image is
 * blurred by a Gaussian of 0.5 to 1 px; held by the acceptance program. */
#define VEXOLAB_EDGE_BIAS_PX 0.003

/* ---- Placing rectangles ------------------------------------------------
 *
 *   length      full extent of each rectangle along the scan [px], > 0.
 *   width       full extent across the scan [px], >= 0; 0 is one scan line.
 *   direction   +1 or -1, see above.
 *   count       number of rectangles, raised to 2 on a line, 3 on a circle, 6
 *               on an ellipse; 0: as many as fit side by side, at most 1000.
 *   rectangles  out: count * 5 floats.
 *   returns     memory id >= 1, or
 *               ARGUMENT    direction not +1 or -1, length <= 0, width < 0,
 *                           count < 0, NULL
 *               NUMBER      a value that is not finite or above 1e7
 *               DEGENERATE  end points coincide; radius or half-axis <= 1e-6
 *               LIMIT       count above VEXOLAB_MAX_RECTANGLES
 *
 * Cost: below 0.2 us a rectangle. */

/* Along the segment from (x1, y1) to (x2, y2), in that order. Rectangle i sits
 * at (i + 1/2) / count of the way: the rectangles never reach past the ends.
 *
 *   direction +1, travelling right:      start ---+---+---+---> end
 *                                                 |   |   |
 *                                                 v   v   v   scan
 */
VEXOLAB_API int gen_measure_line(double x1, double y1, double x2, double y2,
                                 double length, double width, int direction,
                                 int count, float** rectangles,
                                 int* rectangle_count);

/* Around the circle, counter-clockwise from 3 o'clock, equally spaced. */
VEXOLAB_API int gen_measure_circle(double cx, double cy, double radius,
                                   double length, double width, int direction,
                                   int count, float** rectangles,
                                   int* rectangle_count);

/* Around the ellipse whose first half-axis (need not be the longer) points
 * along `angle`: from the end of the first half-axis, counter-clockwise, at
 * equal arc lengths (to 1 %), each rectangle along the normal there. */
VEXOLAB_API int gen_measure_ellipse(double cx, double cy, double angle,
                                    double half_axis_1, double half_axis_2,
                                    double length, double width, int direction,
                                    int count, float** rectangles,
                                    int* rectangle_count);

/* The rectangle whose scan runs along the segment from (x1, y1) to (x2, y2),
 * averaging over `width`: rectangle[0..4]. Coincident points give angle 0 and
 * l1 = 0. NULL: nothing happens. */
VEXOLAB_API void ppw_to_rr(double x1, double y1, double x2, double y2,
                           double width, float* rectangle);

/* ---- Measuring edges ---------------------------------------------------
 *
 * An edge is a local extremum of the mean grey profile's derivative, smoothed
 * by a Gaussian of `sigma`, strictly inside the rectangle and the image. Its
 * amplitude estimates the height of the step in grey levels, positive from
 * dark to bright along the scan. sigma decides what is an edge; it does not
 * move a found one: the position is a maximum-likelihood fit of a blurred step
 * to the raw pixels.
 *
 *   sigma       smoothing [px], > 0; used within [0.4, 100].
 *   amplitude   smallest |amplitude| accepted [grey levels]; negative is 0.
 *   returns     memory id >= 1 (no edge found is a success), or
 *               ARGUMENT    NULL, image below 2 x 2, sigma <= 0, unknown
 *                           selection
 *               NUMBER      a value that is not finite or above 1e7
 *               LIMIT       too many rectangles; rectangle too long; more
 *                           than VEXOLAB_MAX_SAMPLES...
 *
 * Samples: (2 l1 + 1) * (2 l2 + 1 + s) of each rectangle that is measured, s
 * the smaller of sigma and 2 l1; of 2 l1 and 2 l2 no more than the image's
 * diagonal counts. 10 000 rectangles of 20 x 10 px at sigma 1 have 2.5 million.
 *
 * Cost: about 4 us for a rectangle of 20 x 10 px on one core; any call within
 * the limits stays below 1 s there. */

/* At most one point per rectangle, in rectangle order; rectangles without a
 * qualifying edge contribute nothing, nor do those with a value that is not
 * finite, l1 <= 0, l2 < 0 or a half length above VEXOLAB_MAX_HALF_LENGTH.
 *
 *   selection   "first" or "last" along the scan, with "+" (dark to bright)
 *               or "-" appended if only that polarity counts; or "strongest".
 *   points      out: 2 n doubles, the n x first, then the n y. With n = 0 not
 *               to be read.
 *
 * Every point lies on the scan axis of its rectangle. Curvature: rectangles
 * that follow one another around a curve have their points corrected for it,
 * so a wide rectangle on a small circle is not biased. Many rectangles are
 * measured by several threads, with the same results. */
VEXOLAB_API int do_measure(const unsigned char* image, int width, int height,
                           double sigma, double amplitude,
                           const char* selection, const float* rectangles,
                           int rectangle_count, double** points, int* n);

/* All edges of one rectangle (x, y, phi, l1, l2), in order along the scan. In
 * a very large one the edges after the first 8 million pixels around them are
 * placed by the profile alone, to some hundredths of a pixel.
 *
 *   points      out: *count doubles, (x, y, amplitude) of each edge; *count is
 *               three times the number of edges. */
VEXOLAB_API int measure_pos_d(double x, double y, double phi, double l1,
                              double l2, const unsigned char* image, int width,
                              int height, double sigma, double amplitude,
                              double** points, int* count);

/* ---- Fitting -----------------------------------------------------------
 *
 * Fits a shape to points by orthogonal distances, from a start that survives
 * many outliers.
 *
 *   points      2 n doubles as do_measure returns them.
 *   shape       VEXOLAB_LINE:    result[4] = direction x, y (unit vector along
 *                                the order of the points), centre x, y
 *               VEXOLAB_CIRCLE:  result[3] = centre x, y, radius
 *               VEXOLAB_ELLIPSE: result[5] = centre x, y, angle in (-90, 90],
 *                                half-axes r1 >= r2; angle is that of r1
 *   method      7: full weight up to factor * sigma, falling to 0 beyond;
 *               0: a shorter tail: full weight up to factor (at least 2)
 *               times sigma, none from 1.5 sigma further out.
 *   factor      in units of the estimated standard deviation, >= 0; 0: plain
 *               least squares.
 *   iterations  at most this many rounds of weighting, and no more than
 *               400 000 / n; above 10 000 points no more than 20 over 5000 of
 *               them and 2 over all. 0: plain least squares.
 *   least       smallest number of points; raised to 2, 3 or 5 by shape.
 *   returns     0, or a negative code; then the shape's own 4, 3 or 5 doubles
 *               of result are 0. Nothing behind them is ever written.
 *               ARGUMENT    NULL, unknown shape or method, negative factor
 *               NUMBER      a point or the factor is not finite or above 1e7
 *               TOO_FEW     n below the smallest number
 *               DEGENERATE  points coincide, or lie on a line (circle,
 *                           ellipse), or do not determine the shape
 *               LIMIT       n above VEXOLAB_MAX_POINTS */
VEXOLAB_API int do_fit(const double* points, int n, int shape, int method,
                       float factor, int iterations, int least, double* result);

/* ---- Memory, texts ----------------------------------------------------- */

/* Releases the array that id names. Unknown, negative and released ids do
 * nothing. */
VEXOLAB_API void clear_mems(int id);

/* The text of a code returned by any function here, in English; "ok" for zero
 * and ids. Never NULL, never to be freed. */
VEXOLAB_API const char* vexolab_error_text(int code);

#ifdef __cplusplus
}
#endif

#endif /* VEXOLAB_VEXOLAB_H_ */
