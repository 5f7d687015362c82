#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# What part of each folder the native tests run: lines, and branches but those
# that only exceptions take. Prints a row of a table for each folder, and leaves
# the figures of each file in build/native-coverage.txt. Needs the package gcovr.
#
#   tests/coverage.sh

. "$(dirname -- "${BASH_SOURCE[0]}")/../setup/common.sh"
. "$setup_root/setup/build.sh"

[ $# -eq 0 ] || usage_error "takes no arguments"
command -v gcovr >/dev/null || fail "gcovr is missing (apt-get install gcovr)"
cd -- "$setup_root"
build=build/native-coverage
mkdir -p build
# Objects of a cache would count for the folder that they were made in.
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
build_preset native-coverage
# Counts of earlier runs, and notes of objects that are built no more.
find "$build" \( -name '*.gcda' -o -name '*.gcov' \) -delete
ninja -C "$build" -t cleandead >/dev/null
find "$build" -name '*.gcno' | while IFS= read -r notes; do
  [ -e "${notes%.gcno}.o" ] || rm -- "$notes"
done
# An installed library that counts is nobody's.
ctest --preset native-coverage -j "$(nproc)" -E '^Package' \
  >"$build.tests.log" 2>&1 </dev/null ||
  say "some tests failed (log: $build.tests.log)"

# It waits for ever where it fails.
timeout 900 gcovr -r . --object-directory "$build" -j "$(nproc)" --exclude-throw-branches \
  --filter '(region|vexolab|tools|recipes|app/view|controls|cli)/' \
  --json "$build.json" --json-summary "$build.summary.json" --branches \
  --txt "$build.txt" "$build" >"$build.log" 2>&1 ||
  fail "gcovr failed (log: $build.log)"
python3 - "$build.summary.json" <<'END'
import json
import sys

folders = ["region", "vexolab", "tools", "recipes", "app/view", "controls", "cli"]
with open(sys.argv[1]) as file:
    files = json.load(file)["files"]


def row(name, files):
    cells = [name]
    for kind in "line", "branch":
        all_of = sum(file[kind + "_total"] for file in files)
        run = sum(file[kind + "_covered"] for file in files)
        cells.append(f"{run} of {all_of} ({100 * run / all_of:.1f} %)")
    print("| " + " | ".join(cells) + " |")


print("| folder | lines run | branches taken |\n|---|---|---|")
for folder in folders:
    row(folder, [f for f in files if f["filename"].startswith(folder + "/")])
row("all", files)
END
