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

Case add() {
  return {"Add",
          {"cs_Add"},
          {passingHoles(function(
              "cs_Add", 2, [](Values t) { return Wide{t[0]} + t[1]; }, [](CSint **x) { return cs_Add(x[0], x[1]); }))},
          {{-2, 4}},
          500,
          {},
          {},
          Room{-4, 8}};
}

// With the same variable twice, it is heard as what is taken away, and not as what that is taken from.
Case sub() {
  Constraint c = passingHoles(function(
      "cs_Sub", 2, [](Values t) { return Wide{t[0]} - t[1]; }, [](CSint **x) { return cs_Sub(x[0], x[1]); }));
  c.alsoShared = false;
  return {"Sub", {"cs_Sub"}, {c}, {{-2, 4}}, 500, {}, {}, Room{-4, 8}};
}

// Bounds: a value that a bound of x moves past stays in the result.
Case abs() {
  const Constraint c = function(
      "cs_Abs", 1, [](Values t) { return Wide{std::abs(t[0])}; }, [](CSint **x) { return cs_Abs(x[0]); });
  return {"Abs", {"cs_Abs"}, {with(c, Strength::kBounds)}, {{-3, 7}}, 127, {2, 4, 4}, {}, Room{-8, 15}};
}

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
Constraint cornered(Constraint c, std::size_t p, std::size_t a, std::size_t b) {
  c.supported = [=](const Left &left, std::size_t column, int value) {
    return productSupports(left, p, a, b, column, value);
  };
  return with(c, Strength::kKnown);
}

Case mul() {
  const Constraint c = function(
      "cs_Mul", 2, [](Values t) { return Wide{t[0]} * t[1]; }, [](CSint **x) { return cs_Mul(x[0], x[1]); });
  return {"Mul", {"cs_Mul"}, {cornered(c, 2, 0, 1)}, {{-2, 5}}, 300};
}

Wide product(Values t) {
  Wide result = 1;
  for (const int factor : t) result *= factor;
  return result;
}

Case vMul() {
  const auto form = [](int n, MakeResult post) {
    return function("cs_VMul " + std::to_string(n), n, product, std::move(post));
  };
  return {
      "VMul",
      {"cs_VMul"},
      {form(1, [](CSint **x) { return cs_VMul(1, x[0]); }), form(2, [](CSint **x) { return cs_VMul(2, x[0], x[1]); }),
       form(3, [](CSint **x) { return cs_VMul(3, x[0], x[1], x[2]); })},
      {{-1, 4}},
      200};
}

// The quotient may range over all ints, where holes would cost half a gigabyte: it is tied to one more variable by
// bounds. x / y = z is x = z * y, and (x / y1) / y2 = z is x = z * y2 * y1.
Constraint quotient(const std::string &name, int n, MakeResult divide) {
  return relation(
      name, n + 1, [](Values t) { return t[0] == product(t.subspan(1)); },
      [divide = std::move(divide), n](CSint **x) {
        CSint *z = divide(x);
        return z != nullptr && cs_Le(z, x[n]) && cs_Ge(z, x[n]);
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
  Constraint c = quotient("cs_Div", 2, [](CSint **x) { return cs_Div(x[0], x[1]); });
  c.strength = onceOthersMoved;
  return {"Div", {"cs_Div"}, {c}, {{-4, 8}, {-2, 5}, {-2, 4}}, 300};
}

Case vDiv() {
  return {"VDiv",
          {"cs_VDiv"},
          {quotient("cs_VDiv 2", 2, [](CSint **x) { return cs_VDiv(2, x[0], x[1]); }),
           quotient("cs_VDiv 3", 3, [](CSint **x) { return cs_VDiv(3, x[0], x[1], x[2]); })},
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
