# SPDX-License-Identifier: MIT
"""Searches: options, solutions that are kept, callbacks and what they raise, Ctrl-C."""
import itertools
import os
import signal
import subprocess
import sys
import threading
import unittest

import koru
from koru import Status


def queens(n=6):
    m = koru.Model()
    q = m.ints(n, 0, n - 1, "q")
    m.post(koru.all_different(q), koru.all_different([v + i for i, v in enumerate(q)]),
           koru.all_different([v - i for i, v in enumerate(q)]))
    return m, q


def holes(n=11):
    """One that takes long: n pigeons in n - 1 holes."""
    m = koru.Model()
    x = m.ints(n, 0, n - 2, "x")
    m.post(a != b for a, b in itertools.combinations(x, 2))
    return m, x


class Searches(unittest.TestCase):
    def test_one_or_as_many_as_asked_for(self):
        m, q = queens()
        seen = []
        first = m.solve(q, order=koru.smallest, found=lambda s: seen.append(s[q]))
        self.assertEqual((first.status, len(seen), first[q]), (Status.SOLUTION, 1, seen[0]))
        three = m.solve(q, solutions=3, found=lambda s: seen.append(s[q]))
        self.assertEqual((three.status, three.statistics.solutions, len(seen)), (Status.SOLUTION_LIMIT, 3, 4))
        every = m.solve(q, solutions=100)
        self.assertEqual((every.status, every.statistics.solutions, q[0].size), (Status.EXHAUSTED, 4, 6))
        self.assertEqual(f"{three.status}", "solution limit")

    def test_the_best(self):
        m = koru.Model()
        x = m.ints(3, 0, 5)
        m.post(koru.all_different(x), x[0] + x[1] >= 4)
        cost, costs = 3 * x[0] + 2 * x[1] + x[2], []
        least = m.minimize(cost, x, value=koru.max_value, found=lambda s: costs.append(s[cost]))
        self.assertEqual((least.status, least[cost], costs[-1], least.statistics.objective), (Status.OPTIMAL, 9, 9, 9))
        self.assertEqual(costs, sorted(set(costs), reverse=True))
        self.assertGreater(len(costs), 1)
        self.assertEqual(m.maximize(x[0] - 2 * x[2], x)[x[0]], 5)
        self.assertEqual(m.maximize((x[0] == 2) + (x[1] == 2) + (x[2] < 4), x)[x[0] == 2, x[1] == 2].count(1), 1)

    def test_all_variables_unless_told_otherwise(self):
        m = koru.Model()
        x = m.ints(2, 0, 1)
        self.assertEqual(m.solve()[x], [0, 0])
        some = m.solve(x[:1])
        self.assertEqual(some[x[0]], 0)
        with self.assertRaises(KeyError):
            some[x[1]]
        self.assertEqual(m.solve([x[0] + x[1]], value=koru.max_value)[x], [1, 1])

    def test_every_option_leads_to_all_solutions(self):
        m, q = queens()

        def last_free(v):
            return max(i for i in range(len(v)) if not v[i].fixed)

        orders = [koru.input_order, koru.smallest, koru.largest, koru.smallest_min, koru.largest_max, koru.regret,
                  koru.most_constrained, koru.dom_wdeg, koru.activity, last_free]
        values = [koru.min_value, koru.max_value, koru.middle_value, koru.median_value, koru.low_half, koru.high_half,
                  koru.random_value, koru.prefer([1, 3, 5, 0, 2, 4], koru.max_value), lambda v: v.max,
                  lambda v: (koru.GT, v.min)]
        restarts = [koru.Restart(), koru.constant(3), koru.luby(1), koru.geometric(1, 50)]
        for order, value, restart in itertools.product(orders, values, restarts):
            search = m.solutions(q, order=order, value=value, restart=restart, seed=5)
            self.assertEqual(len({tuple(s[q]) for s in search}), 4)
            self.assertEqual((search.status, search.statistics.solutions), (Status.EXHAUSTED, 4))
        self.assertEqual(len(list(m.solutions(q, value_by_value=True))), 4)
        self.assertEqual(len(list(m.solutions(q[:3], then=[koru.Phase(q[3:], koru.smallest, koru.max_value)]))), 4)

    def test_neighbourhoods(self):
        m, q = queens()
        best = max(s[q[0] + q[3]] for s in m.solutions(q))
        asked = []

        def choose(best):
            asked.append(best)
            return [0, len(best) - 1]

        for n in (koru.random_neighbours(5, 50), koru.linked_neighbours(), koru.chosen_neighbours(choose)):
            r = m.maximize(q[0] + q[3], q, neighbours=n, random_ties=True, restart=koru.constant(1))
            self.assertEqual((r.status, r[q[0] + q[3]]), (Status.OPTIMAL, best))
        self.assertTrue(asked and all(len(values) == 6 for values in asked))

    def test_orders_of_tasks(self):
        """Two jobs on two machines: first 3 on one and 2 on the other, first 2 on the other and 4 on the one."""
        m = koru.Model()
        s, d = m.ints(4, 0, 20, "s"), [3, 2, 2, 4]
        makespan = m.var(0, 20, "makespan")
        m.post(koru.precedence(s[0], 3, s[1]), koru.precedence(s[2], 2, s[3]))
        m.post(koru.precedence(s[1], 2, makespan), koru.precedence(s[3], 4, makespan))
        tasks = []
        for machine, (a, b) in enumerate([(0, 3), (1, 2)]):
            tasks.append(koru.TaskOrder(m.var(0, 1, f"first {machine}"), s[a], d[a], s[b], d[b], machine))
            m.post(koru.either_before(*tasks[-1][:5]))
        for order, value, neighbours in itertools.product(
                (koru.slack_wdeg, koru.slack, koru.input_order), (koru.slack_value, koru.max_value),
                (koru.Neighbours(), koru.window_neighbours(), koru.machine_neighbours(5, 50), koru.task_neighbours())):
            r = m.minimize(makespan, orders=koru.Orders(tasks, order, value), guided=True, neighbours=neighbours,
                           then=[koru.Phase(s, koru.smallest_min)], restart=koru.geometric(10, 50))
            self.assertEqual((r.status, r[s], r[tasks[0].first]), (Status.OPTIMAL, [0, 3, 0, 3], 1))
        with self.assertRaises(ValueError):
            m.solve(orders=koru.Orders(tasks, koru.set_times))
        with self.assertRaises(ValueError):
            m.solve(s, order=koru.slack)

    def test_set_times(self):
        m = koru.Model()
        s, d = m.ints(3, 0, 20, "s"), [3, 2, 4]
        makespan = m.var(0, 20, "makespan")
        m.post(koru.disjunctive(s, d), [koru.precedence(start, length, makespan) for start, length in zip(s, d)])
        r = m.minimize(makespan, s, order=koru.set_times)
        self.assertEqual((r.status, r[makespan]), (Status.OPTIMAL, 9))

    def test_limits(self):
        m, x = holes()
        for limit, status in (({"fails": 9}, Status.FAIL_LIMIT), ({"choice_points": 9}, Status.CHOICE_LIMIT),
                              ({"seconds": 0.01}, Status.TIME_LIMIT), ({"memory": 1}, Status.MEMORY)):
            self.assertEqual(m.solve(x, **limit).status, status)
        for wrong in ({"fails": -1}, {"order": koru.Order(77)}, {"seconds": float("nan")}, {"value": koru.prefer([1])}):
            with self.assertRaises(ValueError):
                m.solve(x, **wrong)
        with self.assertRaises(TypeError):
            m.solve(x, speed=9)

    def test_progress(self):
        m, x = holes()
        seen = []
        r = m.solve(x, progress=lambda s: seen.append(s.fails) or len(seen) < 3, progress_seconds=0.001)
        self.assertEqual((r.status, len(seen)), (Status.STOPPED, 3))
        self.assertEqual(seen, sorted(seen))
        m, q = queens()
        at = []
        m.solve(q, solutions=3, progress=lambda s: at.append(s.solutions))
        self.assertEqual(at, [1, 2, 3])


