// SPDX-License-Identifier: MIT
// Builds the layered graph: a pass forward finds what the start reaches, a pass backward what reaches a final state and
// the first edge of each list. Both stop at the first edge that tells, so that an automaton with many transitions costs
// little more than one look at each state. Where the states fit into a word, whole layers are reached at a time. Over
// two symbols all edges are looked at, without jumps.
#include "constraints/global/regular_graph.h"

#include <algorithm>
#include <bit>

#include "constraints/global/state_sets.h"
#include "core/errors.h"

namespace koru::regular {

namespace {

// Of an automaton whose states fit into a word: where arcs lead from each state, and come from, whatever the symbol.
class Neighbours {
 public:
  explicit Neighbours(const Transitions &transitions) : exist_(transitions.states() <= 64) {
    if (!exist_) return;
    for (int t = 0; t < transitions.states(); ++t) {
      for (int i = transitions.arcsInto(t); i < transitions.arcsInto(t + 1); ++i) {
        const int source = transitions.arc(i).source;
        before_[t] |= std::uint64_t{1} << source;
        after_[source] |= std::uint64_t{1} << t;
      }
    }
  }

  // False when there are too many states.
  explicit operator bool() const { return exist_; }
  // Of any of the states.
  std::uint64_t after(std::uint64_t states) const { return ofAny(states, after_); }
  std::uint64_t before(std::uint64_t states) const { return ofAny(states, before_); }
  std::uint64_t before(int state) const { return before_[state]; }

 private:
  static std::uint64_t ofAny(std::uint64_t states, const std::uint64_t (&of)[64]) {
    std::uint64_t all = 0;
    forEachBit(0, states, [&](int q) { all |= of[q]; });
    return all;
  }

  bool exist_;
  std::uint64_t after_[64] = {};
  std::uint64_t before_[64] = {};
};

// A layer whose states fit into a word, in a register.
struct OneWord {
  std::uint64_t states;
  bool has(int q) const { return (states >> q & 1) != 0; }
};

}  // namespace

class Builder {
 public:
  Builder(Graph &graph, const Automaton &automaton)
      : graph_(graph),
        transitions_(graph.transitions_),
        neighbours_(graph.transitions_),
        live_(static_cast<std::uint64_t>(graph.n_) + 2, automaton.states),
        room_(3 * static_cast<std::uint64_t>(automaton.symbols)),
        symbols_(room_.get()) {
    for (int a = 0; room_ && a < automaton.symbols; ++a) symbols_[a] = a;
  }

  bool run(const Automaton &automaton) {
    if (!live_ || !room_) return false;
    passForward(automaton.start);
    if (!acceptFinals(automaton) || !makeRows()) return false;
    if (transitions_.symbols() == 2 && transitions_.states() < 64) {
      passBackwardOverTwo();
    } else {
      passBackward();
    }
    return makeLayers();
  }

 private:
  // The symbols that the variable at a position can take, read once per pass. Mostly these are all.
  void readAlphabet(int k) {
    const CSint *v = graph_.variable(k);
    const int all = transitions_.symbols();
    alphabet_ = symbols_;
    count_ = all;
    if (v->bits == nullptr && v->min <= 0 && v->max >= all - 1) return;
    int *symbols = symbols_ + all;
    alphabet_ = symbols;
    count_ = 0;
    const int last = std::min(v->max, all - 1);
    for (int a = std::max(v->min, 0); a <= last; ++a)
      if (v->bits == nullptr || v->bits->has(a)) symbols[count_++] = a;
  }

  void passForward(int start);
  [[nodiscard]] bool acceptFinals(const Automaton &automaton);
  bool makeRows();
  void passBackward();
  void passBackwardOverTwo();
  template <class Set>
  void findSourcesAndLabels(int k, Set targets);
  template <class Set>
  void findTargets(int k, Set sources) const;
  struct OverTwo;
  OverTwo findSourcesAndLabelsOverTwo(int k, std::uint64_t sources, const std::uint64_t (&targets)[2]) const;
  bool makeLayers();

  Graph &graph_;
  const Transitions &transitions_;
  const Neighbours neighbours_;
  StateSets live_;  // of each layer; and the final states
  Scratch<int, 48> room_;
  int *symbols_;  // all of them; and room twice for as many
  const int *alphabet_ = nullptr;
  int count_ = 0;
};

// Nothing is left to reach when every state with an arc into it has been reached.
void Builder::passForward(int start) {
  const int targets = transitions_.targetCount();
  const Transitions::Table table = transitions_.table();
  live_.at(0).add(start);
  for (int k = 0; k < graph_.n_; ++k) {
    readAlphabet(k);
    const int *alphabet = alphabet_;
    const int count = count_;
    StateSet reached = live_.at(k + 1);
    if (neighbours_ && count == transitions_.symbols()) {
      *reached.words() = neighbours_.after(*live_.at(k).words());
      continue;
    }
    int left = targets;
    live_.at(k).forEach([&](int q) {
      const int *row = table.row(q);
      for (int i = 0; i < count && left > 0; ++i) {
        const int t = row[alphabet[i]];
        if (t != Transitions::kNone && reached.insert(t)) --left;
      }
      return left > 0;
    });
  }
}

bool Builder::acceptFinals(const Automaton &automaton) {
  StateSet finals = live_.at(graph_.n_ + 1);
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
    Graph::Row &row = graph_.rows_[k];
    row.sources = place(first, last);
    first = next.first();
    last = next.last();
    row.targets = place(first, last);
    row.labels = place(0, std::int64_t{transitions_.symbols()} - 1);
  }
  graph_.supports_ = Buffer<Support>(end);
  if (!graph_.supports_) return false;
  std::fill_n(graph_.supports_.get(), end, Support{Transitions::kNone, {}});
  return true;
}

