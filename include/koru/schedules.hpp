// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Part of koru.hpp: more constraints on tasks, beside disjunctive and cumulative. A presence that is not given (a
// variable made by default) stands for a task that is there; presences that are not given, for tasks that all are.
#pragma once

#include "constraints.hpp"

namespace koru {
inline namespace v1 {
namespace detail {

inline CSint *orNone(const State &s, IntVar v) { return v.given() ? s.pointer(v) : nullptr; }

inline void samePresence(Vars tasks, Vars present) {
  if (!present.empty()) sameSize(tasks.size(), present.size());
}

// A task that is made of others.
KORU_APART inline Constraint ofParts(bool (*function)(CSint *, CSint *, CSint *, CSint **, CSint **, CSint **, int),
                                     IntVar start, IntVar duration, IntVar present, Vars starts, Vars durations,
                                     Vars presents, Place where) {
  sameSize(starts.size(), durations.size());
  samePresence(starts, presents);
  return {[=, x = own(starts), d = own(durations), there = own(presents)](State &s) {
            std::vector<CSint *> p = s.pointers(there);
            return function(s.pointer(start), s.pointer(duration), orNone(s, present), s.pointers(x).data(),
                            s.pointers(d).data(), orNone(p, there), sizeOf(x.size()));
          },
          where};
}

}  // namespace detail

/// One task at a time, and times[left[i]][needed[j]] between a task i and any later task j: cs_DisjunctiveTransitions.
KORU_APART inline Constraint transitions(Vars starts, Vars durations, const std::vector<int> &left,
                                         const std::vector<int> &needed, const std::vector<std::vector<int>> &times,
                                         Vars present = {}, Place where = {}) {
  for (const std::size_t size : {durations.size(), left.size(), needed.size()}) detail::sameSize(starts.size(), size);
  detail::samePresence(starts, present);
  std::vector<int> cells;
  for (const std::vector<int> &row : times) {
    detail::sameSize(row.size(), times[0].size());
    cells.insert(cells.end(), row.begin(), row.end());
  }
  const int columns = times.empty() ? 0 : detail::sizeOf(times[0].size());
  return {[=, x = detail::own(starts), d = detail::own(durations), there = detail::own(present),
           rows = detail::sizeOf(times.size())](detail::State &s) {
            std::vector<CSint *> p = s.pointers(there);
            return cs_DisjunctiveTransitions(s.pointers(x).data(), s.pointers(d).data(), detail::orNone(p, there),
                                             detail::copyOf(left).data(), detail::copyOf(needed).data(),
                                             detail::sizeOf(x.size()), detail::copyOf(cells).data(), rows, columns);
          },
          where};
}

/// start + duration + delay <= next, always or when a truth value is true: cs_PrecedenceIf.
KORU_APART inline Constraint precedence(IntVar start, IntVar duration, IntVar next, int delay = 0, IntVar when = {},
                                        Place where = {}) {
  return {[=](detail::State &s) {
            return cs_PrecedenceIf(detail::orNone(s, when), s.pointer(start), s.pointer(duration), delay,
                                   s.pointer(next));
          },
          where};
}

/// The first one ends before the other one begins when a truth value is true, and the other way round when it is false;
/// Orders of a search decide that: cs_EitherBefore.
KORU_APART inline Constraint either_before(IntVar first, IntVar start, IntVar duration, IntVar other_start,
                                           IntVar other_duration, IntVar present = {}, IntVar other_present = {},
                                           Place where = {}) {
  return {[=](detail::State &s) {
            return cs_EitherBefore(s.pointer(first), s.pointer(start), s.pointer(duration), detail::orNone(s, present),
                                   s.pointer(other_start), s.pointer(other_duration), detail::orNone(s, other_present));
          },
          where};
}

/// A task that one of several does: cs_Alternative.
inline Constraint alternative(IntVar start, IntVar duration, Vars starts, Vars durations, Vars presents,
                              IntVar present = {}, Place where = {}) {
  return detail::ofParts(cs_Alternative, start, duration, present, starts, durations, presents, where);
}

/// A task that covers others, from the first start to the last end: cs_Span.
inline Constraint span(IntVar start, IntVar duration, Vars starts, Vars durations, Vars presents = {},
                       IntVar present = {}, Place where = {}) {
  return detail::ofParts(cs_Span, start, duration, present, starts, durations, presents, where);
}

/// A level that begins at `start` and stays from low to high; changes[i] is added at times[i]: cs_Reservoir.
KORU_APART inline Constraint reservoir(Vars times, Vars changes, int start, int low, int high, Vars present = {},
                                       Place where = {}) {
  detail::sameSize(times.size(), changes.size());
  detail::samePresence(times, present);
  return {[=, x = detail::own(times), d = detail::own(changes), there = detail::own(present)](detail::State &s) {
            std::vector<CSint *> p = s.pointers(there);
            return cs_Reservoir(s.pointers(x).data(), s.pointers(d).data(), detail::orNone(p, there),
                                detail::sizeOf(x.size()), start, low, high);
          },
          where};
}

}  // namespace v1
}  // namespace koru
