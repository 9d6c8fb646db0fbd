// SPDX-License-Identifier: MIT
// Solves sudoku puzzles of 9x9, 16x16 and 25x25 cells and tells whether each has exactly one solution.
//
// One variable per cell; the rows, columns and blocks are all-different. Variables and constraints are made once for
// each size and used for all puzzles: the clues of a puzzle go into a context, which is restored afterwards. So memory
// stays the same however many puzzles there are.
#include "arguments.h"
#include "sudoku_input.h"

static char program[] = "sudoku";

static const char usage[] =
    "usage: sudoku [--first] [--line | --quiet] [--stats] [FILE]\n"
    "\n"
    "Solves the puzzles of FILE (standard input without one, or for -), one a line: 81, 256 or 625 cells,\n"
    "'.' or '0' for a blank, digits above 9 as letters; then, after white space, a name if you like.\n"
    "Empty lines and lines that start with # are skipped.\n"
    "\n"
    "  --first   stop at the first solution, do not ask whether it is the only one\n"
    "  --line    print each solution as one line, in a form that can be read again\n"
    "  --quiet   print only the summary\n"
    "  --stats   print the fails and choice points of each puzzle\n"
    "  --help    print this text\n"
    "\n"
    "Exit status: 0 when every puzzle has exactly one solution (with --first: at least one),\n"
    "1 when some puzzle has several or none, 2 on bad input or bad arguments.\n";

typedef struct {
  bool firstOnly, line, quiet, stats;
  const char *file;
} Options;

// The variables of one size of puzzle. cs_AllNeq keeps the arrays it is given, so they live as long as the solver.
typedef struct {
  int side;  // 0: not created yet
  CSint *cells[MAX_CELLS];
  CSint *columns[MAX_CELLS];
  CSint *blocks[MAX_CELLS];
} Board;

typedef enum { NO_SOLUTION, ONE_SOLUTION, SEVERAL_SOLUTIONS, NB_OUTCOMES } Outcome;

typedef struct {
  Outcome outcome;
  int digits[MAX_CELLS];  // the first solution
  int nbFails, nbChoicePoints;
} Result;

typedef struct {
  long long nbPuzzles, nbMalformed, nbOf[NB_OUTCOMES], nbFails, nbChoicePoints;
  double start, lastProgress;
  bool showsProgress, progressShown;
} Totals;

// The result under construction. Global because a CSfoundCallback is given nothing but the variables.
static Result result;

// --- Model and search ---

// The side of a block.
static int orderOf(int side) { return side == 9 ? 3 : side == 16 ? 4 : 5; }

static bool createCells(Board *board, int side) {
  for (int i = 0; i < side * side; i++) {
    board->cells[i] = cs_createCSint(1, side);
    if (board->cells[i] == NULL) return false;
  }
  board->side = side;
  return true;
}

// Sort the cells by column and by block; by row they are sorted already.
static void arrangeCells(Board *board) {
  int side = board->side;
  int order = orderOf(side);
  for (int i = 0; i < side * side; i++) {
    int row = i / side, column = i % side;
    int block = row / order * order + column / order;
    int within = row % order * order + column % order;
    board->columns[column * side + row] = board->cells[i];
    board->blocks[block * side + within] = board->cells[i];
  }
}

static bool postAllDifferent(CSint **units, int side) {
  for (int i = 0; i < side; i++) {
    if (!cs_AllNeq(units + i * side, side)) return false;
  }
  return true;
}

static bool createBoard(Board *board, int side) {
  if (!createCells(board, side)) return false;
  arrangeCells(board);
  return postAllDifferent(board->cells, side) && postAllDifferent(board->columns, side) &&
         postAllDifferent(board->blocks, side);
}

// The board for puzzles of that side, created when it is first asked for.
static Board *boardOf(Board boards[3], int side) {
  Board *board = &boards[orderOf(side) - 3];
  if (board->side == 0 && !createBoard(board, side)) {
    fprintf(stderr, "%s: cannot create the %dx%d model\n", program, side, side);
    exit(EXIT_TROUBLE);
  }
  return board;
}

