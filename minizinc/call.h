// SPDX-License-Identifier: MIT
// A constraint of the file on its way to the solver: its arguments, read as what they are to be, and its truth value.
#ifndef KORU_MINIZINC_CALL_H
#define KORU_MINIZINC_CALL_H

#include <deque>

#include "minizinc/variables.h"

namespace koru::fzn {

// What a constraint is to do with its statement, once a truth value that is known is taken into account.
enum class Tie : std::uint8_t {
  kHolds,    // state it
  kFails,    // state its opposite
  kNothing,  // nothing follows
  kIff,      // the truth value is true exactly when it holds
  kIf        // when the truth value is true, it holds
};

// What the name of a constraint ends in: nothing, _reif or _imp.
enum class Form : std::uint8_t { kPlain, kReif, kImp };

using Array = std::vector<CSint *>;

class Call {
 public:
  Call(const Syntax &syntax, Variables &variables, std::deque<Array> &kept, Mistake &mistake, const Constraint &c,
       Form form);

  // --- Arguments, by position; their kinds have been checked ---
  Operand operand(std::size_t i) const { return variables.operand(arguments[i]); }
  long long constant(std::size_t i) const { return operand(i).value; }
  CSint *variable(std::size_t i) const { return variables.get(operand(i)); }
  std::span<const Expr> list(std::size_t i) const;
  std::vector<Operand> operands(std::size_t i) const;
  std::vector<long long> constants(std::size_t i) const;
  Array array(std::size_t i) const;
  IntSet set(std::size_t i) const { return setOf(syntax, variables.follow(arguments[i])); }
  std::vector<IntSet> sets(std::size_t i) const;

  // Constants as ints. Where one does not fit, a mistake is noted.
  std::vector<int> ints(std::size_t i) const;
  int intAt(std::size_t i) const;

  // --- The truth value, which is the last argument of _reif and _imp ---
  Tie tie() const;
  CSint *truth() const { return variables.get(operand(arguments.size() - 1)); }

  // --- Results ---
  // The argument at `i` is what `result` is: it becomes that variable, or equal to it. False when that fails.
  bool define(std::size_t i, CSint *result) const;
  // Whether the variable at `i` can become the result of a function.
  bool canDefine(std::size_t i) const;

  bool hasAnnotation(std::string_view name) const { return syntax.find(constraint.annotations, name) != nullptr; }
  bool refuse(std::string message) const;  // a mistake at this constraint; false
  // An array for functions that keep it.
  Array &keep(Array array) const { return kept.emplace_back(std::move(array)); }

  const Syntax &syntax;
  Variables &variables;
  std::deque<Array> &kept;
  Mistake &mistake;
  const Constraint &constraint;
  Form form;
  std::span<const Expr> arguments;
};

inline int sizeOf(const Array &array) { return static_cast<int>(array.size()); }

// The sum of two numbers; false when it leaves 64 bits.
inline bool addTo(long long &sum, long long term) { return !__builtin_add_overflow(sum, term, &sum); }

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_CALL_H
