# SPDX-License-Identifier: MIT
#
# What the scripts of this folder share: messages, the cache folder, logged
# commands. Sourced, never run.

set -euo pipefail

setup_root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
setup_cache=${XDG_CACHE_HOME:-$HOME/.cache}/rendal

# The caches hold absolute paths, so this one must be absolute too.
case $setup_cache in
  /*) ;;
  *) setup_cache=$PWD/$setup_cache ;;
esac

# Progress goes to stderr: stdout is for what a script answers.
say() { printf "%s\n" "$*" >&2; }

fail() {
  printf '%s: %s\n' "$(basename -- "$0")" "$*" >&2
  exit 1
}

# usage_error MESSAGE: command-line misuse, one line and exit code 2.
usage_error() {
  printf '%s: %s\n' "$(basename -- "$0")" "$*" >&2
  exit 2
}

# as_root COMMAND...: runs it directly for root, through sudo for others.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo -- "$@"
  else
    fail "needs root for: $* (no sudo here; run that as root, then again)"
  fi
}

# logged FILE COMMAND...: appends the output to FILE and shows its end only
# when the command fails.
logged() {
  local file=$1
  shift
  if ! "$@" >>"$file" 2>&1 </dev/null; then
    tail -n 25 -- "$file" >&2
    fail "failed: $* (log: $file)"
  fi
}

# lock_cache_entry NAME: waits until this is the only process that fills the
# cache entry NAME; the lock ends with the process.
lock_cache_entry() {
  mkdir -p -- "$setup_cache"
  exec 8>"$setup_cache/$1.lock"
  if ! flock -n 8; then
    say "waiting for another process that prepares $1"
    flock 8
  fi
}

# key_of TEXT...: a short name for a cache entry made from what it depends on.
key_of() { printf '%s\n' "$@" | sha256sum | cut -c1-12; }
