# SPDX-License-Identifier: MIT
"""The constraints, as functions whose results Model.post takes. What each of them means, finds out and costs stands with
the function of koru.h or koru_extras.h that it names.

Where variables are wanted, ints stand for constants, and sums and conditions for variables that equal them. Several
variables are a list, an array of numpy's of any shape, or whatever else can be iterated.
"""
from __future__ import annotations

from typing import Any, Callable, Iterable, List, NamedTuple, Optional, Sequence

from ._library import ANY, ints, lib
from .posting import Speaker
from .state import State, as_int, int_list, run_hook, same_size
from .variables import IntVar, flat

#: How much an all-different or a cardinality finds out: a value that is taken goes from the others; bounds or domain
#: consistent.
SIMPLE, BOUNDS, DOMAIN = "simple", "bounds", "domain"


class Constraint:
    """Something to post: a function that says it to the solver."""

    def __init__(self, name: str, say: Callable[[State, Speaker], Any]) -> None:
        self.name = name
        self.say = say

    def post(self, state: State) -> bool:
        return state.check(self.say(state, Speaker(state)))

    def __repr__(self) -> str:
        return f"<koru constraint {self.name}>"


class Automaton(NamedTuple):
    """A deterministic automaton: next[state][symbol] is the state that follows; -1: none."""

    next: Sequence[Sequence[int]]
    finals: Sequence[int]
    start: int = 0


class Arc(NamedTuple):
    """An arc of a decision diagram."""

    source: int
    value: int
    target: int


def _over(function: Any, *arrays: Any) -> Constraint:
    """A constraint of a function over arrays of one size, which it copies."""
    lists = [flat(a) for a in arrays]
    same_size(*lists)
    return Constraint(function.__name__,
                      lambda s, speaker: function(*[speaker.array(a) for a in lists], len(lists[0])))


def all_different(vars: Iterable[Any], strength: str = SIMPLE) -> Constraint:
    """All different: cs_AllNeq, cs_AllNeqBounds or cs_AllNeqDomain.

    >>> import koru
    >>> m = koru.Model()
    >>> x = m.ints(3, 1, 2)
    >>> m.post(koru.all_different(x, koru.DOMAIN)), m.failed
    (False, True)
    """
    if strength == BOUNDS:
        return _over(lib.cs_AllNeqBounds, vars)
    if strength == DOMAIN:
        return _over(lib.cs_AllNeqDomain, vars)
    if strength != SIMPLE:
        raise ValueError(f"koru: no strength: {strength!r}")
    x = flat(vars)
    return Constraint("cs_AllNeq", lambda s, speaker: lib.cs_AllNeq(s.keep(speaker.pointers(x)), len(x)))


def _cells(x: List[Any], rows: Iterable[Iterable[int]]) -> List[List[int]]:
    table = [int_list(row) for row in rows]
    for row in table:
        same_size(row, x)
    return table


def _table(function: Any, x: List[Any], table: List[List[int]]) -> Constraint:
    cells = ints([cell for row in table for cell in row])
    return Constraint(function.__name__,
                      lambda s, speaker: function(speaker.array(x), len(x), cells, len(table)))


def table(vars: Iterable[Any], rows: Iterable[Iterable[int]]) -> Constraint:
    """One of the rows; a cell may be koru.ANY. cs_ShortTable, or cs_Table where no cell is."""
    x = flat(vars)
    all_rows = _cells(x, rows)
    short = any(cell == ANY for row in all_rows for cell in row)
    return _table(lib.cs_ShortTable if short else lib.cs_Table, x, all_rows)


def not_table(vars: Iterable[Any], rows: Iterable[Iterable[int]]) -> Constraint:
    """None of the rows: cs_NotTable."""
    x = flat(vars)
    return _table(lib.cs_NotTable, x, _cells(x, rows))


