#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Run a Windows program under wine, quietly and without a display, in a wine prefix of its own in build/.
#
#   run_windows.sh ARCHITECTURE PROGRAM [ARGUMENT...]      ARCHITECTURE: x86_64 or i686
#
# The cross builds run their tests through this; it is what CMake calls the cross-compiling emulator. WINE names another
# wine, for example one of 32 bits that is not installed in the system's place.
set -euo pipefail

prefix=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/wine-$1
shift

# mscoree and mshtml: do not offer to install what .NET programs and web pages would need.
export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY
wine=${WINE:-wine}

# The first run of all makes the prefix, while others wait.
if [[ ! -f $prefix/ready ]]; then
  mkdir -p "$prefix"
  exec 9>"$prefix.lock"
  flock 9
  if [[ ! -f $prefix/ready ]]; then
    "$wine" wineboot --init >/dev/null 2>&1 </dev/null 9>&- && touch "$prefix/ready"
  fi
  exec 9>&-
fi
exec "$wine" "$@"
