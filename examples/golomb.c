// SPDX-License-Identifier: MIT
// Golomb rulers: n marks on a ruler, so that no two pairs of marks are the same distance apart; the shortest one.
//
// Variable i is the position of mark i. The distances of all pairs are differences of two marks each, and all
// different. The last mark is the length, which is minimised: every solution asks for a shorter ruler, until there is
// none. A ruler and its mirror image count once: the first distance is to be less than the last.
#include "arguments.h"
#include "progress.h"

static char program[] = "golomb";

static const char usage[] =
    "usage: golomb N [--progress] [--quiet] [--stats]\n"
    "\n"
    "Finds the shortest ruler with N marks (2 to 20) on which every distance occurs once, and proves that there is no\n"
    "shorter one. Each further mark takes about ten times as long; 10 marks take seconds.\n"
    "\n"
    "  --progress   show the best length so far and the work done, on the standard error stream\n"
    "  --quiet      print only the summary\n"
    "  --stats      print the solver's statistics, too\n"
    "  --help       print this text\n"
    "\n"
    "Exit status: 0 when the shortest ruler was found, 2 on bad arguments.\n";

enum { MAX_MARKS = 20, MAX_PAIRS = MAX_MARKS * (MAX_MARKS - 1) / 2, NODES_BETWEEN_UPDATES = 20000 };

typedef struct {
  int nbMarks;
  bool progress, quiet, stats;
} Options;

// The arrays stay with the constraints until cs_end.
typedef struct {
  int nbMarks, nbPairs;
  CSint *marks[MAX_MARKS];
  CSint *distances[MAX_PAIRS];  // of 0-1, 0-2, ..., 1-2, ...
} Ruler;

// The best ruler so far. Global because a CSfoundCostCallback is given nothing but the variables.
static struct {
  int marks[MAX_MARKS];
  int length;
  int nbRulers;
  int nodesToUpdate;
  bool progress;
  double start;
} best;

// --- Model ---

static bool postDistances(Ruler *ruler) {
  for (int i = 0; i < ruler->nbMarks; i++) {
    for (int j = i + 1; j < ruler->nbMarks; j++) {
      CSint *distance = cs_Sub(ruler->marks[j], ruler->marks[i]);
      if (!cs_GE(distance, 1)) return false;
      ruler->distances[ruler->nbPairs++] = distance;
    }
  }
  return cs_AllNeq(ruler->distances, ruler->nbPairs);
}

static bool orderMarks(const Ruler *ruler) {
  for (int i = 1; i < ruler->nbMarks; i++) {
    if (!cs_Lt(ruler->marks[i - 1], ruler->marks[i])) return false;
  }
  return true;
}

// There is a ruler no longer than the square of the number of marks for as many marks as anyone has looked.
static bool postModel(Ruler *ruler, int nbMarks) {
  ruler->nbMarks = nbMarks;
  for (int i = 0; i < nbMarks; i++) ruler->marks[i] = i == 0 ? CSINT(0) : cs_createCSint(1, nbMarks * nbMarks);
  if (!postDistances(ruler) || !orderMarks(ruler)) return false;
  return nbMarks == 2 || cs_Lt(ruler->distances[0], ruler->distances[ruler->nbPairs - 1]);
}

// --- Search ---

static void report(bool milestone) {
  if (best.nbRulers == 0)
    showProgress(milestone, "no ruler yet | %d fails | %.1f s", cs_getNbFails(), secondsNow() - best.start);
  else
    showProgress(milestone, "length %d (ruler %d) | %d fails | %.1f s", best.length, best.nbRulers, cs_getNbFails(),
                 secondsNow() - best.start);
}

static CSint *selectAndReport(CSint **marks, int nbMarks) {
  if (--best.nodesToUpdate <= 0) {
    best.nodesToUpdate = NODES_BETWEEN_UPDATES;
    report(false);
  }
  return cs_findFreeVar(marks, nbMarks);
}

static void keepRuler(CSint **marks, int nbMarks, CSint *length) {
  for (int i = 0; i < nbMarks; i++) best.marks[i] = cs_getValue(marks[i]);
  best.length = cs_getValue(length);
  best.nbRulers++;
  if (best.progress) report(true);
}

static bool findShortest(Ruler *ruler, const Options *options) {
  CSfindFreeVar select = options->progress ? selectAndReport : cs_findFreeVar;
  best.progress = options->progress;
  bool found = cs_minimize(ruler->marks, ruler->nbMarks, select, ruler->marks[ruler->nbMarks - 1], keepRuler);
  if (options->progress) clearProgress();
  return found;
}

// --- Output ---

static void printMarks(int nbMarks) {
  fputs("Marks ", stdout);
  for (int i = 0; i < nbMarks; i++) printf(" %d", best.marks[i]);
  putchar('\n');
}

static void drawRuler(int nbMarks) {
  fputs("       |", stdout);
  for (int i = 1; i < nbMarks; i++) {
    for (int gap = best.marks[i] - best.marks[i - 1]; gap > 1; gap--) putchar('_');
    putchar('|');
  }
  putchar('\n');
}

static void printResult(int nbMarks, const Options *options) {
  if (!options->quiet) {
    printMarks(nbMarks);
    drawRuler(nbMarks);
  }
  printf("%d marks: shortest length %d, proved after %d ruler%s", nbMarks, best.length, best.nbRulers,
         best.nbRulers == 1 ? "" : "s");
  printf(" | %d fails, %d choice points | %.3f s\n", cs_getNbFails(), cs_getNbChoicePoints(),
         secondsNow() - best.start);
  if (options->stats) cs_printStats();
}

// --- The run ---

static int run(const Options *options) {
  static Ruler ruler;
  best.start = secondsNow();
  startSolver(program);
  bool found = postModel(&ruler, options->nbMarks) && findShortest(&ruler, options);
  if (found) printResult(ruler.nbMarks, options);
  cs_end();
  if (found) return EXIT_AS_HOPED;
  fprintf(stderr, "%s: cannot create the model\n", program);
  return EXIT_TROUBLE;
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {0};
  const Option known[] = {
      {.name = "--progress", .flag = &options.progress},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--stats", .flag = &options.stats},
      {.number = &options.nbMarks, .min = 2, .max = MAX_MARKS},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  if (options.nbMarks == 0) complain(program, "how many marks?");
  return finish(program, run(&options));
}
