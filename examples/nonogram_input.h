// SPDX-License-Identifier: MIT
// Reading of nonograms in the .non text format. A line is a keyword with what follows it, or a clue:
//
//   title "Boat"           by, copyright and other keywords are skipped; so are empty lines and lines that start with #
//   width 4
//   height 3
//   rows
//   1                      a clue for each row, from top to bottom: the lengths of its blocks, from left to right,
//   4                      with commas or blanks between them, or 0 for a row without any
//   2
//   columns
//   1                      a clue for each column, from left to right, and from top to bottom
//   ...
#ifndef KORU_EXAMPLE_NONOGRAM_INPUT_H
#define KORU_EXAMPLE_NONOGRAM_INPUT_H

#include "input.h"

#include <stdarg.h>

enum { MAX_SIDE = 200, MAX_BLOCKS = (MAX_SIDE + 1) / 2, MAX_TEXT = 2000, MAX_TITLE = 80 };

typedef struct {
  int nbBlocks;
  int lengths[MAX_BLOCKS];
} Clue;

// The rows, or the columns, of which there are `nbLines` clues so far.
typedef struct {
  int nbClues;
  Clue clues[MAX_SIDE];
} Clues;

typedef struct {
  int width, height;  // 0: not known yet
  char title[MAX_TITLE + 1];
  Clues rows, columns;
} Puzzle;

// Where the reader stands: what clues belong to, null before the first of them.
typedef struct {
  Input *input;
  Puzzle *puzzle;
  Clues *section;
} Reader;

static inline bool isRows(const Reader *reader) { return reader->section == &reader->puzzle->rows; }

// Note why the input holds no puzzle.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
static inline bool
fail(Reader *reader, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(reader->input->error, sizeof reader->input->error, format, arguments);
  va_end(arguments);
  return false;
}

// Read a line of text without the blanks at its ends; what is longer than the text is dropped, and told. False at the
// end of the input.
static inline bool readTextLine(Input *input, char text[MAX_TEXT], bool *isWhole) {
  int c = getc(input->file);
  if (c == EOF) return false;
  size_t length = 0;
  for (*isWhole = true; c != '\n' && c != EOF; c = getc(input->file)) {
    bool isLeading = length == 0 && isspace(c);
    if (length + 1 < MAX_TEXT && !isLeading)
      text[length++] = iscntrl(c) && !isspace(c) ? '?' : (char)c;
    else if (!isLeading && !isspace(c))
      *isWhole = false;
  }
  while (length > 0 && isspace((unsigned char)text[length - 1])) length--;
  text[length] = '\0';
  return true;
}

// --- Clues ---

// The cells that the blocks take, with one between two of them.
static inline int cellsOf(const Clue *clue) {
  int cells = clue->nbBlocks > 0 ? clue->nbBlocks - 1 : 0;
  for (int i = 0; i < clue->nbBlocks; i++) cells += clue->lengths[i];
  return cells;
}

// `text` loses its separators.
static inline bool parseClue(Reader *reader, char *text, int side, Clue *clue) {
  bool isEmpty = false;
  clue->nbBlocks = 0;
  for (char *word = strtok(text, ", \t\r"); word != NULL; word = strtok(NULL, ", \t\r")) {
    int length = 0;
    if (!isNumberWithin(word, 0, side, &length)) return fail(reader, "%.40s is no number from 0 to %d", word, side);
    if (isEmpty || (length == 0 && clue->nbBlocks > 0)) return fail(reader, "0 does not stand alone");
    isEmpty = length == 0;
    if (isEmpty) continue;
    if (clue->nbBlocks < MAX_BLOCKS) clue->lengths[clue->nbBlocks++] = length;
    if (cellsOf(clue) > side)
      return fail(reader, "the blocks do not fit into a %s of %d cells", isRows(reader) ? "row" : "column", side);
  }
  return true;
}

