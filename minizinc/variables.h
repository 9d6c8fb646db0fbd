// SPDX-License-Identifier: MIT
// The variables of a FlatZinc file and the solver's: which names are one variable, their domains, and how a variable is
// made when it is needed.
#ifndef KORU_MINIZINC_VARIABLES_H
#define KORU_MINIZINC_VARIABLES_H

#include <koru_extras.h>

#include <unordered_map>

#include "minizinc/syntax.h"

namespace koru::fzn {

// A set of ints that the file states.
struct IntSet {
  bool isRange = true;
  long long low = 1, high = 0;             // its ends; low > high when it is empty
  std::span<const long long> values = {};  // of one that is no range, ascending

  bool contains(long long value) const;
};

IntSet setOf(const Syntax &syntax, const Expr &e);

// What an int or bool expression comes down to.
struct Operand {
  bool isConstant = true;
  long long value = 0;
  std::uint32_t variable = 0;  // the declaration that stands for all that are the same variable
};

class Variables {
 public:
  Variables(const Syntax &syntax, Mistake &mistake);

  // Follows names and array accesses. What is no int or bool is a mistake; the result is 0 then.
  Operand operand(const Expr &e) const;
  // The same for sets and arrays.
  Expr follow(Expr e) const;

  // x = y from now on, for what is known before variables are made.
  void unite(const Expr &x, const Expr &y);
  // To be called when everything is united.
  void settle();
  // Whether a domain has become empty.
  bool isInconsistent() const { return inconsistent_; }

  bool isMade(std::uint32_t variable) const { return made_[variable] != nullptr; }
  // The solver's variable, which is made now if need be; null only when domains are inconsistent.
  CSint *get(const Operand &operand);
  // A constant beyond 32 bits is a mistake at the operand that was read last; the result is null then.
  CSint *constant(long long value);
  // Take `result` for a variable that is not made yet: its domain is imposed. False when that fails.
  bool define(std::uint32_t variable, CSint *result);

  // A declared domain, for estimates: its ends.
  long long low(const Operand &o) const { return o.isConstant ? o.value : low_[o.variable]; }
  long long high(const Operand &o) const { return o.isConstant ? o.value : high_[o.variable]; }

  int nbMade() const { return nbMade_; }
  int nbBools() const { return nbBools_; }

 private:
  std::uint32_t root(std::uint32_t variable) const;
  void narrow(std::uint32_t variable, long long low, long long high);
  CSint *make(std::uint32_t variable);
  bool imposeSets(std::uint32_t variable, CSint *made);
  void warnOfRange(std::uint32_t variable, const char *why);

  const Syntax &s_;
  Mistake &mistake_;
  mutable std::vector<std::uint32_t> parent_;
  std::vector<long long> low_, high_;
  std::vector<CSint *> made_;
  std::unordered_multimap<std::uint32_t, Expr> sets_;  // domains with holes
  std::unordered_map<long long, CSint *> constants_;
  mutable std::uint32_t at_ = 0;  // where the last operand stands
  bool inconsistent_ = false;
  bool hasWarned_ = false;
  int nbMade_ = 0, nbBools_ = 0;
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_VARIABLES_H
