// SPDX-License-Identifier: MIT
// The postings of a model, as they are known again in each of its runs: by the place and how manyth it is there.
#pragma once

#include "explain/places.h"

namespace koru::explain {

struct Call {
  int place;
  int number;  // of the place's, from 1
  int nextThere;
};

class Calls {
 public:
  static constexpr int kNone = Places::kNone;

  int count() const { return calls_.count(); }
  int placeCount() const { return places_.count(); }
  const Call &operator[](int i) const { return calls_[i]; }
  const Place &placeOf(int call) const { return places_[calls_[call].place]; }
  int countAt(int place) const { return chains_[place].calls; }

  // Whether a call at the place is in the set.
  bool hasAnyAt(int place, const bool *in) const;

  // Notes a call. False when memory is exhausted (reported).
  [[nodiscard]] bool record(const Poster &poster, const char *text);

  // From here on the calls of a run are looked up.
  void rewind() const;
  // Which call it is; kNone for one that was not recorded.
  int lookUp(const Poster &poster, const char *text) const;

 private:
  // The calls of a place.
  struct Chain {
    int calls;
    int first;
    int last;
    int next;  // in the run under way
  };

  int addPlace(const Poster &poster, const char *text);

  Places places_;
  Growing<Chain> chains_;  // one for each place
  Growing<Call> calls_;
};

}  // namespace koru::explain
