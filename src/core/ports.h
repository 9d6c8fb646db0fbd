// SPDX-License-Identifier: MIT
// Ports: what the core calls in rooms above it without knowing them.
//
// An observer is told of every handler run while profiling is on; the host's locator names the place in the host
// program that is posting. Both are installed by the rooms that implement them. Without a locator of the host's, the
// address that a posting function returns to stands for the place. A search that weighs failures hears of them.
#pragma once

#include "core/meter.h"
#include "core/state.h"
#include "core/ticks.h"
#include "koru.h"

namespace koru {

class Site;
struct Constraint;
struct Poster;

// A handler or run, and the event that it is called for: of a run the latest one, if there was any.
struct Waking {
  CSint *variable;
  int code;
  int value;
  Site *site;
};

// What an observer may be told besides: where handlers and runs begin and end, one inside the other; what the host
// calls; and that a context is about to be opened or accepted. The last two may be null.
struct Watch {
  void (*begins)(void *argument, const Waking &waking);
  void (*ends)(void *argument);
  void (*posts)(void *argument, const Poster &poster);
  void (*marks)(void *argument);
};

struct Observer {
  void (*notify)(void *argument, bool consistent, CSint *variable, int code, Site *site);
  void (*release)(void *argument);  // called by cs_end for those not removed by then; may be null
  void *argument;
  bool enabled;
  Observer *next;
  const Watch *watch = nullptr;
  bool reads = false;  // the meter, when it is notified
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
  bool profiling = false;       // some observer is enabled
  bool watched = false;         // one that has a watch
  bool metered = false;         // one that reads the meter
  Meter meter;                  // of the handler or run that an observer is notified of
  Observer *journal = nullptr;  // of changes (explain/journal), when there is one
  Locator locator;
  FailureListener failureListener;

  void add(Observer *observer);  // newest first
  void remove(Observer *observer);
  void refreshProfiling();  // to be called when an observer's `enabled` has changed, and when these ports are others
  void notify(bool consistent, CSint *variable, int code, Site *site);
  const char *locatorText() const;  // null without a locator of the host's
  // The same for a posting that begins.
  const char *textFor(const Poster &poster) const {
    if (locator.text == nullptr && !watched) [[likely]]
      return nullptr;
    return askText(poster);
  }
  // Of a posting that changes domains before it asks for its text.
  void announce(const Poster &poster) const {
    if (watched) [[unlikely]]
      tellPosts(poster);
  }

  [[gnu::cold, gnu::noinline]] const char *askText(const Poster &poster) const;
  void tellBegin(const Waking &waking) const;
  void tellEnd() const;
  void tellPosts(const Poster &poster) const;
  void tellMarks() const;

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

// Tells those that watch of a handler or run, which may end by an exception of the host's.
class Watched {
 public:
  explicit Watched(const Waking &waking) : told_(solver::ports.watched) {
    if (told_) solver::ports.tellBegin(waking);
  }
  Watched(const Watched &) = delete;
  Watched &operator=(const Watched &) = delete;
  ~Watched() {
    if (told_) solver::ports.tellEnd();
  }

 private:
  bool told_;
};

// Makes a call, with the changes and the time of which `note` is called.
template <void (Meter::*note)(int changes, std::uint64_t ticks), class Call>
bool timed(const Call &call) {
  const TrailRecord *end = solver::ports.meter.trailEnd();
  const std::uint64_t start = ticks();
  const bool consistent = call();
  const std::uint64_t taken = ticks() - start;
  (solver::ports.meter.*note)(changesSince(end), taken);
  return consistent;
}

// Makes a call that is timed each time, while somebody reads the meter.
template <class Call>
bool metered(const Call &call) {
  return solver::ports.metered ? timed<&Meter::note>(call) : call();
}

// None: Censor{}.
void setCensor(const Censor &censor);

}  // namespace koru
