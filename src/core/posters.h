// SPDX-License-Identifier: MIT
// Posters: who posts, in a table of the solver's, so that a site keeps no more than a number. A loop posts a million
// constraints from one place; programs have few places.
#pragma once

#include <cstdint>

#include "core/state.h"

namespace koru {

// Who posts: the exported function that the host has called, and the address that it returns to. To be made from the
// name in that very function, whose return address it takes; from there on it is handed down.
struct Poster {
  // NOLINTNEXTLINE(google-explicit-constructor): the name stands for the poster in every posting function.
  Poster(const char *constantName, const void *returnAddress = __builtin_return_address(0))
      : name(constantName), caller(returnAddress) {}

  const char *name;  // a constant of the library; never null
  const void *caller;

  bool operator==(const Poster &) const = default;
};

// Numbered as they come. They are told apart by the address of the name, not by its text.
class Posters {
 public:
  static constexpr int kNone = -1;

  // kNone when memory is exhausted (reported). The one asked for last is found at once.
  int numberOf(const Poster &poster) {
    if (poster.name == lastName_ && poster.caller == lastCaller_) [[likely]]
      return last_;
    return find(poster);
  }
  const Poster &operator[](int number) const { return items_[number].poster; }
  int count() const { return count_; }
  std::uint64_t bytes() const;
  void destroy();

 private:
  static constexpr int kFirstRoom = 16;

  // As many buckets as there is room for items, so that both grow as one array: item i begins the list of bucket i.
  struct Item {
    Poster poster;
    int next;  // in the poster's bucket
    int first;
  };

  int find(const Poster &poster);
  int add(const Poster &poster);
  bool grow();
  void link(int number);  // to its bucket
  int &firstOf(const Poster &poster) const;

  const char *lastName_ = nullptr;
  const void *lastCaller_ = nullptr;
  int last_ = kNone;
  int count_ = 0;
  int room_ = 0;  // a power of two, or 0
  Item *items_ = nullptr;
};

namespace solver {

inline KORU_STATE Posters posters;

}  // namespace solver
}  // namespace koru
