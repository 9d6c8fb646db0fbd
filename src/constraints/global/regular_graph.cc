// SPDX-License-Identifier: MIT
// Builds the layered graph: a pass forward finds what the start reaches, a pass backward what reaches a final state and
// the first edge of each list. Both stop at the first edge that tells, so that an automaton with many transitions costs
// little more than one look at each state.
#include "constraints/global/regular_graph.h"

#include "constraints/global/state_sets.h"
#include "core/domain_walk.h"
#include "core/errors.h"

namespace koru::regular {

class Builder {
 public:
  Builder(Graph &graph, const Automaton &automaton)
      : graph_(graph),
        transitions_(graph.transitions_),
        live_(static_cast<std::uint64_t>(graph.n_) + 1, automaton.states) {}

  bool run(const Automaton &automaton) {
    if (!live_ || !makeAlphabet()) return false;
    passForward(automaton.start);
    return acceptFinals(automaton) && makeRows() && passBackward() && makeLayers();
  }

 private:
  // The symbols that the variable at a position can take, read once per pass.
  void readAlphabet(int k) {
    count_ = 0;
    forEachValue(graph_.variable(k), 0, transitions_.symbols() - 1, [&](int a) {
      alphabet_[count_++] = a;
      return true;
    });
  }

  bool makeAlphabet() {
    alphabet_ = Buffer<int>(transitions_.symbols());
    return static_cast<bool>(alphabet_);
  }

  void passForward(int start);
  int reachFrom(const int *row, StateSet &reached, int left) const;
  bool acceptFinals(const Automaton &automaton);
  bool makeRows();
  bool passBackward();
  void findSources(int k);
  void findLabels(int k);
  void findTargets(int k) const;
  bool makeLayers();

  Graph &graph_;
  const Transitions &transitions_;
  StateSets live_;
  Buffer<int> alphabet_;
  int count_ = 0;
};

// Nothing is left to reach when every state with an arc into it has been reached.
void Builder::passForward(int start) {
  const int targets = transitions_.targetCount();
  live_.at(0).add(start);
  for (int k = 0; k < graph_.n_; ++k) {
    readAlphabet(k);
    int left = targets;
    StateSet reached = live_.at(k + 1);
    live_.at(k).forEach([&](int q) {
      left = reachFrom(transitions_.row(q), reached, left);
      return left > 0;
    });
  }
}

int Builder::reachFrom(const int *row, StateSet &reached, int left) const {
  const int *alphabet = alphabet_.get();
  for (int i = 0; i < count_ && left > 0; ++i) {
    const int t = row[alphabet[i]];
    if (t != Transitions::kNone && reached.insert(t)) --left;
  }
  return left;
}

bool Builder::acceptFinals(const Automaton &automaton) {
  const StateSets sets(1, automaton.states);
  if (!sets) return false;
  StateSet finals = sets.at(0);
  for (int i = 0; i < automaton.finalCount; ++i)
    if (automaton.isState(automaton.finals[i])) finals.add(automaton.finals[i]);
  live_.at(graph_.n_).intersect(finals);
  return !live_.at(graph_.n_).isEmpty();
}

// Makes room for the states from the first to the last one reached, and for all symbols.
bool Builder::makeRows() {
  graph_.rows_ = Buffer<Graph::Row>(graph_.n_);
  if (!graph_.rows_) return false;
  std::uint64_t end = 0;
  const auto place = [&end](int first, std::int64_t last) {
    const auto row = static_cast<std::ptrdiff_t>(end) - first;
    end += static_cast<std::uint64_t>(last - first + 1);
    return row;
  };
  int first = live_.at(0).first();
  int last = first;
  for (int k = 0; k < graph_.n_; ++k) {
    const StateSet next = live_.at(k + 1);
    if (next.isEmpty()) return false;
    Graph::Row &row = graph_.rows_[k];
    row.sources = place(first, last);
    first = next.first();
    last = next.last();
    row.targets = place(first, last);
    row.labels = place(0, std::int64_t{transitions_.symbols()} - 1);
  }
  graph_.supports_ = Buffer<Support>(end);
  if (graph_.supports_) std::fill_n(graph_.supports_.get(), end, Support{Transitions::kNone, {}});
  return static_cast<bool>(graph_.supports_);
}

// States without an edge to the next layer go.
bool Builder::passBackward() {
  for (int k = graph_.n_ - 1; k >= 0; --k) {
    readAlphabet(k);
    findSources(k);
    if (live_.at(k).isEmpty()) return false;
    findLabels(k);
    findTargets(k);
  }
  return true;
}

void Builder::findSources(int k) {
  const Supports supports = graph_.sources(k);
  const StateSet targets = live_.at(k + 1);
  StateSet sources = live_.at(k);
  const int *alphabet = alphabet_.get();
  const int count = count_;
  sources.forEach([&](int q) {
    const int *row = transitions_.row(q);
    for (int i = 0; i < count; ++i) {
      const int a = alphabet[i];
      const int t = row[a];
      if (t == Transitions::kNone || !targets.has(t)) continue;
      supports[q] = {a, {a, t}};
      return true;
    }
    sources.remove(q);
    return true;
  });
}

// The symbols that have no edge yet are kept at the front of the alphabet.
void Builder::findLabels(int k) {
  const Supports supports = graph_.labels(k);
  const StateSet targets = live_.at(k + 1);
  int *alphabet = alphabet_.get();
  int left = count_;
  live_.at(k).forEach([&](int q) {
    const int *row = transitions_.row(q);
    int kept = 0;
    for (int i = 0; i < left; ++i) {
      const int a = alphabet[i];
      const int t = row[a];
      if (t != Transitions::kNone && targets.has(t))
        supports[a] = {q, {q, t}};
      else
        alphabet[kept++] = a;
    }
    left = kept;
    return left > 0;
  });
}

// A symbol without a support is not in the alphabet.
void Builder::findTargets(int k) const {
  const Supports supports = graph_.targets(k);
  const Supports labels = graph_.labels(k);
  const StateSet sources = live_.at(k);
  const Arc *arcs = transitions_.arcs();
  live_.at(k + 1).forEach([&](int t) {
    int i = transitions_.arcsInto(t);
    while (!sources.has(arcs[i].source) || !labels[arcs[i].symbol].exists()) ++i;
    supports[t] = {i, {arcs[i].symbol, arcs[i].source}};
    return true;
  });
}

bool Builder::makeLayers() {
  graph_.layers_ = PrivateVariables(graph_.n_ + 1);
  if (!graph_.layers_) return false;
  graph_.layers_.init(0, live_.at(0).first(), live_.at(0).last());
  for (int k = 1; k <= graph_.n_; ++k)
    if (!graph_.layers_.init(k, transitions_.states() - 1, live_.at(k).words())) return false;
  return true;
}

// The number of a layer is an int.
bool Graph::build(const Automaton &automaton) {
  if (n_ == kIntMax) {  // GCOVR_EXCL_START: takes more variables than a test has memory for
    reportMemoryExhausted();
    return false;
  }  // GCOVR_EXCL_STOP
  return transitions_ && Builder(*this, automaton).run(automaton);
}

}  // namespace koru::regular
