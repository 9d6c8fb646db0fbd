// SPDX-License-Identifier: MIT
// The postings of a model, as they are known again in each of its runs: by the place and how manyth it is there.
//
// A place is the exported function with the address that it returns to, or with the text of the host's locator where
// one is installed.
#pragma once

#include <algorithm>
#include <type_traits>

#include "core/alloc.h"
#include "core/site.h"

namespace koru::explain {

// An array that grows at its end.
template <class T>
class Growing {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  int count() const { return count_; }
  T &operator[](int i) const { return items_[i]; }

  // False when memory is exhausted (reported); the array is then as before.
  [[nodiscard]] bool add(const T &item) {
    if (count_ == room_ && !grow()) return false;
    items_[count_++] = item;
    return true;
  }

 private:
  bool grow() {
    const int room = room_ == 0 ? 64 : 2 * room_;
    Buffer<T> larger(room);
    if (!larger) return false;
    std::copy_n(items_.get(), count_, larger.get());
    items_ = std::move(larger);
    room_ = room;
    return true;
  }

  Buffer<T> items_;
  int count_ = 0;
  int room_ = 0;
};

struct Place {
  Poster poster;
  char *text;  // the locator's, owned; null where the address tells
  std::uint32_t hash;
  int nextInBucket;
  int calls;  // recorded
  int first;  // and the first of them, the last, and the one that comes next in the run under way
  int last;
  int next;
};

struct Call {
  int place;
  int number;  // of the place's, from 1
  int nextThere;
};

class Calls {
 public:
  static constexpr int kNone = -1;

  Calls() { std::fill_n(buckets_, kBuckets, kNone); }
  Calls(const Calls &) = delete;
  Calls &operator=(const Calls &) = delete;
  ~Calls();

  int count() const { return calls_.count(); }
  int placeCount() const { return places_.count(); }
  const Call &operator[](int i) const { return calls_[i]; }
  const Place &placeOf(int call) const { return places_[calls_[call].place]; }

  // Whether a call at the place is in the set.
  bool hasAnyAt(int place, const bool *in) const;

  // Notes a call. False when memory is exhausted (reported).
  [[nodiscard]] bool record(const Poster &poster, const char *text);

  // From here on the calls of a run are looked up.
  void rewind() const;
  // Which call it is; kNone for one that was not recorded.
  int lookUp(const Poster &poster, const char *text) const;

 private:
  static constexpr int kBuckets = 1024;

  int findPlace(const Poster &poster, const char *text, std::uint32_t hash) const;
  int addPlace(const Poster &poster, const char *text, std::uint32_t hash);

  Growing<Place> places_;
  Growing<Call> calls_;
  int buckets_[kBuckets];
};

}  // namespace koru::explain
