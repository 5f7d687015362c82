// SPDX-License-Identifier: MIT
//
// How the cost of every region operation grows: over the image's size at a
// fixed density, over the number of runs at a fixed size, and over the size of
// the structuring element. Prints one row per operation: time and peak memory
// at the largest point and the exponent p of the fitted t = c * n^p.
//
//   bench_growth [--quick] [--rows TEXT]
//
// --quick stops at 12 Mpx and 1.2 million runs; --rows keeps the operations
// whose name holds TEXT.
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "region/operations.h"

namespace {

using vexo::region;
using Clock = std::chrono::steady_clock;

// One image size: blobs of about `period` pixels, so that runs per pixel stay
// the same at every size. Deterministic, without two equal rows in sequence.
std::vector<unsigned char> texture(int width, int height, int period) {
  std::vector<unsigned char> image(static_cast<size_t>(width) * height);
  uint32_t state = 12345;
  for (int row = 0; row < height; ++row) {
    state = state * 1664525u + 1013904223u;
    const int shift = (row / period) * 7 + static_cast<int>(state >> 30);
    for (int col = 0; col < width; ++col) {
      const int phase = (col + shift) % period;
      const bool in = phase * 2 < period && row % period != 0;
      image[static_cast<size_t>(row) * width + col] = in ? 200 : 50;
    }
  }
  return image;
}

// Highest resident memory since reset_peak(), in bytes.
void reset_peak() { std::ofstream("/proc/self/clear_refs") << "5"; }
size_t status_bytes(const char* key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.rfind(key, 0) == 0)
      return std::stoull(line.substr(std::strlen(key) + 1)) * 1024;
  return 0;
}

struct Sample {
  double seconds;
  double extra_bytes;  // peak above what was there before, results included
};

// Peak memory of one run that finds no freed memory to reuse.
double peak_of(const std::function<void()>& operation) {
  malloc_trim(0);
  reset_peak();
  const size_t before = status_bytes("VmRSS:");
  operation();
  const size_t peak = status_bytes("VmHWM:");
  return peak > before ? static_cast<double>(peak - before) : 0;
}

// The fastest of up to seven runs.
Sample measure(const std::function<void()>& operation) {
  Sample sample{1e30, peak_of(operation)};
  double spent = 0;
  for (int i = 0; i < 7 && (i == 0 || spent < 0.5); ++i) {
    const auto start = Clock::now();
    operation();
    const double seconds =
        std::chrono::duration<double>(Clock::now() - start).count();
    sample.seconds = std::min(sample.seconds, seconds);
    spent += seconds;
  }
  return sample;
}

// Least-squares slope of log t over log n.
double exponent(const std::vector<double>& n, const std::vector<double>& t) {
  double sx = 0, sy = 0, sxx = 0, sxy = 0;
  const double m = static_cast<double>(n.size());
  for (size_t i = 0; i < n.size(); ++i) {
    const double x = std::log(n[i]), y = std::log(t[i]);
    sx += x;
    sy += y;
    sxx += x * x;
    sxy += x * y;
  }
  return (m * sxy - sx * sy) / (m * sxx - sx * sx);
}

struct Input {
  std::vector<unsigned char> image;
  int width, height;
  region runs, other;
  region element;
};

Input make_input(int width, int height, int period) {
  Input in{texture(width, height, period), width, height, {}, {}, {}};
  vexo::threshold_y(in.image.data(), width, height, 128, 255, &in.runs);
  in.runs.to_3();
  // The second operand: the first moved by a third of a period.
  in.other.reserve(in.runs.run_count);
  in.other.run_count = in.runs.run_count;
  in.other.width = width;
  in.other.height = height;
  for (size_t i = 0; i < in.runs.run_count; ++i) {
    in.other.rows[i] = in.runs.rows[i];
    in.other.col_begins[i] = in.runs.col_begins[i] + period / 3;
    in.other.col_ends[i] = in.runs.col_ends[i] + period / 3;
  }
  in.other.to_3();
  vexo::gen_se_circle(3, &in.element);
  return in;
}

struct Operation {
  const char* name;
  std::function<void(Input&)> run;
  bool uses_element;
};

template <class F>
std::function<void(Input&)> into_result(F f) {
  return [f](Input& in) {
    region result;
    f(in, &result);
  };
}

const char* rows_asked_for = "";

