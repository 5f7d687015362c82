// SPDX-License-Identifier: MIT
//
// Calls the measurement library's functions with numbers and images from the
// input's bytes, hostile ones included, and checks what the header promises
// whatever the arguments: codes, outputs on failure, finite results, nothing
// written behind a result, the image untouched, no call longer than a second.
// A broken promise aborts.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <vector>

#include "vexolab/vexolab.h"

namespace {

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "vexolab_fuzz: %s\n", what);
  std::abort();
}

// Of processor time, so that a busy machine does not count; sanitizers make
// everything an order of magnitude slower.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VEXOLAB_FUZZ_SANITIZED
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VEXOLAB_FUZZ_SANITIZED
#endif
#ifdef VEXOLAB_FUZZ_SANITIZED
constexpr double kSecondsAllowed = 15;
#else
constexpr double kSecondsAllowed = 1;
#endif

class Stopwatch {
 public:
  ~Stopwatch() {
    const double taken =
        static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC;
    require(taken < kSecondsAllowed, "a call took too long");
  }

 private:
  std::clock_t start_ = std::clock();
};

class Bytes {
 public:
  Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  int next() { return position_ < size_ ? data_[position_++] : 0; }
  int between(int low, int high) { return low + next() % (high - low + 1); }
  bool at_end() const { return position_ >= size_; }

  // Any number: mostly plausible coordinates, the extremes among them, or eight
  // bytes as they are.
  double number() {
    static const double kExtremes[] = {
        0.0,
        -0.0,
        1e-300,
        1e-6,
        -1.0,
        1e7,
        1.0000001e7,
        -1e7,
        2e4,
        2.00001e4,
        1e300,
        std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::quiet_NaN(),
        std::numeric_limits<double>::denorm_min(),
        360.0,
        90.0,
        0.5};
    const int kind = next();
    if (kind < 160) return next() / 4.0 + next() / 1024.0 - 4.0;
    if (kind < 190) return next() * 3.0 - 300.0;
    if (kind < 235)
      return kExtremes[kind % (sizeof kExtremes / sizeof(double))];
    uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) {
      bits |= static_cast<uint64_t>(next()) << (8 * i);
    }
    return std::bit_cast<double>(bits);
  }

  int integer() {
    const int kind = next();
    if (kind < 230) return kind % 40 - 3;
    if (kind < 233) return 10000 + kind % 3 - 1;
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
      value = value << 8 | static_cast<uint32_t>(next());
    }
    return static_cast<int>(value);
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t position_ = 0;
};

struct Image {
  int width;
  int height;
  std::vector<unsigned char> pixels;
};

Image read_image(Bytes& in) {
  Image image;
  image.width = in.between(0, 60);
  image.height = in.between(0, 60);
  const int kind = in.next();
  const int a = in.next();
  const int b = in.next();
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      int grey = a;
      if (kind % 4 == 1) grey = (x * (kind >> 2) + y * b) % 256;
      if (kind % 4 == 2)
        grey = (x - b % 60) * 4 > y * ((kind >> 2) - 32) ? a : b;
      if (kind % 4 == 3) grey = in.next();
      image.pixels.push_back(static_cast<unsigned char>(grey));
    }
  }
  return image;
}

// What every function that hands out an array promises.
template <typename T>
void check_array(int id, const T* data, int count, bool finite) {
  require(id >= 1 || (id <= -1 && id >= -6), "an unknown code");
  require(vexolab_error_text(id) != nullptr, "a code without a text");
  if (id < 0) {
    require(data == nullptr && count == 0, "a failure left an array");
    return;
  }
  require(count >= 0, "a negative count");
  for (int i = 0; finite && i < count; ++i) {
    require(std::isfinite(data[i]), "a result is not finite");
  }
}

std::vector<float> generate(Bytes& in) {
  float* data = reinterpret_cast<float*>(&in);
  int count = -7;
  double n[7];
  for (double& value : n) value = in.number();
  const int direction =
      in.between(0, 9) == 0 ? in.integer() : in.between(0, 1) * 2 - 1;
  const int wanted = in.integer();
  const int kind = in.between(0, 2);
  int id = 0;
  {
    const Stopwatch watch;
    if (kind == 0) {
      id = gen_measure_line(n[0], n[1], n[2], n[3], n[4], n[5], direction,
                            wanted, &data, &count);
    } else if (kind == 1) {
      id = gen_measure_circle(n[0], n[1], n[2], n[3], n[4], direction, wanted,
                              &data, &count);
    } else {
      id = gen_measure_ellipse(n[0], n[1], n[2], n[3], n[4], n[5], n[6],
                               direction, wanted, &data, &count);
    }
  }
  check_array(id, data, 5 * count, true);
  std::vector<float> result;
  if (count > 0) result.assign(data, data + 5 * count);
  clear_mems(id);
  if (in.between(0, 3) == 0) clear_mems(id);
  return result;
}

