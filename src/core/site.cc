// SPDX-License-Identifier: MIT
#include "core/site.h"

#include <cstddef>
#include <cstring>
#include <new>

#include "core/alloc.h"
#include "core/pool.h"
#include "core/ports.h"

namespace koru {

// Names are constants of the library: none is farther than an int can say from this one.
static constexpr char kSomeName[] = "cs_";

static std::uintptr_t addressOf(const void *p) { return reinterpret_cast<std::uintptr_t>(p); }

static std::size_t sizeOfSite(const char *text) { return sizeof(Site) + (text != nullptr ? std::strlen(text) + 1 : 0); }

Site::Site(const Poster &poster, bool located)
    : name_(static_cast<std::int32_t>(addressOf(poster.name) - addressOf(kSomeName))),
      place_(located ? this + 1 : poster.caller) {}

Site *Site::create(const Poster &poster, const char *text) {
  void *memory = solver::pool.take(sizeOfSite(text));
  if (memory == nullptr) return nullptr;
  Site *site = new (memory) Site(poster, text != nullptr);
  if (text != nullptr) std::memcpy(site + 1, text, std::strlen(text) + 1);
  return site;
}

void Site::release(Site *site) {
  if (site == nullptr || --site->references > 0) return;
  solver::pool.give(site, sizeOfSite(site->located() ? site->text() : nullptr));
}

const char *Site::name() const {
  return reinterpret_cast<const char *>(addressOf(kSomeName) + static_cast<std::uintptr_t>(std::intptr_t{name_}));
}

const char *Site::text() const { return located() ? static_cast<const char *>(place_) : placeOf(place_); }

static std::uint32_t hashText(const char *text) {
  std::uint32_t hash = 12345678;
  for (; *text != '\0'; ++text) hash = hash << 5 ^ static_cast<std::uint32_t>(static_cast<signed char>(*text));
  return hash;
}

std::uint32_t siteHash(const Site *parent, const char *name, const char *text) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(parent)) ^ hashText(text) ^ hashText(name);
}

bool SiteTable::create() {
  buckets_ = static_cast<Item **>(allocateArray(0, kBuckets, sizeof(Item *)));
  for (unsigned i = 0; buckets_ != nullptr && i < kBuckets; ++i) buckets_[i] = nullptr;
  return buckets_ != nullptr;
}

void SiteTable::destroy() {
  for (unsigned i = 0; buckets_ != nullptr && i < kBuckets; ++i) {
    for (Item *item = buckets_[i]; item != nullptr;) {
      Item *next = item->next;
      Site::release(item->site);
      Site::release(item->parent);
      solver::pool.give(item, sizeof(Item));
      item = next;
    }
  }
  deallocate(buckets_);
  buckets_ = nullptr;
}

Site *SiteTable::find(Site *parent, const Poster &poster, const char *text) {
  if (buckets_ == nullptr || parent == nullptr) return nullptr;
  const char *key = text != nullptr ? text : placeOf(poster.caller);
  Item *&bucket = buckets_[siteHash(parent, poster.name, key) % kBuckets];
  for (Item *item = bucket; item != nullptr; item = item->next) {
    const Site *site = item->site;
    if (item->parent == parent && std::strcmp(site->name(), poster.name) == 0 && std::strcmp(site->text(), key) == 0)
      return item->site;
  }
  Site *site = Site::create(poster, text);
  if (site == nullptr) return nullptr;
  auto *item = static_cast<Item *>(solver::pool.take(sizeof(Item)));
  site->references = 1;
  if (item == nullptr) {
    Site::release(site);
    return nullptr;
  }
  ++parent->references;
  *item = {parent, site, bucket};
  bucket = item;
  return site;
}

}  // namespace koru
