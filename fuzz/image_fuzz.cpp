// SPDX-License-Identifier: MIT
//
// Loads the input as an image file, twice, over an image that was there before,
// and checks what the loader promises whatever the bytes: a grey image of the
// size that the header claims, the same both times, or a refusal that says so
// and leaves what it must. A broken promise aborts.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <span>
#include <string>

#include "app/view/image_loader.h"
#include "tools/console_text.h"

// Whether malloc() can be replaced: not where a sanitizer does that.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define RENDAL_SANITIZED_MALLOC
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define RENDAL_SANITIZED_MALLOC
#endif
#if defined(__GLIBC__) && !defined(RENDAL_SANITIZED_MALLOC)
#define RENDAL_OWN_MALLOC
#endif

namespace {

namespace fs = std::filesystem;
using rendal::ClaimedSize;
using rendal::Status;

// Far below the program's own, so that memory stays bounded.
constexpr uint64_t kMostPixels = 1 << 18;

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "image_fuzz: %s\n", what);
  std::abort();
}

// Far apart in every depth, floating point too.
constexpr unsigned char kSomeDirt = 0x45;
constexpr unsigned char kOtherDirt = 0xC5;

// What new memory is filled with; 0: left as it is.
unsigned char g_dirt = 0;

// The part of the stack that the calls after this one use.
[[gnu::noinline]] void MakeStackDirty(unsigned char dirt) {
  unsigned char stack[1 << 16];
  std::memset(stack, dirt, sizeof stack);
  asm volatile("" : : "r"(stack) : "memory");
}

// Pixels that a decoder leaves alone have the value that memory happened to
// have, which is another one in each loading. So has what it keeps in buffers
// of its own: on the stack, and where malloc() can be replaced.
class DirtyMemory : public cv::MatAllocator {
 public:
  explicit DirtyMemory(unsigned char dirt) : m_dirt(dirt) {
    cv::Mat::setDefaultAllocator(this);
    g_dirt = dirt;
  }
  ~DirtyMemory() override {
    cv::Mat::setDefaultAllocator(cv::Mat::getStdAllocator());
    g_dirt = 0;
  }

  cv::UMatData* allocate(int dims, const int* sizes, int type, void* data,
                         size_t* step, cv::AccessFlag flags,
                         cv::UMatUsageFlags usage) const override {
    cv::UMatData* const result = cv::Mat::getStdAllocator()->allocate(
        dims, sizes, type, data, step, flags, usage);
    if (data == nullptr) std::fill_n(result->data, result->size, m_dirt);
    return result;
  }
  bool allocate(cv::UMatData* data, cv::AccessFlag flags,
                cv::UMatUsageFlags usage) const override {
    return cv::Mat::getStdAllocator()->allocate(data, flags, usage);
  }
  void deallocate(cv::UMatData* data) const override {
    cv::Mat::getStdAllocator()->deallocate(data);
  }

 private:
  unsigned char m_dirt;
};

// One file for all inputs of this process.
class InputFile {
 public:
  InputFile()
      : m_path(
            fs::temp_directory_path() /
            ("rendal-image-fuzz-" + std::to_string(std::random_device()()))) {}
  ~InputFile() {
    std::error_code error;
    fs::remove(m_path, error);
  }
  const fs::path& Write(std::span<const uint8_t> bytes) {
    std::ofstream file(m_path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    Require(!file.fail(), "the input could not be written");
    return m_path;
  }

 private:
  fs::path m_path;
};

// Where a loading starts: an image of 3 x 2, seen at a zoom of 9.
struct Session {
  rendal::Workbench bench;
  rendal::ViewState view;
  rendal::LoadReport report;
  Status status;

