# SPDX-License-Identifier: MIT
"""Models: variables, constraints and what they need, in a solver of its own."""
from __future__ import annotations

from typing import Any, Iterable, List, Optional

from . import constraints, display
from ._library import INT_MAX, INT_MIN, ints, lib
from .constraints import Constraint
from .expressions import Condition, Linear, Operand, condition, linear
from .options import Search
from .posting import Speaker
from .results import Result
from .search import Solutions
from .state import Solver, State, as_int, int_list, locate
from .variables import IntVar, added, every, flat, rows

Variables = Iterable[Any]  #: a list, an array of numpy's, ...; of variables, and ints, sums or conditions in their place


class Context:
    """What is posted within `with model.context():` is undone at its end. Contexts and searches end in the opposite
    order of their beginning."""

    def __init__(self, state: State) -> None:
        self._state = state.use()
        self._label: Optional[int] = None
        self._refused = False

    def __enter__(self) -> Context:
        self._label = lib.cs_saveContext() if self._state.use() else None
        self._state.rethrow()
        self._refused = self._state.refused
        return self

    def __exit__(self, *_: Any) -> None:
        if self._label is not None:
            self._state.use()
            lib.cs_restoreContextUntil(self._label)
            self._state.refused = self._refused

    def keep(self) -> None:
        """What was posted stays, until a context around this one ends."""
        if self._label is not None:
            self._state.use()
            lib.cs_forgetSaveContextUntil(self._label)
            self._label = None


