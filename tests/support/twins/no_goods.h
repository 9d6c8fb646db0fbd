// SPDX-License-Identifier: MIT
// No-goods over the variables of a twin engine, written for reading and not for speed: lists of watches that are copied
// before they are walked over. It shares no code with the library.
#pragma once

#include <algorithm>
#include <list>
#include <memory>
#include <vector>

#include "support/no_goods/no_goods.h"
#include "support/twins/engine.h"

namespace koru::test::nogood {

// A no-good and where its watches stand.
struct Watched {
  Literals literals;
  std::vector<int> watches;
  bool operator==(const Watched &) const = default;
};

inline void PrintTo(const Watched &watched, std::ostream *out) {
  *out << ::testing::PrintToString(watched.literals) << " at " << ::testing::PrintToString(watched.watches);
}

inline std::vector<Watched> watchedContents(const CSnoGoodSet *set) {
  std::vector<Watched> result;
  for (CSnoGood *noGood = set->newest; noGood != nullptr; noGood = noGood->older)
    result.push_back({literalsOf(noGood), watches(noGood)});
  return result;
}

class TwinSet {
 public:
  // Attached to the variables, each with its position.
  TwinSet(twin::Engine &engine, std::vector<int> variables) : engine_(engine), variables_(std::move(variables)) {
    lists_.resize(variables_.size());
    const int constraint = engine_.addConstraint([this](const twin::Engine::Event &e) { return propagate(e.index); });
    for (std::size_t i = 0; i < variables_.size(); ++i) engine_.attach(constraint, variables_[i], static_cast<int>(i));
  }
  TwinSet(const TwinSet &) = delete;
  TwinSet &operator=(const TwinSet &) = delete;

  void add(const Literals &literals) {
    for (auto at = noGoods_.begin(); at != noGoods_.end();) {
      const Literals &old = (*at)->literals;
      if (!std::equal(old.begin(), old.begin() + std::ssize(shorter(old, literals)), literals.begin())) {
        ++at;
      } else if (old.size() <= literals.size()) {
        return;
      } else {
        for (auto &list : lists_) std::erase_if(list, [&](const Watch &w) { return w.noGood == at->get(); });
        at = noGoods_.erase(at);
      }
    }
    noGoods_.push_front(std::make_unique<NoGood>(NoGood{literals, {0, literals.size() > 1 ? 1 : 0}}));
    for (const int which : {0, 1}) watch(*noGoods_.front(), which);
  }

  // Newest first.
  std::vector<Watched> contents() const {
    std::vector<Watched> result;
    for (const auto &noGood : noGoods_) result.push_back({noGood->literals, {noGood->watched[0], noGood->watched[1]}});
    return result;
  }

 private:
  struct NoGood {
    Literals literals;
    int watched[2];
  };
  struct Watch {
    NoGood *noGood;
    int which;
    int serial;  // of the arrival in the list
    bool operator==(const Watch &) const = default;
  };
  using List = std::list<Watch>;

  static const Literals &shorter(const Literals &a, const Literals &b) { return a.size() < b.size() ? a : b; }
  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  const Literal &watched(const NoGood &n, int which) const { return n.literals[at(n.watched[which])]; }
  int variable(const Literal &l) const { return variables_[at(l.index)]; }

  std::vector<int> domain(const Literal &l) const {
    std::vector<int> result;
    for (twin::Wide value = engine_.min(variable(l)); value <= engine_.max(variable(l)); ++value)
      if (engine_.has(variable(l), value)) result.push_back(static_cast<int>(value));
    return result;
  }
  std::ptrdiff_t satisfying(const Literal &l) const {
    return std::ranges::count_if(domain(l), [&](int value) { return holds(l, value); });
  }
  bool entailed(const Literal &l) const { return satisfying(l) == std::ssize(domain(l)); }

  void watch(NoGood &n, int which) { lists_[at(watched(n, which).index)].push_front({&n, which, ++serial_}); }

  bool unit(const Literal &l) {
    if (entailed(l)) return false;
    if (satisfying(l) == 0) return true;
    static constexpr int kOpposite[] = {CS_METHOD_NEQ, CS_METHOD_EQ, CS_METHOD_GT,
                                        CS_METHOD_GE,  CS_METHOD_LT, CS_METHOD_LE};
    return engine_.relate(variable(l), kOpposite[l.method], l.value);
  }

  int newWatch(const NoGood &n, int other) const {
    const int count = static_cast<int>(n.literals.size());
    for (int i = 0; i < count; ++i) {
      const int candidate = (count / 2 + other + i) % count;
      if (candidate != other && !entailed(n.literals[at(candidate)])) return candidate;
    }
    return -1;
  }

  bool react(NoGood &n, int position) {
    if (n.literals.size() == 1) return unit(n.literals[0]);
    for (const int which : {0, 1}) {
      const Literal &l = watched(n, which);
      if (l.index != position || !entailed(l)) continue;
      const int other = n.watched[1 - which];
      const int moved = newWatch(n, other);
      if (moved < 0) return unit(n.literals[at(other)]);
      std::erase_if(lists_[at(position)], [&](const Watch &w) { return w.noGood == &n && w.which == which; });
      n.watched[which] = moved;
      watch(n, which);
    }
    return true;
  }

  bool propagate(int position) {
    List &list = lists_[at(position)];
    const List atStart = list;
    for (const Watch &w : atStart) {
      if (std::ranges::find(list, w) == list.end()) continue;  // it has moved
      if (react(*w.noGood, position)) continue;
      const auto failed = std::ranges::find_if(noGoods_, [&](const auto &n) { return n.get() == w.noGood; });
      std::rotate(noGoods_.begin(), failed, std::next(failed));
      return false;
    }
    return true;
  }

  twin::Engine &engine_;
  std::vector<int> variables_;
  std::list<std::unique_ptr<NoGood>> noGoods_;  // newest first
  std::vector<List> lists_;                     // newest first
  int serial_ = 0;
};

}  // namespace koru::test::nogood
