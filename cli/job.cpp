// SPDX-License-Identifier: MIT
#include "cli/job.h"

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <exception>
#include <map>
#include <mutex>
#include <opencv2/core.hpp>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "cli/path_check.h"
#include "cli/progress.h"
#include "cli/system.h"
#include "cli/text_report.h"
#include "recipes/recipe_json.h"
#include "region/operations.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;

volatile std::sig_atomic_t g_interrupted = 0;

extern "C" void OnInterrupt(int) {
  g_interrupted = 1;
  std::signal(SIGINT, SIG_DFL);
}

// Interrupts are noted while it lives.
class InterruptGuard {
 public:
  InterruptGuard() {
    g_interrupted = 0;
    m_before = std::signal(SIGINT, OnInterrupt);
    // As shells start what runs in the background.
    if (m_before == SIG_IGN) std::signal(SIGINT, SIG_IGN);
  }
  ~InterruptGuard() { std::signal(SIGINT, m_before); }
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  void (*m_before)(int);
};

// How many images at a time, and how many threads each may use.
struct Threads {
  int images;
  int each;

  Threads(int wanted, size_t image_count) {
    const int hardware =
        std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    const int all = wanted > 0 ? wanted : hardware;
    images = static_cast<int>(
        std::clamp<size_t>(image_count, 1, static_cast<size_t>(all)));
    each = std::max(1, all / images);
  }
};

// What the libraries may use of the machine, as long as it lives.
class LibraryThreads {
 public:
  explicit LibraryThreads(int each) : m_before(cv::getNumThreads()) {
    vexo::limit_threads(each);
    // It complains of more than there are.
    cv::setNumThreads(std::min(each, cv::getNumberOfCPUs()));
  }
  ~LibraryThreads() {
    vexo::limit_threads(0);
    cv::setNumThreads(m_before);
  }
  LibraryThreads(const LibraryThreads&) = delete;
  LibraryThreads& operator=(const LibraryThreads&) = delete;

 private:
  int m_before;
};

// Tells of every image in turn; runs on one thread at a time.
class Reporter {
 public:
  explicit Reporter(const Job& job)
      : m_job(job),
        m_files(job.files, job.image_column),
        m_progress(job.images.size(), !job.is_quiet && job.images.size() > 1 &&
                                          IsErrorTerminal()) {}

  void Add(size_t index, const ImageResult& result) {
    const std::string name = Utf8Of(m_job.images[index].path);
    m_files.Add(name, result);
    Tell(name, result);
    Print(name, result);
    m_progress.Update(index + 1);
  }

  void Finish() {
    m_progress.Clear();
    m_files.Commit();
    FlushStandardOutput();
  }

  bool HasFailures() const { return m_hasFailures; }
  void ClearProgress() { m_progress.Clear(); }

 private:
  void Tell(const std::string& name, const ImageResult& result) {
    std::vector<std::string> lines = result.failures;
    if (!result.error.empty()) lines.push_back(result.error);
    m_hasFailures = m_hasFailures || !lines.empty();
    if (!m_job.is_quiet) {
      lines.insert(lines.end(), result.notes.begin(), result.notes.end());
    }
    if (lines.empty()) return;
    m_progress.Clear();
    for (const std::string& line : lines) {
      std::fprintf(stderr, "rendal-cli: %s: %s\n", name.c_str(), line.c_str());
    }
  }

  void Print(const std::string& name, const ImageResult& result) {
    std::string text;
    if (m_job.text == TextForm::kSummary) {
      text = name + ": " + TextSummary(result) + "\n";
    } else if (m_job.text == TextForm::kReport && result.error.empty()) {
      if (m_job.images.size() > 1) text = "== " + name + "\n";
      text += TextReport(result);
    }
    if (text.empty()) return;
    m_progress.Clear();
    std::fwrite(text.data(), 1, text.size(), stdout);
  }

  const Job& m_job;
  ResultFiles m_files;
  Progress m_progress;
  bool m_hasFailures = false;
};

// The images, each to one of the workers; their results, in order, to the
// reporter. A worker waits when it is far ahead of the slowest image, so that
// few results wait in memory.
class Batch {
 public:
  Batch(const Job& job, Reporter& reporter)
      : m_job(job), m_reporter(reporter) {}

  void Run(int workers) {
    m_mostAhead = 8 * static_cast<size_t>(workers);
    std::vector<std::thread> threads;
    for (int i = 1; i < workers; ++i) {
      try {
        threads.emplace_back([this] { Work(); });
      } catch (const std::system_error&) {
        break;  // The system has no more threads: fewer do as well.
      }
    }
    Work();
    for (std::thread& thread : threads) thread.join();
    if (m_failure) std::rethrow_exception(m_failure);
  }

 private:
  void Work() {
    while (const std::optional<size_t> index = Next()) {
      try {
        Take(*index, RunOne(*index));
      } catch (...) {
        const std::lock_guard lock(m_mutex);
        if (!m_failure) m_failure = std::current_exception();
        m_changed.notify_all();
      }
    }
  }

  std::optional<size_t> Next() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] {
      return m_failure || m_next < m_reported + m_mostAhead;
    });
    if (m_failure || g_interrupted || m_next >= m_job.images.size()) return {};
    return m_next++;
  }

  ImageResult RunOne(size_t index) const {
    const JobImage& image = m_job.images[index];
    return RunImage(m_job.steps, image.path,
                    {image.labels, image.overlay, m_job.zoom,
                     !m_job.files.coco.empty(), m_job.compressed_rle});
  }

  void Take(size_t index, ImageResult result) {
    const std::lock_guard lock(m_mutex);
    m_waiting.emplace(index, std::move(result));
    while (!m_failure && !m_waiting.empty() &&
           m_waiting.begin()->first == m_reported) {
      const auto node = m_waiting.extract(m_waiting.begin());
      m_reporter.Add(m_reported, node.mapped());
      ++m_reported;
    }
    m_changed.notify_all();
  }

  const Job& m_job;
  Reporter& m_reporter;
  size_t m_mostAhead = 0;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  size_t m_next = 0;
  size_t m_reported = 0;
  std::map<size_t, ImageResult> m_waiting;
  std::exception_ptr m_failure;
};

// What there must be before the first image.
void Prepare(const Job& job) {
  std::error_code error;
  if (!job.folder.empty()) fs::create_directories(job.folder, error);
  if (error) {
    throw OutputError("cannot make the folder " + Utf8Of(job.folder) + ": " +
                      error.message());
  }
  if (!job.saved_recipe.empty()) {
    WriteOutput(job.saved_recipe, WriteRecipe({job.steps, {}}));
  }
}

}  // namespace

ExitCode RunJob(const Job& job) {
  RefuseOverwriting(job);
  const Threads threads(job.threads, job.images.size());
  const LibraryThreads library_threads(threads.each);
  const InterruptGuard interrupts;
  try {
    Prepare(job);
    Reporter reporter(job);
    Batch(job, reporter).Run(threads.images);
    reporter.Finish();
    if (g_interrupted) return kInterrupted;
    return reporter.HasFailures() ? kSomethingFailed : kAllFine;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "rendal-cli: %s\n", error.what());
    return kSomethingFailed;
  }
}

}  // namespace rendal
