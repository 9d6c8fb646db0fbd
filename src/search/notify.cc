// SPDX-License-Identifier: MIT
// The record of search hooks: creation, the setters, which can be chained, and release.
#include "core/alloc.h"
#include "search/selector_engine.h"

namespace koru {

const CSsearchNotify &noHooks() {
  static constexpr CSsearchNotify none{};
  return none;
}

template <class Hook>
static CSsearchNotify *setHook(CSsearchNotify *notify, Hook CSsearchNotify::*field, Hook hook) {
  if (notify != nullptr) notify->*field = hook;
  return notify;
}

}  // namespace koru

using koru::setHook;

CSsearchNotify *cs_createSearchNotify(void *extra) {
  auto *notify = static_cast<CSsearchNotify *>(koru::allocate(sizeof(CSsearchNotify)));
  if (notify == nullptr) return nullptr;
  *notify = koru::noHooks();
  notify->extra = extra;
  return notify;
}

CSsearchNotify *cs_searchNotifySetSearchStart(CSsearchNotify *notify, CSsearchStartHook hook) {
  return setHook(notify, &CSsearchNotify::searchStart, hook);
}

CSsearchNotify *cs_searchNotifySetSearchEnd(CSsearchNotify *notify, CSsearchEndHook hook) {
  return setHook(notify, &CSsearchNotify::searchEnd, hook);
}

CSsearchNotify *cs_searchNotifySetBeforeValueSelection(CSsearchNotify *notify, CSbeforeValueSelectionHook hook) {
  return setHook(notify, &CSsearchNotify::beforeValueSelection, hook);
}

CSsearchNotify *cs_searchNotifySetAfterValueSelection(CSsearchNotify *notify, CSafterValueSelectionHook hook) {
  return setHook(notify, &CSsearchNotify::afterValueSelection, hook);
}

CSsearchNotify *cs_searchNotifySetEnter(CSsearchNotify *notify, CSlevelHook hook) {
  return setHook(notify, &CSsearchNotify::enter, hook);
}

CSsearchNotify *cs_searchNotifySetLeave(CSsearchNotify *notify, CSlevelHook hook) {
  return setHook(notify, &CSsearchNotify::leave, hook);
}

CSsearchNotify *cs_searchNotifySetFound(CSsearchNotify *notify, CSfoundHook hook) {
  return setHook(notify, &CSsearchNotify::found, hook);
}

void cs_freeSearchNotify(CSsearchNotify *notify) { koru::deallocate(notify); }
