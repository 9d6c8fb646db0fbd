// SPDX-License-Identifier: MIT
// What a constraint is to the harness: a relation over values, written without the library, the call that posts it, and
// what it promises to remove.
//
// Columns are the positions of the call, in order, and then the result of a function. A variable that stands at several
// positions fills several columns; strength is measured as if each of them were a variable of its own, because that is
// what propagation sees, and all that it can promise.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "catalogue/form.h"
#include "semantic/harness/left.h"

namespace koru::test::brute {

using catalogue::Wide;
using Values = std::span<const int>;
using Relation = std::function<bool(Values)>;

// What is promised for a column at a node.
using Strength = catalogue::Consistency;

struct Constraint {
  std::string name;
  int arity;
  Relation solution;  // over the columns
  std::function<bool(CSint **x, CSint *&result)> post;
  // The values that the result can take beside values at the positions; null for relations.
  std::function<std::vector<int>(Values)> results = nullptr;

  std::function<Strength(const Left &, std::size_t column)> strength = nullptr;  // null: none
  // Promises of another kind: false for a value that should be gone.
  std::function<bool(const Left &, std::size_t column, int value)> supported = nullptr;
  // Values without support that are kept by design.
  std::function<bool(const Left &, std::size_t column, int value)> excused = nullptr;
  // Looks at anything else once the node has been found sound; returns what is wrong.
  std::function<std::string(const Left &)> inside = nullptr;
  // Whether the promises hold as well after several changes of which none had been heard when the next was made.
  bool alsoTogether = true;
  // And when a variable stands at several positions.
  bool alsoShared = true;
  // Assignments that are no solution and accepted by design.
  std::function<bool(const Left &)> acceptedAnyway = nullptr;
  // Whether the domains at the positions are such that the constraint can be posted; null: any.
  std::function<bool(const std::vector<std::vector<int>> &)> fits = nullptr;
};

inline Constraint relation(std::string name, int arity, Relation solution, std::function<bool(CSint **x)> post) {
  return {std::move(name), arity, std::move(solution), [post](CSint **x, CSint *&) { return post(x); }};
}

// The result is a function of the values at the positions.
inline Constraint function(std::string name, int arity, std::function<Wide(Values)> value,
                           std::function<CSint *(CSint **x)> make) {
  Constraint c{std::move(name), arity, [value](Values t) { return value(t.first(t.size() - 1)) == t.back(); },
               [make = std::move(make)](CSint **x, CSint *&result) {
                 result = make(x);
                 return result != nullptr;
               }};
  c.results = [value](Values t) { return std::vector{static_cast<int>(value(t))}; };
  return c;
}

inline Constraint with(Constraint c, Strength ofAll) {
  c.strength = [ofAll](const Left &, std::size_t) { return ofAll; };
  return c;
}

inline Constraint with(Constraint c, Strength ofVariables, Strength ofResult) {
  c.strength = [ofVariables, ofResult](const Left &left, std::size_t column) {
    return column + 1 < left.columns() ? ofVariables : ofResult;
  };
  return c;
}

// What the catalogue says of a posting. The result of a function that is stated as a relation lies where the row says.
inline Constraint constraintOf(const catalogue::Form &form) {
  const catalogue::Row &row = form.row();
  const auto n = static_cast<std::size_t>(form.arity());
  const auto solution = [form, n](Values t) { return form.holds(t.first(n), t.size() > n ? t.back() : 0); };
  const auto post = [form](CSint **x, CSint *&z) {
    return form.post(x, z) && (!form.row().postsNothing || cs_getNbConstraints(*x) == 0);
  };
  Constraint c{form.text(), static_cast<int>(n), solution, post};
  if (row.makes() && row.meaning.value != nullptr)
    c.results = [form](Values t) {
      const catalogue::Value value = form.value(t);
      return value ? std::vector{static_cast<int>(*value)} : std::vector<int>{};
    };
  else if (row.makes())
    c.results = [span = row.results](Values) {
      std::vector<int> all;
      for (int z = span.low; z <= span.high; ++z) all.push_back(z);
      return all;
    };
  c.alsoShared = row.alsoShared;
  c.alsoTogether = row.alsoTogether;
  return row.makes() ? with(std::move(c), row.consistency, row.ofResult) : with(std::move(c), row.consistency);
}

// The relation that a function's result equals one more variable, which may stand among the others too.
inline Constraint tied(const Constraint &c) {
  Constraint result =
      relation(c.name + ", tied to a variable", c.arity + 1, c.solution, [post = c.post, n = c.arity](CSint **x) {
        CSint *made = nullptr;
        return post(x, made) && cs_Eq(made, x[n]);
      });
  result.acceptedAnyway = c.acceptedAnyway;
  return result;
}

}  // namespace koru::test::brute
