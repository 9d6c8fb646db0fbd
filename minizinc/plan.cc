// SPDX-License-Identifier: MIT
#include "minizinc/plan.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdio>

namespace koru::fzn {

namespace {

struct OrderName {
  std::string_view name;
  int order;
  OwnOrder own = OwnOrder::kNone;
};
constexpr OrderName kOrders[] = {
    {"input_order", CS_ORDER_INPUT},
    {"first_fail", CS_ORDER_SMALLEST},
    {"anti_first_fail", CS_ORDER_LARGEST},
    {"smallest", CS_ORDER_SMALLEST_MIN},
    {"largest", CS_ORDER_LARGEST_MAX},
    {"occurrence", CS_ORDER_MOST_CONSTRAINED},
    {"most_constrained", CS_ORDER_HOST, OwnOrder::kSmallestMostConstrained},
    {"max_regret", CS_ORDER_REGRET},
    {"dom_w_deg", CS_ORDER_DOM_WDEG},
    {"impact", CS_ORDER_ACTIVITY},
    {"activity", CS_ORDER_ACTIVITY},
};

struct ValueName {
  std::string_view name;
  int value;
  OwnValue own = OwnValue::kNone;
};
constexpr ValueName kValues[] = {
    {"indomain", CS_VALUE_MIN},
    {"indomain_min", CS_VALUE_MIN},
    {"indomain_max", CS_VALUE_MAX},
    {"indomain_middle", CS_VALUE_MIDDLE},
    {"indomain_median", CS_VALUE_MEDIAN},
    {"indomain_random", CS_VALUE_RANDOM},
    {"indomain_split", CS_VALUE_LOW_HALF},
    {"indomain_interval", CS_VALUE_LOW_HALF},
    {"indomain_reverse_split", CS_VALUE_HIGH_HALF},
    {"indomain_split_random", CS_VALUE_HOST, OwnValue::kRandomHalf},
    {"outdomain_min", CS_VALUE_HOST, OwnValue::kNotMin},
    {"outdomain_max", CS_VALUE_HOST, OwnValue::kNotMax},
};

class Reader {
 public:
  Reader(const Syntax &syntax, Variables &variables, bool verbose, Plan &plan)
      : s_(syntax), variables_(variables), verbose_(verbose), plan_(plan) {}

  void read(const Expr &e) {
    if (e.kind == Kind::kArray) return readAll(s_.list(e.part));
    if (e.kind != Kind::kCall && e.kind != Kind::kName) return;
    const std::string_view name = s_.name(e.at);
    const std::span<const Expr> arguments = e.kind == Kind::kCall ? s_.list(e.part) : std::span<const Expr>();
    if (name == "seq_search" || name == "warm_start_array")
      readAll(arguments);
    else if (name == "int_search" || name == "bool_search")
      readSearch(arguments, e);
    else if (name.starts_with("warm_start"))
      readHints(arguments);
    else if (name == "relax_and_reconstruct" && arguments.size() == 2)
      readRelaxed(arguments);
    else if (!readRestart(name, arguments))
      ignore(e);
  }

 private:
  void readAll(std::span<const Expr> all) {
    for (const Expr &e : all) read(e);
  }

  void ignore(const Expr &e) {
    if (!verbose_) return;
    Mistake place;
    place.set(e.at, "the annotation \"" + std::string(s_.name(e.at)) + "\" is ignored");
    std::fprintf(stderr, "%s\n", describe(s_, place).c_str());
  }

  // Those that are not fixed.
  Array arrayOf(const Expr &e) {
    Array array;
    const Expr end = variables_.follow(e);
    if (end.kind != Kind::kArray) return array;
    for (const Expr &inner : s_.list(end.part)) {
      if (variables_.follow(inner).kind != Kind::kDeclared) continue;
      const Operand o = variables_.operand(inner);
      if (!o.isConstant) array.push_back(variables_.get(o));
    }
    return array;
  }

