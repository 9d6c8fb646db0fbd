// SPDX-License-Identifier: MIT
// Sites: who posted a constraint. A site record is shared by the constraints of one posting call and counted.
//
// The site table gives constraints that are narrowed again and again from inside a user-defined constraint one site
// per (running user constraint, function name, locator text).
#pragma once

#include <cstdint>

namespace koru {

// The locator's text follows the fields at once, in what would be padding: with no text a site takes 16 bytes.
struct Site {
  const char *name;  // constant text, the posting function's name
  int references;

  const char *text() const { return reinterpret_cast<const char *>(&references + 1); }

  static Site *create(const char *name, const char *text);  // with no reference; null on exhausted memory (reported)
  static void release(Site *site);                          // drops one reference, if any is held, and frees at zero
};

class SiteTable {
 public:
  static constexpr unsigned kBuckets = 100;

  bool create();  // false when memory is exhausted (reported); the table then stays empty and find() answers null
  void destroy();

  // The site for the key, made on a miss; null without a table, without a parent or on exhausted memory (reported).
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
