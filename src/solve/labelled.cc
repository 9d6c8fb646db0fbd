// SPDX-License-Identifier: MIT
#include "solve/labelled.h"

#include <algorithm>
#include <utility>

namespace koru::solve {

// A copy of the first `count` elements with room for `size`.
template <class T>
static Buffer<T> grown(const Buffer<T> &old, int count, int size) {
  Buffer<T> buffer(size);
  if (buffer) std::copy_n(old.get(), count, buffer.get());
  return buffer;
}

bool Labelled::add(CSint *const *vars, int n, int order, int value) {
  const int size = size_ + n;
  Buffer<CSint *> variables = grown(vars_, size_, size);
  Buffer<Wish> wishes = grown(wishes_, size_, size);
  Buffer<int> solution = grown(solution_, size_, size);
  Buffer<Phase> phases = grown(phases_, phaseCount_, phaseCount_ + 1);
  if (!variables || !wishes || !solution || !phases) return false;
  std::copy_n(vars, n, variables.get() + size_);
  std::fill_n(wishes.get() + size_, n, Wish{0, false});
  phases[phaseCount_] = {size_, size, order, value, 0, false};
  vars_ = std::move(variables);
  wishes_ = std::move(wishes);
  solution_ = std::move(solution);
  phases_ = std::move(phases);
  size_ = size;
  ++phaseCount_;
  return true;
}

bool Labelled::addOrders(const CSorder *orders, int n, int order, int value) {
  const int count = orderCount_ + n;
  Buffer<CSorder> all = grown(orders_, orderCount_, count);
  Buffer<PlacedOrder> placed = grown(placed_, orderCount_, count);
  Buffer<CSint *> variables(n);
  if (!all || !placed || !variables) return false;
  for (int k = 0; k < n; ++k) {
    all[orderCount_ + k] = orders[k];
    placed[orderCount_ + k] = {size_ + k, orders[k].machine, {orders[k].starts[0], orders[k].starts[1]}, {0, 0}};
    variables[k] = orders[k].first;
  }
  if (!add(variables.get(), n, order, value)) return false;
  Phase &phase = phases_[phaseCount_ - 1];
  phase.orderAt = orderCount_ - phase.begin;
  phase.ofOrders = true;
  orders_ = std::move(all);
  placed_ = std::move(placed);
  orderCount_ = count;
  return true;
}

void Labelled::keepSolution() const {
  for (int i = 0; i < size_; ++i) {
    solution_[i] = vars_[i]->min;
    wishes_[i] = {vars_[i]->min, true};
  }
  for (int k = 0; k < orderCount_; ++k)
    for (int i = 0; i < 2; ++i) placed_[k].times[i] = placed_[k].starts[i]->min;
}

}  // namespace koru::solve
