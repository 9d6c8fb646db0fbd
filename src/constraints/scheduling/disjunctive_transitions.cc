// SPDX-License-Identifier: MIT
// cs_DisjunctiveTransitions: of any two tasks that are there and take time, one ends before the other one starts, and
// the time that the machine needs in between: times[left[i], needed[j]] from i to j.
// Consistency: bounds. Two by two, the order that is left is imposed; and all together by the rules of OneMachine, for
// which each task takes up the least time that can follow it as well. Complete assignments are told exactly.
// Cost: a run of O(n^2) and one of OneMachine, until they find nothing.  State: none.
// Wakes: when a bound of a start moves, a duration grows, a task has to be there.
// Deliberate: any two tasks are looked at, neighbours or not; so times need not keep to the triangle inequality.
#include <algorithm>

#include "constraints/scheduling/tasks.h"
#include "koru_extras.h"

namespace koru::scheduling {

struct Transitions : Deferred {
  Buffer<CSint *> starts;
  Buffer<CSint *> durations;
  Present present;
  Buffer<int> left;
  Buffer<int> needed;
  Buffer<int> times;
  int n;
  int columns;
  OneMachine machine;
  Buffer<int> leastAfter;

  std::int64_t size() const {
    return sizeOf(starts.get(), n) + sizeOf(durations.get(), n) + sizeOf(present.variables.get(), n);
  }
  Time between(int i, int j) const { return times[left[i] * columns + needed[j]]; }
  Presence presence(int i) const { return durations[i]->min > 0 ? present.of(i) : Presence::kOut; }
  bool mayPrecede(int i, int j) const {
    return Time{starts[i]->min} + durations[i]->min + between(i, j) <= starts[j]->max;
  }
};

// ----- two tasks

// j is there and takes time, and does not come before i. So i ends in time for j, or takes no time.
static bool precede(const Transitions &c, int i, int j) {
  const Time first = c.starts[i]->min;
  const Time room = c.starts[j]->max - c.between(i, j);
  if (!narrowMax64(c.durations[i], std::max<Time>(0, room - first))) return false;
  const Time length = c.durations[i]->min;
  if (length == 0) return true;
  return narrowMax64(c.starts[i], room - length) && narrowMin64(c.starts[j], first + length + c.between(i, j));
}

static bool keepApart(const Transitions &c, int i, int j) {
  if (c.mayPrecede(j, i)) return true;
  if (c.present.of(i) == Presence::kIn) return precede(c, i, j);
  return c.presence(i) == Presence::kOut || c.mayPrecede(i, j) || c.present.leaveOut(i);
}

static bool keepAllApart(const Transitions &c) {
  for (int j = 0; j < c.n; ++j)
    for (int i = 0; i < c.n; ++i)
      if (i != j && c.presence(j) == Presence::kIn && !keepApart(c, i, j)) return false;
  return true;
}

// ----- all of them

static bool keepSequence(Transitions &c) {
  for (int i = 0; i < c.n; ++i) {
    Task &task = c.machine[i] = taskOf(c.starts[i], c.durations[i], c.present.of(i));
    task.length += c.leastAfter[i];
    task.latest += c.leastAfter[i];
  }
  if (!c.machine.filter()) return false;
  for (int i = 0; i < c.n; ++i) {
    const Task &task = c.machine[i];
    if (!keepStart(task, c.starts[i])) return false;
    if (task.isOut() && c.presence(i) == Presence::kOptional && !c.present.leaveOut(i)) return false;
  }
  return true;
}

static bool filter(Transitions &c) {
  for (int i = 0; i < c.n; ++i)
    if (!narrowMin(c.durations[i], 0)) return false;
  return keepAllApart(c) && keepSequence(c);
}

constexpr auto kTable = deferred<toFixpoint<Transitions, filter>>(Rank::kQuadratic, kBoundsMove);

// ----- posting

struct Given {
  CSint **starts;
  CSint **durations;
  CSint **present;
  const int *left;
  const int *needed;
  int n;
  const int *times;
  int rows;
  int columns;
};

// False for a null list, an int outside, or exhausted memory (reported).
static bool copyInts(Buffer<int> &to, const int *from, std::int64_t count, int least, int most) {
  if ((count > 0 && from == nullptr) || !make(to, static_cast<std::uint64_t>(count))) return false;
  std::copy_n(from, count, to.get());
  return std::all_of(from, from + count, [=](int value) { return value >= least && value <= most; });
}

static bool copy(Transitions &record, const Given &given) {
  record.starts = copyVariables(given.starts, given.n);
  if (!record.starts || given.rows < 0 || given.columns < 0) return false;
  record.durations = copyVariables(given.durations, given.n);
  return record.durations && record.present.copy(given.present, given.n) &&
         copyInts(record.left, given.left, given.n, 0, given.rows - 1) &&
         copyInts(record.needed, given.needed, given.n, 0, given.columns - 1) &&
         copyInts(record.times, given.times, std::int64_t{given.rows} * given.columns, 0, kIntMax);
}

static void findLeast(Transitions &c) {
  for (int i = 0; i < c.n; ++i) {
    Time least = kIntMax;
    for (int j = 0; j < c.n; ++j)
      if (j != i) least = std::min(least, c.between(i, j));
    c.leastAfter[i] = static_cast<int>(least);
  }
}

static bool post(const Poster &poster, const Given &given) {
  Transitions record{{}, {}, {}, {}, {}, {}, {}, given.n, given.columns, {}, {}};
  if (!copy(record, given)) return false;
  Posting posting{poster};
  if (!posting) return false;
  if (given.n == 0) return true;
  record.machine = OneMachine(given.n);
  if (!record.machine || !make(record.leastAfter, static_cast<unsigned>(given.n))) return false;
  findLeast(record);
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; posting && i < given.n; ++i) {
    c.attach(given.starts[i], i, kBoundsMove);
    c.attach(given.durations[i], i, kMinRises);
    if (given.present != nullptr) c.attach(given.present[i], i, kMinRises);
  }
  return posting && runSoon(*c);
}

}  // namespace koru::scheduling

bool cs_DisjunctiveTransitions(CSint **starts, CSint **durations, CSint **present, const int *left, const int *needed,
                               int n, const int *times, int rows, int columns) {
  return koru::leftOut("cs_DisjunctiveTransitions") ||
         koru::door(koru::scheduling::post("cs_DisjunctiveTransitions",
                                           {starts, durations, present, left, needed, n, times, rows, columns}));
}
