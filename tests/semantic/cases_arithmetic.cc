// SPDX-License-Identifier: MIT
// Sums and differences of two, absolute values, products and exact quotients.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

// Bounds; with an operand that is bound from the start, each value.
Constraint passingHoles(Constraint c) {
  c.strength = [](const Left &left, std::size_t) {
    const Left posted = left.posted();
    return posted.isBound(0) || posted.isBound(1) ? Strength::kDomain : Strength::kBounds;
  };
  return c;
}

Case add() { return {"Add", {"cs_Add"}, {passingHoles(stated("cs_Add"))}, {{-2, 4}}, 500, {}, {}, Room{-4, 8}}; }

// With the same variable twice, it is heard as what is taken away, and not as what that is taken from.
Case sub() {
  Constraint c = passingHoles(stated("cs_Sub"));
  c.alsoShared = false;
  return {"Sub", {"cs_Sub"}, {c}, {{-2, 4}}, 500, {}, {}, Room{-4, 8}};
}

// Bounds: a value that a bound of x moves past stays in the result.
Case abs() { return {"Abs", {"cs_Abs"}, {stated("cs_Abs")}, {{-3, 7}}, 127, {2, 4, 4}, {}, Room{-8, 15}}; }

// A bound of the product must lie between the least and the greatest product; one of a factor between the least and
// the greatest quotient, when the other factor cannot be 0.
bool productSupports(const Left &left, std::size_t p, std::size_t a, std::size_t b, std::size_t column, int value) {
  if (value != left.min(column) && value != left.max(column)) return true;
  const std::size_t other = column == a ? b : a;
  const Wide low = left.min(other);
  const Wide high = left.max(other);
  if (column == p) {
    const Wide corners[] = {low * left.min(b), low * left.max(b), high * left.min(b), high * left.max(b)};
    return *std::ranges::min_element(corners) <= value && value <= *std::ranges::max_element(corners);
  }
  if (low <= 0 && high >= 0) return true;
  return std::min(low * value, high * value) <= left.max(p) && std::max(low * value, high * value) >= left.min(p);
}

// Nothing is narrowed at posting.
Case mul() {
  Constraint c = stated("cs_Mul");
  c.supported = [](const Left &left, std::size_t column, int value) {
    return productSupports(left, 2, 0, 1, column, value);
  };
  return {"Mul", {"cs_Mul"}, {c}, {{-2, 5}}, 300};
}

Case vMul() {
  return {
      "VMul", {"cs_VMul"}, {stated("cs_VMul", {1}), stated("cs_VMul", {2}), stated("cs_VMul", {3})}, {{-1, 4}}, 200};
}

// The quotient may range over all ints, where holes would cost half a gigabyte: it is tied to one more variable by
// bounds.
Constraint quotient(const Constraint &c) {
  return relation(c.name, c.arity + 1, c.solution, [post = c.post, n = c.arity](CSint **x) {
    CSint *z = nullptr;
    return post(x, z) && cs_Le(z, x[n]) && cs_Ge(z, x[n]);
  });
}

// Nothing is narrowed at posting: a variable that has moved since then narrows the two others, and not itself.
Strength onceOthersMoved(const Left &left, std::size_t column) {
  const Left posted = left.posted();
  for (std::size_t i = 0; i < left.columns(); ++i) {
    const bool moved = left.min(i) != posted.min(i) || left.max(i) != posted.max(i);
    if (i != column && moved) return Strength::kKnown;
  }
  return Strength::kNone;
}

Case div() {
  Constraint c = quotient(stated("cs_Div"));
  c.strength = onceOthersMoved;
  return {"Div", {"cs_Div"}, {c}, {{-4, 8}, {-2, 5}, {-2, 4}}, 300};
}

Case vDiv() {
  return {"VDiv",
          {"cs_VDiv"},
          {quotient(stated("cs_VDiv", {2})), quotient(stated("cs_VDiv", {3}))},
          {{-3, 8}, {-1, 4}},
          60};
}

// Results that stand in further constraints with the variables they were made of: each wakes the others.
Case nested() {
  return {"ArithmeticNested",
          {},
          {function(
               "|(|x|)| + |x|", 1, [](Values t) { return 2 * std::abs(Wide{t[0]}); },
               [](CSint **x) {
                 CSint *first = cs_Abs(cs_Abs(x[0]));
                 return cs_Add(first, cs_Abs(x[0]));
               }),
           function(
               "x + (x + y)", 2, [](Values t) { return 2 * Wide{t[0]} + t[1]; },
               [](CSint **x) { return cs_Add(x[0], cs_Add(x[0], x[1])); })},
          {{-3, 5}},
          150};
}

}  // namespace

Cases arithmeticCases() { return {add(), sub(), abs(), mul(), vMul(), div(), vDiv(), nested()}; }

}  // namespace koru::test::brute
