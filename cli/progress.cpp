// SPDX-License-Identifier: MIT
#include "cli/progress.h"

#include <cmath>
#include <cstdio>
#include <iomanip>
#include <locale>
#include <sstream>

namespace rendal {
namespace {

constexpr std::chrono::milliseconds kPeriod(200);

}  // namespace

Progress::Progress(size_t images, bool is_shown)
    : m_images(images), m_isShown(is_shown) {}

std::string Progress::Line(size_t done, size_t all, double seconds) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << done << '/' << all << " images";
  if (done > 0 && seconds > 0) {
    const double rate = static_cast<double>(done) / seconds;
    text << ", " << std::fixed << std::setprecision(1) << rate << "/s, "
         << std::setprecision(0)
         << std::ceil(static_cast<double>(all - done) / rate) << " s left";
  }
  return text.str();
}

void Progress::Update(size_t done) {
  const Clock::time_point now = Clock::now();
  if (!m_isShown || now - m_last < kPeriod) return;
  m_last = now;
  const std::chrono::duration<double> seconds = now - m_start;
  std::fprintf(stderr, "\r%s  ", Line(done, m_images, seconds.count()).c_str());
  std::fflush(stderr);
  m_isOnScreen = true;
}

void Progress::Clear() {
  if (!m_isOnScreen) return;
  std::fprintf(stderr, "\r%60s\r", "");
  std::fflush(stderr);
  m_isOnScreen = false;
}

}  // namespace rendal
