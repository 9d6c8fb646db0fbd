# SPDX-License-Identifier: MIT
"""What a search is to do; the options are those of CSsearchOptions in koru_extras.h."""
from __future__ import annotations

import math
from dataclasses import dataclass, field
from typing import Any, Callable, List, NamedTuple, Optional, Sequence, Tuple, Union

from ._library import SearchOptions
from .state import as_int
from .variables import IntVar

HOST_ORDER, HOST_VALUE, HOST_NEIGHBOURS = 8, 7, 3  # CS_ORDER_HOST, CS_VALUE_HOST, CS_NEIGHBOURS_HOST


class Order(NamedTuple):
    """Which variable is labelled next: one of the constants, or a function of the list of variables that returns a
    position in it."""

    kind: int


class Value(NamedTuple):
    """Which decision is taken first: one of the constants, prefer(values), or a function of the variable that returns an
    int, or a relation and an int: (koru.LE, 5)."""

    kind: int
    preferred: Tuple[int, ...] = ()


input_order, smallest, largest, smallest_min, largest_max, regret, most_constrained, dom_wdeg = map(Order, range(8))
activity, set_times, slack, slack_wdeg = map(Order, range(9, 13))
min_value, max_value, middle_value, median_value, low_half, high_half, random_value = map(Value, range(7))
slack_value = Value(9)


def prefer(values: Sequence[int], otherwise: Value = min_value) -> Value:
    """The value for each of the labelled variables to try first, until there is a solution; then that of the last one."""
    return Value(otherwise.kind, tuple(as_int(v) for v in values))


class Restart(NamedTuple):
    """When the search begins again, having learnt."""

    kind: int = 0
    fails: int = 0
    growth: int = 0


def constant(fails: int) -> Restart:
    """After so many fails."""
    return Restart(1, fails)


def luby(fails: int) -> Restart:
    """After so many fails times 1, 1, 2, 1, 1, 2, 4, ..."""
    return Restart(2, fails)


def geometric(fails: int, percent: int) -> Restart:
    """After so many fails, then each time so many per cent more."""
    return Restart(3, fails, percent)


class Neighbours(NamedTuple):
    """Which variables are let go for a while, in a search with an objective: a number of per cent at first, until so many
    fails; 0 stands for the library's choice."""

    kind: int = 0
    fails: int = 0
    percent: int = 0
    choose: Optional[Callable[[List[int]], Any]] = None


def random_neighbours(fails: int = 0, percent: int = 0) -> Neighbours:
    """Any variables."""
    return Neighbours(1, fails, percent)


def linked_neighbours(fails: int = 0, percent: int = 0) -> Neighbours:
    """One at random, those that share constraints with it, and so on."""
    return Neighbours(2, fails, percent)


def window_neighbours(fails: int = 0, percent: int = 0) -> Neighbours:
    """Orders of tasks that both start around a moment."""
    return Neighbours(4, fails, percent)


def machine_neighbours(fails: int = 0, percent: int = 0) -> Neighbours:
    """Orders of all tasks of some machines."""
    return Neighbours(5, fails, percent)


def task_neighbours(fails: int = 0, percent: int = 0) -> Neighbours:
    """Orders of some tasks, with all others of their machines."""
    return Neighbours(6, fails, percent)


def chosen_neighbours(choose: Callable[[List[int]], Any], fails: int = 0) -> Neighbours:
    """Those at the positions that a function returns, which is handed the values of the best solution."""
    return Neighbours(HOST_NEIGHBOURS, fails, 0, choose)


class Phase(NamedTuple):
    """Variables to be labelled after the others, in an order of their own; order and value are constants."""

    vars: Sequence[IntVar]
    order: Order = input_order
    value: Value = min_value


class TaskOrder(NamedTuple):
    """Which of two tasks on a machine comes first, by a truth value and either_before(); machines have any numbers."""

    first: Any
    start: Any
    duration: Any
    other_start: Any
    other_duration: Any
    machine: int = 0


class Orders(NamedTuple):
    """Orders of tasks, labelled after the variables and before the phases."""

    tasks: Sequence[TaskOrder] = ()
    order: Order = slack_wdeg
    value: Value = slack_value


@dataclass
class Search:
    """What a search is to do: the arguments of Model.solve, minimize, maximize and solutions."""

    vars: Optional[Sequence[Any]] = None  #: to be labelled; None, and no orders: all that the model has made
    order: Union[Order, Callable[[List[IntVar]], int]] = input_order
    value: Union[Value, Callable[[IntVar], Any]] = min_value
    orders: Orders = Orders()
    then: Sequence[Phase] = ()
    value_by_value: bool = False  #: after a fail the next value of the same variable, and nothing imposed
    restart: Restart = Restart()
    neighbours: Neighbours = Neighbours()
    last_conflict: bool = False
    random_ties: bool = False
    guided: bool = False  #: the value of the last solution before all others
    seed: int = 0
    seconds: float = 0  #: limits; 0: none
    fails: int = 0
    choice_points: int = 0
    solutions: int = 0
    memory: int = 0
    found: Optional[Callable[[Any], Any]] = None  #: called with each solution of solve, minimize and maximize
    progress: Optional[Callable[[Any], Any]] = None  #: called with statistics at each solution, and as often as
    progress_seconds: float = 0  #: this says; it stops the search by returning False
    objective: Tuple[int, int] = field(default=(0, 0), repr=False)  # pointers: to be minimized, to be maximized

    def preferred(self) -> Sequence[int]:
        return self.value.preferred if isinstance(self.value, Value) else ()

    def options(self, callbacks: Tuple[Any, Any, Any, Any]) -> SearchOptions:
        """The options as the library takes them. Without a progress function there is one all the same, which lets the
        interpreter look for signals."""
        o = SearchOptions()
        o.chooseVariable, o.chooseValue, o.chooseRelaxed, o.progress = callbacks
        o.order = self.order.kind if isinstance(self.order, Order) else HOST_ORDER
        o.value = self.value.kind if isinstance(self.value, Value) else HOST_VALUE
        o.branching = 1 if self.value_by_value else 0
        o.lastConflict, o.randomTies = self.last_conflict, self.random_ties
        o.guided = self.guided or len(self.preferred()) > 0
        o.seed = self.seed
        o.minimize, o.maximize = (pointer or None for pointer in self.objective)
        o.restarts, o.restartFails, o.restartGrowth = map(as_int, self.restart)
        o.neighbours, o.neighbourFails, o.relaxed = map(as_int, self.neighbours[:3])
        o.milliseconds = milliseconds(self.seconds)
        o.fails, o.choicePoints, o.solutions, o.memory = self.fails, self.choice_points, self.solutions, self.memory
        own = self.progress is not None and self.progress_seconds > 0
        o.progressMilliseconds = min(milliseconds(self.progress_seconds), 100) if own else 100
        return o


def milliseconds(seconds: float) -> int:
    """Rounded up: a limit that is small is still one."""
    if not -1e15 < seconds < 1e15:
        raise ValueError("koru: a time that is no number of seconds")
    return math.ceil(seconds * 1000)
