// SPDX-License-Identifier: MIT
// cs_Regular: the values of an array are a word that an automaton accepts.
// Consistency: domain, when no variable stands twice (Pesant, "A regular language membership constraint for finite
// sequences of variables", CP 2004).
// Cost: O(n states symbols) at posting; per event a look at each state of a layer, and a walk along each edge list
// whose support is lost, from that support on.
// State: the states of each layer, trailed; the support of each edge list, not trailed: one that was found valid
// deeper in the search is valid further up as well.
// Wakes: by every event of a variable, on one constraint; by every event of a layer, on another.
// Deliberate: a support is tested for the part that the event can have touched only, and a search that has come round
// to the support it began with fails without a look at it: it is known to be lost.
// Deliberate: values outside the alphabet leave the variables before the start state is found to be invalid.
#include <algorithm>
#include <bit>

#include "constraints/global/regular_graph.h"
#include "core/domain_walk.h"
#include "core/post.h"

namespace koru::regular {

// Destroys the graph, and with it what is attached to the layers.
struct OnVars {
  Graph graph;
};

struct OnLayers {
  const Graph *graph;
};

// ----- rules

// Steps on from the current support, around the end of the list, to an edge that lies in both domains.
static bool findSupport(EdgeList &list, const CSint *x, const CSint *y) {
  int i = list.support;
  for (int left = list.size - 1; left > 0; --left) {
    if (++i == list.size) i = 0;
    const Edge edge = list.edges[i];
    if (!contains(x, edge.x) || !contains(y, edge.y)) continue;
    list.support = i;
    list.current = edge;
    return true;
  }
  return false;
}

template <int Edge::*part, class IsStale>
static bool isSupported(EdgeList &list, IsStale isStale, const CSint *x, const CSint *y) {
  return !isStale(list.current.*part) || findSupport(list, x, y);
}

// Visits the states of a layer, 64 at a time: a visit removes no other state than the one it is told.
template <class Visit>
static bool forEachState(const CSint *layer, Visit visit) {
  if (layer->bits == nullptr) return forEachValue(layer, visit);
  const int first = layer->min;
  const int last = layer->max;
  for (int i = first / 64; i <= last / 64; ++i) {
    std::uint64_t left = layer->bits->words()[i];
    if (i == first / 64) left &= ~std::uint64_t{0} << (first % 64);
    if (i == last / 64) left &= ~std::uint64_t{0} >> (63 - last % 64);
    for (; left != 0; left &= left - 1)
      if (!visit(i * 64 + std::countr_zero(left))) return false;
  }
  return true;
}

template <int Edge::*part, class IsStale>
static bool filterSources(const Graph &g, int k, IsStale isStale) {
  EdgeList *lists = g.sources(k);
  CSint *layer = g.layer(k);
  return forEachState(layer, [&](int q) {
    return isSupported<part>(lists[q], isStale, g.variable(k), g.layer(k + 1)) || removeValue(layer, q);
  });
}

template <int Edge::*part, class IsStale>
static bool filterTargets(const Graph &g, int k, IsStale isStale) {
  EdgeList *lists = g.targets(k);
  CSint *layer = g.layer(k + 1);
  return forEachState(layer, [&](int q) {
    return isSupported<part>(lists[q], isStale, g.variable(k), g.layer(k)) || removeValue(layer, q);
  });
}

template <int Edge::*part, class IsStale>
static bool filterSymbols(const Graph &g, int k, IsStale isStale) {
  EdgeList *lists = g.labels(k);
  CSint *v = g.variable(k);
  return forEachValue(v, 0, g.symbols() - 1, [&](int a) {
    return lists[a].size == 0 || isSupported<part>(lists[a], isStale, g.layer(k), g.layer(k + 1)) || removeValue(v, a);
  });
}

// ----- handlers; the index is a position for variables and the number of a layer for layers

template <class IsStale>
static bool filter(const OnVars &c, int k, IsStale isStale) {
  return filterSources<&Edge::x>(c.graph, k, isStale) && filterTargets<&Edge::x>(c.graph, k, isStale);
}

template <class IsStale>
static bool filter(const OnLayers &c, int k, IsStale isStale) {
  const Graph &g = *c.graph;
  if (k < g.length() && (!filterSymbols<&Edge::x>(g, k, isStale) || !filterTargets<&Edge::y>(g, k, isStale)))
    return false;
  return filterSymbols<&Edge::y>(g, k - 1, isStale) && filterSources<&Edge::y>(g, k - 1, isStale);
}

// What an event has taken away.
struct Below {
  int bound;
  explicit Below(const Event &e) : bound(e.newValue) {}
  bool operator()(int value) const { return value < bound; }
};

struct Above {
  int bound;
  explicit Above(const Event &e) : bound(e.newValue) {}
  bool operator()(int value) const { return value > bound; }
};

struct AllBut {
  int kept;
  explicit AllBut(const Event &e) : kept(valueOf(e.var)) {}
  bool operator()(int value) const { return value != kept; }
};

struct Only {
  int removed;
  explicit Only(const Event &e) : removed(e.newValue) {}
  bool operator()(int value) const { return value == removed; }
};

template <class Record, class IsStale>
static bool changed(Record &c, const Event &e) {
  return filter(c, e.index, IsStale(e));
}

template <class Record>
constexpr auto kTable = handlers<Record>({.newMin = on<changed<Record, Below>>,
                                          .newMax = on<changed<Record, Above>>,
                                          .minBound = on<changed<Record, AllBut>>,
                                          .maxBound = on<changed<Record, AllBut>>,
                                          .bound = on<changed<Record, AllBut>>,
                                          .removed = on<changed<Record, Only>>});

// ----- posting

static bool hasFinal(const Automaton &automaton) {
  return automaton.finals != nullptr &&
         std::any_of(automaton.finals, automaton.finals + std::max(automaton.finalCount, 0),
                     [&](int q) { return automaton.isState(q); });
}

static bool restrictToAlphabet(CSint **vars, int n, int symbols) {
  for (int k = 0; k < n; ++k)
    if (!narrowMin(vars[k], 0) || !narrowMax(vars[k], satSub(symbols, 1))) return false;
  return true;
}

// Removes the symbols that label no edge, in sweeps until one finds none: each removal propagates at once, and what a
// callback puts back is looked at again.
static bool removeUnusedSymbols(const Graph &g) {
  for (bool removed = true; removed;) {
    removed = false;
    for (int k = 0; k < g.length(); ++k) {
      const bool consistent = forEachValue(g.variable(k), [&](int a) {
        if (a >= 0 && a < g.symbols() && g.labels(k)[a].size > 0) return true;
        removed = true;
        return removeValue(g.variable(k), a);
      });
      if (!consistent) return false;
    }
  }
  return true;
}

static bool post(const Poster &poster, CSint **vars, int n, const Automaton &automaton) {
  if (!restrictToAlphabet(vars, n, automaton.symbols) || !automaton.isState(automaton.start)) return false;
  Posting posting{poster};
  if (!posting) return false;
  Graph graph(automaton, vars, n);
  if (!graph.build(automaton)) return false;
  auto onVars = posting.add(kTable<OnVars>, OnVars{std::move(graph)});
  for (int k = 0; k < n; ++k) onVars.attach(vars[k], k);
  if (!posting) return false;
  auto onLayers = posting.add(kTable<OnLayers>, OnLayers{&onVars->graph});
  for (int k = 1; k <= n; ++k) onLayers.attach(onVars->graph.layer(k), k);
  return posting && removeUnusedSymbols(onVars->graph);
}

}  // namespace koru::regular

int cs_Regular(CSint **vars, int n, const int *table, int states, int symbols, int start, const int *finals,
               int finalCount) {
  if (n < 1) return 1;
  const koru::regular::Automaton automaton{table, states, symbols, start, finals, finalCount};
  if (vars == nullptr || table == nullptr || !koru::allPresent(vars, n) || !hasFinal(automaton)) return 0;
  return koru::regular::post("cs_Regular", vars, n, automaton) ? 1 : 0;
}
