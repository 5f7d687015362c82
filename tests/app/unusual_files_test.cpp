// SPDX-License-Identifier: MIT
//
// What a path may lead to besides an image that lies still: devices, pipes,
// what may not be read, what changes while it is read.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <thread>

#include "app/view/image_loader.h"
#include "tests/app/image_bytes.h"
#include "tools/console_text.h"

namespace rendal {
namespace {

namespace fs = std::filesystem;
using testing_images::Bytes;
using testing_images::TemporaryFolder;
using testing_images::WriteBytes;

class UnusualFiles : public testing::Test {
 protected:
  UnusualFiles()
      : m_folder(
            testing::UnitTest::GetInstance()->current_test_info()->name()) {
    m_bench.m_language = kEnglish;
    // A load that waits for a writer would wait for ever.
    alarm(60);
  }
  ~UnusualFiles() override { alarm(0); }

  Status Load(const fs::path& path) {
    const ConsoleCapture console;
    const Status status = LoadImageFile(path, m_bench, m_view);
    m_console = console.Text();
    return status;
  }
  void ExpectNoImage(const fs::path& path) {
    EXPECT_EQ(Load(path).text, "open image,width = 0, height = 0") << path;
    EXPECT_TRUE(m_bench.m_srcImage.empty());
    EXPECT_NE(m_console.find("no image in " + path.string()), std::string::npos)
        << m_console;
  }

  TemporaryFolder m_folder;
  Workbench m_bench;
  ViewState m_view;
  std::string m_console;
};

cv::Mat Noise(int width, int height) {
  cv::Mat image(height, width, CV_8U);
  cv::randu(image, 1, 256);
  return image;
}

TEST_F(UnusualFiles, DevicesAreNoImage) {
  for (const char* device : {"/dev/zero", "/dev/null", "/dev/urandom"}) {
    ASSERT_TRUE(fs::exists(device));
    ExpectNoImage(device);
  }
  fs::create_symlink("/dev/zero", m_folder / "link.bmp");
  ExpectNoImage(m_folder / "link.bmp");
}

TEST_F(UnusualFiles, PipeWithoutAWriterIsNoImageAtOnce) {
  const fs::path pipe = m_folder / "pipe.png";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  ExpectNoImage(pipe);
}

TEST_F(UnusualFiles, LinksThatLeadNowhereAreNoImage) {
  fs::create_symlink(m_folder / "circle.png", m_folder / "circle.png");
  ExpectNoImage(m_folder / "circle.png");
  fs::create_symlink(m_folder / "gone.png", m_folder / "dangling.png");
  ExpectNoImage(m_folder / "dangling.png");
}

TEST_F(UnusualFiles, FilesWhoseSizeTheSystemDoesNotTellAreNoImage) {
  ExpectNoImage("/proc/self/status");
}

// An image, but followed by more bytes than the decoder can count. No memory is
// taken for them.
TEST_F(UnusualFiles, FileOfTwoGigabytesIsNoImageAndSaysSo) {
  Bytes bytes;
  ASSERT_TRUE(cv::imencode(".bmp", Noise(20, 10), bytes));
  for (const uintmax_t size : {uintmax_t{1} << 31, uintmax_t{1} << 33}) {
    const fs::path huge = m_folder / "huge.bmp";
    WriteBytes(huge, bytes);
    fs::resize_file(huge, size);
    ExpectNoImage(huge);
    EXPECT_NE(m_console.find("the image file is larger than 2 GB\n"),
              std::string::npos);
  }
}

// Root may read everything, so the load runs as somebody else.
TEST_F(UnusualFiles, FileThatMayNotBeReadIsNoImage) {
  constexpr uid_t kNobody = 65534;
  Bytes bytes;
  ASSERT_TRUE(cv::imencode(".png", Noise(20, 10), bytes));
  const fs::path secret = m_folder / "secret.png";
  WriteBytes(secret, bytes);
  Load(secret);
  ASSERT_EQ(m_bench.m_srcImage.size(), cv::Size(20, 10));
  fs::permissions(secret, fs::perms::none);
  const bool was_root = geteuid() == 0;
  if (was_root) {
    ASSERT_EQ(seteuid(kNobody), 0);
  }
  ExpectNoImage(secret);
  if (was_root) {
    ASSERT_EQ(seteuid(0), 0);
  }
}

// Cuts the file at `path` off, makes it whole again, takes it away and brings
// it back, until told to stop.
void Disturb(const fs::path& path, const Bytes& whole,
             const std::atomic<bool>& stop) {
  const fs::path away = path.string() + ".away";
  const size_t half = whole.size() / 2;
  while (!stop) {
    fs::resize_file(path, half);
    {
      std::ofstream file(path, std::ios::binary | std::ios::app);
      file.write(reinterpret_cast<const char*>(whole.data() + half),
                 static_cast<std::streamsize>(whole.size() - half));
    }
    fs::rename(path, away);
    fs::rename(away, path);
  }
}

TEST_F(UnusualFiles, FileThatShrinksAndVanishesIsAnImageOfItsSizeOrNone) {
  const cv::Mat image = Noise(800, 600);
  Bytes whole;
  ASSERT_TRUE(cv::imencode(".bmp", image, whole));
  const fs::path path = m_folder / "restless.bmp";
  WriteBytes(path, whole);
  std::atomic<bool> stop = false;
  std::jthread other([&] { Disturb(path, whole, stop); });
  int images = 0;
  int none = 0;
  const auto start = std::chrono::steady_clock::now();
  while ((images < 20 || none < 50) &&
         std::chrono::steady_clock::now() - start < std::chrono::seconds(40)) {
    Load(path);
    // Which bytes a reader gets that meets a writer is up to the system.
    const cv::Size size = m_bench.m_srcImage.size();
    EXPECT_TRUE(size.empty() || size == image.size()) << size;
    ++(size.empty() ? none : images);
  }
  stop = true;
  EXPECT_GE(images, 20);
  EXPECT_GE(none, 50);
}

}  // namespace
}  // namespace rendal
