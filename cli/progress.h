// SPDX-License-Identifier: MIT
#ifndef RENDAL_CLI_PROGRESS_H_
#define RENDAL_CLI_PROGRESS_H_

#include <chrono>
#include <cstddef>
#include <string>

namespace rendal {

// One line on a terminal that tells how far a run is; nothing anywhere else.
class Progress {
 public:
  Progress(size_t images, bool is_shown);
  ~Progress() { Clear(); }

  void Update(size_t done);
  // Takes the line away, so that another text can stand there.
  void Clear();

  // "120/1000 images, 45.2/s, 20 s left"
  static std::string Line(size_t done, size_t all, double seconds);

 private:
  using Clock = std::chrono::steady_clock;

  size_t m_images;
  bool m_isShown;
  bool m_isOnScreen = false;
  Clock::time_point m_start = Clock::now();
  Clock::time_point m_last = m_start;
};

}  // namespace rendal

#endif  // RENDAL_CLI_PROGRESS_H_
