// SPDX-License-Identifier: MIT
// The same schedules for Gecode: unary and cumulative at their highest level, accumulated failure counts, restarts with
// no-goods. An order is first as in the best schedule so far, before there is one that which leaves more room; starts
// follow, the least first.
#include <gecode/int.hh>
#include <gecode/minimodel.hh>

#include <algorithm>
#include <memory>

#include "searches/gecode_search.h"
#include "searches/schedules.h"

namespace koru::bench::searches {

namespace {

using Gecode::BoolVarArgs;
using Gecode::IntArgs;
using Gecode::IntVarArgs;

constexpr auto kLevel = Gecode::IPL_BASIC_ADVANCED;
constexpr double kDecay = 0.95;  // of failure counts

class Schedule : public Gecode::IntMinimizeSpace {
 public:
  explicit Schedule(int horizon) : makespan_(*this, 0, horizon) {}
  Schedule(Schedule &other) : Gecode::IntMinimizeSpace(other) {
    makespan_.update(*this, other.makespan_);
    starts_.update(*this, other.starts_);
    orders_.update(*this, other.orders_);
    pairs_ = other.pairs_;
    best_ = other.best_;
  }
  Gecode::Space *copy() override { return new Schedule(*this); }
  Gecode::IntVar cost() const override { return makespan_; }
  int objective() const { return makespan_.val(); }
  bool master(const Gecode::MetaInfo &info) override {
    if (info.type() == Gecode::MetaInfo::RESTART && info.last() != nullptr) {
      const auto &last = static_cast<const Schedule &>(*info.last());
      for (int i = 0; i < last.orders_.size(); ++i) (*best_)[static_cast<std::size_t>(i)] = last.orders_[i].val();
    }
    return Gecode::IntMinimizeSpace::master(info);
  }

  void postShop(const Shop &shop, bool isOpen);
  void postProject(const Project &project);
  void postChoices(const Choices &choices);

 private:
  void postMachine(const IntVarArgs &all, const IntArgs &tasks, const IntArgs &lengths, BoolVarArgs &orders);
  void branchOnStarts(const IntVarArgs &starts) {
    starts_ = Gecode::IntVarArray(*this, starts);
    Gecode::branch(*this, starts_, Gecode::INT_VAR_MIN_MIN(), Gecode::INT_VAL_MIN());
    Gecode::assign(*this, makespan_, Gecode::INT_ASSIGN_MIN());
  }

  // Two tasks on a machine, by their positions among the starts, and their durations.
  struct Pair {
    int first;
    int second;
    int durations[2];
  };

  int preferred(int i) const {
    if (const int best = (*best_)[static_cast<std::size_t>(i)]; best >= 0) return best;
    const Pair &pair = (*pairs_)[static_cast<std::size_t>(i)];
    const Gecode::IntVar &a = starts_[pair.first];
    const Gecode::IntVar &b = starts_[pair.second];
    return b.max() - a.min() - pair.durations[0] >= a.max() - b.min() - pair.durations[1] ? 1 : 0;
  }

