# SPDX-License-Identifier: MIT
"""The search that goes on from one solution to the next."""
from __future__ import annotations

import _signal  # type: ignore  # up to Python 3.10, signal's own leave cycles that keep the callers' variables for long
import ctypes
import sys
import threading
import time
from typing import Any, List, Optional, Tuple

from ._library import ChooseRelaxed, ChooseValue, ChooseVariable, Progress, SearchStats, TaskOrders, lib, pointers
from .expressions import EQ
from .options import Search
from .posting import Speaker
from .results import Solution, Statistics, Status
from .state import Solver, State, as_int, current, same_size
from .variables import IntVar, added, every, flat


def _variables(state: State, operands: Any) -> List[IntVar]:
    """Operands as variables; sums and conditions get some."""
    speaker = Speaker(state)
    pairs = [(v, speaker.pointer(v)) for v in flat(operands)]
    return [v if isinstance(v, IntVar) else added(state, pointer) for v, pointer in pairs]


def _task_orders(orders: List[List[IntVar]], machines: List[int]) -> Any:
    array = (TaskOrders * len(orders))()
    for place, (first, start, duration, other_start, other_duration), machine in zip(array, orders, machines):
        place.first, place.machine = first.pointer, machine
        place.starts[:] = [start.pointer, other_start.pointer]
        place.durations[:] = [duration.pointer, other_duration.pointer]
    return array


class Solutions:
    """A search that goes on from solution to solution: an iterator, or a loop of next_solution(). The model stands at
    each solution; what is posted there is undone with the next one. It ends with close(), at the end of a with
    statement, when it has run out, or with its last handle; searches end in the opposite order of their beginning."""

    def __init__(self, state: State, how: Search) -> None:
        self._state = state.use()
        self._how = how
        self.search: Optional[int] = None
        self.interrupted = False
        self.solution: Optional[Solution] = None  #: the last one; it keeps its values
        self._status = Status.EXHAUSTED
        self._stats = SearchStats(secondsToFirst=-1, secondsToBest=-1)
        self._next_progress = 0.0
        state.rethrow()
        everything = how.vars is None and not how.orders.tasks
        self._vars = every(state) if everything else _variables(state, how.vars or ())
        orders = [_variables(state, t[:5]) for t in how.orders.tasks]
        phases = [(p, _variables(state, p.vars)) for p in how.then]
        self._pointers = [v.pointer for v in self._vars]
        if lib.cs_getNbRefused() > 0:
            return  # there is no solution
        self.search = lib.cs_createSearch(pointers(self._pointers), len(self._pointers))
        state.rethrow()
        if self.search is None:
            raise RuntimeError("koru: no search can be begun here")
        try:
            self._tell(orders, phases)
        except BaseException:
            self.close()
            raise

    def _tell(self, orders: List[List[IntVar]], phases: List[Tuple[Any, List[IntVar]]]) -> None:
        def accept(taken: bool) -> None:
            if not taken:
                raise ValueError("koru: an option of a search is out of its range")

        options = self._options()
        options.size = ctypes.sizeof(options)
        accept(lib.cs_setSearchOptions(self.search, ctypes.byref(options)))
        preferred = self._how.preferred()
        if preferred:
            same_size(preferred, self._pointers)
        for i, value in enumerate(preferred):
            accept(lib.cs_setSearchHint(self.search, i, value))
        if orders:
            how = self._how.orders
            machines = [as_int(t.machine) for t in how.tasks]
            accept(lib.cs_addSearchOrders(self.search, _task_orders(orders, machines), len(orders), how.order.kind,
                                          how.value.kind))
            self._pointers += [o[0].pointer for o in orders]
            self._vars += [o[0] for o in orders]
        for phase, more in phases:
            array = [v.pointer for v in more]
            accept(lib.cs_addSearchPhase(self.search, pointers(array), len(more), phase.order.kind, phase.value.kind))
            self._pointers += array
            self._vars += more
        self._state.rethrow()

    def _options(self) -> Any:
        return self._how.options((_choose_variable, _choose_value, _choose_relaxed, _progress))

    def _keep(self) -> None:
        best = ctypes.cast(lib.cs_getBestSolution(self.search), ctypes.POINTER(ctypes.c_int))
        self.solution = Solution(self._state, dict(zip(self._pointers, best[:len(self._pointers)])))

    def next_solution(self) -> bool:
        """Go on. False when there is no other solution, or none was found: status tells why."""
        if self.search is None:
            return False
        state = self._state.use()
        state.rethrow()
        if lib.cs_getSearchStatus(self.search) == Status.READY and lib.cs_getNbRefused() > 0:
            self.close()  # refused since it was made
            self._status = Status.EXHAUSTED
            return False
        outer, state.active = state.active, self
        try:
            with _Signals(self):
                now = lib.cs_nextSolution(self.search)
        finally:
            state.active = outer
        if now == 10:
            raise RuntimeError("koru: a search that was begun later is still open")
        if now == Status.MEMORY:
            state.out_of_memory = False  # told by the status; all has been undone
        state.rethrow()
        if now != Status.SOLUTION:
            return False
        self._keep()
        return True

    def __iter__(self) -> Solutions:
        return self

    def __next__(self) -> Solution:
        if not self.next_solution():
            if self.interrupted:
                raise KeyboardInterrupt
            raise StopIteration
        assert self.solution is not None
        return self.solution

    @property
    def status(self) -> Status:
        return self._status if self.search is None else Status(lib.cs_getSearchStatus(self.search))

    @property
    def statistics(self) -> Statistics:
        if self.search is not None:
            lib.cs_getSearchStats(self.search, ctypes.byref(self._stats), ctypes.sizeof(SearchStats))
        return Statistics(self._stats)

    def stop(self) -> None:
        """Ends the search at its next choice point. For callbacks, and for other threads while it works."""
        if self.search is not None:
            lib.cs_stopSearch(self.search)

    def close(self) -> None:
        """Ends the search and undoes everything since it was begun."""
        if self.search is None:
            return
        self._state.use()
        self._status, _ = self.status, self.statistics
        if lib.cs_freeSearch(self.search):
            self.search = None

    def __enter__(self) -> Solutions:
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    def __del__(self) -> None:
        """May run anywhere, so the running model stays the same, or none. Within a callback of another model, or when
        another thread has models, the search stays until its model ends."""
        before = Solver.running
        if getattr(self, "search", None) is None or sys.is_finalizing() or Solver.thread != threading.get_ident():
            return
        try:
            self.close()
            if before is None:
                self._state.solver.park()
            elif not before.over:
                before.attach()
        except RuntimeError:
            pass

    # --- Callbacks; what they raise is caught by State.guard ---

    def choose_variable(self) -> int:
        return as_int(self._how.order(self._vars))  # type: ignore[operator]

    def choose_value(self, decision: Any, index: int) -> bool:
        chosen = self._how.value(self._vars[index])  # type: ignore[operator]
        decision[0].method, decision[0].value = chosen if isinstance(chosen, tuple) else (EQ, as_int(chosen))
        return True

    def choose_relaxed(self, relaxed: Any, best: Any, n: int) -> None:
        choose = self._how.neighbours.choose
        assert choose is not None
        for i in choose(best[:n]):
            if not 0 <= i < n:
                raise IndexError(f"koru: no position of a variable: {i}")
            relaxed[i] = True

    def tell_progress(self, stats: Any) -> None:
        """At each solution, and when the host's time has come: the library calls more often, for signals."""
        tell, often, now = self._how.progress, self._how.progress_seconds, time.monotonic()
        solutions = stats[0].solutions
        if tell is None or (solutions == self._stats.solutions and (often <= 0 or now < self._next_progress)):
            return
        self._stats.solutions = solutions
        self._next_progress = now + often
        answer = tell(Statistics(stats[0]))
        if answer is not None and not answer:
            self.stop()


