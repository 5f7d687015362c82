// SPDX-License-Identifier: MIT
//
// Storage from the C heap. The two error texts of the library are thrown here
// and nowhere else.
#ifndef VEXO_REGION_INTERNAL_MEMORY_H_
#define VEXO_REGION_INTERNAL_MEMORY_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <type_traits>
#include <utility>

#include "region/region.h"

namespace vexo::internal {

// The most runs that a chord count can state.
constexpr size_t kMaxChords = std::numeric_limits<int32_t>::max();

[[noreturn]] void throw_malloc_failed();
[[noreturn]] void throw_realloc_failed();

template <class T>
constexpr bool fits_in_memory(size_t n) {
  return n <= std::numeric_limits<ptrdiff_t>::max() / sizeof(T);
}

// n entries, not initialised. nullptr for n == 0. Throws "malloc failed".
template <class T>
T* allocate(size_t n) {
  static_assert(std::is_trivially_copyable_v<T>);
  if (n == 0) return nullptr;
  void* memory = fits_in_memory<T>(n) ? std::malloc(n * sizeof(T)) : nullptr;
  if (memory == nullptr) throw_malloc_failed();
  return static_cast<T*>(memory);
}

// As realloc, without its zero-size case: n == 0 frees and gives nullptr.
// Throws "realloc failed"; the old entries are then still there.
template <class T>
T* reallocate(T* old, size_t n) {
  static_assert(std::is_trivially_copyable_v<T>);
  if (n == 0) {
    std::free(old);
    return nullptr;
  }
  void* memory =
      fits_in_memory<T>(n) ? std::realloc(old, n * sizeof(T)) : nullptr;
  if (memory == nullptr) throw_realloc_failed();
  return static_cast<T*>(memory);
}

// An array that frees itself. Entries are not initialised.
template <class T>
class buffer {
 public:
  buffer() = default;
  explicit buffer(size_t n) : data_(allocate<T>(n)), size_(n) {}
  buffer(buffer&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)),
        size_(std::exchange(other.size_, 0)) {}
  buffer& operator=(buffer&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~buffer() { std::free(data_); }

  T* data() const { return data_; }
  size_t size() const { return size_; }
  T& operator[](size_t i) const { return data_[i]; }
  T* begin() const { return data_; }
  T* end() const { return data_ + size_; }

  // Room for n entries; those that fit stay.
  void resize(size_t n) {
    data_ = data_ == nullptr ? allocate<T>(n) : reallocate(data_, n);
    size_ = n;
  }
  // Room for at least n entries, growing by doubling.
  void ensure(size_t n) {
    if (n > size_) resize(n > 2 * size_ ? n : 2 * size_);
  }
  // Hands the memory over; free it with std::free.
  T* release() {
    size_ = 0;
    return std::exchange(data_, nullptr);
  }

 private:
  T* data_ = nullptr;
  size_t size_ = 0;
};

// Runs under construction, in the form of run arrays.
class run_buffer {
 public:
  explicit run_buffer(size_t capacity = 2000)
      : rows_(capacity), begins_(capacity), ends_(capacity) {}

  size_t size() const { return size_; }
  size_t capacity() const { return ends_.size(); }
  int32_t* rows() const { return rows_.data(); }
  int32_t* begins() const { return begins_.data(); }
  int32_t* ends() const { return ends_.data(); }

  // For writers that fill the arrays themselves.
  void set_size(size_t n) { size_ = n; }
  void ensure(size_t n) {
    if (n <= capacity()) return;
    rows_.ensure(n);
    begins_.ensure(n);
    ends_.ensure(n);
  }
  void push(int32_t row, int32_t begin, int32_t end) {
    if (size_ == capacity()) ensure(size_ + 1);
    rows_[size_] = row;
    begins_[size_] = begin;
    ends_[size_] = end;
    ++size_;
  }

  // Makes these the run arrays of `r`; frees the old ones if no copy of `r`
  // shares them.
  void move_to(region* r);

 private:
  buffer<int32_t> rows_, begins_, ends_;
  size_t size_ = 0;
};

// Runs under construction, in the form of chords.
class chord_buffer {
 public:
  explicit chord_buffer(size_t capacity = 100) : chords_(capacity) {}

  size_t size() const { return size_; }
  size_t capacity() const { return chords_.size(); }
  chord* data() const { return chords_.data(); }

  void set_size(size_t n) { size_ = n; }
  void ensure(size_t n) { chords_.ensure(n); }
  void push(const chord& c) {
    if (size_ == capacity()) ensure(size_ + 1);
    chords_[size_++] = c;
  }

  // Makes this the chord array of `r`; frees the old one if no copy of `r`
  // shares it. Throws "realloc failed" when there are more than kMaxChords;
  // *r is then untouched.
  void move_to(region* r);

 private:
  buffer<chord> chords_;
  size_t size_ = 0;
};

// Gives *r a chord array of n entries that is to be filled by the caller:
// reallocated when there is one, else fresh. chord_count becomes n. Throws
// "malloc failed" or "realloc failed" with *r untouched.
void resize_chords(region* r, size_t n);

// Destroys the children of `r` if no copy of `r` shares them; r then has none.
void drop_children(region* r);

}  // namespace vexo::internal

#endif  // VEXO_REGION_INTERNAL_MEMORY_H_