std::vector<float> invent(Bytes& in) {
  std::vector<float> result;
  for (int i = 5 * in.between(0, 12); i > 0; --i) {
    const double value = in.number();
    // Conversion of what a float cannot hold would be our own fault.
    result.push_back(std::fabs(value) < 1e38 || !std::isfinite(value)
                         ? static_cast<float>(value)
                         : 1e38f);
  }
  return result;
}

std::vector<double> measure(Bytes& in, const Image& image,
                            const std::vector<float>& rects) {
  static const char* const kSelections[] = {"first+",    "first-", "first",
                                            "last+",     "last-",  "last",
                                            "strongest", "middle", nullptr};
  double* data = reinterpret_cast<double*>(&in);
  int n = -7;
  const double sigma = in.number();
  const double amplitude = in.number();
  const char* selection = kSelections[in.between(0, 8)];
  int id = 0;
  {
    const Stopwatch watch;
    id = do_measure(image.pixels.data(), image.width, image.height, sigma,
                    amplitude, selection, rects.data(),
                    static_cast<int>(rects.size() / 5), &data, &n);
  }
  check_array(id, data, 2 * n, true);
  require(n <= static_cast<int>(rects.size() / 5), "more points than asked");
  std::vector<double> points;
  if (n > 0) points.assign(data, data + 2 * n);
  clear_mems(id);
  return points;
}

void band(Bytes& in, const Image& image) {
  double* data = reinterpret_cast<double*>(&in);
  int count = -7;
  double n[7];
  for (double& value : n) value = in.number();
  float rr[6] = {7, 7, 7, 7, 7, 7};
  ppw_to_rr(n[0], n[1], n[2], n[3], n[4], rr);
  require(rr[5] == 7, "ppw_to_rr wrote too far");
  double r[5];
  for (int i = 0; i < 5; ++i) {
    require(std::isfinite(rr[i]), "ppw_to_rr is not finite");
    r[i] = in.between(0, 7) == 0 ? in.number() : static_cast<double>(rr[i]);
  }
  int id = 0;
  {
    const Stopwatch watch;
    id = measure_pos_d(r[0], r[1], r[2], r[3], r[4], image.pixels.data(),
                       image.width, image.height, n[5], n[6], &data, &count);
  }
  check_array(id, data, count, true);
  require(count % 3 == 0, "half a point");
  clear_mems(id);
}

void fit(Bytes& in, std::vector<double> points) {
  constexpr double kGuard = 77;
  const int extra = in.between(0, 40);
  for (int i = 0; i < 2 * (extra / 2); ++i) points.push_back(in.number());
  const int shape = in.between(0, 3);
  const int method =
      in.between(0, 3) == 0 ? in.integer() : 7 * in.between(0, 1);
  const double wide = in.number();
  const float factor = std::fabs(wide) < 1e38 || !std::isfinite(wide)
                           ? static_cast<float>(wide)
                           : 1e38f;
  const int iterations = in.between(0, 3) == 0 ? in.integer() : 20;
  const int least = in.between(0, 3) == 0 ? in.integer() : 3;
  double result[6] = {kGuard, kGuard, kGuard, kGuard, kGuard, kGuard};
  int code = 0;
  {
    const Stopwatch watch;
    code = do_fit(points.data(), static_cast<int>(points.size() / 2), shape,
                  method, factor, iterations, least, result);
  }
  require(code == 0 || (code <= -1 && code >= -6), "an unknown code of a fit");
  static const int kDoubles[] = {4, 3, 5, 0};
  for (int i = 0; i < kDoubles[shape]; ++i) {
    require(std::isfinite(result[i]), "a fit is not finite");
    require(code == 0 || result[i] == 0, "a failed fit left a value");
  }
  for (int i = kDoubles[shape]; i < 6; ++i) {
    require(result[i] == kGuard, "a fit wrote too far");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes in(data, size);
  const Image image = read_image(in);
  const std::vector<unsigned char> before = image.pixels;
  for (int round = 0; round < 4 && !in.at_end(); ++round) {
    switch (in.between(0, 4)) {
      case 0:
        fit(in, measure(in, image, generate(in)));
        break;
      case 1:
        fit(in, measure(in, image, invent(in)));
        break;
      case 2:
        band(in, image);
        break;
      case 3:
        fit(in, {});
        break;
      default:
        clear_mems(in.integer());
        generate(in);
        break;
    }
  }
  require(image.pixels == before, "the image was written to");
  return 0;
}
