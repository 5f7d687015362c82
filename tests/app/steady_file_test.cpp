// SPDX-License-Identifier: MIT
#include "app/view/steady_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace rendal {
namespace {

// A file that holds another text each time that it is opened; the last one
// stays.
class ChangingFile {
 public:
  explicit ChangingFile(std::vector<std::string> texts)
      : texts_(std::move(texts)) {}

  std::optional<std::string> Read() {
    const auto bytes = ReadSteadyFile([this] {
      const std::string& text = texts_[std::min(opened_++, texts_.size() - 1)];
      return std::make_unique<std::istringstream>(text);
    });
    if (!bytes) return std::nullopt;
    return std::string(bytes->begin(), bytes->end());
  }
  size_t opened() const { return opened_; }

 private:
  std::vector<std::string> texts_;
  size_t opened_ = 0;
};

TEST(SteadyFile, IsReadTwice) {
  const std::string text(200000, 'a');
  ChangingFile file({text});
  EXPECT_EQ(file.Read(), text);
  EXPECT_EQ(file.opened(), 2u);
}

TEST(SteadyFile, WrittenOverMeanwhileIsReadAsItIsThen) {
  const std::string old(200000, 'a'), now(200000, 'b');
  const std::string mixture = old.substr(0, 70000) + now.substr(70000);
  EXPECT_EQ(ChangingFile({mixture, now}).Read(), now);
  EXPECT_EQ(ChangingFile({old, mixture, mixture, now}).Read(), now);
}

TEST(SteadyFile, ThatGrowsOrShrinksIsReadAsItIsThen) {
  EXPECT_EQ(ChangingFile({"ab", "abc"}).Read(), "abc");
  EXPECT_EQ(ChangingFile({"abc", "ab"}).Read(), "ab");
  EXPECT_EQ(ChangingFile({"abc", ""}).Read(), "");
}

TEST(SteadyFile, ThatNeverRestsIsNotRead) {
  ChangingFile file({"1", "2", "3", "4", "5", "6", "7", "8", "9"});
  EXPECT_EQ(file.Read(), std::nullopt);
  EXPECT_EQ(file.opened(), 8u);
}

TEST(SteadyFile, ThatCannotBeReadHasNoBytes) {
  const auto bytes = ReadSteadyFile([] { return nullptr; });
  ASSERT_TRUE(bytes);
  EXPECT_TRUE(bytes->empty());
}

}  // namespace
}  // namespace rendal