def regular(vars: Iterable[Any], automaton: Automaton) -> Constraint:
    """A word of the automaton: cs_Regular."""
    x, rows, finals = flat(vars), [int_list(row) for row in automaton.next], int_list(automaton.finals)
    if not rows or not rows[0]:
        raise ValueError("koru: an automaton without a state or a symbol")
    same_size(*rows)
    start, symbols, cells = as_int(automaton.start), len(rows[0]), ints([q for row in rows for q in row])
    return Constraint("cs_Regular", lambda s, speaker: lib.cs_Regular(
        s.keep(speaker.pointers(x)), len(x), cells, len(rows), symbols, start, ints(finals), len(finals)))


def mdd(vars: Iterable[Any], arcs: Iterable[Any], root: int, terminal: int) -> Constraint:
    """A path from the root to the terminal, of arcs (source, value, target): cs_Mdd."""
    x, sides = flat(vars), [int_list(arc) for arc in arcs]
    for arc in sides:
        same_size(arc, range(3))
    columns = [ints([arc[i] for arc in sides]) for i in range(3)]
    root, terminal = as_int(root), as_int(terminal)
    return Constraint("cs_Mdd", lambda s, speaker: lib.cs_Mdd(speaker.array(x), len(x), *columns, len(sides), root,
                                                              terminal))


def circuit(next: Iterable[Any]) -> Constraint:
    """next[i] follows i on one tour through all: cs_Circuit."""
    return _over(lib.cs_Circuit, next)


def subcircuit(next: Iterable[Any]) -> Constraint:
    """On one tour through some; the others follow themselves: cs_Subcircuit."""
    return _over(lib.cs_Subcircuit, next)


def inverse(x: Iterable[Any], y: Iterable[Any]) -> Constraint:
    """x[i] = j exactly when y[j] = i: cs_Inverse."""
    return _over(lib.cs_Inverse, x, y)


def increasing(vars: Iterable[Any]) -> Constraint:
    """cs_Increasing."""
    return _over(lib.cs_Increasing, vars)


def strictly_increasing(vars: Iterable[Any]) -> Constraint:
    """cs_StrictlyIncreasing."""
    return _over(lib.cs_StrictlyIncreasing, vars)


def lex_le(x: Iterable[Any], y: Iterable[Any]) -> Constraint:
    """x comes before y as a word, or is equal: cs_LexLe."""
    return _over(lib.cs_LexLe, x, y)


def lex_lt(x: Iterable[Any], y: Iterable[Any]) -> Constraint:
    """x comes before y as a word: cs_LexLt."""
    return _over(lib.cs_LexLt, x, y)


def precede(vars: Iterable[Any], s: int, t: int) -> Constraint:
    """Before each t stands an s: cs_Precede."""
    x, s, t = flat(vars), as_int(s), as_int(t)
    return Constraint("cs_Precede", lambda _, speaker: lib.cs_Precede(speaker.array(x), len(x), s, t))


def element(elements: Iterable[Any], index: Any, result: Any) -> Constraint:
    """result = elements[index]: cs_ElementOf where all elements are ints, otherwise cs_VarElementOf."""
    x = flat(elements)
    if all(hasattr(v, "__index__") for v in x):
        values = ints(int_list(x))
        return Constraint("cs_ElementOf", lambda s, speaker: lib.cs_ElementOf(speaker.pointer(index), values, len(x),
                                                                              speaker.pointer(result)))
    return Constraint("cs_VarElementOf", lambda s, speaker: lib.cs_VarElementOf(
        speaker.pointer(index), speaker.array(x), len(x), speaker.pointer(result)))


class Count:
    """How many of the variables take a value; see count. With a comparison it is a constraint."""

    def __init__(self, vars: Iterable[Any], value: int) -> None:
        self.vars = flat(vars)
        self.value = as_int(value)

    def between(self, low: int, high: int) -> Constraint:
        """From low to high of them: cs_OccurConstraints."""
        low, high = max(as_int(low), 0), min(as_int(high), len(self.vars))
        return Constraint("cs_OccurConstraints", lambda s, speaker: low <= high and self._say(
            s, speaker, s.create(low, high)))

    def is_(self, number: Any) -> Constraint:
        """So many of them; a variable or an int."""
        if hasattr(number, "__index__"):
            return self.between(number, number)
        return Constraint("cs_OccurConstraints", lambda s, speaker: self._say(s, speaker, speaker.pointer(number)))

    def _say(self, s: State, speaker: Speaker, number: int) -> Any:
        return lib.cs_OccurConstraints(number, self.value, s.keep(speaker.pointers(self.vars)), len(self.vars))


