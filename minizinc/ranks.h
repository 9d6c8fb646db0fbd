// SPDX-License-Identifier: MIT
// The processes of an mpirun, that share an exact search by koru_mpi. The library is opened when there are any: nobody
// else needs it.
#ifndef KORU_MINIZINC_RANKS_H
#define KORU_MINIZINC_RANKS_H

#include <koru_extras.h>

#include <string>

namespace koru::fzn {

struct Ranks {
  // cs_mpiSolve; null when no launcher has started this process beside others.
  CSstatus (*solve)(CSsearch *search, bool (*found)(CSsearch *search, void *extra), void *extra) = nullptr;
  int rank = 0;

  explicit operator bool() const { return solve != nullptr; }
};

// False with a message when processes were started that cannot share anything. From then on the standard output of all
// but the first is discarded.
bool join(Ranks &ranks, std::string &message);

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_RANKS_H
