# SPDX-License-Identifier: MIT
"""Koru for Python: a finite-domain constraint solver over 32-bit signed integers.

>>> import koru
>>> m = koru.Model()
>>> q = m.ints(8, 0, 7, "q")  # queen i stands in row i, column q[i]
>>> m.post(koru.all_different(q), koru.all_different([v + i for i, v in enumerate(q)]),
...        koru.all_different([v - i for i, v in enumerate(q)]))
True
>>> r = m.solve(q, order=koru.smallest)
>>> r.status, r[q], r.statistics.fails
(<Status.SOLUTION: 1>, [0, 4, 7, 5, 2, 6, 1, 3], 15)

Weak: one solver runs at a time, in one thread; a program that goes to and fro between models parks and attaches at each
change (constant time). Whatever is created stays until the model ends, also what was posted in a context that is closed.
"""
from ._library import ANY, version
from .constraints import (BOUNDS, DOMAIN, SIMPLE, Arc, Automaton, Constraint, all_different, bin_packing, cardinality,
                          circuit, count, element, increasing, inverse, lex_le, lex_lt, mdd, not_table, nvalues,
                          precede, propagator, regular, strictly_increasing, subcircuit, table)
from .display import Picture, gantt, grid
from .expressions import EQ, GE, GT, LE, LT, NEQ, Condition, Linear, all_of, any_of, between, condition, one_of, sum
from .model import Context, Model
from .options import (Neighbours, Order, Orders, Phase, Restart, Search, TaskOrder, Value, activity, chosen_neighbours,
                      constant, dom_wdeg, geometric, high_half, input_order, largest, largest_max, linked_neighbours,
                      low_half, luby, machine_neighbours, max_value, median_value, middle_value, min_value,
                      most_constrained, prefer, random_neighbours, random_value, regret, set_times, slack, slack_value,
                      slack_wdeg, smallest, smallest_min, task_neighbours, window_neighbours)
from .reasons import (Explained, Explanation, Infeasible, Reason, Removal, explain, record_removals, solve,
                      why_removed)
from .results import Result, Solution, Statistics, Status
from .schedules import alternative, cumulative, disjunctive, either_before, no_overlap, precedence, reservoir, span, transitions
from .search import Solutions
from .variables import IntVar, columns, rows

__version__ = version
__all__ = [name for name in dir() if not name.startswith("_") and name not in (
    "constraints", "display", "expressions", "model", "options", "posting", "reasons", "results", "schedules", "search",
    "state", "sum", "variables", "version")]