  void readSearch(std::span<const Expr> arguments, const Expr &whole) {
    if (arguments.size() < 3) return ignore(whole);
    Phase phase;
    phase.variables = arrayOf(arguments[0]);
    bool known = false;
    for (const OrderName &o : kOrders) {
      if (!isName(arguments[1], o.name)) continue;
      phase.order = o.order;
      phase.ownOrder = o.own;
      known = true;
    }
    if (!known) ignore(arguments[1]);
    known = false;
    for (const ValueName &v : kValues) {
      if (!isName(arguments[2], v.name)) continue;
      phase.value = v.value;
      phase.ownValue = v.own;
      known = true;
    }
    if (!known) ignore(arguments[2]);
    if (!phase.variables.empty()) plan_.phases.push_back(std::move(phase));
  }

  bool isName(const Expr &e, std::string_view name) const { return s_.name(e.at) == name; }

  void readHints(std::span<const Expr> arguments) {
    if (arguments.size() != 2) return;
    const Expr to = variables_.follow(arguments[0]), values = variables_.follow(arguments[1]);
    if (to.kind != Kind::kArray || values.kind != Kind::kArray) return;
    for (std::size_t i = 0; i < std::min(to.part.count, values.part.count); ++i) {
      const Expr v = variables_.follow(s_.list(to.part)[i]), value = variables_.follow(s_.list(values.part)[i]);
      if (v.kind != Kind::kDeclared || (value.kind != Kind::kInt && value.kind != Kind::kBool)) continue;
      if (value.number < INT_MIN || value.number > INT_MAX) continue;
      const Operand o = variables_.operand(v);
      if (!o.isConstant) plan_.hints[variables_.get(o)] = static_cast<int>(value.number);
    }
  }

  void readRelaxed(std::span<const Expr> arguments) {
    plan_.relaxed = arrayOf(arguments[0]);
    plan_.kept = static_cast<int>(std::clamp(numberOf(arguments[1]), 0.0, 100.0));
  }

  double numberOf(const Expr &e) const {
    const Expr end = variables_.follow(e);
    if (end.kind == Kind::kInt) return static_cast<double>(end.number);
    double number = 0;
    if (end.kind == Kind::kFloat) std::from_chars(s_.text.data() + end.at, s_.text.data() + s_.text.size(), number);
    return number;
  }

  static int limit(double number) { return static_cast<int>(std::clamp(number, 1.0, 1e9)); }

  bool readRestart(std::string_view name, std::span<const Expr> arguments) {
    if (name == "restart_none") {
      plan_.restarts = CS_RESTARTS_NONE;
    } else if (name == "restart_luby" && arguments.size() == 1) {
      plan_.restarts = CS_RESTARTS_LUBY;
      plan_.restartFails = limit(numberOf(arguments[0]));
    } else if (name == "restart_geometric" && arguments.size() == 2) {
      plan_.restarts = CS_RESTARTS_GEOMETRIC;
      plan_.restartGrowth = limit(numberOf(arguments[0]) * 100 - 100);
      plan_.restartFails = limit(numberOf(arguments[1]));
    } else if ((name == "restart_constant" || name == "restart_linear") && arguments.size() == 1) {
      plan_.restarts = name == "restart_constant" ? CS_RESTARTS_CONSTANT : CS_RESTARTS_GEOMETRIC;
      plan_.restartFails = limit(numberOf(arguments[0]));
    } else {
      return false;
    }
    return true;
  }

  const Syntax &s_;
  Variables &variables_;
  bool verbose_;
  Plan &plan_;
};

}  // namespace

Plan readPlan(const Syntax &syntax, Variables &variables, bool verbose) {
  Plan plan;
  Reader reader(syntax, variables, verbose, plan);
  for (const Expr &e : syntax.list(syntax.solve.annotations)) reader.read(e);
  return plan;
}

}  // namespace koru::fzn
