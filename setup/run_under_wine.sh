#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Runs a Windows program in the tree's Wine prefix; CTest starts the cross-built
# tests through it. Without the environment it refuses, so that nothing ever
# runs in a prefix of the user's own.

if [ -z "${WINEPREFIX:-}" ] || [ "${WINEDEBUG:-}" != -all ]; then
  echo "run_under_wine.sh: first: . setup/environment.sh" >&2
  exit 1
fi
for wine in /usr/lib/wine/wine64 wine64 wine; do
  if command -v "$wine" >/dev/null; then
    WINELOADER=$(command -v "$wine") exec "$wine" "$@"
  fi
done
echo "run_under_wine.sh: Wine is missing: setup/packages.sh" >&2
exit 1
