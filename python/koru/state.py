# SPDX-License-Identifier: MIT
"""What a model owns, and which of several models is the running one.

One solver runs at a time. Whatever is asked of a model makes its solver the running one and parks the one that was; both
take constant time. A model whose last handle is gone is ended: at once, or by the next use of a model where code of the
library is on the stack or another thread has models.
"""
from __future__ import annotations

import ctypes
import operator
import sys
import threading
import weakref
from typing import Any, Callable, ClassVar, Iterable, List, Optional

from ._library import INT_MAX, INT_MIN, ErrorHandler, Locator, Run, lib, pointers

PACKAGE = __name__.rpartition(".")[0]


def as_int(value: Any) -> int:
    """An int of the library's; numpy's are taken, floats are not."""
    number = operator.index(value)
    if not INT_MIN <= number <= INT_MAX:
        raise OverflowError(f"koru: {number} is no 32-bit int")
    return number


def int_list(values: Iterable[Any]) -> List[int]:
    return [as_int(v) for v in (values.ravel() if hasattr(values, "ravel") else values)]


def same_size(*arrays: Any) -> None:
    if len({len(a) for a in arrays}) > 1:
        raise ValueError("koru: arrays that differ in size")


class Solver:
    """A solver of the library, running or parked, without what keeps its model alive."""

    running: ClassVar[Optional[Solver]] = None
    thread: ClassVar[int] = 0  # whose models these are
    ended: ClassVar[List[Solver]] = []  # those whose model is gone

    def __init__(self, state: State) -> None:
        self.state = weakref.ref(state)
        self.parked: Optional[int] = None
        self.over = False
        self.claim()
        if Solver.running is not None:
            Solver.running.park()
        if lib.CSINT(0) is not None:
            raise RuntimeError("koru: a solver runs that belongs to no model")
        lib.cs_init()
        Solver.running = self

    @staticmethod
    def claim() -> None:
        """Models belong to one thread, until it has parked or ended them all or has ended itself."""
        me = threading.get_ident()
        if Solver.thread != me and Solver.running is not None:
            if any(t.ident == Solver.thread for t in threading.enumerate()):
                raise RuntimeError("koru: another thread uses a model; it has to call park() first")
        Solver.thread = me
        Solver.reap()

    def try_park(self) -> bool:
        parked = lib.cs_detachSolver()
        if parked is None:
            return False
        self.parked = parked
        Solver.running = None
        return True

    def park(self) -> None:
        if Solver.running is self and not self.try_park():
            raise RuntimeError("koru: another model cannot be used within a callback of the library")

    def attach(self) -> None:
        Solver.claim()
        if Solver.running is self:
            return
        if self.over:  # handles that the collector ends after it
            raise RuntimeError("koru: the model has ended")
        if Solver.running is not None:
            Solver.running.park()
        if not lib.cs_attachSolver(self.parked):
            raise RuntimeError("koru: another solver is running")
        Solver.running = self

    @staticmethod
    def reap() -> None:
        """End the solvers of models that are gone; the running one is the same before and after, unless it is one."""
        before = Solver.running
        if not Solver.ended or Solver.thread != threading.get_ident() or (before is not None and not before.try_park()):
            return
        while Solver.ended:
            if lib.cs_attachSolver(Solver.ended.pop().parked):
                lib.cs_end()
        if before is not None:
            before.resume()

    def resume(self) -> None:
        """Make it the running one again, unless it has been ended."""
        if not self.over and Solver.running is None and lib.cs_attachSolver(self.parked):
            Solver.running = self


