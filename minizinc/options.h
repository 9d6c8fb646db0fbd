// SPDX-License-Identifier: MIT
// The command line.
#ifndef KORU_MINIZINC_OPTIONS_H
#define KORU_MINIZINC_OPTIONS_H

#include <string>

namespace koru::fzn {

class SharedBound;
struct Ranks;

struct Options {
  std::string file;
  bool all = false;            // -a: every solution; of an optimisation, every better one
  bool intermediate = false;   // -i: of an optimisation, every better one
  long long solutions = 0;     // -n; 0: one, or all
  long long milliseconds = 0;  // -t; 0: no limit
  unsigned long long seed = 0;
  long long processes = 1;
  bool statistics = false;
  bool free = false;  // -f: search as the solver likes
  bool verbose = false;
  bool verify = false;           // check every solution before it is printed
  bool explain = false;          // of a model without a solution, say why
  std::string restarts;          // none, luby, geometric or constant; empty: as the file says
  std::string profile;           // where the profiler's report goes
  bool tellsObjective = false;   // in a line of its own before the end of a solution: for the parent of this process
  SharedBound *bound = nullptr;  // of the portfolio that the process belongs to, if it searches for an optimum
  const Ranks *ranks = nullptr;  // those of an mpirun
  bool help = false;
};

// False with a message when the command line is none.
bool readOptions(int argc, char **argv, Options &options, std::string &message);

extern const char *const kUsage;

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_OPTIONS_H
