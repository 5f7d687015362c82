// SPDX-License-Identifier: MIT
//
// vexolab_acceptance [--seed N] [--group LETTERS]
//
// Measures what the library reaches on simulated images and compares every
// figure with its limit. Exits with 1 if one is missed.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/vexolab/acceptance/report.h"

int main(int argc, char** argv) {
  uint64_t seed = 1;
  std::string groups = "ABCDEFGP";
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--seed") == 0 && i + 1 < argc) {
      seed = std::strtoull(argv[++i], nullptr, 10);
    } else if (std::strcmp(argv[i], "--group") == 0 && i + 1 < argc) {
      groups = argv[++i];
    } else {
      std::fprintf(stderr, "usage: %s [--seed N] [--group LETTERS]\n", argv[0]);
      return 2;
    }
  }
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  acceptance::report report;
  const auto wanted = [&](char letter) {
    return groups.find(letter) != std::string::npos;
  };
  if (wanted('A')) acceptance::generators(&report);
  if (wanted('B')) acceptance::edges(&report, seed);
  if (wanted('C')) acceptance::detection(&report, seed);
  if (wanted('D')) acceptance::shapes(&report, seed);
  if (wanted('D')) acceptance::bends(&report, seed);
  if (wanted('E')) acceptance::fits(&report, seed);
  if (wanted('F')) acceptance::contract(&report, seed);
  if (wanted('G')) acceptance::speed(&report, seed);
  if (wanted('G')) acceptance::fit_speed(&report, seed);
  if (wanted('G')) acceptance::worst_calls(&report, seed);
#ifdef VEXOLAB_ACCEPTANCE_PEERS
  if (wanted('P')) acceptance::peers(&report, seed);
#endif
  std::printf("%d rows, %d failed\n", report.rows(), report.failures());
  return report.failures() == 0 ? 0 : 1;
}
