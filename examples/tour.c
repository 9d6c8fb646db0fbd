// SPDX-License-Identifier: MIT
// Round trips: the shortest one through towns on a map, or a knight's over a chess board.
//
// next[i] is the stop after stop i, and cs_Circuit makes these one round. What a step costs is an element of a row of
// distances; the sum of the steps is minimised by a search object: towns whose steps fail often come first, the nearest
// town is tried first, and neighbourhoods of the best round trip are looked into between complete runs. A knight's
// round is a search for any solution, the squares with the fewest ways on first.
#include "arguments.h"
#include "made_up.h"
#include "progress.h"

#include <koru_extras.h>

static char program[] = "tour";

static const char usage[] =
    "usage: tour [OPTION ...]\n"
    "\n"
    "Searches for the shortest round trip through towns drawn at random, or for a knight's round over a board.\n"
    "\n"
    "  --towns N     how many towns (3 to 60, default 15)\n"
    "  --seed N      for the map (default 1)\n"
    "  --seconds N   end the search after N seconds (1 to 3600, default 5)\n"
    "  --knight N    a knight's round over a board of N by N squares (2 to 12) instead\n"
    "  --svg FILE    write a picture of the round trip\n"
    "  --quiet       print only the summary\n"
    "  --help        print this text\n"
    "\n"
    "Exit status: 0 when there is a round trip, 1 when there is none or none was found in time, 2 on bad arguments.\n";

enum { MAX_STOPS = 144, MAP = 1000 };

typedef struct {
  int towns, seed, seconds, knight;
  const char *svg;
  bool quiet;
} Options;

typedef struct {
  const Options *options;
  int stops;
  int x[MAX_STOPS], y[MAX_STOPS];
  int distance[MAX_STOPS][MAX_STOPS];
  CSint *next[MAX_STOPS];
  CSint *length;  // null for a knight
} Tour;

// --- The map ---

// The distance of two towns, cut off.
static int distanceOf(const Tour *tour, int i, int j) {
  int dx = tour->x[i] - tour->x[j], dy = tour->y[i] - tour->y[j], distance = 0;
  while ((distance + 1) * (distance + 1) <= dx * dx + dy * dy) distance++;
  return distance;
}

static void drawTowns(Tour *tour) {
  unsigned state = (unsigned)tour->options->seed * 7919u;
  tour->stops = tour->options->towns;
  for (int i = 0; i < tour->stops; i++) {
    tour->x[i] = randomBelow(&state, MAP);
    tour->y[i] = randomBelow(&state, MAP);
  }
  for (int i = 0; i < tour->stops; i++) {
    for (int j = 0; j < tour->stops; j++) tour->distance[i][j] = distanceOf(tour, i, j);
  }
}

static void drawBoard(Tour *tour) {
  int side = tour->options->knight;
  tour->stops = side * side;
  for (int i = 0; i < tour->stops; i++) {
    tour->x[i] = (2 * (i % side) + 1) * MAP / (2 * side);
    tour->y[i] = (2 * (i / side) + 1) * MAP / (2 * side);
  }
}

// --- Model ---

static bool postTowns(Tour *tour) {
  int n = tour->stops;
  CSint *terms[MAX_STOPS + 1];
  long long coefficients[MAX_STOPS + 1];
  for (int i = 0; i < n; i++) tour->next[i] = cs_createCSint(0, n - 1);
  if (!cs_Circuit(tour->next, n)) return false;
  for (int i = 0; i < n; i++) {
    terms[i] = cs_createCSint(0, 2 * MAP);
    coefficients[i] = 1;
    if (!cs_ElementOf(tour->next[i], tour->distance[i], n, terms[i])) return false;
  }
  terms[n] = tour->length = cs_createCSint(0, 2 * MAP * n);
  coefficients[n] = -1;
  return cs_Linear(terms, coefficients, n + 1, CS_METHOD_EQ, 0);
}

static bool isKnightsMove(int side, int from, int to) {
  return abs(from % side - to % side) * abs(from / side - to / side) == 2;
}

static bool postBoard(Tour *tour) {
  int side = tour->options->knight;
  for (int from = 0; from < tour->stops; from++) {
    int moves[8], count = 0;
    for (int to = 0; to < tour->stops; to++)
      if (isKnightsMove(side, from, to)) moves[count++] = to;
    tour->next[from] = count > 0 ? cs_createCSintFromDomain(moves, count) : NULL;
  }
  return cs_Circuit(tour->next, tour->stops);
}

// --- Search ---

static bool nearestTown(CSvalueSelection *decision, int index, CSint **vars, int n, void *extra) {
  (void)n;
  const Tour *tour = extra;
  int best = cs_getMin(vars[index]);
  for (int town = best; town < cs_getMax(vars[index]);) {
    town = cs_getNextValue(vars[index], town);
    if (tour->distance[index][town] < tour->distance[index][best]) best = town;
  }
  *decision = (CSvalueSelection){CS_METHOD_EQ, best};
  return true;
}

static void tellProgress(CSsearch *search, const CSsearchStats *stats, void *extra) {
  (void)search, (void)extra;
  if (stats->solutions > 0)
    showProgress(false, "%d long, at least %d | %lld fails | %.1f s", stats->objective, stats->bound, stats->fails,
                 stats->seconds);
}

