# SPDX-License-Identifier: MIT
"""Why a model has no solution, and why a value is gone: by the lines of the program."""
from __future__ import annotations

import ctypes
import linecache
from enum import IntEnum
from typing import Any, Callable, List, Optional

from ._library import Explanation as CExplanation
from ._library import ExplainOptions, ModelFunction, Removals, lib
from .model import Model
from .results import Result, Status
from .state import Solver, as_int, locate
from .variables import IntVar, handle

NONE, SOLUTION, UNKNOWN, STOP = 0, 1, -1, -2  # what a model says


class Explained(IntEnum):
    """What an explanation has come to: CS_EXPLAINED_..."""

    MINIMAL = 0
    PARTLY = 1
    SOLUTION = 2
    UNKNOWN = 3
    NEVER = 4
    UNSTABLE = 5
    MEMORY = 6


class _Place:
    """A line of a program. As a text, it has the line itself where that can be read."""

    def __init__(self, function: bytes, file: bytes, line: int, caller: bytes) -> None:
        self.function = function.decode()
        self.file = file.decode(errors="replace")
        self.line = line
        self.caller = caller.decode(errors="replace")

    @property
    def source(self) -> str:
        return linecache.getline(self.file, self.line).strip()


class Reason(_Place):
    """A posting: the function of the C interface that it came to, and the line that says it. It is the number-th of
    number_of at this line, and has the position among all."""

    def __init__(self, r: Any) -> None:
        super().__init__(r.function, r.file, r.line, r.caller)
        self.number, self.number_of, self.position = r.number, r.numberOf, r.position

    def __repr__(self) -> str:
        which = f"  no. {self.number} of {self.number_of}" if self.number_of > 1 else ""
        return f"{self.file}:{self.line}  {self.function}{which}" + (f"    {self.source}" if self.source else "")


class Explanation:
    """Which postings contradict each other, or, for `nearest`, which ones would have to go."""

    def __init__(self, e: Any) -> None:
        self.status = Explained(e.status)
        self.nearest = bool(e.nearest)
        self.reasons = [Reason(e.reasons[i]) for i in range(e.size)]
        self.places, self.checks = e.places, e.checks

    @property
    def lines(self) -> List[int]:
        """The numbers of the lines, each once, in their order."""
        return sorted({r.line for r in self.reasons})

    def _head(self) -> str:
        told = {Explained.SOLUTION: "there is a solution", Explained.UNKNOWN: "not known whether there is a solution",
                Explained.NEVER: "no solution, whatever is left out", Explained.MEMORY: "memory exhausted:"}
        if self.status in told:
            return told[self.status]
        often = ", but not each time" if self.status == Explained.UNSTABLE else ""
        return f"a solution{often}{',' if often else ''} without" if self.nearest else f"no solution{often}, because of"

    def __repr__(self) -> str:
        head = self._head()
        if self.reasons:
            n = len(self.reasons)
            head += f" {n} posting{'s' * (n != 1)} at {self.places} place{'s' * (self.places != 1)}"
            head += "" if self.status == Explained.MINIMAL else ", perhaps fewer"
        return "\n".join([head, *map(repr, self.reasons)])


class Infeasible(Exception):
    """Raised by koru.solve: the model has no solution. As a text it is the explanation, line by line.

    >>> import koru
    >>> def shifts(m):
    ...     first, second = m.var(6, 22), m.var(6, 22)
    ...     m.post(first + 8 <= second)
    ...     m.post(first >= 8, second + 8 <= 22)
    >>> try:
    ...     koru.solve(shifts)
    ... except koru.Infeasible as error:
    ...     print([r.function for r in error.explanation.reasons])
    ['cs_Linear', 'cs_GE', 'cs_LE']
    """

    def __init__(self, explanation: Explanation) -> None:
        super().__init__(repr(explanation))
        self.explanation = explanation


Build = Callable[[Model], Any]


