// SPDX-License-Identifier: MIT
// Random traces: a flavour says which groups of calls are common, the table which calls of a group; arguments are
// chosen so that most calls make sense, over domains so small that the model can enumerate. The same seed gives the
// same trace.
#pragma once

#include <vector>

#include "support/kit/random.h"
#include "traces/table.h"

namespace koru::traces {

// Which traces: of all kinds, or those that are about choice points and what they bring back.
enum class Mix { kAll, kRestoring };

Trace generate(std::uint64_t seed, Mix mix = Mix::kAll);

class Generator {
 public:
  Generator(std::uint64_t seed, Mix mix);

  Trace run();
  // For mutations: one more line for a trace, which is made known first.
  void know(const Trace &trace);
  Line anyLine();

 private:
  struct Range {
    int low;
    int high;
  };
  struct Flavour;
  static const Flavour kFlavours[];
  static const Flavour kRestoring[];

  void add(Line line);
  void changeSolvers();
  void scripts();
  void scriptLines(int script);
  void begin();
  void step();
  void finish();
  Line make(Group group);
  Line make(const char *name);
  Line make(const Row *row);
  const Row *pick(Group group);
  Group pickGroup();
  void fill(Line &line);
  void fillArg(const Line &line, char kind, Arg &arg);
  void fillInts(Line &line);
  void fillCreation(Line &line);
  void fillSearch(Line &line);
  void fillRegular(Line &line);
  void fillNoGood(Line &line);
  void target(Line &line);
  Range resultRange(const Line &line) const;

  int wrongChance() const;
  int wideChance() const;
  bool wrong();  // this argument is not what a sensible host would hand over
  int value();   // near the variable that was picked last
  int extreme();
  int someVariable();
  int someOf(char letter);
  int label();
  std::vector<int> someVariables();

  koru::test::Random random_;
  const Flavour *flavour_;
  Trace trace_;
  std::vector<Range> variables_, otherVariables_;  // of the solver that runs, and of the parked one
  int known_[4] = {};                              // numbers given away: q, h, g, p
  int scriptCount_ = 0;
  int depth_ = 0, otherDepth_ = 0;
  Range last_{0, 4};
  std::size_t lastSize_ = 0;
  int lastRows_ = 0;
  bool acting_ = false;  // scripts change what is outside of them
  bool byTurns_;         // two solvers work by turns
  koru::test::Random turns_;
};

}  // namespace koru::traces
