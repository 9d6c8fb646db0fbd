// SPDX-License-Identifier: MIT
// What the host states itself: sets of no-goods, and constraints written as callbacks.
#include "semantic/cases.h"
#include "support/no_goods/no_goods.h"

namespace koru::test::brute {
namespace {

using nogood::Literal;
using nogood::Literals;

// ----- no-goods

using NoGoods = std::vector<Literals>;

bool forbiddenByNone(const NoGoods &noGoods, Values t) {
  const std::vector<int> assignment(t.begin(), t.end());
  return std::ranges::none_of(noGoods, [&](const Literals &n) { return nogood::forbids(n, assignment); });
}

// Added while all its elements are open, a no-good forbids what it says.
bool openIn(const std::vector<std::vector<int>> &domains, const NoGoods &noGoods) {
  const auto isOpen = [&](const Literal &l) {
    const std::vector<int> &domain = domains[static_cast<std::size_t>(l.index)];
    const auto holding = std::ranges::count_if(domain, [&](int value) { return nogood::holds(l, value); });
    return holding > 0 && holding < std::ssize(domain);
  };
  return std::ranges::all_of(noGoods, [&](const Literals &n) { return std::ranges::all_of(n, isOpen); });
}

enum class Truth { kHolds, kOpen, kFails };
Truth truthOf(const Literal &l, const Left &left) {
  const std::vector<int> values = left.values(static_cast<std::size_t>(l.index));
  const auto holding = std::ranges::count_if(values, [&](int value) { return nogood::holds(l, value); });
  return holding == 0 ? Truth::kFails : holding == std::ssize(values) ? Truth::kHolds : Truth::kOpen;
}

// Unit propagation: when all other elements hold, the last one fails; one of a single element waits for a change.
std::string unpropagated(const NoGoods &noGoods, const Left &left) {
  for (const Literals &n : noGoods) {
    const auto count = [&](Truth truth) {
      return std::ranges::count_if(n, [&](const Literal &l) { return truthOf(l, left) == truth; });
    };
    const bool moved = std::ranges::any_of(n, [&](const Literal &l) {
      const auto column = static_cast<std::size_t>(l.index);
      return left.mask(column) != left.posted().mask(column);
    });
    if (moved && count(Truth::kFails) == 0 && count(Truth::kOpen) < 2) return "a no-good is not propagated";
  }
  return "";
}

Constraint noGoodSet(const NoGoods &noGoods, int n) {
  std::ostringstream name;
  for (const Literals &literals : noGoods) {
    name << " not";
    for (const Literal &l : literals) name << " " << l;
  }
  Constraint c = relation(
      "no-goods" + name.str(), n, [noGoods](Values t) { return forbiddenByNone(noGoods, t); },
      [noGoods, n](CSint **x) {
        CSnoGoodSet *set = cs_createNoGoodSet(x, n, nullptr, 0, nullptr, nullptr);
        for (const Literals &literals : noGoods) nogood::add(set, literals);
        return set != nullptr && cs_getNbNoGoods(set) == static_cast<int>(noGoods.size());
      });
  c.fits = [noGoods](const std::vector<std::vector<int>> &domains) { return openIn(domains, noGoods); };
  c.inside = [noGoods](const Left &left) { return unpropagated(noGoods, left); };
  return c;
}

Case noGoodSets() {
  Case c{"NoGoodSet", {"cs_createNoGoodSet", "cs_addNoGood"}, {}, {{-2, 5}}, 60};
  std::mt19937 random(11);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int i = 0; i < 60; ++i) {
    const int n = 2 + i % 2;
    static const std::vector<int> indexes[] = {{0, 1}, {0, 1, 2}, {2, 0, 2}, {0}, {0, 2, 1, 1}};
    NoGoods noGoods(static_cast<std::size_t>(1 + below(3)));
    for (Literals &literals : noGoods)
      for (const int index : indexes[static_cast<std::size_t>(below(5))])
        literals.push_back({index % n, below(6), below(5) - 2});
    c.forms.push_back(noGoodSet(noGoods, n));
  }
  return c;
}

// ----- callbacks

bool checksSum(CSint **x, int n, void *) {
  Wide sum = 0;
  for (int i = 0; i < n; ++i) sum += Wide{i + 1} * cs_getValue(x[i]);
  return sum % 3 == 0;
}

// A check once all is known.
Constraint allKnown(int n) {
  return relation(
      "cs_eventAllKnown of " + std::to_string(n), n,
      [](Values t) {
        Wide sum = 0;
        for (std::size_t i = 0; i < t.size(); ++i) sum += static_cast<Wide>(i + 1) * t[i];
        return sum % 3 == 0;
      },
      [n](CSint **x) { return cs_eventAllKnown(x, n, checksSum, nullptr); });
}

bool removesFromOthers(int value, int index, CSint **x, int n, void *) {
  for (int i = 0; i < n; ++i)
    if (i != index && !cs_NEQ(x[i], value + index - i)) return false;
  return true;
}

// Queens on diagonals of one direction: x[i] + i all different, by forward checking.
Constraint known(int n) {
  Constraint c = relation(
      "cs_eventKnown of " + std::to_string(n), n,
      [](Values t) {
        for (std::size_t i = 0; i < t.size(); ++i)
          for (std::size_t j = 0; j < i; ++j)
            if (t[i] + static_cast<Wide>(i) == t[j] + static_cast<Wide>(j)) return false;
        return true;
      },
      [n](CSint **x) { return cs_eventKnown(x, n, removesFromOthers, nullptr); });
  return with(c, Strength::kKnown);
}

// x[0] <= x[1], from either side. What is bound strictly between its bounds has moved neither.
bool bothMove(int value, int index, CSint **x, int, void *) {
  return index == 0 ? cs_GE(x[1], value) : cs_LE(x[0], value);
}
bool raisesOther(CSint *vint, int index, int, CSint **x, int, void *) {
  return index != 0 || cs_GE(x[1], cs_getMin(vint));
}
bool lowersOther(CSint *vint, int index, int, CSint **x, int, void *) {
  return index != 1 || cs_LE(x[0], cs_getMax(vint));
}

Constraint moved() {
  return with(relation(
                  "cs_eventNewMin and cs_eventNewMax", 2, [](Values t) { return t[0] <= t[1]; },
                  [](CSint **x) {
                    cs_eventNewMin(x, 2, raisesOther, nullptr);
                    cs_eventNewMax(x, 2, lowersOther, nullptr);
                    return cs_eventKnown(x, 2, bothMove, nullptr) && cs_GE(x[1], cs_getMin(x[0])) &&
                           cs_LE(x[0], cs_getMax(x[1]));
                  }),
              Strength::kBounds);
}

// x[0] = x[1], value by value.
bool followsMin(CSint *vint, int index, int, CSint **x, int, void *) { return cs_GE(x[1 - index], cs_getMin(vint)); }
bool followsMax(CSint *vint, int index, int, CSint **x, int, void *) { return cs_LE(x[1 - index], cs_getMax(vint)); }
bool followsHole(CSint *, int index, int removed, CSint **x, int, void *) { return cs_NEQ(x[1 - index], removed); }

bool followsValue(int value, int index, CSint **x, int, void *) { return cs_EQ(x[1 - index], value); }

bool equalise(CSint *x, CSint *y) {
  for (const int value : koru::test::values(x))
    if (!cs_isIn(y, value) && !cs_NEQ(x, value)) return false;
  return true;
}

Constraint removed() {
  return with(relation(
                  "cs_eventNeq", 2, [](Values t) { return t[0] == t[1]; },
                  [](CSint **x) {
                    cs_eventNewMin(x, 2, followsMin, nullptr);
                    cs_eventNewMax(x, 2, followsMax, nullptr);
                    cs_eventNeq(x, 2, followsHole, nullptr);
                    return cs_eventKnown(x, 2, followsValue, nullptr) && equalise(x[0], x[1]) && equalise(x[1], x[0]);
                  }),
              Strength::kDomain);
}

// A listener changes nothing of what another constraint does.
void listens(CSint *vint, int, CSconflictInfo *, CSint **, int, void *) { cs_LE(vint, cs_getMin(vint)); }

Constraint conflicting() {
  return with(relation(
                  "cs_eventConflict", 2, [](Values t) { return t[0] < t[1]; },
                  [](CSint **x) {
                    cs_eventConflict(x, 2, listens, nullptr);
                    return cs_Lt(x[0], x[1]);
                  }),
              Strength::kBounds);
}

}  // namespace

Cases hostCases() {
  Case allKnowns{"EventAllKnown", {"cs_eventAllKnown"}, {}, {{-1, 4}}, 150};
  for (int n = 1; n <= 4; ++n) allKnowns.forms.push_back(allKnown(n));
  Case knowns{"EventKnown", {"cs_eventKnown"}, {}, {{-1, 4}}, 150};
  for (int n = 0; n <= 4; ++n) knowns.forms.push_back(known(n));
  return {noGoodSets(),
          allKnowns,
          knowns,
          {"EventNewMinNewMax", {"cs_eventNewMin", "cs_eventNewMax"}, {moved()}, {{-2, 5}}, 600},
          {"EventNeq", {"cs_eventNeq"}, {removed()}, {{-2, 5}}, 600},
          {"EventConflict", {"cs_eventConflict"}, {conflicting()}, {{-2, 5}}, 300}};
}

}  // namespace koru::test::brute
