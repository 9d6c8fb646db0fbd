// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Part of koru.hpp: the constraints, as functions whose results Model::post takes. What each of them means, finds out
// and costs stands with the function of koru.h or koru_extras.h that it names.
#pragma once

#include "posting.hpp"

namespace koru {
inline namespace v1 {

namespace detail {

// A function that posts, whatever its type. Of std::function there would be a dozen functions to compile for each.
struct Posting {
  Posting() = default;
  Posting(const Posting &) = delete;
  Posting &operator=(const Posting &) = delete;
  virtual ~Posting() = default;
  virtual bool post(State &s) const = 0;
};

template <class F>
struct PostingOf final : Posting {
  explicit PostingOf(F &&f) : run(std::move(f)) {}
  KORU_APART bool post(State &s) const override { return run(s); }

  F run;
};

}  // namespace detail

/// Something to post, and the line that says so. Made by the functions below and from conditions; nothing by default.
class Constraint {
 public:
  Constraint() = default;
  KORU_APART Constraint(const Constraint &) = default;
  KORU_APART Constraint(Constraint &&) noexcept = default;
  Constraint &operator=(const Constraint &) = default;
  Constraint &operator=(Constraint &&) noexcept = default;
  KORU_APART ~Constraint() = default;
  /// Posted by a function of the model's state.
  template <class F>
  requires requires(const F &post, detail::State &s) { static_cast<bool>(post(s)); }
  Constraint(F post, Place where) : Constraint(new detail::PostingOf<F>(std::move(post)), where) {}
  KORU_APART Constraint(Condition condition, Place where = {})
      : Constraint([c = std::move(condition)](detail::State &s) { return detail::Speaker(s).post(c); }, where) {}
  KORU_APART Constraint(IntVar b, Place where = {}) : Constraint(Condition(b), where) {}

  bool post(detail::State &s) const {
    if (!posting_) return true;
    s.place = where_;
    return s.check(posting_->post(s));
  }

 private:
  KORU_APART Constraint(const detail::Posting *posting, Place where) : posting_(posting), where_(where) {}

  std::shared_ptr<const detail::Posting> posting_;
  Place where_{"", 0, ""};
};

/// How much an all-different or a cardinality finds out.
enum class Strength {
  simple,  ///< cheap: a value that is taken goes from the others
  bounds,  ///< bounds consistent
  domain   ///< domain consistent
};

/// A deterministic automaton. next[state * symbols + symbol] is the state that follows; -1: none.
struct Automaton {
  int states = 0;
  int symbols = 0;
  int start = 0;
  std::vector<int> finals{};
  std::vector<int> next{};
};

/// An arc of a decision diagram.
struct Arc {
  int source;
  int value;
  int target;
};

namespace detail {

using Copy = std::vector<IntVar>;

KORU_APART inline Copy own(Vars vars) { return Copy(vars.data(), vars.data() + vars.size()); }

// A constraint of a function over one array of variables, which it copies.
KORU_APART inline Constraint overArray(Vars vars, bool (*function)(CSint **, int), Place where) {
  return {[x = own(vars), function](State &s) { return function(s.pointers(x).data(), sizeOf(x.size())); }, where};
}

// The same over two arrays of one size.
KORU_APART inline Constraint overTwo(Vars a, Vars b, bool (*function)(CSint **, CSint **, int), Place where) {
  sameSize(a.size(), b.size());
  return {[x = own(a), y = own(b), function](State &s) {
            return function(s.pointers(x).data(), s.pointers(y).data(), sizeOf(x.size()));
          },
          where};
}

// The same over the rows of a table.
KORU_APART inline Constraint overRows(Vars vars, const std::vector<std::vector<int>> &rows,
                                      bool (*function)(CSint **, int, const int *, int), Place where) {
  std::vector<int> cells;
  cells.reserve(rows.size() * vars.size() + 1);
  for (const std::vector<int> &row : rows) {
    sameSize(row.size(), vars.size());
    cells.insert(cells.end(), row.begin(), row.end());
  }
  return {[x = own(vars), cells = std::move(cells), n = sizeOf(rows.size()), function](State &s) {
            const std::vector<int> copy = copyOf(cells);
            return function(s.pointers(x).data(), sizeOf(x.size()), copy.data(), n);
          },
          where};
}

// Tasks: with `present` empty all are there.
inline CSint **orNone(std::vector<CSint *> &present, const Copy &given) {
  return given.empty() ? nullptr : present.data();
}

inline bool runHook(CSint **, int, void *extra) {
  auto *hook = static_cast<Hook *>(extra);
  return hook->state->guard(false, [hook] { return hook->run(hook->vars); });
}

}  // namespace detail

/// All different: cs_AllNeq, cs_AllNeqBounds or cs_AllNeqDomain.
KORU_APART inline Constraint all_different(Vars vars, Strength strength = Strength::simple, Place where = {}) {
  if (strength == Strength::bounds) return detail::overArray(vars, cs_AllNeqBounds, where);
  if (strength == Strength::domain) return detail::overArray(vars, cs_AllNeqDomain, where);
  return {[x = detail::own(vars)](detail::State &s) { return cs_AllNeq(s.keep(x), detail::sizeOf(x.size())) != 0; },
          where};
}

/// One of the rows; a cell may be CS_ANY. cs_ShortTable, or cs_Table where no cell is.
KORU_APART inline Constraint table(Vars vars, const std::vector<std::vector<int>> &rows, Place where = {}) {
  for (const std::vector<int> &row : rows)
    for (const int cell : row)
      if (cell == CS_ANY) return detail::overRows(vars, rows, cs_ShortTable, where);
  return detail::overRows(vars, rows, cs_Table, where);
}

/// None of the rows: cs_NotTable.
KORU_APART inline Constraint not_table(Vars vars, const std::vector<std::vector<int>> &rows, Place where = {}) {
  return detail::overRows(vars, rows, cs_NotTable, where);
}

/// A word of the automaton: cs_Regular.
KORU_APART inline Constraint regular(Vars vars, Automaton automaton, Place where = {}) {
  const Automaton &a = automaton;
  if (a.states < 1 || a.symbols < 1 ||
      a.next.size() / static_cast<std::size_t>(a.symbols) != static_cast<std::size_t>(a.states) ||
      a.next.size() % static_cast<std::size_t>(a.symbols) != 0)
    throw std::invalid_argument("koru: an automaton whose table has not a row for each state");
  return {[x = detail::own(vars), a = std::move(automaton)](detail::State &s) {
            const std::vector<int> finals = detail::copyOf(a.finals);
            return cs_Regular(s.keep(x), detail::sizeOf(x.size()), a.next.data(), a.states, a.symbols, a.start,
                              finals.data(), detail::sizeOf(finals.size())) != 0;
          },
          where};
}

/// A path from the root to the terminal: cs_Mdd.
KORU_APART inline Constraint mdd(Vars vars, const std::vector<Arc> &arcs, int root, int terminal, Place where = {}) {
  return {[x = detail::own(vars), arcs, root, terminal](detail::State &s) {
            std::vector<int> sides[3];
            for (std::vector<int> &side : sides) side.reserve(arcs.size() + 1);
            for (const Arc &arc : arcs) {
              sides[0].push_back(arc.source);
              sides[1].push_back(arc.value);
              sides[2].push_back(arc.target);
            }
            return cs_Mdd(s.pointers(x).data(), detail::sizeOf(x.size()), sides[0].data(), sides[1].data(),
                          sides[2].data(), detail::sizeOf(arcs.size()), root, terminal);
          },
          where};
}

/// next[i] follows i on one tour through all: cs_Circuit.
KORU_APART inline Constraint circuit(Vars next, Place where = {}) { return detail::overArray(next, cs_Circuit, where); }
/// On one tour through some; the others follow themselves: cs_Subcircuit.
KORU_APART inline Constraint subcircuit(Vars next, Place where = {}) {
  return detail::overArray(next, cs_Subcircuit, where);
}
/// x[i] = j exactly when y[j] = i: cs_Inverse.
KORU_APART inline Constraint inverse(Vars x, Vars y, Place where = {}) {
  return detail::overTwo(x, y, cs_Inverse, where);
}
/// cs_Increasing.
KORU_APART inline Constraint increasing(Vars vars, Place where = {}) {
  return detail::overArray(vars, cs_Increasing, where);
}
/// cs_StrictlyIncreasing.
KORU_APART inline Constraint strictly_increasing(Vars vars, Place where = {}) {
  return detail::overArray(vars, cs_StrictlyIncreasing, where);
}
/// x comes before y as a word, or is equal: cs_LexLe.
KORU_APART inline Constraint lex_le(Vars x, Vars y, Place where = {}) { return detail::overTwo(x, y, cs_LexLe, where); }
/// x comes before y as a word: cs_LexLt.
KORU_APART inline Constraint lex_lt(Vars x, Vars y, Place where = {}) { return detail::overTwo(x, y, cs_LexLt, where); }

/// Before each t stands an s: cs_Precede.
KORU_APART inline Constraint precede(Vars vars, int s, int t, Place where = {}) {
  return {[x = detail::own(vars), s, t](detail::State &state) {
            return cs_Precede(state.pointers(x).data(), detail::sizeOf(x.size()), s, t);
          },
          where};
}

/// result = values[index]: cs_ElementOf.
KORU_APART inline Constraint element(const std::vector<int> &values, IntVar index, IntVar result, Place where = {}) {
  return {[values, index, result](detail::State &s) {
            const std::vector<int> copy = detail::copyOf(values);
            return cs_ElementOf(s.pointer(index), copy.data(), detail::sizeOf(copy.size()), s.pointer(result));
          },
          where};
}

/// result = vars[index]: cs_VarElementOf.
KORU_APART inline Constraint element(Vars vars, IntVar index, IntVar result, Place where = {}) {
  return {[x = detail::own(vars), index, result](detail::State &s) {
            return cs_VarElementOf(s.pointer(index), s.pointers(x).data(), detail::sizeOf(x.size()), s.pointer(result));
          },
          where};
}

/// How many of the variables take a value; see count.
class Count {
 public:
  KORU_APART Count(Vars vars, int value) : vars_(detail::own(vars)), value_(value) {}
  KORU_APART Count(const Count &) = default;
  KORU_APART Count &operator=(const Count &) = default;
  KORU_APART ~Count() = default;

  /// From lo to hi of them: cs_OccurConstraints.
  KORU_APART Constraint in(int lo, int hi, Place where = {}) const {
    return {[*this, lo, hi](detail::State &s) {
              const int most = detail::sizeOf(vars_.size());
              return lo <= most && hi >= 0 && lo <= hi && is(s, s.create(lo > 0 ? lo : 0, hi < most ? hi : most));
            },
            where};
  }
  /// So many of them.
  Constraint is(IntVar number, Place where = {}) const {
    return {[*this, number](detail::State &s) { return is(s, s.pointer(number)); }, where};
  }
  Constraint is(int number, Place where = {}) const { return in(number, number, where); }

 private:
  bool is(detail::State &s, CSint *number) const {
    return cs_OccurConstraints(number, value_, s.keep(vars_), detail::sizeOf(vars_.size()));
  }

  detail::Copy vars_;
  int value_;
};

/// count(vars, value).in(lo, hi), count(vars, value).is(number).
KORU_APART inline Count count(Vars vars, int value) { return {vars, value}; }

/// number of the variables equal the variable value: cs_CountOf.
KORU_APART inline Constraint count(Vars vars, IntVar value, IntVar number, Place where = {}) {
  return {[x = detail::own(vars), value, number](detail::State &s) {
            return cs_CountOf(s.pointers(x).data(), detail::sizeOf(x.size()), s.pointer(value), s.pointer(number));
          },
          where};
}

/// counts[j] of the variables equal values[j], and when closed, they take no others: cs_Cardinality, or with
/// Strength::domain cs_CardinalityDomain.
KORU_APART inline Constraint cardinality(Vars vars, const std::vector<int> &values, Vars counts, bool closed = false,
                                         Strength strength = Strength::simple, Place where = {}) {
  detail::sameSize(values.size(), counts.size());
  const auto function = strength == Strength::domain ? cs_CardinalityDomain : cs_Cardinality;
  return {[x = detail::own(vars), values, c = detail::own(counts), closed, function](detail::State &s) {
            const std::vector<int> copy = detail::copyOf(values);
            return function(s.pointers(x).data(), detail::sizeOf(x.size()), copy.data(), s.pointers(c).data(),
                            detail::sizeOf(copy.size()), closed);
          },
          where};
}

/// The variables take so many different values: cs_NValues.
KORU_APART inline Constraint nvalues(Vars vars, IntVar number, Place where = {}) {
  return {[x = detail::own(vars), number](detail::State &s) {
            return cs_NValues(s.pointers(x).data(), detail::sizeOf(x.size()), s.pointer(number));
          },
          where};
}

/// Item i, sizes[i] large, is in bin bins[i]; loads[j] is the sum of the sizes in bin j: cs_BinPacking.
KORU_APART inline Constraint bin_packing(Vars bins, const std::vector<int> &sizes, Vars loads, Place where = {}) {
  detail::sameSize(bins.size(), sizes.size());
  return {[x = detail::own(bins), sizes, l = detail::own(loads)](detail::State &s) {
            const std::vector<int> copy = detail::copyOf(sizes);
            return cs_BinPacking(s.pointers(x).data(), copy.data(), detail::sizeOf(x.size()), s.pointers(l).data(),
                                 detail::sizeOf(l.size()));
          },
          where};
}

/// One task at a time: cs_DisjunctiveTasks. Without `present` all tasks are there.
KORU_APART inline Constraint disjunctive(Vars starts, Vars durations, Vars present = {}, Place where = {}) {
  detail::sameSize(starts.size(), durations.size());
  if (!present.empty()) detail::sameSize(starts.size(), present.size());
  return {[x = detail::own(starts), d = detail::own(durations), there = detail::own(present)](detail::State &s) {
            std::vector<CSint *> p = s.pointers(there);
            return cs_DisjunctiveTasks(s.pointers(x).data(), s.pointers(d).data(), detail::orNone(p, there),
                                       detail::sizeOf(x.size()));
          },
          where};
}

/// Tasks share a capacity: cs_CumulativeTasks. Without `present` all tasks are there.
KORU_APART inline Constraint cumulative(Vars starts, Vars durations, Vars uses, IntVar capacity, Vars present = {},
                                        Place where = {}) {
  detail::sameSize(starts.size(), durations.size());
  detail::sameSize(starts.size(), uses.size());
  if (!present.empty()) detail::sameSize(starts.size(), present.size());
  return {[x = detail::own(starts), d = detail::own(durations), u = detail::own(uses), capacity,
           there = detail::own(present)](detail::State &s) {
            std::vector<CSint *> p = s.pointers(there);
            return cs_CumulativeTasks(s.pointers(x).data(), s.pointers(d).data(), s.pointers(u).data(),
                                      detail::orNone(p, there), detail::sizeOf(x.size()), s.pointer(capacity));
          },
          where};
}

/// Rectangles that do not overlap: the lower left corner of the i-th is (x[i], y[i]). cs_NoOverlap.
KORU_APART inline Constraint no_overlap(Vars x, Vars widths, Vars y, Vars heights, Place where = {}) {
  for (const Vars &other : {widths, y, heights}) detail::sameSize(x.size(), other.size());
  return {
      [x = detail::own(x), w = detail::own(widths), y = detail::own(y), h = detail::own(heights)](detail::State &s) {
        return cs_NoOverlap(s.pointers(x).data(), s.pointers(w).data(), s.pointers(y).data(), s.pointers(h).data(),
                            detail::sizeOf(x.size()));
      },
      where};
}

/// A constraint of the host's own: `run` is called with the variables now, and after all others whenever one of them
/// has changed. It may post, and false makes the branch fail; what it throws arrives at whoever has searched or posted.
/// cs_eventRun.
KORU_APART inline Constraint propagator(Vars vars, std::function<bool(std::span<const IntVar>)> run, Place where = {}) {
  return {[x = detail::own(vars), run = std::move(run)](detail::State &s) {
            s.hooks.first = new detail::Hook{&s, x, run, s.hooks.first};
            return cs_eventRun(s.pointers(x).data(), detail::sizeOf(x.size()), detail::runHook, s.hooks.first);
          },
          where};
}

}  // namespace v1
}  // namespace koru