class Model:
    """A model. It fails when a constraint is refused, and then no search finds a solution; it ends with the last of the
    handles on it and its variables.

    >>> import koru
    >>> m = koru.Model()
    >>> x = m.ints(3, 0, 9, "x")
    >>> m.post(koru.all_different(x), koru.sum(x) == 24, x[0] < x[1])
    True
    >>> [s[x] for s in m.solutions(x)]
    [[7, 8, 9], [7, 9, 8], [8, 9, 7]]
    """

    def __init__(self) -> None:
        self._state = State()

    # --- Variables ---

    def var(self, low: Any, high: Optional[int] = None, name: str = "") -> IntVar:
        """A variable over low..high; or one that equals a sum: the variable itself where the sum is one, and no name is
        given. OverflowError when the bounds of the sum are no ints."""
        state = self._state.use()
        if not isinstance(low, Operand):
            if high is None:
                raise TypeError("koru: a variable wants two bounds, or a sum")
            return self._named(state.create(as_int(low), as_int(high)), name)
        total = low.linear()
        if not name and total.is_variable and isinstance(total.terms[0][1], IntVar):
            return total.terms[0][1]
        return self._named(Speaker(state).of_sum(total, new=bool(name)), name)

    def boolean(self, name: str = "") -> IntVar:
        return self.var(0, 1, name)

    def var_of(self, values: Iterable[int], name: str = "") -> IntVar:
        """A variable over these values."""
        all_values = int_list(values)
        if not all_values:
            raise ValueError("koru: a variable without a value")
        state = self._state.use()
        pointer = lib.cs_createCSintFromDomain(ints(all_values), len(all_values))
        state.rethrow()
        return self._named(pointer, name)

    def ints(self, n: int, low: int, high: int, name: str = "") -> List[IntVar]:
        """n variables over low..high. With a name they are called name[0], name[1], ..."""
        return [self.var(low, high, f"{name}[{i}]" if name else "") for i in range(n)]

    def bools(self, n: int, name: str = "") -> List[IntVar]:
        return self.ints(n, 0, 1, name)

    def grid(self, height: int, width: int, low: int, high: int, name: str = "") -> List[List[IntVar]]:
        """A matrix of variables, as a list of rows. With a name they are called name[0, 0], name[0, 1], ..."""
        return rows([self.var(low, high, f"{name}[{i // width}, {i % width}]" if name else "")
                     for i in range(height * width)], width)

    def all(self) -> List[IntVar]:
        """All that the model has made, results included, in the order of their making."""
        return every(self._state)

    def constants(self, values: Iterable[int]) -> List[IntVar]:
        """Variables of one value. (Constraints take ints as well, and make such variables of them, each its own.)"""
        return [self.var(v, v) for v in int_list(values)]

    def reify(self, what: Any, name: str = "") -> IntVar:
        """A variable over 0..1 that is 1 exactly when the condition holds; of a truth value, the variable that it is."""
        truth = condition(what)
        if truth.kind == "truth" and not truth.negated and not name:
            return self.var(truth.sum)
        return self._named(Speaker(self._state.use()).truth(truth), name)

    # --- Variables that are results; what they are stands with the C functions named ---

    def min(self, vars: Variables) -> IntVar:
        """cs_Min."""
        return self._of_array(lib.cs_Min, vars)

    def max(self, vars: Variables) -> IntVar:
        """cs_Max."""
        return self._of_array(lib.cs_Max, vars)

    def abs(self, x: Any) -> IntVar:
        """cs_Abs."""
        return self._made(lib.cs_Abs, x)

    def product(self, x: Any, y: Any) -> IntVar:
        """cs_Mul: products beyond the ints count as the nearest int."""
        return self._made(lib.cs_Mul, x, y)

    def div(self, x: Any, y: Any) -> IntVar:
        """x / y, cut off towards 0 as in C: cs_DivTrunc."""
        x = self.var(linear(x))
        return self._given(lib.cs_DivTrunc, x, y, -_magnitude(x), _magnitude(x))

    def mod(self, x: Any, y: Any) -> IntVar:
        """The remainder of div, of the sign of x or 0: cs_Mod."""
        x = self.var(linear(x))
        return self._given(lib.cs_Mod, x, y, min(x.min, 0), max(x.max, 0))

    def pow(self, x: Any, y: Any) -> IntVar:
        """x to the power of y: cs_Pow."""
        x, y = self.var(linear(x)), self.var(linear(y))
        base = _magnitude(x)
        most = base**min(max(y.max, 0), 32) if base > 1 else 1
        return self._given(lib.cs_Pow, x, y, -most if x.min < 0 else 0, most)

    def element(self, elements: Variables, index: Any) -> IntVar:
        """elements[index], of ints or variables: cs_ElementOf, cs_VarElementOf."""
        x = flat(elements)
        if not x:
            raise ValueError("koru: an element of nothing")
        bounds = [(v.min, v.max) if isinstance(v, IntVar) else (v, v) for v in map(self._operand, x)]
        result = self.var(min(low for low, _ in bounds), max(high for _, high in bounds))
        self.post(constraints.element(x, index, result))
        return result

    def count(self, vars: Variables, value: int) -> IntVar:
        """How many of the variables take the value."""
        x = flat(vars)
        result = self.var(0, len(x))
        self.post(constraints.count(x, value).is_(result))
        return result

    def nvalues(self, vars: Variables) -> IntVar:
        """How many different values the variables take."""
        x = flat(vars)
        result = self.var(0, len(x))
        self.post(constraints.nvalues(x, result))
        return result

    # --- Constraints ---

    def post(self, *what: Any) -> bool:
        """Posts constraints and conditions, in this order, up to the first that is refused; lists are gone through.
        False when one is; failed remembers that."""
        return all(self._post(one) for one in what)

    def _post(self, what: Any) -> bool:
        if isinstance(what, Constraint):
            return what.post(self._state.use())
        if isinstance(what, (list, tuple)) or hasattr(what, "ravel") or hasattr(what, "__next__"):
            return self.post(*flat(what))
        state = self._state.use()
        return state.check(Speaker(state).post(condition(what)))

    @property
    def failed(self) -> bool:
        """Was a constraint refused? Then there is no solution, and no search finds one."""
        return bool(self._state.use() and lib.cs_getNbRefused() > 0)

    def context(self) -> Context:
        return Context(self._state)

    # --- Searching; the arguments are the fields of koru.Search ---

    def solve(self, vars: Optional[Variables] = None, **how: Any) -> Result:
        """The first solution, or as many as `solutions` says."""
        return self._run(self.solutions(vars, **how), how.get("solutions", 0) > 0)

    def minimize(self, cost: Any, vars: Optional[Variables] = None, **how: Any) -> Result:
        """The solution with the least sum. A sum that is no variable gets one, and stays a part of the model."""
        return self._run(self.solutions(vars, objective=(self._objective(cost), 0), **how), True)

    def maximize(self, gain: Any, vars: Optional[Variables] = None, **how: Any) -> Result:
        """The solution with the greatest sum."""
        return self._run(self.solutions(vars, objective=(0, self._objective(gain)), **how), True)

    def solutions(self, vars: Optional[Variables] = None, **how: Any) -> Solutions:
        """All solutions, one after the other: for s in m.solutions(x). The model stands at each; what is posted there is
        undone with the next one."""
        return Solutions(self._state, Search(None if vars is None else flat(vars), **how))

    # --- The profiler ---

    def profile(self, details: bool = False) -> None:
        """Counts what constraints do from here on; those that are posted from here on by the lines that post them. With
        details also how long it takes, how often it is in vain, and how much it narrows (cs_setProfilerDetails)."""
        state = self._state.use()
        lib.cs_setProfilerLocator(None, locate, None)
        if state.profiler is None:
            state.profiler = lib.cs_createProfiler(0)
        state.profile_details = details
        lib.cs_setProfilerDetails(state.profiler, details)
        lib.cs_enableProfiler(state.profiler)
        state.rethrow()

    def profile_report(self, path: Any) -> None:
        """Writes the report, for koru-profile."""
        state = self._state.use()
        write = lib.cs_profilerWriteDetailsFile if state.profile_details else lib.cs_profilerWriteFile
        write(state.profiler, str(path).encode())

    # --- Several models ---

    def use(self) -> None:
        """Make this the running model, for calls of the C interface."""
        self._state.use()

    def park(self) -> None:
        """Leave no model running, so that another thread may use models."""
        if Solver.running is self._state.solver:
            self._state.use().solver.park()

    def __repr__(self) -> str:
        return f"<koru model: {len(self._state.pointers)} variables{', failed' if self.failed else ''}>"

    def _repr_html_(self) -> str:
        shown = [[v.name or f"#{v.index}", v.size, v.domain_text()] for v in every(self._state)[:display.MOST_ROWS]]
        return display.table(["variable", "values", "domain"], shown, len(self._state.pointers))

    # --- Within ---

    def _named(self, pointer: Any, name: str) -> IntVar:
        v = added(self._state, pointer)
        if name:
            v.name = name
        return v

    def _objective(self, total: Any) -> int:
        return self.var(linear(total)).pointer

    def _operand(self, v: Any) -> Any:
        return self.var(v) if isinstance(v, (Linear, Condition)) else v if isinstance(v, IntVar) else as_int(v)

    def _of_array(self, function: Any, vars: Variables) -> IntVar:
        state = self._state.use()
        x = Speaker(state).pointers(vars)
        return added(state, function(state.keep(x), len(x)))

    def _made(self, function: Any, *operands: Any) -> IntVar:
        state = self._state.use()
        speaker = Speaker(state)
        return added(state, function(*[speaker.pointer(v) for v in operands]))

    def _given(self, function: Any, x: IntVar, y: Any, low: int, high: int) -> IntVar:
        result = self.var(max(low, INT_MIN), min(high, INT_MAX))
        self._post(Constraint(function.__name__, lambda s, speaker: function(speaker.pointer(x), speaker.pointer(y),
                                                                             result.pointer)))
        return result

    @staticmethod
    def _run(search: Solutions, every_one: bool) -> Result:
        found = search._how.found
        with search:
            while search.next_solution():
                if found is not None:
                    found(search.solution)
                if not every_one:
                    break
            return Result(search.status, search.solution, search.statistics, search.interrupted)


def _magnitude(x: IntVar) -> int:
    return max(x.max, -x.min, 0)
