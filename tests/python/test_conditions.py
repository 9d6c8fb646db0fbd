# SPDX-License-Identifier: MIT
"""Sums and conditions, against enumeration."""
import random
import unittest

import koru
from brute_force import found, solutions

DOMAIN = range(-1, 3)


class Writer:
    """Writes random conditions down twice: for a model, and as a function of values."""

    def __init__(self, seed, x):
        self.random = random.Random(seed)
        self.x = x

    def variable(self):
        i = self.random.randrange(len(self.x))
        return self.x[i], lambda *v: v[i]

    def sum(self):
        terms = [(self.random.randint(-3, 3), self.variable()) for _ in range(self.random.randint(1, 3))]
        constant = self.random.randint(-2, 2)
        written = koru.sum([c for c, _ in terms], [v for _, (v, _) in terms]) + constant
        return written, lambda *v: constant + sum(c * value(*v) for c, (_, value) in terms)

    def leaf(self):
        kind = self.random.randrange(5)
        (x, at), (written, value) = self.variable(), self.sum()
        if kind == 0:
            values = [self.random.randint(-1, 2) for _ in range(self.random.randint(0, 2))]
            return koru.one_of(x, values), lambda *v: at(*v) in values
        if kind == 1:
            low, high = self.random.randint(-1, 2), self.random.randint(-1, 2)
            return koru.between(x, low, high), lambda *v: low <= at(*v) <= high
        if kind == 2:
            return self.random.choice([(~~(x & True), lambda *v: at(*v) >= 1), (~x, lambda *v: at(*v) < 1)])
        (y, other), n = self.variable(), self.random.randint(-2, 3)
        return self.random.choice([
            (written <= n, lambda *v: value(*v) <= n), (written < x, lambda *v: value(*v) < at(*v)),
            (n == written, lambda *v: value(*v) == n), (x != y, lambda *v: at(*v) != other(*v)),
            (x == y, lambda *v: at(*v) == other(*v)), (n >= x, lambda *v: n >= at(*v)),
            (2 * x > n, lambda *v: 2 * at(*v) > n), (x - y >= n, lambda *v: at(*v) - other(*v) >= n),
            ((x == n) + (y > 0) + written > 1, lambda *v: (at(*v) == n) + (other(*v) > 0) + value(*v) > 1)])

    def condition(self, depth):
        if depth == 0 or self.random.random() < 0.2:
            return self.leaf()
        (a, first), (b, second) = self.condition(depth - 1), self.condition(depth - 1)
        c, third = self.condition(depth - 1)
        return self.random.choice([
            (a & b, lambda *v: first(*v) and second(*v)), (a | b, lambda *v: first(*v) or second(*v)),
            (a >> b, lambda *v: not first(*v) or second(*v)), (~a, lambda *v: not first(*v)),
            (koru.condition(a) == koru.condition(b), lambda *v: first(*v) == second(*v)),
            (koru.condition(a) != koru.condition(b), lambda *v: first(*v) != second(*v)),
            (koru.any_of([a, b, c]), lambda *v: first(*v) or second(*v) or third(*v)),
            (koru.all_of([a, b, c]), lambda *v: first(*v) and second(*v) and third(*v))])


