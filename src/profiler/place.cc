// SPDX-License-Identifier: MIT
// The built-in locator: from the address that a posting function returns to, to the text of the place.
//
// Nothing is looked up while constraints are posted. A report asks for the texts, and so does the site table, whose key
// they are part of; what was found is kept by address until cs_end, which also ends the session with the platform.
#include <cstdio>
#include <cstring>

#include "core/alloc.h"
#include "core/ports.h"
#include "core/site.h"
#include "profiler/platform.h"
#include "profiler/state.h"

namespace koru {

struct KnownPlace {
  const void *returnAddress;
  std::uint64_t unloads;  // of modules, when it was looked up
  KnownPlace *next;

  char *text() { return reinterpret_cast<char *>(this + 1); }
};

namespace {

unsigned bucketOf(const void *address) {
  const auto bits = reinterpret_cast<std::uintptr_t>(address);
  return static_cast<unsigned>((bits ^ bits >> 8) % ProfilerState::kBuckets);
}

// Characters that a line and an address take at most, with the tabs and the end.
constexpr std::size_t kNumbers = 40;

KnownPlace *lookUp(const void *returnAddress) {
  platform::Place place;
  if (!platform::find(returnAddress, place)) return nullptr;
  const char *function = place.function != nullptr ? place.function : "(unknown)";
  const std::size_t size = std::strlen(place.file) + std::strlen(function) + kNumbers;
  auto *known = static_cast<KnownPlace *>(allocate(sizeof(KnownPlace) + size));
  if (known != nullptr)
    std::snprintf(known->text(), size, "%s\t%d\t%p\t%s", place.file, place.line, place.address, function);
  return known;
}

}  // namespace

const char *placeOf(const void *returnAddress) {
  if (returnAddress == nullptr) return kUnknownPlace;
  KnownPlace *&bucket = profilerState.knownPlaces[bucketOf(returnAddress)];
  const std::uint64_t unloads = platform::unloads();
  for (KnownPlace *known = bucket; known != nullptr; known = known->next)
    if (known->returnAddress == returnAddress && known->unloads == unloads) return known->text();
  KnownPlace *known = lookUp(returnAddress);
  if (known == nullptr) return kUnknownPlace;
  *known = {returnAddress, unloads, bucket};
  bucket = known;
  return known->text();
}

const void *hostCaller(const void *returnAddress) { return platform::firstOutside(returnAddress); }

void forgetPlaces() {
  for (KnownPlace *&bucket : profilerState.knownPlaces) {
    while (bucket != nullptr) {
      KnownPlace *next = bucket->next;
      deallocate(bucket);
      bucket = next;
    }
  }
  platform::close();
}

}  // namespace koru
