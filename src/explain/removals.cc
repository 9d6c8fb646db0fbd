// SPDX-License-Identifier: MIT
// cs_recordRemovals, cs_whyRemoved, cs_writeRemovals, cs_freeRemovals: who has taken a value from a domain.
//
// State: a journal of the solver's (explain/journal), while it is on.
#include <new>

#include "core/solver.h"
#include "explain/journal.h"
#include "explain/place_text.h"
#include "koru_extras.h"

namespace koru::explain {

namespace {

// As the host gets it, with the memory that it points to.
struct Removals : CSremovals {
  Growing<CSremoval> list;
  Growing<char *> texts;  // owned

  Removals() : CSremovals{0, nullptr} {}  // cppcheck-suppress uninitDerivedMemberVar
  Removals(const Removals &) = delete;
  Removals &operator=(const Removals &) = delete;
  ~Removals() {
    for (int i = 0; i < texts.count(); ++i) deallocate(texts[i]);
  }

  // Each is false when memory is exhausted (reported).
  bool add(CSint *v, const CSvalueSelection &change, const Journal::Stretch &by);
  bool addChain(const Journal &journal, const CSint *v, int value);
};

bool Removals::add(CSint *v, const CSvalueSelection &change, const Journal::Stretch &by) {
  const Site *site = by.site;
  char *text = copyText(site != nullptr ? site->text() : "");
  if (text == nullptr) return false;
  if (!texts.add(text)) {
    deallocate(text);
    return false;
  }
  const PlaceText where(text);
  const char *function = site != nullptr ? site->name() : "";
  if (!list.add({v, change, by.bySearch, function, where.file, where.line, where.caller})) return false;
  steps = &list[0];
  size = list.count();
  return true;
}

CSvalueSelection changeOf(const Found &found, TrailKind kind) {
  if (kind == TrailKind::kRemoved) return {CS_METHOD_NEQ, found.bound};
  if (found.fixed) return {CS_METHOD_EQ, found.bound};
  return {kind == TrailKind::kMin ? CS_METHOD_GE : CS_METHOD_LE, found.bound};
}

CSvalueSelection changeOf(int code, int value) {
  switch (code) {
    case kNewMin:
      return {CS_METHOD_GE, value};
    case kNewMax:
      return {CS_METHOD_LE, value};
    case kRemoved:
      return {CS_METHOD_NEQ, value};
    default:
      return {CS_METHOD_EQ, value};
  }
}

bool Removals::addChain(const Journal &journal, const CSint *v, int value) {
  Found found{};
  if (contains(v, value) || !journal.find(v, value, found)) return true;
  const TrailRecord &record = journal[found.change];
  CSvalueSelection change = changeOf(found, record.kind());
  for (int i = found.change;;) {
    const Journal::Stretch &by = journal.stretchOf(i);
    if (!add(journal[i].variable(), change, by)) return false;
    i = journal.findEvent(by);
    if (i == Journal::kNone) return true;
    change = changeOf(by.code, by.value);
  }
}

const char *methodText(int method) {
  switch (method) {
    case CS_METHOD_NEQ:
      return "!=";
    case CS_METHOD_LE:
      return "<=";
    case CS_METHOD_GE:
      return ">=";
    default:
      return "=";
  }
}

void writeVariable(std::FILE *f, const CSint *v) {
  const int number = solver::variables.indexOf(v);
  if (v->name != nullptr) {
    std::fputs(v->name, f);
  } else if (number >= 0) {
    std::fprintf(f, "variable %d", number);
  } else {
    std::fputs("a variable", f);
  }
}

void writeStep(std::FILE *f, const CSremoval &step) {
  writeVariable(f, step.variable);
  std::fprintf(f, " %s %d  ", methodText(step.change.method), step.change.value);
  if (step.function[0] == '\0') {
    std::fputs(step.bySearch ? "a search\n" : "not known by whom\n", f);
    return;
  }
  std::fprintf(f, "%s  ", step.function);
  writePlace(f, step.file, step.line);
  writeSource(f, step.file, step.line);
  std::fputc('\n', f);
}

bool startJournal() {
  if (journal() != nullptr) return true;
  void *memory = allocate(sizeof(Journal));
  if (memory == nullptr) return false;
  new (memory) Journal;
  return true;
}

void endJournal() {
  Journal *running = journal();
  if (running == nullptr) return;
  running->~Journal();
  deallocate(running);
}

}  // namespace
}  // namespace koru::explain

using namespace koru;
using namespace koru::explain;

bool cs_recordRemovals(bool on) {
  if (!solver::initialised || !hostHasCalled() || solver::hostAsked > 0) return false;
  if (on) return startJournal();
  endJournal();
  return true;
}

const CSremovals *cs_whyRemoved(CSint *v, int value) {
  Journal *running = journal();
  if (v == nullptr || running == nullptr) return nullptr;
  running->takeOver();
  if (running->broken()) return nullptr;
  void *memory = allocate(sizeof(Removals));
  if (memory == nullptr) return nullptr;
  auto *removals = new (memory) Removals;
  if (removals->addChain(*running, v, value)) return removals;
  cs_freeRemovals(removals);
  return nullptr;
}

void cs_writeRemovals(const CSremovals *removals, FILE *f) {
  if (removals == nullptr || f == nullptr) return;
  for (int i = 0; i < removals->size; ++i) writeStep(f, removals->steps[i]);
}

void cs_freeRemovals(const CSremovals *removals) {
  if (removals == nullptr) return;
  auto *own = static_cast<Removals *>(const_cast<CSremovals *>(removals));
  own->~Removals();
  deallocate(own);
}
