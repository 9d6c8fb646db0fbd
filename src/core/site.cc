// SPDX-License-Identifier: MIT
#include "core/site.h"

#include <cstddef>
#include <cstring>
#include <new>

#include "core/alloc.h"
#include "core/pool.h"
#include "core/ports.h"

namespace koru {

// One function for each kind: in that without a text, which nearly all are, the size is known.
Site *Site::create(const Poster &poster, const char *text) {
  if (text != nullptr) [[unlikely]]
    return createLocated(poster.name, text);
  const int number = solver::posters.numberOf(poster);
  if (number == Posters::kNone) [[unlikely]]
    return nullptr;
  void *memory = solver::pool.take(sizeof(Site));
  return memory != nullptr ? new (memory) Site(number) : nullptr;
}

Site *Site::createLocated(const char *name, const char *text) {
  const int number = solver::posters.numberOf({name, nullptr});
  if (number == Posters::kNone) return nullptr;
  const std::size_t size = std::strlen(text) + 1;
  void *memory = solver::pool.take(sizeof(Site) + size);
  if (memory == nullptr) return nullptr;
  Site *site = new (memory) Site(~number);
  std::memcpy(site + 1, text, size);
  return site;
}

void Site::release(Site *site) {
  if (site == nullptr || --site->references > 0) return;
  if (site->located()) [[unlikely]]
    return solver::pool.give(site, sizeof(Site) + std::strlen(site->text()) + 1);
  solver::pool.give(site, sizeof(Site));
}

const char *Site::name() const { return poster().name; }

const char *Site::text() const { return located() ? reinterpret_cast<const char *>(this + 1) : placeOf(address()); }

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
