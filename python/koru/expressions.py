# SPDX-License-Identifier: MIT
"""Sums and conditions. Both are only written down here; posting.py says them to the solver."""
from __future__ import annotations

import operator
from typing import Any, Callable, Iterable, List, Optional, Sequence, Tuple

from .state import as_int, int_list, same_size

EQ, NEQ, LE, LT, GE, GT = range(6)  # CS_METHOD_...
OPPOSITE = (NEQ, EQ, GT, GE, LT, LE)
MIRROR = (EQ, NEQ, GE, GT, LE, LT)
COMPARE: Tuple[Callable[[Any, Any], bool], ...] = (operator.eq, operator.ne, operator.le, operator.lt, operator.ge,
                                                   operator.gt)


def is_array(value: Any) -> bool:
    """Is it an array of numpy's? (Its scalars are numbers.)"""
    return hasattr(value, "ravel") and hasattr(value, "dtype") and getattr(value, "shape", ()) != ()


def _operator(method: Callable[[Any, Any], Any]) -> Callable[[Any, Any], Any]:
    """A binary operator that goes through an array of numpy's by element, and is not implemented for what is neither
    an expression nor a number."""

    def apply(self: Any, other: Any) -> Any:
        if is_array(other):
            import numpy

            return numpy.frompyfunc(lambda element: apply(self, element), 1, 1)(other)
        if not isinstance(other, Operand):
            try:
                operator.index(other)
            except TypeError:
                return NotImplemented
        return method(self, other)

    return apply


class Operand:
    """What stands in expressions: a variable, a sum, or a condition, which counts as 1 when it holds and 0 when not."""

    __slots__ = ()
    __array_ufunc__ = None  # numpy leaves operators to this class
    __hash__ = object.__hash__

    def linear(self) -> Linear:
        raise NotImplementedError

    __add__ = __radd__ = _operator(lambda self, other: self.linear().plus(linear(other), 1))
    __sub__ = _operator(lambda self, other: self.linear().plus(linear(other), -1))
    __rsub__ = _operator(lambda self, other: linear(other).plus(self.linear(), -1))

    def __neg__(self) -> Linear:
        return self.linear().times(-1)

    def __pos__(self) -> Linear:
        return self.linear()

    def _times(self, factor: Any) -> Linear:
        if isinstance(factor, Operand):
            raise TypeError("koru: products of variables are variables: model.product(x, y)")
        return self.linear().times(operator.index(factor))

    __mul__ = __rmul__ = _operator(_times)

    __lt__ = _operator(lambda self, other: compare(self, LT, other))
    __le__ = _operator(lambda self, other: compare(self, LE, other))
    __gt__ = _operator(lambda self, other: compare(self, GT, other))
    __ge__ = _operator(lambda self, other: compare(self, GE, other))
    __eq__ = _operator(lambda self, other: _equal(self, other))
    __ne__ = _operator(lambda self, other: _differ(self, other))

    # As conditions; of a variable: it is 1 or more.

    def __invert__(self) -> Condition:
        return ~condition(self)

    def __and__(self, other: Any) -> Condition:
        return _joined("all", self, other)

    def __or__(self, other: Any) -> Condition:
        return _joined("any", self, other)

    def __rshift__(self, other: Any) -> Condition:
        """It implies the other one."""
        return _joined("any", ~condition(self), other)

    def __rand__(self, other: Any) -> Condition:
        return _joined("all", other, self)

    def __ror__(self, other: Any) -> Condition:
        return _joined("any", other, self)

    def __rrshift__(self, other: Any) -> Condition:
        return _joined("any", ~condition(other), self)

    def __bool__(self) -> bool:
        raise TypeError("koru: what has no truth value until it is solved; conditions are joined by &, |, ~ and >>, "
                        "and comparisons are not chained")


class Linear(Operand):
    """A sum: coefficients with variables or conditions, and a constant. Made by writing it down: 2 * x + y - 3."""

    __slots__ = ("terms", "constant")

    def __init__(self, terms: Sequence[Tuple[int, Operand]] = (), constant: int = 0) -> None:
        self.terms = terms
        self.constant = constant

    def linear(self) -> Linear:
        return self

    @property
    def is_variable(self) -> bool:
        """Is it a variable, or a condition, and nothing else?"""
        return len(self.terms) == 1 and self.terms[0][0] == 1 and self.constant == 0

    def plus(self, other: Linear, factor: int) -> Linear:
        more = other.terms if factor == 1 else [(factor * c, v) for c, v in other.terms]
        return Linear([*self.terms, *more], self.constant + factor * other.constant)

    def times(self, factor: int) -> Linear:
        return Linear([(factor * c, v) for c, v in self.terms], factor * self.constant)

    def __repr__(self) -> str:
        text = ""
        for c, v in self.terms:
            sign = ("-" if c < 0 else "") if not text else " - " if c < 0 else " + "
            text += sign + ("" if abs(c) == 1 else f"{abs(c)} * ") + brief(v)
        if self.constant or not text:
            text += f" {'-' if self.constant < 0 else '+'} {abs(self.constant)}" if text else str(self.constant)
        return text


def brief(operand: Any) -> str:
    """An operand within an expression: a variable by its name."""
    if isinstance(operand, Linear) and operand.is_variable:
        return brief(operand.terms[0][1])
    name = getattr(operand, "name", "")
    return name if isinstance(name, str) and name else "?" if hasattr(operand, "pointer") else f"({operand!r})"


