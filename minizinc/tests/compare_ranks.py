#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What fzn-koru prints, alone and started by mpirun in 1, 2 and 3 processes, byte for byte.

  compare_ranks.py FZN_KORU MPIRUN
"""
import itertools
import subprocess
import sys
import tempfile
from pathlib import Path


def model(variables, constraints, solve):
    return "".join(f"{line};\n" for line in variables + constraints + [f"solve {solve}"])


def labelled(names, order):
    return f":: int_search([{','.join(names)}],{order},indomain_split,complete)"


def queens(n):
    names = [f"q{i}" for i in range(n)]
    variables = [f"var 1..{n}: {name} :: output_var" for name in names]
    constraints = [f"constraint int_lin_ne([1,-1],[q{i},q{j}],{offset})"
                   for i, j in itertools.combinations(range(n), 2) for offset in (0, i - j, j - i)]
    return model(variables, constraints, f"{labelled(names, 'first_fail')} satisfy")


def ruler(n):
    """The differences are told by the marks, so that labelling these is all there is to do."""
    marks = [f"m{i}" for i in range(n)]
    pairs = list(itertools.combinations(range(n), 2))
    variables = [f"var 0..{n * n}: {mark} :: output_var" for mark in marks]
    variables += [f"var 1..{n * n}: d{i}_{j} :: var_is_introduced" for i, j in pairs]
    constraints = [f"constraint int_lin_eq([1,-1,-1],[m{j},m{i},d{i}_{j}],0)" for i, j in pairs]
    constraints += [f"constraint int_lin_ne([1,-1],[d{a}_{b},d{c}_{d}],0)"
                    for (a, b), (c, d) in itertools.combinations(pairs, 2)]
    constraints.append("constraint int_eq(m0,0)")
    return model(variables, constraints, f"{labelled(marks, 'input_order')} minimize m{n - 1}")


CASES = [(queens(7), ["-a"], "shared"), (queens(8), ["-n", "5"], "shared"), (ruler(6), ["-i"], "shared"),
         (ruler(5), ["-f"], "alone"), (queens(3), ["-a"], "shared")]


def output(command):
    result = subprocess.run(command, capture_output=True, text=True, timeout=300, check=False)
    return result.returncode, result.stdout, "alone" if "by the first process alone" in result.stderr else "shared"


def compare(program, mpirun, path, text, options, how):
    path.write_text(text)
    command = [program, "-v", *options, str(path)]
    status, expected, _ = output(command)
    if status != 0 or not expected:
        return [f"{options}: status {status} without mpirun"]
    faults = []
    for processes in 1, 2, 3:
        got = output([mpirun, "--allow-run-as-root", "--oversubscribe", "-n", str(processes), *command])
        if got != (0, expected, how):
            faults.append(f"{options}, {processes} processes: status {got[0]}, {got[2]}, {len(got[1])} of {len(expected)}")
    return faults


def main():
    program, mpirun = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "model.fzn"
        faults = [fault for case in CASES for fault in compare(program, mpirun, path, *case)]
    for fault in faults:
        print(fault)
    print(f"compare_ranks: {len(CASES)} models, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
