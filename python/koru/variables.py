# SPDX-License-Identifier: MIT
"""Variables, and what functions take for several of them."""
from __future__ import annotations

import html
from typing import Any, Iterable, Iterator, List, Optional, Tuple

from ._library import lib
from .expressions import Linear, Operand
from .state import State, as_int


class IntVar(Operand):
    """A variable: a handle that keeps its model alive. All of it costs constant time but for the lists of values.

    >>> import koru
    >>> m = koru.Model()
    >>> x = m.var(0, 9, "x")
    >>> m.post(x != 4)
    True
    >>> x, x.min, x.max, len(x.domain), 4 in x.domain
    (x: {0..3, 5..9}, 0, 9, 9, False)
    """

    __slots__ = ("state", "index", "pointer", "__weakref__")

    def __init__(self, state: State, index: int) -> None:
        self.state = state
        self.index = index
        #: For calls of the C interface, while the model is the running one; see Model.use.
        self.pointer = state.pointers[index]

    def linear(self) -> Linear:
        return Linear([(1, self)])

    @property
    def min(self) -> int:
        self.state.use()
        return int(lib.cs_getMin(self.pointer))

    @property
    def max(self) -> int:
        self.state.use()
        return int(lib.cs_getMax(self.pointer))

    @property
    def size(self) -> int:
        """The number of values that are left."""
        self.state.use()
        return int(lib.cs_getNbElements(self.pointer))

    @property
    def fixed(self) -> bool:
        return self.min == self.max

    @property
    def value(self) -> int:
        """The value of a variable that has one left; otherwise ValueError."""
        if not self.fixed:
            raise ValueError("koru: the value of a variable that has several")
        return self.min

    def contains(self, value: int) -> bool:
        """Is the value left? (Without making a list of the domain.)"""
        self.state.use()
        return bool(lib.cs_isIn(self.pointer, as_int(value)))

    @property
    def domain(self) -> List[int]:
        """The values that are left."""
        return [v for low, high in self.ranges() for v in range(low, high + 1)]

    def ranges(self) -> Iterator[Tuple[int, int]]:
        """The values that are left, as intervals."""
        low, last = self.min, self.max
        while True:
            high = low
            while high < last and lib.cs_isIn(self.pointer, high + 1):
                high += 1
            yield low, high
            if high == last:
                return
            low = lib.cs_getNextValue(self.state.use() and self.pointer, high)

    @property
    def name(self) -> str:
        self.state.use()
        text: Optional[bytes] = lib.cs_getName(self.pointer)
        return text.decode() if text is not None else ""

    @name.setter
    def name(self, text: str) -> None:
        self.state.use()
        lib.cs_setName(self.pointer, text.encode())
        self.state.rethrow()

    def domain_text(self) -> str:
        """The domain as cs_printf's %D shows it: {0..3, 7}, or 5."""
        if self.fixed:
            return str(self.min)
        return "{" + ", ".join(_interval(low, high) for low, high in self.ranges()) + "}"

    def __repr__(self) -> str:
        name = self.name
        return f"{name}: {self.domain_text()}" if name else self.domain_text()

    def _repr_html_(self) -> str:
        return f"<code>{html.escape(repr(self))}</code>"


def _interval(low: int, high: int) -> str:
    if low == high:
        return str(low)
    return f"{low}, {high}" if high == low + 1 else f"{low}..{high}"


def handle(state: State, index: int) -> IntVar:
    """The handle of a variable: the same one as long as somebody has it."""
    found = state.handles.get(index)
    if found is None:
        found = state.handles[index] = IntVar(state, index)
    return found  # type: ignore[no-any-return]


def added(state: State, pointer: Any) -> IntVar:
    """The handle of a variable that a function has made. After a refusal there is none, and the model has failed."""
    state.pointers.append(state.made(pointer))
    return handle(state, len(state.pointers) - 1)


def every(state: State) -> List[IntVar]:
    """All that the model has made, results included, in the order of their making."""
    return [handle(state, i) for i in range(len(state.pointers))]


def flat(operands: Any) -> List[Any]:
    """What stands for several variables as a list: a list, an array of numpy's of any shape, whatever is iterable."""
    return list(operands.ravel() if hasattr(operands, "ravel") else operands)


def rows(operands: Iterable[Any], width: int) -> List[List[Any]]:
    """The rows of a matrix that is written row by row."""
    everything = flat(operands)
    if width < 1 or len(everything) % width != 0:
        raise ValueError("koru: rows of different width")
    return [everything[i:i + width] for i in range(0, len(everything), width)]


def columns(operands: Iterable[Any], width: int) -> List[List[Any]]:
    """The columns of a matrix that is written row by row."""
    return [list(column) for column in zip(*rows(operands, width))]