// Keep the first solution; the second one is enough to know that there are several.
static void solutionFound(CSint **cells, int nbCells) {
  if (result.outcome == ONE_SOLUTION) {
    result.outcome = SEVERAL_SOLUTIONS;
    cs_cancelSearch();
    return;
  }
  result.outcome = ONE_SOLUTION;
  for (int i = 0; i < nbCells; i++) result.digits[i] = cs_getValue(cells[i]);
}

static bool placeClues(Board *board, const Puzzle *puzzle) {
  for (int i = 0; i < board->side * board->side; i++) {
    if (puzzle->digits[i] != 0 && !cs_EQ(board->cells[i], puzzle->digits[i])) return false;
  }
  return true;
}

static void solve(Board *board, const Puzzle *puzzle, bool firstOnly) {
  int nbCells = board->side * board->side;
  result.outcome = NO_SOLUTION;
  result.nbFails = result.nbChoicePoints = 0;
  int label = cs_saveContext();
  if (placeClues(board, puzzle)) {
    if (!firstOnly)
      cs_findAll(board->cells, nbCells, cs_findFreeVarNbElements, solutionFound);
    else if (cs_search(board->cells, nbCells, cs_findFreeVarNbElements))
      solutionFound(board->cells, nbCells);
    result.nbFails = cs_getNbFails();
    result.nbChoicePoints = cs_getNbChoicePoints();
  }
  // A search that succeeded or was cancelled has left contexts open: the label takes them all back.
  cs_restoreContextUntil(label);
}

// --- Output ---

static const char *describe(Outcome outcome, bool firstOnly) {
  static const char *const texts[NB_OUTCOMES] = {"no solution", "unique solution", "several solutions"};
  return firstOnly && outcome == ONE_SOLUTION ? "solved" : texts[outcome];
}

static void printRule(int side, int order) {
  fputs("  ", stdout);
  for (int column = 0; column < side; column++) fputs(column % order == 0 ? "+---" : "--", stdout);
  puts("+");
}

// Print the grid; clues stand out in bold where that is possible.
static void printGrid(const Puzzle *puzzle, const int *digits, bool bold) {
  int side = puzzle->side;
  int order = orderOf(side);
  for (int row = 0; row < side; row++) {
    if (row % order == 0) printRule(side, order);
    fputs("  ", stdout);
    for (int column = 0; column < side; column++) {
      int cell = row * side + column;
      bool isClue = puzzle->digits[cell] != 0;
      if (column % order == 0) fputs("| ", stdout);
      printf(bold && isClue ? "\033[1m%c\033[0m " : "%c ", symbolOf(digits[cell]));
    }
    puts("|");
  }
  printRule(side, order);
}

static void printStats(void) { printf(", %d fails, %d choice points", result.nbFails, result.nbChoicePoints); }

static void printAsGrid(const Puzzle *puzzle, const Options *options, long long number) {
  printf("Puzzle %lld%s%s\n", number, puzzle->name[0] != '\0' ? ": " : "", puzzle->name);
  bool solved = result.outcome != NO_SOLUTION;
  printGrid(puzzle, solved ? result.digits : puzzle->digits, wantsColour(stdout));
  printf("  %s%s", describe(result.outcome, options->firstOnly),
         result.outcome == SEVERAL_SOLUTIONS ? ", this is the first" : "");
  if (options->stats) printStats();
  puts("\n");
}

// Print the solution, or the puzzle in a comment when it has none, so that the output can be read again.
static void printAsLine(const Puzzle *puzzle, const Options *options) {
  bool solved = result.outcome != NO_SOLUTION;
  const int *digits = solved ? result.digits : puzzle->digits;
  if (!solved) fputs("# ", stdout);
  for (int i = 0; i < puzzle->side * puzzle->side; i++) putchar(symbolOf(digits[i]));
  if (puzzle->name[0] != '\0') printf("  %s", puzzle->name);
  if (options->stats || result.outcome != ONE_SOLUTION) printf("  # %s", describe(result.outcome, options->firstOnly));
  if (options->stats) printStats();
  putchar('\n');
}

