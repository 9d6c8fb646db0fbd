// SPDX-License-Identifier: MIT
// Searches that several processes share, simulated in one: each has a solver of its own, steps come in random order,
// messages are late, processes stall and die, or all die and others go on. The outcome is that of the search of one
// process, in every process.
#include <deque>
#include <map>
#include <memory>

#include "parallel/alone.h"
#include "parallel/party.h"
#include "semantic/random_model.h"
#include "support/kit/instrumented.h"

namespace koru::test::brute {
namespace {

using parallel::Follower;
using parallel::Ground;
using parallel::Leader;
using parallel::Mail;
using parallel::Message;
using parallel::Pace;
using parallel::Task;
using parallel::Transport;

// What lies between the processes: a queue for each pair, and a clock.
struct Net {
  explicit Net(std::uint64_t seed) : random(seed) {}

  Random random;
  std::map<std::pair<int, int>, std::deque<std::string>> queues;  // by receiver and sender
  double clock = 0;
  long long messages = 0;
  int lost = 0;
};

class Simulated final : public Transport {
 public:
  Simulated(Net &net, int rank, int size) : net_(net), rank_(rank), size_(size) {}

  int rank() const override { return rank_; }
  int size() const override { return size_; }
  void send(int to, std::string bytes) override {
    ++net_.messages;
    net_.queues[{to, rank_}].push_back(std::move(bytes));
  }
  // Each sender may be late.
  std::optional<Message> poll() override {
    for (int from = 0; from < size_; ++from) {
      auto &queue = net_.queues[{rank_, from}];
      if (queue.empty() || net_.random.chance(60)) continue;
      Message m{from, std::move(queue.front())};
      queue.pop_front();
      return m;
    }
    return std::nullopt;
  }
  double seconds() const override { return net_.clock; }
  void rest() override {}
  void noteLost() override { ++net_.lost; }
  [[noreturn]] void stop(const std::string &) override { std::abort(); }

 private:
  Net &net_;
  int rank_, size_;
};

parallel::Mode modeOf(Mode mode) {
  return mode == Mode::kAll     ? parallel::Mode::kAll
         : mode == Mode::kFirst ? parallel::Mode::kFirst
                                : parallel::Mode::kMinimize;
}

Task taskOf(RandomModel &m, Mode mode, bool tells, CSsearch *search) {
  if (search != nullptr)
    return {.mode = parallel::Mode::kObject,
            .array = nullptr,
            .size = 0,
            .select = nullptr,
            .search = search,
            .foundByObject = noteObject};
  return {.mode = modeOf(mode),
          .array = m.array(),
          .size = m.size(),
          .select = m.select(),
          .cost = mode == Mode::kMinimize ? m.cost() : nullptr,
          .found = mode == Mode::kAll && tells ? note : nullptr,
          .foundCost = mode == Mode::kMinimize && tells ? noteCost : nullptr};
}

class Process {
 public:
  Process(Net &net, std::uint64_t seed, Mode mode, int rank, int size, const Pace &pace)
      : transport_(net, rank, size), mail_(transport_), pace_(pace) {
    cs_init();
    model_ = std::make_unique<RandomModel>(seed);
    if (isObject(mode)) search_ = createSearch(*model_, mode);
    ground_ = std::make_unique<Ground>(taskOf(*model_, mode, true, search_));
    passes_ = mode == Mode::kMinimize || mode == Mode::kObjective;
    EXPECT_EQ(ground_->failure(), "");
    EXPECT_TRUE(ground_->ready());
    mail_.beginSearch();
    solver_ = cs_detachSolver();
  }
  ~Process() {
    if (solver_ == nullptr) return;
    cs_attachSolver(solver_);
    leader_.reset();
    follower_.reset();
    ground_.reset();
    cs_end();
  }
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;

  RandomModel *model() const { return model_.get(); }
  bool isOver() const { return over_; }
  bool alive = true;
  long long stalledUntil = 0;

  // Of the first one: the state of the search, how many solutions were told, and to go on from there.
  std::string state() const { return leader_->state(); }
  long long told() const { return leader_->told(); }
  void restore(const std::string &state) {
    ASSERT_TRUE(cs_attachSolver(solver_));
    begin();
    EXPECT_TRUE(leader_->restore(state)) << leader_->why();
    ASSERT_EQ(cs_detachSolver(), solver_);
  }
  bool hasBegun() const { return leader_ != nullptr || follower_ != nullptr; }

  // A step; the first one begins.
  void step() {
    ASSERT_TRUE(cs_attachSolver(solver_));
    if (!hasBegun()) {
      begin();
    } else {
      over_ = leader_ != nullptr ? !leader_->step() : !follower_->step();
      if (over_) end();
    }
    ASSERT_EQ(cs_detachSolver(), solver_);
  }

  Outcome outcome;  // once it is over
  std::string why;

