# SPDX-License-Identifier: MIT
"""Models in Python have the tree of the same models in C, to the counter: reference.c has them, and prints what searching
them comes to. KORU_REFERENCE names that program."""
import ctypes
import os
import subprocess
import unittest

import koru
from koru import _library


def queens():
    m = koru.Model()
    q = m.ints(8, 0, 7)
    up, down = [], []
    for i, v in enumerate(q):
        up.append(m.var(v + i))
        down.append(m.var(v - i))
    m.post(koru.all_different(q), koru.all_different(up), koru.all_different(down))
    return m.solutions(q, order=koru.smallest)


def ruler():
    m = koru.Model()
    mark = m.ints(7, 0, 40)
    m.post(mark[0] == 0, koru.strictly_increasing(mark))
    distance = m.ints(21, 1, 40)
    pairs = [(i, j) for i in range(7) for j in range(i + 1, 7)]
    m.post(mark[j] - mark[i] == d for (i, j), d in zip(pairs, distance))
    m.post(koru.all_different(distance, koru.BOUNDS))
    return m.solutions(mark, order=koru.dom_wdeg, last_conflict=True, restart=koru.luby(20),
                       objective=(mark[6].pointer, 0))


def conditions():
    m = koru.Model()
    x = m.ints(5, 0, 5)
    b, c = m.bools(2)
    m.post((x[0] == 1) >> (x[1] != 2), b >> (x[0] + x[1] + x[2] <= 4), c == (x[2] < x[3]),
           (x[0] == 1) >> (x[2] < x[3]), (x[0] >= 2) | (x[1] <= 1) | b, 2 * x[0] + 3 * x[4] >= 7,
           koru.one_of(x[4], [0, 2, 5]), 3 * x[3] <= 13)
    return m.solutions(x + [b, c], value=koru.high_half)


def shop():
    m = koru.Model()
    start = m.ints(9, 0, 40)
    last = m.var(0, 60)
    times = m.constants([4, 3, 6, 5, 2, 4, 3, 7, 2])
    for i in range(9):
        m.post(koru.precedence(start[i], times[i], start[i + 1] if i % 3 < 2 else last))
    for machine in range(3):
        tasks = [3 * job + (machine - job) % 3 for job in range(3)]
        m.post(koru.disjunctive([start[t] for t in tasks], [times[t] for t in tasks]))
    return m.solutions(start, value=koru.max_value, guided=True, random_ties=True, seed=7,
                       neighbours=koru.linked_neighbours(), then=[koru.Phase([last])], objective=(last.pointer, 0))


def words():
    m = koru.Model()
    x = m.ints(12, 0, 1)
    twice = koru.Automaton([[1, 3], [2, 3], [-1, 3], [1, 4], [1, -1]], finals=[1, 2, 3, 4])
    m.post(koru.regular(x, twice), koru.count(x, 1).between(4, 6),
           koru.table(x[4:6], [(0, 0), (0, 1), (1, 0), (1, 1)]), koru.lex_lt(x[:6], x[6:]))
    m.post(m.nvalues(x[:3]) == 2)
    return m.solutions(x)


@unittest.skipUnless("KORU_REFERENCE" in os.environ, "KORU_REFERENCE names no program")
class Reference(unittest.TestCase):
    def setUp(self):
        self.lines = {}
        for line in subprocess.check_output([os.environ["KORU_REFERENCE"]], text=True).splitlines():
            name, *counts = line.split()
            self.lines[name] = [int(count) for count in counts]

    def test_counters(self):
        for model in (queens, ruler, conditions, shop, words):
            with self.subTest(model.__name__):
                search = model()
                self.assertGreater(len(list(search)), 0)
                s = search.statistics
                self.assertEqual(self.lines[model.__name__],
                                 [search.status, s.objective, s.solutions, s.choice_points, s.fails, s.wakings,
                                  s.restarts, s.no_goods, s.peak_depth])

    def test_structures(self):
        self.assertEqual(self.lines["sizes"], [ctypes.sizeof(t) for t in (
            _library.SearchOptions, _library.SearchStats, _library.ValueSelection)])


if __name__ == "__main__":
    unittest.main()
