// SPDX-License-Identifier: MIT
// Posting in four passes: names that are one variable are found, then what every constraint is, then an order in which
// a constraint that makes a variable comes before those that use it, then all are posted.
#include "minizinc/model.h"

#include <climits>
#include <unordered_set>

namespace koru::fzn {

bool Model::post(Definitions definitions) {
  definitions_ = definitions;
  posting_ = true;
  const bool posted = postAll();
  posting_ = false;
  return posted;
}

bool Model::postAll() {
  for (const Constraint &c : syntax_.constraints) {
    if (isAlias(c)) variables.unite(syntax_.list(c.arguments)[0], syntax_.list(c.arguments)[1]);
  }
  variables.settle();
  if (!look() || variables.isInconsistent()) return false;
  findDefinitions();
  if (definitions_ == Definitions::kRelations && !makeBounded()) return false;
  cs_beginPosting();
  for (const std::uint32_t number : order()) {
    if (!postOne(number)) return false;
  }
  return makeOthers() && cs_endPosting();
}

// --- Names and arguments ---

bool Model::isAlias(const Constraint &c) const {
  if (definitions_ == Definitions::kRelations || c.arguments.count != 2) return false;
  const std::string_view name = syntax_.name(c.at);
  if (name != "bool2int" && name != "int_eq" && name != "bool_eq") return false;
  const std::span<const Expr> arguments = syntax_.list(c.arguments);
  return checkArgument(arguments[0], 'x') && checkArgument(arguments[1], 'x');
}

bool Model::look() {
  if (syntax_.solve.goal != Goal::kSatisfy && !checkArgument(syntax_.solve.objective, 'x')) {
    mistake_.set(syntax_.solve.objective.at, "the objective is to be an int or bool");
    return false;
  }
  steps_.resize(syntax_.constraints.size());
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    const Constraint &c = syntax_.constraints[i];
    Step &step = steps_[i];
    step.row = findRow(syntax_.name(c.at), c.arguments.count, step.form);
    if (step.row == nullptr) {
      mistake_.set(c.at, "\"" + std::string(syntax_.name(c.at)) + "\" is no constraint that is known");
      return false;
    }
    if (!check(c, *step.row, step.form)) return false;
    if (isAlias(c)) step.row = nullptr;
  }
  return true;
}

bool Model::check(const Constraint &c, const Row &row, Form form) const {
  const std::string name(syntax_.name(c.at));
  const std::string letters = row.arguments + std::string(form == Form::kPlain ? "" : "x");
  if (letters.size() != c.arguments.count) {
    mistake_.set(c.at, "\"" + name + "\" takes " + std::to_string(letters.size()) + " arguments");
    return false;
  }
  for (std::size_t i = 0; i < letters.size(); ++i) {
    const Expr &e = syntax_.list(c.arguments)[i];
    if (checkArgument(e, letters[i])) continue;
    static constexpr std::string_view kLetters = "xXcCsS";
    static constexpr const char *kWanted[] = {"an int or bool", "an array of ints or bools",
                                              "a constant",     "an array of constants",
                                              "a set",          "an array of sets"};
    mistake_.set(e.at, "argument " + std::to_string(i + 1) + " of \"" + name + "\" is to be " +
                           kWanted[kLetters.find(letters[i])]);
    return false;
  }
  return true;
}

bool Model::checkArgument(const Expr &e, char letter) const {
  const Expr end = variables.follow(e);
  switch (letter) {
    case 'x':
      return end.kind == Kind::kInt || end.kind == Kind::kBool ||
             (end.kind == Kind::kDeclared && !syntax_.declarations[static_cast<std::size_t>(end.number)].isArray);
    case 'c':
      return checkArgument(e, 'x') && variables.operand(e).isConstant;
    case 's':
      return end.kind == Kind::kRange || end.kind == Kind::kSet;
    default:
      break;
  }
  if (end.kind != Kind::kArray) return false;
  const char element = letter == 'X' ? 'x' : letter == 'C' ? 'c' : 's';
  for (const Expr &inner : syntax_.list(end.part)) {
    if (!checkArgument(inner, element)) return false;
  }
  return true;
}

// --- Order ---

