// SPDX-License-Identifier: MIT
// Clauses, and what can be said by clauses. A bool is an int over 0..1.
#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

struct Literals {
  Array positive, negative;
  bool holds = false;  // one of them is true for good
};

// The literals that are open.
void collect(const Call &call, std::size_t i, bool sign, Literals &literals) {
  for (const Operand &o : call.operands(i)) {
    if (!o.isConstant)
      (sign ? literals.positive : literals.negative).push_back(call.variables.get(o));
    else if ((o.value != 0) == sign)
      literals.holds = true;
  }
}

bool setAll(const Array &array, int value) {
  for (CSint *v : array) {
    if (!cs_EQ(v, value)) return false;
  }
  return true;
}

bool state(Literals &l) {
  return cs_Clause(l.positive.data(), sizeOf(l.positive), l.negative.data(), sizeOf(l.negative));
}

bool postClause(const Call &call, Tie tie, Literals &l) {
  switch (tie) {
    case Tie::kHolds:
      return l.holds || state(l);
    case Tie::kFails:
      return !l.holds && setAll(l.positive, 0) && setAll(l.negative, 1);
    case Tie::kIff:
      return l.holds ? cs_EQ(call.truth(), 1)
                     : cs_ClauseIff(call.truth(), l.positive.data(), sizeOf(l.positive), l.negative.data(),
                                    sizeOf(l.negative));
    case Tie::kIf:
      return l.holds ||
             cs_ClauseIf(call.truth(), l.positive.data(), sizeOf(l.positive), l.negative.data(), sizeOf(l.negative));
    default:
      return true;
  }
}

bool clause(const Call &call) {
  Literals literals;
  collect(call, 0, true, literals);
  collect(call, 1, false, literals);
  return postClause(call, call.tie(), literals);
}

// The last argument is the truth value, whatever the name says; _imp means it in half.
Call tied(const Call &call) {
  Call other = call;
  if (other.form == Form::kPlain) other.form = Form::kReif;
  return other;
}

bool orOfArray(const Call &call) {
  const Call reified = tied(call);
  Literals literals;
  collect(reified, 0, true, literals);
  return postClause(reified, reified.tie(), literals);
}

bool orOfTwo(const Call &call) {
  const Call reified = tied(call);
  Literals literals;
  for (const std::size_t i : {0U, 1U}) {
    const Operand o = reified.operand(i);
    if (!o.isConstant) literals.positive.push_back(reified.variables.get(o));
    if (o.isConstant && o.value != 0) literals.holds = true;
  }
  return postClause(reified, reified.tie(), literals);
}

// --- Conjunctions ---

// When b is true, all are: implications, or for many terms their sum, which is one constraint.
bool impliesAll(CSint *b, Array &all) {
  if (all.size() > 3) {
    const std::vector<long long> ones(all.size(), 1);
    return cs_LinearIf(b, all.data(), ones.data(), sizeOf(all), CS_METHOD_GE, sizeOf(all));
  }
  for (CSint *v : all) {
    if (!cs_Clause(&v, 1, &b, 1)) return false;
  }
  return true;
}

bool postAnd(const Call &call, Tie tie, Array &all, bool fails) {
  switch (tie) {
    case Tie::kHolds:
      return !fails && setAll(all, 1);
    case Tie::kFails:
      return fails || cs_Clause(nullptr, 0, all.data(), sizeOf(all));
    case Tie::kNothing:
      return true;
    default:
      break;
  }
  CSint *b = call.truth();
  if (fails) return cs_EQ(b, 0);
  return impliesAll(b, all) && (tie == Tie::kIf || cs_Clause(&b, 1, all.data(), sizeOf(all)));
}

bool andOf(const Call &call, const std::vector<Operand> &operands) {
  const Call reified = tied(call);
  Array all;
  bool fails = false;
  for (const Operand &o : operands) {
    if (!o.isConstant) all.push_back(call.variables.get(o));
    if (o.isConstant && o.value == 0) fails = true;
  }
  return postAnd(reified, reified.tie(), all, fails);
}

bool andOfArray(const Call &call) { return andOf(call, call.operands(0)); }
bool andOfTwo(const Call &call) { return andOf(call, {call.operand(0), call.operand(1)}); }

// --- Parity ---

// The parity of the first ones is made a variable, one after the other.
bool exclusiveOr(const Call &call) {
  CSint *parity = call.variables.constant(0);
  for (CSint *v : call.array(0)) parity = cs_ReifNeq(parity, v);
  switch (call.tie()) {
    case Tie::kHolds:
      return cs_EQ(parity, 1);
    case Tie::kFails:
      return cs_EQ(parity, 0);
    case Tie::kIff:
      return cs_Eq(parity, call.truth());
    case Tie::kIf:
      return cs_Le(call.truth(), parity);
    default:
      return true;
  }
}

// In half: r implies what stands before it.
template <Post post>
bool inHalf(const Call &call) {
  Call half = call;
  half.form = Form::kImp;
  return post(half);
}

constexpr Row kRows[] = {
    {"bool_clause", "XX", clause, true},
    {"array_bool_or", "Xx", orOfArray},
    {"array_bool_or_imp", "Xx", inHalf<orOfArray>},
    {"array_bool_and", "Xx", andOfArray},
    {"array_bool_and_imp", "Xx", inHalf<andOfArray>},
    {"array_bool_xor", "X", exclusiveOr, true},
    {"bool_or", "xxx", orOfTwo},
    {"bool_or_imp", "xxx", inHalf<orOfTwo>},
    {"bool_and", "xxx", andOfTwo},
    {"bool_and_imp", "xxx", inHalf<andOfTwo>},
};

}  // namespace

std::span<const Row> logicRows() { return kRows; }

}  // namespace koru::fzn
