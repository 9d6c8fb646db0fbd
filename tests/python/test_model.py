# SPDX-License-Identifier: MIT
"""Variables, failures, contexts, several models and threads, what lives how long, arrays of numpy's."""
import gc
import multiprocessing
import tempfile
import threading
import unittest
from pathlib import Path

import koru
from koru import _library
from koru.state import Solver

try:
    import numpy
except ImportError:
    numpy = None


class Variables(unittest.TestCase):
    def test_domains(self):
        m = koru.Model()
        x = m.var_of([7, 1, 2, 1, 9], "x")
        self.assertEqual((x.min, x.max, x.size, x.domain, list(x.ranges())),
                         (1, 9, 4, [1, 2, 7, 9], [(1, 2), (7, 7), (9, 9)]))
        self.assertEqual((x.contains(2), x.contains(3), x.fixed, x.name, repr(x)),
                         (True, False, False, "x", "x: {1, 2, 7, 9}"))
        with self.assertRaises(ValueError):
            x.value
        m.post(x > 7)
        self.assertEqual((x.value, x.fixed, x.domain, repr(x)), (9, True, [9], "x: 9"))
        x.name = "y"
        self.assertEqual(x.name, "y")
        self.assertEqual(repr(m.var(0, 1)), "{0, 1}")

    def test_names_of_many(self):
        m = koru.Model()
        self.assertEqual([v.name for v in m.ints(2, 0, 1, "a") + m.grid(1, 2, 0, 1, "b")[0] + m.bools(1)],
                         ["a[0]", "a[1]", "b[0, 0]", "b[0, 1]", ""])
        self.assertEqual([v.value for v in m.constants([3, -4])], [3, -4])
        self.assertEqual(len(m.all()), 7)

    def test_handles_are_the_same_while_somebody_has_them(self):
        m = koru.Model()
        x = m.var(0, 1)
        self.assertIs(m.all()[0], x)

    def test_what_is_no_variable(self):
        m = koru.Model()
        for wrong in (lambda: m.var(3, 2), lambda: m.var_of([]), lambda: m.element([], m.var(0, 1))):
            with self.assertRaises(ValueError):
                wrong()
        with self.assertRaises(OverflowError):
            m.var(0, 2**31)
        for wrong in (lambda: m.var(0), lambda: m.var(0.5, 2), lambda: m.var("a", "b")):
            with self.assertRaises(TypeError):
                wrong()


class Failures(unittest.TestCase):
    def test_are_remembered(self):
        m = koru.Model()
        x = m.var(0, 9, "x")
        self.assertFalse(m.failed)
        self.assertFalse(m.post(x >= 3, x <= 2, x == 9))
        self.assertTrue(m.failed)
        self.assertEqual(x.max, 9)  # what comes after the refusal is not posted
        r = m.solve([x])
        self.assertEqual((r.status, r.best, bool(r), list(m.solutions())), (koru.Status.EXHAUSTED, None, False, []))
        with self.assertRaises(KeyError):
            r[x]
        self.assertIn("failed", repr(m))

    def test_of_results_too(self):
        m = koru.Model()
        x = m.ints(2, 1, 3)
        r = m.div(*[v + 5 for v in x])
        self.assertEqual(r.domain, [0, 1])
        m.post(koru.element(x, m.var(7, 9), 1))
        self.assertTrue(m.failed)

    def test_end_with_their_context(self):
        m = koru.Model()
        x = m.var(0, 9)
        with m.context():
            m.post(x < 0)
            self.assertTrue(m.failed)
        self.assertFalse(m.failed)
        self.assertEqual((m.solve()[x], x.size), (0, 10))
        with m.context() as c:
            m.post(x > 4)
            c.keep()
        self.assertEqual(x.min, 5)

    def test_found_after_a_search_was_made(self):
        m = koru.Model()
        x = m.var(0, 9)
        s = m.solutions([x])
        m.post(x < 0)
        self.assertFalse(s.next_solution())
        self.assertEqual(s.status, koru.Status.EXHAUSTED)


