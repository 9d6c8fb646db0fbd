// SPDX-License-Identifier: MIT
// One posting in a solver of its own, and one step at a time compared with enumeration. At every node:
//   - no value that a solution needs is gone, and only what has no solution is refused;
//   - the step holds, domains have not grown, and their counts are right;
//   - what is bound altogether is a solution;
//   - the constraint keeps its promises;
//   - restoring gives back every domain exactly.
#pragma once

#include <sstream>

#include "semantic/harness/measure.h"
#include "semantic/harness/solution_table.h"
#include "semantic/harness/step.h"
#include "support/kit/batch.h"

namespace koru::test::brute {

struct Posting {
  const Constraint &constraint;
  std::vector<Domain> domains;  // of the variables
  std::vector<int> positions;   // the variable at each position
};

// The domains by variable: as the steps alone would leave them, and as they are.
struct Node {
  Masks allowed{};
  Masks now{};
};

class Run {
 public:
  explicit Run(const Posting &posting)
      : posting_(posting), table_(posting.constraint, posting.domains, posting.positions) {
    cs_init();
    for (const Domain &domain : posting.domains) variables_.push_back(create(domain));
    for (const int p : posting.positions) array_.push_back(variables_[static_cast<std::size_t>(p)]);
  }
  ~Run() { cs_end(); }
  Run(const Run &) = delete;
  Run &operator=(const Run &) = delete;

  long long states = 0;
  Measure *measure = nullptr;  // adds up what has no support, if it is there

  // The first thing that was wrong, with all that is needed to see it again; empty when nothing was.
  const std::string &finding() const { return finding_; }
  bool sound() const { return finding_.empty(); }
  std::size_t count() const { return variables_.size(); }
  CSint *variable(std::size_t i) const { return variables_[i]; }
  int value(std::size_t variable, int bit) const { return bit + table_.layout.base[variable]; }

  // Calls visit with the node that posting leaves, if it is consistent, and takes everything back.
  template <class Visit>
  void post(Visit visit) {
    if (posting_.domains.size() >= kMostColumns) return find("a posting of more variables than there are columns");
    const Node before{table_.domains(), table_.domains()};
    expectDomains(before.now, "creating");
    cs_saveContext();
    ++states;
    CSint *result = nullptr;
    const bool posted = posting_.constraint.post(array_.data(), result);
    if (result != nullptr) addResult(result);
    Node node = before;
    node.allowed[posting_.domains.size()] = node.now[posting_.domains.size()] = ~Mask{0};  // any result
    if (posted) {
      const Masks most = node.now;
      posted_ = node.now = read();
      if (look(node, most)) visit(node);
    } else if (table_.solutions.any(node.allowed)) {
      find("posting failed although there is a solution");
    }
    cs_restoreContext();
    variables_.resize(posting_.domains.size());
    expectDomains(before.now, "restoring past the posting");
  }

  // A step within the context that is open. False when the problem has failed or something is wrong.
  bool apply(const Step &step, Node &node) {
    const Masks before = node.now;
    note(step, node);
    return settle(step.relate->apply(variables_[step.variable], step.value), node, before);
  }

  // As one change, so that nobody hears of the first before the last is made. The steps are named one by one.
  template <class Steps>
  bool applyTogether(Steps steps, Node &node) {
    const Masks before = node.now;
    const bool consistent = together([&] {
      bool made = true;
      for (int i = 0; made; ++i) {
        std::optional<Step> step = steps(i);
        if (!step) break;
        step->unheard = i > 0;
        note(*step, node);
        made = step->relate->apply(variables_[step->variable], step->value);
      }
      return made;
    });
    return settle(consistent, node, before);
  }

  // In a context of its own, which is restored and compared.
  template <class Body>
  void inContext(const Node &node, Body body) {
    const std::size_t steps = path_.size();
    const int label = cs_saveContext();
    body(Node(node));
    cs_restoreContextUntil(label);
    expectDomains(node.now, "restoring");
    path_.resize(steps);
  }

 private:
  bool isShared() const { return posting_.positions.size() > posting_.domains.size(); }
  void addResult(CSint *result) { variables_.push_back(result); }

  void note(const Step &step, Node &node) {
    ++states;
    path_.push_back(step);
    node.allowed[step.variable] &= step.relate->kept(step.value - table_.layout.base[step.variable]);
  }

  bool settle(bool consistent, Node &node, const Masks &before) {
    if (!consistent) {
      if (table_.solutions.any(node.allowed)) find("refused although a solution is left");
      return false;
    }
    node.now = read();
    return look(node, before);
  }

  Masks read() {
    Masks result{};
    for (std::size_t i = 0; i < variables_.size(); ++i) result[i] = read(i);
    return result;
  }

  Mask read(std::size_t i) {
    CSint *v = variables_[i];
    Mask mask = 0;
    for (int value = cs_getMin(v);; value = cs_getNextValue(v, value)) {
      const Wide bit = Wide{value} - table_.layout.base[i];
      if (bit < 0 || bit >= kWindow) {
        find("value " + std::to_string(value) + of(i) + " is far from any solution");
        break;
      }
      mask |= Mask{1} << bit;
      if (value == cs_getMax(v)) break;
    }
    if (sound() && std::popcount(mask) != cs_getNbElements(v)) find("the count is wrong" + of(i));
    return mask;
  }

