#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Would the tests notice? Puts small faults into a copy of the tree, one at a
# time, and runs the native tests that link what was changed.
#
#   tests/mutation/run.sh [--continue] [FOLDER [FIRST [LAST]]]
#
#   FOLDER      region, vexolab, tools, view or controls; all if none
#   FIRST       number of the first fault, from 1; 0 is the tree without a
#               fault, which a whole folder begins with and which must pass
#   LAST        number of the last fault; FIRST if none
#   --continue  leaves out what build/mutation/results.txt has an answer for,
#               after a check that was interrupted; else that file begins anew
#
# FOLDER.txt holds the faults of a folder:
#
#   # why a test must see it
#   @ path of the file, and the test program that knows it best
#   - text that stands in that file exactly once
#   + what takes its place
#
# Each line tells whether a fault was caught, and by which program, survived, or
# did not build. The exit code is 0 when at least 95 % of them were caught and
# all did build. A fault ends at the first program that does not pass, so one
# that is caught costs the compiler's time for one source and a link, one that
# survives all programs of three folders. Faults in code for wide vectors need a
# processor that has them.

. "$(dirname -- "${BASH_SOURCE[0]}")/../../setup/common.sh"

usage() { sed -n '/^#   tests/,/^# FOLDER/ s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"; }

work=$setup_root/build/mutation
tree=$work/tree
build=$work/build
results=$work/results.txt
tables=$setup_root/tests/mutation

# A test that a fault keeps from ending is ended: that fault is caught.
seconds_per_program=120
kilobytes=$((12 << 20))

# Folders of tests, those of the folder itself first.
tests_of() {
  case $1 in
    region) echo region tools app ;;
    vexolab) echo vexolab tools app ;;
    tools) echo tools recipes app ;;
    view) echo app ;;
    controls) echo controls ;;
  esac
}

# Programs that are no GoogleTest and what they are started with.
others_of() {
  case $1 in
    region) echo "region_fuzz_replay $tree/tests/region/fuzz_seeds.txt" ;;
    vexolab)
      echo "vexolab_fuzz_replay $tree/tests/vexolab/fuzz_seeds.txt"
      printf 'vexolab_acceptance --group %s\n' A B C D E F P
      ;;
    view) echo "image_fuzz_replay $tree/tests/app/fuzz_seeds.txt" ;;
  esac
}

# Only files that differ are copied, so that what was built stays built.
copy_tree() {
  local file
  cd -- "$setup_root"
  while IFS= read -r -d '' file; do
    [ -f "$file" ] || continue
    cmp -s -- "$file" "$tree/$file" || install -D -- "$file" "$tree/$file"
  done < <(git ls-files -z -co --exclude-standard)
}

# A fault may leave a variable unused: no warnings.
configure() {
  cmake -S "$tree" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG -w" >"$work/configure.log" 2>&1 ||
    fail "the copy cannot be configured (log: $work/configure.log)"
}

# The tests of a program that did not pass; what ended it, if none.
failed_tests() {
  local names
  names=$(sed -n 's|^\[  FAILED  \] \([^ ,]*[.][^ ,]*\).*|\1|p' "$work/test.log" |
    sort -u | head -n 1)
  printf '%s' "${names:-exit code $1}"
}

# run_program NAME [ARGUMENT...]: runs it and, if it does not pass, prints that
# and returns 1.
run_program() {
  local code=0
  (ulimit -v "$kilobytes" && cd "$build" &&
    GTEST_FAIL_FAST=1 timeout "$seconds_per_program" "bin/$1" "${@:2}") \
    >"$work/test.log" 2>&1 </dev/null || code=$?
  [ "$code" -ne 0 ] || return 0
  printf '%s (%s)\n' "$1" "$(failed_tests "$code")"
  return 1
}

build_target() {
  cmake --build "$build" --target "$1" >"$work/build.log" 2>&1
}

# Builds and runs the tests of a folder until one program does not pass.
# 0: all pass, 1: one does not, 2: does not build.
run_folder() {
  local program arguments
  build_target "tests/$1/all" || return 2
  while read -r program arguments; do
    # shellcheck disable=SC2086  # several arguments
    run_program "$program" $arguments || return 1
  done < <(ninja -C "$build" -t query "tests/$1/all" |
    sed -n 's|^ *bin/\([a-z0-9_]*_test\)$|\1|p' | sort && others_of "$1")
}

