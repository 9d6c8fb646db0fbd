// SPDX-License-Identifier: MIT
// Ports: what the core calls in rooms above it without knowing them.
//
// An observer is told of every handler run while profiling is on; the host's locator names the place in the host
// program that is posting. Both are installed by the rooms that implement them. Without a locator of the host's, the
// address that a posting function returns to stands for the place. A search that weighs failures hears of them.
#pragma once

#include "core/state.h"
#include "koru.h"

namespace koru {

class Site;
struct Constraint;
struct Poster;

struct Observer {
  void (*notify)(void *argument, bool consistent, CSint *variable, int code, Site *site);
  void (*release)(void *argument);  // called by cs_end for those not removed by then; may be null
  void *argument;
  bool enabled;
  Observer *next;
};

struct Locator {
  const char *(*text)(void *argument) = nullptr;  // answers null for no text
  void (*reset)() = nullptr;                      // back to the built-in locator, called by cs_end
  void *argument = nullptr;
};

// Told of each constraint whose handler has failed a propagation.
struct FailureListener {
  void (*tell)(void *argument, const Constraint *constraint) = nullptr;
  void *argument = nullptr;
};

// Asked before each posting and relation of the host's whether it is to be left out; see leftOut in core/refusal.h.
struct Censor {
  bool (*leavesOut)(void *argument, const Poster &poster) = nullptr;
  void *argument = nullptr;
};

class Ports {
 public:
  bool profiling = false;  // some observer is enabled
  Locator locator;
  FailureListener failureListener;

  void add(Observer *observer);  // newest first
  void remove(Observer *observer);
  void refreshProfiling();  // to be called when an observer's `enabled` has changed, and when these ports are others
  void notify(bool consistent, CSint *variable, int code, Site *site) const;
  const char *locatorText() const;  // null without a locator of the host's

  // For cs_end.
  void resetLocator();
  void releaseObservers();

 private:
  Observer *observers_ = nullptr;
};

// The built-in locator. The text is valid until cs_end.
const char *placeOf(const void *returnAddress);
// For functions that the library itself may have called: the address that the host program goes on at.
const void *hostCaller(const void *returnAddress);
void forgetPlaces();  // for cs_end

namespace solver {

inline KORU_STATE Ports ports;
inline KORU_STATE Censor censor;                    // of all solvers that come and go while it is there
inline KORU_STATE FailureListener failureRecorder;  // told before any other
inline KORU_STATE bool attention = false;           // profiling, or a censor: doors look closer at who calls

}  // namespace solver

// None: Censor{}.
void setCensor(const Censor &censor);

}  // namespace koru
