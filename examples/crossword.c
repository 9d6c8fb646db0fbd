// SPDX-License-Identifier: MIT
// Fills a crossword grid with words of a list, no word twice.
//
// A cell is a letter, a slot (a row of cells, or a column) a row of a table: its letters and, in one more column, the
// number of the word. So a letter that is chosen takes away the words that do not have it there, and these take away
// letters of the slots that cross. The numbers of all slots differ.
#include "arguments.h"
#include "input.h"

#include <koru_extras.h>

static char program[] = "crossword";

static const char usage[] =
    "usage: crossword [OPTION ...] GRID\n"
    "\n"
    "Reads a grid, rows of \".\" for a cell, \"X\" for a black one and letters that are given, and fills it with "
    "words.\n"
    "\n"
    "  --words FILE  the list of words, with white space between them; needed\n"
    "  --seed N      try words in another order (default 0: as listed)\n"
    "  --seconds N   end the search after N seconds (1 to 3600, default 10)\n"
    "  --quiet       print only the summary\n"
    "  --help        print this text\n"
    "\n"
    "Exit status: 0 when the grid was filled, 1 when it cannot be or was not in time, 2 on bad input.\n";

enum { MAX_SIDE = 21, MAX_CELLS = MAX_SIDE * MAX_SIDE, MAX_WORDS = 20000, BLACK = -1, ANY = -2 };

typedef struct {
  const char *grid, *words;
  int seed, seconds;
  bool quiet;
} Options;

typedef struct {
  char letters[MAX_SIDE + 1];
  int length;
} Word;

typedef struct {
  int cells[MAX_SIDE], length;
} Slot;

typedef struct {
  const Options *options;
  int width, height, nbWords, nbSlots;
  int given[MAX_CELLS];
  Word words[MAX_WORDS];
  Slot slots[2 * MAX_CELLS];
  CSint *cells[MAX_CELLS];
  CSint *numbers[2 * MAX_CELLS];  // of the slots' words
} Crossword;

// --- Input ---

static bool readLetters(Input *input, Word *word) {
  char text[80];
  if (!readWord(input, text, sizeof text)) return false;
  word->length = (int)strlen(text);
  for (int i = 0; i < word->length && i < MAX_SIDE; i++) word->letters[i] = (char)tolower((unsigned char)text[i]);
  return true;
}

static bool refuse(Input *input, const char *why) {
  snprintf(input->error, sizeof input->error, ferror(input->file) ? "cannot read on" : "%s", why);
  return false;
}

static bool readWords(Input *input, Crossword *c) {
  Word word = {"", 0};
  while (readLetters(input, &word)) {
    if (word.length > MAX_SIDE) continue;
    for (int i = 0; i < word.length; i++)
      if (word.letters[i] < 'a' || word.letters[i] > 'z') return refuse(input, "a word has letters from a to z only");
    if (c->nbWords == MAX_WORDS) return refuse(input, "too many words");
    c->words[c->nbWords++] = word;
  }
  return c->nbWords > 0 || refuse(input, "no words");
}

static bool readGrid(Input *input, Crossword *c) {
  for (Word row = {"", 0}; readLetters(input, &row); c->height++) {
    if (c->height == 0) c->width = row.length;
    if (row.length > MAX_SIDE || c->height == MAX_SIDE) return refuse(input, "the grid is too large");
    if (row.length != c->width) return refuse(input, "the rows are not of the same length");
    for (int i = 0; i < c->width; i++) {
      char letter = row.letters[i];
      bool isLetter = letter >= 'a' && letter <= 'z';
      if (letter != '.' && !isLetter) return refuse(input, "a cell is \".\", \"X\" or a letter");
      c->given[c->height * c->width + i] = letter == '.' ? ANY : letter == 'x' ? BLACK : letter - 'a';
    }
  }
  return c->height > 0 || refuse(input, "no grid");
}

// --- Slots: two cells or more in a line ---

static void addSlots(Crossword *c, int lines, int length, int acrossStep, int alongStep) {
  for (int line = 0; line < lines; line++) {
    Slot slot = {.length = 0};
    for (int i = 0; i <= length; i++) {
      int cell = line * acrossStep + i * alongStep;
      if (i < length && c->given[cell] != BLACK) {
        slot.cells[slot.length++] = cell;
      } else {
        if (slot.length > 1) c->slots[c->nbSlots++] = slot;
        slot.length = 0;
      }
    }
  }
}

// --- Model ---