// A state's first edge that is live, and the first of each symbol; those that have none yet are kept apart.
template <class Set>
void Builder::findSourcesAndLabels(int k, Set targets) {
  const Supports supports = graph_.sources(k);
  const Supports labels = graph_.labels(k);
  const Transitions::Table table = transitions_.table();
  const StateSet sources = live_.at(k);
  const int count = count_;
  const int *alphabet = alphabet_;
  const int *wanted = alphabet;
  int *stillWanted = symbols_ + std::ptrdiff_t{2} * transitions_.symbols();
  int left = count;
  const auto isLive = [targets](int t) { return t != Transitions::kNone && targets.has(t); };
  sources.forEach([&](int q) {
    const int *row = table.row(q);
    int first = 0;
    while (first < count && !isLive(row[alphabet[first]])) ++first;
    if (first == count) {
      live_.at(k).remove(q);
      return true;
    }
    const int symbol = alphabet[first];
    supports[q] = {symbol, {symbol, row[symbol]}};
    int kept = 0;
    for (int i = 0; i < left; ++i) {
      const int a = wanted[i];
      if (isLive(row[a]))
        labels[a] = {q, {q, row[a]}};
      else
        stillWanted[kept++] = a;
    }
    wanted = stillWanted;
    left = kept;
    return true;
  });
}

// A symbol without a support is not in the alphabet.
template <class Set>
void Builder::findTargets(int k, Set sources) const {
  const Supports supports = graph_.targets(k);
  const Supports labels = graph_.labels(k);
  const Arc *arcs = transitions_.arcs();
  live_.at(k + 1).forEach([&](int t) {
    int i = transitions_.arcsInto(t);
    while (!sources.has(arcs[i].source) || !labels[arcs[i].symbol].exists()) ++i;
    supports[t] = {i, {arcs[i].symbol, arcs[i].source}};
    return true;
  });
}

// States without an edge to the next layer go. A final state has been reached, so none of the layers becomes empty.
void Builder::passBackward() {
  for (int k = graph_.n_ - 1; k >= 0; --k) {
    readAlphabet(k);
    const StateSet sources = live_.at(k);
    const StateSet targets = live_.at(k + 1);
    if (neighbours_) {
      *sources.words() &= neighbours_.before(*targets.words());
      findSourcesAndLabels(k, OneWord{*targets.words()});
      findTargets(k, OneWord{*sources.words()});
    } else {
      findSourcesAndLabels(k, targets);
      findTargets(k, sources);
    }
  }
}

// Of a position, the states that have an edge, and those of the layer before from which they can be reached.
struct Builder::OverTwo {
  std::uint64_t sources;
  std::uint64_t before;
};

// targets: those that each of the symbols can lead to.
Builder::OverTwo Builder::findSourcesAndLabelsOverTwo(int k, std::uint64_t sources,
                                                      const std::uint64_t (&targets)[2]) const {
  const Supports supports = graph_.sources(k);
  const Transitions::Table table = transitions_.table();
  std::uint64_t live[2] = {};
  std::uint64_t before = 0;
  forEachBit(0, sources, [&](int q) {
    const int *row = table.row(q);
    const std::uint64_t isLive = targets[0] >> (row[0] & 63) & 1;
    live[0] |= isLive << q;
    live[1] |= (targets[1] >> (row[1] & 63) & 1) << q;
    const int symbol = static_cast<int>(isLive ^ 1);
    supports[q] = {symbol, {symbol, row[symbol]}};
    before |= neighbours_.before(q);
    return true;
  });
  for (int a = 0; a < 2; ++a) {
    if (live[a] == 0) continue;
    const int q = std::countr_zero(live[a]);
    graph_.labels(k)[a] = {q, {q, table.row(q)[a]}};
  }
  return {live[0] | live[1], before};
}

// The same over two symbols, with a walk less over each layer and all edges asked: jumps that nobody foresees take
// longer. No state has bit 63, which is asked where a symbol leads nowhere.
void Builder::passBackwardOverTwo() {
  std::uint64_t before = neighbours_.before(*live_.at(graph_.n_).words());
  for (int k = graph_.n_ - 1; k >= 0; --k) {
    readAlphabet(k);
    std::uint64_t leadsTo[2] = {};
    std::uint64_t &sources = *live_.at(k).words();
    const std::uint64_t targets = *live_.at(k + 1).words();
    for (int i = 0; i < count_; ++i) leadsTo[alphabet_[i]] = targets;
    const OverTwo found = findSourcesAndLabelsOverTwo(k, sources & before, leadsTo);
    sources = found.sources;
    before = found.before;
    findTargets(k, OneWord{sources});
  }
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
