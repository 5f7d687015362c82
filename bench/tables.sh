#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Prints the tables of docs/performance.md: every comparison with the peers, on
# all photographs, with one thread and with two. Takes half an hour on a machine
# that should do nothing else. Arguments go to every benchmark:
#
#   bench/tables.sh --budget 100 --filter coins
set -euo pipefail
cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."

cmake --preset native-bench >/dev/null
cmake --build --preset native-bench >/dev/null
for name in threshold connection fill_up set_operations morphology pipeline; do
  # Each lists the pictures first.
  "build/native-bench/bin/bench_$name" "$@" | grep -v ' runs per 1000 pixels$'
done
