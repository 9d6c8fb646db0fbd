#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Check the library of redefinitions: every global that it replaces, stated, negated, reified and half reified in small
MiniZinc models, has as many solutions as by MiniZinc's own decomposition. What that cannot reify has a truth value that
is true in just the solutions of the stated form.

    check_globals.py [--contexts] MINIZINC PROGRAM LIBRARY SCRATCH_FOLDER

Without --contexts they are only stated.

Both times the program solves, with every solution verified: once with the library, once without its fzn_ files.
"""
import concurrent.futures
import json
import shutil
import subprocess
import sys
from pathlib import Path

X = "array[1..3] of var 1..3: x; "
Y = "array[1..3] of var 1..3: y; "
S = "array[1..3] of var 0..2: y; var 1..3: c; "
O = "array[1..3] of var opt 1..4: o; "
B = "array[1..3] of var bool: p; array[1..3] of var bool: q; "
DFA = "array[1..2, 1..3] of int: d = [|1, 2, 0 | 2, 0, 1|]; "
NFA = "array[1..2, 1..3] of set of int: d = [|{1, 2}, {2}, {} | {}, {1}, 1..2|]; "
T = "array[1..4, 1..3] of int: t = [|1, 2, 3 | 3, 2, 1 | 2, 2, 2 | 1, 2, 3|]; "

# Declarations, a constraint, and whether MiniZinc can reify its own form of it. OURS: that is in the library only.
OURS = "ours"
GLOBALS = [
    (X, "alldifferent(x)", True),
    (X, "alldifferent(x) :: domain", False),
    (X, "all_equal(x)", True),
    ("array[0..2] of var 0..2: x; ", "circuit(x)", OURS),
    (X, "circuit(x)", OURS),
    ("array[1..1] of var 1..2: x; ", "circuit(x)", OURS),
    ("array[1..4] of var 1..4: x; ", "subcircuit(x)", OURS),
    ("array[1..3] of var 0..4: x; ", "circuit(x)", OURS),
    ("array[1..3] of var 0..4: x; ", "subcircuit(x)", OURS),
    ("array[1..2] of var 0..4: x; " + DFA, "regular(x, 2, 3, d, 1, {2})", OURS),
    ("array[-1..1] of var -1..1: x; ", "subcircuit(x)", OURS),
    (X + Y, "inverse(x, y)", True),
    ("array[0..2] of var 3..5: x; array[3..5] of var 0..2: y; ", "inverse(x, y)", True),
    (X + T, "table(x, t)", True),
    (B + "array[1..2, 1..3] of bool: t = [|true, false, true | false, false, true|]; ", "table(p, t)", OURS),
    (X + DFA, "regular(x, 2, 3, d, 1, {2})", OURS),
    (X + NFA, "regular_nfa(x, 2, 3, d, 1, {2})", OURS),
    (X, 'regular(x, "1 2* 3|2+")', OURS),
    (X, "mdd(x, 3, [1, 2, 3], 4, [1, 1, 2, 3], [{1, 2}, {3}, 1..3, {2}], [2, 2, 3, 0])", False),
    (X + "var 0..3: c; var 1..3: v; ", "count(x, v, c)", True),
    (X + "var 0..3: c; ", "count(x, 2, c)", True),
    (X + "var 0..3: c; ", "count_leq(x, 2, c)", True),
    (X + "var 0..3: c; ", "count_gt(x, 2, c)", True),
    (X, "at_least(2, x, 1)", True),
    (X, "at_most(1, x, 1)", True),
    (X, "exactly(2, x, 3)", True),
    (X + "var 0..3: c; ", "among(c, x, {1, 3})", True),
    (X + "var 1..4: v; ", "member(x, v)", True),
    (X + "array[1..2] of var 0..3: c; ", "global_cardinality(x, [1, 3], c)", True),
    (X + "array[1..2] of var 0..3: c; ", "global_cardinality_closed(x, [1, 3], c)", True),
    (X, "global_cardinality_low_up(x, [1, 2], [0, 1], [1, 2])", True),
    (X, "global_cardinality_low_up_closed(x, [1, 2], [0, 1], [2, 2])", True),
    (X + "var 1..3: c; ", "nvalue(c, x)", True),
    (X + "array[1..3] of var 0..6: l; ", "bin_packing_load(l, x, [1, 2, 3])", True),
    ("array[1..3] of var 0..1: x; array[0..1] of var 0..6: l; ", "bin_packing_load(l, x, [1, 2, 0])", True),
    (X, "bin_packing_capa([3, 2, 1], x, [1, 2, 3])", True),
    (X, "bin_packing(4, x, [1, 2, 3])", True),
    (X, "increasing(x)", True),
    (X, "decreasing(x)", True),
    (X, "strictly_increasing(x)", True),
    (X, "strictly_decreasing(x)", True),
    (B, "increasing(p)", True),
    (B, "decreasing(p)", True),
    (X + Y, "lex_less(x, y)", True),
    (X + Y, "lex_lesseq(x, y)", True),
    (X + Y, "lex_greater(x, y)", True),
    (X + "array[1..2] of var 1..3: z; ", "lex_less(x, z)", True),
    (X + "array[1..2] of var 1..3: z; ", "lex_lesseq(z, x)", True),
    (B, "lex_less(p, q)", True),
    (B, "lex_lesseq(p, q)", True),
    (X, "value_precede(1, 2, x)", OURS),
    (X, "value_precede_chain([3, 1, 2], x)", OURS),
    ("array[1..4] of var 1..4: x; ", "symmetric_all_different(x)", False),
    ("array[1..3] of var 0..2: x; ", "alldifferent_except_0(x)", True),
    (X + Y, "y = sort(x)", False),
    (X + "var 1..3: m; ", "m = max(x)", True),
    (X + "var 1..3: m; ", "m = min(x)", True),
    (X + "var 1..3: m; ", "m = arg_max(x)", True),
    (X + "var 1..3: i; var 1..3: v; ", "x[i] = v", True),
    (X + S, "cumulative(x, [2, 1, 3], [1, 2, 1], c)", True),
    (X + S, "cumulative(x, y, [1, 2, 1], 2)", True),
    (X + S, "cumulative(x, [2, 1, 2], y, c)", True),
    (X + S, "cumulative(x, [2, 1, 2], [1, 1, 1], 1)", True),
    (X + S, "disjunctive(x, y)", True),
    (X + S, "disjunctive_strict(x, y)", True),
    (X + S, "disjunctive_strict(x, [1, 2, 1])", True),
    (O, "disjunctive(o, [2, 1, 2])", False),
    (O, "disjunctive_strict(o, [2, 1, 2])", False),
    (O, "cumulative(o, [2, 1, 2], [1, 1, 2], 2)", False),
    (X + S, "diffn(x, y, [1, 2, 1], [1, 1, 2])", True),
    (X + S, "diffn(x, y, [1, 0, 1], [1, 2, 0])", True),
    (X + S, "diffn_nonstrict(x, y, [1, 0, 1], [1, 2, 2])", True),
    (X + S + "array[1..3] of var 0..1: z; ", "diffn_nonstrict(x, [1, 1, 2], [2, 1, 2], z)", True),
    ("array[1..2] of var set of 1..3: s; ", "s[1] subset s[2]", True),
    ("var set of 1..3: s; var 0..3: c; ", "card(s) = c", True),
    ("var -3..3: a; var -2..2: b; var -3..3: c; ", "a div b = c", True),
    ("var -3..3: a; var -2..2: b; var -3..3: c; ", "a mod b = c", True),
    ("var -3..3: a; var -2..2: b; var -9..9: c; ", "pow(a, b) = c", True),
    ("var -3..3: a; var -2..2: b; var -9..9: c; ", "a * b = c", True),
]
CONTEXTS = ["{}", "not ({})", "var bool: r; constraint r <-> ({})", "var bool: r; constraint r -> ({})"]


def model(declarations, constraint, context):
    shown = context.format(constraint)
    return f'include "globals.mzn";\n{declarations}\nconstraint {shown};\nsolve satisfy;\n'.replace(
        "constraint var bool: r; constraint", "var bool: r; constraint")


class Checker:
    def __init__(self, minizinc, program, library, scratch):
        self.minizinc, self.scratch = minizinc, Path(scratch).resolve()
        program, library = str(Path(program).resolve()), str(Path(library).resolve())
        shutil.rmtree(scratch, ignore_errors=True)
        plain = self.scratch / "plain"
        plain.mkdir(parents=True)
        shutil.copy(Path(library) / "redefinitions.mzn", plain)
        self.solvers = [self.describe("koru", library, program), self.describe("standard", str(plain), program)]

    def describe(self, name, library, program):
        path = self.scratch / f"{name}.msc"
        verifying = self.scratch / "verifying"
        verifying.write_text(f'#!/bin/sh\nexec "{program}" --verify "$@"\n')
        verifying.chmod(0o755)
        path.write_text(json.dumps({"id": f"org.koru.{name}", "name": name, "version": "1.0.0", "mznlib": library,
                                    "executable": str(verifying), "tags": ["cp", "int"], "stdFlags": ["-a"],
                                    "supportsFzn": True, "supportsMzn": False, "needsSolns2Out": True}))
        return str(path)

    def solve(self, solver, text):
        path = self.scratch / f"{abs(hash(text))}.mzn"
        path.write_text(text)
        command = [self.minizinc, "--solver", solver, "-a", str(path)]
        done = subprocess.run(command, capture_output=True, text=True, check=False, timeout=60)
        solutions = done.stdout.split("----------\n")[:-1]
        whole = done.stdout.endswith("==========\n") or "UNSATISFIABLE" in done.stdout
        return (whole and done.returncode == 0), len(solutions), len(set(solutions)), done.stdout + done.stderr

    def whole(self, solver, text):
        ended, count, _, output = self.solve(solver, text)
        if not ended:
            raise RuntimeError(f"{text}not solved: {output[-400:]}")
        return count

    # The truth value is true in the solutions of the stated form, false in all others, and free to be false.
    def check_truth_value(self, declarations, constraint):
        stated = self.whole(self.solvers[1], model(declarations, constraint, "{}"))
        everything = self.whole(self.solvers[1], model(declarations, "true", "{}"))
        expected = {"not ({})": everything - stated, CONTEXTS[2]: everything, CONTEXTS[2] + "; constraint r": stated,
                    CONTEXTS[2] + "; constraint not r": everything - stated, CONTEXTS[3]: everything + stated}
        for context, count in expected.items():
            text = model(declarations, constraint, context)
            found = self.whole(self.solvers[0], text)
            if found != count:
                return f"{text}{found} solutions, {count} expected"
        return None

    def check(self, case):
        (declarations, constraint, reified), context = case
        if reified == OURS and context != "{}":
            return self.check_truth_value(declarations, constraint)
        text = model(declarations, constraint, context)
        ours, count, different, output = self.solve(self.solvers[0], text)
        standard, expected, _, _ = self.solve(self.solvers[1], text)
        if not standard:
            return f"{text}not solved with the standard library"
        if not ours or count != expected or different != count:
            return f"{text}{count} solutions, {different} different ones, {expected} expected\n{output[-400:]}"
        return None


def main():
    arguments = [a for a in sys.argv[1:] if a != "--contexts"]
    checker = Checker(*arguments)
    contexts = CONTEXTS if len(arguments) < len(sys.argv) - 1 else CONTEXTS[:1]
    cases = [(g, c) for g in GLOBALS for c in (contexts[:2] if g[2] == OURS else contexts if g[2] else CONTEXTS[:1])]
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        failures = [f for f in pool.map(checker.check, cases) if f is not None]
    for failure in failures:
        print("FAILED:\n" + failure)
    print(f"{len(cases) - len(failures)} of {len(cases)} models have the solutions of the standard decomposition")
    return 1 if failures or not cases else 0


sys.exit(main())
