// SPDX-License-Identifier: MIT
#include "explain/calls.h"

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

Calls::~Calls() {
  for (int i = 0; i < places_.count(); ++i) deallocate(places_[i].text);
}

int Calls::findPlace(const Poster &poster, const char *text, std::uint32_t hash) const {
  int i = buckets_[hash % kBuckets];
  while (i != kNone && (places_[i].hash != hash || !isAt(places_[i], poster, text))) i = places_[i].nextInBucket;
  return i;
}

int Calls::addPlace(const Poster &poster, const char *text, std::uint32_t hash) {
  char *copy = nullptr;
  if (text != nullptr) {
    copy = static_cast<char *>(allocate(std::strlen(text) + 1));
    if (copy == nullptr) return kNone;
    std::strcpy(copy, text);
  }
  int &bucket = buckets_[hash % kBuckets];
  if (!places_.add({poster, copy, hash, bucket, 0, kNone, kNone, kNone})) {
    deallocate(copy);
    return kNone;
  }
  return bucket = places_.count() - 1;
}

bool Calls::record(const Poster &poster, const char *text) {
  const std::uint32_t hash = hashOf(poster, text);
  int i = findPlace(poster, text, hash);
  if (i == kNone) i = addPlace(poster, text, hash);
  if (i == kNone) return false;
  Place &place = places_[i];
  if (!calls_.add({i, place.calls + 1, kNone})) return false;
  const int call = calls_.count() - 1;
  (place.last == kNone ? place.first : calls_[place.last].nextThere) = call;
  place.last = call;
  ++place.calls;
  return true;
}

bool Calls::hasAnyAt(int place, const bool *in) const {
  int i = places_[place].first;
  while (i != kNone && !in[i]) i = calls_[i].nextThere;
  return i != kNone;
}

void Calls::rewind() const {
  for (int i = 0; i < places_.count(); ++i) places_[i].next = places_[i].first;
}

int Calls::lookUp(const Poster &poster, const char *text) const {
  const int i = findPlace(poster, text, hashOf(poster, text));
  if (i == kNone) return kNone;
  const int call = places_[i].next;
  if (call != kNone) places_[i].next = calls_[call].nextThere;
  return call;
}

}  // namespace koru::explain
