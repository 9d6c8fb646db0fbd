# SPDX-License-Identifier: MIT
"""Each constraint, against enumeration."""
import itertools
import unittest

import koru
from brute_force import check


def one_tour(next, whole):
    """Is it one circuit through all nodes, or through those that do not follow themselves?"""
    n, start = len(next), [i for i, v in enumerate(next) if v != i or (whole and len(next) == 1)]
    if any(not 0 <= v < n for v in next) or (whole and len(start) < n):
        return False
    if not start:
        return True
    at, seen = start[0], set()
    while at not in seen:
        seen.add(at)
        at = next[at]
    return at == start[0] and len(seen) == len(start)


def together(tasks, capacity):
    """Do tasks (start, duration, use) at no time take more than there is?"""
    times = range(-10, 20)
    return all(sum(u for s, d, u in tasks if s <= t < s + d) <= capacity for t in times)


class Constraints(unittest.TestCase):
    def check(self, n, domain, say, holds):
        check(self, n, domain, say, holds)

    def test_all_different(self):
        for strength in (koru.SIMPLE, koru.BOUNDS, koru.DOMAIN):
            self.check(4, range(4), lambda m, x, s=strength: koru.all_different(x, s), lambda *v: len(set(v)) == 4)
        self.check(3, range(4), lambda m, x: koru.all_different([v + i for i, v in enumerate(x)]),
                   lambda *v: len({i + a for i, a in enumerate(v)}) == 3)
        with self.assertRaises(ValueError):
            koru.all_different([], "strong")

    def test_tables(self):
        rows = [(0, 1, 2), (2, 2, 2), (1, 0, 1), (3, 3, 9)]
        self.check(3, range(4), lambda m, x: koru.table(x, rows), lambda *v: v in rows)
        self.check(3, range(3), lambda m, x: koru.not_table(x, rows), lambda *v: v not in rows)
        self.check(3, range(3), lambda m, x: koru.table(x, [(0, koru.ANY, 2), (1, 1, koru.ANY)]),
                   lambda a, b, c: (a, c) == (0, 2) or (a, b) == (1, 1))
        with self.assertRaises(ValueError):
            koru.table([], [(1,)])

    def test_automata(self):
        even = koru.Automaton([[0, 1], [1, 0]], finals=[0])
        self.check(4, range(3), lambda m, x: koru.regular(x, even), lambda *v: max(v) < 2 and sum(v) % 2 == 0)
        arcs = [koru.Arc(0, 1, 1), (0, 2, 2), (1, 0, 3), (2, 2, 3), (2, 1, 3)]
        self.check(2, range(3), lambda m, x: koru.mdd(x, arcs, 0, 3), lambda *v: v in [(1, 0), (2, 2), (2, 1)])
        for wrong in ([], [[]], [[0], [0, 1]]):
            with self.assertRaises(ValueError):
                koru.regular([], koru.Automaton(wrong, [0]))

    def test_tours(self):
        self.check(4, range(-1, 5), lambda m, x: koru.circuit(x), lambda *v: one_tour(v, True))
        self.check(4, range(4), lambda m, x: koru.subcircuit(x), lambda *v: one_tour(v, False))

    def test_orders(self):
        self.check(3, range(3), lambda m, x: koru.increasing(x), lambda *v: list(v) == sorted(v))
        self.check(3, range(4), lambda m, x: koru.strictly_increasing(x), lambda a, b, c: a < b < c)
        self.check(4, range(3), lambda m, x: koru.lex_le(x[:2], x[2:]), lambda *v: v[:2] <= v[2:])
        self.check(4, range(3), lambda m, x: koru.lex_lt(x[:2], x[2:]), lambda *v: v[:2] < v[2:])
        self.check(4, range(2), lambda m, x: koru.inverse(x[:2], x[2:]),
                   lambda *v: v in [(0, 1, 0, 1), (1, 0, 1, 0)])
        self.check(3, range(3), lambda m, x: koru.precede(x, 1, 2),
                   lambda *v: 2 not in v or 1 in v[:v.index(2)])

    def test_counting(self):
        self.check(4, range(3), lambda m, x: koru.count(x, 1).between(1, 2), lambda *v: 1 <= v.count(1) <= 2)
        self.check(4, range(3), lambda m, x: koru.count(x, 1).between(-5, 9), lambda *v: True)
        self.check(3, range(3), lambda m, x: koru.count(x, 0).is_(2), lambda *v: v.count(0) == 2)
        self.check(3, range(3), lambda m, x: koru.count(x, 0, 9), lambda *v: False)
        self.check(3, range(3), lambda m, x: koru.count(x[1:], 0).is_(x[0]), lambda a, *v: v.count(0) == a)
        self.check(4, range(3), lambda m, x: koru.count(x[2:], x[0], x[1]), lambda a, n, *v: v.count(a) == n)
        for strength in (koru.SIMPLE, koru.DOMAIN):
            self.check(4, range(3), lambda m, x, s=strength: koru.cardinality(x[:3], [0, 2], [x[3], 1], strength=s),
                       lambda *v: v[:3].count(0) == v[3] and v[:3].count(2) == 1)
        self.check(3, range(4), lambda m, x: koru.cardinality(x, [0, 2], [2, 1], closed=True),
                   lambda *v: sorted(v) == [0, 0, 2])
        self.check(3, range(4), lambda m, x: koru.nvalues(x[:2], x[2]), lambda a, b, n: len({a, b}) == n)
        self.check(4, range(0, 4), lambda m, x: koru.bin_packing(x[:2], [2, 1], x[2:]),
                   lambda a, b, p, q: a < 2 and b < 2 and (p, q) == (2 * (a == 0) + (b == 0), 2 * a + b))

    def test_elements(self):
        self.check(2, range(4), lambda m, x: koru.element([3, 0, 3], x[0], x[1]),
                   lambda i, v: i < 3 and [3, 0, 3][i] == v)
        self.check(3, range(3), lambda m, x: koru.element([x[2], 1], x[0], x[1]), lambda i, v, a: i < 2 and (a, 1)[i] == v)

    def test_tasks(self):
        d, u = [2, 1, 3], [1, 2, 1]
        self.check(3, range(5), lambda m, x: koru.disjunctive(x, d),
                   lambda *v: together([(s, t, 1) for s, t in zip(v, d)], 1))
        self.check(4, range(3), lambda m, x: koru.disjunctive(x[:2], [2, 2], [x[2], x[3] == 1]),
                   lambda a, b, p, q: p == 0 or q != 1 or abs(a - b) >= 2)
        self.check(3, range(4), lambda m, x: koru.cumulative(x, d, u, 2),
                   lambda *v: together(list(zip(v, d, u)), 2))
        self.check(4, range(3), lambda m, x: koru.cumulative(x[:2], d[:2], x[2:], 2, [1, x[2] > 0]),
                   lambda a, b, p, q: together([(a, 2, p), (b, 1, q if p else 0)], 2))
        self.check(3, range(4), lambda m, x: koru.precedence(x[0], 1, x[1], 1, when=x[2] > 1),
                   lambda a, b, w: w <= 1 or a + 2 <= b)
        self.check(2, range(5), lambda m, x: koru.precedence(x[0], 2, x[1]), lambda a, b: a + 2 <= b)
        self.check(2, range(6), lambda m, x: koru.transitions(x, [1, 1], [0, 1], [0, 1], [[0, 3], [1, 0]]),
                   lambda a, b: b >= a + 4 or a >= b + 2)
        self.check(2, range(6), lambda m, x: koru.transitions(x, [1, 1], [0, 1], [0, 1], [[0, 3], [1, 0]], [1, 0]),
                   lambda a, b: True)

    def test_tasks_of_tasks(self):
        self.check(4, range(3), lambda m, x: koru.alternative(x[0], 1, [x[1], x[2]], [1, 1], [x[3] == 0, x[3] == 1]),
                   lambda t, a, b, p: p < 2 and t == (a, b)[p])
        self.check(4, range(3), lambda m, x: koru.span(x[0], x[1], x[2:], [1, 1]),
                   lambda s, d, a, b: s == min(a, b) and s + d == max(a, b) + 1)
        self.check(4, range(3), lambda m, x: koru.span(x[0], 1, [x[1], 2], [1, 1], [x[2] > 0, 0], present=x[3] > 0),
                   lambda s, a, p, there: p > 0 and s == a if there else p == 0)

    def test_rooms_and_levels(self):
        w, h = [2, 1], [1, 2]
        self.check(4, range(3), lambda m, x: koru.no_overlap(x[:2], w, x[2:], h),
                   lambda a, b, c, d: a + 2 <= b or b + 1 <= a or c + 1 <= d or d + 2 <= c)
        self.check(3, range(3), lambda m, x: koru.reservoir(x, [2, -1, -2], 1, 0, 2),
                   lambda *v: all(0 <= 1 + sum(c for t, c in zip(v, [2, -1, -2]) if t <= now) <= 2 for now in range(3)))
        self.check(3, range(3), lambda m, x: koru.reservoir(x[:2], [-1, 1], 0, 0, 1, [x[2] > 0, 1]),
                   lambda a, b, p: not p or b <= a)

    def test_sizes_are_looked_at(self):
        m = koru.Model()
        x = m.ints(3, 0, 1)
        for wrong in (lambda: koru.inverse(x, x[:2]), lambda: koru.disjunctive(x, [1]), lambda: koru.bin_packing(x, [1], x),
                      lambda: koru.disjunctive(x, x, [1]), lambda: koru.cardinality(x, [1, 2], x),
                      lambda: koru.cumulative(x, x, x[:1], 1), lambda: koru.no_overlap(x, x, x, x[:2]),
                      lambda: koru.transitions(x, x, [0] * 3, [0] * 3, [[1], [1, 2]]), lambda: koru.mdd(x, [(1, 2)], 0, 1)):
            with self.assertRaises(ValueError):
                wrong()
        for wrong in (lambda: koru.count(x, 2**31), lambda: koru.table(x[:1], [[2**40]]), lambda: m.post(x[0] == 1, m.var(0, 2**31))):
            with self.assertRaises(OverflowError):
                wrong()

    def test_a_propagator_of_the_hosts(self):
        def product(m, x):
            def run(a, b, c):
                with m.context():
                    m.post(c > 0, c < 0)  # refused, but undone
                m.post(c <= a.max * b.max, c >= a.min * b.min)  # when one is refused it fails; no need to say so

            return koru.propagator(x, run)


        self.check(3, range(5), product, lambda a, b, c: a * b == c)
        self.check(2, range(2), lambda m, x: koru.propagator(x, lambda a, b: not (a.fixed and b.fixed and a.min == b.min)),
                   lambda a, b: a != b)

    def test_texts(self):
        self.assertEqual(repr(koru.circuit([])), "<koru constraint cs_Circuit>")
        self.assertEqual(len(list(itertools.chain(koru.rows(range(6), 3), koru.columns(range(6), 3)))), 5)
        self.assertEqual(koru.columns([1, 2, 3, 4], 2), [[1, 3], [2, 4]])
        with self.assertRaises(ValueError):
            koru.rows([1, 2, 3], 2)


if __name__ == "__main__":
    unittest.main()
