// SPDX-License-Identifier: MIT
#include "minizinc/labels.h"

#include <unordered_set>

#include "minizinc/output.h"

namespace koru::fzn {

namespace {

class Collector {
 public:
  Collector(const Syntax &syntax, Variables &variables) : s_(syntax), variables_(variables) {}

  // Those that have not been met before.
  Array notMet(const Array &array) {
    Array all;
    for (CSint *v : array) {
      if (cs_getMin(v) != cs_getMax(v) && met_.insert(v).second) all.push_back(v);
    }
    return all;
  }

  // Ints before bools, which often say something about them.
  Array shown() {
    Array all, bools;
    for (const Operand &o : outputOf(s_, variables_))
      (s_.declarations[o.variable].base == Base::kBool ? bools : all).push_back(variables_.get(o));
    all.insert(all.end(), bools.begin(), bools.end());
    return notMet(all);
  }

  // Variables of the model, or those that its compilation has introduced.
  Array others(bool introduced) {
    Array all;
    for (std::uint32_t i = 0; i < s_.declarations.size(); ++i) {
      const Declaration &d = s_.declarations[i];
      if (!d.isVar || d.isArray) continue;
      const bool made =
          s_.find(d.annotations, "var_is_introduced") != nullptr || s_.find(d.annotations, "is_defined_var") != nullptr;
      if (made != introduced) continue;
      Expr e;
      e.kind = Kind::kDeclared;
      e.number = i;
      const Operand o = variables_.operand(e);
      if (!o.isConstant) all.push_back(variables_.get(o));
    }
    return notMet(all);
  }

 private:
  const Syntax &s_;
  Variables &variables_;
  std::unordered_set<CSint *> met_;
};

void addPhase(std::vector<Phase> &phases, Array variables) {
  if (variables.empty()) return;
  Phase phase;
  phase.variables = std::move(variables);
  phase.order = CS_ORDER_DOM_WDEG;
  phases.push_back(std::move(phase));
}

Array joined(const std::vector<Array> &arrays) {
  Array all;
  for (const Array &array : arrays) all.insert(all.end(), array.begin(), array.end());
  return all;
}

// One phase of all variables, with the values of the first; none for none.
std::vector<Phase> freed(const std::vector<Phase> &phases) {
  if (phases.empty()) return {};
  Phase all = phases[0];
  all.order = CS_ORDER_DOM_WDEG;
  all.ownOrder = OwnOrder::kNone;
  for (std::size_t i = 1; i < phases.size(); ++i)
    all.variables.insert(all.variables.end(), phases[i].variables.begin(), phases[i].variables.end());
  return {all};
}

}  // namespace

Labels labelsOf(const Syntax &syntax, Variables &variables, const Plan &plan, bool several) {
  Labels labels;
  Collector collector(syntax, variables);
  labels.annotated = plan.phases;
  labels.free = freed(plan.phases);
  for (const Phase &phase : plan.phases) collector.notMet(phase.variables);
  labels.mayRepeat = several && !plan.phases.empty();
  std::vector<Array> rest;
  if (several) rest.push_back(collector.shown());
  for (const bool introduced : {false, true}) {
    const Array more = collector.others(introduced);
    if (several)
      labels.hidden.insert(labels.hidden.end(), more.begin(), more.end());
    else
      rest.push_back(more);
  }
  for (const Array &more : rest) addPhase(labels.annotated, more);
  // Without an annotation, bools that the compilation has introduced are as good a choice as any.
  if (!several && plan.phases.empty()) rest = {joined(rest)};
  for (const Array &more : rest) addPhase(labels.free, more);
  labels.joint = freed(labels.free);
  for (std::vector<Phase> *phases : {&labels.annotated, &labels.free, &labels.joint}) {
    if (phases->empty()) phases->emplace_back();
  }
  return labels;
}

}  // namespace koru::fzn