class Iterators(unittest.TestCase):
    def test_solutions_keep_their_values(self):
        m, q = queens()
        everything = list(m.solutions(q))
        self.assertEqual(len({tuple(s[q]) for s in everything}), 4)
        self.assertEqual(everything[0], next(iter(m.solutions(q))))
        self.assertNotEqual(everything[0], everything[1])

    def test_solutions_are_dicts_of_names(self):
        m, q = queens()
        s = m.solve(q).best
        self.assertEqual(dict(s), {f"q[{i}]": v for i, v in enumerate(s[q])})
        self.assertEqual((s["q[2]"], len(s), "q[9]" in s, s.get("q[9]")), (s[q[2]], 6, False, None))

    def test_what_is_posted_at_a_solution_is_undone(self):
        m = koru.Model()
        x = m.var(0, 3)
        seen = []
        for s in m.solutions([x]):
            seen.append((x.value, m.post(x > s[x])))
        self.assertEqual(seen, [(i, False) for i in range(4)])
        self.assertFalse(m.failed)

    def test_a_search_that_is_left_is_undone(self):
        m, q = queens()
        for _ in m.solutions(q):
            break
        self.assertEqual(q[0].size, 6)
        with m.solutions(q) as search:
            next(search)
            self.assertTrue(q[0].fixed)
        self.assertEqual((q[0].size, search.status, search.statistics.solutions), (6, Status.SOLUTION, 1))
        self.assertFalse(search.next_solution())

    def test_searches_end_in_the_opposite_order(self):
        m, q = queens()
        outer = m.solutions(q)
        next(outer)
        inner = m.solutions(q)
        with self.assertRaises(RuntimeError):
            next(outer)
        del inner
        self.assertEqual(len(list(outer)), 3)

    def test_a_search_within_a_propagator(self):
        m = koru.Model()
        x = m.ints(2, 0, 3)
        m.post(koru.propagator(x[:1], lambda v: len(list(m.solutions([x[1]]))) == 4))
        self.assertEqual(len(list(m.solutions(x))), 16)