 private:
  void begin() {
    if (transport_.rank() > 0) {
      follower_ = std::make_unique<Follower>(*ground_, transport_, mail_, pace_);
    } else {
      parallel::Wishes wishes;
      wishes.progressSeconds = 7;
      wishes.progress = [this](double done, const parallel::Counts &, int processes) {
        EXPECT_TRUE(passes_ || (done >= done_ - 1e-9 && done <= 1)) << done << " after " << done_;
        EXPECT_TRUE(processes >= 1 && processes <= transport_.size());
        done_ = done;
      };
      leader_ = std::make_unique<Leader>(*ground_, transport_, mail_, pace_, std::move(wishes));
    }
  }
  void end() {
    const parallel::Counts counts = leader_ != nullptr ? leader_->counts() : follower_->counts();
    why = leader_ != nullptr ? leader_->why() : follower_->why();
    outcome.result = leader_ != nullptr ? leader_->result() : follower_->result();
    outcome.fails = counts.fails;
    outcome.choicePoints = counts.choicePoints;
    outcome.end = search_ != nullptr ? endOf(*model_, search_) : model_->state();
  }

  Simulated transport_;
  Mail mail_;
  Pace pace_;
  std::unique_ptr<RandomModel> model_;
  CSsearch *search_ = nullptr;  // when it is an object's
  std::unique_ptr<Ground> ground_;
  std::unique_ptr<Leader> leader_;
  std::unique_ptr<Follower> follower_;
  CSsolver *solver_ = nullptr;
  bool over_ = false;
  bool passes_ = false;
  double done_ = 0;
};

struct Trouble {
  int deaths = 0;  // at most, never of the first process
  int stalls = 0;  // percent of steps after which a process stalls for longer than others are patient
};

struct Totals {
  long long searches = 0, choicePoints = 0, messages = 0;
  int lost = 0;
};

class Simulation {
 public:
  Simulation(std::uint64_t seed, std::uint64_t schedule, Mode mode, int size, const Trouble &trouble)
      : net_(schedule), trouble_(trouble) {
    Pace pace;
    pace.report = 15;
    pace.patience = 40.0 * size;
    pace.choicePoints = net_.random.between(1, 8);
    for (int rank = 0; rank < size; ++rank)
      processes_.push_back(std::make_unique<Process>(net_, seed, mode, rank, size, pace));
    model = processes_[0]->model();  // the leader's, whose solutions are told
    outcome = &processes_[0]->outcome;
  }

  void restore(const std::string &state) { processes_[0]->restore(state); }
  // The first process, after so many steps of all, once it has begun; null when it is over by then.
  const Process *after(long long steps) {
    for (long long i = 0; i < steps || !processes_[0]->hasBegun(); ++i) step(i);
    return processes_[0]->isOver() ? nullptr : processes_[0].get();
  }

  // The outcome of the first process, after a look at those of all others that live.
  Outcome run(Totals &totals) {
    for (long long steps = 0; !isOver(); ++steps) {
      if (steps > 300000) {
        ADD_FAILURE() << "it does not end" << stateText();
        break;
      }
      step(steps);
    }
    const Outcome &first = processes_[0]->outcome;
    for (const auto &p : processes_) {
      EXPECT_EQ(p->why, "");
      if (!p->alive) continue;
      Outcome o = p->outcome;
      o.solutions = first.solutions;
      EXPECT_TRUE(o == first);
    }
    totals.messages += net_.messages;
    totals.lost += net_.lost;
    return first;
  }

 private:
  std::string stateText() const {
    std::string text;
    for (const auto &p : processes_) text += p->isOver() ? " over" : p->alive ? " alive" : " dead";
    for (const auto &[pair, queue] : net_.queues)
      text += "; " + std::to_string(pair.second) + " to " + std::to_string(pair.first) + ": " +
              std::to_string(queue.size());
    return text;
  }
  bool isOver() const {
    return std::ranges::all_of(processes_, [](const auto &p) { return !p->alive || p->isOver(); });
  }
  void step(long long now) {
    net_.clock += 1;
    const auto rank = static_cast<std::size_t>(net_.random.below(static_cast<int>(processes_.size())));
    Process &p = *processes_[rank];
    if (!p.alive || p.isOver() || p.stalledUntil > now) return;
    p.step();
    if (rank == 0) return;
    if (trouble_.deaths > 0 && net_.random.chance(2)) {
      --trouble_.deaths;
      p.alive = false;
    }
    if (net_.random.chance(trouble_.stalls))
      p.stalledUntil = now + net_.random.below(120 * static_cast<int>(processes_.size()));
  }

