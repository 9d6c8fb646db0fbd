// SPDX-License-Identifier: MIT
// Comparisons of two ints or bools and membership in a set, stated or tied to a truth value.
#include <climits>

#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

// With a variable or an int on the right, by CS_METHOD_...
template <class Right>
struct Comparisons {
  bool (*holds[6])(CSint *, Right);
  bool (*iff[6])(CSint *, CSint *, Right);
  bool (*onlyIf[6])(CSint *, CSint *, Right);
};
constexpr Comparisons<CSint *> kOfTwo = {{cs_Eq, cs_Neq, cs_Le, cs_Lt, cs_Ge, cs_Gt},
                                         {cs_EqIff, cs_NeqIff, cs_LeIff, cs_LtIff, cs_GeIff, cs_GtIff},
                                         {cs_EqIf, cs_NeqIf, cs_LeIf, cs_LtIf, cs_GeIf, cs_GtIf}};
constexpr Comparisons<int> kOfConstant = {{cs_EQ, cs_NEQ, cs_LE, cs_LT, cs_GE, cs_GT},
                                          {cs_EQIff, cs_NEQIff, cs_LEIff, cs_LTIff, cs_GEIff, cs_GTIff},
                                          {cs_EQIf, cs_NEQIf, cs_LEIf, cs_LTIf, cs_GEIf, cs_GTIf}};
constexpr int kOpposite[] = {CS_METHOD_NEQ, CS_METHOD_EQ, CS_METHOD_GT, CS_METHOD_GE, CS_METHOD_LT, CS_METHOD_LE};
constexpr int kTurned[] = {CS_METHOD_EQ, CS_METHOD_NEQ, CS_METHOD_GE, CS_METHOD_GT, CS_METHOD_LE, CS_METHOD_LT};

bool isTrue(int method, long long x, long long y) {
  switch (method) {
    case CS_METHOD_EQ:
      return x == y;
    case CS_METHOD_NEQ:
      return x != y;
    case CS_METHOD_LE:
      return x <= y;
    case CS_METHOD_LT:
      return x < y;
    case CS_METHOD_GE:
      return x >= y;
    default:
      return x > y;
  }
}

// A truth value that has been found out.
bool settle(const Call &call, Tie tie, bool holds) {
  switch (tie) {
    case Tie::kHolds:
      return holds;
    case Tie::kFails:
      return !holds;
    case Tie::kIff:
      return cs_EQ(call.truth(), holds ? 1 : 0);
    case Tie::kIf:
      return holds || cs_EQ(call.truth(), 0);
    default:
      return true;
  }
}

template <class Right>
bool compare(const Comparisons<Right> &to, const Call &call, Tie tie, int method, CSint *x, Right y) {
  switch (tie) {
    case Tie::kHolds:
      return to.holds[method](x, y);
    case Tie::kFails:
      return to.holds[kOpposite[method]](x, y);
    case Tie::kIff:
      return to.iff[method](call.truth(), x, y);
    case Tie::kIf:
      return to.onlyIf[method](call.truth(), x, y);
    default:
      return true;
  }
}

}  // namespace

bool compareConstant(const Call &call, Tie tie, int method, CSint *x, long long value) {
  // An int that no variable reaches is as good as the one beyond the variable's end.
  if (value < INT_MIN || value > INT_MAX) return settle(call, tie, isTrue(method, 0, value));
  return compare(kOfConstant, call, tie, method, x, static_cast<int>(value));
}

bool compareVariables(const Call &call, Tie tie, int method, CSint *x, CSint *y) {
  return compare(kOfTwo, call, tie, method, x, y);
}

