// SPDX-License-Identifier: MIT
// Quasigroup completion: fill the holes of a partial Latin square so that no number stands twice in a row or column.
//
// An unlucky early guess can cost such a search hours where another one needs a moment. So it runs with a limit on its
// fails, and when that is reached starts again with other guesses (Gomes, Selman, Kautz, "Boosting Combinatorial Search
// Through Randomization", AAAI 1998). What a run has refuted is kept in no-goods: no run repeats it.
#include "arguments.h"
#include "progress.h"
#include "quasigroup_input.h"

static char program[] = "quasigroup";

static const char usage[] =
    "usage: quasigroup [OPTION ...] [FILE]\n"
    "\n"
    "Fills the holes of a Latin square: a number from 1 to N in each cell of N x N, none twice in a row or column.\n"
    "FILE (- for standard input) holds N (1 to 60) and the cells row by row, 0 for a hole; anything from a # to the\n"
    "end of its line is skipped. Without a FILE, a square with holes is made up.\n"
    "\n"
    "  --order N        make a square of N rows (default 20)\n"
    "  --holes N        with N holes (default two fifths of the cells)\n"
    "  --seed N         for the square made up and for the guesses (default 1)\n"
    "  --limit N        fails that the first run may count (default 100)\n"
    "  --geometric N    the limit of each run is N % of that before it (100 to 1000, default 120)\n"
    "  --luby           the limits are those of Luby's sequence 1 1 2 1 1 2 4 ..., times the first\n"
    "  --total N        give up after N fails in all runs\n"
    "  --keep N         keep at most N no-goods (default 10000)\n"
    "  --forget         learn no no-goods\n"
    "  --progress       show runs, limit, fails and no-goods while searching\n"
    "  --quiet          print only the summary\n"
    "  --stats          print the solver's statistics, too\n"
    "  --help           print this text\n"
    "\n"
    "Exit status: 0 when the square was filled, 1 when that cannot be done or was given up, 2 on bad input or bad\n"
    "arguments.\n";

typedef struct {
  int order, nbHoles, seed;  // nbHoles -1: not given
  int limit, growth, total, keep;
  bool luby, forget, progress, quiet, stats;
  const char *file;
} Options;

// The arrays stay with the constraints, and the cells with the no-goods, until cs_end.
typedef struct {
  CSint *cells[MAX_CELLS];
  CSint *columns[MAX_CELLS];  // the cells column by column
  CSvalueSelector *selectors[MAX_CELLS];
  int nbCells;
} Model;

// What the callbacks of the search work on.
typedef struct {
  const Options *options;
  CSnoGoodSet *noGoods;  // null: nothing is learnt
  int nbRuns, limit;
  double nextLimit;  // of the geometric sequence
  long nbFails;
  double start;
} Progress;

static Random guesses;

// --- Model ---

static bool createCells(Model *model, const Square *square) {
  int n = square->order;
  model->nbCells = n * n;
  for (int i = 0; i < n * n; i++) {
    int given = square->cells[i];
    CSint *cell = given > 0 ? CSINT(given) : cs_createCSint(1, n);
    model->cells[i] = model->columns[i % n * n + i / n] = cell;
    model->selectors[i] = cs_getValueSelector(CS_SELECT_ASCENDING);
    if (cell == NULL) return false;
  }
  return true;
}

// False when propagation alone shows that the square cannot be filled.
static bool postModel(Model *model, const Square *square) {
  int n = square->order;
  if (!createCells(model, square)) return false;
  for (int i = 0; i < n; i++) {
    if (!cs_AllNeq(&model->cells[i * n], n) || !cs_AllNeq(&model->columns[i * n], n)) return false;
  }
  return true;
}

// --- Search ---

// One of the cells with the fewest values left, each as likely as the others. This is where runs differ.
static int chooseCell(CSint **cells, int nbCells) {
  int best = -1, fewest = INT_MAX, nbEqual = 0;
  for (int i = 0; i < nbCells; i++) {
    int nbValues = cs_getNbElements(cells[i]);
    if (nbValues < 2 || nbValues > fewest) continue;
    nbEqual = nbValues < fewest ? 1 : nbEqual + 1;
    fewest = nbValues;
    if (randomBelow(&guesses, nbEqual) == 0) best = i;
  }
  return best;
}

// Luby, Sinclair, Zuckerman, "Optimal Speedup of Las Vegas Algorithms", 1993; k counts from 1.
static int luby(int k) {
  int size = 1;
  while (size < k) size = 2 * size + 1;
  while (size != k) {
    size /= 2;
    if (k > size) k -= size;
  }
  return (size + 1) / 2;
}

static int limitOfRun(void *argument) {
  Progress *progress = argument;
  const Options *options = progress->options;
  progress->nbRuns++;
  if (options->luby) return luby(progress->nbRuns) * options->limit;
  if (progress->nbRuns > 1) progress->nextLimit *= options->growth / 100.0;
  return progress->nextLimit < INT_MAX ? (int)progress->nextLimit : INT_MAX;
}

static void runStarted(int limit, CSint **cells, int nbCells, void *argument) {
  (void)cells, (void)nbCells;
  ((Progress *)argument)->limit = limit;
}

static void tellProgress(const Progress *progress, bool milestone) {
  if (!progress->options->progress) return;
  showProgress(milestone, "run %d: limit %d, %ld fails, %d no-goods, %.1f s", progress->nbRuns, progress->limit,
               progress->nbFails, cs_getNbNoGoods(progress->noGoods), secondsNow() - progress->start);
}

