// SPDX-License-Identifier: MIT
// A ward's week: who works early, late or at night, so that as few wishes as possible are not met.
//
// Rows of a matrix are nurses, columns are days. An automaton rules what may follow what, counts see to the staff of
// each day and to the days off of each nurse, and a wish that is not met is a condition made a variable.
#include <iostream>
#include <koru.hpp>
#include <string>
#include <vector>

namespace {

enum { off, early, late, night, kShifts };
constexpr std::size_t kNurses = 7;
constexpr std::size_t kDays = 7;
constexpr const char *kLetters = "-ELN";

struct Wish {
  std::size_t nurse, day;
  int shift;
};

const std::vector<Wish> wishes = {{0, 5, off},   {0, 6, off}, {1, 5, off},  {1, 6, off}, {2, 5, off},
                                  {2, 6, off},   {3, 6, off}, {3, 0, late}, {4, 6, off}, {5, 2, early},
                                  {5, 3, early}, {6, 6, off}, {6, 0, night}};

// A state for what was worked last. An early shift does not follow a late one, nor anything but another one a night.
koru::Automaton rules() {
  return {.states = kShifts,
          .symbols = kShifts,
          .start = off,
          .finals = {off, early, late, night},
          .next = {off, early, late, night,  // after a day off
                   off, early, late, night,  // after an early shift
                   off, -1, late, night,     // after a late one
                   off, -1, -1, night}};     // after a night
}

}  // namespace

int main() {
  koru::Model m;
  const auto shifts = m.ints(kNurses * kDays, off, night, "shift");
  for (const auto &nurse : koru::rows(shifts, kDays))
    m.post(koru::regular(nurse, rules()), koru::count(nurse, off).in(2, 3), koru::count(nurse, night).in(0, 3));
  for (const auto &day : koru::columns(shifts, kDays))
    m.post(koru::count(day, early).in(2, 3), koru::count(day, late).is(1), koru::count(day, night).is(1));

  std::vector<koru::IntVar> broken;
  for (const Wish &wish : wishes) broken.push_back(m.reify(shifts[wish.nurse * kDays + wish.day] != wish.shift));
  const auto r = m.minimize(koru::sum(broken), {.vars = shifts,
                                                .order = koru::dom_wdeg,
                                                .value = koru::random_value,
                                                .restart = koru::luby(100),
                                                .neighbours = koru::random_neighbours(),
                                                .guided = true,
                                                .seed = 1,
                                                .seconds = 30});
  if (!r.best) return 1;
  std::cout << r.status << ": " << r.best[koru::sum(broken)] << " wishes not met\n";
  for (const auto &nurse : koru::rows(shifts, kDays)) {
    for (const int shift : r.best[nurse]) std::cout << ' ' << kLetters[shift];
    std::cout << '\n';
  }
}