static CSsearch *search(Tour *tour) {
  const Options *options = tour->options;
  CSsearchOptions how = {.size = sizeof how,
                         .order = CS_ORDER_DOM_WDEG,
                         .milliseconds = 1000LL * options->seconds,
                         .progressMilliseconds = 200,
                         .extra = tour};
  if (tour->length != NULL) {
    how.value = CS_VALUE_HOST;
    how.chooseValue = nearestTown;
    how.minimize = tour->length;
    how.restarts = CS_RESTARTS_LUBY;
    how.neighbours = CS_NEIGHBOURS_RANDOM;
  } else {
    how.order = CS_ORDER_SMALLEST;
    how.solutions = 1;
  }
  if (!options->quiet) how.progress = tellProgress;
  CSsearch *running = cs_createSearch(tour->next, tour->stops);
  if (!cs_setSearchOptions(running, &how)) return NULL;
  while (cs_nextSolution(running) == CS_STATUS_SOLUTION) continue;
  if (!options->quiet) clearProgress();
  return running;
}

// --- Output ---

// The number of each stop along the round, from 1.
static void number(const Tour *tour, const int *next, int *numbers) {
  for (int i = 0, stop = 0; i < tour->stops; i++, stop = next[stop]) numbers[stop] = i + 1;
}

static void printBoard(const Tour *tour, const int *next) {
  int side = tour->options->knight, numbers[MAX_STOPS];
  number(tour, next, numbers);
  for (int i = 0; i < tour->stops; i++) printf("%4d%s", numbers[i], (i + 1) % side == 0 ? "\n" : "");
}

static void printTowns(const Tour *tour, const int *next) {
  printf("towns:");
  for (int i = 0, town = 0; i < tour->stops; i++, town = next[town]) printf(" %d", town + 1);
  putchar('\n');
}

static void writePicture(const Tour *tour, const int *next) {
  FILE *file = fopen(tour->options->svg, "w");
  if (file == NULL) {
    fprintf(stderr, "%s: %s: %s\n", program, tour->options->svg, strerror(errno));
    exit(EXIT_TROUBLE);
  }
  fprintf(file,
          "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"600\" height=\"600\" viewBox=\"-20 -20 %d %d\">\n"
          "<title>%s of %d stops</title>\n<polygon fill=\"#eef3f8\" stroke=\"#27618c\" stroke-width=\"4\" points=\"",
          MAP + 40, MAP + 40, tour->length != NULL ? "Round trip" : "Knight's round", tour->stops);
  for (int i = 0, stop = 0; i < tour->stops; i++, stop = next[stop])
    fprintf(file, "%s%d,%d", i > 0 ? " " : "", tour->x[stop], tour->y[stop]);
  fputs("\"/>\n", file);
  for (int i = 0; i < tour->stops; i++)
    fprintf(file, "<circle cx=\"%d\" cy=\"%d\" r=\"9\" fill=\"#c4432b\"/>\n", tour->x[i], tour->y[i]);
  fputs("</svg>\n", file);
  if (fclose(file) == 0) return;
  fprintf(stderr, "%s: cannot write %s\n", program, tour->options->svg);
  exit(EXIT_TROUBLE);
}

static void printResult(const Tour *tour, const CSsearch *found) {
  CSsearchStats stats;
  cs_getSearchStats(found, &stats, sizeof stats);
  const int *next = cs_getBestSolution(found);
  const char *status = cs_getStatusName(cs_getSearchStatus(found));
  if (next == NULL) {
    printf("no round trip: %s", status);
  } else {
    if (!tour->options->quiet) (tour->length != NULL ? printTowns : printBoard)(tour, next);
    if (tour->options->svg != NULL) writePicture(tour, next);
    if (tour->length != NULL)
      printf("%d long (%s)", stats.objective, status);
    else
      printf("a round of %d squares", tour->stops);
  }
  printf(" | %lld fails | %.3f s\n", stats.fails, stats.seconds);
}

// --- The run ---

static int run(const Options *options) {
  static Tour tour;
  tour = (Tour){.options = options};
  startSolver(program);
  int status = EXIT_OTHERWISE;
  (options->knight > 0 ? drawBoard : drawTowns)(&tour);
  if (!(options->knight > 0 ? postBoard : postTowns)(&tour)) {
    puts("no round trip: there is none");
  } else {
    CSsearch *done = search(&tour);
    printResult(&tour, done);
    if (cs_getBestSolution(done) != NULL) status = EXIT_AS_HOPED;
  }
  cs_end();
  return status;
}

int main(int argc, char **argv) {
  (void)argc;
  Options options = {.towns = 15, .seed = 1, .seconds = 5};
  const Option known[] = {
      {.name = "--towns", .number = &options.towns, .min = 3, .max = 60},
      {.name = "--seed", .number = &options.seed, .min = 0, .max = 1000000},
      {.name = "--seconds", .number = &options.seconds, .min = 1, .max = 3600},
      {.name = "--knight", .number = &options.knight, .min = 2, .max = 12},
      {.name = "--svg", .text = &options.svg},
      {.name = "--quiet", .flag = &options.quiet},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  return finish(program, run(&options));
}
