// SPDX-License-Identifier: MIT
// The interpreter: executes the lines of a trace, keeps what their numbers stand for, and holds off what the library
// forbids its callers (ending the solver from a callback, closing the context of somebody else, endless searches).
//
// Two models look on: the twin, which knows what a context must bring back, and the solutions, which know what the
// relations posted so far leave. What they object to is the trace's failure; the invariant checker aborts by itself.
#pragma once

#include <array>
#include <cstdio>
#include <deque>
#include <map>
#include <set>
#include <string>

#include "core/solver.h"
#include "koru_extras.h"
#include "traces/blocks.h"
#include "traces/solutions.h"
#include "traces/table.h"
#include "traces/twin.h"

namespace koru::traces {

// Wrong on purpose, to see that it is noticed.
enum class Fault { kNone, kRelation, kRestore, kLeak, kCrash, kHang, kCallback };

struct Settings {
  bool transcript = false;
  Fault fault = Fault::kNone;
};

// What has been called, for the figures; indexed by row.
struct Tally {
  static constexpr std::size_t kRows = 512;
  std::uint64_t calls[kRows];
  std::uint64_t skipped[kRows];
  std::uint64_t solved;    // comparisons of all solutions
  std::uint64_t refuted;   // failures that were found to be right
  std::uint64_t restored;  // restores that were compared
  std::uint64_t traces;
};

// Arrays that constraints may keep: they live until the trace ends.
struct Kept {
  std::deque<std::vector<CSint *>> variables;
  std::deque<std::vector<CSint **>> matrices;
  std::deque<std::vector<int>> ints;
  std::deque<std::vector<long long>> longs;
  std::deque<std::vector<CSvalueSelector *>> selectors;
};

class Machine {
 public:
  Machine(const Trace &trace, const Settings &settings, Tally &tally);
  Machine(const Machine &) = delete;
  Machine &operator=(const Machine &) = delete;
  ~Machine();

  // Runs the trace to its end, or to the first failure. Empty when all was as it must be.
  const std::string &run();
  void fail(const std::string &what);

  // ----- what rows work with

  CSint *variable(int number) const { return at(world_.variables, number); }
  CSvalueSelector *selector(int number) const { return at(selectors_, number); }
  CSsearchNotify *hooks(int number) const { return at(hooks_, number); }
  CSnoGoodSet *set(int number) const { return at(world_.sets, number); }
  CSprofiler *profiler(int number) const { return at(world_.profilers, number); }
  CSint **array(const std::vector<int> &references);
  CSvalueSelector **selectorArray(const std::vector<int> &references);
  Kept &kept() { return world_.kept; }
  std::FILE *scratch();  // its contents go to the transcript after the call

  void callConstraint(const Line &line);
  void answer(const Line &line, int number);
  void answer(const Line &line, const char *text);
  void answer(const Line &line, CSint *v);
  void answer(const Line &line, CSint **array);  // of the size that the first argument says
  void answer(const Line &line, int *domain);
  void answer(const Line &line, CSvalueSelector *selector);
  void answer(const Line &line, CSsearchNotify *hooks);
  void answer(const Line &line, CSnoGoodSet *set);
  void answer(const Line &line, CSprofiler *profiler);

  void start();
  void end();
  void finish();
  void parkSolver(const Line &line);
  void attachSolver(const Line &line);
  void defineScript(const Line &line);
  void failAllocations(int first, bool all);
  void solve();
  void forgetSelector(int number);
  void forgetHooks(int number);
  void deleteProfiler(int number);
  void released(const CSnoGoodSet *set);

  // ----- callbacks

  // Runs the script of a callback. False when it refuses this call.
  bool callback(int script);
  int scriptNumber(int script) const { return scripts_[static_cast<std::size_t>(script)].answer; }
  int scriptCalls(int script) const { return scripts_[static_cast<std::size_t>(script)].calls; }
  void undone(CSint *v, int index);
  static Machine *current;

