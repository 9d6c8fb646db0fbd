#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Start-up with a large model: write a FlatZinc file of some 60 MB, 300,000 variables and 350,000 constraints with names
and annotations as MiniZinc's compiler makes them, and show how long fzn-koru takes to read and to post it.

    large.py FZN_KORU [RUNS]

The least of the runs (5) counts, as the machine may have other work.
"""
import random
import re
import subprocess
import sys
import tempfile
from pathlib import Path

PATH = "m.mzn|{0}|20|{0}|58|i={1};"


def constraint(number, ints, bools, rng):
    x = rng.sample(range(ints), 4)
    name = "X_INTRODUCED_{}_".format
    place = f':: mzn_path("{PATH.format(number % 400 + 1, number)}")'
    forms = [
        lambda: f"int_lin_le([1,-2,3,-1],[{','.join(name(v) for v in x)}],{rng.randrange(200, 900)})",
        lambda: f"int_ne({name(x[0])},{name(x[1])})",
        lambda: f"int_lin_le_reif([1,-1],[{name(x[0])},{name(x[1])}],{rng.randrange(50)},b{rng.randrange(bools)})",
        lambda: f"bool_clause([b{rng.randrange(bools)},b{rng.randrange(bools)}],[b{rng.randrange(bools)}])",
        lambda: f"array_int_element({name(x[0])},[{','.join(str(rng.randrange(100)) for _ in range(99))}],{name(x[1])})"
        if number % 40 == 4 else f"int_le({name(x[0])},{name(x[1])})",
    ]
    return f"constraint {forms[number % len(forms)]()} {place};\n"


def write(path):
    rng = random.Random(1)
    ints, bools, constraints = 200_000, 100_000, 350_000
    with open(path, "w", encoding="ascii") as out:
        for i in range(ints):
            out.write(f"var 0..99: X_INTRODUCED_{i}_ :: var_is_introduced;\n")
        for i in range(bools):
            out.write(f"var bool: b{i} :: var_is_introduced :: is_defined_var;\n")
        for i in range(constraints):
            out.write(constraint(i, ints, bools, rng))
        out.write("solve satisfy;\n")


def measure(program, path):
    """The search that follows is not waited for."""
    process = subprocess.Popen([program, "-v", path], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    line = process.stderr.readline()
    process.kill()
    process.wait()
    return [float(number) for number in re.search(r"read in (\S+) s, posted in (\S+) s, (\S+) s of", line).groups()]


def main():
    program = sys.argv[1]
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    with tempfile.TemporaryDirectory() as scratch:
        path = f"{scratch}/large.fzn"
        write(path)
        print(f"{Path(path).stat().st_size / 1e6:.1f} MB")
        results = [measure(program, path) for _ in range(runs)]
        for result in results:
            print("read in {:.2f} s, posted in {:.2f} s; {:.2f} s of processor time".format(*result))
        print("least of {}: {:.2f} s, {:.2f} s of processor time".format(
            runs, min(r[0] + r[1] for r in results), min(r[2] for r in results)))


main()
