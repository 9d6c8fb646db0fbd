// SPDX-License-Identifier: MIT
// A nurse roster: who works which shift, so that every day is staffed, everybody rests in time, and as few wishes as
// possible are broken; the best that can be found in the time there is.
//
// The value of cell (nurse, day) is a shift. An automaton reads each nurse's row: no shift may begin before the last
// one has ended and a night's rest, and nobody works more than five days in a row. Occurrence constraints staff each
// day and share out the free days. Each wish is a 0/1 variable that says whether it is broken, and their weighted sum
// is minimised: variables that fail often come first, values are drawn at random until there is a roster and follow the
// best one from then on, runs end and begin anew, and neighbourhoods of the best roster are looked into between them.
// An interrupt (ctrl-C) ends the search; the best roster stays.
#include "arguments.h"
#include "made_up.h"
#include "progress.h"

#include <koru_extras.h>
#include <signal.h>

static char program[] = "roster";

static const char usage[] =
    "usage: roster [OPTION ...]\n"
    "\n"
    "Makes up a ward and its nurses' wishes, and searches for the roster that breaks the fewest of them. Interrupt it\n"
    "(ctrl-C) to have the best one so far.\n"
    "\n"
    "  --nurses N    how many nurses (5 to 60, default 14)\n"
    "  --days N      how many days (2 to 56, default 28)\n"
    "  --wishes N    how many wishes (0 to 500, default 200)\n"
    "  --seed N      for the wishes (default 1)\n"
    "  --seconds N   end the search after N seconds (1 to 3600, default 5)\n"
    "  --quiet       print only the summary\n"
    "  --help        print this text\n"
    "\n"
    "Exit status: 0 when there is a roster, 1 when there is none or none was found in time, 2 on bad arguments.\n";

enum { FREE, EARLY, LATE, NIGHT, SHIFTS };
enum { MAX_NURSES = 60, MAX_DAYS = 56, MAX_CELLS = MAX_NURSES * MAX_DAYS, MAX_WISHES = 500 };
enum { MOST_IN_A_ROW = 5, STATES = SHIFTS * (MOST_IN_A_ROW + 1) };

typedef struct {
  int nurses, days, wishes, seed, seconds;
  bool quiet;
} Options;

typedef struct {
  int cell, shift, weight;
} Wish;

// The arrays stay with the constraints until cs_end.
typedef struct {
  const Options *options;
  CSint *cells[MAX_CELLS];    // nurse by nurse
  CSint *columns[MAX_CELLS];  // day by day
  CSint *broken[MAX_WISHES];
  Wish wishes[MAX_WISHES];
  int weights[MAX_WISHES];
  CSint *cost;
} Roster;

static CSsearch *running;  // for the signal handler

// --- The made-up ward ---

static void makeWishes(Roster *roster) {
  unsigned state = (unsigned)roster->options->seed * 7919u;
  for (int i = 0; i < roster->options->wishes; i++) {
    int cell = randomBelow(&state, roster->options->nurses * roster->options->days);
    int shift = randomBelow(&state, SHIFTS);
    roster->wishes[i] = (Wish){cell, shift, 1 + randomBelow(&state, 3)};
  }
}

// Of each shift a day so many are needed: two thirds of the nurses work.
static int demand(int nurses, int shift) {
  int working = nurses * 2 / 3;
  if (shift == NIGHT) return working / 4;
  return shift == LATE ? working / 3 : working - working / 4 - working / 3;
}

// --- Model ---

// State: the last shift, and how many days in a row were worked. After a late shift or a night nobody starts earlier.
static bool postRest(Roster *roster) {
  static int table[STATES * SHIFTS], finals[STATES];
  for (int state = 0; state < STATES; state++) {
    int last = state % SHIFTS, inARow = state / SHIFTS;
    finals[state] = state;
    for (int shift = FREE; shift < SHIFTS; shift++) {
      bool rested = shift == FREE || (shift >= last && inARow < MOST_IN_A_ROW);
      table[state * SHIFTS + shift] = !rested ? -1 : shift == FREE ? 0 : (inARow + 1) * SHIFTS + shift;
    }
  }
  for (int nurse = 0; nurse < roster->options->nurses; nurse++) {
    CSint **row = &roster->cells[nurse * roster->options->days];
    if (!cs_Regular(row, roster->options->days, table, STATES, SHIFTS, 0, finals, STATES)) return false;
  }
  return true;
}

static bool postDemand(Roster *roster) {
  int nurses = roster->options->nurses;
  for (int day = 0; day < roster->options->days; day++) {
    for (int shift = EARLY; shift < SHIFTS; shift++) {
      if (!cs_OccurConstraints(CSINT(demand(nurses, shift)), shift, &roster->columns[day * nurses], nurses))
        return false;
    }
  }
  return true;
}

// Everybody has about as many free days as the others.
static bool postFreeDays(Roster *roster) {
  int days = roster->options->days, nurses = roster->options->nurses;
  int working = demand(nurses, EARLY) + demand(nurses, LATE) + demand(nurses, NIGHT);
  int mean = days * (nurses - working) / nurses;
  for (int nurse = 0; nurse < nurses; nurse++) {
    CSint *freeDays = cs_OccurDomain(FREE, &roster->cells[nurse * days], days);
    if (!cs_InInterval(freeDays, mean - 1, mean + 2)) return false;
  }
  return true;
}

