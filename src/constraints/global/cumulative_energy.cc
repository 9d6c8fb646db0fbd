// SPDX-License-Identifier: MIT
#include "constraints/global/cumulative_energy.h"

#include <algorithm>

namespace koru::cumulative {

// The steps start as changes of the height, two for each part.
void Profile::addPart(const Task &task) {
  if (task.umin() == 0) return;
  steps_[count_++] = {task.lst(), task.umin(), 0};
  steps_[count_++] = {task.ect(), -std::int64_t{task.umin()}, 0};
}

void Profile::integrate() {
  std::sort(steps_.get(), steps_.get() + count_, [](const Step &p, const Step &q) { return p.at < q.at; });
  int last = -1;
  for (int k = 0; k < count_; ++k) {
    const Step change = steps_[k];
    if (last < 0) {
      steps_[++last] = change;
    } else if (steps_[last].at == change.at) {
      steps_[last].height += change.height;
    } else {
      const Step &before = steps_[last];
      const Energy energy = wrapAdd64(before.energy, wrapMul64(change.at - before.at, before.height));
      steps_[++last] = {change.at, before.height + change.height, energy};
    }
  }
  count_ = last + 1;
}

void Profile::build(const Tasks &tasks) {
  count_ = 0;
  for (int i = 0; i < tasks.n; ++i)
    if (tasks[i].hasCompulsoryPart()) addPart(tasks[i]);
  integrate();
}

void Profile::build(const Tasks &tasks, Time a, Time b) {
  count_ = 0;
  for (int i = 0; i < tasks.n; ++i) {
    const Task task = tasks[i];
    if (task.hasCompulsoryPart() && task.lst() < b && task.ect() > a) addPart(task);
  }
  integrate();
}

// By halves, without jumps that the processor can't foresee.
const Profile::Step *Profile::stepAt(Time t) const {
  const Step *first = steps_.get();
  if (count_ == 0 || t < first->at) return nullptr;
  for (int count = count_; count > 1;) {
    const int half = count / 2;
    first += first[half].at <= t ? half : 0;
    count -= half;
  }
  return first;
}

std::int64_t Profile::height(Time a, Time b) const {
  const Step *step = stepAt(a);
  std::int64_t highest = step != nullptr ? step->height : 0;
  for (step = step != nullptr ? step + 1 : steps_.get(); step < end() && step->at < b; ++step)
    highest = std::max(highest, step->height);
  return highest;
}

Energy Profile::energyTo(Time t) const {
  const Step *step = stepAt(t);
  return step == nullptr ? 0 : wrapAdd64(step->energy, wrapMul64(t - step->at, step->height));
}

}  // namespace koru::cumulative