static inline bool readClue(Reader *reader, char *text, bool isWhole) {
  if (reader->section == NULL) return fail(reader, "%.40s: no clue is expected here", text);
  int nbLines = isRows(reader) ? reader->puzzle->height : reader->puzzle->width;
  int side = isRows(reader) ? reader->puzzle->width : reader->puzzle->height;
  const char *what = isRows(reader) ? "rows" : "columns";
  if (reader->section->nbClues == nbLines) return fail(reader, "there are more clues than the %s, %d", what, nbLines);
  if (!isWhole) return fail(reader, "the line is longer than %d characters", MAX_TEXT - 1);
  return parseClue(reader, text, side, &reader->section->clues[reader->section->nbClues++]);
}

// --- Keywords ---

static inline bool readSide(Reader *reader, const char *name, const char *value, int *side) {
  if (*side > 0) return fail(reader, "%s is given twice", name);
  if (isNumberWithin(value, 1, MAX_SIDE, side)) return true;
  *side = 0;
  return fail(reader, "%s: %.40s is no number from 1 to %d", name, value, MAX_SIDE);
}

static inline bool beginSection(Reader *reader, const char *name, Clues *section) {
  if (reader->puzzle->width == 0 || reader->puzzle->height == 0)
    return fail(reader, "width and height must come before %s", name);
  if (section->nbClues > 0) return fail(reader, "%s are given twice", name);
  reader->section = section;
  return true;
}

// The text between quotation marks, if there are any.
static inline void keepTitle(Puzzle *puzzle, const char *value) {
  bool isQuoted = value[0] == '"';
  snprintf(puzzle->title, sizeof puzzle->title, "%s", value + isQuoted);
  size_t length = strlen(puzzle->title);
  if (isQuoted && length > 0 && puzzle->title[length - 1] == '"') puzzle->title[length - 1] = '\0';
}

static inline bool readKeyword(Reader *reader, char *text) {
  Puzzle *puzzle = reader->puzzle;
  char *value = text + strcspn(text, " \t");
  if (*value != '\0') *value++ = '\0';
  value += strspn(value, " \t");
  if (strcmp(text, "width") == 0) return readSide(reader, text, value, &puzzle->width);
  if (strcmp(text, "height") == 0) return readSide(reader, text, value, &puzzle->height);
  if (strcmp(text, "rows") == 0) return beginSection(reader, text, &puzzle->rows);
  if (strcmp(text, "columns") == 0) return beginSection(reader, text, &puzzle->columns);
  if (strcmp(text, "title") == 0) keepTitle(puzzle, value);
  reader->section = NULL;
  return true;
}

static inline bool readLine(Reader *reader, char *text, bool isWhole) {
  if (text[0] == '\0' || text[0] == '#') return true;
  return isalpha((unsigned char)text[0]) ? readKeyword(reader, text) : readClue(reader, text, isWhole);
}

static inline bool checkComplete(Reader *reader) {
  const Puzzle *puzzle = reader->puzzle;
  if (ferror(reader->input->file)) return fail(reader, "cannot read on");
  if (puzzle->width == 0 || puzzle->height == 0)
    return fail(reader, "%s: missing", puzzle->width == 0 ? "width" : "height");
  if (puzzle->rows.nbClues < puzzle->height) return fail(reader, "clue of row %d: missing", puzzle->rows.nbClues + 1);
  if (puzzle->columns.nbClues < puzzle->width)
    return fail(reader, "clue of column %d: missing", puzzle->columns.nbClues + 1);
  return true;
}

// Read a puzzle. When the input holds none, its line and error say where and why.
static inline bool readPuzzle(Input *input, Puzzle *puzzle) {
  char text[MAX_TEXT];
  bool isWhole = true;
  Reader reader = {input, puzzle, NULL};
  *puzzle = (Puzzle){0};
  for (; readTextLine(input, text, &isWhole); input->line++) {
    if (!readLine(&reader, text, isWhole)) return false;
  }
  return checkComplete(&reader);
}

#endif  // KORU_EXAMPLE_NONOGRAM_INPUT_H
