// SPDX-License-Identifier: MIT
// Reading of sudoku puzzles, one a line: the cells row by row, then, after white space, the puzzle's name if it has
// one. 81 cells make a 9x9 puzzle, 256 a 16x16 and 625 a 25x25 one. Digits above 9 are letters in either case;
// '.' and '0' are blanks. Empty lines and lines that start with '#' are skipped.
//
// A line may have any length: only what can belong to a puzzle, and MAX_NAME bytes of its name, are kept.
#ifndef KORU_EXAMPLE_SUDOKU_INPUT_H
#define KORU_EXAMPLE_SUDOKU_INPUT_H

#include "input.h"

enum { MAX_SIDE = 25, MAX_CELLS = MAX_SIDE * MAX_SIDE, MAX_NAME = 200 };

typedef struct {
  size_t nbCells;  // counts the cells that did not fit, too
  char cells[MAX_CELLS];
  char name[MAX_NAME + 1];
} Line;

typedef struct {
  int side;                 // 9, 16 or 25
  int digits[MAX_CELLS];    // 0 for a blank
  char name[MAX_NAME + 1];  // empty without one
} Puzzle;

static inline bool isBlank(int c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

static inline bool isLineEnd(int c) { return c == '\n' || c == EOF; }

static inline int nextNonBlank(FILE *file) {
  int c = getc(file);
  while (isBlank(c)) c = getc(file);
  return c;
}

// Control characters are replaced: a name must not play tricks on the terminal that it is printed on.
static inline char printable(int c) {
  if (isBlank(c)) return ' ';
  return c < 0x20 || c == 0x7f ? '?' : (char)c;
}

// Read the rest of a line, whose first character is c, into name, without the blanks at its end.
static inline void readName(FILE *file, int c, char name[MAX_NAME + 1]) {
  size_t length = 0;
  for (; !isLineEnd(c); c = getc(file)) {
    if (length < MAX_NAME) name[length++] = printable(c);
  }
  while (length > 0 && name[length - 1] == ' ') length--;
  name[length] = '\0';
}

// Read a line. False at the end of the input, and on a read error, which ferror tells apart.
static inline bool readLine(Input *input, Line *line) {
  int c = nextNonBlank(input->file);
  if (c == EOF) return false;
  input->line++;
  line->nbCells = 0;
  for (; !isLineEnd(c) && !isBlank(c); c = getc(input->file)) {
    if (line->nbCells < MAX_CELLS) line->cells[line->nbCells] = (char)c;
    line->nbCells++;
  }
  if (isBlank(c)) c = nextNonBlank(input->file);
  while (c == '#') c = nextNonBlank(input->file);
  readName(input->file, c, line->name);
  return !ferror(input->file);
}

static inline bool holdsPuzzle(const Line *line) { return line->nbCells > 0 && line->cells[0] != '#'; }

static inline int sideOf(size_t nbCells) {
  switch (nbCells) {
    case 81:
      return 9;
    case 256:
      return 16;
    case 625:
      return 25;
    default:
      return 0;
  }
}

// The digit that c stands for: 0 for a blank, -1 when c is no digit of a puzzle of that side.
static inline int digitOf(char c, int side) {
  int digit = -1;
  if (c == '.') digit = 0;
  if (c >= '0' && c <= '9') digit = c - '0';
  if (c >= 'A' && c <= 'Z') digit = c - 'A' + 10;
  if (c >= 'a' && c <= 'z') digit = c - 'a' + 10;
  return digit <= side ? digit : -1;
}

static inline char symbolOf(int digit) { return ".123456789ABCDEFGHIJKLMNOP"[digit]; }

// Make a puzzle of the line read last. When it holds none, the input's error says why.
static inline bool parsePuzzle(Input *input, const Line *line, Puzzle *puzzle) {
  puzzle->side = sideOf(line->nbCells);
  if (puzzle->side == 0) {
    snprintf(input->error, sizeof input->error, "%zu cells where 81, 256 or 625 are expected", line->nbCells);
    return false;
  }
  for (size_t i = 0; i < line->nbCells; i++) {
    char c = line->cells[i];
    puzzle->digits[i] = digitOf(c, puzzle->side);
    if (puzzle->digits[i] >= 0) continue;
    bool visible = c > 0x20 && c < 0x7f;
    snprintf(input->error, sizeof input->error,
             visible ? "'%c' in cell %zu is no digit of a %dx%d puzzle"
                     : "byte %d in cell %zu is no digit of a %dx%d puzzle",
             visible ? c : (unsigned char)c, i + 1, puzzle->side, puzzle->side);
    return false;
  }
  snprintf(puzzle->name, sizeof puzzle->name, "%s", line->name);
  return true;
}

#endif  // KORU_EXAMPLE_SUDOKU_INPUT_H
