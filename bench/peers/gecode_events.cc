// SPDX-License-Identifier: MIT
// Automata and tasks as a Gecode user writes them. Where Koru undoes a context, a clone is thrown away.
#include <gecode/minimodel.hh>
#include <memory>

#include "gecode_problem.h"

namespace koru::bench {

namespace {

// Null when the problem is not consistent.
std::unique_ptr<Problem> cloneOf(Problem &problem) {
  if (problem.status() == Gecode::SS_FAILED) return nullptr;
  return std::unique_ptr<Problem>(static_cast<Problem *>(problem.clone()));
}

bool isConsistent(Problem &problem) { return problem.status() != Gecode::SS_FAILED; }

// ----- automata

Gecode::DFA dfaOf(const Automaton &automaton) {
  std::vector<Gecode::DFA::Transition> transitions;
  for (int q = 0; q < automaton.states; ++q)
    for (int a = 0; a < automaton.symbols; ++a) {
      const int target = automaton.table[static_cast<std::size_t>(q * automaton.symbols + a)];
      if (target >= 0) transitions.emplace_back(q, a, target);
    }
  transitions.emplace_back(-1, 0, 0);  // the end
  std::vector<int> finals = automaton.finals;
  finals.push_back(-1);
  return {0, transitions.data(), finals.data()};
}

template <int length, int states, int symbols>
Outcome postAutomaton(const Recomputation &) {
  const Automaton automaton = randomAutomaton(states, symbols);
  Outcome outcome;
  Problem problem(length, 0, symbols - 1);
  Gecode::extensional(problem, problem.vars, dfaOf(automaton));
  if (isConsistent(problem)) outcome.units = static_cast<long long>(automaton.edges(length));
  return outcome;
}

bool halveAndBind(Problem &problem) {
  for (const Gecode::IntVar &v : problem.vars) {
    Gecode::rel(problem, v, Gecode::IRT_GQ, (v.min() + v.max() + 1) / 2);
    if (!isConsistent(problem)) return false;
  }
  for (const Gecode::IntVar &v : problem.vars) {
    Gecode::rel(problem, v, Gecode::IRT_EQ, v.min());
    if (!isConsistent(problem)) return false;
  }
  return true;
}

template <int length, int states, int symbols, int times>
Outcome cascade(const Recomputation &) {
  Problem problem(length, 0, symbols - 1);
  Outcome outcome;
  Gecode::extensional(problem, problem.vars, dfaOf(randomAutomaton(states, symbols)));
  for (int i = 0; i < times; ++i) {
    const std::unique_ptr<Problem> clone = cloneOf(problem);
    if (clone == nullptr || !halveAndBind(*clone)) return Outcome{};
    outcome.units += 2 * length;
  }
  return outcome;
}

Problem *makeNonogram(const Nonogram &puzzle) {
  auto *problem = new Problem(puzzle.size * puzzle.size, 0, 1);
  for (std::size_t line = 0; line < puzzle.lines.size(); ++line) {
    IntVarArgs cells;
    for (std::size_t place = 0; place < static_cast<std::size_t>(puzzle.size); ++place)
      cells << problem->vars[static_cast<int>(puzzle.cell(line, place))];
    Gecode::extensional(*problem, cells, dfaOf(puzzle.lines[line]));
  }
  problem->inOrder(problem->vars);
  return problem;
}

template <int size, std::size_t count>
Outcome nonograms(const Recomputation &recomputation) {
  static const std::vector<Nonogram> puzzles = randomNonograms(size, count);
  Outcome outcome;
  for (const Nonogram &puzzle : puzzles) search(outcome, makeNonogram(puzzle), recomputation, 1);
  return outcome;
}

// ----- rosters

Outcome roster(const Recomputation &recomputation) {
  auto *problem = new Problem(Roster::kPeople * Roster::kDays, 0, Roster::kShifts - 1);
  const IntVarArray &x = problem->vars;
  const Gecode::DFA rules = dfaOf(Roster::rules());
  for (int person = 0; person < Roster::kPeople; ++person) {
    IntVarArgs line;
    for (int day = 0; day < Roster::kDays; ++day) line << x[Roster::cell(person, day)];
    Gecode::extensional(*problem, line, rules);
  }
  for (int day = 0; day < Roster::kDays; ++day) {
    IntVarArgs people;
    for (int person = 0; person < Roster::kPeople; ++person) people << x[Roster::cell(person, day)];
    for (int shift = 0; shift < Roster::kShifts; ++shift)
      Gecode::count(*problem, people, shift, Gecode::IRT_EQ, Roster::kNeeded[shift]);
  }
  problem->inOrder(x);
  Outcome outcome;
  search(outcome, problem, recomputation, 1);
  return outcome;
}

// ----- job shop

class ShopProblem : public CostProblem {
 public:
  explicit ShopProblem(const Shop &shop) : CostProblem(0, 0, 0, shop.horizon) {
    for (const std::vector<Operation> &job : shop.jobs) addJob(job, shop.horizon);
    for (std::size_t i = 0; i < placed_.size(); ++i)
      for (std::size_t j = i + 1; j < placed_.size(); ++j)
        if (placed_[i].machine == placed_[j].machine) addOrder(placed_[i], placed_[j]);
    orders_ << cost;
    inOrder(orders_);
  }

