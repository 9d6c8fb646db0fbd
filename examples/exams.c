// SPDX-License-Identifier: MIT
// An exam timetable: no student sits two exams at once, no slot has more students than seats, and as few students as
// possible have exams in slots that follow each other.
//
// The value of an exam is its slot. The exams of a student are all different, domain consistent: with hardly more slots
// than exams a weaker constraint would find out late. Slots are bins, exams items as large as they have students. For
// each pair of exams with students in common, a truth value says whether they stand side by side; the sum of the
// students is minimised.
#include "arguments.h"
#include "made_up.h"
#include "progress.h"

#include <koru_extras.h>

static char program[] = "exams";

static const char usage[] =
    "usage: exams [OPTION ...]\n"
    "\n"
    "Makes up students who each choose some exams, and searches for the timetable in which the fewest of them have "
    "two\n"
    "exams in slots that follow each other.\n"
    "\n"
    "  --exams N     how many exams (3 to 60, default 20)\n"
    "  --slots N     how many slots (2 to 60, default 12)\n"
    "  --students N  how many students (1 to 1000, default 60)\n"
    "  --choices N   exams for each student (2 to 8, default 3)\n"
    "  --seats N     seats in each slot (1 to 10000, default 30)\n"
    "  --seed N      for the choices (default 1)\n"
    "  --seconds N   end the search after N seconds (1 to 3600, default 5)\n"
    "  --quiet       print only the summary\n"
    "  --help        print this text\n"
    "\n"
    "Exit status: 0 when there is a timetable, 1 when there is none or none was found in time, 2 on bad arguments.\n";

enum { MAX_EXAMS = 60, MAX_CHOICES = 8, MAX_PAIRS = MAX_EXAMS * MAX_EXAMS / 2 };

typedef struct {
  int exams, slots, students, choices, seats, seed, seconds;
  bool quiet;
} Options;

typedef struct {
  const Options *options;
  int sizes[MAX_EXAMS];              // students
  int common[MAX_EXAMS][MAX_EXAMS];  // students who sit both
  CSint *slots[MAX_EXAMS];
  CSint *cost;
} Timetable;

// --- The made-up students ---

// Different exams, neighbours in the list more often than others.
static void choose(unsigned *state, const Options *options, int *chosen) {
  int around = randomBelow(state, options->exams);
  for (int i = 0; i < options->choices;) {
    int exam = (around + randomBelow(state, options->exams) * randomBelow(state, options->exams) / options->exams) %
               options->exams;
    bool isNew = true;
    for (int j = 0; j < i; j++) isNew = isNew && chosen[j] != exam;
    if (isNew) chosen[i++] = exam;
  }
}

// --- Model ---

static bool postStudents(Timetable *t) {
  const Options *options = t->options;
  unsigned state = (unsigned)options->seed * 7919u;
  for (int student = 0; student < options->students; student++) {
    int chosen[MAX_CHOICES];
    CSint *slots[MAX_CHOICES];
    choose(&state, options, chosen);
    for (int i = 0; i < options->choices; i++) {
      slots[i] = t->slots[chosen[i]];
      t->sizes[chosen[i]]++;
      for (int j = 0; j < i; j++) {
        t->common[chosen[i]][chosen[j]]++;
        t->common[chosen[j]][chosen[i]]++;
      }
    }
    if (!cs_AllNeqDomain(slots, options->choices)) return false;
  }
  return true;
}

static bool postSeats(Timetable *t) {
  CSint *loads[MAX_EXAMS];
  for (int slot = 0; slot < t->options->slots; slot++) loads[slot] = cs_createCSint(0, t->options->seats);
  return cs_BinPacking(t->slots, t->sizes, t->options->exams, loads, t->options->slots);
}

// cost = the sum, over all pairs, of the students who sit both when they stand side by side.
static bool postCost(Timetable *t) {
  static CSint *terms[MAX_PAIRS + 1];
  static long long weights[MAX_PAIRS + 1];
  int pairs = 0, most = 0;
  for (int a = 0; a < t->options->exams; a++) {
    for (int b = 0; b < a; b++) {
      if (t->common[a][b] == 0) continue;
      terms[pairs] = cs_ReifEQ(cs_Abs(cs_Sub(t->slots[a], t->slots[b])), 1);
      weights[pairs++] = t->common[a][b];
      most += t->common[a][b];
    }
  }
  terms[pairs] = t->cost = cs_createCSint(0, most);
  weights[pairs] = -1;
  return cs_Linear(terms, weights, pairs + 1, CS_METHOD_EQ, 0);
}

