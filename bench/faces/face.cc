// SPDX-License-Identifier: MIT
// A roster, with koru.hpp: what it takes to compile and to run is compared with flat.cc, the same model with koru.h.
//
// Rows of a matrix are nurses, columns are days. Each constraint, and the order in which they are posted, is that of
// flat.cc, so the two programs print the same; keep it so.
#include <iostream>
#include <koru.hpp>
#include <string>
#include <vector>

namespace {

enum { off, early, late, night, kShifts };
constexpr std::size_t kNurses = 11;
constexpr std::size_t kDays = 14;
constexpr const char *kLetters = "-ELN";

struct Wish {
  std::size_t nurse, day;
  int shift, weight;
};

// Made up: no wish is like another one, and some contradict each other.
std::vector<Wish> wishes() {
  std::vector<Wish> all;
  for (std::size_t i = 0; i < 60; ++i)
    all.push_back({i * 5 % kNurses, i * i % kDays, static_cast<int>(i * 7 % kShifts), 1 + static_cast<int>(i % 5)});
  return all;
}

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

// Who works with whom: a trainee is early or late only where a nurse with much practice is as well.
void pair(koru::Model &m, const std::vector<koru::IntVar> &trainee, const std::vector<koru::IntVar> &guide) {
  for (std::size_t day = 0; day < kDays; ++day) {
    m.post((trainee[day] == early) >> (guide[day] == early));
    m.post((trainee[day] == late) >> (guide[day] == late));
    m.post(trainee[day] != night);
  }
}

// What a night costs and pays, by the day of the week.
koru::IntVar pay(koru::Model &m, const std::vector<koru::IntVar> &row) {
  std::vector<koru::IntVar> days;
  for (std::size_t day = 0; day < kDays; ++day) {
    const auto p = m.var(0, 90);
    const int sunday = day % 7 == 6 ? 20 : 0;
    m.post(koru::table({row[day], p}, {{off, 0}, {early, 40 + sunday}, {late, 45 + sunday}, {night, 60 + sunday}}));
    days.push_back(p);
  }
  return m.var(koru::sum(days));
}

}  // namespace

int main() {
  koru::Model m;
  const auto shifts = m.ints(kNurses * kDays, off, night, "shift");
  const auto nurses = koru::rows(shifts, kDays);
  for (const auto &nurse : nurses)
    m.post(koru::regular(nurse, rules()), koru::count(nurse, off).in(4, 6), koru::count(nurse, night).in(0, 4));
  for (const auto &day : koru::columns(shifts, kDays))
    m.post(koru::count(day, early).in(2, 3), koru::count(day, late).in(1, 3), koru::count(day, night).in(1, 1));
  pair(m, nurses[0], nurses[1]);

  std::vector<koru::IntVar> pays;
  for (const auto &nurse : nurses) pays.push_back(pay(m, nurse));
  for (std::size_t i = 1; i < kNurses; ++i) {
    m.post(pays[i] - pays[0] <= 200);
    m.post(2 * pays[i] + pays[0] >= 900);
  }
  std::vector<koru::IntVar> broken;
  std::vector<int> weights;
  for (const Wish &wish : wishes()) {
    broken.push_back(m.reify(shifts[wish.nurse * kDays + wish.day] != wish.shift));
    weights.push_back(wish.weight);
  }
  const auto cost = m.var(koru::sum(weights, broken), "cost");
  const auto r = m.minimize(cost, {.vars = shifts,
                                   .order = koru::dom_wdeg,
                                   .restart = koru::luby(100),
                                   .last_conflict = true,
                                   .guided = true,
                                   .seed = 1,
                                   .fails = 20000});
  if (!r.best) return 1;
  std::cout << r.status << ' ' << r.best[cost] << ", " << r.statistics.fails << " fails, " << r.statistics.choicePoints
            << " choice points, " << r.statistics.wakings << " wakings\n";
  for (const auto &nurse : nurses) {
    for (const int shift : r.best[nurse]) std::cout << kLetters[shift];
    std::cout << '\n';
  }
}
