// SPDX-License-Identifier: MIT
// Two reports side by side: what was called more, and what less; where both have details, what took longer, and why.
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <ostream>

#include "profile/profile.h"

namespace koru::profile {

namespace {

struct Change {
  std::string place;
  std::int64_t calls[2] = {};
  std::int64_t fails[2] = {};
  std::int64_t idle[2] = {};
  std::int64_t narrowings[2] = {};
  std::int64_t nanoseconds[2] = {};

  template <class Counts>
  void add(int k, const Counts &counts) {
    calls[k] = sumOf(calls[k], counts.calls);
    fails[k] = sumOf(fails[k], counts.fails);
    idle[k] = sumOf(idle[k], counts.idle);
    narrowings[k] = sumOf(narrowings[k], counts.narrowings);
    nanoseconds[k] = sumOf(nanoseconds[k], counts.nanoseconds);
  }
};

double distance(const std::int64_t (&numbers)[2]) {
  return std::abs(static_cast<double>(numbers[1]) - static_cast<double>(numbers[0]));
}

std::string width(const std::string &text, std::size_t n) {
  return std::string(n > text.size() ? n - text.size() : 0, ' ') + text;
}

std::string pairOf(const std::int64_t (&numbers)[2]) {
  return width(std::to_string(numbers[0]), 12) + " ->" + width(std::to_string(numbers[1]), 12);
}

std::vector<Change> changesOf(const Profile &before, const Profile &after, bool detailed) {
  std::map<std::string, Change> byPlace;
  const Profile *const both[] = {&before, &after};
  for (int k = 0; k < 2; ++k) {
    for (const Entry &e : both[k]->entries) {
      const std::string place = printable(e.function + "  " + e.place());
      Change &c = byPlace[place];
      c.place = place;
      c.add(k, e);
    }
  }
  std::vector<Change> changes;
  changes.reserve(byPlace.size());
  for (auto &[place, change] : byPlace) changes.push_back(std::move(change));
  std::ranges::stable_sort(changes, std::greater<>(),
                           [&](const Change &c) { return distance(detailed ? c.nanoseconds : c.calls); });
  return changes;
}

void writeNumbers(std::ostream &out, const Change &c, bool detailed) {
  if (detailed) {
    const std::string before = milliseconds(c.nanoseconds[0], 1), after = milliseconds(c.nanoseconds[1], 1);
    out << width(before, 12) << " ->" << width(after, 12) << "  ";
  }
  out << pairOf(c.calls) << "  ";
  if (detailed) out << pairOf(c.idle) << "  " << pairOf(c.narrowings) << "  ";
  out << pairOf(c.fails) << "  ";
}

}  // namespace

void writeDifference(std::ostream &out, const Profile &before, const Profile &after, std::size_t top) {
  const bool detailed = before.detailed && after.detailed;
  const std::vector<Change> changes = changesOf(before, after, detailed);
  const std::size_t shown = top < 1 ? changes.size() : std::min(top, changes.size());
  if (detailed) out << width("ms", 27) << "  ";
  out << width("calls", 27);
  if (detailed) out << width("in vain", 29) << width("narrowings", 29);
  out << width("fails", 29) << "  posted by, at\n";
  for (std::size_t i = 0; i < shown; ++i) {
    writeNumbers(out, changes[i], detailed);
    out << changes[i].place << '\n';
  }
  if (shown < changes.size()) out << "and " << changes.size() - shown << " more\n";
  Change all;
  all.add(0, before);
  all.add(1, after);
  writeNumbers(out, all, detailed);
  out << "in all\n";
}

}  // namespace koru::profile
