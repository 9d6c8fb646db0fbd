// SPDX-License-Identifier: MIT
// Sites: who posted a constraint. A site record is shared by the constraints of one posting call and counted.
//
// The site table gives constraints that are narrowed again and again from inside a user-defined constraint one site
// per (running user constraint, function name, locator text).
#pragma once

#include <cstdint>

namespace koru {

// The text of a place that nobody has looked for: file, line, address and function, separated by tabs.
inline constexpr char kUnknownPlace[] = "(unknown)\t0\t0\t(unknown)";

// The locator's text follows the fields at once, in what would be padding: with a short text, or for an unknown place,
// a site takes 16 bytes.
struct Site {
  const char *name;  // constant text, the posting function's name
  int references;
  bool located;

  const char *text() const { return located ? reinterpret_cast<const char *>(&located + 1) : kUnknownPlace; }

  // With no reference; null text stands for an unknown place. Null on exhausted memory (reported).
  static Site *create(const char *name, const char *text);
  static void release(Site *site);  // drops one reference, if any is held, and frees at zero
};

class SiteTable {
 public:
  static constexpr unsigned kBuckets = 100;

  bool create();  // false when memory is exhausted (reported); the table then stays empty and find() answers null
  void destroy();

  // The site for the key, made on a miss; text as for a site. Null without a table, without a parent or on exhausted
  // memory (reported).
  Site *find(Site *parent, const char *name, const char *text);

 private:
  struct Item {
    Site *parent;
    Site *site;  // its name and text complete the key
    Item *next;
  };
  Item **buckets_ = nullptr;
};

std::uint32_t siteHash(const Site *parent, const char *name, const char *text);

}  // namespace koru
