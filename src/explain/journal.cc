// SPDX-License-Identifier: MIT
#include "explain/journal.h"

#include "core/agenda.h"
#include "core/lifetime.h"
#include "core/queue.h"
#include "core/refusal.h"
#include "core/site.h"

namespace koru::explain {

namespace {

void ignore(void *, bool, CSint *, int, Site *) {}

Journal *of(void *self) { return static_cast<Journal *>(self); }

void endJournal(void *self) {
  of(self)->~Journal();
  deallocate(self);
}

bool isChange(const TrailRecord &record) {
  const TrailKind kind = record.kind();
  return kind == TrailKind::kMin || kind == TrailKind::kMax || kind == TrailKind::kRemoved;
}

}  // namespace

Journal *journal() {
  const Observer *observer = solver::ports.journal;
  return observer != nullptr ? of(observer->argument) : nullptr;
}

// The solver ends the journal when it ends itself.
Journal::Journal() : observer_{ignore, endJournal, this, true, nullptr, &kWatch} {
  solver::ports.add(&observer_);
  solver::ports.journal = &observer_;
  solver::trail.setRead(true);
  solver::agenda.setWatched(true);
}

Journal::~Journal() {
  solver::ports.remove(&observer_);
  solver::ports.journal = nullptr;
  solver::trail.setRead(false);
  solver::agenda.setWatched(false);
  cutTo(0);
  setPoster(nullptr);
}

// ----- what is written

void Journal::setPoster(Site *site) {
  Site::release(poster_);
  poster_ = site;
}

void Journal::cutTo(int stretch) {
  for (int i = stretches_.count() - 1; i >= stretch; --i) Site::release(stretches_[i].site);
  changes_.cutTo(stretch < stretches_.count() ? stretches_[stretch].firstChange : changes_.count());
  stretches_.cutTo(std::min(stretch, stretches_.count()));
}

// The note of a journal that has ended is none of this one's stretches.
void Journal::undone(CSint *, int stretch) {
  Journal *self = journal();
  if (self == nullptr || stretch >= self->stretches_.count()) return;
  if (self->stretches_[stretch].note == solver::trail.count()) self->cutTo(stretch);
}

void Journal::addChanges(int from) {
  solver::trail.forEachFrom(from, [this](const TrailRecord &record) {
    if (!broken_ && isChange(record)) broken_ = !changes_.add(record);
  });
}

// The trail from what was seen to its end becomes a stretch; what has no end that is known, as a note cannot be had,
// does not become one.
bool Journal::add(const Waking &waking, bool bySearch) {
  Trail &trail = solver::trail;
  const int first = changes_.count();
  addChanges(trail.seen());
  if (broken_) return false;
  const int note = trail.count();
  if (!stretches_.add({first, note, waking.site, waking.variable, waking.code, waking.value, bySearch})) return false;
  if (waking.site != nullptr) ++waking.site->references;
  return trail.noteCallback(TrailKind::kCallback, nullptr, stretches_.count() - 1, undone);
}

void Journal::takeOver() {
  Trail &trail = solver::trail;
  if (broken_ || trail.seen() == trail.count()) return;
  const bool handled = frames_.count() > 0;
  const bool bySearch = !handled && solver::busy > 0;
  const Waking host{nullptr, 0, 0, bySearch ? nullptr : poster_};
  if (!add(handled ? frames_[frames_.count() - 1] : host, bySearch)) broken_ = true;
  trail.setSeen(trail.count());
}

void Journal::begins(void *self, const Waking &waking) {
  of(self)->takeOver();
  if (!of(self)->frames_.add(waking)) of(self)->broken_ = true;
}

void Journal::ends(void *self) {
  Journal &j = *of(self);
  j.takeOver();
  if (j.frames_.count() > 0) j.frames_.cutTo(j.frames_.count() - 1);
}

// Deliberate: without memory for the site the posting goes on, and its changes are nobody's.
void Journal::posts(void *self, const Poster &poster) {
  of(self)->takeOver();
  if (!hostHasCalled()) return;
  Site *site = Site::create(poster, solver::ports.locatorText());
  if (site != nullptr) site->references = 1;
  of(self)->setPoster(site);
}

void Journal::marks(void *self) { of(self)->takeOver(); }

// ----- what is read

const Journal::Stretch &Journal::stretchOf(int change) const {
  int low = 0;
  int high = stretches_.count();
  while (high - low > 1) {
    const int middle = low + (high - low) / 2;
    (stretches_[middle].firstChange <= change ? low : high) = middle;
  }
  return stretches_[low];
}

// From the newest change to the oldest, with the bounds as they were after each. A binding to a value inside is two
// changes, one after the other.
bool Journal::find(const CSint *v, int value, Found &found) const {
  found.change = kNone;
  int min = v->min;
  int max = v->max;
  int fixedAt = kNone;
  for (int i = changes_.count() - 1; i >= 0; --i) {
    const TrailRecord &record = changes_[i];
    if (record.variable() != v) continue;
    if (min == max) fixedAt = i;
    const bool fixed = min == max || (fixedAt == i + 1 && stretchOf(i).note == stretchOf(i + 1).note);
    if (record.kind() == TrailKind::kRemoved) {
      if (record.value == value) found = {i, value, false};
    } else if (record.kind() == TrailKind::kMin) {
      if (record.value <= value && value < min) found = {i, min, fixed};
      min = record.value;
    } else {
      if (max < value && value <= record.value) found = {i, max, fixed};
      max = record.value;
    }
  }
  return found.change != kNone;
}

static bool tellsOf(const TrailRecord &record, int code, int value) {
  const TrailKind kind = record.kind();
  switch (code) {
    case kNewMin:
    case kMinBound:
      return kind == TrailKind::kMin && record.value < value;
    case kNewMax:
    case kMaxBound:
      return kind == TrailKind::kMax && record.value > value;
    case kBound:
      return kind != TrailKind::kRemoved;
    default:
      return kind == TrailKind::kRemoved && record.value == value;
  }
}

int Journal::findEvent(const Stretch &stretch) const {
  if (stretch.variable == nullptr) return kNone;
  int i = stretch.firstChange - 1;
  // GCOVR_EXCL_BR_START: one is found
  while (i >= 0 && (changes_[i].variable() != stretch.variable || !tellsOf(changes_[i], stretch.code, stretch.value)))
    --i;
  // GCOVR_EXCL_BR_STOP
  return i;
}

}  // namespace koru::explain