# run_tests FOLDER [PROGRAM]: as run_folder, for all that link the folder, the
# program first.
run_tests() {
  local tests code
  if [ $# -eq 2 ]; then
    build_target "$2" || return 2
    run_program "$2" || return 1
  fi
  for tests in $(tests_of "$1"); do
    code=0
    run_folder "$tests" || code=$?
    [ "$code" -eq 0 ] || return "$code"
  done
}

# Reads a table into the arrays fault_file, fault_test, fault_old and
# fault_new.
read_faults() {
  local line n=-1 newline=
  fault_file=() fault_test=() fault_old=() fault_new=()
  while IFS= read -r line; do
    case $line in
      '@ '*)
        n=$((n + 1)) newline=
        line=${line#@ }
        fault_file[n]=${line% *} fault_test[n]=${line##* }
        fault_old[n]='' fault_new[n]=''
        ;;
      '- '*) fault_old[n]+=${fault_old[n]:+$'\n'}${line#- } ;;
      +*)
        line=${line#+}
        fault_new[n]+=$newline${line# } newline=$'\n'
        ;;
    esac
  done <"$1"
}

# Puts fault N in, or ends: a fault must have one place only.
plant() {
  local file=$tree/${fault_file[$1]} old=${fault_old[$1]} text
  text=$(cat -- "$file" && printf .)
  local before=${text%%"$old"*}
  local after=${text#"$before$old"}
  [ -n "$old" ] && [ "$before" != "$text" ] ||
    fail "$folder $(($1 + 1)): ${fault_file[$1]} does not say: $old"
  [ "${after#*"$old"}" = "$after" ] ||
    fail "$folder $(($1 + 1)): ${fault_file[$1]} says more than once: $old"
  text=$before${fault_new[$1]}$after
  cp -- "$file" "$work/unharmed"
  printf '%s' "${text%.}" >"$file"
}

heal() { cp -- "$work/unharmed" "$tree/$1"; }

# answer NUMBER TEXT: as a line of the results, which begins with what
# --continue knows it by.
answer() {
  printf '%s %s\n' "$folder $1:" "$2" | tee -a "$results"
}

check_unharmed() {
  local by code=0
  by=$(run_tests "$folder") || code=$?
  [ "$code" -ne 2 ] || fail "without a fault it does not build ($work/build.log)"
  [ "$code" -eq 0 ] || fail "without a fault $by fails (log: $work/test.log)"
  answer 0 "passes without a fault"
}

# try N: says whether fault N, from 0, is caught, survives or does not build.
try() {
  local by code=0 file=${fault_file[$1]} begin=$SECONDS
  plant "$1"
  by=$(run_tests "$folder" "${fault_test[$1]}") || code=$?
  heal "$file"
  case $code in
    0) by="SURVIVED" ;;
    1) by="caught by $by" ;;
    *) by="DID NOT BUILD" ;;
  esac
  answer $(($1 + 1)) \
    "$by: $file: ${fault_old[$1]%%$'\n'*} [$((SECONDS - begin)) s]"
}

check_folder() {
  folder=$1
  read_faults "$tables/$folder.txt"
  local first=${2:-0} last=${3:-${2:-${#fault_file[@]}}} i
  [ "$last" -le ${#fault_file[@]} ] ||
    usage_error "$folder has ${#fault_file[@]} faults only"
  for ((i = first; i <= last; ++i)); do
    if grep -q "^$folder $i: " "$results"; then continue; fi
    if [ "$i" -eq 0 ]; then check_unharmed; else try $((i - 1)); fi
  done
}

continues=
if [ "${1:-}" = --continue ]; then
  continues=yes
  shift
fi
folders=(region vexolab tools view controls)
case ${1:-} in
  '') ;;
  region | vexolab | tools | view | controls) folders=("$1") ;;
  -h | --help)
    usage
    exit 0
    ;;
  *) usage_error "unknown folder '$1' (see tests/mutation/run.sh --help)" ;;
esac
for number in "${@:2}"; do
  [[ $number =~ ^[0-9]+$ ]] || usage_error "'$number' is no number"
done

mkdir -p -- "$work"
exec 9>"$work/lock"
flock -n 9 || fail "another check runs in $work"

[ -n "$continues" ] || : >"$results"
touch -- "$results"
copy_tree
configure
for folder in "${folders[@]}"; do
  check_folder "$folder" "${@:2}"
done

count() { grep -cE "^[a-z]+ [0-9]+: $1" "$results" || true; }
caught=$(count 'caught') survived=$(count 'SURVIVED')
unbuilt=$(count 'DID NOT BUILD')
all=$((caught + survived + unbuilt))
say "$all faults: $caught caught, $survived survived, $unbuilt did not build"
[ "$unbuilt" -eq 0 ] && [ $((caught * 100)) -ge $((all * 95)) ]
