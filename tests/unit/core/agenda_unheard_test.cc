// SPDX-License-Identifier: MIT
// A constraint with a run that never narrows changes nothing that can be seen: random programs with and without one.
#include <random>
#include <sstream>

#include "unit/core/runner.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::runner;

constexpr int kVariables = 6;

// A program drawn from a seed, and everything that its host hears.
class RandomProgram {
 public:
  explicit RandomProgram(unsigned seed) : random_(seed) {
    for (CSint *&v : vars_) v = cs_createCSint(0, 7);
  }

  CSint **vars() { return vars_; }

  std::string run() {
    cs_eventKnown(vars_, kVariables, known, this);
    cs_eventNewMin(vars_, kVariables, moved<'<'>, this);
    for (int i = 0; i < 4; ++i) log_ << post() << ';';
    cs_eventNewMax(vars_, kVariables, moved<'>'>, this);
    cs_eventNeq(vars_, kVariables, moved<'-'>, this);
    cs_eventConflict(vars_, kVariables, conflict, this);
    for (int i = 0; i < 30; ++i) step();
    cs_restoreAll();
    log_ << cs_search(vars_, kVariables, cs_findFreeVarNbElements);
    show();
    log_ << cs_getNbFails() << ' ' << cs_getNbChoicePoints();
    return log_.str();
  }

 private:
  CSint *any() { return vars_[random_() % kVariables]; }
  int value() { return static_cast<int>(random_() % 8); }

  bool post() {
    CSint *x = any();
    CSint *y = any();
    switch (random_() % 6) {
      case 0:
        return cs_Neq(x, y);
      case 1:
        return cs_Le(x, y);
      case 2:
        return cs_EQ(cs_Add(x, y), 4 + value());
      case 3:
        return cs_AllNeq(vars_, 3) != 0;
      case 4:
        return cs_NEQ(cs_Sub(x, y), value());
      default:
        return cs_LE(cs_Mul(x, y), 5 * value());
    }
  }

  void step() {
    CSint *x = any();
    const int v = value();
    switch (random_() % 7) {
      case 0:
        log_ << 'S' << cs_saveContext();
        break;
      case 1:
        cs_restoreContext();
        break;
      case 2:
        log_ << cs_GE(x, v);
        break;
      case 3:
        log_ << cs_LE(x, v);
        break;
      case 4:
        log_ << cs_NEQ(x, v);
        break;
      case 5:
        log_ << cs_EQ(x, v);
        break;
      default:
        log_ << post();
        break;
    }
    show();
  }

  void show() {
    for (CSint *v : vars_) log_ << ' ' << ::testing::PrintToString(values(v));
    log_ << '\n';
  }

  static bool known(int value, int index, CSint **, int, void *extra) {
    static_cast<RandomProgram *>(extra)->log_ << 'k' << index << '=' << value << ' ';
    return true;
  }
  template <char sign>
  static bool moved(CSint *, int index, int old, CSint **, int, void *extra) {
    static_cast<RandomProgram *>(extra)->log_ << sign << index << ':' << old << ' ';
    return true;
  }
  static void conflict(CSint *, int index, CSconflictInfo *info, CSint **, int, void *extra) {
    static_cast<RandomProgram *>(extra)->log_ << '!' << index << ' ' << info->kind << ' ' << info->value << ' ';
  }

  std::mt19937 random_;
  CSint *vars_[kVariables] = {};
  std::ostringstream log_;
};

class AgendaUnheardTest : public RunnerTest {};

TEST_F(AgendaUnheardTest, ARunThatNarrowsNothingIsNotNoticed) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    std::string texts[2];
    for (const bool deferred : {false, true}) {
      cs_end();
      cs_init();
      RandomProgram program(seed);
      if (deferred) postRunner(1, {program.vars(), program.vars() + kVariables}, Rank::kHeavy);
      texts[deferred ? 1 : 0] = program.run();
    }
    ASSERT_EQ(texts[0], texts[1]) << "seed " << seed;
  }
  EXPECT_GT(log.size(), 4000U) << "runs there were";
}

}  // namespace
