#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The Debian packages in a clean system: lintian finds no error; they are installed, used from C99 and C++20 in every way,
# from Python, from MiniZinc and by the tools; and removed again, with nothing left behind. As root, on Debian, with a network.
#
#   debs.sh PACKAGES_DIR ROOT_DIR      ROOT_DIR becomes a Debian of its own, and is kept for the next time
#
# environment: MIRROR (http://deb.debian.org/debian)
set -euo pipefail
packages=$(realpath "$1")
mkdir -p "$2"
base=$(realpath "$2")
sources=$(cd "$(dirname "$0")/../.." && pwd)
# shellcheck source=tests/package/clean_root.sh
source "$sources/tests/package/clean_root.sh"

fail() {
  echo "debs: $*" >&2
  exit 1
}

# With what those have who use the packages.
prepare() {
  if [[ ! -e $base/tools.tar ]]; then
    clean_root
    inside apt-get update
    inside apt-get install -y --no-install-recommends cmake g++ make minizinc ninja-build pkg-config python3
    keep_root tools
  fi
  copy_root tools
}

look() { (cd "$root" && find . -xdev ! -path './var/*' ! -path './tmp/*' ! -path './etc/ld.so.cache' ! -path './srv/*' | sort); }

lintian --allow-root --fail-on error "$packages"/*.deb
prepare
look >"$base/before.txt"

mkdir -p "$root/srv/koru"
cp "$packages"/*.deb "$root/srv/koru"
inside sh -c 'apt-get install -y --no-install-recommends /srv/koru/*.deb'
(cd "$sources" && cp -r --parents -t "$root/srv/koru" tests/package tests/python docs examples)

inside env CMAKE=cmake CMAKE_GENERATOR=Ninja PKG_CONFIG=pkg-config CC=gcc CXX=g++ \
  bash /srv/koru/tests/package/run.sh system /usr /tmp/consumers
inside python3 -B -m unittest discover -s /srv/koru/tests/python
inside sh -c 'echo "var 1..3: x :: output_var; constraint int_lt(2, x); solve satisfy;" >/tmp/model.fzn'
[[ $(inside fzn-koru /tmp/model.fzn) == $'x = 3;\n----------' ]] || fail "fzn-koru does not solve"
inside sh -c 'echo "var 1..9: x; constraint x * x = 49; solve satisfy;" >/tmp/model.mzn'
[[ $(inside minizinc --solver koru /tmp/model.mzn) == $'x = 7;\n----------' ]] || fail "MiniZinc does not solve with koru"
inside sh -c 'cc -g /usr/share/doc/koru/examples/profile_demo.c -lkoru -o /tmp/demo && /tmp/demo /tmp/profile.txt'
inside koru-profile /tmp/profile.txt | grep cs_ >/dev/null || fail "koru-profile shows nothing"
inside test -s /usr/share/doc/koru/manual/index.html || fail "koru-doc is without the manual"
inside koru-tree --help >/dev/null || fail "koru-tree does not start"

inside sh -c 'apt-get purge -y libkoru3 libkoru-dev koru-tools python3-koru koru-doc'
look >"$base/after.txt"
diff "$base/before.txt" "$base/after.txt" || fail "the packages leave files behind"
echo "debs: $(find "$packages" -name '*.deb' | wc -l) packages installed, used and removed"