class SeveralModels(unittest.TestCase):
    def test_by_turns(self):
        models = [koru.Model() for _ in range(3)]
        x = [m.ints(2, 0, 3 + i) for i, m in enumerate(models)]
        searches = [m.solutions(v) for m, v in zip(models, x)]
        for m, v in zip(models, x):
            self.assertEqual(m.post(v[0] < v[1]), True)
        counts = [0, 0, 0]
        going = {0, 1, 2}
        while going:
            for i in sorted(going):
                if searches[i].next_solution():
                    counts[i] += 1
                else:
                    going.remove(i)
        self.assertEqual(counts, [6, 10, 15])

    def test_variables_of_another_model_are_refused(self):
        a, b = koru.Model(), koru.Model()
        x = a.var(0, 1)
        for wrong in (lambda: b.post(x == 1), lambda: b.solve([x]), lambda: b.post(koru.all_different([x]))):
            with self.assertRaises(ValueError):
                wrong()
        with self.assertRaises(KeyError):
            b.solve()[x]

    def test_a_model_lives_as_long_as_its_handles(self):
        def make():
            m = koru.Model()
            x = m.var(0, 9)
            m.post(x > 3)
            return x

        x = make()
        koru.Model()
        gc.collect()
        self.assertEqual((x.min, Solver.ended), (4, []))

    def test_models_end_when_nobody_has_them(self):
        for _ in range(300):
            m = koru.Model()
            x = m.ints(3, 0, 9)
            m.post(koru.propagator(x, lambda *v: m is not None))  # a cycle, for the collector
            next(iter(m.solutions(x)))
        del m, x
        gc.collect()
        koru.Model()
        self.assertEqual(Solver.ended, [])

    def test_a_model_may_end_before_what_is_left_of_it(self):
        told = []

        class Late:
            def __init__(self, x):
                self.x = x

            def __del__(self):
                try:
                    told.append(self.x.min)
                except RuntimeError as error:
                    told.append(str(error))

        other = koru.Model().var(0, 1)
        for _ in range(5):
            m = koru.Model()
            x = m.ints(3, 0, 9)
            rest = [m.solutions(x), Late(x[0])]
            next(rest[0])
            rest.append(rest)  # a cycle: the collector ends it in an order of its own, the oldest first
            del m, x, rest
            self.assertEqual(other.size, 2)
            gc.collect()
            self.assertEqual((Solver.running, other.max), (other.state.solver, 1))
        self.assertEqual(told, ["koru: the model has ended"] * 5)

    def test_a_search_that_ends_leaves_running_what_runs(self):
        m, other = koru.Model(), koru.Model()
        x, y = m.var(0, 9), other.var(0, 1)
        for park in (other.park, lambda: y.min):
            search = m.solutions([x])
            next(search)
            m.park()
            park()
            before = Solver.running
            del search
            self.assertIs(Solver.running, before)
            self.assertEqual(x.size, 10)

    def test_within_a_callback_no_other_model_runs(self):
        m, other = koru.Model(), koru.Model()
        y = other.var(0, 1)
        x = m.var(0, 1)
        with self.assertRaises(RuntimeError):
            m.post(koru.propagator([x], lambda v: y.min))
        self.assertEqual((y.min, x.min), (0, 0))

    def test_a_model_that_ends_within_a_callback_of_another_one(self):
        m = koru.Model()
        others = [koru.Model()]
        x = m.var(0, 1)
        m.post(koru.propagator([x], lambda v: others.clear()))
        self.assertEqual(m.solve()[x], 0)
        koru.Model()
        self.assertEqual(Solver.ended, [])