// The words of the slot's length, a row each: its letters and its number.
static bool postSlot(Crossword *c, int slot) {
  static int rows[MAX_WORDS * (MAX_SIDE + 1)];
  const Slot *s = &c->slots[slot];
  CSint *vars[MAX_SIDE + 1];
  int count = 0;
  for (int w = 0; w < c->nbWords; w++) {
    if (c->words[w].length != s->length) continue;
    int *row = &rows[count++ * (s->length + 1)];
    for (int i = 0; i < s->length; i++) row[i] = c->words[w].letters[i] - 'a';
    row[s->length] = w;
  }
  for (int i = 0; i < s->length; i++) vars[i] = c->cells[s->cells[i]];
  vars[s->length] = c->numbers[slot] = cs_createCSint(0, c->nbWords - 1);
  return count > 0 && cs_Table(vars, s->length + 1, rows, count);
}

static bool postModel(Crossword *c) {
  for (int i = 0; i < c->width * c->height; i++) {
    int given = c->given[i];
    c->cells[i] = given == BLACK ? NULL : given == ANY ? cs_createCSint(0, 25) : CSINT(given);
  }
  for (int slot = 0; slot < c->nbSlots; slot++)
    if (!postSlot(c, slot)) return false;
  return c->nbSlots == 0 || cs_AllNeq(c->numbers, c->nbSlots);
}

// --- Search: word by word, the slots that fail often and have few words left first ---

static CSsearch *search(Crossword *c) {
  const Options *options = c->options;
  CSsearchOptions how = {.size = sizeof how,
                         .order = CS_ORDER_DOM_WDEG,
                         .value = options->seed > 0 ? CS_VALUE_RANDOM : CS_VALUE_MIN,
                         .seed = (unsigned long long)options->seed,
                         .restarts = CS_RESTARTS_LUBY,
                         .milliseconds = 1000LL * options->seconds};
  CSsearch *running = cs_createSearch(c->numbers, c->nbSlots);
  if (!cs_setSearchOptions(running, &how)) return NULL;
  cs_nextSolution(running);  // how it went, its status tells
  return running;
}

// --- Output ---

static void printGrid(const Crossword *c) {
  for (int i = 0; i < c->width * c->height; i++) {
    CSint *cell = c->cells[i];
    putchar(cell == NULL ? ' ' : cs_isInstantiated(cell) ? 'A' + cs_getValue(cell) : '?');
    putchar((i + 1) % c->width == 0 ? '\n' : ' ');
  }
}

static int solve(Crossword *c) {
  startSolver(program);
  bool filled = false;
  if (!postModel(c)) {
    puts("the grid cannot be filled: no words fit");
  } else {
    CSsearch *done = search(c);
    filled = cs_getSearchStatus(done) == CS_STATUS_SOLUTION;
    CSsearchStats stats;
    cs_getSearchStats(done, &stats, sizeof stats);
    if (filled && !c->options->quiet) printGrid(c);
    printf("%s, %d slots, %d words | %lld fails, %lld restarts | %.3f s\n",
           filled ? "filled" : cs_getStatusName(cs_getSearchStatus(done)), c->nbSlots, c->nbWords, stats.fails,
           stats.restarts, stats.seconds);
  }
  cs_end();
  return filled ? EXIT_AS_HOPED : EXIT_OTHERWISE;
}

// --- The run ---

static int run(const Options *options) {
  static Crossword c;
  memset(&c, 0, sizeof c);
  c.options = options;
  if (options->words == NULL) complain(program, "--words is needed");
  Input words = openInput(program, options->words);
  bool read = readWords(&words, &c);
  closeInput(&words);
  if (!read) return reportInput(program, &words);
  Input grid = openInput(program, options->grid);
  read = readGrid(&grid, &c);
  closeInput(&grid);
  if (!read) return reportInput(program, &grid);
  addSlots(&c, c.height, c.width, c.width, 1);
  addSlots(&c, c.width, c.height, 1, c.width);
  return solve(&c);
}

int main(int argc, char **argv) {
  (void)argc;
  Options options = {.seconds = 10};
  const Option known[] = {
      {.name = "--words", .text = &options.words},
      {.name = "--seed", .number = &options.seed, .min = 0, .max = 1000000},
      {.name = "--seconds", .number = &options.seconds, .min = 1, .max = 3600},
      {.name = "--quiet", .flag = &options.quiet},
      {.text = &options.grid},
  };
  readArguments(program, usage, known, sizeof known / sizeof known[0], argv);
  return finish(program, run(&options));
}
