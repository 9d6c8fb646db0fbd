# SPDX-License-Identifier: MIT
"""What searches come to: solutions, statistics, results."""
from __future__ import annotations

from enum import IntEnum
from typing import Any, Dict, Iterator, Mapping, Optional

from . import display
from ._library import SearchStats, lib
from .expressions import COMPARE, Condition, Linear, Operand
from .state import State
from .variables import IntVar


class Status(IntEnum):
    """How a search stands, or has ended; str() is what the library calls it."""

    READY = 0
    SOLUTION = 1
    OPTIMAL = 2
    EXHAUSTED = 3
    TIME_LIMIT = 4
    FAIL_LIMIT = 5
    CHOICE_LIMIT = 6
    SOLUTION_LIMIT = 7
    STOPPED = 8
    MEMORY = 9

    def __str__(self) -> str:
        return str(lib.cs_getStatusName(int(self)).decode())

    def __format__(self, format_spec: str) -> str:
        return format(str(self), format_spec)


class Statistics:
    """What a search has done; the fields are those of CSsearchStats, written choice_points, peak_depth, ..."""

    choice_points: int
    fails: int
    solutions: int
    restarts: int
    no_goods: int
    neighbourhoods: int
    neighbourhoods_better: int
    wakings: int
    peak_depth: int
    peak_trail: int
    seconds: float
    seconds_to_first: float
    seconds_to_best: float
    objective: int
    bound: int

    def __init__(self, stats: SearchStats) -> None:
        for name, _ in SearchStats._fields_:
            words = "".join(f"_{c.lower()}" if c.isupper() else c for c in name)
            setattr(self, words, getattr(stats, name))

    def as_dict(self) -> Dict[str, Any]:
        return dict(self.__dict__)

    def __repr__(self) -> str:
        return (f"{self.choice_points} choice points, {self.fails} fails, {self.solutions} solutions, "
                f"{self.restarts} restarts, {self.wakings} wakings, depth {self.peak_depth}, {self.seconds:.3f} s")

    def _repr_html_(self) -> str:
        return display.table(["", ""], [[name.replace("_", " "), value] for name, value in self.__dict__.items()])


class Solution(Mapping[str, int]):
    """The values of a model's variables in one solution. Of a variable, a list of them, a sum or a condition it gives the
    value; and it is a dict from the names of variables to values, as far as they have names.

    >>> import koru
    >>> m = koru.Model()
    >>> x, y = m.var(0, 9, "x"), m.var(0, 9, "y")
    >>> m.post(x + y == 12, x < y)
    True
    >>> s = m.solve([x, y]).best
    >>> s[x], s[[x, y]], s[2 * x + y], s[x == 3], dict(s)
    (3, [3, 9], 15, 1, {'x': 3, 'y': 9})
    """

    def __init__(self, state: State, labelled: Dict[int, int]) -> None:
        self._state = state
        self._values: Dict[int, int] = {}  # by pointer; of those that are not open
        for pointer in state.pointers:
            value = labelled.get(pointer)
            if value is None:
                value = lib.cs_getMin(pointer)
                if value != lib.cs_getMax(pointer):
                    continue
            self._values[pointer] = value
        self._names: Optional[Dict[str, int]] = None

    def __getitem__(self, key: Any) -> Any:
        if isinstance(key, str):
            return self._values[self._named()[key]]
        if isinstance(key, Operand):
            return self._value(key)
        return [self[k] for k in (list(key) if hasattr(key, "ravel") else key)]

    def _value(self, key: Operand) -> int:
        if isinstance(key, IntVar):
            if key.state is not self._state or key.pointer not in self._values:
                raise KeyError("koru: a variable that was left open, is newer than the solution, or of another model")
            return self._values[key.pointer]
        if isinstance(key, Condition):
            return int(self._holds(key))
        total: Linear = key.linear()
        return total.constant + sum(c * self._value(v) for c, v in total.terms)

    def _holds(self, c: Condition) -> bool:
        if c.kind == "all":
            return all(map(self._holds, c.parts))
        if c.kind == "any":
            return any(map(self._holds, c.parts))
        if c.kind == "same":
            return self._holds(c.parts[0]) == self._holds(c.parts[1])
        value = self._value(c.sum)
        if c.kind == "compare":
            return COMPARE[c.relation](value, 0)
        if c.kind == "truth":
            return (value >= 1) != c.negated
        inside = value in c.values if c.kind == "one_of" else c.values[0] <= value <= c.values[1]
        return inside != c.negated

    def _named(self) -> Dict[str, int]:
        """The first variable of each name."""
        if self._names is None:
            self._state.use()
            self._names = {}
            for pointer in self._state.pointers:
                name = lib.cs_getName(pointer)
                if name is not None and pointer in self._values:
                    self._names.setdefault(name.decode(), pointer)
        return self._names

    def __iter__(self) -> Iterator[str]:
        return iter(self._named())

    def __len__(self) -> int:
        return len(self._named())

    __hash__ = object.__hash__

    def __eq__(self, other: Any) -> bool:
        return isinstance(other, Solution) and self._values == other._values

    def __bool__(self) -> bool:
        return True

    def __repr__(self) -> str:
        return f"Solution({', '.join(f'{name}: {value}' for name, value in self.items())})"

    def _repr_html_(self) -> str:
        return display.table(["variable", "value"], list(self.items()))


class Result:
    """What solve, minimize and maximize have come to: a status, the last solution or None, and statistics. After Ctrl-C
    the status is STOPPED, and `interrupted` true."""

    def __init__(self, status: Status, best: Optional[Solution], statistics: Statistics, interrupted: bool) -> None:
        self.status = status
        self.best = best
        self.statistics = statistics
        self.interrupted = interrupted

    def __bool__(self) -> bool:
        return self.best is not None

    def __getitem__(self, key: Any) -> Any:
        """The value in the best solution."""
        if self.best is None:
            raise KeyError(f"koru: there is no solution ({self.status})")
        return self.best[key]

    def __repr__(self) -> str:
        return f"<{self.status}: {self.best!r}; {self.statistics!r}>"

    def _repr_html_(self) -> str:
        best = self.best._repr_html_() if self.best is not None else ""
        return f"<p><b>{self.status}</b></p>{best}{self.statistics._repr_html_()}"