  std::shared_ptr<std::vector<Pair>> pairs_ = std::make_shared<std::vector<Pair>>();
  std::shared_ptr<std::vector<int>> best_ = std::make_shared<std::vector<int>>();
  Gecode::IntVar makespan_;
  Gecode::IntVarArray starts_;
  Gecode::BoolVarArray orders_;
};

void Schedule::postMachine(const IntVarArgs &all, const IntArgs &tasks, const IntArgs &lengths, BoolVarArgs &orders) {
  IntVarArgs starts;
  IntArgs durations;
  for (const int task : tasks) {
    starts << all[task];
    durations << lengths[task];
  }
  for (int i = 0; i < starts.size(); ++i)
    for (int j = i + 1; j < starts.size(); ++j) {
      pairs_->push_back({tasks[i], tasks[j], {durations[i], durations[j]}});
      orders << Gecode::expr(*this, starts[i] + durations[i] <= starts[j]);
      Gecode::rel(*this, (starts[j] + durations[j] <= starts[i]) == !orders[orders.size() - 1]);
    }
  Gecode::unary(*this, starts, durations, kLevel);
}

void Schedule::postShop(const Shop &shop, bool isOpen) {
  std::vector<IntArgs> lines(static_cast<std::size_t>(shop.machines));
  IntVarArgs starts;
  IntArgs durations;
  for (const auto &job : shop.jobs) {
    if (isOpen) lines.emplace_back();
    for (const Operation &operation : job) {
      const int task = starts.size();
      starts << Gecode::IntVar(*this, 0, shop.horizon());
      durations << operation.duration;
      Gecode::rel(*this, starts[task] + operation.duration <= makespan_);
      if (!isOpen && &operation != &job.front())
        Gecode::rel(*this, starts[task - 1] + durations[task - 1] <= starts[task]);
      lines[static_cast<std::size_t>(operation.machine)] << task;
      if (isOpen) lines.back() << task;
    }
  }
  BoolVarArgs orders;
  for (const IntArgs &line : lines) postMachine(starts, line, durations, orders);
  orders_ = Gecode::BoolVarArray(*this, orders);
  best_->assign(static_cast<std::size_t>(orders.size()), -1);
  Gecode::branch(*this, orders_, Gecode::BOOL_VAR_AFC_MAX(kDecay),
                 Gecode::BOOL_VAL([](const Gecode::Space &home, Gecode::BoolVar, int i) {
                   return static_cast<const Schedule &>(home).preferred(i);
                 }));
  branchOnStarts(starts);
}

void Schedule::postProject(const Project &project) {
  const auto n = static_cast<int>(project.durations.size());
  const IntVarArgs starts(*this, n, 0, project.horizon());
  for (int i = 0; i < n; ++i) {
    const auto at = static_cast<std::size_t>(i);
    Gecode::rel(*this, starts[i] + project.durations[at] <= makespan_);
    for (const int next : project.successors[at]) Gecode::rel(*this, starts[i] + project.durations[at] <= starts[next]);
  }
  for (std::size_t r = 0; r < project.uses.size(); ++r) {
    long long energy = 0;
    for (std::size_t i = 0; i < project.durations.size(); ++i)
      energy += static_cast<long long>(project.durations[i]) * project.uses[r][i];
    const int capacity = project.capacities[r];
    Gecode::rel(*this, makespan_ >= static_cast<int>((energy + capacity - 1) / capacity));
    Gecode::cumulative(*this, capacity, starts, IntArgs(project.durations), IntArgs(project.uses[r]), kLevel);
  }
  Gecode::branch(*this, starts, Gecode::INT_VAR_AFC_SIZE_MAX(kDecay), Gecode::INT_VAL_MIN());
  branchOnStarts(starts);
}

void Schedule::postChoices(const Choices &choices) {
  constexpr std::size_t kMachines = Choices::kMachines;
  std::vector<IntVarArgs> starts(kMachines);
  std::vector<IntArgs> durations(kMachines);
  std::vector<BoolVarArgs> presents(kMachines);
  IntVarArgs all;
  IntVarArgs lengths;
  for (const auto &of : choices.durations) {
    const Gecode::IntVar start(*this, 0, choices.horizon);
    const Gecode::IntVar length(*this, IntArgs(of).size() > 0 ? *std::min_element(of.begin(), of.end()) : 0,
                                *std::max_element(of.begin(), of.end()));
    Gecode::rel(*this, start + length <= choices.horizon);
    BoolVarArgs there(*this, Choices::kMachines, 0, 1);
    for (std::size_t m = 0; m < kMachines; ++m) {
      const auto k = static_cast<int>(m);
      const Gecode::IntVar own(*this, 0, choices.horizon - of[m]);
      Gecode::rel(*this, start, Gecode::IRT_EQ, own, Gecode::Reify(there[k], Gecode::RM_IMP));
      Gecode::rel(*this, length, Gecode::IRT_EQ, of[m], Gecode::Reify(there[k], Gecode::RM_IMP));
      starts[m] << own;
      durations[m] << of[m];
      presents[m] << there[k];
    }
    Gecode::linear(*this, there, Gecode::IRT_EQ, 1);
    all << start;
    lengths << length;
  }
  for (std::size_t m = 0; m < kMachines; ++m) Gecode::unary(*this, starts[m], durations[m], presents[m], kLevel);
  Gecode::branch(*this, lengths, Gecode::INT_VAR_NONE(), Gecode::INT_VAL_MIN());
  BoolVarArgs there;
  for (const BoolVarArgs &those : presents) there << those;
  Gecode::branch(*this, there, Gecode::BOOL_VAR_NONE(), Gecode::BOOL_VAL_MAX());
  for (const IntVarArgs &those : starts) Gecode::branch(*this, those, Gecode::INT_VAR_MIN_MIN(), Gecode::INT_VAL_MIN());
  branchOnStarts(all);
}

template <template <class> class Engine>
Result search(Schedule *schedule, double seconds, bool first) {
  return searchAgain<Schedule, Engine>(schedule, Gecode::Search::Cutoff::geometric(100, 1.5), seconds, first);
}

}  // namespace

Result searchJobShopByGecode(int instance, double seconds) {
  const Shop &shop = jobShops()[static_cast<std::size_t>(instance - 1)];
  auto *schedule = new Schedule(shop.horizon());
  schedule->postShop(shop, false);
  return search<Gecode::BAB>(schedule, seconds, false);
}

Result searchOpenShopByGecode(int instance, double seconds) {
  const Shop &shop = openShops()[static_cast<std::size_t>(instance - 1)];
  auto *schedule = new Schedule(shop.horizon());
  schedule->postShop(shop, true);
  return search<Gecode::BAB>(schedule, seconds, false);
}

Result searchProjectByGecode(int instance, double seconds) {
  const Project &project = projects()[static_cast<std::size_t>(instance - 1)];
  auto *schedule = new Schedule(project.horizon());
  schedule->postProject(project);
  return search<Gecode::BAB>(schedule, seconds, false);
}

Result searchChoicesByGecode(int, double seconds) {
  const Choices choices;
  auto *schedule = new Schedule(choices.horizon);
  schedule->postChoices(choices);
  return search<Gecode::DFS>(schedule, seconds, true);
}

}  // namespace koru::bench::searches