class State:
    """A solver with the arrays and functions that its constraints keep."""

    def __init__(self) -> None:
        self.thrown: Optional[BaseException] = None  # by a callback; on its way to the caller
        self.out_of_memory = False
        self.refused = False  # was something refused in the propagator that runs?
        self.active: Any = None  # the search under way
        self.pointers: List[int] = []  # of all variables, in the order of their making
        self.handles: Any = weakref.WeakValueDictionary()  # those alive, by their place
        self.arrays: List[Any] = []  # constraints of koru.h keep what they are given
        self.hooks: List[Callable[[], Any]] = []
        self.place: Any = None  # what the locator has told last
        self.profiler: Optional[int] = None
        self.profile_details = False
        self.solver = Solver(self)
        lib.cs_setErrHandler(-3, _note_memory, None)
        self.zero: int = lib.CSINT(0)
        if self.zero is None:
            raise MemoryError

    def __del__(self, finalizing: Callable[[], bool] = sys.is_finalizing) -> None:
        solver = getattr(self, "solver", None)
        if solver is None or finalizing():
            return
        solver.over = True
        Solver.ended.append(solver)
        Solver.reap()

    def use(self) -> State:
        """Make this the running model."""
        if Solver.running is not self.solver or Solver.thread != threading.get_ident():
            self.solver.attach()
        return self

    def rethrow(self) -> None:
        """Raise what a callback has raised, or the lack of memory: then a constraint is missing, and the model raises
        that again at every search."""
        if self.thrown is not None:
            error, self.thrown = self.thrown, None
            raise error
        if self.out_of_memory:
            raise MemoryError

    def check(self, posted: Any) -> bool:
        """To be called with the result of each posting: a refusal is counted by the solver, and taken back with its
        context, and within a propagator remembered here."""
        self.refused = self.refused or not posted
        if not posted and lib.cs_getNbRefused() == 0:
            lib.cs_NEQ(self.zero, 0)
        self.rethrow()
        return bool(posted)

    def made(self, pointer: Optional[int]) -> int:
        """What a function has made; something else, once the model has failed."""
        return pointer if self.check(pointer is not None) and pointer is not None else self.zero

    def create(self, low: int, high: int) -> int:
        if low > high:
            raise ValueError("koru: a variable without a value")
        pointer = lib.cs_createCSint(low, high)
        self.rethrow()
        return int(pointer)

    def keep(self, variables: List[int]) -> Any:
        """An array that lives as long as the model."""
        self.arrays.append(pointers(variables))
        return self.arrays[-1]

    def hook(self, run: Callable[[], Any]) -> int:
        """A number for a callback to be known by; numbers begin at 1, as 0 is null."""
        self.hooks.append(run)
        return len(self.hooks)

    def guard(self, otherwise: Any, callback: Callable[[], Any]) -> Any:
        """Run code of the host's within the library. What it raises waits for the caller, and the search ends."""
        if self.thrown is not None:
            return otherwise
        try:
            return callback()
        except BaseException as error:  # noqa: B902 - all arrive at the caller
            self.thrown = error
            if self.active is not None:
                lib.cs_stopSearch(self.active.search)
            return otherwise


def current() -> State:
    """The state of the running model, in a callback."""
    state = Solver.running.state() if Solver.running is not None else None
    assert state is not None
    return state


@ErrorHandler
def _note_memory(variable: Any, extra: Any) -> None:
    current().out_of_memory = True


@Run
def run_hook(variables: Any, size: int, number: int) -> bool:
    """The handler of propagators: `number` is that of State.hook. One that has had something refused has failed."""
    state = current()
    outer, state.refused = state.refused, False
    answer = state.guard(False, state.hooks[number - 1])
    refused, state.refused = state.refused, outer
    return not refused and (answer is None or bool(answer))


@Locator
def locate(argument: Any) -> Any:
    """The line of the program that posts: file, line, address and function, as the library's own locator tells them."""
    frame: Any = sys._getframe()
    while frame.f_back is not None and frame.f_globals.get("__name__", "").startswith(PACKAGE):
        frame = frame.f_back
    text = f"{frame.f_code.co_filename}\t{frame.f_lineno}\t0\t{frame.f_code.co_name}"
    state = current()
    state.place = ctypes.create_string_buffer(text.encode())
    return ctypes.addressof(state.place)
