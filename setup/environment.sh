# SPDX-License-Identifier: MIT
#
# The environment in which the Windows preset configures, builds and tests:
# where the Windows libraries, the tree's own Wine prefix and the photographs
# lie (all are made or fetched now if they are missing), and Wine without
# questions or chatter.
# Sourced, as in
#
#   . setup/environment.sh && cmake --preset windows

rendal_root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)

# A run that must not meet the windows of another one sets its own prefix.
WINEPREFIX=${RENDAL_WINEPREFIX:-$rendal_root/build/wine}
RENDAL_WINDOWS_PREFIX=$("$rendal_root/setup/windows_dependencies.sh") ||
  return 1
"$rendal_root/setup/wine_prefix.sh" "$WINEPREFIX" || return 1
# Real parts for the tests to measure.
RENDAL_PHOTOGRAPHS=$("$rendal_root/setup/sample_images.sh") || return 1

WINEARCH=win64
WINEDEBUG=-all
# No offer to install the .NET and HTML engines.
WINEDLLOVERRIDES="mscoree,mshtml="
export RENDAL_WINDOWS_PREFIX RENDAL_PHOTOGRAPHS WINEPREFIX WINEARCH WINEDEBUG WINEDLLOVERRIDES

# Wine takes the bytes of file names as the locale says; any UTF-8 one will do.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8

# The first Wine process of a prefix starts servers that inherit its output;
# whoever reads that output to its end then waits for them. So they are started
# here, attached to nothing. They end by themselves after a minute of idling.
rendal_wine_start() {
  wineserver -p60 >/dev/null 2>&1 </dev/null || true
  timeout 120 wine cmd /c exit >/dev/null 2>&1 </dev/null
}

rendal_wine_stop() {
  wineserver -k >/dev/null 2>&1 </dev/null || true
}
