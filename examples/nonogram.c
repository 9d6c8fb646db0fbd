// SPDX-License-Identifier: MIT
// Nonograms, also known as griddlers: colour cells so that the blocks of each row and column have the given lengths, in
// that order and with a gap between two of them.
//
// One 0/1 variable per cell. Each row and each column is a word that an automaton reads from its start: gap, block,
// gap, block, gap. The automata leave exactly the values that some way to place the blocks of their line needs, and
// most puzzles made for people are solved by this alone.
#include "arguments.h"
#include "nonogram_input.h"

static char program[] = "nonogram";

static const char usage[] =
    "usage: nonogram [--first] [--quiet] [--stats] [FILE]\n"
    "\n"
    "Solves the nonogram of FILE (standard input without one, or for -), a puzzle in the .non text format of up to\n"
    "200x200 cells, and tells whether its picture is the only one.\n"
    "\n"
    "  --first   stop at the first picture, do not ask whether it is the only one\n"
    "  --quiet   print only the summary\n"
    "  --stats   print the solver's statistics, too\n"
    "  --help    print this text\n"
    "\n"
    "Exit status: 0 when there is exactly one picture (with --first: at least one), 1 when there are several or none,\n"
    "2 on bad input or bad arguments.\n";

enum { MAX_CELLS = MAX_SIDE * MAX_SIDE, MAX_STATES = MAX_SIDE + MAX_BLOCKS };

typedef struct {
  bool first, quiet, stats;
  const char *file;
} Options;

// The automaton of a line, and what it says about the symbols 0, a blank cell, and 1, a coloured one.
typedef struct {
  int nbStates;
  int targets[MAX_STATES][2];
} Automaton;

// The cells row by row and column by column. cs_Regular keeps the arrays it is given, so they live as long as the
// solver.
typedef struct {
  CSint *byRow[MAX_CELLS];
  CSint *byColumn[MAX_CELLS];
} Board;

typedef struct {
  int nbPictures;
  bool firstOnly;
  bool coloured[MAX_CELLS];  // the first picture
} Result;

// Global because a CSfoundCallback is given nothing but the variables.
static Result result;

// --- Model ---

static void addState(Automaton *automaton, int onBlank, int onColour) {
  int *targets = automaton->targets[automaton->nbStates++];
  targets[0] = onBlank;
  targets[1] = onColour;
}

// A state for the gap before each block and one for each of its cells. The last state, in which all blocks have been
// read, is the only final one.
static void makeAutomaton(Automaton *automaton, const Clue *clue) {
  const int nowhere = -1;
  automaton->nbStates = 0;
  for (int block = 0; block < clue->nbBlocks; block++) {
    addState(automaton, automaton->nbStates, automaton->nbStates + 1);
    for (int cell = 1; cell < clue->lengths[block]; cell++) addState(automaton, nowhere, automaton->nbStates + 1);
    bool isLast = block + 1 == clue->nbBlocks;
    addState(automaton, automaton->nbStates + !isLast, nowhere);
  }
  if (clue->nbBlocks == 0) addState(automaton, 0, nowhere);
}

static bool postLine(CSint **cells, int nbCells, const Clue *clue) {
  Automaton automaton;
  makeAutomaton(&automaton, clue);
  int final = automaton.nbStates - 1;
  return cs_Regular(cells, nbCells, automaton.targets[0], automaton.nbStates, 2, 0, &final, 1) == 1;
}

static bool postLines(CSint **cells, int nbCells, const Clues *clues) {
  for (int line = 0; line < clues->nbClues; line++) {
    if (!postLine(&cells[line * nbCells], nbCells, &clues->clues[line])) return false;
  }
  return true;
}

static bool createCells(Board *board, const Puzzle *puzzle) {
  for (int i = 0; i < puzzle->width * puzzle->height; i++) {
    int row = i / puzzle->width, column = i % puzzle->width;
    board->byRow[i] = board->byColumn[column * puzzle->height + row] = cs_createCSint(0, 1);
    if (board->byRow[i] == NULL) return false;
  }
  return true;
}

static bool postModel(Board *board, const Puzzle *puzzle) {
  return createCells(board, puzzle) && postLines(board->byRow, puzzle->width, &puzzle->rows) &&
         postLines(board->byColumn, puzzle->height, &puzzle->columns);
}

// --- Search ---

static void keepPicture(CSint **cells, int nbCells) {
  for (int i = 0; result.nbPictures == 0 && i < nbCells; i++) result.coloured[i] = cs_getValue(cells[i]) == 1;
  result.nbPictures++;
  if (result.firstOnly || result.nbPictures > 1) cs_cancelSearch();
}

