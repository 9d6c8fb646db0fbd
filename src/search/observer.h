// SPDX-License-Identifier: MIT
// What an observer of searches is told, by all engines but walks, whose tree is in pieces: the tree, in the order in
// which it is searched.
//
// A level is a variable and the decisions that are tried on it, each of them refused, or accepted and followed by a
// level below or a solution. Levels that are open when a run or a search ends end with it. A search may run inside
// another one. Cost: a test of one pointer while there is no observer.
#pragma once

#include "core/state.h"
#include "koru_extras.h"

namespace koru {

enum class Engine { kLabelling, kObject };  // of koru.h, and search objects
enum class RunKind { kComplete, kNeighbourhood };

// How a decision came to be tried: as a choice, or as the opposite of the one before, which has failed.
enum class Tried { kChoice, kOpposite };

struct SearchObserver {
  void (*begin)(void *self, Engine engine);
  void (*run)(void *self, RunKind kind);  // back at the root, the first time included
  void (*enter)(void *self, const CSint *v);
  void (*tried)(void *self, const CSvalueSelection &decision, Tried how, bool consistent);
  void (*leave)(void *self);
  void (*solution)(void *self, bool accepted, const CSint *objective);  // which may be null
  void (*end)(void *self, CSstatus status);
  void *self;
};

inline KORU_STATE const SearchObserver *searchObserver = nullptr;

inline void tellBegin(Engine engine) {
  if (const SearchObserver *o = searchObserver; o != nullptr) [[unlikely]]
    o->begin(o->self, engine);
}

inline void tellRun(RunKind kind = RunKind::kComplete) {
  if (const SearchObserver *o = searchObserver; o != nullptr) [[unlikely]]
    o->run(o->self, kind);
}

inline void tellEnter(const CSint *v) {
  if (const SearchObserver *o = searchObserver; o != nullptr) [[unlikely]]
    o->enter(o->self, v);
}

// Hands the outcome on.
[[gnu::always_inline]] inline bool tellTried(const CSvalueSelection &decision, bool consistent,
                                             Tried how = Tried::kChoice) {
  if (const SearchObserver *o = searchObserver; o != nullptr) [[unlikely]]
    o->tried(o->self, decision, how, consistent);
  return consistent;
}

inline void tellLeave() {
  if (const SearchObserver *o = searchObserver; o != nullptr) [[unlikely]]
    o->leave(o->self);
}

inline void tellSolution(bool accepted = true, const CSint *objective = nullptr) {
  if (const SearchObserver *o = searchObserver; o != nullptr) [[unlikely]]
    o->solution(o->self, accepted, objective);
}

inline void tellEnd(CSstatus status) {
  if (const SearchObserver *o = searchObserver; o != nullptr) [[unlikely]]
    o->end(o->self, status);
}

}  // namespace koru