static bool postWishes(Roster *roster) {
  makeWishes(roster);
  for (int i = 0; i < roster->options->wishes; i++) {
    const Wish *wish = &roster->wishes[i];
    roster->broken[i] = cs_ReifEQ(roster->cells[wish->cell], wish->shift);
    roster->weights[i] = wish->weight;
    if (roster->broken[i] == NULL) return false;
  }
  roster->cost = cs_ScalProd(roster->broken, roster->weights, roster->options->wishes);
  return roster->cost != NULL;
}

static bool postModel(Roster *roster) {
  int nurses = roster->options->nurses, days = roster->options->days;
  for (int i = 0; i < nurses * days; i++) {
    CSint *cell = cs_createCSint(FREE, SHIFTS - 1);
    roster->cells[i] = roster->columns[i % days * nurses + i / days] = cell;
    if (cell == NULL) return false;
  }
  return postRest(roster) && postDemand(roster) && postFreeDays(roster) && postWishes(roster);
}

// --- Search ---

static void interrupted(int signalNumber) {
  (void)signalNumber;
  cs_stopSearch(running);
}

static void tellProgress(CSsearch *search, const CSsearchStats *stats, void *extra) {
  (void)search, (void)extra;
  if (stats->solutions == 0)
    showProgress(false, "no roster yet | %lld fails | %.1f s", stats->fails, stats->seconds);
  else
    showProgress(false, "wishes broken: %d, at least %d | %lld rosters, %lld fails | %.1f s", stats->objective,
                 stats->bound, stats->solutions, stats->fails, stats->seconds);
}

static CSsearch *search(Roster *roster) {
  const Options *options = roster->options;
  CSsearchOptions how = {.size = sizeof how,
                         .order = CS_ORDER_DOM_WDEG,
                         .value = CS_VALUE_RANDOM,
                         .guided = true,
                         .minimize = roster->cost,
                         .restarts = CS_RESTARTS_LUBY,
                         .restartFails = 50,
                         .neighbours = CS_NEIGHBOURS_RANDOM,
                         .milliseconds = 1000LL * options->seconds,
                         .progressMilliseconds = 200};
  if (!options->quiet) how.progress = tellProgress;
  running = cs_createSearch(roster->cells, options->nurses * options->days);
  if (!cs_setSearchOptions(running, &how)) return NULL;
  signal(SIGINT, interrupted);
  while (cs_nextSolution(running) == CS_STATUS_SOLUTION) continue;
  signal(SIGINT, SIG_DFL);
  if (!options->quiet) clearProgress();
  return running;
}

// --- Output ---

static void printRoster(const Roster *roster, const int *shifts) {
  int days = roster->options->days;
  for (int nurse = 0; nurse < roster->options->nurses; nurse++) {
    printf("nurse %2d  ", nurse + 1);
    for (int day = 0; day < days; day++)
      printf("%s%c", day % 7 == 0 && day > 0 ? " " : "", ".ELN"[shifts[nurse * days + day]]);
    putchar('\n');
  }
}

static int weightBroken(const Roster *roster, const int *shifts) {
  int weight = 0;
  for (int i = 0; i < roster->options->wishes; i++)
    if (shifts[roster->wishes[i].cell] == roster->wishes[i].shift) weight += roster->wishes[i].weight;
  return weight;
}

static void printResult(const Roster *roster, const CSsearch *found) {
  CSsearchStats stats;
  cs_getSearchStats(found, &stats, sizeof stats);
  const int *shifts = cs_getBestSolution(found);
  const char *status = cs_getStatusName(cs_getSearchStatus(found));
  if (shifts == NULL) {
    printf("no roster: %s", status);
  } else {
    if (!roster->options->quiet) printRoster(roster, shifts);
    printf("broken wishes weigh %d (%s)", weightBroken(roster, shifts), status);
  }
  printf(" | %lld fails, %lld restarts, %lld neighbourhoods | %.3f s\n", stats.fails, stats.restarts,
         stats.neighbourhoods, stats.seconds);
}

// --- The run ---

static int run(const Options *options) {
  static Roster roster;
  roster.options = options;
  startSolver(program);
  int status = EXIT_OTHERWISE;
  if (!postModel(&roster)) {
    puts("no roster: the demand cannot be met");
  } else {
    CSsearch *done = search(&roster);
    printResult(&roster, done);
    if (cs_getBestSolution(done) != NULL) status = EXIT_AS_HOPED;
  }
  cs_end();
  return status;
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {.nurses = 14, .days = 28, .wishes = 200, .seed = 1, .seconds = 5};
  const Option known[] = {
      {.name = "--nurses", .number = &options.nurses, .min = 5, .max = MAX_NURSES},
      {.name = "--days", .number = &options.days, .min = 2, .max = MAX_DAYS},
      {.name = "--wishes", .number = &options.wishes, .min = 0, .max = MAX_WISHES},
      {.name = "--seed", .number = &options.seed, .min = 0, .max = 1000000},
      {.name = "--seconds", .number = &options.seconds, .min = 1, .max = 3600},
      {.name = "--quiet", .flag = &options.quiet},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  return finish(program, run(&options));
}