static void solve(const Puzzle *puzzle) {
  static Board board;
  int label = cs_saveContext();
  if (postModel(&board, puzzle)) cs_findAll(board.byRow, puzzle->width * puzzle->height, cs_findFreeVar, keepPicture);
  // A search that was cancelled has left contexts open: the label takes them all back.
  cs_restoreContextUntil(label);
}

// --- Output ---

// How a cell is drawn: three characters wide, as the clue above it.
typedef struct {
  const char *coloured, *blank;
} Brush;

static bool isUtf8(void) {
  const char *const names[] = {"LC_ALL", "LC_CTYPE", "LANG"};
  const char *locale = NULL;
  for (size_t i = 0; i < 3 && (locale == NULL || locale[0] == '\0'); i++) locale = getenv(names[i]);
  return locale != NULL && (strstr(locale, "UTF-8") != NULL || strstr(locale, "utf8") != NULL);
}

static Brush chooseBrush(void) {
  const Brush blocks = {"\xe2\x96\x88\xe2\x96\x88\xe2\x96\x88", " \xc2\xb7 "}, letters = {"###", " . "};
  return isTerminal(stdout) && isUtf8() ? blocks : letters;
}

static int mostBlocks(const Clues *clues) {
  int most = 0;
  for (int line = 0; line < clues->nbClues; line++) {
    if (clues->clues[line].nbBlocks > most) most = clues->clues[line].nbBlocks;
  }
  return most;
}

// The number at a place of a clue that is set flush with the last of `places`; blanks where there is none.
static void printLength(const Clue *clue, int place, int places) {
  int block = place - (places - clue->nbBlocks);
  if (block < 0)
    fputs("   ", stdout);
  else
    printf("%3d", clue->lengths[block]);
}

static void printColumnClues(const Puzzle *puzzle, int margin) {
  int places = mostBlocks(&puzzle->columns);
  for (int place = 0; place < places; place++) {
    printf("%*s", 3 * margin + 2, "");
    for (int column = 0; column < puzzle->width; column++) printLength(&puzzle->columns.clues[column], place, places);
    putchar('\n');
  }
}

static void printPicture(const Puzzle *puzzle) {
  const Brush brush = chooseBrush();
  int margin = mostBlocks(&puzzle->rows);
  printColumnClues(puzzle, margin);
  for (int row = 0; row < puzzle->height; row++) {
    for (int place = 0; place < margin; place++) printLength(&puzzle->rows.clues[row], place, margin);
    fputs("  ", stdout);
    for (int column = 0; column < puzzle->width; column++) {
      bool coloured = result.coloured[row * puzzle->width + column];
      fputs(coloured ? brush.coloured : brush.blank, stdout);
    }
    putchar('\n');
  }
}

static void printSummary(const Puzzle *puzzle, double seconds) {
  const char *const several[] = {"no picture", "one picture", "several pictures"};
  const char *outcome = result.firstOnly && result.nbPictures > 0 ? "solved" : several[result.nbPictures];
  printf("%s%s%dx%d: %s", puzzle->title, puzzle->title[0] != '\0' ? ", " : "", puzzle->width, puzzle->height, outcome);
  printf(" | %d fails, %d choice points | %.3f s\n", cs_getNbFails(), cs_getNbChoicePoints(), seconds);
}

// --- The run ---

static int run(const Puzzle *puzzle, const Options *options) {
  double start = secondsNow();
  result.firstOnly = options->first;
  startSolver(program);
  solve(puzzle);
  if (result.nbPictures > 0 && !options->quiet) printPicture(puzzle);
  printSummary(puzzle, secondsNow() - start);
  if (options->stats) cs_printStats();
  cs_end();
  return result.nbPictures == 1 ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

static int readAndRun(Input *input, const Options *options) {
  static Puzzle puzzle;
  return readPuzzle(input, &puzzle) ? run(&puzzle, options) : reportInput(program, input);
}

int main(int argc, char **argv) {
  (void)argc;
  Options options = {0};
  const Option known[] = {
      {.name = "--first", .flag = &options.first},
      {.name = "--quiet", .flag = &options.quiet},
      {.name = "--stats", .flag = &options.stats},
      {.text = &options.file},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  Input input = openInput(program, options.file);
  int status = readAndRun(&input, &options);
  closeInput(&input);
  return finish(program, status);
}