class Threads(unittest.TestCase):
    def test_models_belong_to_a_thread_until_it_parks(self):
        m = koru.Model()
        x = m.var(0, 9)
        seen = []

        def other():
            try:
                seen.append(x.min)
            except RuntimeError as error:
                seen.append(error)

        def run():
            t = threading.Thread(target=other)
            t.start()
            t.join()

        run()
        self.assertIsInstance(seen[0], RuntimeError)
        m.park()
        run()
        self.assertEqual(seen[1], 0)
        self.assertEqual(x.max, 9)  # the other thread has ended

    def test_other_threads_run_while_a_search_works(self):
        m = koru.Model()
        holes = m.ints(12, 0, 10)
        m.post(koru.all_different(holes[:11]), *[holes[11] != v for v in holes[:11]])
        search = m.solutions(holes, seconds=20)
        t = threading.Timer(0.1, search.stop)
        t.start()
        self.assertFalse(search.next_solution())
        t.join()
        self.assertEqual(search.status, koru.Status.STOPPED)

    @unittest.skipUnless("fork" in multiprocessing.get_all_start_methods(), "no processes here")
    def test_processes(self):
        m = koru.Model()
        x = m.ints(2, 0, 9)
        m.post(x[0] + x[1] == 12)
        context = multiprocessing.get_context("fork")
        queue = context.Queue()
        child = context.Process(target=lambda: queue.put(len(list(m.solutions(x)))))
        child.start()
        self.assertEqual(queue.get(timeout=20), 7)
        child.join()
        self.assertEqual(len(list(m.solutions(x))), 7)


class Profiles(unittest.TestCase):
    def test_name_the_lines_that_post(self):
        m = koru.Model()
        m.profile()
        x = m.ints(4, 0, 3)
        m.post(koru.all_different(x))
        m.solve(x)
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "profile.txt"
            m.profile_report(path)
            rows = path.read_text(encoding="utf-8").partition("__DATA__")[2]
        self.assertRegex(rows, r"test_model\.py\t\d+\t0\ttest_name_the_lines_that_post\tcs_AllNeq\t[1-9]")

    def test_have_details_when_asked(self):
        m = koru.Model()
        m.profile(details=True)
        x = m.ints(4, 0, 3)
        m.post(koru.all_different(x))
        m.solve(x)
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "profile.txt"
            m.profile_report(path)
            text = path.read_text(encoding="utf-8")
        self.assertTrue(text.startswith("Koru Profiler: Details 1.0\n"))
        self.assertRegex(text, r"\tcs_AllNeq\t[1-9]\d*\t\d+\t\d+\t[1-9]\d*\t[1-9]\d*\n")


@unittest.skipIf(numpy is None, "without numpy")
class Numpy(unittest.TestCase):
    def test_arrays_of_numbers(self):
        m = koru.Model()
        x = m.ints(3, 0, 9)
        m.post(koru.sum(numpy.array([1, 2, 3]), x) == numpy.int64(4), koru.one_of(x[0], numpy.arange(3)))
        m.post(koru.table(x, numpy.array([[0, 2, 0], [1, 0, 1], [4, 0, 0]])))
        self.assertEqual([s[x] for s in m.solutions(x)], [[0, 2, 0], [1, 0, 1]])
        self.assertEqual(m.solve(x, value=koru.prefer(numpy.array([1, 0, 1])))[x], [1, 0, 1])
        self.assertTrue(m.post(numpy.int32(3) * x[0] - numpy.int8(1) <= 2, numpy.bool_(True) & (x[1] >= 0)))
        self.assertTrue(m.post(numpy.int64(0) <= x[1], numpy.int64(7) != x[1]))
        with self.assertRaises(TypeError):
            numpy.float64(0.5) * x[0]

    def test_arrays_of_variables(self):
        m = koru.Model()
        x = numpy.array(m.grid(3, 3, 1, 3))
        m.post([koru.all_different(row) for row in x], [koru.all_different(column) for column in x.T],
               x.sum() == 18, (x * numpy.arange(9).reshape(3, 3)).sum() >= 70, koru.sum(x[0]) == 6)
        s = m.solve(x)
        values = numpy.array(s[x])
        self.assertEqual(sorted(values[0]), [1, 2, 3])
        self.assertGreaterEqual((values * numpy.arange(9).reshape(3, 3)).sum(), 70)
        self.assertEqual(len((x[0, 0] + numpy.arange(4)).ravel()), 4)


class Library(unittest.TestCase):
    def test_version(self):
        self.assertEqual(koru.__version__, _library.lib.cs_getVersion().decode())

    def test_calls_of_the_c_interface_mix_with_models(self):
        a, b = koru.Model(), koru.Model()
        x = a.var(0, 9)
        b.use()
        a.use()
        self.assertTrue(_library.lib.cs_LE(x.pointer, 4))
        self.assertEqual(x.max, 4)


if __name__ == "__main__":
    unittest.main()
