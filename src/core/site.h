// SPDX-License-Identifier: MIT
// Sites: who posted a constraint. A site record is shared by the constraints of one posting call and counted.
//
// The site table gives constraints that are narrowed again and again from inside a user-defined constraint one site
// per (running user constraint, function name, text of the place).
#pragma once

#include "core/state.h"

#include <cstdint>

namespace koru {

// The text of a place that nobody has looked for, or found: file, line, address and function, separated by tabs.
inline constexpr char kUnknownPlace[] = "(unknown)\t0\t0\t(unknown)";

// Who posts: the exported function that the host has called, and the address that it returns to. To be made from the
// name in that very function, whose return address it takes; from there on it is handed down.
struct Poster {
  // NOLINTNEXTLINE(google-explicit-constructor): the name stands for the poster in every posting function.
  Poster(const char *constantName, const void *returnAddress = __builtin_return_address(0))
      : name(constantName), caller(returnAddress) {}

  const char *name;
  const void *caller;
};

// 16 bytes (in 32-bit code 12). A text that the host's locator has given follows the fields; otherwise the address is
// kept, and what it stands for is looked up when somebody asks.
class Site {
 public:
  // With no reference; null text leaves the place to the address. Null on exhausted memory (reported).
  static Site *create(const Poster &poster, const char *text);
  static void release(Site *site);  // drops one reference, if any is held, and frees at zero

  const char *name() const;
  const char *text() const;
  // That the place was left to; null for one with a text.
  const void *address() const { return located() ? nullptr : place_; }

  int references = 0;

 private:
  Site(const Poster &poster, bool located);
  bool located() const { return place_ == this + 1; }

  // As a distance from some place in the library, that an int holds.
  std::int32_t name_;
  const void *place_;  // the text behind this record, or the address
};

class SiteTable {
 public:
  static constexpr unsigned kBuckets = 100;

  bool create();  // false when memory is exhausted (reported); the table then stays empty and find() answers null
  void destroy();

  // The site for the key, made on a miss; text as for a site. Null without a table, without a parent or on exhausted
  // memory (reported).
  Site *find(Site *parent, const Poster &poster, const char *text);

 private:
  struct Item {
    Site *parent;
    Site *site;  // its name and text complete the key
    Item *next;
  };
  Item **buckets_ = nullptr;
};

std::uint32_t siteHash(const Site *parent, const char *name, const char *text);

namespace solver {

inline KORU_STATE SiteTable sites;
inline KORU_STATE Site *userSite = nullptr;  // of the user-defined constraint whose callback is running

}  // namespace solver
}  // namespace koru
