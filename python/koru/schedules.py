# SPDX-License-Identifier: MIT
"""Constraints on tasks: each takes up the time from its start on, as long as its duration, if it is there. Without
`present` all tasks are. Durations, uses and capacities may be ints."""
from __future__ import annotations

from typing import Any, Iterable, Optional, Sequence

from ._library import ints, lib
from .constraints import Constraint, optional
from .state import as_int, int_list, same_size
from .variables import flat


def disjunctive(starts: Iterable[Any], durations: Iterable[Any],
                present: Optional[Iterable[Any]] = None) -> Constraint:
    """One task at a time: cs_DisjunctiveTasks.

    >>> import koru
    >>> m = koru.Model()
    >>> s = m.ints(3, 0, 7, "s")
    >>> m.post(koru.disjunctive(s, [4, 3, 2]), s[1] == 0, s[2] == 7)
    True
    >>> s
    [s[0]: 3, s[1]: 0, s[2]: 7]
    """
    x, d = flat(starts), flat(durations)
    p = None if present is None else flat(present)
    same_size(x, d, x if p is None else p)
    return Constraint("cs_DisjunctiveTasks", lambda s, speaker: lib.cs_DisjunctiveTasks(
        speaker.array(x), speaker.array(d), optional(speaker, p), len(x)))


def transitions(starts: Iterable[Any], durations: Iterable[Any], left: Iterable[int], needed: Iterable[int],
                times: Sequence[Iterable[int]], present: Optional[Iterable[Any]] = None) -> Constraint:
    """One task at a time, and after a task that leaves the state left[i], times[left[i]][needed[j]] until one that needs
    needed[j]: cs_DisjunctiveTransitions."""
    x, d, from_, to = flat(starts), flat(durations), int_list(left), int_list(needed)
    p = None if present is None else flat(present)
    same_size(x, d, from_, to, x if p is None else p)
    rows = [int_list(row) for row in times]
    same_size(*rows)
    cells, width = ints([time for row in rows for time in row]), len(rows[0]) if rows else 0
    return Constraint("cs_DisjunctiveTransitions", lambda s, speaker: lib.cs_DisjunctiveTransitions(
        speaker.array(x), speaker.array(d), optional(speaker, p), ints(from_), ints(to), len(x), cells, len(rows),
        width))


def cumulative(starts: Iterable[Any], durations: Iterable[Any], uses: Iterable[Any], capacity: Any,
               present: Optional[Iterable[Any]] = None) -> Constraint:
    """Tasks share a capacity: cs_CumulativeTasks."""
    x, d, u = flat(starts), flat(durations), flat(uses)
    p = None if present is None else flat(present)
    same_size(x, d, u, x if p is None else p)
    return Constraint("cs_CumulativeTasks", lambda s, speaker: lib.cs_CumulativeTasks(
        speaker.array(x), speaker.array(d), speaker.array(u), optional(speaker, p), len(x),
        speaker.pointer(capacity)))


def precedence(start: Any, duration: Any, next: Any, delay: int = 0, when: Any = None) -> Constraint:
    """start + duration + delay <= next; always, or when a truth value or condition holds: cs_PrecedenceIf."""
    delay = as_int(delay)
    return Constraint("cs_PrecedenceIf", lambda s, speaker: lib.cs_PrecedenceIf(
        None if when is None else speaker.pointer(when), speaker.pointer(start), speaker.pointer(duration), delay,
        speaker.pointer(next)))


def either_before(first: Any, start: Any, duration: Any, other_start: Any, other_duration: Any, present: Any = None,
                  other_present: Any = None) -> Constraint:
    """The first one ends before the other one begins when a truth value is true, and the other way round when it is
    false; Orders of a search decide that: cs_EitherBefore."""
    return Constraint("cs_EitherBefore", lambda s, speaker: lib.cs_EitherBefore(
        speaker.pointer(first), speaker.pointer(start), speaker.pointer(duration),
        None if present is None else speaker.pointer(present), speaker.pointer(other_start),
        speaker.pointer(other_duration), None if other_present is None else speaker.pointer(other_present)))


def _with_parts(function: Any, start: Any, duration: Any, present: Any, starts: Iterable[Any], durations: Iterable[Any],
                presents: Optional[Iterable[Any]]) -> Constraint:
    x, d = flat(starts), flat(durations)
    p = None if presents is None else flat(presents)
    same_size(x, d, x if p is None else p)
    return Constraint(function.__name__, lambda s, speaker: function(
        speaker.pointer(start), speaker.pointer(duration), None if present is None else speaker.pointer(present),
        speaker.array(x), speaker.array(d), optional(speaker, p), len(x)))


def alternative(start: Any, duration: Any, starts: Iterable[Any], durations: Iterable[Any],
                presents: Optional[Iterable[Any]], present: Any = None) -> Constraint:
    """A task that one of several does: cs_Alternative."""
    return _with_parts(lib.cs_Alternative, start, duration, present, starts, durations, presents)


def span(start: Any, duration: Any, starts: Iterable[Any], durations: Iterable[Any],
         presents: Optional[Iterable[Any]] = None, present: Any = None) -> Constraint:
    """A task that covers others, from the first start to the last end: cs_Span."""
    return _with_parts(lib.cs_Span, start, duration, present, starts, durations, presents)


def no_overlap(x: Iterable[Any], widths: Iterable[Any], y: Iterable[Any], heights: Iterable[Any]) -> Constraint:
    """Rectangles that do not overlap: the lower left corner of the i-th is (x[i], y[i]). cs_NoOverlap."""
    sides = [flat(side) for side in (x, widths, y, heights)]
    same_size(*sides)
    return Constraint("cs_NoOverlap", lambda s, speaker: lib.cs_NoOverlap(*[speaker.array(side) for side in sides],
                                                                          len(sides[0])))


def reservoir(times: Iterable[Any], changes: Iterable[Any], start: int, low: int, high: int,
              present: Optional[Iterable[Any]] = None) -> Constraint:
    """A level that begins at start and stays between low and high; changes[i] is added at times[i]: cs_Reservoir."""
    x, d = flat(times), flat(changes)
    p = None if present is None else flat(present)
    same_size(x, d, x if p is None else p)
    bounds = as_int(start), as_int(low), as_int(high)
    return Constraint("cs_Reservoir", lambda s, speaker: lib.cs_Reservoir(
        speaker.array(x), speaker.array(d), optional(speaker, p), len(x), *bounds))


__all__ = ["alternative", "cumulative", "disjunctive", "no_overlap", "precedence", "reservoir", "span", "transitions"]