class Conditions(unittest.TestCase):
    def test_random_conditions(self):
        for seed in range(150):
            with self.subTest(seed=seed):
                m = koru.Model()
                x = m.ints(3, min(DOMAIN), max(DOMAIN), "x")
                condition, holds = Writer(seed, x).condition(seed % 4)
                m.post(condition)
                self.assertEqual(found(m, x), solutions(x, DOMAIN, holds), condition)

    def test_random_truth_values_and_values_in_solutions(self):
        for seed in range(100):
            with self.subTest(seed=seed):
                m = koru.Model()
                x = m.ints(3, min(DOMAIN), max(DOMAIN), "x")
                condition, holds = Writer(seed, x).condition(seed % 3)
                truth = m.reify(condition)
                seen = 0
                for s in m.solutions(x):
                    self.assertEqual(s[truth] >= 1, bool(holds(*s[x])), condition)
                    self.assertEqual(s[koru.condition(condition)], int(bool(holds(*s[x]))))
                    seen += 1
                self.assertEqual(seen, 64)

    def test_sums_at_the_limits(self):
        m = koru.Model()
        x = m.var(koru._library.INT_MIN, koru._library.INT_MAX)
        y = m.var(0, 1)
        self.assertTrue(m.post(x <= 2**31 - 1, x >= -2**31, x < 2**40, 3 * x > -2**40))
        self.assertEqual((x.min, x.max), (-2**31, 2**31 - 1))
        self.assertTrue(m.post(2 * x <= 7, -3 * x <= 13))
        self.assertEqual((x.min, x.max), (-4, 3))
        with self.assertRaises(OverflowError):
            m.post(2**63 * x + y <= 0)
        with self.assertRaises(OverflowError):
            m.var(2**30 * (x + 1))
        self.assertFalse(m.failed)
        self.assertFalse(m.post(x >= 2**31))
        self.assertTrue(m.failed)

    def test_sums_of_one_variable_are_that_variable(self):
        m = koru.Model()
        x, y = m.ints(2, 0, 9)
        self.assertIs(m.var(x), x)
        self.assertIs(m.var(x + 0), x)
        self.assertIsNot(m.var(x, name="other"), x)
        before = len(m.all())
        m.post(x + y - x == 3, 2 * x - x <= 4)
        self.assertEqual((y.value, x.max, len(m.all())), (3, 4, before))

    def test_misuse_is_told(self):
        m = koru.Model()
        x, y = m.ints(2, 0, 9, "x")
        other = koru.Model().var(0, 1)
        for wrong in (lambda: 0 < x < y, lambda: x == 1 and y == 2, lambda: not x, lambda: 1.5 * x, lambda: x * y,
                      lambda: x + 0.5, lambda: (x == 1) | 3, lambda: m.post(x + y), lambda: m.post(1), lambda: y in [x],
                      lambda: m.post("x"), lambda: koru.sum(x, y, x)):
            with self.assertRaises(TypeError):
                wrong()
        with self.assertRaises(ValueError):
            m.post(x + other <= 3)
        with self.assertRaises(ValueError):
            koru.sum([1, 2, 3], [x, y])
        self.assertEqual({x: 1, y: 2}[x], 1)

    def test_texts(self):
        m = koru.Model()
        x, y = m.ints(2, 0, 9, "x")
        self.assertEqual(repr(2 * x - y + 3), "2 * x[0] - x[1] + 3")
        self.assertEqual(repr((x == 1) | ~y), "(x[0] == 1) | (~x[1])")
        self.assertEqual(repr(koru.one_of(x, [1, 3])), "x[0] in [1, 3]")
        self.assertEqual(repr(~koru.between(x, 1, 3)), "x[0] not in 1..3")
        self.assertEqual(repr(koru.all_of([])), "True")


class Results(unittest.TestCase):
    """Variables that are results of others."""

    def check(self, function, value, domain=range(-3, 4), n=2):
        m = koru.Model()
        x = m.ints(n, min(domain), max(domain))
        result = function(m, x)
        self.assertEqual(found(m, x + [result]),
                         sorted((*v, value(*v)) for v in solutions(x, domain, lambda *v: value(*v) is not None)))

    def test_arithmetic(self):
        self.check(lambda m, x: m.product(*x), lambda a, b: a * b)
        self.check(lambda m, x: m.abs(x[0]), lambda a, b: abs(a))
        self.check(lambda m, x: m.div(*x), lambda a, b: int(a / b) if b else None)
        self.check(lambda m, x: m.mod(*x), lambda a, b: a - b * int(a / b) if b else None)
        self.check(lambda m, x: m.pow(*x), lambda a, b: a**b, range(0, 4))
        self.check(lambda m, x: m.var(3 * x[0] - x[1] + 1), lambda a, b: 3 * a - b + 1)
        self.check(lambda m, x: m.div(x[0] + x[1], 2), lambda a, b: int((a + b) / 2))

    def test_choices(self):
        self.check(lambda m, x: m.min(x), min, n=3)
        self.check(lambda m, x: m.max(x), max, n=3)
        self.check(lambda m, x: m.count(x, 1), lambda *v: v.count(1), n=3)
        self.check(lambda m, x: m.nvalues(x), lambda *v: len(set(v)), n=3)
        self.check(lambda m, x: m.element([7, -2, 7, 4], x[0]), lambda a: [7, -2, 7, 4][a] if a in range(4) else None, n=1)
        self.check(lambda m, x: m.element([x[1], 5, x[1] + 1], x[0]),
                   lambda a, b: [b, 5, b + 1][a] if a in range(3) else None)


if __name__ == "__main__":
    unittest.main()