std::vector<Operation> operations() {
  using namespace vexo;
#define RUN(call) into_result([](Input& in, region* out) { call; })
  return {
      {"threshold",
       RUN(threshold(in.image.data(), in.width, in.height, 128, 255, out)),
       false},
      {"threshold_y",
       RUN(threshold_y(in.image.data(), in.width, in.height, 128, 255, out)),
       false},
      {"threshold_y3",
       RUN(threshold_y3(in.image.data(), in.width, in.height, 128, 255, out)),
       false},
      {"connection", RUN(connection(in.runs, out, 1)), false},
      {"connection_y", RUN(connection_y(in.runs, out, 1)), false},
      {"connection2", RUN(connection2(in.runs, out, 1)), false},
      {"compute_features", [](Input& in) { compute_features(&in.runs); },
       false},
      {"fill_up", RUN(fill_up(in.runs, out)), false},
      {"fill_up_y", RUN(fill_up_y(in.runs, out)), false},
      {"fill_up_y2", RUN(fill_up_y2(in.runs, out)), false},
      {"union2", RUN(union2(in.runs, in.other, out)), false},
      {"union2_y", RUN(union2_y(in.runs, in.other, out)), false},
      {"difference", RUN(difference(in.runs, in.other, out)), false},
      {"difference_y", RUN(difference_y(in.runs, in.other, out)), false},
      {"intersection", RUN(intersection(in.runs, in.other, out)), false},
      {"intersection_y", RUN(intersection_y(in.runs, in.other, out)), false},
      {"dilation1", RUN(dilation1(in.runs, in.element, out)), true},
      {"erosion1", RUN(erosion1(in.runs, in.element, out)), true},
      {"dilation2", RUN(dilation2(in.runs, in.element, out, -1, -1)), true},
      {"erosion2", RUN(erosion2(in.runs, in.element, out, -1, -1)), true},
      {"opening", RUN(opening(in.runs, in.element, out)), true},
      {"opening1", RUN(opening1(in.runs, in.element, out)), true},
      {"closing", RUN(closing(in.runs, in.element, out)), true},
      {"top_hat", RUN(top_hat(in.runs, in.element, out)), true},
      {"bottom_hat", RUN(bottom_hat(in.runs, in.element, out)), true},
      {"boundary inner", RUN(boundary(in.runs, out, "inner")), false},
      {"boundary outer", RUN(boundary(in.runs, out, "outer")), false},
      {"boundary filled", RUN(boundary(in.runs, out, "inner_filled")), false},
  };
#undef RUN
}

void print_header(const char* title, const char* variable) {
  std::printf("\n### %s\n\n", title);
  std::printf(
      "| operation | at the largest: ms | ns per run | MiB above the "
      "inputs | bytes per run | p in %s^p |\n",
      variable);
  std::printf("|---|---|---|---|---|---|\n");
}

// One table: `inputs` from small to large, `n` what is varied.
void table(const char* title, const char* variable, std::vector<Input>& inputs,
           const std::vector<double>& n, bool only_elements) {
  print_header(title, variable);
  for (const Operation& operation : operations()) {
    if (only_elements && !operation.uses_element) continue;
    if (std::strstr(operation.name, rows_asked_for) == nullptr) continue;
    std::vector<double> times;
    Sample last{};
    for (Input& in : inputs) {
      last = measure([&] { operation.run(in); });
      times.push_back(last.seconds);
    }
    const double runs = static_cast<double>(inputs.back().runs.run_count);
    std::printf("| %s | %.2f | %.2f | %.0f | %.0f | %.2f |\n", operation.name,
                last.seconds * 1e3, last.seconds * 1e9 / runs,
                last.extra_bytes / (1 << 20), last.extra_bytes / runs,
                exponent(n, times));
    std::fflush(stdout);
  }
}

void growth_over_size(bool quick) {
  std::vector<Input> inputs;
  std::vector<double> pixels;
  const std::vector<std::pair<int, int>> all = {
      {2000, 1500}, {4000, 3000}, {8000, 6250}, {16000, 12500}};
  for (const auto& [width, height] : all) {
    if (quick && width > 4000) break;
    inputs.push_back(make_input(width, height, 40));
    pixels.push_back(double(width) * height);
  }
  std::printf(
      "\nImage sizes to %.0f Mpx, %.1f runs per 1000 pixels, %.1f "
      "million runs at the largest.\n",
      pixels.back() / 1e6, 1e3 * inputs.back().runs.run_count / pixels.back(),
      inputs.back().runs.run_count / 1e6);
  table("Growth over image size", "pixels", inputs, pixels, false);
}

void growth_over_runs(bool quick) {
  std::vector<Input> inputs;
  std::vector<double> runs;
  const int width = quick ? 2000 : 10000;
  const int height = quick ? 2400 : 10700;
  for (int period : {32, 16, 8, 4}) {
    inputs.push_back(make_input(width, height, period));
    runs.push_back(static_cast<double>(inputs.back().runs.run_count));
  }
  std::printf("\n%d x %d pixels, %.1f to %.1f million runs.\n", width, height,
              runs.front() / 1e6, runs.back() / 1e6);
  table("Growth over the number of runs", "runs", inputs, runs, false);
}

void growth_over_element(bool quick) {
  for (const char* kind : {"disc radius", "square side"}) {
    std::vector<Input> inputs;
    std::vector<double> sizes;
    for (int size : {3, 6, 12, 25, 50}) {
      inputs.push_back(quick ? make_input(1000, 800, 40)
                             : make_input(4000, 3000, 40));
      region element;
      if (std::strcmp(kind, "disc radius") == 0)
        vexo::gen_se_circle(size, &element);
      else
        vexo::gen_se_rectangle(size, size, &element);
      inputs.back().element = element;
      sizes.push_back(size);
    }
    const std::string title =
        std::string("Growth over the element: ") + kind + " 3 to 50";
    table(title.c_str(), "size", inputs, sizes, true);
  }
}

}  // namespace

int main(int argc, char** argv) {
  bool quick = false;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--quick") == 0) {
      quick = true;
    } else if (std::strcmp(argv[i], "--rows") == 0 && i + 1 < argc) {
      rows_asked_for = argv[++i];
    } else {
      std::fprintf(stderr, "usage: %s [--quick] [--rows TEXT]\n", argv[0]);
      return 2;
    }
  }
  growth_over_size(quick);
  growth_over_runs(quick);
  growth_over_element(quick);
  return 0;
}
