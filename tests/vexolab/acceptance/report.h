// SPDX-License-Identifier: MIT
//
// The acceptance table: every row has a figure, a limit and a verdict.
#ifndef TESTS_VEXOLAB_ACCEPTANCE_REPORT_H_
#define TESTS_VEXOLAB_ACCEPTANCE_REPORT_H_

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace acceptance {

class report {
 public:
  // A figure that may not exceed its limit. `goal`, where given, is what to
  // reach for: it is printed and not judged.
  void at_most(const std::string& id, const std::string& what, double figure,
               double limit, double goal = NAN) {
    print(id, what, figure, "<=", limit, goal, figure <= limit);
  }

  void at_least(const std::string& id, const std::string& what, double figure,
                double limit) {
    print(id, what, figure, ">=", limit, NAN, figure >= limit);
  }

  // Something that holds or does not.
  void holds(const std::string& id, const std::string& what, bool condition) {
    std::printf("%-5s %-58s %35s\n", id.c_str(), what.c_str(),
                condition ? "pass" : "FAIL");
    count(condition);
  }

  void note(const std::string& text) {
    std::printf("      %s\n", text.c_str());
  }

  int rows() const { return rows_; }
  int failures() const { return failures_; }

 private:
  void print(const std::string& id, const std::string& what, double figure,
             const char* relation, double limit, double goal, bool passed) {
    std::printf("%-5s %-58s %10.4g %s %-8.5g", id.c_str(), what.c_str(), figure,
                relation, limit);
    if (std::isnan(goal)) {
      std::printf("       ");
    } else {
      std::printf(" %-6.4g", goal);
    }
    std::printf(" %s\n", passed ? "pass" : "FAIL");
    count(passed);
  }
  void count(bool passed) {
    ++rows_;
    if (!passed) ++failures_;
  }

  int rows_ = 0;
  int failures_ = 0;
};

// Each group appends its rows; the seed shifts every random choice in it.
void generators(report* r);                  // A
void edges(report* r, uint64_t seed);        // B
void detection(report* r, uint64_t seed);    // C
void shapes(report* r, uint64_t seed);       // D
void bends(report* r, uint64_t seed);        // D, from D17 on
void fits(report* r, uint64_t seed);         // E
void contract(report* r, uint64_t seed);     // F
void speed(report* r, uint64_t seed);        // G, edges
void fit_speed(report* r, uint64_t seed);    // G, fits
void worst_calls(report* r, uint64_t seed);  // G, from G8 on
void peers(report* r, uint64_t seed);        // P, where OpenCV is built with

// printf into a string.
template <typename... Values>
std::string text(const char* format, Values... values) {
  char buffer[160];
  std::snprintf(buffer, sizeof buffer, format, values...);
  return buffer;
}

// Root mean square, largest magnitude and mean of a list of errors.
class statistics {
 public:
  void add(double value) {
    ++n_;
    sum_ += value;
    squares_ += value * value;
    largest_ = std::fmax(largest_, std::fabs(value));
  }
  int n() const { return n_; }
  double mean() const { return n_ > 0 ? sum_ / n_ : NAN; }
  double rms() const { return n_ > 0 ? std::sqrt(squares_ / n_) : NAN; }
  double largest() const { return n_ > 0 ? largest_ : NAN; }

 private:
  int n_ = 0;
  double sum_ = 0;
  double squares_ = 0;
  double largest_ = 0;
};

}  // namespace acceptance

#endif  // TESTS_VEXOLAB_ACCEPTANCE_REPORT_H_
