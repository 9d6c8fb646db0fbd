# SPDX-License-Identifier: MIT
"""A picture from the lengths of the black runs in its rows and columns; each line is a word of an automaton.

nonogram.py [--svg FILE]     FILE gets the picture
"""
import sys

import koru

ROWS = [[2, 2], [4, 4], [9], [9], [7], [5], [3], [1]]
COLUMNS = [[3], [5], [6], [6], [6], [6], [6], [5], [3]]


def runs(lengths):
    """Black runs of these lengths, with white between them: states are places in 0* 1 1 1 0 0* 1 1 0*."""
    black = [cell for length in lengths for cell in [1] * length + [0]][:-1]
    next = [[-1, state + 1] if cell else [state + 1, -1] for state, cell in enumerate(black)] + [[len(black), -1]]
    for state, cell in enumerate(black):
        if cell and (state == 0 or not black[state - 1]):  # more white before a run
            next[state][0] = state
    return koru.Automaton(next, finals=[len(black)])


m = koru.Model()
x = m.grid(len(ROWS), len(COLUMNS), 0, 1)
m.post(koru.regular(line, runs(lengths)) for line, lengths in zip([*x, *zip(*x)], ROWS + COLUMNS))
s = m.solve([v for row in x for v in row]).best
for row in x:
    print("".join(" #"[v] for v in s[row]).rstrip())
if sys.argv[1:2] == ["--svg"]:
    koru.grid([[""] * len(row) for row in x], colours=[[-1 if v else None for v in s[row]] for row in x]).save(sys.argv[2])
