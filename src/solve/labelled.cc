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
  phases[phaseCount_] = {size_, size, order, value};
  vars_ = std::move(variables);
  wishes_ = std::move(wishes);
  solution_ = std::move(solution);
  phases_ = std::move(phases);
  size_ = size;
  ++phaseCount_;
  return true;
}

void Labelled::keepSolution() const {
  for (int i = 0; i < size_; ++i) {
    solution_[i] = vars_[i]->min;
    wishes_[i] = {vars_[i]->min, true};
  }
}

}  // namespace koru::solve
