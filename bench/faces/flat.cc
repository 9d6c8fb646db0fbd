// SPDX-License-Identifier: MIT
// The roster of face.cc with koru.h and koru_extras.h, as somebody writes it who has no koru.hpp: the same constraints
// in the same order.
#include <koru_extras.h>
#include <iostream>
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
const int kNext[] = {off, early, late, night,   // after a day off
                     off, early, late, night,   // after an early shift
                     off, -1,    late, night,   // after a late one
                     off, -1,    -1,   night};  // after a night
const int kFinals[] = {off, early, late, night};

bool refused = false;
void post(bool posted) { refused = refused || !posted; }

// From lo to hi of the variables take the value. The constraint keeps the array.
void count(std::vector<CSint *> &vars, int value, int lo, int hi) {
  post(cs_OccurConstraints(cs_createCSint(lo, hi), value, vars.data(), static_cast<int>(vars.size())));
}

CSint *sum(std::vector<CSint *> vars, std::vector<long long> weights, int most) {
  vars.push_back(cs_createCSint(0, most));
  weights.push_back(-1);
  post(cs_Linear(vars.data(), weights.data(), static_cast<int>(vars.size()), CS_METHOD_EQ, 0));
  return vars.back();
}

// Who works with whom: a trainee is early or late only where a nurse with much practice is as well.
void pair(const std::vector<CSint *> &trainee, const std::vector<CSint *> &guide) {
  for (std::size_t day = 0; day < kDays; ++day) {
    for (const int shift : {early, late}) {
      CSint *same = cs_createCSint(0, 1);
      post(cs_EQIff(same, trainee[day], shift));
      post(cs_EQIf(same, guide[day], shift));
    }
    post(cs_NEQ(trainee[day], night));
  }
}

// What a night costs and pays, by the day of the week.
CSint *pay(const std::vector<CSint *> &row) {
  std::vector<CSint *> days;
  for (std::size_t day = 0; day < kDays; ++day) {
    const int sunday = day % 7 == 6 ? 20 : 0;
    const int rows[] = {off, 0, early, 40 + sunday, late, 45 + sunday, night, 60 + sunday};
    CSint *both[] = {row[day], cs_createCSint(0, 90)};
    post(cs_Table(both, 2, rows, 4));
    days.push_back(both[1]);
  }
  return sum(days, std::vector<long long>(kDays, 1), 90 * static_cast<int>(kDays));
}

bool compare(CSint *x, long long a, CSint *y, long long b, int method, long long constant) {
  CSint *vars[] = {x, y};
  const long long weights[] = {a, b};
  return cs_Linear(vars, weights, 2, method, constant);
}

}  // namespace

int main() {
  cs_init();
  std::vector<CSint *> shifts;
  for (std::size_t i = 0; i < kNurses * kDays; ++i) {
    shifts.push_back(cs_createCSint(off, night));
    cs_setName(shifts[i], ("shift[" + std::to_string(i) + "]").c_str());
  }
  std::vector<std::vector<CSint *>> nurses(kNurses), days(kDays);  // which constraints keep
  for (std::size_t i = 0; i < shifts.size(); ++i) {
    nurses[i / kDays].push_back(shifts[i]);
    days[i % kDays].push_back(shifts[i]);
  }
  for (auto &nurse : nurses) {
    post(cs_Regular(nurse.data(), kDays, kNext, kShifts, kShifts, off, kFinals, kShifts) != 0);
    count(nurse, off, 4, 6);
    count(nurse, night, 0, 4);
  }
  for (auto &day : days) {
    count(day, early, 2, 3);
    count(day, late, 1, 3);
    count(day, night, 1, 1);
  }
  pair(nurses[0], nurses[1]);

  std::vector<CSint *> pays;
  for (const auto &nurse : nurses) pays.push_back(pay(nurse));
  for (std::size_t i = 1; i < kNurses; ++i) {
    post(compare(pays[i], 1, pays[0], -1, CS_METHOD_LE, 200));
    post(compare(pays[i], 2, pays[0], 1, CS_METHOD_GE, 900));
  }
  std::vector<CSint *> broken;
  std::vector<long long> weights;
  long long most = 0;
  for (const Wish &wish : wishes()) {
    broken.push_back(cs_createCSint(0, 1));
    post(cs_NEQIff(broken.back(), shifts[wish.nurse * kDays + wish.day], wish.shift));
    weights.push_back(wish.weight);
    most += wish.weight;
  }
  CSint *cost = sum(broken, weights, static_cast<int>(most));
  if (refused) return 1;
  CSsearch *search = cs_createSearch(shifts.data(), static_cast<int>(shifts.size()));
  CSsearchOptions options{};
  options.size = sizeof options;
  options.order = CS_ORDER_DOM_WDEG;
  options.restarts = CS_RESTARTS_LUBY;
  options.restartFails = 100;
  options.lastConflict = true;
  options.guided = true;
  options.seed = 1;
  options.fails = 20000;
  options.minimize = cost;
  if (!cs_setSearchOptions(search, &options)) return 1;
  int best = -1;
  std::vector<int> roster(shifts.size());
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION) {
    best = cs_getMin(cost);
    for (std::size_t i = 0; i < shifts.size(); ++i) roster[i] = cs_getMin(shifts[i]);
  }
  if (best < 0) return 1;
  CSsearchStats stats;
  cs_getSearchStats(search, &stats, sizeof stats);
  std::cout << cs_getStatusName(cs_getSearchStatus(search)) << ' ' << best << ", " << stats.fails << " fails, "
            << stats.choicePoints << " choice points, " << stats.wakings << " wakings\n";
  for (std::size_t i = 0; i < roster.size(); ++i)
    std::cout << kLetters[roster[i]] << (i % kDays == kDays - 1 ? "\n" : "");
  cs_freeSearch(search);
  cs_end();
}
