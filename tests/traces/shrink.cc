// SPDX-License-Identifier: MIT
// Taking out lines follows Zeller and Hildebrandt, "Simplifying and isolating failure-inducing input" (2002), with
// pieces of half the length each time.
#include "traces/shrink.h"

#include <algorithm>
#include <cstdlib>

#include "traces/table.h"

namespace koru::traces {
namespace {

class Shrinker {
 public:
  Shrinker(Trace trace, const StillFails &stillFails, int attempts)
      : best_(std::move(trace)), stillFails_(stillFails), attempts_(attempts) {}

  Trace run() {
    std::size_t before = 0;
    do {
      before = size();
      lines();
      arguments();
    } while (size() < before && attempts_ > 0);
    return best_;
  }

 private:
  bool attempt(Trace candidate) {
    if (--attempts_ < 0 || !stillFails_(candidate)) return false;
    best_ = std::move(candidate);
    return true;
  }

  std::size_t size() const { return print(best_).size(); }

  void lines() {
    for (std::size_t length = std::max<std::size_t>(best_.size() / 2, 1); length > 0; length /= 2)
      for (std::size_t end = best_.size(); end > 0; end -= std::min(end, length))
        takeOut(end - std::min(end, length), end);
  }

  // From the end on, since what was done last is needed least by the rest.
  void takeOut(std::size_t from, std::size_t to) {
    to = std::min(to, best_.size());
    if (from >= to) return;
    Trace candidate = best_;
    const auto at = [&](std::size_t i) { return candidate.begin() + static_cast<std::ptrdiff_t>(i); };
    candidate.erase(at(from), at(to));
    attempt(std::move(candidate));
  }

  void arguments() {
    for (std::size_t i = 0; i < best_.size(); ++i)
      for (std::size_t k = 0; k < best_[i].args.size(); ++k) argument(i, k);
  }

  void argument(std::size_t i, std::size_t k) {
    for (std::size_t p = best_[i].args[k].list.size(); p-- > 0;) {
      edit(i, k, [&](Arg &arg) { arg.list.erase(arg.list.begin() + static_cast<std::ptrdiff_t>(p)); });
      if (p < best_[i].args[k].list.size()) smaller(i, k, [p](Arg &arg) -> int & { return arg.list[p]; });
    }
    const Row &row = *best_[i].row;
    if (referenceLetter(kindOf(row, k)) == 0) smaller(i, k, [](Arg &arg) -> int & { return arg.number; });
  }

  static char kindOf(const Row &row, std::size_t k) {
    for (const char *kind = row.kinds; *kind != '\0'; ++kind)
      if (*kind != 'x' && k-- == 0) return *kind;
    return 'i';
  }

  template <class Number>
  void smaller(std::size_t i, std::size_t k, Number number) {
    for (int value = number(best_[i].args[k]); value != 0; value = number(best_[i].args[k])) {
      const bool changed = edit(i, k, [&](Arg &arg) { number(arg) = 0; }) ||
                           edit(i, k, [&](Arg &arg) { number(arg) = value / 2; }) ||
                           edit(i, k, [&](Arg &arg) { number(arg) = value > 0 ? value - 1 : value + 1; });
      if (!changed) return;
    }
  }

  template <class Edit>
  bool edit(std::size_t i, std::size_t k, Edit change) {
    Trace candidate = best_;
    change(candidate[i].args[k]);
    return attempt(std::move(candidate));
  }

  Trace best_;
  const StillFails &stillFails_;
  int attempts_;
};

}  // namespace

Trace shrink(Trace trace, const StillFails &stillFails, int attempts) {
  return Shrinker(std::move(trace), stillFails, attempts).run();
}

}  // namespace koru::traces
