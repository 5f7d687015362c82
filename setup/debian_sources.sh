# SPDX-License-Identifier: MIT
#
# Package lists of our own for apt: the machine's configured sources of its
# Debian release, with source packages switched on, in private folders.
# Neither root nor a change of the system is needed, and signatures are
# verified as apt always does. Sourced after common.sh.

# one_line_sources RELEASE FILE...: "deb URI SUITE COMPONENT..." lines.
one_line_sources() {
  local release=$1
  shift
  awk -v release="$release" '
    $1 == "deb" && !/cdrom:/ {
      suite = 3
      if ($2 ~ /^\[/) {
        for (last = 2; $last !~ /\]$/ && last < NF; ++last) { }
        suite = last + 2
      }
      if ($suite != release && index($suite, release "-") != 1) next
      print
      sub(/deb/, "deb-src")
      print
    }' "$@"
}

# stanza_sources RELEASE FILE...: the "Types: / URIs: / Suites:" form.
stanza_sources() {
  local release=$1
  shift
  awk -v release="$release" '
    function pick(first,    i) {
      for (i = first; i <= NF; ++i)
        if ($i == release || index($i, release "-") == 1) suites = suites " " $i
    }
    function finish() {
      if (suites != "" && enabled)
        printf "Types: deb deb-src\nSuites:%s\n%s\n", suites, rest
      suites = rest = field = ""
      enabled = 1
    }
    BEGIN { enabled = 1 }
    FNR == 1 { finish() }
    /^#/ { next }
    /^[ \t]*$/ { finish(); next }
    /^[ \t]/ && field == "suites" { pick(1); next }
    /^[ \t]/ && field == "dropped" { next }
    tolower($1) == "suites:" { field = "suites"; pick(2); next }
    tolower($1) == "types:" { field = "dropped"; next }
    tolower($1) == "enabled:" {
      field = "dropped"
      enabled = tolower($2) != "no" && tolower($2) != "false"
      next
    }
    { field = "kept"; rest = rest $0 "\n" }
    END { finish() }' "$@"
}

# prepare_debian_sources FOLDER: writes the private lists below FOLDER and
# loads them; private_apt then works on them.
prepare_debian_sources() {
  local folder=$1 release file
  release=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
  [ -n "$release" ] || fail "cannot tell the Debian release of this machine"
  mkdir -p -- "$folder/parts" "$folder/lists/partial" \
    "$folder/cache/archives/partial"
  : >"$folder/parts/machine.list"
  : >"$folder/parts/machine.sources"
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -r "$file" ] || continue
    one_line_sources "$release" "$file" >>"$folder/parts/machine.list"
  done
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -r "$file" ] || continue
    stanza_sources "$release" "$file" >>"$folder/parts/machine.sources"
  done
  grep -qs deb-src "$folder/parts/machine.list" \
    "$folder/parts/machine.sources" || fail "apt has no source for release $release"
  private_apt_folder=$folder
  logged "$folder/update.log" private_apt update
}

private_apt() {
  "apt-${apt_command:-get}" -q \
    -o Dir::Etc::sourcelist=/dev/null \
    -o Dir::Etc::sourceparts="$private_apt_folder/parts" \
    -o Dir::State::lists="$private_apt_folder/lists" \
    -o Dir::Cache="$private_apt_folder/cache" \
    -o APT::Sandbox::User="$(id -un)" \
    -o Acquire::Retries=3 \
    "$@"
}

# source_versions NAME: what the release offers, newest first.
source_versions() {
  apt_command=cache private_apt showsrc --only-source "$1" 2>/dev/null |
    sed -n 's/^Version: //p' | sort -V -r -u
}

# fetch_source NAME VERSION FOLDER: unpacks a source package into FOLDER/NAME
# and prints the version it got. The machine's own version is preferred; a
# repository that has moved on, or has not received every update yet, still
# gives another one of the same release.
fetch_source() {
  local name=$1 folder=$3 got=
  local files=$folder/$name.files version
  for version in "$2" $(source_versions "$name"); do
    rm -rf -- "$files" "${folder:?}/$name"
    mkdir -p -- "$files"
    if (
      cd -- "$files"
      private_apt source --download-only "$name=$version" &&
        dpkg-source --no-check --extract ./*.dsc "$folder/$name"
    ) >>"$folder/fetch.log" 2>&1 </dev/null; then
      got=$version
      break
    fi
  done
  if [ -z "$got" ]; then
    tail -n 15 -- "$folder/fetch.log" >&2
    fail "cannot fetch the source package $name"
  fi
  rm -rf -- "$files"
  printf '%s\n' "$got"
}
