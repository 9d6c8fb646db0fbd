// SPDX-License-Identifier: MIT
// cs_eventAllKnown, cs_eventKnown, cs_eventNewMin, cs_eventNewMax, cs_eventNeq, cs_eventConflict, cs_eventRun:
// constraints that the host writes itself, as callbacks on an array of variables.
// Consistency: the callback's.  Cost: O(1) and a call per event; cs_eventAllKnown looks for another free variable when
// the one that it watches is bound.  State: that watched variable, which is no worse after a restore.
// Wakes: when a variable is bound, moves a bound, loses an inner value, or when propagation fails; a run at any of
// these but the last, when the queue is empty. Deliberate: the site name of cs_eventNeq is "cs_eventNewMax", so that a
// profile lists inner removals with the bounds. Deliberate: the site comes first, also when there is no variable to
// wait for: the host's locator is asked once per registration. Deliberate: a conflict callback cannot change the
// outcome, which stands when it is called; it hears of the event whose propagation failed.
#include "core/post.h"
#include "koru_extras.h"

namespace koru::user_constraints {

// Constraints that are posted while a callback runs find the site of its constraint in solver::userSite.
class RunningCallback {
 public:
  explicit RunningCallback(Site *site) : previous_(solver::userSite) { solver::userSite = site; }
  RunningCallback(const RunningCallback &) = delete;
  RunningCallback &operator=(const RunningCallback &) = delete;
  ~RunningCallback() { solver::userSite = previous_; }

 private:
  Site *previous_;
};

// The caller's array is kept, not copied.
template <class Callback>
struct Registration {
  CSint **array;
  int size;
  Callback callback;
  void *extra;
  Site *site = nullptr;
};

struct AllKnown : Registration<CSeventAllKnownCallback> {
  CSint *watched;
};
struct Known : Registration<CSeventKnownCallback> {};
struct Forward : Registration<CSeventBoundCallback> {};
struct Conflict : Registration<CSeventConflictCallback> {};

// Of its array, a copy is kept.
struct HostRun : Deferred {
  Buffer<CSint *> array;
  int size;
  CSeventAllKnownCallback callback;
  void *extra;
  Site *site;
};

// ----- calls

static bool tellAllKnown(const AllKnown &c) {
  const RunningCallback running(c.site);
  return c.callback(c.array, c.size, c.extra);
}

static bool tellKnown(const Known &c, int value, int index) {
  const RunningCallback running(c.site);
  return c.callback(value, index, c.array, c.size, c.extra);
}

static void tellConflict(const Conflict &c, const Event &e, CSconflictInfo info) {
  const RunningCallback running(c.site);
  c.callback(e.var, e.index, &info, c.array, c.size, c.extra);
}

// ----- handlers

static CSint *firstFree(CSint **array, int size) {
  for (int i = 0; i < size; ++i)
    if (isFree(array[i])) return array[i];
  return nullptr;
}

static bool watchedMayBeBound(AllKnown &c, const Event &) {
  if (isFree(c.watched)) return true;
  CSint *another = firstFree(c.array, c.size);
  if (another == nullptr) return tellAllKnown(c);
  c.watched = another;
  return true;
}

constexpr auto kAllKnownTable = handlers<AllKnown>(
    {.minBound = on<watchedMayBeBound>, .maxBound = on<watchedMayBeBound>, .bound = on<watchedMayBeBound>});

static bool becameKnown(Known &c, const Event &e) { return tellKnown(c, e.var->min, e.index); }

constexpr auto kKnownTable =
    handlers<Known>({.minBound = on<becameKnown>, .maxBound = on<becameKnown>, .bound = on<becameKnown>});

// The old bound, as handlers last saw it, or the value removed.
static bool forward(Forward &c, const Event &e) {
  const RunningCallback running(c.site);
  return c.callback(e.var, e.index, e.oldValue, c.array, c.size, c.extra);
}

constexpr auto kNewMinTable = handlers<Forward>({.newMin = on<forward>, .minBound = on<forward>});
constexpr auto kNewMaxTable = handlers<Forward>({.newMax = on<forward>, .maxBound = on<forward>});
constexpr auto kRemovedTable = handlers<Forward>({.removed = on<forward>});

template <int kind>
static bool conflict(Conflict &c, const Event &e) {
  tellConflict(c, e, {kind, kind == CS_CONFLICT_KNOWN ? e.var->min : e.newValue});
  return true;
}

constexpr auto kConflictTable = handlers<Conflict>({.newMin = on<conflict<CS_CONFLICT_NEW_MIN>>,
                                                    .newMax = on<conflict<CS_CONFLICT_NEW_MAX>>,
                                                    .minBound = on<conflict<CS_CONFLICT_KNOWN>>,
                                                    .maxBound = on<conflict<CS_CONFLICT_KNOWN>>,
                                                    .bound = on<conflict<CS_CONFLICT_KNOWN>>,
                                                    .removed = on<conflict<CS_CONFLICT_REMOVED>>});

static bool callRun(HostRun &c) {
  const RunningCallback running(c.site);
  return c.callback(c.array.get(), c.size, c.extra);
}

constexpr auto kRunTable = deferred<callRun>(Rank::kHeavy);

// ----- registration

template <class Record>
static bool refused(const Record &r) {
  return r.callback == nullptr || (r.size > 0 && (r.array == nullptr || !allPresent(r.array, r.size)));
}

template <class Record>
static void attachToAll(Held<Record> &c, const Record &record) {
  for (int i = 0; i < record.size; ++i) c.attach(record.array[i], i);
}

static bool postAllKnown(const Poster &poster, AllKnown record) {
  if (refused(record)) return false;
  solver::queue.hostHears = true;
  Posting posting{poster};
  if (!posting) return false;
  record.site = posting.site();
  record.watched = firstFree(record.array, record.size);
  if (record.watched == nullptr) return tellAllKnown(record);
  auto c = posting.add(kAllKnownTable, record);
  attachToAll(c, record);
  return static_cast<bool>(posting);
}

static bool postKnown(const Poster &poster, Known record) {
  if (refused(record)) return false;
  solver::queue.hostHears = true;
  Posting posting{poster};
  if (record.size < 1) return posting.holdsOfNothing();
  record.site = posting.site();
  auto c = posting.add(kKnownTable, record);
  attachToAll(c, record);
  for (int i = 0; posting && i < record.size; ++i) {
    const CSint *v = record.array[i];
    if (isInstantiated(v) && !tellKnown(record, valueOf(v), i)) return false;
  }
  return static_cast<bool>(posting);
}

template <class Record>
static bool post(const Poster &poster, const TableOf<Record> &table, Record record, ConstraintFlags flags = kWoken) {
  if (refused(record)) return false;
  solver::queue.hostHears = true;
  Posting posting{poster};
  if (record.size < 1) return posting.holdsOfNothing();
  record.site = posting.site();
  auto c = posting.add(table, record, flags);
  attachToAll(c, record);
  return static_cast<bool>(posting);
}

static bool postRun(const Poster &poster, CSint **array, int size, CSeventAllKnownCallback run, void *extra) {
  if (run == nullptr) return false;
  solver::queue.hostHears = true;
  Posting posting{poster};
  if (!posting) return false;
  Buffer<CSint *> copy = copyVariables(array, size);
  if (!copy) return false;
  auto c = posting.add(kRunTable, HostRun{{}, std::move(copy), size, run, extra, posting.site()});
  for (int i = 0; i < size; ++i) c.attach(array[i], i);
  if (!posting) return false;
  return size > 0 ? runSoon(*c) : callRun(*c);  // without variables it dies here
}

}  // namespace koru::user_constraints

