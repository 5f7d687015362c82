// SPDX-License-Identifier: MIT
//
// A measurement library that writes down its calls and answers as it is told.
#ifndef RENDAL_TESTS_TOOLS_RECORDED_LIBRARY_H_
#define RENDAL_TESTS_TOOLS_RECORDED_LIBRARY_H_

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/measurement_library.h"

namespace rendal {

// Ids of handed-out memory count from 1. One object at a time.
class RecordedLibrary {
 public:
  RecordedLibrary() { s_current = this; }
  ~RecordedLibrary() { s_current = nullptr; }
  RecordedLibrary(const RecordedLibrary&) = delete;
  RecordedLibrary& operator=(const RecordedLibrary&) = delete;

  // The calls as they read in C; arrays that this library handed out go by
  // their name, any other by "?".
  std::vector<std::string> calls;

  // Answers
  std::vector<float> rectangles = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  std::vector<double> points = {10, 11, 20, 21};  // all x, all y
  std::vector<double> fit = {1, 2, 3, 4, 5};
  int fit_code = 0;
  std::vector<float> band = {50, 60, 70, 80, 90};
  // Of each call of measure_pos_d in turn; none once they are used up.
  std::vector<std::vector<double>> edges;

  // The image that calls are expected with.
  const unsigned char* image = nullptr;

  static MeasurementLibrary Table() {
    return {Line, Circle, Ellipse, Measure, DoFit, Band, Edges, Clear};
  }

 private:
  static inline RecordedLibrary* s_current = nullptr;
  int m_lastId = 0;
  size_t m_edgeCalls = 0;

  __attribute__((format(printf, 1, 2))) static void Note(const char* format,
                                                         ...) {
    char text[400];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    s_current->calls.push_back(text);
  }
  static const char* ImageName(const unsigned char* data) {
    return data == s_current->image ? "image" : "?";
  }
  static int HandOutRectangles(float** out, int* count) {
    *out = s_current->rectangles.data();
    *count = static_cast<int>(s_current->rectangles.size() / 5);
    return ++s_current->m_lastId;
  }

  static int Line(double x1, double y1, double x2, double y2, double length,
                  double width, int direction, int count, float** rectangles,
                  int* rectangle_count) {
    Note("gen_measure_line(%g, %g, %g, %g, %g, %g, %d, %d)", x1, y1, x2, y2,
         length, width, direction, count);
    return HandOutRectangles(rectangles, rectangle_count);
  }
  static int Circle(double cx, double cy, double radius, double length,
                    double width, int direction, int count, float** rectangles,
                    int* rectangle_count) {
    Note("gen_measure_circle(%g, %g, %g, %g, %g, %d, %d)", cx, cy, radius,
         length, width, direction, count);
    return HandOutRectangles(rectangles, rectangle_count);
  }
  static int Ellipse(double cx, double cy, double angle, double half_axis_1,
                     double half_axis_2, double length, double width,
                     int direction, int count, float** rectangles,
                     int* rectangle_count) {
    Note("gen_measure_ellipse(%g, %g, %g, %g, %g, %g, %g, %d, %d)", cx, cy,
         angle, half_axis_1, half_axis_2, length, width, direction, count);
    return HandOutRectangles(rectangles, rectangle_count);
  }
  static int Measure(const unsigned char* image, int width, int height,
                     double sigma, double amplitude, const char* selection,
                     const float* rectangles, int rectangle_count,
                     double** points, int* n) {
    RecordedLibrary& self = *s_current;
    Note("do_measure(%s, %d, %d, %g, %g, \"%s\", %s, %d)", ImageName(image),
         width, height, sigma, amplitude, selection,
         rectangles == self.rectangles.data() ? "rectangles" : "?",
         rectangle_count);
    *points = self.points.data();
    *n = static_cast<int>(self.points.size() / 2);
    return ++self.m_lastId;
  }
  static int DoFit(const double* points, int n, int shape, int method,
                   float factor, int iterations, int least, double* result) {
    RecordedLibrary& self = *s_current;
    Note("do_fit(%s, %d, %d, %d, %g, %d, %d)",
         points == self.points.data() ? "points" : "?", n, shape, method,
         static_cast<double>(factor), iterations, least);
    // At most as many numbers as the shape has.
    const size_t values = shape == VEXOLAB_LINE     ? 4
                          : shape == VEXOLAB_CIRCLE ? 3
                                                    : 5;
    std::copy_n(self.fit.begin(), std::min(values, self.fit.size()), result);
    return self.fit_code;
  }
  static void Band(double x1, double y1, double x2, double y2, double width,
                   float* rectangle) {
    Note("ppw_to_rr(%g, %g, %g, %g, %g)", x1, y1, x2, y2, width);
    std::copy(s_current->band.begin(), s_current->band.end(), rectangle);
  }
  static int Edges(double x, double y, double phi, double l1, double l2,
                   const unsigned char* image, int width, int height,
                   double sigma, double amplitude, double** points,
                   int* count) {
    RecordedLibrary& self = *s_current;
    Note("measure_pos_d(%g, %g, %g, %g, %g, %s, %d, %d, %g, %g)", x, y, phi, l1,
         l2, ImageName(image), width, height, sigma, amplitude);
    const bool answered = self.m_edgeCalls < self.edges.size();
    *points = answered ? self.edges[self.m_edgeCalls].data() : nullptr;
    *count =
        answered ? static_cast<int>(self.edges[self.m_edgeCalls].size()) : 0;
    ++self.m_edgeCalls;
    return ++self.m_lastId;
  }
  static void Clear(int id) { Note("clear_mems(%d)", id); }
};

}  // namespace rendal

#endif  // RENDAL_TESTS_TOOLS_RECORDED_LIBRARY_H_
