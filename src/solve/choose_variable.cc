// SPDX-License-Identifier: MIT
// The orders of variables. Each is a rank, and the lowest rank wins; equals are decided by position, or at random.
// Cost: a look at each variable of the phase that is not bound; what was bound above is not looked at again.

#include "core/solver.h"
#include "solve/choose.h"
#include "solve/room.h"

namespace koru::solve {

namespace {

// One less than there are, so that it fits for any domain.
std::uint32_t elementsLessOne(const CSint *v) { return static_cast<std::uint32_t>(v->count) - 1; }

struct ByNumber {
  explicit ByNumber(std::int64_t number) : rank(number) {}
  std::int64_t rank;
  bool operator<(const ByNumber &other) const { return rank < other.rank; }
  bool isLeast() const { return false; }
};

struct Smallest : ByNumber {
  Smallest(const CSsearch &, const CSint *v, int) : ByNumber(elementsLessOne(v)) {}
  bool isLeast() const { return rank == 1; }
};
struct Largest : ByNumber {
  Largest(const CSsearch &, const CSint *v, int) : ByNumber(-std::int64_t{elementsLessOne(v)}) {}
};
struct SmallestMin : ByNumber {
  SmallestMin(const CSsearch &, const CSint *v, int) : ByNumber(v->min) {}
};
struct LargestMax : ByNumber {
  LargestMax(const CSsearch &, const CSint *v, int) : ByNumber(-std::int64_t{v->max}) {}
};
struct Regret : ByNumber {
  Regret(const CSsearch &, const CSint *v, int) : ByNumber(std::int64_t{v->min} - valueAfter(v, v->min)) {}
};
struct MostConstrained : ByNumber {
  MostConstrained(const CSsearch &, const CSint *v, int) : ByNumber(-std::int64_t{v->constraintCount}) {}
};

// Elements by weight, compared as fractions.
struct ByFraction {
  std::uint64_t elements;
  std::uint64_t weight;
  ByFraction(const CSint *v, std::uint64_t by) : ByFraction(std::uint64_t{elementsLessOne(v)} + 1, by) {}
  ByFraction(std::uint64_t number, std::uint64_t by) : elements(number), weight(by) {}
  bool operator<(const ByFraction &other) const { return elements * other.weight < other.elements * weight; }
  bool isLeast() const { return false; }
};

struct DomWdeg : ByFraction {
  DomWdeg(const CSsearch &s, const CSint *v, int position) : ByFraction(v, s.weights.of(position)) {}
};
struct MostActive : ByFraction {
  MostActive(const CSsearch &s, const CSint *v, int position) : ByFraction(v, s.activity.of(position)) {}
};

const CSorder &orderAt(const CSsearch &s, int position) {
  return s.labelled.orderOf(s.labelled.phaseOf(position), position);
}

struct Slack : ByNumber {
  Slack(const CSsearch &s, const CSint *, int position) : ByNumber(of(orderAt(s, position))) {}
  static std::int64_t of(const CSorder &o) {
    const std::int64_t first = roomFirst(o);
    const std::int64_t second = roomSecond(o);
    return std::min(first, kMost) * std::min(second, kMost);
  }
  static constexpr std::int64_t kMost = kIntMax;
};
struct SlackWdeg : ByFraction {
  SlackWdeg(const CSsearch &s, const CSint *, int position)
      : ByFraction(of(orderAt(s, position)), s.weights.of(position)) {}
  static std::uint64_t of(const CSorder &o) {
    return static_cast<std::uint64_t>(std::min(roomFirst(o) + roomSecond(o) + 2, std::int64_t{1} << 32));
  }
};

// The earliest start that is not postponed.
struct SetTimes {
  std::int64_t min, max;
  SetTimes(const CSsearch &s, const CSint *v, int position)
      : min(s.postponed.holds(position, v) ? INT64_MAX : v->min), max(v->max) {}
  bool operator<(const SetTimes &other) const { return min != other.min ? min < other.min : max < other.max; }
  bool isLeast() const { return false; }
};

// The choice among the positions of a phase.
template <class Rank>
class Best {
 public:
  explicit Best(CSsearch &s) : s_(s) {}

