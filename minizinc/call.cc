// SPDX-License-Identifier: MIT
#include "minizinc/call.h"

#include <climits>

namespace koru::fzn {

Call::Call(const Syntax &syntax_, Variables &variables_, std::deque<Array> &kept_, Mistake &mistake_,
           const Constraint &c, Form form_)
    : syntax(syntax_),
      variables(variables_),
      kept(kept_),
      mistake(mistake_),
      constraint(c),
      form(form_),
      arguments(syntax_.list(c.arguments)) {}

std::span<const Expr> Call::list(std::size_t i) const { return syntax.list(variables.follow(arguments[i]).part); }

std::vector<Operand> Call::operands(std::size_t i) const {
  std::vector<Operand> all;
  all.reserve(list(i).size());
  for (const Expr &e : list(i)) all.push_back(variables.operand(e));
  return all;
}

std::vector<long long> Call::constants(std::size_t i) const {
  std::vector<long long> all;
  all.reserve(list(i).size());
  for (const Expr &e : list(i)) all.push_back(variables.operand(e).value);
  return all;
}

Array Call::array(std::size_t i) const {
  Array all;
  all.reserve(list(i).size());
  for (const Expr &e : list(i)) all.push_back(variables.get(variables.operand(e)));
  return all;
}

std::vector<IntSet> Call::sets(std::size_t i) const {
  std::vector<IntSet> all;
  for (const Expr &e : list(i)) all.push_back(setOf(syntax, variables.follow(e)));
  return all;
}

std::vector<int> Call::ints(std::size_t i) const {
  std::vector<int> all;
  all.reserve(list(i).size());
  for (const long long value : constants(i)) {
    if (value < INT_MIN || value > INT_MAX)
      refuse("a number beyond 32 bits, which \"" + std::string(syntax.name(constraint.at)) + "\" does not take");
    all.push_back(static_cast<int>(value));
  }
  return all;
}

int Call::intAt(std::size_t i) const {
  const long long value = constant(i);
  if (value < INT_MIN || value > INT_MAX)
    refuse("a number beyond 32 bits, which \"" + std::string(syntax.name(constraint.at)) + "\" does not take");
  return static_cast<int>(value);
}

Tie Call::tie() const {
  if (form == Form::kPlain) return Tie::kHolds;
  const Operand truth = operand(arguments.size() - 1);
  if (!truth.isConstant) return form == Form::kReif ? Tie::kIff : Tie::kIf;
  if (truth.value != 0) return Tie::kHolds;
  return form == Form::kReif ? Tie::kFails : Tie::kNothing;
}

bool Call::canDefine(std::size_t i) const {
  const Operand result = operand(i);
  return !result.isConstant && !variables.isMade(result.variable);
}

bool Call::define(std::size_t i, CSint *result) const {
  if (canDefine(i)) return variables.define(operand(i).variable, result);
  return cs_Eq(variable(i), result);
}

bool Call::refuse(std::string message) const {
  mistake.set(constraint.at, std::move(message));
  return false;
}

}  // namespace koru::fzn