template <class Visit>
void Model::forEachVariable(const Constraint &c, Visit visit) const {
  const auto one = [&](const Expr &e) {
    const Expr end = variables.follow(e);
    if (end.kind != Kind::kDeclared) return;
    const Operand o = variables.operand(end);
    if (!o.isConstant) visit(o.variable);
  };
  for (const Expr &e : syntax_.list(c.arguments)) {
    const Expr end = variables.follow(e);
    if (end.kind != Kind::kArray) {
      one(end);
      continue;
    }
    for (const Expr &inner : syntax_.list(end.part)) one(inner);
  }
}

// A linear equation makes the variable that it says it defines, other functions their result.
void Model::findDefinitions() {
  definition_.assign(syntax_.declarations.size(), kNone);
  for (std::uint32_t i = 0; i < steps_.size(); ++i) {
    if (steps_[i].row == nullptr || steps_[i].form != Form::kPlain) continue;
    const Constraint &c = syntax_.constraints[i];
    const Expr *defines = syntax_.find(c.annotations, "defines_var");
    if (defines == nullptr || defines->kind != Kind::kCall || defines->part.count != 1) continue;
    const bool sum = syntax_.name(c.at) == "int_lin_eq" && syntax_.list(syntax_.list(c.arguments)[1].part).size() <= 3;
    if (steps_[i].row->result < 0 && !sum) continue;
    const Expr &defined = syntax_.list(defines->part)[0];
    if (!checkArgument(defined, 'x')) continue;
    const Operand o = variables.operand(defined);
    if (definitions_ == Definitions::kRelations && isBounded(o)) continue;
    if (!o.isConstant && definition_[o.variable] == kNone) definition_[o.variable] = i;
  }
}

// Depth first along what is needed, with a stack of its own, as chains may be long. A circle is cut where it is met:
// the variable is then made from its domain.
std::vector<std::uint32_t> Model::order() const {
  std::vector<std::uint32_t> ordered, stack;
  std::vector<bool> seen(steps_.size()), placed(steps_.size());
  for (std::uint32_t i = 0; i < steps_.size(); ++i) {
    stack.push_back(i);
    while (!stack.empty()) {
      const std::uint32_t top = stack.back();
      const bool first = !seen[top];
      seen[top] = true;
      if (first) {
        forEachVariable(syntax_.constraints[top], [&](std::uint32_t v) {
          const std::uint32_t maker = definition_[v];
          if (maker != kNone && !seen[maker]) stack.push_back(maker);
        });
      }
      if (stack.back() != top) continue;
      stack.pop_back();
      if (!placed[top]) ordered.push_back(top);
      placed[top] = true;
    }
  }
  return ordered;
}

// --- Posting ---

bool Model::postOne(std::uint32_t number) {
  const Step &step = steps_[number];
  if (step.row == nullptr) return true;
  const Constraint &c = syntax_.constraints[number];
  const Call call(syntax_, variables, kept_, mistake_, c, step.form);
  current_ = &c;
  const bool posted = step.row->post(call);
  current_ = nullptr;
  ++nbPosted_;
  return posted && !mistake_.isSet() && !variables.isInconsistent();
}

template <class Visit>
void Model::forEachDeclared(Visit visit) {
  for (std::uint32_t i = 0; i < syntax_.declarations.size(); ++i) {
    const Declaration &d = syntax_.declarations[i];
    if (!d.isVar || d.isArray) continue;
    Expr e;
    e.kind = Kind::kDeclared;
    e.number = i;
    visit(variables.operand(e));
  }
}

// Variables without constraints, too, are part of a solution.
bool Model::makeOthers() {
  forEachDeclared([this](const Operand &o) { variables.get(o); });
  return !variables.isInconsistent();
}

bool Model::isBounded(const Operand &o) const {
  return o.isConstant || (variables.low(o) >= INT_MIN && variables.high(o) <= INT_MAX);
}

bool Model::makeBounded() {
  forEachDeclared([this](const Operand &o) {
    if (isBounded(o)) variables.get(o);
  });
  return !variables.isInconsistent();
}

Array Model::everyVariable() {
  Array all;
  std::unordered_set<CSint *> seen;
  forEachDeclared([&](const Operand &o) {
    CSint *v = variables.get(o);
    if (seen.insert(v).second) all.push_back(v);
  });
  return all;
}

}  // namespace koru::fzn