 private:
  // What belongs to a solver; there are two of them, one of which may be parked.
  struct World {
    explicit World(bool wrong) : solutions(wrong) {}
    std::array<CSint *, kReferences> variables{};
    std::array<CSnoGoodSet *, kReferences> sets{};
    std::array<CSprofiler *, kReferences> profilers{};
    std::map<int, std::string> shown;
    std::set<const CSint *> tied;  // wide variables that a constraint holds already
    int wideTies = 0;
    Kept kept;
    Twin twin;
    Solutions solutions;
  };

  // What was so before a call.
  struct Before {
    int depth;  // contexts open
    int refused;
    bool lacking;  // a relation without one of its variables
    std::vector<Twin::Mark> marks;
    std::optional<Posted> relation;  // of a constraint
  };

  struct Script {
    int refusesFrom = 0;  // 0: never
    int answer = 0;
    int calls = 0;
    std::vector<const Line *> lines;
  };

  template <class T>
  static T *at(const std::array<T *, kReferences> &all, int number) {
    return number >= 0 && number < kReferences ? all[static_cast<std::size_t>(number)] : nullptr;
  }

  void execute(const Line &line);
  void call(const Line &line);
  Before look(const Line &line);
  void tellTwin(const Line &line, const Before &before);
  void tellSolutions(const Line &line, Before &before);
  void observeInScript(const Line &line, int depth);
  void observeContext(const Line &line, int depth, const std::vector<Twin::Mark> &marks);
  void observeRelation(const Line &line, Posted relation, int depth);
  void observeSearch(const Line &line, int depth);
  void observeCreation(const Line &line);
  Posted posted(const Line &line) const;
  bool lacksVariable(const Line &line) const;
  static bool usual(const Posted &relation);
  void runScript(const Script &script);
  bool seedFault(const Line &line);
  bool allowed(const Line &line);
  bool affordable(const Line &line);
  bool allowedInScript(const Line &line) const;
  bool allowedSearch(const Line &line);
  bool allowedWide(const Line &line);
  bool usesItsCapacity(const Line &line) const;
  bool tie(std::vector<const CSint *> &wide);
  void changeWorlds();
  void endParked();
  void effect(int depth);
  void closeDownTo(int depth);
  void say(const std::string &text);
  void sayScratch(const Line &line);
  void sayChanges();
  void releaseOwned();
  void collect(CSint **array, int size);
  template <class T>
  void keep(std::array<T *, kReferences> &all, const Line &line, T *what);

  const Trace &trace_;
  Settings settings_;
  Tally &tally_;
  std::string failure_;

  World world_, otherWorld_;
  CSsolver *parked_ = nullptr;  // the other world's
  std::array<CSvalueSelector *, kReferences> selectors_{};
  std::array<CSsearchNotify *, kReferences> hooks_{};
  std::set<const CSprofiler *> deletedProfilers_;
  const long before_ = liveBlocks();
  std::array<Script, kScripts> scripts_;
  std::vector<CSvalueSelector *> spareSelectors_;  // whose number was given to others
  std::vector<CSsearchNotify *> spareHooks_;
  static constexpr int kDepth = 2;  // scripts that run inside each other
  std::FILE *scratch_ = nullptr;
  std::array<std::array<char, 4096>, kDepth + 1> scratchText_{};

  int scriptDepth_ = 0;
  int scriptBase_ = 0;        // contexts open when the script began
  int scriptBudget_ = 3000;   // lines that scripts may run
  int searchBudget_ = 20000;  // leaves that searches may have
  bool refused_ = false;      // a callback has refused during the present line, or acted on the outside
  int answer_ = 0;            // what the present line answered; of pointers whether there is one
  bool ending_ = false;
  bool byHand_ = false;  // the present line asks a selector itself
  std::vector<Tuple> collected_;
};

}  // namespace koru::traces