  // False when no later one can be chosen.
  bool offer(const CSint *v, int position) {
    const Rank rank(s_, v, position);
    if (position_ < 0 || rank < rank_) {
      rank_ = rank;
      position_ = position;
      equals_ = 1;
    } else if (s_.options.randomTies && !(rank_ < rank) && s_.random.below(++equals_) == 0) {
      position_ = position;
    }
    return s_.options.randomTies || !rank_.isLeast();
  }
  int position() const { return position_; }

 private:
  CSsearch &s_;
  int position_ = -1;
  std::uint32_t equals_ = 0;
  Rank rank_{s_, s_.labelled[0], 0};
};

// Takes out what is bound, and visits the others while `visit` returns true.
template <class Visit>
void forEachUnbound(CSsearch &s, Visit visit) {
  CSint *const *variables = s.labelled.variables();
  BranchSetOn &unsettled = s.unsettled;
  const BranchStamp now = BranchStamp::now();
  unsettled.forEachFrom(s.firstUnsettled, [&](int i) {
    if (!isBound(variables[i])) return visit(i);
    unsettled.takeOut(i, now);
    return true;
  });
}

int firstUnbound(CSsearch &s) {
  int position = -1;
  forEachUnbound(s, [&](int i) {
    position = i;
    return false;
  });
  s.firstUnsettled = position < 0 ? s.labelled.size() : position;
  return position;
}

// Within the phase of the first that is unbound.
template <class Rank>
int bestOf(CSsearch &s, const Phase &phase) {
  Best<Rank> best(s);
  forEachUnbound(s, [&](int i) { return i < phase.end && best.offer(s.labelled[i], i); });
  return best.position();
}

int earliestStart(CSsearch &s, const Phase &phase) {
  const int position = bestOf<SetTimes>(s, phase);
  return s.postponed.holds(position, s.labelled[position]) ? kAllPostponed : position;
}

// The host's choice counts only when it can be labelled.
int askHost(const CSsearch &s, int first) {
  if (s.options.chooseVariable == nullptr) return first;
  const int position = s.options.chooseVariable(s.labelled.variables(), s.hostSize, s.options.extra);
  const bool usable = position >= 0 && position < s.hostSize && !isBound(s.labelled[position]);
  return usable ? position : first;
}

int chooseInPhase(CSsearch &s, const Phase &phase, int first) {
  switch (phase.order) {
    case CS_ORDER_SMALLEST:
      return bestOf<Smallest>(s, phase);
    case CS_ORDER_LARGEST:
      return bestOf<Largest>(s, phase);
    case CS_ORDER_SMALLEST_MIN:
      return bestOf<SmallestMin>(s, phase);
    case CS_ORDER_LARGEST_MAX:
      return bestOf<LargestMax>(s, phase);
    case CS_ORDER_REGRET:
      return bestOf<Regret>(s, phase);
    case CS_ORDER_MOST_CONSTRAINED:
      return bestOf<MostConstrained>(s, phase);
    case CS_ORDER_DOM_WDEG:
      return bestOf<DomWdeg>(s, phase);
    case CS_ORDER_ACTIVITY:
      return bestOf<MostActive>(s, phase);
    case CS_ORDER_SET_TIMES:
      return earliestStart(s, phase);
    case CS_ORDER_SLACK:
      return bestOf<Slack>(s, phase);
    case CS_ORDER_SLACK_WDEG:
      return bestOf<SlackWdeg>(s, phase);
    case CS_ORDER_HOST:
      return askHost(s, first);
    default:
      return first;
  }
}

}  // namespace

int choosePosition(CSsearch &s) {
  s.unsettled.refresh(s.firstUnsettled);
  if (s.conflict >= 0 && !isBound(s.labelled[s.conflict]) && !s.postponed.holds(s.conflict, s.labelled[s.conflict]))
    return s.conflict;
  const int first = firstUnbound(s);
  return first < 0 ? first : chooseInPhase(s, s.labelled.phaseOf(first), first);
}

}  // namespace koru::solve
