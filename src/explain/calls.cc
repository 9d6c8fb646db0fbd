// SPDX-License-Identifier: MIT
#include "explain/calls.h"

namespace koru::explain {

int Calls::addPlace(const Poster &poster, const char *text) {
  if (!chains_.add({0, kNone, kNone, kNone})) return kNone;
  const int place = places_.add(poster, text);
  if (place == kNone) chains_.cutTo(chains_.count() - 1);
  return place;
}

bool Calls::record(const Poster &poster, const char *text) {
  int place = places_.find(poster, text);
  if (place == kNone) place = addPlace(poster, text);
  if (place == kNone) return false;
  Chain &chain = chains_[place];
  if (!calls_.add({place, chain.calls + 1, kNone})) return false;
  const int call = calls_.count() - 1;
  (chain.last == kNone ? chain.first : calls_[chain.last].nextThere) = call;
  chain.last = call;
  ++chain.calls;
  return true;
}

bool Calls::hasAnyAt(int place, const bool *in) const {
  int i = chains_[place].first;
  while (i != kNone && !in[i]) i = calls_[i].nextThere;
  return i != kNone;
}

void Calls::rewind() const {
  for (int i = 0; i < chains_.count(); ++i) chains_[i].next = chains_[i].first;
}

int Calls::lookUp(const Poster &poster, const char *text) const {
  const int place = places_.find(poster, text);
  if (place == kNone) return kNone;
  const int call = chains_[place].next;
  if (call != kNone) chains_[place].next = calls_[call].nextThere;
  return call;
}

}  // namespace koru::explain
