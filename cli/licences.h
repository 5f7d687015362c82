// SPDX-License-Identifier: MIT
//
// Licence texts of Rendal and of everything that is linked into it, as the
// build found them (cmake/RendalLicences.cmake).
#ifndef RENDAL_CLI_LICENCES_H_
#define RENDAL_CLI_LICENCES_H_

#include <span>
#include <string>

namespace rendal {

struct Licence {
  const char* name;
  std::span<const char* const> lines;  // one empty line: it was not found
};

// Rendal's own, those of what is linked, those that their texts refer to.
extern const std::span<const Licence> kLicences;

struct LicenceTexts {
  std::string text;     // each under its name
  std::string missing;  // names of those not found, with commas between them
};
LicenceTexts TextsOf(std::span<const Licence> licences);

}  // namespace rendal

#endif  // RENDAL_CLI_LICENCES_H_
