// SPDX-License-Identifier: MIT
// Magic squares: the numbers 1 to n * n in a square whose rows, columns and two diagonals all have the same sum.
//
// One variable per cell, all different; one sum per line. Turning and reflecting makes eight squares of one: only the
// one whose smallest corner is on the top left, and whose top right corner is less than its bottom left one, is asked
// for.
#include "arguments.h"

static char program[] = "magic_square";

static const char usage[] =
    "usage: magic_square N [--all] [--quiet] [--stats]\n"
    "\n"
    "Places the numbers 1 to N * N (N from 1 to 20) so that all rows, columns and both diagonals have the same sum.\n"
    "\n"
    "  --all     count all squares, up to turning and reflecting, instead of showing the first\n"
    "  --quiet   print only the summary\n"
    "  --stats   print the solver's statistics, too\n"
    "  --help    print this text\n"
    "\n"
    "Exit status: 0 when there is a square, 1 when there is none, 2 on bad arguments.\n";

enum { MAX_SIDE = 20 };

typedef struct {
  int side;  // 0: not given
  bool all, quiet, stats;
} Options;

// The arrays stay with the constraints until cs_end.
typedef struct {
  int side;
  CSint *cells[MAX_SIDE * MAX_SIDE];  // row by row
  CSint *columns[MAX_SIDE * MAX_SIDE];
  CSint *diagonals[2 * MAX_SIDE];
} Square;

// Global because a CSfoundCallback is given nothing but the variables.
static long long nbSolutions;

// --- Model ---

static int magicSum(int side) { return side * (side * side + 1) / 2; }

static bool createCells(Square *square, int side) {
  square->side = side;
  for (int i = 0; i < side * side; i++) {
    square->cells[i] = cs_createCSint(1, side * side);
    if (square->cells[i] == NULL) return false;
  }
  return true;
}

// Sort the cells by column and by diagonal; by row they are sorted already.
static void arrangeCells(Square *square) {
  int side = square->side;
  for (int row = 0; row < side; row++) {
    CSint **cells = square->cells + row * side;
    for (int column = 0; column < side; column++) square->columns[column * side + row] = cells[column];
    square->diagonals[row] = cells[row];
    square->diagonals[side + row] = cells[side - 1 - row];
  }
}

static bool postSums(CSint **lines, int nbLines, int side) {
  for (int i = 0; i < nbLines; i++) {
    if (!cs_EQ(cs_Sigma(lines + i * side, side), magicSum(side))) return false;
  }
  return true;
}

static bool breakSymmetry(CSint **cells, int side) {
  if (side == 1) return true;  // one corner, which cannot be less than itself
  CSint *topLeft = cells[0], *topRight = cells[side - 1];
  CSint *bottomLeft = cells[side * (side - 1)], *bottomRight = cells[side * side - 1];
  return cs_Lt(topLeft, topRight) && cs_Lt(topRight, bottomLeft) && cs_Lt(topLeft, bottomRight);
}

// False when propagation alone shows that there is no solution.
static bool postModel(Square *square, int side) {
  if (!createCells(square, side)) return false;
  arrangeCells(square);
  return cs_AllNeq(square->cells, side * side) && postSums(square->cells, side, side) &&
         postSums(square->columns, side, side) && postSums(square->diagonals, 2, side) &&
         breakSymmetry(square->cells, side);
}

// --- Output ---

static int widthOf(int number) { return snprintf(NULL, 0, "%d", number); }

static void printRule(int side, int width) {
  fputs("  ", stdout);
  for (int column = 0; column < side; column++) {
    putchar('+');
    for (int i = 0; i < width + 2; i++) putchar('-');
  }
  puts("+");
}

static void drawSquare(CSint **cells, int side) {
  int width = widthOf(side * side);
  for (int row = 0; row < side; row++) {
    printRule(side, width);
    fputs("  ", stdout);
    for (int column = 0; column < side; column++) printf("| %*d ", width, cs_getValue(cells[row * side + column]));
    puts("|");
  }
  printRule(side, width);
}

static void printSummary(const Options *options, double seconds) {
  int side = options->side;
  printf("%dx%d, sum %d: ", side, side, magicSum(side));
  if (nbSolutions == 0)
    fputs("no solution", stdout);
  else if (options->all)
    printf("%lld solution%s", nbSolutions, nbSolutions == 1 ? "" : "s");
  else
    fputs("solved", stdout);
  printf(" | %d fails, %d choice points | %.3f s\n", cs_getNbFails(), cs_getNbChoicePoints(), seconds);
  if (options->stats) cs_printStats();
}

// --- The run ---

static void solutionFound(CSint **cells, int nbCells) {
  (void)cells;
  (void)nbCells;
  nbSolutions++;
}

static void search(Square *square, const Options *options) {
  int nbCells = square->side * square->side;
  if (options->all) {
    cs_findAll(square->cells, nbCells, cs_findFreeVar, solutionFound);
    return;
  }
  if (!cs_search(square->cells, nbCells, cs_findFreeVar)) return;
  nbSolutions = 1;
  if (!options->quiet) drawSquare(square->cells, square->side);
}

static int run(const Options *options) {
  static Square square;
  double start = secondsNow();
  startSolver(program);
  if (postModel(&square, options->side)) search(&square, options);
  printSummary(options, secondsNow() - start);
  cs_end();
  return nbSolutions > 0 ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {0};
  const Option known[] = {
      {.name = "--all", .flag = &options.all},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--stats", .flag = &options.stats},
      {.number = &options.side, .min = 1, .max = MAX_SIDE},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  if (options.side == 0) complain(program, "how many rows?");
  return finish(program, run(&options));
}