 private:
  struct Placed {
    int machine;
    int duration;
    Gecode::IntVar start;
  };

  void addJob(const std::vector<Operation> &job, int horizon) {
    for (std::size_t i = 0; i < job.size(); ++i) {
      const Gecode::IntVar start(*this, 0, horizon);
      if (i > 0) notBefore(start, placed_.back());
      placed_.push_back({job[i].machine, job[i].duration, start});
    }
    notBefore(cost, placed_.back());
  }

  void notBefore(const Gecode::IntVar &later, const Placed &first) {
    Gecode::linear(*this, IntArgs({1, -1}), IntVarArgs() << later << first.start, Gecode::IRT_GQ, first.duration);
  }

  // 1 when the first comes before the second.
  Gecode::BoolVar isOrder(const Placed &first, const Placed &second) {
    const Gecode::BoolVar order(*this, 0, 1);
    Gecode::linear(*this, IntArgs({1, -1}), IntVarArgs() << second.start << first.start, Gecode::IRT_GQ, first.duration,
                   order);
    return order;
  }

  void addOrder(const Placed &a, const Placed &b) {
    const Gecode::BoolVar order = isOrder(a, b);
    Gecode::rel(*this, order, Gecode::IRT_NQ, isOrder(b, a));
    orders_ << Gecode::channel(*this, order);
  }

  std::vector<Placed> placed_;
  IntVarArgs orders_;
};

template <int jobs, int machines>
Outcome jobShop(const Recomputation &recomputation) {
  const Shop shop(jobs, machines);
  return minimizeByRestarts([&] { return static_cast<CostProblem *>(new ShopProblem(shop)); }, recomputation);
}

// ----- cumulative

bool raiseEach(Problem &problem) {
  for (const Gecode::IntVar &start : problem.vars) {
    if (start.assigned()) continue;
    Gecode::rel(problem, start, Gecode::IRT_GQ, start.min() + 1);
    if (!isConsistent(problem)) return false;
  }
  return true;
}

template <int n, int times>
Outcome cumulative(const Recomputation &) {
  const Tasks tasks(n, 0);
  Problem problem(n, 0, 10 * n);
  for (std::size_t i = 0; i < tasks.starts.size(); ++i)
    Gecode::dom(problem, problem.vars[static_cast<int>(i)], tasks.starts[i], tasks.starts[i] + tasks.rooms[i]);
  Gecode::cumulative(problem, Tasks::kCapacity, problem.vars, IntArgs(tasks.durations), IntArgs(tasks.uses));
  Outcome outcome;
  for (int i = 0; i < times; ++i) {
    const std::unique_ptr<Problem> clone = cloneOf(problem);
    if (clone == nullptr || !raiseEach(*clone)) return Outcome{};
    outcome.units += n / 2;
  }
  return outcome;
}

const PeerModel kPeers[] = {
    {"regular posting", postAutomaton<200, 500, 50>},
    {"regular cascade", cascade<100, 60, 10, 20>},
    {"nonogram x 20", nonograms<12, 20>},
    {"nonogram 25", nonograms<25, 1>},
    {"roster 24x21", roster},
    {"job shop 5x4", jobShop<5, 4>},
    {"cumulative 10", cumulative<10, 2000>},
    {"cumulative 60", cumulative<60, 200>},
    {"cumulative 500", cumulative<500, 10>},
};

}  // namespace

std::span<const PeerModel> eventPeers() { return kPeers; }

}  // namespace koru::bench