def explain(build: Build, nearest: bool = False, checks: int = 0, seconds: float = 0, **how: Any) -> Explanation:
    """Why the model that build(m) makes has no solution: lines that contradict each other, none of which can be spared;
    with nearest, what would have to go for a solution. cs_explainFailure tells more, and what build must keep to: it is
    called again and again, up to so many checks and seconds. A model that is posted without a refusal is searched;
    `how` are the arguments of Model.solve."""
    thrown: List[BaseException] = []

    def run(_: Any) -> int:
        lib.cs_end()  # the model begins its own
        try:
            return _answer(build, how)
        except BaseException as error:  # noqa: B902 - all arrive at the caller
            thrown.append(error)
            return STOP

    options = ExplainOptions(size=ctypes.sizeof(ExplainOptions), nearest=nearest, maxChecks=as_int(checks),
                             milliseconds=int(seconds * 1000))
    Solver.claim()
    if Solver.running is not None:
        Solver.running.park()
    function = ModelFunction(run)
    found = lib.cs_explainFailure(function, None, ctypes.byref(options))
    try:
        if thrown:
            raise thrown[0]
        if found is None:
            raise RuntimeError("koru: nothing can be explained here")
        return Explanation(ctypes.cast(found, ctypes.POINTER(CExplanation)).contents)
    finally:
        lib.cs_freeExplanation(found)


def _answer(build: Build, how: Any) -> int:
    m = Model()
    try:
        lib.cs_setProfilerLocator(None, locate, None)
        build(m)
        if m.failed:
            return NONE
        r = m.solve(**how)
        return SOLUTION if r else NONE if r.status == Status.EXHAUSTED else UNKNOWN
    finally:
        m.park()  # it may be somebody's beyond this run


def solve(build: Build, **how: Any) -> Result:
    """Model.solve of the model that build(m) makes. Infeasible, with the lines, when it has no solution; that takes some
    dozens of further runs."""
    m = Model()
    build(m)
    r = m.solve(**how)
    if r.status == Status.EXHAUSTED and r.best is None:
        raise Infeasible(explain(build, **how))
    return r


class Removal(_Place):
    """A change of a domain, and who made it: variable relation value. The variable is None for one of the library's own.
    Without a function, a search's where by_search is true."""

    def __init__(self, variable: Optional[IntVar], step: Any) -> None:
        super().__init__(step.function, step.file, step.line, step.caller)
        self.variable = variable
        self.relation = ("==", "!=", "<=", "<", ">=", ">")[step.change.method]
        self.value, self.by_search = step.change.value, bool(step.bySearch)

    def __repr__(self) -> str:
        name = "a variable" if self.variable is None else self.variable.name or f"#{self.variable.index}"
        what = f"{name} {self.relation} {self.value}"
        if not self.function:
            return f"{what}  {'a search' if self.by_search else 'not known by whom'}"
        return f"{what}  {self.function}  {self.file}:{self.line}" + (f"    {self.source}" if self.source else "")


def record_removals(m: Model, on: bool = True) -> None:
    """Records who changes domains from here on, for why_removed. cs_recordRemovals tells what that costs."""
    state = m._state.use()
    if on:
        lib.cs_setProfilerLocator(None, locate, None)
    if not lib.cs_recordRemovals(on):
        state.rethrow()
        raise RuntimeError("koru: not within a callback or a search")


def why_removed(x: IntVar, value: int) -> List[Removal]:
    """Who has taken the value from the variable, and what had made it do so, back to a line or a decision; no steps for a
    value that is there, never was, or went before record_removals.

    >>> import koru
    >>> m = koru.Model()
    >>> koru.record_removals(m)
    >>> x, y = m.ints(2, 0, 9, "x")
    >>> m.post(x < y, x >= 3)
    True
    >>> [(r.variable.name, r.relation, r.value, r.function) for r in koru.why_removed(y, 3)]
    [('x[1]', '>=', 4, 'cs_Lt'), ('x[0]', '>=', 3, 'cs_GE')]
    """
    state = x.state.use()
    found = lib.cs_whyRemoved(x.pointer, as_int(value))
    if found is None:
        state.rethrow()
        raise RuntimeError("koru: removals are not recorded")
    try:
        own = {pointer: i for i, pointer in reversed(list(enumerate(state.pointers)))}
        removals = ctypes.cast(found, ctypes.POINTER(Removals)).contents
        steps = [removals.steps[i] for i in range(removals.size)]
        return [Removal(_handle(state, own.get(step.variable)), step) for step in steps]
    finally:
        lib.cs_freeRemovals(found)


def _handle(state: Any, index: Optional[int]) -> Optional[IntVar]:
    return None if index is None else handle(state, index)
