// SPDX-License-Identifier: MIT
// Magic sequences: n numbers x[0] ... x[n-1] that tell of themselves how often each number comes: x[v] counts the v's.
//
// One variable per number, and one occurrence constraint for each, in which the count is a variable of the array that
// it counts. Two sums follow from these and say it in other ways: the counts add up to n, and so do the products of
// each number and its count, because each of the n places holds a number. Without them the search sees no further than
// one count at a time. It begins with the largest numbers, of which there can be few or none.
#include "arguments.h"

static char program[] = "magic_sequence";

static const char usage[] =
    "usage: magic_sequence N [--all] [--quiet] [--stats]\n"
    "\n"
    "Finds N numbers (1 to 500), x[0] to x[N-1], such that x[v] is how often v comes among them.\n"
    "\n"
    "  --all     print all sequences instead of drawing the first\n"
    "  --quiet   print only the summary\n"
    "  --stats   print the solver's statistics, too\n"
    "  --help    print this text\n"
    "\n"
    "Exit status: 0 when there is a sequence, 1 when there is none, 2 on bad arguments.\n";

enum { MAX_LENGTH = 500, MAX_LISTED = 40, BAR_WIDTH = 60 };

typedef struct {
  int length;  // 0: not given
  bool all, quiet, stats;
} Options;

// The arrays stay with the constraints until cs_end.
static CSint *counts[MAX_LENGTH];
static int numbers[MAX_LENGTH];

// What solutionFound works on. Global because a CSfoundCallback is given nothing but the variables.
static struct {
  long long nbSolutions;
  bool print;
} found;

// --- Model ---

// False when propagation alone shows that there is no sequence.
static bool postModel(int n) {
  for (int v = 0; v < n; v++) {
    counts[v] = cs_createCSint(0, n - 1);
    numbers[v] = v;
  }
  for (int v = 0; v < n; v++)
    if (!cs_OccurConstraints(counts[v], v, counts, n)) return false;
  return cs_EQ(cs_Sigma(counts, n), n) && cs_EQ(cs_ScalProd(counts, numbers, n), n);
}

// --- Output ---

static void printSequence(int n) {
  for (int v = 0; v < n; v++) printf("%s%d", v == 0 ? "" : " ", cs_getValue(counts[v]));
  putchar('\n');
}

static int widthOf(int number) { return snprintf(NULL, 0, "%d", number); }

// A line for each number that comes: how often, as a bar. Most numbers of a long sequence do not come at all.
static void drawSequence(int n) {
  int width = widthOf(n - 1), longest = 1;
  for (int v = 0; v < n; v++)
    if (cs_getValue(counts[v]) > longest) longest = cs_getValue(counts[v]);
  for (int v = 0; v < n; v++) {
    int count = cs_getValue(counts[v]);
    if (count == 0) continue;
    int bar = longest <= BAR_WIDTH ? count : 1 + (count - 1) * (BAR_WIDTH - 1) / (longest - 1);
    printf("  x[%*d] = %-*d  ", width, v, width, count);
    while (bar-- > 0) putchar('#');
    putchar('\n');
  }
}

static void showFirst(int n) {
  if (n <= MAX_LISTED) {
    printSequence(n);
    putchar('\n');
  }
  drawSequence(n);
  puts("  all others are 0\n");
}

static void printSummary(const Options *options, double seconds) {
  printf("magic sequence of %d: ", options->length);
  if (found.nbSolutions == 0)
    fputs("no solution", stdout);
  else if (options->all)
    printf("%lld solution%s", found.nbSolutions, found.nbSolutions == 1 ? "" : "s");
  else
    fputs("solved", stdout);
  printf(" | %d fails, %d choice points | %.3f s\n", cs_getNbFails(), cs_getNbChoicePoints(), seconds);
  if (options->stats) cs_printStats();
}

// --- The run ---

static void solutionFound(CSint **array, int n) {
  (void)array;
  found.nbSolutions++;
  if (found.print) printSequence(n);
}

// A selection of our own: the last variable that is not bound.
static CSint *lastFree(CSint **array, int n) {
  while (n > 0 && !cs_isFree(array[n - 1])) n--;
  return n > 0 ? array[n - 1] : NULL;
}

static void search(const Options *options) {
  int n = options->length;
  if (options->all) {
    found.print = !options->quiet;
    cs_findAll(counts, n, lastFree, solutionFound);
  } else if (cs_search(counts, n, lastFree)) {
    found.nbSolutions = 1;
    if (!options->quiet) showFirst(n);
  }
}

static int run(const Options *options) {
  double start = secondsNow();
  startSolver(program);
  if (postModel(options->length)) search(options);
  printSummary(options, secondsNow() - start);
  cs_end();
  return found.nbSolutions > 0 ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {0};
  const Option known[] = {
      {.name = "--all", .flag = &options.all},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--stats", .flag = &options.stats},
      {.number = &options.length, .min = 1, .max = MAX_LENGTH},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  if (options.length == 0) complain(program, "how many numbers?");
  return finish(program, run(&options));
}