using koru::door;
using koru::leftOut;
using namespace koru::user_constraints;

bool cs_eventAllKnown(CSint **array, int size, CSeventAllKnownCallback allKnown, void *extra) {
  return leftOut("cs_eventAllKnown") ||
         door(postAllKnown("cs_eventAllKnown", {{array, size, allKnown, extra}, nullptr}));
}

bool cs_eventKnown(CSint **array, int size, CSeventKnownCallback known, void *extra) {
  return leftOut("cs_eventKnown") || door(postKnown("cs_eventKnown", {{array, size, known, extra}}));
}

void cs_eventNewMin(CSint **array, int size, CSeventBoundCallback newMin, void *extra) {
  if (!leftOut("cs_eventNewMin")) door(post("cs_eventNewMin", kNewMinTable, Forward{{array, size, newMin, extra}}));
}

void cs_eventNewMax(CSint **array, int size, CSeventBoundCallback newMax, void *extra) {
  if (!leftOut("cs_eventNewMax")) door(post("cs_eventNewMax", kNewMaxTable, Forward{{array, size, newMax, extra}}));
}

void cs_eventNeq(CSint **array, int size, CSeventBoundCallback neq, void *extra) {
  if (!leftOut("cs_eventNeq")) door(post("cs_eventNewMax", kRemovedTable, Forward{{array, size, neq, extra}}));
}

void cs_eventConflict(CSint **array, int size, CSeventConflictCallback conflict, void *extra) {
  door(post("cs_eventConflict", kConflictTable, Conflict{{array, size, conflict, extra}}, koru::kConflictListener));
}

bool cs_eventRun(CSint **array, int size, CSeventAllKnownCallback run, void *extra) {
  return leftOut("cs_eventRun") || postRun("cs_eventRun", array, size, run, extra);
}
