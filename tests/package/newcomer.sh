#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What somebody meets who has an empty Debian and this repository: the commands of README.md, as written and in order, the
# program that stands there, and then each way to use the library. As root, on Debian, with a network.
#
#   newcomer.sh ROOT_DIR [whole]      ROOT_DIR becomes a Debian of its own, and is kept for the next time; "whole": also
#                                     the commands that run all tests, which take long
set -euo pipefail
mkdir -p "$1"
base=$(realpath "$1")
whole=${2:-}
sources=$(cd "$(dirname "$0")/../.." && pwd)
# shellcheck source=tests/package/clean_root.sh
source "$sources/tests/package/clean_root.sh"

fail() {
  echo "newcomer: $*" >&2
  exit 1
}

# blocks LANGUAGE: the blocks of code of README.md in a language, one after the other.
blocks() { sed -n '/^```'"$1"'$/,/^```$/{/^```/d;p}' "$sources/README.md"; }

commands=0
# A command takes effect on those that follow only through files.
run() {
  local start=$SECONDS
  printf '\n\033[1m$ %s\033[0m\n' "$1"
  inside sh -c "cd /koru && $1" </dev/null || fail "failed: $1"
  commands=$((commands + 1))
  echo "newcomer: $((SECONDS - start)) s: $1"
}

clean_root
mkdir "$root/koru"
git -C "$sources" archive HEAD | tar -x -C "$root/koru"
# The least that a machine has on which somebody compiles: README.md says how to link, not how to install pkg-config.
inside apt-get update
inside apt-get install -y --no-install-recommends pkg-config git
awk '/^```c$/{on=1; next} /^```$/{if (on) exit} on' "$sources/README.md" >"$root/koru/app.c"

ran_app=
while IFS= read -r command; do
  case $command in
    *ctest* | *"dev test"*) [[ -n $whole ]] || continue ;;
  esac
  run "$command"
  if [[ $command == cc*-o\ app* ]]; then
    [[ $(inside /koru/app) == "0, 4, 7, 5, 2, 6, 1, 3" ]] || fail "app prints something else"
    ran_app=yes
  fi
done < <(blocks sh)
[[ -n $ran_app ]] || fail "README.md has no command that makes app"

# Nothing of README.md so far has needed Python.
inside apt-get install -y --no-install-recommends python3
tools="CMAKE=cmake CMAKE_GENERATOR=Ninja PKG_CONFIG=pkg-config CC=gcc CXX=g++"
run "env $tools bash tests/package/run.sh system /usr/local /tmp/installed"
run "env $tools bash tests/package/run.sh sources /koru /tmp/sources"
run "PYTHONPATH=python KORU_LIBRARY=build/src/libkoru.so.3 python3 examples/python/sudoku.py"
run "./dev python"
echo "newcomer: $commands commands, all as written"
