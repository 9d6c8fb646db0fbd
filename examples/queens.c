// SPDX-License-Identifier: MIT
// The n queens: place n queens on an n x n board so that none attacks another.
//
// Variable i is the column of the queen in row i. Different columns: all-different. Two queens share a diagonal of one
// direction when column + row is the same for both, and of the other when column - row is: all-different again.
#include "arguments.h"

static char program[] = "queens";

static const char usage[] =
    "usage: queens N [--all [--print]] [--quiet] [--stats]\n"
    "\n"
    "Places N queens (1 to 10000) on an N x N board so that none attacks another.\n"
    "\n"
    "  --all     count all solutions instead of showing the first\n"
    "  --print   with --all: print each one, as the list of its columns\n"
    "  --quiet   print only the summary\n"
    "  --stats   print the solver's statistics, too\n"
    "  --help    print this text\n"
    "\n"
    "Exit status: 0 when there is a solution, 1 when there is none, 2 on bad arguments.\n";

enum { MAX_QUEENS = 10000, MAX_DRAWN = 40 };

typedef struct {
  int nbQueens;  // 0: not given
  bool all, print, quiet, stats;
} Options;

// The arrays stay with the all-different constraints until cs_end.
typedef struct {
  int nbQueens;
  CSint **columns;
  CSint **sums;         // column + row
  CSint **differences;  // column - row
} Board;

// What solutionFound works on. Global because a CSfoundCallback is given nothing but the variables.
static struct {
  long long nbSolutions;
  bool print;
} found;

// --- Model ---

static bool allocateBoard(Board *board, int nbQueens) {
  size_t size = (size_t)nbQueens;
  board->nbQueens = nbQueens;
  board->columns = calloc(size, sizeof *board->columns);
  board->sums = calloc(size, sizeof *board->sums);
  board->differences = calloc(size, sizeof *board->differences);
  return board->columns != NULL && board->sums != NULL && board->differences != NULL;
}

static void freeBoard(Board *board) {
  free(board->columns);
  free(board->sums);
  free(board->differences);
}

// False when propagation alone shows that there is no solution.
static bool postModel(Board *board) {
  int n = board->nbQueens;
  for (int row = 0; row < n; row++) {
    board->columns[row] = cs_createCSint(0, n - 1);
    board->sums[row] = cs_Add(board->columns[row], CSINT(row));
    board->differences[row] = cs_Sub(board->columns[row], CSINT(row));
    if (board->sums[row] == NULL || board->differences[row] == NULL) return false;
  }
  return cs_AllNeq(board->columns, n) && cs_AllNeq(board->sums, n) && cs_AllNeq(board->differences, n);
}

// --- Output ---

static void printRule(int nbQueens) {
  fputs("  +-", stdout);
  for (int i = 0; i < nbQueens; i++) fputs("--", stdout);
  puts("+");
}

// A chequered row on a terminal, dots elsewhere.
static void printRow(int row, int queen, int nbQueens, bool colour) {
  fputs(colour ? "  " : "  | ", stdout);
  for (int column = 0; column < nbQueens; column++) {
    char symbol = column == queen ? 'Q' : '.';
    if (!colour)
      printf("%c ", symbol);
    else if (column == queen)
      printf("\033[%sm\033[1;30m Q\033[0m", (row + column) % 2 == 0 ? "48;5;223" : "48;5;173");
    else
      printf("\033[%sm  \033[0m", (row + column) % 2 == 0 ? "48;5;223" : "48;5;173");
  }
  puts(colour ? "" : "|");
}

static void drawBoard(CSint **columns, int nbQueens) {
  bool colour = wantsColour(stdout);
  if (!colour) printRule(nbQueens);
  for (int row = 0; row < nbQueens; row++) printRow(row, cs_getValue(columns[row]), nbQueens, colour);
  if (!colour) printRule(nbQueens);
}

// The column of each row's queen, counted from 1.
static void printColumns(CSint **columns, int nbQueens) {
  for (int row = 0; row < nbQueens; row++) printf("%s%d", row == 0 ? "" : " ", cs_getValue(columns[row]) + 1);
  putchar('\n');
}

static void printSummary(const Options *options, double seconds) {
  int n = options->nbQueens;
  printf("%d queen%s: ", n, n == 1 ? "" : "s");
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

static void solutionFound(CSint **columns, int nbQueens) {
  found.nbSolutions++;
  if (found.print) printColumns(columns, nbQueens);
}

static void search(Board *board, const Options *options) {
  int n = board->nbQueens;
  if (options->all) {
    found.print = options->print && !options->quiet;
    cs_findAll(board->columns, n, cs_findFreeVarNbElements, solutionFound);
    return;
  }
  if (!cs_search(board->columns, n, cs_findFreeVarNbElements)) return;
  found.nbSolutions = 1;
  if (options->quiet) return;
  if (n <= MAX_DRAWN)
    drawBoard(board->columns, n);
  else
    printColumns(board->columns, n);
}

static int run(const Options *options) {
  double start = secondsNow();
  Board board;
  startSolver(program);
  if (!allocateBoard(&board, options->nbQueens)) outOfMemory(NULL, program);
  if (postModel(&board)) search(&board, options);
  printSummary(options, secondsNow() - start);
  cs_end();
  freeBoard(&board);
  return found.nbSolutions > 0 ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {0};
  const Option known[] = {
      {.name = "--all", .flag = &options.all},
      {.name = "--print", .flag = &options.print},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--stats", .flag = &options.stats},
      {.number = &options.nbQueens, .min = 1, .max = MAX_QUEENS},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  if (options.nbQueens == 0) complain(program, "how many queens?");
  return finish(program, run(&options));
}
