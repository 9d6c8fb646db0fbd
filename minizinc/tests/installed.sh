#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Use fzn-koru as it is installed, in a tree that has been moved: by itself and, where it is there, from MiniZinc.
#
#   installed.sh BUILD_DIR SCRATCH_DIR [MINIZINC]
#
# environment: CMAKE
set -euo pipefail

build=$1
scratch=$2
minizinc=${3:-}
prefix=$scratch/prefix

fail() {
  echo "installed: $*" >&2
  exit 1
}

# The component has what MiniZinc needs and nothing else of the library's.
check_component() {
  local other
  "$CMAKE" --install "$build" --component minizinc --prefix "$scratch/component" >"$scratch/component.log"
  [[ -x $scratch/component/bin/fzn-koru ]] || fail "the component minizinc has no bin/fzn-koru"
  other=$(cd "$scratch/component" && find . -type f ! -name fzn-koru ! -path './share/minizinc/*')
  [[ -z $other ]] || fail "the component minizinc has $other"
}

# entry NAME: what the solver's description says; paths are relative to it.
entry() { sed -n "s/^ *\"$1\": \"\(.*\)\",\$/\1/p" "$prefix/share/minizinc/solvers/koru.msc"; }

check_description() {
  local solvers=$prefix/share/minizinc/solvers name
  for name in executable mznlib; do
    [[ $(entry "$name") == ../* && -e $solvers/$(entry "$name") ]] || fail "koru.msc: $name is \"$(entry "$name")\""
  done
  [[ -e $solvers/$(entry mznlib)/fzn_all_different_int.mzn ]] || fail "no redefinitions are installed"
}

check_program() {
  local output
  echo 'var 1..3: x :: output_var; constraint int_lt(2, x); solve satisfy;' >"$scratch/model.fzn"
  output=$("$prefix/bin/fzn-koru" "$scratch/model.fzn") || fail "fzn-koru: exit status $?"
  [[ $output == $'x = 3;\n----------' ]] || fail "fzn-koru printed: $output"
}

check_minizinc() {
  local count
  cat >"$scratch/queens.mzn" <<'TEXT'
include "globals.mzn";
array[1..6] of var 1..6: q;
constraint alldifferent(q);
constraint alldifferent([q[i] + i | i in 1..6]);
constraint alldifferent([q[i] - i | i in 1..6]);
solve satisfy;
TEXT
  count=$(MZN_SOLVER_PATH=$prefix/share/minizinc/solvers "$minizinc" --solver koru -a "$scratch/queens.mzn" |
    grep -c -- '^----------$')
  [[ $count == 4 ]] || fail "six queens have $count solutions instead of 4"
  MZN_SOLVER_PATH=$prefix/share/minizinc/solvers "$minizinc" --solver koru -c --no-output-ozn --fzn "$scratch/queens.fzn" \
    "$scratch/queens.mzn"
  grep -q koru_all_different "$scratch/queens.fzn" || fail "MiniZinc does not see the redefinitions"
}

rm -rf "$scratch"
mkdir -p "$scratch"
"$CMAKE" --install "$build" --prefix "$scratch/first" >"$scratch/install.log"
mv "$scratch/first" "$prefix"
check_component
check_description
check_program
[[ -z $minizinc ]] || check_minizinc
