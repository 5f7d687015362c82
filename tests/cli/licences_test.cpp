// SPDX-License-Identifier: MIT
#include "cli/licences.h"

#include <algorithm>
#include <map>

#include "tests/cli/command_line_run.h"

namespace rendal {
namespace {

using Licences = CommandLineTest;

std::string Heading(const std::string& name) {
  const std::string rule(72, '=');
  return rule + "\n" + name + "\n" + rule + "\n";
}

// Words that stand in the licence text of each part.
const std::map<std::string, std::string> kWords = {
    {"Rendal", "The Rendal authors"},
    {"cli11", "University of Cincinnati"},
    {"eigen", "Mozilla Public License Version 2.0"},
    {"gcc-runtime", "RUNTIME LIBRARY EXCEPTION"},
    {"nlohmann-json", "Niels Lohmann"},
    {"onetbb", "Apache"},
    {"opencv", "Intel Corporation"},
#if defined(_WIN32)
    {"libjpeg-turbo", "Thomas G. Lane"},
    {"libpng", "Glenn Randers-Pehrson"},
    {"libtiff", "Silicon Graphics"},
    {"mingw-w64-runtime", "mingw-w64"},
    {"zlib", "Jean-loup Gailly"},
#else
    {"glibc", "GNU C Library"},
#endif
    {"Apache-2.0", "TERMS AND CONDITIONS FOR USE, REPRODUCTION"},
    {"GPL-3", "GNU GENERAL PUBLIC LICENSE"},
    {"LGPL-2.1", "GNU LESSER GENERAL PUBLIC LICENSE"},
};

TEST_F(Licences, NameAndTextOfAllThatIsLinkedArePrinted) {
  ASSERT_EQ(Run({"--licences"}), kAllFine) << m_error;
  EXPECT_EQ(m_error, "");
  for (const auto& [name, words] : kWords) {
    const size_t begin = m_out.find(Heading(name));
    ASSERT_NE(begin, std::string::npos) << name;
    const size_t text = begin + Heading(name).size();
    const size_t end = m_out.find(Heading("").substr(0, 73), text);
    EXPECT_LT(m_out.find(words, text), end) << name;
  }
}

// What the packages carry beside the program.
TEST_F(Licences, TheFolderThatIsGivenAwayHoldsWhatIsPrinted) {
  ASSERT_EQ(Run({"--licences"}), kAllFine) << m_error;
  size_t files = 0;
  for (const auto& entry : fs::directory_iterator(RENDAL_LICENCES)) {
    const std::string text = ContentOf(entry.path());
    EXPECT_GT(text.size(), 500u) << entry.path();
    EXPECT_NE(m_out.find(Heading(entry.path().stem().string()) + "\n" + text),
              std::string::npos)
        << entry.path();
    ++files;
  }
  // Rendal's own licence stands elsewhere.
  EXPECT_EQ(files + 1, kLicences.size());
}

TEST(LicenceTexts, WhatTheBuildDidNotFindIsNamed) {
  const char* const text[] = {"first", "", "third"};
  const char* const nothing[] = {""};
  const Licence licences[] = {{"a", nothing}, {"b", text}, {"c", nothing}};
  const LicenceTexts texts = TextsOf(licences);
  EXPECT_EQ(texts.missing, "a, c");
  EXPECT_NE(
      texts.text.find(Heading("a") +
                      "\nThe build of this program did not find this text.\n"),
      std::string::npos);
  EXPECT_NE(texts.text.find(Heading("b") + "\nfirst\n\nthird\n"),
            std::string::npos);
}

}  // namespace
}  // namespace rendal