  void expectDomains(const Masks &wanted, const char *after) {
    if (sound() && read() != wanted && sound()) find(std::string(after) + " does not give the domains");
  }

  bool look(const Node &node, const Masks &before) {
    if (!sound()) return false;
    const Masks needed = table_.solutions.used(node.allowed);
    bool complete = true;
    for (std::size_t i = 0; i < variables_.size(); ++i) {
      complete = complete && std::has_single_bit(node.now[i]);
      if ((needed[i] & ~node.now[i]) != 0) find("a value of a solution is gone" + of(i));
      if ((node.now[i] & ~node.allowed[i]) != 0) find("the narrowing does not hold" + of(i));
      if ((node.now[i] & ~before[i]) != 0) find("the domain has grown" + of(i));
    }
    const auto &acceptedAnyway = posting_.constraint.acceptedAnyway;
    if (complete && !table_.solutions.any(node.allowed) && !(acceptedAnyway && acceptedAnyway(left(node))))
      find("what is bound is no solution");
    expectPromises(node, complete);
    for (std::size_t i = 0; i < variables_.size(); ++i) lost_[i] |= posted_[i] & ~node.now[i];
    return sound();
  }

  Left left(const Node &node) const {
    Branch branch;
    for (const Step &step : path_) {
      branch.unheard = branch.unheard || step.unheard;
      branch.removals = branch.removals || step.relate == &kNEQ;
    }
    return {table_.layout, node.now, posted_, lost_, branch};
  }

  void expectPromises(const Node &node, bool complete) {
    const Constraint &c = posting_.constraint;
    const Left now = left(node);
    if (measure != nullptr && sound() && !complete && !isShared())
      measure->add(now, c.results != nullptr, supportsOf(now, [](Mask mask) { return mask; }), supportsOf(now, hullOf));
    if (!sound() || complete || (now.branch.unheard && !c.alsoTogether) || (isShared() && !c.alsoShared)) return;
    if (c.strength) expectStrength(now);
    if (c.supported)
      for (std::size_t column = 0; column < now.columns(); ++column)
        for (const int value : now.values(column))
          if (!c.supported(now, column, value)) findUnsupported(column, value);
    if (!sound() || !c.inside) return;
    const std::string wrong = c.inside(now);
    if (!wrong.empty()) find(wrong);
  }

  void expectStrength(const Left &at) {
    std::optional<Masks> values;
    std::optional<Masks> bounds;
    for (std::size_t column = 0; column < at.columns(); ++column) {
      const Strength strength = posting_.constraint.strength(at, column);
      Mask wanted = at.mask(column);
      if (strength == Strength::kNone || (strength == Strength::kKnown && at.unbound() > 1)) continue;
      if (strength == Strength::kBounds) {
        wanted &= Mask{1} << leastBit(wanted) | Mask{1} << greatestBit(wanted);
        if (!bounds) bounds = supportsOf(at, hullOf);
        expectSupported(at, column, wanted & ~(*bounds)[column]);
      } else {
        if (!values) values = supportsOf(at, [](Mask mask) { return mask; });
        expectSupported(at, column, wanted & ~(*values)[column]);
      }
    }
  }

  template <class Widen>
  Masks supportsOf(const Left &at, Widen widen) const {
    Masks within{};
    for (std::size_t column = 0; column < at.columns(); ++column) within[column] = widen(at.mask(column));
    return table_.supports.used(within);
  }

  void expectSupported(const Left &at, std::size_t column, Mask without) {
    const auto &excused = posting_.constraint.excused;
    for (; without != 0; without &= without - 1) {
      const int v = value(table_.layout.variableAt[column], leastBit(without));
      if (!excused || !excused(at, column, v)) findUnsupported(column, v);
    }
  }

  void findUnsupported(std::size_t column, int value) {
    find("value " + std::to_string(value) + " has no support in column " + std::to_string(column));
  }

  static std::string of(std::size_t i) { return " (variable v" + std::to_string(i) + ")"; }

  void find(const std::string &what) {
    if (!sound()) return;
    std::ostringstream text;
    text << what << "\n  " << posting_.constraint.name << " on " << ::testing::PrintToString(posting_.positions);
    for (std::size_t i = 0; i < posting_.domains.size(); ++i) {
      const Domain &domain = posting_.domains[i];
      text << "\n  v" << i << " in " << ::testing::PrintToString(domain.values) << " made " << nameOf(domain.making);
    }
    text << "\n  posted";
    for (const Step &step : path_) text << step;
    for (CSint *v : variables_) text << "\n  left " << ::testing::PrintToString(values(v));
    finding_ = text.str();
  }

  const Posting &posting_;
  Table table_;
  std::vector<CSint *> variables_;  // the result last
  std::vector<CSint *> array_;      // by position; kept while the solver runs
  Masks posted_{};
  Masks lost_{};
  std::vector<Step> path_;
  std::string finding_;
};

}  // namespace koru::test::brute
