// SPDX-License-Identifier: MIT
// Sites: who posted a constraint. A site record is shared by the constraints of one posting call and counted.
//
// The site table gives constraints that are narrowed again and again from inside a user-defined constraint one site
// per (running user constraint, function name, text of the place).
#pragma once

#include <cstdint>

#include "core/posters.h"
#include "core/state.h"

namespace koru {

// The text of a place that nobody has looked for, or found: file, line, address and function, separated by tabs.
inline constexpr char kUnknownPlace[] = "(unknown)\t0\t0\t(unknown)";

// 8 bytes, of which there are as many as postings: who has posted is a number (core/posters). A text that the host's
// locator has given follows the fields, and the poster has no address then; otherwise what the address stands for is
// looked up when somebody asks.
class Site {
 public:
  // With no reference; null text leaves the place to the address. Null on exhausted memory (reported).
  static Site *create(const Poster &poster, const char *text);
  static void release(Site *site);  // drops one reference, if any is held, and frees at zero

  const char *name() const;
  const char *text() const;
  // That the place was left to; null for one with a text.
  const void *address() const { return poster().caller; }

  int references = 0;

 private:
  explicit Site(int poster) : poster_(poster) {}
  static Site *createLocated(const char *name, const char *text);
  bool located() const { return poster_ < 0; }
  const Poster &poster() const { return solver::posters[located() ? ~poster_ : poster_]; }

  int poster_;  // its number; with all bits inverted where a text follows
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