namespace {

template <int method>
bool compare(const Call &call) {
  const Tie tie = call.tie();
  const Operand x = call.operand(0), y = call.operand(1);
  if (x.isConstant && y.isConstant) return settle(call, tie, isTrue(method, x.value, y.value));
  if (y.isConstant) return compareConstant(call, tie, method, call.variable(0), y.value);
  if (x.isConstant) return compareConstant(call, tie, kTurned[method], call.variable(1), x.value);
  return compareVariables(call, tie, method, call.variable(0), call.variable(1));
}

// The truth value is the third argument whatever the name: r = (x = y) and the like.
template <int method>
bool compareInto(const Call &call) {
  Call tied = call;
  tied.form = Form::kReif;
  return compare<method>(tied);
}

// --- Membership ---

std::vector<int> intsOf(const IntSet &set) {
  std::vector<int> values;
  for (const long long value : set.values) {
    if (value >= INT_MIN && value <= INT_MAX) values.push_back(static_cast<int>(value));
  }
  return values;
}

bool inRange(const Call &call, Tie tie, CSint *x, int low, int high) {
  switch (tie) {
    case Tie::kHolds:
      return cs_InInterval(x, low, high) != 0;
    case Tie::kFails:
      return cs_NotInInterval(x, low, high) != 0;
    case Tie::kIff:
      return cs_InIntervalIff(call.truth(), x, low, high);
    case Tie::kIf:
      return cs_InIntervalIf(call.truth(), x, low, high);
    default:
      return true;
  }
}

bool inValues(const Call &call, Tie tie, CSint *x, const std::vector<int> &values) {
  const int n = static_cast<int>(values.size());
  switch (tie) {
    case Tie::kHolds:
      return cs_InArray(x, values.data(), n) != 0;
    case Tie::kFails:
      return cs_NotInArray(x, values.data(), n) != 0;
    case Tie::kIff:
      return cs_InArrayIff(call.truth(), x, values.data(), n);
    case Tie::kIf:
      return cs_InArrayIf(call.truth(), x, values.data(), n);
    default:
      return true;
  }
}

bool setIn(const Call &call) {
  const Tie tie = call.tie();
  const Operand x = call.operand(0);
  const IntSet set = call.set(1);
  if (x.isConstant) return settle(call, tie, set.contains(x.value));
  if (set.low > set.high || set.low > INT_MAX || set.high < INT_MIN) return settle(call, tie, false);
  if (!set.isRange) return inValues(call, tie, call.variable(0), intsOf(set));
  const int low = static_cast<int>(std::max<long long>(set.low, INT_MIN));
  const int high = static_cast<int>(std::min<long long>(set.high, INT_MAX));
  return inRange(call, tie, call.variable(0), low, high);
}

constexpr Row kRows[] = {
    {"int_eq", "xx", compare<CS_METHOD_EQ>, true},
    {"int_ne", "xx", compare<CS_METHOD_NEQ>, true},
    {"int_le", "xx", compare<CS_METHOD_LE>, true},
    {"int_lt", "xx", compare<CS_METHOD_LT>, true},
    {"int_ge", "xx", compare<CS_METHOD_GE>, true},
    {"int_gt", "xx", compare<CS_METHOD_GT>, true},
    {"bool2int", "xx", compare<CS_METHOD_EQ>, true},
    {"bool_eq", "xx", compare<CS_METHOD_EQ>, true},
    {"bool_ne", "xx", compare<CS_METHOD_NEQ>, true},
    {"bool_not", "xx", compare<CS_METHOD_NEQ>, true},
    {"bool_le", "xx", compare<CS_METHOD_LE>, true},
    {"bool_lt", "xx", compare<CS_METHOD_LT>, true},
    {"bool_ge", "xx", compare<CS_METHOD_GE>, true},
    {"bool_gt", "xx", compare<CS_METHOD_GT>, true},
    {"bool_xor", "xx", compare<CS_METHOD_NEQ>, true},
    {"bool_xor", "xxx", compareInto<CS_METHOD_NEQ>},
    {"set_in", "xs", setIn, true},
};

}  // namespace

std::span<const Row> comparisonRows() { return kRows; }

}  // namespace koru::fzn