class _Signals:
    """While a search works, Ctrl-C stops it. A handler of the host's runs, and what it raises arrives at the caller; the
    exception of the usual one is kept back, so that the best solution arrives. The second time it is raised at once:
    functions of the host's may work for long."""

    def __init__(self, search: Solutions) -> None:
        self.search = search
        self.before: Any = None

    def __enter__(self) -> None:
        if threading.current_thread() is not threading.main_thread():
            return
        before = _signal.getsignal(_signal.SIGINT)
        if callable(before) and not isinstance(getattr(before, "__self__", None), _Signals):
            self.before = before
            _signal.signal(_signal.SIGINT, self.handle)

    def handle(self, number: int, frame: Any) -> None:
        search = self.search
        try:
            self.before(number, frame)
        except KeyboardInterrupt:
            if search.interrupted:
                raise
            search.interrupted = True
            search.stop()
        except BaseException as error:
            search._state.thrown = error
            search.stop()

    def __exit__(self, *_: Any) -> None:
        if self.before is not None:
            _signal.signal(_signal.SIGINT, self.before)


def _active() -> Tuple[State, Solutions]:
    state = current()
    return state, state.active


@ChooseVariable
def _choose_variable(variables: Any, n: int, extra: Any) -> int:
    state, search = _active()
    return int(state.guard(-1, search.choose_variable))


@ChooseValue
def _choose_value(decision: Any, index: int, variables: Any, n: int, extra: Any) -> bool:
    state, search = _active()
    return bool(state.guard(False, lambda: search.choose_value(decision, index)))


@ChooseRelaxed
def _choose_relaxed(relaxed: Any, best: Any, n: int, extra: Any) -> None:
    state, search = _active()
    state.guard(None, lambda: search.choose_relaxed(relaxed, best, n))


@Progress
def _progress(search: Any, stats: Any, extra: Any) -> None:
    state, active = _active()
    state.guard(None, lambda: active.tell_progress(stats))
