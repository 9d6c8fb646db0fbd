// SPDX-License-Identifier: MIT
// koru_programs: runs one of the short programs, for compare.py. It is linked with the shared library, so that one and
// the same program can be run with the libraries of two builds.
//
//   koru_programs                 lists the programs
//   koru_programs NAME [RUNS]     runs one RUNS times (1): prints what a run did, and the CPU time of the shortest
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "programs.h"

using namespace koru::bench;

// What is measured: compare.py lets callgrind count inside this function alone, and looks for it by its name.
extern "C" [[gnu::noinline]] void koru_measured(const Run *run, Outcome *outcome) { *outcome = (*run)(); }

static int runProgram(const Program &program, int runs) {
  const Run run = program.prepare();
  Outcome outcome;
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < runs; ++i) {
    const double start = cpuSeconds();
    koru_measured(&run, &outcome);
    best = std::min(best, cpuSeconds() - start);
  }
  std::printf("%lld units %lld choice points %lld fails %lld solutions %.6f s\n", outcome.units, outcome.choicePoints,
              outcome.fails, outcome.solutions, best);
  return outcome.units > 0 ? 0 : 1;
}

int main(int argc, char **argv) {
  for (const Program &program : kPrograms) {
    if (argc < 2)
      std::puts(program.name);
    else if (std::string_view(argv[1]) == program.name)
      return runProgram(program, argc > 2 ? std::atoi(argv[2]) : 1);
  }
  return argc < 2 ? 0 : 2;
}
