#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Installs what is missing, builds, and runs the tests.
#
#   ./test.sh [--native] [--asan] [--tsan] [--windows]
#
#   --native    Linux, release
#   --asan      Linux, address and undefined-behaviour sanitizers
#   --tsan      Linux, thread sanitizer over the two parallel libraries
#   --windows   the same tests and the window's as Windows programs, under Wine
#               in a virtual display
#
# Without an option all four run. The last line is "N passed, N failed"; the
# exit code is 0 only when nothing failed.

. "$(dirname -- "${BASH_SOURCE[0]}")/setup/common.sh"
. "$setup_root/setup/build.sh"
. "$setup_root/setup/display.sh"

usage() { sed -n '/^#   \.\//,/^$/ s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"; }

runners=()
for argument in "$@"; do
  case $argument in
    --native | --asan | --tsan | --windows) runners+=("${argument#--}") ;;
    -h | --help)
      usage
      exit 0
      ;;
    *) usage_error "unknown option '$argument' (see ./test.sh --help)" ;;
  esac
done
[ ${#runners[@]} -gt 0 ] || runners=(native windows asan tsan)

cd -- "$setup_root"
mkdir -p build
# Compiler launchers and flags in the environment are the caller's wish; what
# would change the tests is not.
export LC_ALL=C.UTF-8
unset CTEST_OUTPUT_ON_FAILURE CTEST_PARALLEL_LEVEL GTEST_FILTER GTEST_OUTPUT

# count_cases PRESET PASSED FAILED: "passed failed" when programs that left a list
# of their cases count by these. What was skipped or not run has failed.
count_cases() {
  local preset=$1 passed=$2 failed=$3 list cases bad
  while IFS= read -r list; do
    cases=$(grep -c '<testcase ' "$list" || true)
    bad=$(sed -n 's/^<testsuites .* failures="\([0-9]*\)".*/\1/p' "$list")
    bad=$((bad + $(grep -cE 'status="notrun"|result="skipped"' "$list" || true)))
    if [ "$bad" -gt 0 ]; then failed=$((failed - 1)); else passed=$((passed - 1)); fi
    passed=$((passed + cases - bad))
    failed=$((failed + bad))
  done < <(find "build/$preset/tests" -path '*/cases/*.xml')
  printf '%s %s\n' "$passed" "$failed"
}

# run_preset PRESET: runs the tests and writes "passed failed" to
# build/PRESET.count. Whatever did not pass has failed: a test that was skipped
# or could not start, and a suite without tests.
run_preset() {
  local preset=$1 log=build/$1.tests.log junit=$PWD/build/$1.xml
  rm -f -- "$junit"
  find "build/$preset/tests" -path '*/cases/*.xml' -delete
  ctest --preset "$preset" -j "$(nproc)" --no-tests=error \
    --output-junit "$junit" >"$log" 2>&1 </dev/null ||
    grep -vE '^ +Start +[0-9]+:| Passed +[0-9.]+ sec$' "$log" || true
  [ -s "$junit" ] || fail "$preset: the tests could not be run (log: $log)"
  local all passed
  all=$(grep -c '<testcase ' "$junit" || true)
  passed=$(grep -c '<testcase .* status="run"' "$junit" || true)
  [ "$all" -gt 0 ] || fail "$preset: there are no tests"
  count_cases "$preset" "$passed" "$((all - passed))" >"build/$preset.count"
}

prepare_native() { build_preset native; }
run_native() { run_preset native; }

# Requests for absurd amounts of memory are tested: they must fail as they do
# without the sanitizer.
prepare_asan() { build_preset native-asan; }
run_asan() {
  export ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1
  ASAN_OPTIONS+=:strict_string_checks=1:check_initialization_order=1
  # Off: GCC lays its stand-in for the stack where 64-byte vectors cannot lie.
  ASAN_OPTIONS+=:detect_stack_use_after_return=0
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
  run_preset native-asan
}

prepare_tsan() { build_preset native-tsan; }
run_tsan() {
  export TSAN_OPTIONS=allocator_may_return_null=1:halt_on_error=1
  TSAN_OPTIONS+=:second_deadlock_stack=1
  run_preset native-tsan
}

end_windows() {
  rendal_wine_stop
  stop_display
}

prepare_windows() {
  setup/packages.sh windows display
  # Windows of another run must not be met, so this has its own session.
  export RENDAL_WINEPREFIX=$PWD/build/wine-test
  . setup/environment.sh
  build_preset windows
}

run_windows() {
  trap end_windows EXIT
  start_display "$PWD/build/display"
  rendal_wine_start || fail "Wine did not start"
  # Without it every window test waits a second for its desktop to end.
  setup/run_under_wine.sh build/windows/bin/rendal_operator.exe desktop \
    >/dev/null 2>&1 </dev/null &
  run_preset windows
}

# prepare_ahead RUNNER...: prepares these while another one is at work, in the
# time that it leaves: tests of windows wait more than they compute. What fails
# here is tried again, and told, when the runner's turn comes.
prepare_ahead() {
  set -m
  (
    set +m
    # Packages are on their way at once: installing leaves processors idle.
    [[ " $* " != *" windows "* ]] || setup/packages.sh windows display || true
    renice -n 19 "$BASHPID" || true
    for runner in "$@"; do
      claim "$runner" || continue
      ("prepare_$runner") || true
      touch "build/ahead/$runner/done"
    done
  ) >build/ahead.log 2>&1 </dev/null &
  ahead=$!
  set +m
  trap 'kill -- "-$ahead" 2>/dev/null || true' EXIT
}

# claim RUNNER: whether nobody has begun to prepare it.
claim() { mkdir -- "build/ahead/$1" 2>/dev/null; }

# prepare RUNNER: in its turn; waits if that has begun.
prepare() {
  if ! claim "$1"; then
    until [ -e "build/ahead/$1/done" ] || ! kill -0 "$ahead" 2>/dev/null; do
      sleep 0.2
    done
  fi
  "prepare_$1"
}

trap 'exit 130' INT
trap 'exit 143' TERM

if ! setup/packages.sh native; then
  printf '0 passed, %s failed\n' "${#runners[@]}"
  exit 1
fi

passed=0
failed=0
rm -rf -- build/ahead
mkdir -- build/ahead
[ ${#runners[@]} -eq 1 ] || prepare_ahead "${runners[@]:1}"
for runner in "${runners[@]}"; do
  preset=native-$runner
  case $runner in native | windows) preset=$runner ;; esac
  rm -f -- "build/$preset.count"
  say "== $runner"
  started=$SECONDS
  # A runner that ends early has left no count: that is one failure.
  set +e
  (
    set -e
    prepare "$runner"
    "run_$runner"
  )
  set -e
  counts=(0 1)
  [ ! -s "build/$preset.count" ] || read -ra counts <"build/$preset.count"
  printf '%s (%s s): %s passed, %s failed\n' "$runner" \
    "$((SECONDS - started))" "${counts[@]}"
  passed=$((passed + counts[0]))
  failed=$((failed + counts[1]))
done

printf '%s passed, %s failed\n' "$passed" "$failed"
[ "$failed" -eq 0 ]