static bool postModel(Timetable *t) {
  for (int exam = 0; exam < t->options->exams; exam++) t->slots[exam] = cs_createCSint(0, t->options->slots - 1);
  bool posted = cs_beginPosting() && postStudents(t) && postSeats(t) && postCost(t);
  return cs_endPosting() && posted;
}

// --- Search ---

static void tellProgress(CSsearch *search, const CSsearchStats *stats, void *extra) {
  (void)search, (void)extra;
  if (stats->solutions > 0)
    showProgress(false, "exams in a row: %d, at least %d | %lld fails | %.1f s", stats->objective, stats->bound,
                 stats->fails, stats->seconds);
}

static CSsearch *search(Timetable *t) {
  CSsearchOptions how = {.size = sizeof how,
                         .order = CS_ORDER_DOM_WDEG,
                         .value = CS_VALUE_RANDOM,
                         .guided = true,
                         .minimize = t->cost,
                         .restarts = CS_RESTARTS_LUBY,
                         .neighbours = CS_NEIGHBOURS_RANDOM,
                         .milliseconds = 1000LL * t->options->seconds,
                         .progressMilliseconds = 200};
  if (!t->options->quiet) how.progress = tellProgress;
  CSsearch *running = cs_createSearch(t->slots, t->options->exams);
  if (!cs_setSearchOptions(running, &how)) return NULL;
  while (cs_nextSolution(running) == CS_STATUS_SOLUTION) continue;
  if (!t->options->quiet) clearProgress();
  return running;
}

// --- Output ---

static void printTimetable(const Timetable *t, const int *slots) {
  for (int slot = 0; slot < t->options->slots; slot++) {
    int students = 0;
    printf("slot %2d:", slot + 1);
    for (int exam = 0; exam < t->options->exams; exam++) {
      if (slots[exam] != slot) continue;
      printf(" %d", exam + 1);
      students += t->sizes[exam];
    }
    printf(" (%d students)\n", students);
  }
}

static void printResult(const Timetable *t, const CSsearch *found) {
  CSsearchStats stats;
  cs_getSearchStats(found, &stats, sizeof stats);
  const int *slots = cs_getBestSolution(found);
  const char *status = cs_getStatusName(cs_getSearchStatus(found));
  if (slots == NULL) {
    printf("no timetable: %s", status);
  } else {
    if (!t->options->quiet) printTimetable(t, slots);
    printf("exams in a row: %d (%s)", stats.objective, status);
  }
  printf(" | %lld fails, %lld restarts, %lld neighbourhoods | %.3f s\n", stats.fails, stats.restarts,
         stats.neighbourhoods, stats.seconds);
}

// --- The run ---

static int run(const Options *options) {
  static Timetable timetable;
  timetable = (Timetable){.options = options};
  startSolver(program);
  int status = EXIT_OTHERWISE;
  if (!postModel(&timetable)) {
    puts("no timetable: there are too few slots or seats");
  } else {
    CSsearch *done = search(&timetable);
    printResult(&timetable, done);
    if (cs_getBestSolution(done) != NULL) status = EXIT_AS_HOPED;
  }
  cs_end();
  return status;
}

int main(int argc, char **argv) {
  (void)argc;
  Options options = {.exams = 20, .slots = 12, .students = 60, .choices = 3, .seats = 30, .seed = 1, .seconds = 5};
  const Option known[] = {
      {.name = "--exams", .number = &options.exams, .min = 3, .max = MAX_EXAMS},
      {.name = "--slots", .number = &options.slots, .min = 2, .max = MAX_EXAMS},
      {.name = "--students", .number = &options.students, .min = 1, .max = 1000},
      {.name = "--choices", .number = &options.choices, .min = 2, .max = MAX_CHOICES},
      {.name = "--seats", .number = &options.seats, .min = 1, .max = 10000},
      {.name = "--seed", .number = &options.seed, .min = 0, .max = 1000000},
      {.name = "--seconds", .number = &options.seconds, .min = 1, .max = 3600},
      {.name = "--quiet", .flag = &options.quiet},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  if (options.choices > options.exams)
    complain(program, "%d exams are too few to choose %d", options.exams, options.choices);
  return finish(program, run(&options));
}