static void decided(bool accepted, int depth, int index, const CSvalueSelection *decision, CSint **cells, int nbCells,
                    void *argument) {
  (void)depth, (void)index, (void)decision, (void)cells, (void)nbCells;
  Progress *progress = argument;
  if (!accepted && ++progress->nbFails % 500 == 0) tellProgress(progress, false);
}

static void runEnded(bool found, int nbFails, int limit, CSint **cells, int nbCells, void *argument) {
  (void)found, (void)nbFails, (void)limit, (void)cells, (void)nbCells;
  tellProgress(argument, true);
}

static CSsearchNotify *createHooks(Progress *progress) {
  CSsearchNotify *hooks = cs_createSearchNotify(progress);
  cs_searchNotifySetSearchStart(hooks, runStarted);
  cs_searchNotifySetAfterValueSelection(hooks, decided);
  return cs_searchNotifySetSearchEnd(hooks, runEnded);
}

static bool search(Model *model, Progress *progress) {
  const Options *options = progress->options;
  if (!options->forget)
    progress->noGoods = cs_createNoGoodSet(model->cells, model->nbCells, NULL, options->keep, NULL, NULL);
  CSsearchNotify *hooks = createHooks(progress);
  bool filled = cs_searchValueSelectorRestartNG(model->cells, model->selectors, model->nbCells, chooseCell, limitOfRun,
                                                progress, options->total, progress->noGoods, hooks);
  cs_freeSearchNotify(hooks);
  if (options->progress) clearProgress();
  return filled;
}

// --- Output ---

// What was filled in stands out on a terminal.
static void printSquare(const Model *model, const Square *square) {
  int n = square->order, width = n > 9 ? 3 : 2;
  bool colour = wantsColour(stdout);
  for (int i = 0; i < n * n; i++) {
    bool bold = colour && square->cells[i] == 0;
    printf("%s%*d%s%s", bold ? "\033[1;36m" : "", width, cs_getValue(model->cells[i]), bold ? "\033[0m" : "",
           i % n == n - 1 ? "\n" : "");
  }
  putchar('\n');
}

static const char *plural(long count) { return count == 1 ? "" : "s"; }

static void printSummary(const Square *square, const Progress *progress, bool filled) {
  int nbHoles = countHoles(square), total = progress->options->total;
  bool givenUp = !filled && total > 0 && progress->nbFails >= total;
  printf("order %d, %d hole%s: %s", square->order, nbHoles, plural(nbHoles),
         filled    ? "filled"
         : givenUp ? "given up"
                   : "cannot be filled");
  printf(" | %d run%s, %ld fail%s, %d choice point%s, %d no-good%s | %.3f s\n", progress->nbRuns,
         plural(progress->nbRuns), progress->nbFails, plural(progress->nbFails), cs_getNbChoicePoints(),
         plural(cs_getNbChoicePoints()), cs_getNbNoGoods(progress->noGoods), plural(cs_getNbNoGoods(progress->noGoods)),
         secondsNow() - progress->start);
  if (progress->options->stats) cs_printStats();
}

// --- The run ---

static int run(const Square *square, const Options *options) {
  static Model model;
  Progress progress = {.options = options, .nextLimit = options->limit, .start = secondsNow()};
  guesses = seedRandom(options->seed);
  startSolver(program);
  bool filled = postModel(&model, square) && search(&model, &progress);
  if (filled && !options->quiet) printSquare(&model, square);
  printSummary(square, &progress, filled);
  cs_end();
  return filled ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

static int readAndRun(Square *square, const Options *options) {
  Input input = openInput(program, options->file);
  bool isRead = readSquare(&input, square);
  int status = isRead ? run(square, options) : reportInput(program, &input);
  closeInput(&input);
  return status;
}

static int makeAndRun(Square *square, const Options *options) {
  int nbCells = options->order * options->order;
  int nbHoles = options->nbHoles < 0 ? nbCells * 2 / 5 : options->nbHoles;
  if (nbHoles > nbCells) complain(program, "%d holes are more than the %d cells", nbHoles, nbCells);
  makeSquare(square, options->order, nbHoles, options->seed);
  return run(square, options);
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {.order = 20, .nbHoles = -1, .seed = 1, .limit = 100, .growth = 120, .keep = 10000};
  const Option known[] = {
      {.name = "--order", .number = &options.order, .min = 1, .max = MAX_ORDER},
      {.name = "--holes", .number = &options.nbHoles, .min = 0, .max = MAX_CELLS},
      {.name = "--seed", .number = &options.seed, .min = 0, .max = INT_MAX},
      {.name = "--limit", .number = &options.limit, .min = 1, .max = 1000000},
      {.name = "--geometric", .number = &options.growth, .min = 100, .max = 1000},
      {.name = "--luby", .flag = &options.luby},
      {.name = "--total", .number = &options.total, .min = 1, .max = INT_MAX},
      {.name = "--keep", .number = &options.keep, .min = 1, .max = INT_MAX},
      {.name = "--forget", .flag = &options.forget},
      {.name = "--progress", .flag = &options.progress},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--stats", .flag = &options.stats},
      {.text = &options.file},
  };
  static Square square;
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  return finish(program, options.file != NULL ? readAndRun(&square, &options) : makeAndRun(&square, &options));
}
