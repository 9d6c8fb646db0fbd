# SPDX-License-Identifier: MIT
"""A sudoku of 17 givens, solved, with a proof that there is no other solution.

sudoku.py [--svg FILE]     FILE gets a picture
"""
import sys

import koru

GIVENS = """
. . . . . . . 1 .
4 . . . . . . . .
. 2 . . . . . . .
. . . . 5 . 4 . 7
. . 8 . . . 3 . .
. . 1 . 9 . . . .
3 . . 4 . . 2 . .
. 5 . 1 . . . . .
. . . 8 . 6 . . ."""

m = koru.Model()
x = m.grid(9, 9, 1, 9)
boxes = [[x[3 * i + k][3 * j + l] for k in range(3) for l in range(3)] for i in range(3) for j in range(3)]
m.post(koru.all_different(group, koru.DOMAIN) for group in [*x, *zip(*x), *boxes])
for row, line in zip(x, GIVENS.split("\n")[1:]):
    m.post(v == int(given) for v, given in zip(row, line.split()) if given != ".")

everything = [v for row in x for v in row]
first, *others = m.solutions(everything, order=koru.smallest)
for row in x:
    print(*first[row])
print("unique" if not others else "not unique")
if sys.argv[1:2] == ["--svg"]:
    koru.grid([first[row] for row in x], box=(3, 3)).save(sys.argv[2])
