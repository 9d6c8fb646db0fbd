// SPDX-License-Identifier: MIT
// Two reports side by side: what was called more, and what less.
#include <algorithm>
#include <map>
#include <ostream>

#include "profile/profile.h"

namespace koru::profile {

namespace {

struct Change {
  std::string place;
  std::int64_t calls[2] = {};
  std::int64_t fails[2] = {};

  std::int64_t difference() const { return calls[1] - calls[0]; }
};

std::string width(const std::string &text, std::size_t n) {
  return std::string(n > text.size() ? n - text.size() : 0, ' ') + text;
}

std::string pairOf(const std::int64_t (&numbers)[2]) {
  return width(std::to_string(numbers[0]), 12) + " ->" + width(std::to_string(numbers[1]), 12);
}

std::vector<Change> changesOf(const Profile &before, const Profile &after) {
  std::map<std::string, Change> byPlace;
  const Profile *const both[] = {&before, &after};
  for (int k = 0; k < 2; ++k) {
    for (const Entry &e : both[k]->entries) {
      const std::string place = printable(e.function + "  " + e.place());
      Change &c = byPlace[place];
      c.place = place;
      c.calls[k] += e.calls;
      c.fails[k] += e.fails;
    }
  }
  std::vector<Change> changes;
  changes.reserve(byPlace.size());
  for (auto &[place, change] : byPlace) changes.push_back(std::move(change));
  std::ranges::stable_sort(changes, std::greater<>(),
                           [](const Change &c) { return c.difference() < 0 ? -c.difference() : c.difference(); });
  return changes;
}

}  // namespace

void writeDifference(std::ostream &out, const Profile &before, const Profile &after, std::size_t top) {
  const std::vector<Change> changes = changesOf(before, after);
  const std::size_t shown = top < 1 ? changes.size() : std::min(top, changes.size());
  out << width("calls", 27) << width("fails", 29) << "  posted by, at\n";
  for (std::size_t i = 0; i < shown; ++i) {
    const Change &c = changes[i];
    out << pairOf(c.calls) << "  " << pairOf(c.fails) << "  " << c.place << '\n';
  }
  if (shown < changes.size()) out << "and " << changes.size() - shown << " more\n";
  const std::int64_t calls[] = {before.calls, after.calls}, fails[] = {before.fails, after.fails};
  out << pairOf(calls) << "  " << pairOf(fails) << "  in all\n";
}

}  // namespace koru::profile
