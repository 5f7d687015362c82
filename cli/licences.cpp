// SPDX-License-Identifier: MIT
#include "cli/licences.h"

namespace rendal {
namespace {

constexpr size_t kRuleLength = 72;

bool IsMissing(const Licence& licence) {
  return licence.lines.empty() ||
         (licence.lines.size() == 1 && licence.lines[0][0] == '\0');
}

void AppendHeading(const char* name, std::string* text) {
  const std::string rule(kRuleLength, '=');
  *text += rule + "\n" + name + "\n" + rule + "\n\n";
}

}  // namespace

LicenceTexts TextsOf(std::span<const Licence> licences) {
  LicenceTexts result;
  for (const Licence& licence : licences) {
    AppendHeading(licence.name, &result.text);
    if (IsMissing(licence)) {
      result.text += "The build of this program did not find this text.\n";
      result.missing += (result.missing.empty() ? "" : ", ");
      result.missing += licence.name;
    } else {
      for (const char* const line : licence.lines) {
        result.text += line;
        result.text += '\n';
      }
    }
    result.text += '\n';
  }
  return result;
}

}  // namespace rendal
