// SPDX-License-Identifier: MIT
// QuickXplain (Junker 2004): of n elements a minimal set for which something holds that also holds for every larger
// set. About 2 k log(n / k) questions for a set of k.
#pragma once

namespace koru::explain {

// `holds()` asks about the elements that are `chosen`; it may stop the search for good by making `stopped()` true.
template <class Holds, class Stopped>
class MinimalSet {
 public:
  MinimalSet(bool *chosen, const Holds &holds, const Stopped &stopped)
      : chosen_(chosen), holds_(holds), stopped_(stopped) {}

  // For all n elements it holds. Afterwards a minimal set of them is chosen, unless the search was stopped.
  void find(int n) const {
    set(0, n, false);
    if (n > 0) reduce(0, n, false);
  }

 private:
  // Of the elements in [begin, end), none of them chosen: with those and all that are chosen it holds. Chooses as few
  // as need be, and returns how many. `asks`: it may hold for those chosen alone already.
  int reduce(int begin, int end, bool asks) const {
    if (asks && holds_()) return 0;
    if (stopped_()) return 0;
    if (end - begin == 1) {
      chosen_[begin] = true;
      return 1;
    }
    const int middle = begin + (end - begin) / 2;
    set(begin, middle, true);
    const int late = reduce(middle, end, true);
    set(begin, middle, false);
    return late + reduce(begin, middle, late > 0);
  }

  void set(int begin, int end, bool value) const {
    for (int i = begin; i < end; ++i) chosen_[i] = value;
  }

  bool *chosen_;
  const Holds &holds_;
  const Stopped &stopped_;
};

}  // namespace koru::explain