class Condition(Operand):
    """What holds or does not: a comparison, a truth value, or conditions joined by & (and), | (or), ~ (not),
    >> (implies), == and !=. Mind the brackets: (x == 1) | (y < 3)."""

    __slots__ = ("kind", "sum", "relation", "values", "parts", "negated")

    def __init__(self, kind: str, total: Optional[Linear] = None, relation: int = EQ, values: Sequence[int] = (),
                 parts: Sequence[Condition] = (), negated: bool = False) -> None:
        self.kind = kind  # compare, truth, one_of, between; all, any, same of parts
        self.sum = total if total is not None else Linear()
        self.relation = relation
        self.values = values
        self.parts = parts
        self.negated = negated  # of truth, one_of and between; the others turn it inwards

    @property
    def leaf(self) -> bool:
        return self.kind not in ("all", "any", "same")

    def linear(self) -> Linear:
        return Linear([(1, self)])

    def __invert__(self) -> Condition:
        if self.kind == "compare":
            return Condition("compare", self.sum, OPPOSITE[self.relation])
        if self.kind in ("all", "any"):
            return Condition("any" if self.kind == "all" else "all", parts=[~part for part in self.parts])
        if self.kind == "same":
            return Condition("same", parts=[~self.parts[0], self.parts[1]])
        return Condition(self.kind, self.sum, values=self.values, negated=not self.negated)

    def __repr__(self) -> str:
        if self.kind == "compare":
            return f"{Linear(self.sum.terms)!r} {('==', '!=', '<=', '<', '>=', '>')[self.relation]} {-self.sum.constant}"
        if self.kind == "truth":
            return ("~" if self.negated else "") + brief(self.sum)
        if self.leaf:
            inside = list(self.values) if self.kind == "one_of" else "{}..{}".format(*self.values)
            return f"{brief(self.sum)} {'not ' if self.negated else ''}in {inside}"
        if self.kind == "same":
            return " == ".join(f"({part!r})" for part in self.parts)
        return (" & " if self.kind == "all" else " | ").join(f"({part!r})" for part in self.parts) or str(self.kind ==
                                                                                                          "all")


def linear(value: Any) -> Linear:
    return value.linear() if isinstance(value, Operand) else Linear((), operator.index(value))


def condition(value: Any) -> Condition:
    """A condition, the truth value that a variable is, or True or False."""
    if isinstance(value, Condition):
        return value
    if isinstance(value, bool) or type(value).__name__ in ("bool_", "bool"):
        return Condition("all" if value else "any")
    if hasattr(value, "pointer"):
        return Condition("truth", value.linear())
    raise TypeError(f"koru: no condition: {value!r} (comparisons want brackets: (x == 1) | (y == 2))")


def compare(a: Any, relation: int, b: Any) -> Condition:
    return Condition("compare", linear(a).plus(linear(b), -1), relation)


def _same(a: Condition, b: Condition) -> Condition:
    return Condition("same", parts=[a, b])


def _about_truth(a: Any, b: Any) -> bool:
    """Is one of the two a condition, and the other one too, or a variable that tells it?"""
    return (isinstance(a, Condition) or isinstance(b, Condition)) and not any(
        isinstance(v, Linear) or (isinstance(v, int) and not isinstance(v, bool)) for v in (a, b))


def _equal(a: Any, b: Any) -> Condition:
    return _same(condition(a), condition(b)) if _about_truth(a, b) else compare(a, EQ, b)


def _differ(a: Any, b: Any) -> Condition:
    return _same(~condition(a), condition(b)) if _about_truth(a, b) else compare(a, NEQ, b)


def _joined(kind: str, *conditions: Any) -> Condition:
    parts: List[Condition] = []
    for part in map(condition, conditions):
        parts.extend(part.parts if part.kind == kind else [part])
    return Condition(kind, parts=parts)


def all_of(conditions: Iterable[Any]) -> Condition:
    """All of the conditions hold; of none, it is true."""
    return _joined("all", *conditions)


def any_of(conditions: Iterable[Any]) -> Condition:
    """One of the conditions holds, or several; of none, it is false."""
    return _joined("any", *conditions)


def one_of(x: Any, values: Iterable[int]) -> Condition:
    """The variable takes one of the values."""
    return Condition("one_of", x.linear(), values=int_list(values))


def between(x: Any, low: int, high: int) -> Condition:
    """The variable lies between the two."""
    return Condition("between", x.linear(), values=[as_int(low), as_int(high)])


def sum(*arguments: Any) -> Linear:  # noqa: A001 - the same word as in C++
    """sum(vars), or sum(weights, vars): weights[0] * vars[0] + ... In one step, whatever their number.

    >>> import koru
    >>> m = koru.Model()
    >>> x = m.ints(3, 0, 9, "x")
    >>> koru.sum([1, -2, 5], x) + 4
    x[0] - 2 * x[1] + 5 * x[2] + 4
    """
    if not 1 <= len(arguments) <= 2:
        raise TypeError("koru.sum takes variables, or weights and variables")
    operands = list(arguments[-1].ravel() if is_array(arguments[-1]) else arguments[-1])
    weights = [1] * len(operands)
    if len(arguments) == 2:
        weights = [operator.index(w) for w in (arguments[0].ravel() if is_array(arguments[0]) else arguments[0])]
    same_size(weights, operands)
    terms: List[Tuple[int, Operand]] = []
    constant = 0
    for weight, operand in zip(weights, map(linear, operands)):
        terms.extend((weight * c, v) for c, v in operand.terms)
        constant += weight * operand.constant
    return Linear(terms, constant)
