# SPDX-License-Identifier: MIT
"""Sums and conditions said to the solver.

A comparison becomes the cheapest constraint that says it: of one variable a relation with an int, which keeps nothing;
of two with the coefficients 1 and -1 a relation of two variables; of others a linear one. What stands under "or" is tied
in half to a truth value of its own (when that is true, it holds), what stands under "same" in full. The same rules, in
the same order, as in posting.hpp: a model has the same tree in both languages.
"""
from __future__ import annotations

import ctypes
from typing import Any, Dict, Iterable, List, Optional, Tuple

from ._library import INT_MAX, INT_MIN, ints, lib, pointers
from .expressions import COMPARE, EQ, GE, GT, LE, LT, MIRROR, NEQ, Condition, Linear, Operand
from .state import State, as_int
from .variables import IntVar, flat

POST, HALF, FULL = range(3)  # for good; when b is true; b is true exactly when it holds
INT64_MIN, INT64_MAX = -(2**63), 2**63 - 1

_NAMES = ("Eq", "Neq", "Le", "Lt", "Ge", "Gt")
_WITH_VAR = [[getattr(lib, f"cs_{name}{tie}") for name in _NAMES] for tie in ("", "If", "Iff")]
_WITH_INT = [[getattr(lib, f"cs_{name.upper()}{tie}") for name in _NAMES] for tie in ("", "If", "Iff")]
_LINEAR = (lib.cs_Linear, lib.cs_LinearIf, lib.cs_LinearIff)
_MEMBER = ((lib.cs_InArray, lib.cs_InArrayIf, lib.cs_InArrayIff),
           (lib.cs_NotInArray, lib.cs_NotInArrayIf, lib.cs_NotInArrayIff))
_WITHIN = ((lib.cs_InInterval, lib.cs_InIntervalIf, lib.cs_InIntervalIff),
           (lib.cs_NotInInterval, lib.cs_NotInIntervalIf, lib.cs_NotInIntervalIff))

Literal = Tuple[int, bool]  # a truth value, and whether its opposite is meant


def _long(value: int) -> int:
    if not INT64_MIN <= value <= INT64_MAX:
        raise OverflowError("koru: a sum beyond 64 bits")
    return value


class Comparison:
    """A comparison in its simplest form: always, never, constant (x relation value), pair (x relation y), linear."""

    __slots__ = ("form", "relation", "x", "y", "value", "vars", "coefficients")

    def __init__(self, form: str, relation: int = EQ, x: int = 0, y: int = 0, value: int = 0) -> None:
        self.form = form
        self.relation = relation
        self.x = x
        self.y = y
        self.value = value
        self.vars: List[int] = []
        self.coefficients: List[int] = []


def _decided(always: bool) -> Comparison:
    return Comparison("always" if always else "never")


def _of_one(x: int, coefficient: int, relation: int, constant: int) -> Comparison:
    """coefficient * x relation constant, for a coefficient above 0, as a relation of x and an int."""
    if relation in (LT, GE):  # as the opposite of the other side
        constant -= 1
    bound = constant // coefficient
    if relation in (EQ, NEQ):
        if constant % coefficient != 0 or not INT_MIN <= bound <= INT_MAX:
            return _decided(relation == NEQ)
        return Comparison("constant", relation, x, value=bound)
    below = relation in (LE, LT)
    if not INT_MIN <= bound < INT_MAX:
        return _decided((bound >= INT_MAX) == below)
    return Comparison("constant", LE, x, value=bound) if below else Comparison("constant", GE, x, value=bound + 1)


def _of_pair(c: Comparison) -> None:
    """x - y relation value, where it is a relation of the two and nothing else."""
    if len(c.vars) != 2 or sorted(c.coefficients) != [-1, 1]:
        return
    relation = {(0, c.relation): c.relation, (-1, LE): LT, (1, GE): GT, (1, LT): LE, (-1, GT): GE}.get(
        (c.value, c.relation))
    if relation is not None:
        forwards = c.coefficients[0] == 1
        c.form, c.relation = "pair", relation
        c.x, c.y = (c.vars[0], c.vars[1]) if forwards else (c.vars[1], c.vars[0])


def _of_variables(c: Condition) -> bool:
    """Is it a comparison that can be looked at without making variables?"""
    return c.kind == "compare" and all(isinstance(v, IntVar) for _, v in c.sum.terms)