  Net net_;
  Trouble trouble_;
  std::vector<std::unique_ptr<Process>> processes_;
};

std::string textOf(const Outcome &o) {
  return std::string(o.result ? "true, " : "false, ") + std::to_string(o.solutions.size()) + " solutions, " +
         std::to_string(o.choicePoints) + " choice points, " + std::to_string(o.fails) + " fails, " +
         std::to_string(o.end.front() - 1) + " contexts";
}

// Each search of a model that can be shared and is not too large, with its outcome in one process.
template <class Do>
void forEachSearch(std::uint64_t seed, Totals &totals, Do compare) {
  cs_init();
  const bool shared = RandomModel(seed).consistent() && cs_findConstraintWithMemory() == nullptr;
  cs_end();
  if (!shared) return;
  ++totals.searches;
  for (const Mode mode : {Mode::kAll, Mode::kFirst, Mode::kMinimize, Mode::kObject, Mode::kObjective}) {
    cs_init();
    RandomModel m(seed);
    Outcome expected = bySearch(m, mode);
    if (mode == Mode::kFirst) expected.solutions.clear();  // nobody is told of it
    cs_end();
    if (expected.choicePoints > 2000) return;
    totals.choicePoints += expected.choicePoints;
    compare(mode, expected);
  }
}

void compareModel(std::uint64_t seed, const Trouble &trouble, Totals &totals) {
  forEachSearch(seed, totals, [&](Mode mode, const Outcome &expected) {
    for (const int size : {2, 3, 7}) {
      const Outcome o = Simulation(seed, seed * 31 + static_cast<unsigned>(size), mode, size, trouble).run(totals);
      EXPECT_TRUE(o == expected) << "seed " << seed << ", mode " << static_cast<int>(mode) << ", " << size
                                 << " processes: " << textOf(o) << ", not " << textOf(expected);
    }
  });
}

// All processes die some times, and others, more or fewer, go on from what was kept at that moment.
Outcome inSeveralRuns(std::uint64_t seed, Mode mode, Totals &totals) {
  Random random(seed);
  std::string state;
  std::vector<State> told;
  for (int run = 0;; ++run) {
    const int size = std::array{1, 2, 3, 7}[static_cast<std::size_t>(random.below(4))];
    Simulation all(seed, seed * 37 + static_cast<unsigned>(run), mode, size, {.deaths = 1});
    outcome->solutions = told;
    if (run > 0) all.restore(state);
    const Process *first = run < 4 ? all.after(random.below(60 * size)) : nullptr;
    if (first == nullptr) return all.run(totals);
    ++totals.lost;
    state = first->state();
    told = outcome->solutions;
    EXPECT_EQ(first->told(), std::ssize(told));
  }
}

void compareRestarts(std::uint64_t first, int models) {
  Totals totals;
  for (std::uint64_t seed = first; totals.searches < models; ++seed)
    forEachSearch(seed, totals, [&](Mode mode, const Outcome &expected) {
      const Outcome o = inSeveralRuns(seed, mode, totals);
      EXPECT_TRUE(o == expected) << "seed " << seed << ", mode " << static_cast<int>(mode) << ": " << textOf(o)
                                 << ", not " << textOf(expected);
    });
  std::printf("%lld models, %lld choice points, %d losses\n", totals.searches, totals.choicePoints, totals.lost);
}

void compareModels(std::uint64_t first, int models, const Trouble &trouble, int cancelled = -1) {
  Totals totals;
  cancelAfter = cancelled;
  for (std::uint64_t seed = first; totals.searches < models; ++seed) compareModel(seed, trouble, totals);
  cancelAfter = -1;
  std::printf("%lld models, %lld choice points, %lld messages, %d processes lost\n", totals.searches,
              totals.choicePoints, totals.messages, totals.lost);
  if (trouble.deaths > 0 && cancelled < 0) {
    EXPECT_GT(totals.lost, 0) << "nobody has noticed a death";
  }
}

TEST(Processes, FindWhatOneFinds) { compareModels(1, rounds(200), {}); }
TEST(Processes, FindWhatOneFindsWhenSomeDie) { compareModels(1000, rounds(150), {.deaths = 3}); }
TEST(Processes, FindWhatOneFindsWhenSomeStall) { compareModels(2000, rounds(150), {.deaths = 1, .stalls = 3}); }
TEST(Processes, StopAtTheSameSolution) {
  for (const int after : {1, 2, 5}) compareModels(3000, 30, {.deaths = 1}, after);
}
TEST(Processes, GoOnWhereOthersHaveDied) { compareRestarts(5000, rounds(200)); }
TEST(Processes, GoOnWhereOthersHaveDiedInManyModelsHeavy) { compareRestarts(50000, 3000); }
TEST(Processes, FindWhatOneFindsInManyModelsHeavy) {
  compareModels(10000, 2000, {});
  compareModels(20000, 1000, {.deaths = 3});
  compareModels(30000, 1000, {.deaths = 2, .stalls = 3});
  for (const int after : {1, 2, 5}) compareModels(40000, 200, {.deaths = 1}, after);
}

}  // namespace
}  // namespace koru::test::brute
