// SPDX-License-Identifier: MIT
#include "explain/places.h"

#include <cstring>

namespace koru::explain {

static std::uint32_t hashOf(const Poster &poster, const char *text) {
  auto hash = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(poster.name) >> 3);
  if (text == nullptr) return hash * 31 + static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(poster.caller));
  for (; *text != '\0'; ++text) hash = hash * 31 + static_cast<unsigned char>(*text);
  return hash;
}

// Names are constants, one for each exported function.
static bool isAt(const Place &place, const Poster &poster, const char *text) {
  if (place.poster.name != poster.name || (place.text == nullptr) != (text == nullptr)) return false;
  return text != nullptr ? std::strcmp(place.text, text) == 0 : place.poster.caller == poster.caller;
}

Places::~Places() {
  for (int i = 0; i < places_.count(); ++i) deallocate(places_[i].text);
}

int Places::find(const Poster &poster, const char *text) const {
  const std::uint32_t hash = hashOf(poster, text);
  int i = buckets_[hash % kBuckets];
  while (i != kNone && (places_[i].hash != hash || !isAt(places_[i], poster, text))) i = places_[i].nextInBucket;
  return i;
}

int Places::add(const Poster &poster, const char *text) {
  char *copy = nullptr;
  if (text != nullptr) {
    copy = copyText(text);
    if (copy == nullptr) return kNone;
  }
  const std::uint32_t hash = hashOf(poster, text);
  int &bucket = buckets_[hash % kBuckets];
  if (!places_.add({poster, copy, hash, bucket})) {
    deallocate(copy);
    return kNone;
  }
  return bucket = places_.count() - 1;
}

}  // namespace koru::explain