static void printSummary(const Totals *totals, const Options *options) {
  double seconds = secondsNow() - totals->start;
  printf("%s%lld puzzle%s: ", options->line ? "# " : "", totals->nbPuzzles, totals->nbPuzzles == 1 ? "" : "s");
  if (options->firstOnly)
    printf("%lld solved, %lld none", totals->nbOf[ONE_SOLUTION], totals->nbOf[NO_SOLUTION]);
  else
    printf("%lld unique, %lld several, %lld none", totals->nbOf[ONE_SOLUTION], totals->nbOf[SEVERAL_SOLUTIONS],
           totals->nbOf[NO_SOLUTION]);
  if (totals->nbMalformed > 0) printf(", %lld malformed", totals->nbMalformed);
  printf(" | %lld fails, %lld choice points | %.3f s, %.0f puzzles/s\n", totals->nbFails, totals->nbChoicePoints,
         seconds, seconds > 0 ? (double)totals->nbPuzzles / seconds : 0.0);
}

// --- Progress on the standard error stream ---

static void clearProgress(Totals *totals) {
  if (totals->progressShown) fputs("\r\033[K", stderr);
  totals->progressShown = false;
}

static void updateProgress(Totals *totals) {
  enum { QUIET_START = 20 };
  const double interval = 0.1;
  if (!totals->showsProgress || totals->nbPuzzles <= QUIET_START) return;
  double now = secondsNow();
  if (now - totals->lastProgress < interval) return;
  fprintf(stderr, "\r\033[K%lld puzzles, %.0f per second ", totals->nbPuzzles,
          (double)totals->nbPuzzles / (now - totals->start));
  totals->lastProgress = now;
  totals->progressShown = true;
}

// --- The run ---

static void solveAndPrint(Board boards[3], const Puzzle *puzzle, const Options *options, Totals *totals) {
  solve(boardOf(boards, puzzle->side), puzzle, options->firstOnly);
  totals->nbPuzzles++;
  totals->nbOf[result.outcome]++;
  totals->nbFails += result.nbFails;
  totals->nbChoicePoints += result.nbChoicePoints;
  if (!options->quiet && options->line) printAsLine(puzzle, options);
  if (!options->quiet && !options->line) printAsGrid(puzzle, options, totals->nbPuzzles);
  updateProgress(totals);
}

// Solve all puzzles of the input. False when something in it was not as it should be, which has been reported.
static bool solveAll(Input *input, const Options *options, Totals *totals) {
  Board boards[3] = {{0}};
  Line line;
  Puzzle puzzle;
  while (readLine(input, &line)) {
    if (!holdsPuzzle(&line)) continue;
    if (parsePuzzle(input, &line, &puzzle)) {
      solveAndPrint(boards, &puzzle, options, totals);
      continue;
    }
    clearProgress(totals);
    totals->nbMalformed++;
    reportInput(program, input);
  }
  clearProgress(totals);
  if (!ferror(input->file)) return totals->nbMalformed == 0;
  fprintf(stderr, "%s: %s:%ld: cannot read on\n", program, input->name, input->line + 1);
  return false;
}

static int run(Input *input, const Options *options) {
  Totals totals = {.start = secondsNow()};
  // Grids that scroll by on the same terminal are progress enough.
  totals.showsProgress = isTerminal(stderr) && (options->quiet || !isTerminal(stdout));
  startSolver(program);
  bool inputGood = solveAll(input, options, &totals);
  cs_end();
  printSummary(&totals, options);
  if (!inputGood) return EXIT_TROUBLE;
  return totals.nbOf[ONE_SOLUTION] == totals.nbPuzzles ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

// --- Arguments ---

int main(int argc, char **argv) {
  (void)argc;
  Options options = {0};
  const Option known[] = {
      {.name = "--first", .flag = &options.firstOnly},
      {.name = "--line", .flag = &options.line},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--stats", .flag = &options.stats},
      {.text = &options.file},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  Input input = openInput(program, options.file);
  input.line = 0;  // none is read yet
  int status = run(&input, &options);
  closeInput(&input);
  return finish(program, status);
}
