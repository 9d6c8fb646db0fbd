// SPDX-License-Identifier: MIT
#include "core/ports.h"

#include "core/lifetime.h"

namespace koru {

void Ports::add(Observer *observer) {
  observer->next = observers_;
  observers_ = observer;
  refreshProfiling();
}

void Ports::remove(Observer *observer) {
  Observer **link = &observers_;
  while (*link != nullptr && *link != observer) link = &(*link)->next;
  if (*link != nullptr) *link = (*link)->next;
  refreshProfiling();
}

void Ports::refreshProfiling() {
  const bool before = metered;
  profiling = watched = metered = false;
  for (const Observer *observer = observers_; observer != nullptr; observer = observer->next) {
    profiling = profiling || observer->enabled;
    watched = watched || (observer->enabled && observer->watch != nullptr);
    metered = metered || (observer->enabled && observer->reads);
  }
  if (metered && !before) meter = Meter{};
  if (metered) meter.readFrom(placeOfTrailEnd());
  solver::attention = profiling || solver::censor.leavesOut != nullptr;
}

void Ports::notify(bool consistent, CSint *variable, int code, Site *site) {
  for (const Observer *observer = observers_; observer != nullptr; observer = observer->next) {
    if (observer->enabled) observer->notify(observer->argument, consistent, variable, code, site);
  }
  meter.forget();
}

const char *Ports::locatorText() const {
  if (locator.text == nullptr) return nullptr;
  const HostAsked asked;
  const char *text = locator.text(locator.argument);
  return text != nullptr ? text : "";
}

const char *Ports::askText(const Poster &poster) const {
  announce(poster);
  return locatorText();
}

namespace {

template <class Tell>
void tellEach(const Observer *observer, const Tell &tell) {
  for (; observer != nullptr; observer = observer->next)
    if (observer->enabled && observer->watch != nullptr) tell(*observer->watch, observer->argument);
}

}  // namespace

void Ports::tellBegin(const Waking &waking) const {
  tellEach(observers_, [&](const Watch &watch, void *argument) { watch.begins(argument, waking); });
}

void Ports::tellEnd() const {
  tellEach(observers_, [](const Watch &watch, void *argument) { watch.ends(argument); });
}

void Ports::tellPosts(const Poster &poster) const {
  tellEach(observers_, [&](const Watch &watch, void *argument) {
    if (watch.posts != nullptr) watch.posts(argument, poster);
  });
}

void Ports::tellMarks() const {
  tellEach(observers_, [](const Watch &watch, void *argument) {
    if (watch.marks != nullptr) watch.marks(argument);
  });
}

void Ports::resetLocator() {
  const Locator old = locator;
  locator = Locator{};
  if (old.reset != nullptr) old.reset();
}

void Ports::releaseObservers() {
  while (observers_ != nullptr) {
    Observer *observer = observers_;
    observers_ = observer->next;
    if (observer->release != nullptr) observer->release(observer->argument);
  }
  refreshProfiling();
}

void setCensor(const Censor &censor) {
  solver::censor = censor;
  solver::ports.refreshProfiling();
}

}  // namespace koru
