// SPDX-License-Identifier: MIT
// Places of postings, numbered as they come: the exported function with the address that it returns to, or with the
// text of the host's locator where one is installed.
#pragma once

#include "core/growing.h"
#include "core/site.h"

namespace koru::explain {

struct Place {
  Poster poster;
  char *text;  // the locator's, owned; null where the address tells
  std::uint32_t hash;
  int nextInBucket;
};

class Places {
 public:
  static constexpr int kNone = -1;

  Places() { std::fill_n(buckets_, kBuckets, kNone); }
  Places(const Places &) = delete;
  Places &operator=(const Places &) = delete;
  ~Places();

  int count() const { return places_.count(); }
  const Place &operator[](int i) const { return places_[i]; }

  // kNone when it is not there.
  int find(const Poster &poster, const char *text) const;
  // One that is not there yet, with a copy of the text. kNone when memory is exhausted (reported).
  int add(const Poster &poster, const char *text);

 private:
  static constexpr int kBuckets = 1024;

  Growing<Place> places_;
  int buckets_[kBuckets];
};

}  // namespace koru::explain