class Speaker:
    """Says conditions, in the order in which they are written, which is the order of attaching."""

    def __init__(self, state: State) -> None:
        self.state = state

    # --- Variables of what is written ---

    def pointer(self, operand: Any) -> int:
        """An operand as a variable: itself, a constant for an int, and for sums and conditions a new one."""
        if isinstance(operand, IntVar):
            if operand.state is not self.state:
                raise ValueError("koru: a variable of another model")
            return operand.pointer
        if isinstance(operand, Condition):
            return self.truth(operand)
        if isinstance(operand, Linear):
            return self.of_sum(operand)
        value = as_int(operand)  # not shared with others: linked neighbourhoods go along shared variables
        return self.state.create(value, value)

    def pointers(self, operands: Iterable[Any]) -> List[int]:
        return [self.pointer(operand) for operand in flat(operands)]

    def array(self, operands: Iterable[Any]) -> Any:
        return pointers(self.pointers(operands))

    def of_sum(self, total: Linear, new: bool = False) -> int:
        """A variable that equals a sum: the variable itself where the sum is one, unless a new one is wanted."""
        if total.is_variable and not new:
            return self.pointer(total.terms[0][1])
        low = high = total.constant
        for coefficient, operand in total.terms:
            a, b = (coefficient * bound for bound in self._bounds(operand))
            low, high = low + min(a, b), high + max(a, b)
        if low < INT_MIN or high > INT_MAX:
            raise OverflowError("koru: a sum beyond the ints")
        result = self.state.create(low, high)
        self.state.check(self._say(POST, 0, self._simplified(total, EQ, result)))
        return result

    def _bounds(self, operand: Operand) -> Tuple[int, int]:
        if isinstance(operand, Condition):
            return 0, 1
        pointer = self.pointer(operand)
        return lib.cs_getMin(pointer), lib.cs_getMax(pointer)

    # --- Comparisons ---

    def _gather(self, total: Linear, minus: Optional[int]) -> Comparison:
        """The terms by variable, in the order of writing."""
        found: Dict[int, int] = {}
        for coefficient, operand in total.terms:
            v = self.pointer(operand)
            found[v] = found.get(v, 0) + coefficient
        if minus is not None:
            found[minus] = found.get(minus, 0) - 1
        c = Comparison("linear", value=-total.constant)
        c.vars = [v for v, coefficient in found.items() if coefficient != 0]
        c.coefficients = [coefficient for coefficient in found.values() if coefficient != 0]
        return c

    def _simplified(self, total: Linear, relation: int, minus: Optional[int] = None) -> Comparison:
        """total - minus relation 0."""
        c = self._gather(total, minus)
        c.relation = relation
        if not c.vars:
            return _decided(COMPARE[relation](0, c.value))
        if len(c.vars) == 1:
            coefficient = c.coefficients[0]
            if coefficient > 0:
                return _of_one(c.vars[0], coefficient, relation, c.value)
            return _of_one(c.vars[0], -coefficient, MIRROR[relation], -c.value)
        _of_pair(c)
        return c

    @staticmethod
    def _say(mode: int, b: int, c: Comparison) -> bool:
        tie = () if mode == POST else (b,)
        if c.form == "always":
            return mode != FULL or bool(lib.cs_GE(b, 1))
        if c.form == "never":
            return mode != POST and bool(lib.cs_LE(b, 0))
        if c.form == "constant":
            return bool(_WITH_INT[mode][c.relation](*tie, c.x, c.value))
        if c.form == "pair":
            return bool(_WITH_VAR[mode][c.relation](*tie, c.x, c.y))
        coefficients = (ctypes.c_longlong * len(c.vars))(*map(_long, c.coefficients))
        return bool(_LINEAR[mode](*tie, pointers(c.vars), coefficients, len(c.vars), c.relation, _long(c.value)))

    # --- Conditions ---

    def post(self, c: Condition) -> bool:
        if c.kind == "all":
            return all(self.post(part) for part in c.parts)
        if c.kind == "any":
            return self._either(*c.parts) if len(c.parts) == 2 else self._clause(None, c, HALF)
        if c.kind == "same":
            return self._post_same(*c.parts)
        return self._leaf(POST, 0, c)

    def truth(self, c: Condition) -> int:
        """The truth value of a condition as a variable over 0..1, or the variable that it is."""
        return self._positive(self._tied(FULL, c))

    def _either(self, a: Condition, b: Condition) -> bool:
        """a or b. Where a is decided by one constraint, its opposite implies b: two constraints at most, and one
        variable."""
        if _of_variables(a) and _of_variables(b):
            first, second = self._simplified(a.sum, a.relation), self._simplified(b.sum, b.relation)
            if all(c.form == "constant" and c.relation == NEQ for c in (first, second)) and first.x != second.x:
                return bool(lib.cs_IfNeq(first.x, second.x, first.value, second.value))
        swapped = not a.leaf or (b.kind == "truth" and a.kind != b.kind)
        cause, effect = (b, a) if swapped else (a, b)
        if not cause.leaf or effect.kind == "truth":
            return self._clause_of(None, [self._tied(HALF, a), self._tied(HALF, b)], HALF)
        return self._imply(self._positive(self._tied(FULL, ~cause)), effect)

    def _post_same(self, a: Condition, b: Condition) -> bool:
        value, other = (b, a) if b.kind == "truth" else (a, b)
        if value.kind == "truth" and other.leaf:
            return self._leaf(FULL, self.of_sum(value.sum), ~other if value.negated else other)
        x = self._tied(FULL, a)
        y = self._tied(FULL, b)
        return bool(lib.cs_Eq(self._bit(x), self._bit(y)))

    def _imply(self, b: int, c: Condition) -> bool:
        """When b is true, c holds."""
        if c.leaf:
            return self._leaf(HALF, b, c)
        if c.kind == "any":
            return self._clause(b, c, HALF)
        if c.kind == "same":
            return self._clause_of(b, [self._tied(FULL, c)], HALF)
        return all(self._imply(b, part) for part in c.parts)

    def _leaf(self, mode: int, b: int, c: Condition) -> bool:
        if c.kind == "compare":
            return self._say(mode, b, self._simplified(c.sum, c.relation))
        x = self.of_sum(c.sum)
        tie = () if mode == POST else (b,)
        if c.kind == "truth":
            return self._clause_of(b if tie else None, [(x, c.negated)], mode)
        if c.kind == "one_of":
            return bool(_MEMBER[c.negated][mode](*tie, x, ints(c.values), len(c.values)))
        return bool(_WITHIN[c.negated][mode](*tie, x, *c.values))

    def _tied(self, mode: int, c: Condition) -> Literal:
        """A literal that is tied to a condition."""
        if c.kind == "truth":
            return self.of_sum(c.sum), c.negated
        if c.kind == "all" and mode == FULL:
            v, negative = self._tied(mode, ~c)
            return v, not negative
        if c.kind == "same":
            x = self._tied(FULL, c.parts[0])
            y = self._tied(FULL, c.parts[1])
            return self.state.made(lib.cs_ReifEq(self._bit(x), self._bit(y))), False
        b = self.state.create(0, 1)
        if mode == HALF:
            self.state.check(self._imply(b, c))
        else:
            self.state.check(self._leaf(mode, b, c) if c.leaf else self._clause(b, c, mode))
        return b, False

    def _clause(self, b: Optional[int], c: Condition, mode: int) -> bool:
        return self._clause_of(b, [self._tied(mode, part) for part in c.parts], mode)

    @staticmethod
    def _clause_of(b: Optional[int], literals: List[Literal], mode: int) -> bool:
        """One of the literals holds; when b is true, or exactly then. Without b, for good."""
        sides = [[v for v, negative in literals if negative == side] for side in (False, True)]
        arguments = [argument for side in sides for argument in (pointers(side), len(side))]
        if b is None:
            return bool(lib.cs_Clause(*arguments))
        return bool((lib.cs_ClauseIff if mode == FULL else lib.cs_ClauseIf)(b, *arguments))

    def _positive(self, literal: Literal) -> int:
        """A literal as a variable that is true when it is."""
        return self.state.made(lib.cs_ReifLE(literal[0], 0)) if literal[1] else literal[0]

    def _bit(self, literal: Literal) -> int:
        """The same, over 0..1."""
        v = self._positive(literal)
        bit = lib.cs_getMin(v) >= 0 and lib.cs_getMax(v) <= 1
        return v if bit else self.state.made(lib.cs_ReifGE(v, 1))
