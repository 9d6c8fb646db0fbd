// SPDX-License-Identifier: MIT
// Ports: what the core calls in rooms above it without knowing them.
//
// An observer is told of every handler run while profiling is on; the locator names the place in the host program that
// is posting. Both are installed by the rooms that implement them.
#pragma once

#include "koru.h"

namespace koru {

struct Site;

struct Observer {
  void (*notify)(void *argument, bool consistent, CSint *variable, int code, Site *site);
  void (*release)(void *argument);  // called by cs_end
  void *argument;
  bool enabled;
  Observer *next;
};

struct Locator {
  const char *(*text)(void *argument) = nullptr;  // null text: none
  void (*reset)() = nullptr;                      // back to the built-in locator, called by cs_end
  void *argument = nullptr;
};

class Ports {
 public:
  bool profiling = false;  // some observer is enabled
  Locator locator;

  void add(Observer *observer);  // owned from now on; allocated by allocate()
  void refreshProfiling();       // to be called when an observer's `enabled` has changed
  void notify(bool consistent, CSint *variable, int code, Site *site) const;
  const char *locatorText() const;  // never null

  // For cs_end.
  void resetLocator();
  void releaseObservers();

 private:
  Observer *observers_ = nullptr;
};

}  // namespace koru