class Exceptions(unittest.TestCase):
    """What a callback raises arrives at the caller, with all undone."""

    class Oops(Exception):
        pass

    def fail(self, *_):
        raise self.Oops

    def test_arrive(self):
        for how in ({"order": self.fail}, {"value": self.fail}, {"progress": self.fail}, {"found": self.fail},
                    {"neighbours": koru.chosen_neighbours(self.fail), "restart": koru.constant(1)}):
            m, q = queens()
            with self.subTest(how), self.assertRaises(self.Oops):
                m.maximize(q[0], q, value=how.pop("value", koru.min_value), **how)
            self.assertEqual((q[0].size, len(list(m.solutions(q)))), (6, 4))

    def test_of_propagators(self):
        m = koru.Model()
        x = m.ints(2, 0, 3)
        m.post(koru.propagator(x, lambda a, b: self.fail() if a.fixed and a.value == 2 else None))
        with self.assertRaises(self.Oops):
            list(m.solutions(x))
        self.assertEqual(x[0].size, 4)
        with self.assertRaises(self.Oops):
            m.post(x[0] == 2)

    def test_of_bad_answers(self):
        for how, error in (({"order": lambda v: "a"}, TypeError), ({"value": lambda v: 2**31}, OverflowError),
                           ({"value": lambda v: v}, TypeError)):
            m, q = queens()
            with self.assertRaises(error):
                m.solve(q, **how)

    @unittest.skipIf(sys.platform == "win32", "limits of memory are of Unix")
    def test_exhausted_memory(self):
        program = """
import koru, resource
m = koru.Model()
x = m.var(-2**31, 2**31 - 1)
resource.setrlimit(resource.RLIMIT_AS, (400_000_000, 400_000_000))
for attempt in (lambda: m.post(x != 0), lambda: m.solve([x])):
    try:
        attempt()
    except MemoryError:
        print("no memory")
print(koru.Model().solve().status)
"""
        done = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=20, check=False)
        self.assertEqual((done.stdout, done.stderr), ("no memory\nno memory\nsolution\n", ""))


class Interrupts(unittest.TestCase):
    def setUp(self):
        # A shell's background jobs are started with the signal ignored.
        before = signal.signal(signal.SIGINT, signal.default_int_handler)
        self.addCleanup(signal.signal, signal.SIGINT, before)

    def interrupt(self, seconds=0.1):
        timer = threading.Timer(seconds, lambda: os.kill(os.getpid(), signal.SIGINT))
        timer.start()
        self.addCleanup(timer.join)

    def test_a_search_keeps_its_best(self):
        free = koru.Model()
        z = free.ints(40, 0, 40)
        free.post(koru.all_different(z), koru.sum(z) >= 780)
        self.interrupt(0.3)
        r = free.minimize(koru.sum([(7 * i) % 11 - 5 for i in range(40)], z), z)
        self.assertEqual((r.status, r.interrupted, len(set(r[z]))), (Status.STOPPED, True, 40))
        self.assertIs(signal.getsignal(signal.SIGINT), signal.default_int_handler)
        self.assertEqual(z[0].size, 41)
        m, x = holes(30)
        self.interrupt()
        r = m.solve(x)
        self.assertEqual((r.status, r.best, r.interrupted), (Status.STOPPED, None, True))

    def test_a_loop_over_solutions_ends_with_the_exception(self):
        m, x = holes(30)
        self.interrupt()
        with self.assertRaises(KeyboardInterrupt):
            list(m.solutions(x))
        self.assertEqual(x[0].size, 29)

    def test_a_handler_of_the_hosts_runs(self):
        m, x = holes(30)

        def handler(number, frame):
            raise Exceptions.Oops

        before = signal.signal(signal.SIGINT, handler)
        try:
            self.interrupt()
            with self.assertRaises(Exceptions.Oops):
                m.solve(x)
            self.assertIs(signal.getsignal(signal.SIGINT), handler)
        finally:
            signal.signal(signal.SIGINT, before)

    def test_the_second_one_ends_a_function_of_the_hosts(self):
        program = """
import koru, os, signal, threading, time
m = koru.Model()
x = m.ints(3, 0, 9)
def run(*v):
    if x[0].fixed:
        for after in (0.1, 0.4):
            threading.Timer(after, lambda: os.kill(os.getpid(), signal.SIGINT)).start()
        time.sleep(30)
m.post(koru.propagator(x, run))
try:
    m.solve(x)
except KeyboardInterrupt:
    print("interrupted", x[0].size)
"""
        done = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=20, check=False)
        self.assertEqual((done.stdout, done.stderr), ("interrupted 10\n", ""))

    def test_elsewhere_than_in_the_main_thread_searches_work(self):
        m, q = queens()
        m.park()
        counts = []
        t = threading.Thread(target=lambda: (counts.append(len(list(m.solutions(q)))), m.park()))
        t.start()
        t.join()
        self.assertEqual(counts, [4])


if __name__ == "__main__":
    unittest.main()