def count(vars: Iterable[Any], value: Any, number: Any = None) -> Any:
    """count(vars, value).between(low, high), count(vars, value).is_(number); where the value is a variable,
    count(vars, value, number): cs_CountOf."""
    if not isinstance(value, IntVar):
        return Count(vars, value) if number is None else Count(vars, value).is_(number)
    x = flat(vars)
    return Constraint("cs_CountOf", lambda s, speaker: lib.cs_CountOf(speaker.array(x), len(x), value.pointer,
                                                                      speaker.pointer(number)))


def cardinality(vars: Iterable[Any], values: Iterable[int], counts: Iterable[Any], closed: bool = False,
                strength: str = SIMPLE) -> Constraint:
    """counts[j] of the variables equal values[j], and when closed, they take no others: cs_Cardinality, or with DOMAIN
    cs_CardinalityDomain."""
    x, v, c = flat(vars), int_list(values), flat(counts)
    same_size(v, c)
    function = lib.cs_CardinalityDomain if strength == DOMAIN else lib.cs_Cardinality
    return Constraint(function.__name__, lambda s, speaker: function(speaker.array(x), len(x), ints(v),
                                                                     speaker.array(c), len(c), closed))


def nvalues(vars: Iterable[Any], number: Any) -> Constraint:
    """The variables take so many different values: cs_NValues."""
    x = flat(vars)
    return Constraint("cs_NValues", lambda s, speaker: lib.cs_NValues(speaker.array(x), len(x),
                                                                      speaker.pointer(number)))


def bin_packing(bins: Iterable[Any], sizes: Iterable[int], loads: Iterable[Any]) -> Constraint:
    """Item i, sizes[i] large, is in bin bins[i]; loads[j] is the sum of the sizes in bin j: cs_BinPacking."""
    x, weights, load = flat(bins), int_list(sizes), flat(loads)
    same_size(x, weights)
    return Constraint("cs_BinPacking", lambda s, speaker: lib.cs_BinPacking(speaker.array(x), ints(weights), len(x),
                                                                            speaker.array(load), len(load)))


def propagator(vars: Iterable[IntVar], run: Callable[..., Any]) -> Constraint:
    """A constraint of the host's own: `run` is called with the variables now, and after all others whenever one of them
    has changed. It may post. The branch fails when it returns False or something that it has posted is refused; what it
    raises arrives at whoever has searched or posted. cs_eventRun.

    >>> import koru
    >>> m = koru.Model()
    >>> x = m.ints(2, 0, 9)
    >>> m.post(koru.propagator(x, lambda a, b: m.post(a <= b.max - 3)))
    True
    >>> x
    [{0..6}, {0..9}]
    """
    x = flat(vars)
    return Constraint("cs_eventRun", lambda s, speaker: lib.cs_eventRun(speaker.array(x), len(x), run_hook,
                                                                        s.hook(lambda: run(*x))))


def optional(speaker: Speaker, present: Optional[Iterable[Any]]) -> Any:
    """Presences as an array; None where all are there."""
    return None if present is None else speaker.array(present)


__all__ = ["ANY", "Arc", "Automaton", "BOUNDS", "Constraint", "DOMAIN", "SIMPLE", "all_different", "bin_packing",
           "cardinality", "circuit", "count", "element", "increasing", "inverse", "lex_le", "lex_lt", "mdd",
           "not_table", "nvalues", "precede", "propagator", "regular", "strictly_increasing",
           "subcircuit", "table"]
