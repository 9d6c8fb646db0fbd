# SPDX-License-Identifier: MIT
"""Why there is no solution, and why a value is gone: by lines of the program."""
import inspect
import unittest

import koru
from koru.state import Solver


def line():
    """Of the caller."""
    return inspect.currentframe().f_back.f_lineno


class Shifts:
    """Two shifts of eight hours that do not fit, with a line that has nothing to do with it."""

    def __init__(self):
        self.lines = []

    def __call__(self, m):
        first, second = m.var(6, 22, "first"), m.var(6, 22, "second")
        m.post(first + 8 <= second)
        after = line() - 1
        m.post(first != 9)
        m.post(first >= 8)
        m.post(second + 8 <= 22)
        self.lines = [after, after + 3, after + 4]


class Explaining(unittest.TestCase):
    def test_names_the_lines(self):
        shifts = Shifts()
        e = koru.explain(shifts)
        self.assertEqual((e.status, e.lines, e.places, e.nearest), (koru.Explained.MINIMAL, shifts.lines, 3, False))
        self.assertEqual([r.function for r in e.reasons], ["cs_Linear", "cs_GE", "cs_LE"])
        self.assertEqual({r.file for r in e.reasons}, {__file__})
        self.assertEqual(e.reasons[0].caller, "__call__")
        self.assertIn("no solution, because of 3 postings at 3 places\n", repr(e))
        self.assertIn(f"{__file__}:{shifts.lines[1]}  cs_GE    m.post(first >= 8)", repr(e))

    def test_names_what_would_have_to_go(self):
        e = koru.explain(Shifts(), nearest=True)
        self.assertEqual((e.status, len(e.reasons), e.nearest), (koru.Explained.MINIMAL, 1, True))
        self.assertTrue(repr(e).startswith("a solution without 1 posting at 1 place\n"))

    def test_searches(self):
        def pigeons(m):
            x = m.ints(3, 0, 1)
            m.post(a != b for i, a in enumerate(x) for b in x[:i])

        e = koru.explain(pigeons, order=koru.smallest)
        self.assertEqual((e.status, len(e.reasons), e.places), (koru.Explained.MINIMAL, 3, 1))
        self.assertIn("  cs_Neq  no. 1 of 3", repr(e))

    def test_answers_without_a_set(self):
        def pigeons(m):
            x = m.ints(6, 0, 4)
            m.post(a != b for i, a in enumerate(x) for b in x[:i])

        self.assertEqual(repr(koru.explain(lambda m: m.var(0, 1))), "there is a solution")
        self.assertEqual(repr(koru.explain(pigeons, fails=1)), "not known whether there is a solution")

    def test_stops_at_limits(self):
        e = koru.explain(Shifts(), checks=2)
        self.assertEqual(e.status, koru.Explained.PARTLY)
        self.assertIn(", perhaps fewer\n", repr(e))
        self.assertEqual(e.checks, 2)
        with self.assertRaises(RuntimeError):
            koru.explain(Shifts(), checks=-1)

    def test_leaves_other_models_alone(self):
        kept = []
        m = koru.Model()
        x = m.var(0, 9)
        koru.explain(lambda n: kept.append(n.var(0, 3)) or n.post(kept[-1] > 3))
        m.post(x > 4)
        self.assertEqual((x.min, kept[0].max), (5, 3))
        kept.clear()
        self.assertEqual(koru.Model().var(1, 2).min, 1)

    def test_raises_what_the_model_raises(self):
        def wrong(m):
            raise KeyError("mine")

        with self.assertRaisesRegex(KeyError, "mine"):
            koru.explain(wrong)
        self.assertIsNone(Solver.running)
        with self.assertRaises(RuntimeError):
            koru.explain(lambda m: koru.explain(Shifts()))

    def test_an_exception_has_the_explanation(self):
        shifts = Shifts()
        with self.assertRaises(koru.Infeasible) as caught:
            koru.solve(shifts)
        self.assertEqual(caught.exception.explanation.lines, shifts.lines)
        self.assertIn("because of 3 postings", str(caught.exception))
        self.assertEqual(koru.solve(lambda m: m.var(3, 5, "x"))["x"], 3)


class Removals(unittest.TestCase):
    def test_name_the_lines(self):
        m = koru.Model()
        koru.record_removals(m)
        x, y, z = m.ints(3, 0, 9, "x")
        m.post(x < y, y < z)
        m.post(x >= 3)
        posted = line() - 1
        steps = koru.why_removed(z, 4)
        self.assertEqual([(s.variable, s.relation, s.value) for s in steps], [(z, ">=", 5), (y, ">=", 4), (x, ">=", 3)])
        self.assertEqual([s.line for s in steps], [posted - 1, posted - 1, posted])
        self.assertEqual(repr(steps[2]), f"x[0] >= 3  cs_GE  {__file__}:{posted}    m.post(x >= 3)")
        self.assertEqual(koru.why_removed(z, 7), [])

    def test_of_variables_that_are_the_librarys_or_a_searchs(self):
        m = koru.Model()
        koru.record_removals(m)
        x, y = m.ints(2, 0, 3)
        m.post(x + 2 * y == 7)
        with_it = m.solutions([x, y])
        self.assertTrue(with_it.next_solution())
        steps = koru.why_removed(y, 2)
        self.assertTrue(steps)
        self.assertTrue(all(s.variable is x or s.variable is y for s in steps))
        self.assertTrue(steps[-1].by_search or steps[-1].function)
        with_it.close()

    def test_are_not_always_recorded(self):
        m = koru.Model()
        x = m.var(0, 9)
        with self.assertRaises(RuntimeError):
            koru.why_removed(x, 1)
        koru.record_removals(m)
        koru.record_removals(m, False)
        with self.assertRaises(RuntimeError):
            koru.why_removed(x, 1)


if __name__ == "__main__":
    unittest.main()
