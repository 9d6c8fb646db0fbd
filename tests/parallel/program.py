# SPDX-License-Identifier: MIT
"""A program for the tests of koru.mpi; see program.cc.

  program.py plain|mpi CASE SIZE
"""
import sys

import koru
import koru.mpi


def show(r, x):
    print(r.status.name, r.statistics.choice_points, r.statistics.fails, r.statistics.solutions, flush=True)
    if r.best is None:
        return 0 if r.statistics.solutions == 0 else 1
    print(*r.best[x], flush=True)
    return 0


def queens(plain, n):
    m = koru.Model()
    q = m.ints(n, 0, n - 1)
    for i in range(n):
        for j in range(i):
            for d in 0, i - j, j - i:
                m.post(q[i] != q[j] + d)

    def found(s):
        print(*s[q], flush=True)

    how = {"order": koru.smallest, "value": lambda v: v.max, "found": found}
    if not plain:
        return show(koru.mpi.solve(m, q, **how), q)
    with m.solutions(q, **how) as solutions:
        best = None
        for best in solutions:
            found(best)
        return show(koru.Result(solutions.status, best, solutions.statistics, False), q)


def ruler(plain, n, longest):
    m = koru.Model()
    marks = m.ints(n, 0, 20 if longest else n * n)
    m.post(marks[0] == 0)
    differences = [marks[j] - marks[i] for i in range(n) for j in range(i + 1, n)]
    for k, d in enumerate(differences):
        m.post(d >= 1)
        for e in differences[:k]:
            m.post(d != e)
    if longest:
        return show(m.maximize(marks[-1], marks) if plain else koru.mpi.maximize(m, marks[-1], marks), marks)
    return show(m.minimize(marks[-1], marks) if plain else koru.mpi.minimize(m, marks[-1], marks), marks)


def main():
    plain, case, size = sys.argv[1] == "plain", sys.argv[2], int(sys.argv[3])
    if not plain and not 0 <= koru.mpi.rank() < koru.mpi.size():
        return 2
    return queens(plain, size) if case == "all" else ruler(plain, size, case == "longest")


if __name__ == "__main__":
    sys.exit(main())