  Session() {
    bench.m_language = rendal::kEnglish;
    bench.m_maxImagePixels = kMostPixels;
    bench.m_srcImage = cv::Mat(2, 3, CV_8U, cv::Scalar(77));
    bench.m_roiShapes = rendal::ShapesForImage(3, 2);
    view.viewWidth = 1000;
    view.viewHeight = 800;
    view.zoom = 9;
  }
  bool KeepsTheRest() const {
    return view.zoom == 9 && bench.m_redraw == 0 && bench.m_hideResults == 0 &&
           bench.m_roiShapes == rendal::ShapesForImage(3, 2);
  }
};

void CheckTooLarge(const Session& s,
                   const std::optional<ClaimedSize>& claimed) {
  Require(claimed && claimed->Exceeds(kMostPixels), "refused without a reason");
  Require(s.status.tone == rendal::Tone::kError, "a refusal that is not red");
  Require(s.bench.m_srcImage.size() == cv::Size(3, 2) && s.KeepsTheRest(),
          "a refused file changed something");
}

void CheckChannels(const Session& s) {
  Require(s.report.channels > 0 && s.KeepsTheRest(),
          "an image of too many channels changed something");
  Require(s.status.text == rendal::messages::ChannelsNotSupported(
                               rendal::kEnglish, s.report.channels)
                               .text,
          "channels refused without a word");
}

// A TIFF file may say that its rows are to be seen as columns.
bool IsSizeOf(const cv::Mat& image, const ClaimedSize& claimed) {
  const auto width = static_cast<uint64_t>(image.cols);
  const auto height = static_cast<uint64_t>(image.rows);
  return claimed == ClaimedSize{width, height} ||
         claimed == ClaimedSize{height, width};
}

void CheckOpened(const Session& s, const std::optional<ClaimedSize>& claimed) {
  const cv::Mat& image = s.bench.m_srcImage;
  Require(s.status.text == rendal::messages::ImageOpened(rendal::kEnglish,
                                                         image.cols, image.rows)
                               .text,
          "opened without a word");
  Require(
      s.bench.m_redraw == 1 && s.bench.m_hideResults == 1 &&
          s.bench.m_roiShapes == rendal::ShapesForImage(image.cols, image.rows),
      "opened, but the view is not reset");
  if (image.empty()) return;
  Require(image.type() == CV_8UC1 && image.isContinuous(),
          "not an 8-bit grey image");
  Require(image.total() <= kMostPixels, "more pixels than allowed");
  Require(!claimed || IsSizeOf(image, *claimed),
          "another size than the header's");
}

void Check(const Session& s, std::span<const uint8_t> bytes) {
  const std::optional<ClaimedSize> claimed = rendal::ReadClaimedSize(bytes);
  Require(!s.status.text.empty(), "no status");
  const int channels = s.report.channels;
  if (s.report.too_large) {
    CheckTooLarge(s, claimed);
  } else if (channels != 1 && channels != 3 && channels != 4) {
    CheckChannels(s);
  } else {
    CheckOpened(s, claimed);
  }
}

void Load(const fs::path& path, unsigned char dirt, Session* session) {
  const rendal::ConsoleCapture quiet;
  const DirtyMemory memory(dirt);
  MakeStackDirty(dirt);
  session->status = rendal::LoadImageFile(path, session->bench, session->view,
                                          &session->report);
  // The allocator is about to go.
  session->bench.m_srcImage = session->bench.m_srcImage.clone();
}

// Other formats than the four whose header is read have only the image
// library's own limit of size.
bool IsOfTheFourFormats(std::span<const uint8_t> b) {
  if (b.size() < 4) return false;
  return (b[0] == 'B' && b[1] == 'M') || (b[0] == 0x89 && b[1] == 'P') ||
         (b[0] == 0xFF && b[1] == 0xD8) || (b[0] == 'I' && b[1] == 'I') ||
         (b[0] == 'M' && b[1] == 'M');
}

}  // namespace

#ifdef RENDAL_OWN_MALLOC
extern "C" void* __libc_malloc(size_t size);
extern "C" void* malloc(size_t size) {
  void* const block = __libc_malloc(size);
  if (g_dirt != 0 && block != nullptr) std::memset(block, g_dirt, size);
  return block;
}
#endif

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static InputFile file;
  const std::span<const uint8_t> bytes(data, size);
  if (!IsOfTheFourFormats(bytes)) return -1;
  const fs::path& path = file.Write(bytes);
  Session first;
  Session second;
  Load(path, kSomeDirt, &first);
  Check(first, bytes);
  Load(path, kOtherDirt, &second);
  Check(second, bytes);
  const cv::Mat& image = first.bench.m_srcImage;
  Require(image.size() == second.bench.m_srcImage.size(), "two sizes");
  Require(image.empty() || image.type() != CV_8UC1 ||
              cv::norm(image, second.bench.m_srcImage, cv::NORM_INF) == 0,
          "two pictures of one file");
  return 0;
}
