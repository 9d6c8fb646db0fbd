// SPDX-License-Identifier: MIT
#include "explain/explanation.h"

#include "core/ports.h"
#include "explain/place_text.h"

namespace koru::explain {

bool Explanation::addReason(const Calls &calls, int call) {
  const Place &place = calls.placeOf(call);
  const char *text = place.text != nullptr ? place.text : koru::placeOf(place.poster.caller);
  char *copy = copyText(text);
  if (copy == nullptr) return false;
  texts[size] = copy;
  CSreason &reason = list[size++];
  reason = {place.poster.name, nullptr, 0, nullptr, calls[call].number, calls.countAt(calls[call].place), call + 1};
  const PlaceText where(copy);
  reason.file = where.file;
  reason.line = where.line;
  reason.caller = where.caller;
  return true;
}

void Explanation::dropReasons() {
  for (int i = 0; i < size; ++i) deallocate(texts[i]);
  size = places = 0;
  reasons = nullptr;
}

bool Explanation::nameReasons(const Runs &runs, const Reasons &found) {
  dropReasons();
  const Calls &calls = runs.calls();
  const bool *in = found.best();
  const auto n = static_cast<unsigned>(found.bestCount());
  allPostings = calls.count();
  allPlaces = calls.placeCount();
  checks = runs.count();
  if (!make(list, n) || !make(texts, n)) return false;
  for (int i = 0; in != nullptr && i < calls.count(); ++i) {
    if (!in[i]) continue;
    if (!addReason(calls, i)) {
      dropReasons();
      return false;
    }
  }
  for (int p = 0; in != nullptr && p < calls.placeCount(); ++p) places += calls.hasAnyAt(p, in) ? 1 : 0;
  reasons = list.get();
  return true;
}

}  // namespace koru::explain
