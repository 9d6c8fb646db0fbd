// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Searches of many processes for models of koru.hpp; see koru_mpi.h for what is promised and what the program must keep
// to. Links with koru_mpi.
//
//     koru::Result r = koru::mpi::minimize(m, marks.back(), {.vars = marks});    // was: m.minimize(marks.back(), ...)
//
// For exact searches: an option that cs_findUnwalkableOption names (restarts, neighbourhoods, orders by failures,
// limits, a progress function, ...) ends the run with a message. `found` is called in the first process only; all come
// to the same result.
#pragma once

#include "koru.hpp"
#include "koru_mpi.h"

namespace koru {
inline namespace v1 {
namespace mpi {

/// The number of this process, 0 for the first one, and how many there are.
inline int rank() { return cs_mpiRank(); }
inline int size() { return cs_mpiSize(); }

namespace detail {

KORU_APART inline Result whole(Solutions search) {
  Result result;
  result.best = search.through(cs_mpiSolve);
  result.status = search.status();
  result.statistics = search.statistics();
  return result;
}

}  // namespace detail

/// All solutions, in the order of one process; `best` is the last one. To count them, .statistics.solutions.
inline Result solve(Model &m, const Search &how = {}) { return detail::whole(m.solutions(how)); }
/// The solution with the least or the greatest sum.
inline Result minimize(Model &m, const Linear &cost, const Search &how = {}) {
  return detail::whole(m.minimizing(cost, how));
}
inline Result maximize(Model &m, const Linear &gain, const Search &how = {}) {
  return detail::whole(m.maximizing(gain, how));
}

}  // namespace mpi
}  // namespace v1
}  // namespace koru
